"""Companions that misbehave, and entries that change while we run."""

import os
import signal

import pytest

from desktop import BUILD, COMPANION_ID, TOOL_KEYS, Application, children_of, is_running, wait_until

MORE = TOOL_KEYS["XF86More"]


@pytest.fixture
def application(desktop, keyboard):
    desktop.switch_on()
    return desktop.start_application()


def press(keyboard, application):
    """Presses the tool key and returns the launcher's result."""
    count = len(application.results())
    keyboard.tap(MORE)
    application.wait_for("result = ", count + 1)
    return application.results()[count]


def test_companion_that_ends_at_once(desktop, keyboard, application):
    desktop.install_companion("exit 3\n")
    for _ in range(3):
        assert press(keyboard, application) > 0
    wait_until(lambda: not children_of(application.pid), "all are reaped")


def test_companion_that_hangs_and_ignores_signals(desktop, keyboard, application):
    desktop.install_companion("trap '' TERM INT HUP\nexec sleep 1000\n")
    pid = press(keyboard, application)
    assert press(keyboard, application) > 0
    assert application.stop() == 0
    assert is_running(pid)
    os.killpg(pid, signal.SIGKILL)


def test_companion_that_forks_away(desktop, keyboard, application):
    desktop.install_companion('(sleep 2; echo done > "$HOME/forked") &\nexit 0\n')
    assert press(keyboard, application) > 0
    wait_until(lambda: not children_of(application.pid), "the parent is reaped")
    assert application.stop() == 0
    wait_until((desktop.home / "forked").exists, "what it left behind lives on")


@pytest.mark.parametrize("end", ["hangup", "interrupt"])
def test_signals_of_the_terminal_end_the_application_and_spare_the_companion(desktop, keyboard, end):
    desktop.switch_on()
    desktop.install_companion("exec sleep 1000\n")
    log = desktop.root / "application.log"
    terminal = ["script", "--quiet", "--command", f"exec {BUILD}/bin/VQMKeygrab 2>{log}", "/dev/null"]
    application = Application(terminal, desktop.environment, desktop.root / "terminal.log")
    desktop.programs.append(application)
    wait_until(log.exists, "the application's log")
    application.log = log
    application.wait_for("_app_control() called end")
    own = int(Application.LINE.match(application.output().splitlines()[0])["pid"])

    pid = press(keyboard, application)
    if end == "hangup":
        application.kill()  # closes the terminal
    else:
        os.killpg(own, signal.SIGINT)  # what Ctrl-C would send
    wait_until(lambda: not is_running(own), "the application ends")
    assert is_running(pid)
    os.killpg(pid, signal.SIGKILL)


def test_companion_that_writes_100_megabytes(desktop, keyboard, application):
    desktop.install_companion('head -c 100000000 /dev/zero; echo done > "$HOME/written"\n')
    press(keyboard, application)
    wait_until((desktop.home / "written").exists, "it could write all of it")
    assert len(application.output()) < 1_000_000
    assert press(keyboard, application) > 0


def test_entry_is_followed_as_it_is_at_the_press(desktop, keyboard, application):
    desktop.install_companion('echo one >> "$HOME/ran"\n', name="one")
    press(keyboard, application)
    wait_until((desktop.home / "ran").exists, "the first companion ran")
    desktop.install_companion('echo two >> "$HOME/ran"\n', name="two")
    press(keyboard, application)
    wait_until(lambda: (desktop.home / "ran").read_text() == "one\ntwo\n", "the edited entry is followed")
    entry = next((desktop.data / "applications").iterdir())
    text = entry.read_text()
    entry.unlink()
    assert press(keyboard, application) < 0
    entry.write_text(text)
    assert press(keyboard, application) > 0
    wait_until(lambda: (desktop.home / "ran").read_text() == "one\ntwo\ntwo\n", "the entry is found again")


def test_program_of_the_entry_removed_and_put_back(desktop, keyboard, application):
    program = desktop.install_companion('echo $$ >> "$HOME/ran"\n')
    assert press(keyboard, application) > 0
    program.rename(program.with_suffix(".away"))
    assert press(keyboard, application) < 0
    program.with_suffix(".away").rename(program)
    assert press(keyboard, application) > 0


@pytest.mark.parametrize(
    "entry",
    [
        "",
        "garbage\0\xff",
        "[Desktop Entry]\nType=Application\nName=No program\n",
        "[Desktop Entry]\nType=Application\nName=Unbalanced\nExec=sh -c 'open\n",
        "[Desktop Entry]\nType=Application\nName=Missing\nExec=/nonexistent/program\n",
        "[Desktop Entry]\nType=Application\nName=Folder\nExec=/usr\n",
        "[Desktop Entry]\nType=Application\nName=Hidden\nHidden=true\nExec=/bin/true\n",
    ],
)
def test_unusable_entry_is_a_negative_result_and_one_clear_line(desktop, keyboard, application, entry):
    desktop.install_entry(entry)
    lines = len(application.output().splitlines())
    assert press(keyboard, application) < 0
    own = [line for line in application.output().splitlines()[lines:] if "Quillmere" not in line]
    assert len(own) == 1, own
    assert COMPANION_ID in own[0]


def test_no_shell_sees_the_entry(desktop, keyboard, application):
    program = desktop.install_companion('printf "%s\\n" "$@" > "$HOME/arguments"\n')
    desktop.install_entry(
        "[Desktop Entry]\nType=Application\nName=Companion\n"
        f'Exec={program} "two words" $HOME ; touch {desktop.home}/touched | %% %c %U\n'
    )
    press(keyboard, application)
    wait_until((desktop.home / "arguments").exists, "it ran")
    wait_until(lambda: "%" in (desktop.home / "arguments").read_text(), "it wrote its arguments")
    assert (desktop.home / "arguments").read_text().splitlines() == [
        "two words", "$HOME", ";", "touch", f"{desktop.home}/touched", "|", "%", "Companion",
    ]
    assert not (desktop.home / "touched").exists()


def test_companion_gets_a_clean_environment_and_inherits_no_descriptor(desktop, keyboard, application):
    desktop.install_companion(
        'env > "$HOME/environment"\nls -l /proc/$$/fd > "$HOME/descriptors"\n'
        'cat /proc/self/status > "$HOME/status"\necho done > "$HOME/done"\n'
    )
    press(keyboard, application)
    wait_until((desktop.home / "done").exists, "it ran")
    environment = dict(
        line.split("=", 1) for line in (desktop.home / "environment").read_text().splitlines() if "=" in line
    )
    for name in ("PWD", "OLDPWD", "SHLVL", "_"):
        environment.pop(name, None)
    extra = {name for name in environment if name not in desktop.environment}
    assert extra <= {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}, extra
    for name, value in desktop.environment.items():
        assert environment[name] == value
    # Standard streams, the shell's script, and the standard output that the shell keeps while it redirects.
    descriptors = [line.split()[-3:] for line in (desktop.home / "descriptors").read_text().splitlines()[1:]]
    assert all("socket" not in target and "memfd" not in target for _, _, target in descriptors), descriptors
    assert {int(number) for number, _, _ in descriptors} <= {0, 1, 2, 10, 11}
    status = dict(
        line.split(":\t", 1) for line in (desktop.home / "status").read_text().splitlines() if ":\t" in line
    )
    assert int(status["SigBlk"], 16) == 0
    # The C library ignores two of its own real-time signals in every process that it spawns.
    assert int(status["SigIgn"], 16) & 0x7FFFFFFF == 0


def test_ten_thousand_presses_leave_memory_and_descriptors_as_they_were(desktop, keyboard, application):
    desktop.install_companion("exit 0\n")

    def usage():
        text = open(f"/proc/{application.pid}/smaps_rollup").read()
        dirty = next(int(line.split()[1]) for line in text.splitlines() if line.startswith("Private_Dirty"))
        return dirty, len(os.listdir(f"/proc/{application.pid}/fd"))

    def press_many(presses, burst=50):
        """In bursts: memory that grows while events wait does not count."""
        for _ in range(presses // burst):
            start = len(application.results())
            for _ in range(burst):
                keyboard.tap(MORE)
            wait_until(lambda: len(application.results()) == start + burst, "all were answered")
        wait_until(lambda: not children_of(application.pid), "all are reaped")
        return usage()

    dirty_before, descriptors_before = press_many(500)
    dirty_after, descriptors_after = press_many(9500)
    assert descriptors_after == descriptors_before
    if "ASAN_OPTIONS" not in desktop.environment:  # which keeps freed memory for a while
        assert dirty_after - dirty_before < 256, "kilobytes"
