"""The application before its main function: options, and a home that cannot be written."""

import os
import subprocess

import pytest

from desktop import BUILD, PATIENCE, SETTING_KEY, TOOL_KEYS, wait_until

PROGRAM = BUILD / "bin/VQMKeygrab"


def ask(*arguments, **streams):
    """With nothing that a start would need: no display, no home."""
    return subprocess.run([PROGRAM, *arguments], env={"PATH": os.environ["PATH"]}, text=True, timeout=PATIENCE,
                          stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, **streams)


@pytest.mark.parametrize("arguments", [["--help"], ["something", "--help"]])
def test_help_starts_nothing(arguments):
    answer = ask(*arguments, stdout=subprocess.PIPE)
    assert (answer.returncode, answer.stderr) == (0, "")
    assert answer.stdout.startswith("Usage: VQMKeygrab ")
    assert max(len(line) for line in answer.stdout.splitlines()) <= 100


def test_version_is_that_of_the_build():
    answer = ask("--version", stdout=subprocess.PIPE)
    tool = subprocess.run([BUILD / "bin/vqmctl", "--version"], capture_output=True, text=True, timeout=PATIENCE)
    assert (answer.returncode, answer.stderr) == (0, "")
    assert answer.stdout == tool.stdout.replace("vqmctl", "VQMKeygrab")


def test_an_answer_that_cannot_be_written_is_a_failure():
    with open("/dev/full", "w") as full:
        assert ask("--version", stdout=full).returncode == 1


@pytest.mark.parametrize("argument", ["--helpless", "-h", "help", "--Version"])
def test_every_other_argument_starts_the_application(desktop, argument):
    application = desktop.run([PROGRAM, argument])
    wait_until(lambda: "_app_control() called end" in application.output(), "it has started")
    assert "Usage" not in application.output()
    assert application.stop() == 0


def unwritable(home):
    """The prefix of a command that cannot write to a home: the superuser can, unless it gives up the right."""
    home.chmod(0o555)
    if os.geteuid() != 0:
        return []
    giving_up = ["setpriv", "--bounding-set=-dac_override"]
    if subprocess.run([*giving_up, "true"], capture_output=True).returncode != 0:
        pytest.skip("the superuser's right to write everywhere cannot be given up here")
    return giving_up


def test_home_that_cannot_be_written_is_read_and_keeps_the_toolkit_quiet(desktop, keyboard):
    """Settings and desktop entries are found there, and the companion gets the environment as it was."""
    for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME"):
        del desktop.environment[name]
    desktop.install_companion(f'env >"{desktop.runtime}/environment.new"\n'
                              f'mv "{desktop.runtime}/environment.new" "{desktop.runtime}/environment"\n')
    desktop.store(SETTING_KEY, "1")
    application = desktop.run([*unwritable(desktop.home), PROGRAM], name="application")
    wait_until(lambda: "_app_control() called end" in application.output(), "it has started")
    keyboard.tap(TOOL_KEYS["XF86More"])
    wait_until((desktop.runtime / "environment").exists, "the companion has been launched")
    environment = dict(line.split("=", 1) for line in (desktop.runtime / "environment").read_text().splitlines())
    assert environment["HOME"] == str(desktop.home)
    assert {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XAUTHORITY"}.isdisjoint(environment)
    assert application.stop() == 0
    assert not [line for line in application.output().splitlines() if line.startswith("ERR") or "btlog" in line]


def test_companion_is_quiet_in_a_home_that_cannot_be_written(desktop):
    companion = desktop.run([*unwritable(desktop.home), BUILD / "bin/VQMCompanion"])
    tree = ["xwininfo", "-root", "-tree"]
    wait_until(lambda: '"Sync demo"' in subprocess.run(tree, env=desktop.environment, capture_output=True,
                                                       text=True).stdout, "its window is open")
    assert companion.stop() == 0
    assert "ERR" not in companion.output()


def test_home_is_used_where_it_can_be_written(desktop):
    assert desktop.start_application().stop() == 0
    assert (desktop.home / ".elementary").is_dir()
    assert not list(desktop.runtime.glob("*.home"))
