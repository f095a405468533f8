"""./run, Scripts/live and Scripts/demo on the programs as they are built."""

import os
import re
import shlex
import shutil
import signal
import subprocess
from pathlib import Path

import pytest

from desktop import TOOL_KEYS, is_running, wait_until
from home import BUILD, PATIENCE, ROOT

INSTRUCTIONS = "In another terminal:"


@pytest.fixture
def build(tmp_path):
    """The build, in a folder whose name needs quoting."""
    folder = tmp_path / "a build's größe"
    (folder / "bin").mkdir(parents=True)
    for program in (BUILD / "bin").iterdir():
        (folder / "bin" / program.name).symlink_to(program)
    (folder / "entries").symlink_to(BUILD / "entries")
    return folder


def start_live(desktop, build, *options, **environment):
    return desktop.run([ROOT / "Scripts/live", build, *options], name=f"live-{len(desktop.programs)}", **environment)


def shown(live):
    """Its output once the application runs."""
    wait_until(lambda: INSTRUCTIONS in live.output() and live.output().endswith("\n\n"), "the instructions")
    return live.output()


def application_of(live):
    return int(re.search(r"Quillmere\( *(\d+)\)", live.output())[1])


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_live_ends_with_everything_it_has_started(desktop, build, number):
    live = start_live(desktop, build)
    shown(live)
    application = application_of(live)
    os.killpg(live.pid, number)
    assert live.process.wait(PATIENCE) == 0
    assert not is_running(application)
    assert live.output().rstrip().endswith("VQMKeygrab main End")


def test_commands_that_live_prints_can_be_pasted(desktop, build):
    live = start_live(desktop, build)
    commands = [line.strip() for line in shown(live).splitlines() if "bin/vqmctl" in line]
    assert [shlex.split(command)[1:] for command in commands] == [["setting", "on"], ["remote", "press", "XF86More"]]
    for command in commands:
        subprocess.run(["bash", "-c", command], env=desktop.environment, check=True, timeout=PATIENCE)
    wait_until(lambda: "result = " in live.output(), "the key has been seen while the setting was on")
    assert live.stop() == 0


@pytest.mark.parametrize("options, others", [([], False), (["--all-keys"], True)])
def test_live_names_the_keys_it_takes(desktop, keyboard, build, options, others):
    live = start_live(desktop, build, *options)
    taken = shown(live).partition("are taken until you press Ctrl-C:\n")[2].partition("The setting is")[0].split()
    assert set(TOOL_KEYS) <= set(taken)
    assert ("XF86AudioPlay" in taken) is others
    assert live.stop() == 0


def test_live_does_not_call_a_lent_key_one_of_the_keyboard_s(desktop, build):
    press = desktop.run([BUILD / "bin/vqmctl", "remote", "press", "XF86More", "--anyway", "--hold", "60000"])
    root = desktop.connect().screen().root
    lent = root.display.get_atom("_TV_LENT_KEYS")
    wait_until(lambda: (found := root.get_full_property(lent, 6)) and len(found.value), "the key is lent")
    press.process.kill()
    live = start_live(desktop, build)
    assert "No key of your keyboard is taken" in shown(live)
    assert live.stop() == 0


def test_second_live_reports_that_one_runs(desktop, build):
    first = start_live(desktop, build)
    shown(first)
    second = start_live(desktop, build)
    assert second.process.wait(PATIENCE) == 1
    assert INSTRUCTIONS not in second.output()
    assert second.output().endswith(f"live: the application already runs on display {desktop.display_name} as process"
                                    f" {application_of(first)}; end that one first\n")
    assert first.stop() == 0


@pytest.mark.parametrize("missing, cause", [
    ({"DISPLAY": ":4711"}, 'cannot open ":4711"'),
    ({"DISPLAY": ""}, 'cannot open ""'),
    ({"HOME": "", "XDG_RUNTIME_DIR": ""}, "neither XDG_RUNTIME_DIR nor HOME"),
])
def test_live_is_silent_after_an_early_end(desktop, build, missing, cause):
    live = start_live(desktop, build, **missing)
    assert live.process.wait(PATIENCE) == 1
    assert INSTRUCTIONS not in live.output()
    assert any(cause in line for line in live.output().splitlines() if line.startswith("E/"))
    assert "live: the application has ended with exit code" in live.output()


def test_live_reports_an_application_that_is_killed(desktop, build):
    live = start_live(desktop, build)
    shown(live)
    os.kill(application_of(live), signal.SIGKILL)
    assert live.process.wait(PATIENCE) == 1
    assert live.output().endswith("live: the application was ended by signal 9\n")


@pytest.mark.parametrize("session", [{"WAYLAND_DISPLAY": "wayland-0"}, {"XDG_SESSION_TYPE": "wayland"}])
def test_live_promises_no_keys_in_a_wayland_session(desktop, keyboard, build, session):
    live = start_live(desktop, build, **session)
    output = shown(live)
    assert "This is a Wayland session" in output
    assert "are taken" not in output
    assert output.index("What works:") < output.index("What does not:") < output.index("./run --window")
    assert live.stop() == 0


def demo(desktop, build, **environment):
    return subprocess.run([ROOT / "Scripts/demo", build], env={**desktop.environment, **environment},
                          capture_output=True, text=True, timeout=4 * PATIENCE)


@pytest.mark.parametrize("display", ["the user's", "not to be opened"])
def test_demo_leaves_the_user_s_desktop_alone(bus, keyboard, build, display):
    application = bus.start_application()
    application.wait_for("_resume() called start")
    before = application.lines()
    shown_there = len(bus.connect().screen().root.query_tree().children)
    result = demo(bus, build, **({} if display == "the user's" else {"DISPLAY": ":4711"}))
    assert result.returncode == 0, result.stderr
    assert "Started a private X server" in result.stderr
    assert "Ended by SIGTERM with exit code 0." in result.stderr
    assert (build / "demo/screenshot.png").stat().st_size > 0
    assert "no session bus" in result.stderr
    assert application.lines() == before
    assert len(bus.connect().screen().root.query_tree().children) == shown_there
    assert not bus.settings.exists() or not list(bus.settings.rglob("state"))


def test_demo_reports_at_once_why_the_application_has_ended(desktop, build):
    program = build / "bin/VQMKeygrab"
    program.unlink()
    program.write_text(f"#!/bin/sh\nunset HOME XDG_RUNTIME_DIR\nexec {shlex.quote(str(BUILD / 'bin/VQMKeygrab'))}\n")
    program.chmod(0o755)
    result = demo(desktop, build)
    assert result.returncode == 1
    assert result.stderr.splitlines()[-1] == (
        "demo: the application has ended with exit code 1: neither XDG_RUNTIME_DIR nor HOME names a folder that can be"
        " written: the toolkit cannot start")


def test_demo_waits_for_the_whole_number_of_the_display(desktop, build, tmp_path):
    server = tmp_path / "Xvfb"
    server.write_text("#!/bin/bash\n"
                      f"mkfifo {tmp_path}/number\n"
                      f"{{ read -r number <{tmp_path}/number; printf 0 >&3; sleep 0.5; printf '%s\\n' \"$number\" >&3; }} &\n"
                      f"exec {shutil.which('Xvfb')} \"$@\" 3>{tmp_path}/number\n")
    server.chmod(0o755)
    result = demo(desktop, build, PATH=f"{tmp_path}:{desktop.environment['PATH']}")
    assert result.returncode == 0, result.stderr
    assert re.search("^Started a private X server on :0[0-9]+$", result.stderr, re.MULTILINE)


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_demo_leaves_nothing_behind_when_it_is_ended(desktop, build, number):
    # A word of the environment tells its processes from all others.
    mark = f"DEMO_OF_TEST={build}"
    program = desktop.run([ROOT / "Scripts/demo", build], name="demo", DEMO_OF_TEST=str(build))
    wait_until(lambda: "The application runs" in program.output(), "the application runs")
    os.killpg(program.pid, number)
    assert program.process.wait(PATIENCE) == 128 + number

    def left():
        for process in Path("/proc").glob("[0-9]*"):
            try:
                if mark.encode() in (process / "environ").read_bytes().split(b"\0"):
                    yield process.name
            except OSError:
                pass  # ended, or not ours

    wait_until(lambda: not list(left()), "no process is left")


@pytest.mark.parametrize("arguments, text", [
    (["--foo"], "run: unknown argument: --foo"),
    (["--all-keys"], "run: --all-keys goes with --live"),
    (["--window", "--all-keys"], "run: --all-keys goes with --live"),
    (["--window", "--live"], "run: --live and --window exclude each other"),
])
def test_misuse_of_run(arguments, text):
    result = subprocess.run([ROOT / "run", *arguments], capture_output=True, text=True, timeout=PATIENCE)
    assert (result.returncode, result.stdout, result.stderr.splitlines()[-1]) == (2, "", text)


@pytest.mark.parametrize("option", ["--live", "--window"])
def test_without_a_display_it_is_refused_before_anything_is_built(option):
    environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
    result = subprocess.run([ROOT / "run", option], env=environment, capture_output=True, text=True, timeout=PATIENCE)
    assert (result.returncode, result.stdout) == (1, "")
    assert result.stderr == f"run: {option} needs your X display, and DISPLAY is not set; plain ./run brings its own\n"


def test_run_builds_every_program_that_the_documentation_calls():
    built = re.search(r"^build_product dev (.*)$", (ROOT / "run").read_text(), re.MULTILINE)[1].split()
    pages = [ROOT / "README.md", *(ROOT / "Docs").glob("*.md")]
    called = {name for page in pages for name in re.findall(r"build/dev/bin/(example_\w+|vqmctl|VQM\w+)", page.read_text())}
    assert "example_content_check" in called
    assert called <= set(built)
