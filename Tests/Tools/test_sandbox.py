"""Scripts/sandbox: what it takes, and what it keeps to itself. Tests/Common/SandboxTest.sh has the rest."""

import subprocess

import pytest
from home import BUILD, ROOT
from sandbox import sandboxed

SANDBOX = ROOT / "Scripts/sandbox"
FAULTS = "time, size, constants, encoding, names, lost, page, digits, disk or stick"
VQMCTL = BUILD / "bin/vqmctl"


def sandbox(environment, *arguments):
    return subprocess.run([SANDBOX, *arguments], env=environment, capture_output=True, text=True, timeout=60)


@pytest.mark.parametrize("arguments, text", [
    (["--foo"], "unknown option: --foo; see Scripts/sandbox --help"),
    (["-x", "echo", "never"], "unknown option: -x; see Scripts/sandbox --help"),
    (["--broken"], "--broken needs a fault: " + FAULTS),
    (["--broken", "--empty"], "--broken needs a fault: " + FAULTS),
    (["--broken", "sound", "echo", "never"], "there is no fault 'sound'; expected " + FAULTS),
])
def test_misuse_is_answered_with_what_there_is(home, arguments, text):
    result = sandbox(home.environment, *arguments)
    assert (result.returncode, result.stdout, result.stderr) == (2, "", f"sandbox: {text}\n")


def test_help_needs_no_namespace(home):
    result = sandbox(home.environment, "--help")
    assert result.returncode == 0
    assert "--broken FAULT" in result.stdout


@pytest.mark.parametrize("stored", ["0", "1", None])
@pytest.mark.parametrize("found", ["through XDG_CONFIG_HOME", "through HOME"])
def test_the_user_s_settings_are_neither_read_nor_written(home, found, stored):
    if found == "through HOME":
        del home.environment["XDG_CONFIG_HOME"]
        home.setting = home.folder / ".config/tvsettings/db/menu/syncdemo/state"
    if stored is not None:
        home.setting.parent.mkdir(parents=True)
        home.setting.write_text(stored)
    state = [stored is not None, stored]

    script = '"$0" setting get && "$0" setting on && "$0" setting get && "$0" setting off && "$0" setting on'
    sandboxed()  # or skipped
    result = sandbox(home.environment, "sh", "-c", script, VQMCTL)
    assert (result.returncode, result.stdout, result.stderr) == (0, "off\non\n", "")
    assert [home.setting.exists(), home.setting.read_text() if home.setting.exists() else None] == state
    # The next sandbox knows nothing of it.
    assert sandbox(home.environment, VQMCTL, "setting", "get").stdout == "off\n"
