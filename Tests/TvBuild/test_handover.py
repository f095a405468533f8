"""The way from the SDK to the image, as Docs/target.md describes it, on the stand-in for the SDK."""

import os
import re
import shutil

import pytest

from checkout import copy_checkout, needs, run
from home import APP_ID, ROOT

APP_DIR = f"/opt/usr/apps/{APP_ID}"
pytestmark = [needs("rpmbuild"), needs("git")]


def steps():
    """The commands of each step, by its heading."""
    page = (ROOT / "Docs/target.md").read_text()
    found = {}
    for title, text in re.findall(r"^### \d+\. (.*?)\n(.*?)(?=^### )", page, re.MULTILINE | re.DOTALL):
        found[title] = re.findall(r"^```sh\n(.*?)^```", text, re.MULTILINE | re.DOTALL)
    return found


STEPS = steps()


class Handover:
    """A shell that has gone through the steps."""

    def __init__(self, folder):
        self.source = copy_checkout(folder / "source")
        self.sdk = folder / "sdk"
        self.root = folder / "image"
        self.root.mkdir()
        run(ROOT / "Scripts/tv-stand-in-sdk", self.sdk)
        # Not optimised: compiling takes longer than what is run here.
        self.compiler = folder / "c++"
        self.compiler.write_text('#!/bin/sh\nexec c++ "$@" -O0\n')
        self.compiler.chmod(0o755)
        self.done = STEPS["Environment"][0]

    def follow(self, commands):
        """Runs commands behind the first step, which sets variables."""
        script = f"set -euo pipefail\n{self.done}\n{commands}"
        # The package's compilations serve the plain build, the next version's and the next run's. rpmbuild changes
        # LANG, and each run has a compiler of its own.
        environment = {
            **os.environ, "SDK": str(self.sdk / "opt/tv"), "ROOT": str(self.root),
            "CCACHE_BASEDIR": str(self.source), "CCACHE_NOHASHDIR": "1", "CCACHE_SLOPPINESS": "locale",
            "CCACHE_COMPILERCHECK": "%compiler% --version",
            "CXX": str(self.compiler),
        }  # fmt: skip
        return run("bash", "-c", script, cwd=self.source, env=environment)

    @property
    def package(self):
        (package,) = self.source.glob("build/rpm/RPMS/*/vqmkeygrab-[0-9]*.rpm")  # not the package of debugging information
        return package


@pytest.fixture(scope="module")
def handover(tmp_path_factory):
    handover = Handover(tmp_path_factory.mktemp("handover"))
    for title in ("Tools", "Source archive", "Build and package"):
        for commands in STEPS[title]:
            handover.follow(commands)
    return handover


def packed(package):
    """Type and mode, owner and group of each path in the package."""
    lines = run("rpm", "-qp", "--qf", "[%{FILENAMES} %{FILEMODES:perms} %{FILEUSERNAME} %{FILEGROUPNAME}\n]", package)
    return {path: (mode, user, group) for path, mode, user, group in map(str.split, lines.splitlines())}


def installed(folder):
    lines = run("find", folder, "-mindepth", "1", "-printf", "/%P %M\n").splitlines()
    return dict(line.split() for line in lines)


def test_every_command_of_the_checklist_is_run():
    assert {title: len(commands) for title, commands in STEPS.items() if commands} == {
        "Environment": 1, "Tools": 1, "Source archive": 1, "Build and package": 2, "Install, upgrade, roll back": 2,
    }  # fmt: skip


def test_package_and_installation_hold_the_same_files(handover):
    files = installed(handover.source / "build/tv-image")
    package = packed(handover.package)
    assert {path: mode for path, (mode, _, _) in package.items()} == {
        path: mode for path, mode in files.items() if path in package
    }
    # Beyond it, an installation has the folders above, which are the TV's.
    assert all(mode.startswith("d") for path, mode in files.items() if path not in package)


def test_package_holds_what_the_page_lists(handover):
    page = (ROOT / "Docs/target.md").read_text()
    rows = re.findall(r"^\| `(/\S+)` \| (\w+) (\w+) \| (\d{4}) \|", page, re.MULTILINE)
    listed = {path.replace("<id>", APP_ID): (int(mode, 8), user, group) for path, user, group, mode in rows}
    lines = run("rpm", "-qp", "--qf", "[%{FILENAMES} %{FILEMODES:octal} %{FILEUSERNAME} %{FILEGROUPNAME}\n]", handover.package)
    package = {}
    for path, mode, user, group in map(str.split, lines.splitlines()):
        package[path] = (int(mode, 8) & 0o7777, user, group)
    plain = {path for path, (mode, user, group) in package.items() if path not in listed}
    languages = [f"{APP_DIR}/share/locale/{language}" for language in ("ar", "de")]
    assert plain == {
        APP_DIR, f"{APP_DIR}/bin", f"{APP_DIR}/res", f"{APP_DIR}/share", f"{APP_DIR}/share/locale", *languages,
        *(f"{language}/LC_MESSAGES" for language in languages),
    }  # fmt: skip
    assert listed == {path: entry for path, entry in package.items() if path in listed}


def test_the_packages_tool_runs(handover):
    told = handover.follow(f"build/tv-image{APP_DIR}/bin/vqmctl --version")
    assert told.splitlines()[-1].startswith("vqmctl ")


def later_version(handover, folder):
    """The package of the next version, with another constants file."""
    source = folder / "source"
    shutil.copytree(handover.source, source, ignore=shutil.ignore_patterns("build"))
    lists = source / "CMakeLists.txt"
    lists.write_text(re.sub(r"(VQMKeygrab VERSION \d+)\.\d+", r"\1.999", lists.read_text(), count=1))
    constants = source / "Packaging/sample/constants.xml"
    constants.write_text(constants.read_text().replace("schedule.xml", "later.xml"))
    run("git", "-C", source, "commit", "--quiet", "--all", "--message", "Later")
    later = Handover.__new__(Handover)
    later.__dict__.update(handover.__dict__)
    later.source = source
    for title, count in (("Source archive", 1), ("Build and package", 1)):
        for commands in STEPS[title][:count]:
            later.follow(commands)
    return later


@pytest.mark.skipif(os.geteuid() != 0, reason="installing into another root takes root")
def test_upgrade_and_rollback_keep_what_was_changed(handover, tmp_path):
    install, roll_back = STEPS["Install, upgrade, roll back"]
    later = later_version(handover, tmp_path)
    app = handover.root / APP_DIR.lstrip("/")
    handover.follow(install)
    constants = app / "res/constants.xml"
    constants.write_text("<c><Data key='ScheduleFile' value='mine.xml'/></c>")
    (app / "RECH/mine.xml").write_text("a schedule")

    later.follow(install)
    assert "mine.xml" in constants.read_text()
    assert "later.xml" in (app / "res/constants.xml.rpmnew").read_text()
    assert "999" in handover.follow('rpm --root "$ROOT" -q vqmkeygrab')

    handover.follow(install.splitlines()[0] + "\n" + roll_back)
    assert "999" not in handover.follow('rpm --root "$ROOT" -q vqmkeygrab')
    assert "mine.xml" in constants.read_text()
    assert (app / "RECH/mine.xml").read_text() == "a schedule"
