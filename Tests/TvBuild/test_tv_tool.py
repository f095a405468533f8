"""vqmctl for the TV: what it needs, and what it does in a root with nothing else."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

from home import APP_ID, PATIENCE, ROOT
from sandbox import require_namespace
from tv_build import EMULATOR, TV, find_library, run

COMPANION_ID = f"{APP_ID}.gui"
APP_DIR = f"/opt/usr/apps/{APP_ID}"
# The C and C++ runtime, the parser, Boost, and the TV's log and settings.
TOOL_NEEDS = re.compile(
    r"lib(c|m|gcc_s|pthread|stdc\+\+|expat|boost_(thread|filesystem|system|atomic|chrono|date_time)|dlog|vconf)\.so|ld-linux"
)


def needed(program):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", program))


def needed_by_all(program, sdk):
    """The shared libraries of a program and, in turn, of those."""
    found, names = {}, needed(program)
    while names:
        name = names.pop()
        if name not in found:
            stub = sdk / "lib" / name
            found[name] = stub if stub.exists() else find_library(name)
            names += needed(found[name])
    return found


def test_the_tool_needs_neither_toolkit_nor_display(tool, sdk):
    libraries = needed_by_all(tool, sdk)
    assert {"libexpat.so.1", "libvconf.so"} < set(libraries)
    assert [library for library in libraries if not TOOL_NEEDS.match(library)] == []


class BareRoot:
    """A root that holds the tool, the libraries it names, and a TV's files: nothing else."""

    def __init__(self, folder, program, sdk):
        self.folder = folder
        self.copy(program, "bin/vqmctl")
        for name, library in needed_by_all(program, sdk).items():
            self.copy(library, f"lib/{name}")
        loader = re.search(r"interpreter: (.*?)\]", run("readelf", "-l", program))[1]
        self.copy(find_library(Path(loader).name), loader.lstrip("/"))

    def copy(self, file, place):
        target = self.folder / place
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(file, target)

    def put(self, path, text):
        target = self.folder / path.lstrip("/")
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text)

    def emulator(self):
        """The emulator's own libraries lie beside it, where the tool does not look."""
        if not EMULATOR:
            return []
        program = shutil.which("qemu-arm")
        for file in [program, *re.findall(r"(/\S+) \(0x", run("ldd", program))]:
            self.copy(file, f"emulator/{Path(file).name}")
        loader = next((self.folder / "emulator").glob("ld-*.so*")).name
        return [f"/emulator/{loader}", "--library-path", "/emulator", "/emulator/qemu-arm", "-L", "/"]

    def vqmctl(self, *arguments, setting="1"):
        """In the root, with the kernel's list of processes; the emulator is the only stranger."""
        (self.folder / "proc").mkdir(exist_ok=True)
        command = ["unshare", "-m" if os.geteuid() == 0 else "-Urm", "sh", "-c",
                   'mount --rbind /proc "$0/proc" && exec chroot "$0" "$@"', str(self.folder), *self.emulator(),
                   "/bin/vqmctl", *arguments]
        environment = {"STAND_IN_SETTING": setting, "LD_LIBRARY_PATH": "/lib", "TZ": "UTC", "PATH": os.environ["PATH"]}
        completed = subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                   timeout=2 * PATIENCE)
        return completed.returncode, completed.stdout, completed.stderr


@pytest.fixture(scope="module")
def bare(tool, sdk, tmp_path_factory):
    require_namespace()
    root = BareRoot(tmp_path_factory.mktemp("root"), tool, sdk)
    root.put(f"{APP_DIR}/res/constants.xml", (ROOT / "Packaging/sample/constants.xml").read_text())
    schedule = (ROOT / "Packaging/sample/schedule.xml").read_text()
    root.put(f"{APP_DIR}/RECH/schedule.xml", schedule)
    for name, size, form in re.findall(r"<name>(.*)</name><size>(\d+)</size><format>(.*)</format>", schedule):
        root.put(f"/opt/data/demo_movie/{name}.{form}", "")
        os.truncate(root.folder / f"opt/data/demo_movie/{name}.{form}", int(size))
    return root


def test_the_tool_works_in_a_root_with_nothing_else(bare):
    code, output, _ = bare.vqmctl("check")
    assert (code, output.splitlines()[-2:]) == (
        0, ["summary:   it will play what was meant; 3 of 3 items complete", "the TV: ready"])
    assert bare.vqmctl("schedule", "lint")[:2] == (0, "")
    assert bare.vqmctl("schedule", "at", "10:00")[1].count("intro.mp4") == 1
    assert bare.vqmctl("constants", "get", "ScheduleFile")[:2] == (0, "schedule.xml\n")
    assert bare.vqmctl("setting", "get")[:2] == (0, "on\n")
    assert bare.vqmctl("setting", "get", setting="0")[:2] == (0, "off\n")
    code, _, talk = bare.vqmctl("setting", "off")
    assert (code, talk.splitlines()[-1]) == (  # before it, the stand-in's log
        3, "vqmctl: cannot switch the setting off; it is stored in the settings store as db/menu/syncdemo/state "
           "(the store did not take it)")


def test_each_document_command_works_there(bare):
    schedule = f"{APP_DIR}/RECH/schedule.xml"
    assert bare.vqmctl("schedule", "sizes", "--media", "/opt/data/demo_movie", schedule)[0] == 0
    assert bare.vqmctl("schedule", "group", schedule, schedule)[0] == 1  # two masters
    assert "intro.mp4" in bare.vqmctl("schedule", "timeline", schedule)[1]
    assert bare.vqmctl("schedule", "lint", "--sarif", schedule)[1].startswith("{")
    assert bare.vqmctl("explain", "file-size")[1].startswith("file-size (check)\n")
    assert "Example:" in bare.vqmctl("help", "check")[1]
    bare.put("/new/keep", "")
    assert bare.vqmctl("constants", "init", "--constants", "/new/constants.xml")[0] == 0
    assert bare.vqmctl("constants", "get", "--constants", "/new/constants.xml", "ScheduleFile")[1] == "schedule.xml\n"


def test_the_tools_unicode_tables_are_its_own(bare):
    """A wide and a combining character before a mark, and a control character of Unicode."""
    bare.put("/odd.xml", "<rsp state='ok'><x a='\u4e2de\u0301\u202e'/></rsp>\n")
    output = bare.vqmctl("schedule", "lint", "/odd.xml")[1]
    assert "\u4e2de\u0301\\xe2\\x80\\xae" in output


@pytest.mark.parametrize("arguments, complaint", [
    (["remote", "press", "XF86More"], "'remote' needs a display"),
    (["remote", "keys"], "'remote' needs a display"),
    (["keys", "watch"], "'keys watch' needs a display"),
    (["setting", "watch"], "'setting watch' needs the toolkit's main loop"),
])
def test_what_needs_a_display_is_left_out_and_says_so(bare, arguments, complaint):
    code, output, talk = bare.vqmctl(*arguments)
    assert (code, output) == (3, "")
    assert talk.startswith(f"vqmctl: {complaint}, and this program for the TV is made without")


def test_status_on_the_tv_knows_what_can_be_known_there(bare):
    code, output, _ = bare.vqmctl("status")
    lines = output.splitlines()
    assert code == 1
    assert "Setting      on" in lines
    assert f"- the companion cannot be launched: no manifest in /usr/share/packages names '{COMPANION_ID}'" in lines
    bare.put(f"/usr/share/packages/{APP_ID}.xml", (TV / "manifest.xml").read_text())
    assert "names the program" in bare.vqmctl("status")[1]
    bare.put(f"{APP_DIR}/bin/VQMCompanion", "")
    (bare.folder / f"{APP_DIR}/bin/VQMCompanion".lstrip("/")).chmod(0o755)
    assert f"Companion    {APP_DIR}/bin/VQMCompanion" in bare.vqmctl("status")[1].splitlines()
