"""Hostile environments: each variable that a program here or its libraries read may hold anything."""

import signal
import subprocess

from desktop import BUILD, PATIENCE, wait_until
from subject import MORE, Subject

STEPS = 8
# Never a place outside the test where something could be written.
TEXTS = ["", "x", "/nonexistent", "/dev/null", "/proc/1", "/dev/full", "relative/path", ".", "..", ":", "::", "-1",
         "a" * 5000, "\x1b[31m", "\u202e", "%s%s%n", "$(reboot)", "\udcff\udcfe", "0", "1", "nan", "1e999"]
# XAUTHORITY, ELM_SCALE and EFL_RUN_IN_TREE are left out: what Xlib and the toolkit make of them is not ours.
VALUES = {
    "HOME": TEXTS,
    "XDG_CONFIG_HOME": TEXTS, "XDG_DATA_HOME": TEXTS, "XDG_DATA_DIRS": TEXTS, "XDG_RUNTIME_DIR": TEXTS,
    "XDG_CACHE_HOME": TEXTS, "TMPDIR": TEXTS,
    "DISPLAY": [*TEXTS, ":99999", "nohost:0", "unix:0", ":0.99", "localhost:1", "tcp/127.0.0.1:99"],
    "DBUS_SESSION_BUS_ADDRESS": [*TEXTS, "autolaunch:", "unix:path=/dev/null", "unix:abstract=x", "tcp:host=127.0.0.1,port=1",
                                 "unix:path=/nonexistent;unix:path=/dev/null", "unixexec:path=/bin/false", "unix:", ";;;"],
    "LANG": [*TEXTS, "xx_YY.UTF-8", "C", "POSIX"], "LC_ALL": TEXTS, "LANGUAGE": TEXTS, "LOCPATH": TEXTS,
    "DLOG_LEVEL": [*TEXTS, "debug", "info", "warn", "error", "silent", "DEBUG"],
    "TV_REMOTE_KEYS": [*TEXTS, "tool"], "VQM_APP_ID": TEXTS, "NO_COLOR": TEXTS, "TERM": TEXTS, "TZ": TEXTS,
    "PATH": TEXTS, "XKEYSYMDB": TEXTS, "XMODIFIERS": TEXTS, "SESSION_MANAGER": TEXTS, "ECORE_NO_SYSTEM_MODULES": TEXTS,
    "JOURNAL_STREAM": [*TEXTS, "8:1"], "COLUMNS": TEXTS,
}
COMMANDS = [["setting", "get"], ["setting", "on"], ["status"], ["status", "--json"], ["check"], ["check", "--json"],
            ["constants", "list"], ["remote", "keys"], ["schedule", "at", "letter.txt"], ["--version"]]


def hostile(random, subject):
    """Some variables set to something, some not at all."""
    environment = dict(subject.desktop.environment)
    for name in random.sample(sorted(VALUES), random.randrange(1, 5)):
        if random.random() < 0.2:
            environment.pop(name, None)
        else:
            environment[name] = random.choice(VALUES[name]).encode(errors="surrogateescape")
    return environment


def changes(subject, environment):
    own = subject.desktop.environment
    return {name: environment.get(name) for name in environment.keys() | own.keys()
            if environment.get(name) != own.get(name)}


def start(subject, environment):
    saved = subject.desktop.environment
    subject.desktop.environment = environment
    try:
        # The shell would not pass on names and values that it does not like.
        return subject.start(wait=False)
    finally:
        subject.desktop.environment = saved


def application(random, subject):
    environment = hostile(random, subject)
    story = changes(subject, environment)
    start(subject, environment)

    # On another display it cannot be asked, and a signal must do.
    elsewhere = "DISPLAY" in story
    try:
        wait_until(lambda: subject.holds() or subject.has_ended(), "it runs or ends", 5 if elsewhere else PATIENCE)
    except AssertionError as fault:
        assert elsewhere, f"{fault}: {story}"
    if subject.has_ended():
        code = subject.application.process.returncode
        assert code > 0, f"ended with {code}: {story}"
        assert subject.application.output().strip() or story.get("DLOG_LEVEL"), f"not a word: {story}"
        return
    subject.keyboard.tap(MORE)
    code = subject.application.stop(signal.SIGTERM)
    assert code == 0, f"ended with {code}: {story}"


def tool(random, subject):
    environment = hostile(random, subject)
    arguments = random.choice(COMMANDS)
    completed = subprocess.run([BUILD / "bin/vqmctl", *arguments], cwd=subject.documents, env=environment,
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE)
    assert completed.returncode in (0, 1, 2, 3), \
        f"vqmctl {arguments}: {completed.returncode} {completed.stderr[-500:]} {changes(subject, environment)}"
    assert completed.stdout or completed.stderr or completed.returncode == 0, f"not a word: {arguments}"


def attack(random, steps, held):
    subject = Subject()
    held.append(subject)
    for _ in range(steps):
        application(random, subject)
        for _ in range(10):
            tool(random, subject)
    subject.start()
    subject.measure()
    subject.launch()
    subject.end()
