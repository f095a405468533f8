"""vqmctl setting, and the manners of the command line."""

import os
import shutil
import signal
import subprocess

import pytest
from home import BUILD, PATIENCE


@pytest.mark.parametrize("stored, state", [
    (None, "off"), ("0", "off"), ("1", "on"), ("1\n", "on"), ("2", "off"), ("-1", "off"), ("garbage", "off"), ("", "off")])
def test_get_prints_what_counts(home, stored, state):
    if stored is not None:
        home.store(stored)
    result = home.vqmctl("setting", "get")
    assert (result.stdout, result.returncode) == (f"{state}\n", 0)


def test_get_says_that_a_strange_value_counts_as_off_with_its_bytes_escaped(home):
    home.store("\x1b[31m7")
    result = home.vqmctl("setting", "get")
    assert result.stdout == "off\n"
    assert result.stderr == f"vqmctl: note: {home.setting} holds '\\x1b[31m7', expected 0 or 1; it counts as off\n"


@pytest.mark.parametrize("before", ["0", "1", "2", "garbage"])
def test_on_stores_1_and_off_stores_what_counts_as_off(home, before):
    home.store(before)
    result = home.vqmctl("setting", "on")
    assert (result.returncode, result.stdout, result.stderr) == (0, "", "")
    assert home.setting.read_text() == "1"
    assert home.vqmctl("setting", "off").returncode == 0
    assert home.setting.read_text() == "0"


def test_a_store_that_cannot_be_written_is_named(home):
    (home.folder / "config").write_text("a file where a folder should be")
    result = home.vqmctl("setting", "on")
    assert (result.returncode, result.stdout) == (3, "")
    assert result.stderr.splitlines()[-1].startswith(
        f"vqmctl: cannot switch the setting on; it is stored in {home.setting} (")


def test_writers_in_each_others_way_all_succeed(home):
    """What one has stored another may have replaced before the first one looks."""
    count = 8
    writers = [
        home.start("/bin/sh", "-c", 'for i in $(seq 40); do "$0" setting on || exit 1; "$0" setting off || exit 1; done',
                   BUILD / "bin/vqmctl", stderr=subprocess.PIPE)
        for _ in range(count)
    ]
    assert [(writer.communicate(timeout=600)[1], writer.returncode) for writer in writers] == [("", 0)] * count


def test_a_refused_link_is_called_a_link(home):
    home.setting.parent.mkdir(parents=True)
    home.setting.symlink_to(home.folder / "elsewhere")
    result = home.vqmctl("setting", "on")
    assert (result.returncode, result.stderr) == (3, (
        f"vqmctl: cannot switch the setting on; it is stored in {home.setting} "
        f"({home.setting}: a symbolic link, not a plain file)\n"))


def test_watch_prints_the_state_and_each_change_until_interrupted(home):
    watch = home.start("vqmctl", "setting", "watch", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert watch.stdout.readline() == "off\n"
    for state in ("on", "off", "on"):
        assert home.vqmctl("setting", state).returncode == 0
        assert watch.stdout.readline() == f"{state}\n"
    home.setting.unlink()
    assert watch.stdout.readline() == "off\n"
    watch.send_signal(signal.SIGINT)
    assert watch.communicate(timeout=PATIENCE) == ("", "")
    assert watch.returncode == 0


def watching(home, command='exec "$0" setting watch', **environment):
    """A shell that becomes `vqmctl setting watch`."""
    process = subprocess.Popen(
        ["sh", "-c", command, BUILD / "bin/vqmctl"], env={**home.environment, **environment}, text=True,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    home.running.append(process)
    return process


@pytest.mark.parametrize("signal_name", ["SIGINT", "SIGTERM", "SIGQUIT", "SIGHUP"])
def test_watch_ends_on_each_signal_that_ends_a_program(home, signal_name):
    watch = watching(home)
    assert watch.stdout.readline() == "off\n"
    watch.send_signal(signal.Signals[signal_name])
    assert watch.communicate(timeout=60) == ("", "")
    assert watch.returncode == 0


def test_watch_outlives_the_terminal_where_that_is_wished(home):
    watch = watching(home, 'trap "" HUP; exec "$0" setting watch')
    assert watch.stdout.readline() == "off\n"
    watch.send_signal(signal.SIGHUP)
    home.store("1")
    assert watch.stdout.readline() == "on\n"


def test_watch_needs_no_folder_that_can_be_written(home):
    watch = watching(home, 'unset XDG_CONFIG_HOME XDG_RUNTIME_DIR; exec "$0" setting watch', HOME="/proc/1")
    assert watch.stdout.readline() == "off\n"
    watch.send_signal(signal.SIGTERM)
    assert watch.communicate(timeout=60) == ("", "")
    assert watch.returncode == 0


def test_watch_can_be_ended_when_it_may_open_few_files(home):
    watch = watching(home, 'ulimit -n 8; exec "$0" setting watch')
    assert watch.stdout.readline() == "off\n"
    watch.send_signal(signal.SIGTERM)
    assert watch.wait(timeout=60) == 0


def test_watch_follows_a_settings_folder_that_is_replaced_or_linked_elsewhere(home):
    config = home.folder / "config"
    home.store("1")
    watch = watching(home)
    assert watch.stdout.readline() == "on\n"
    config.rename(home.folder / "first")
    assert watch.stdout.readline() == "off\n"
    assert home.vqmctl("setting", "on").returncode == 0
    assert watch.stdout.readline() == "on\n"
    config.rename(home.folder / "second")
    assert watch.stdout.readline() == "off\n"
    config.symlink_to("second")
    assert watch.stdout.readline() == "on\n"
    (home.folder / "second").rename(home.folder / "third")
    assert watch.stdout.readline() == "off\n"
    (home.folder / "first").rename(home.folder / "second")
    assert watch.stdout.readline() == "on\n"


def test_watch_sees_a_value_in_a_file_that_stays_open_and_one_that_is_linked_into_place(home):
    home.store("0")
    watch = watching(home)
    assert watch.stdout.readline() == "off\n"
    with open(home.setting, "w") as kept:
        kept.write("1")
        kept.flush()
        assert watch.stdout.readline() == "on\n"
    home.setting.unlink()
    assert watch.stdout.readline() == "off\n"
    other = home.folder / "other"
    other.write_text("1")
    os.link(other, home.setting)
    assert watch.stdout.readline() == "on\n"


def test_watch_ends_quietly_when_its_reader_goes(home):
    watch = home.start("vqmctl", "setting", "watch", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert watch.stdout.readline() == "off\n"
    watch.stdout.close()
    assert watch.wait(timeout=PATIENCE) == 0
    assert watch.stderr.read() == ""


def test_a_reader_that_has_gone_already_is_no_failure(home):
    read, write = os.pipe()
    os.close(read)
    result = subprocess.run([BUILD / "bin/vqmctl", "setting", "get"], env=home.environment, stdout=write,
                            stderr=subprocess.PIPE, text=True, timeout=2 * PATIENCE)
    os.close(write)
    assert (result.returncode, result.stderr) == (0, "")


def test_a_full_disk_is_a_failure(home):
    with open("/dev/full", "w") as full:
        result = subprocess.run([BUILD / "bin/vqmctl", "setting", "get"], env=home.environment, stdout=full,
                                stderr=subprocess.PIPE, text=True, timeout=2 * PATIENCE)
    assert (result.returncode, result.stderr) == (3, "vqmctl: cannot write to stdout: No space left on device\n")


def test_the_library_speaks_only_when_asked(home):
    assert home.vqmctl("setting", "get").stderr == ""
    for asked in (home.vqmctl("-v", "setting", "get"), home.vqmctl("setting", "get", "-v"),
                  home.vqmctl("setting", "get", DLOG_LEVEL="debug")):
        assert "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Disabled" in asked.stderr
        assert asked.stdout == "off\n"


@pytest.mark.parametrize("arguments, line", [
    (["settig", "get"], "unknown command 'settig' after 'vqmctl'; did you mean setting?"),
    (["setting"], "a command is missing after 'vqmctl setting'; expected get, on, off or watch"),
    (["setting", "onn"], "unknown command 'onn' after 'vqmctl setting'; did you mean on?"),
    (["setting", "get", "now"], "unexpected argument 'now'; see 'vqmctl setting get --help'"),
    (["remote", "press"], "KEY is missing; see 'vqmctl remote press --help'"),
    (["remote", "press", "Up", "--times", "0"],
     "--times is '0'; expected a whole number from 1 to 10000"),
    (["remote", "press", "Up", "--times", "10001"],
     "--times is '10001'; expected a whole number from 1 to 10000"),
    (["remote", "press", "Up", "--times", "99999999999999999999"],
     "--times is '99999999999999999999'; expected a whole number from 1 to 10000"),
    (["remote", "press", "Up", "--wait", "1.5"], "--wait is '1.5'; expected a whole number from 0 to 60000"),
    (["remote", "press", "Up", "--times"], "--times wants a value; see 'vqmctl remote press --help'"),
    (["remote", "press", "Up", "--anyway=maybe"], "--anyway takes no value; see 'vqmctl remote press --help'"),
    (["status", "--constants"], "--constants wants a value; see 'vqmctl status --help'"),
    (["constants", "get"], "key is missing; see 'vqmctl constants get --help'"),
    (["schedule", "lint", "--ignore"], "--ignore wants a value; see 'vqmctl schedule lint --help'"),
    (["schedule", "show", "a", "--verbose=maybe"], "--verbose takes no value; see 'vqmctl schedule show --help'"),
    (["remote", "press", "Up", "--hold", "x"],
     "--hold is 'x'; expected a whole number from 0 to 60000"),
    (["remote", "press", "SimpleMenu"], "unknown key 'SimpleMenu'; did you mean XF86SimpleMenu?"),
    (["remote", "press", "XF86Moer"], "unknown key 'XF86Moer'; did you mean XF86More or XF86Xfer?"),
    (["remote", "press", "0x12345"],
     "unknown key '0x12345'; expected a keysym name such as XF86SimpleMenu, XF86More or Left"),
    (["remote", "press", 130000 * "x"],
     f"unknown key '{60 * 'x'}...'; expected a keysym name such as XF86SimpleMenu, XF86More or Left"),
    (["remote", "press", "blargh_x"],
     "unknown key 'blargh_x'; expected a keysym name such as XF86SimpleMenu, XF86More or Left"),
])
def test_what_is_not_understood_is_named_with_what_was_expected(home, arguments, line):
    result = home.vqmctl(*arguments)
    assert (result.returncode, result.stdout, result.stderr) == (2, "", f"vqmctl: {line}\n")


def test_a_missing_command_is_answered_with_the_commands_there_are(home):
    result = home.vqmctl()
    assert (result.returncode, result.stdout) == (2, "")
    assert result.stderr.startswith("vqmctl: a command is missing after 'vqmctl'; expected help, setting, ")


def test_help_and_version_go_to_stdout(home):
    assert home.vqmctl("--version").stdout.startswith("vqmctl ")
    for arguments in (["--help"], ["setting", "--help"], ["setting", "watch", "--help"], ["remote", "press", "-h"]):
        result = home.vqmctl(*arguments)
        assert (result.returncode, result.stderr) == (0, "")
        assert "Usage: " in result.stdout


def test_the_program_for_display_and_bus_is_missed_by_name(home):
    alone = home.folder / "bin/vqmctl"
    alone.parent.mkdir()
    shutil.copy(BUILD / "bin/vqmctl", alone)
    for arguments in (["remote", "keys"], ["status"]):
        result = subprocess.run([alone, *arguments], env=home.environment, capture_output=True, text=True, timeout=60)
        assert (result.returncode, result.stdout) == (3, "")
        assert result.stderr == f"vqmctl: cannot run '{home.folder}/libexec/vqmctl-desktop': No such file or directory\n"
    assert subprocess.run([alone, "setting", "get"], env=home.environment, timeout=60).returncode == 0
