"""Bad inheritances of a process: closed and full descriptors, signals that are ignored or blocked, low limits."""

import fcntl
import itertools
import os
import pty
import resource
import signal
import subprocess
import sys

from desktop import BUILD, PATIENCE, wait_until
from subject import MORE, Subject

STEPS = 3
# More than a pipe or a terminal takes of the log that these presses give.
PRESSES = 300
CLOSED = [" ".join(parts) for parts in itertools.product(("", "<&-"), ("", ">&-"), ("", "2>&-"))]
SIGNALS = [signal.SIGCHLD, signal.SIGPIPE, signal.SIGHUP, signal.SIGTERM, signal.SIGALRM, signal.SIGIO]
COMMANDS = [["setting", "get"], ["status"], ["check"], ["remote", "keys"], ["remote", "press", "XF86More"],
            ["constants", "list"], ["schedule", "at", "12:00", "letter.txt"], ["schedule", "lint", "letter.txt"],
            ["--help"], ["nonsense"]]


class StandardError:
    """Something for descriptor 2 that takes the log badly, or not at all."""

    def __init__(self, random, subject):
        self.kind = random.choice([self.full_pipe, self.full_pipe, self.broken_pipe, self.stopped_terminal,
                                   self.full_device, self.users_file, self.read_only])
        self.subject, self.random, self.keep = subject, random, []
        self.number = self.kind()

    def full_pipe(self):
        read_end, write_end = os.pipe()
        self.keep.append(read_end)
        if self.random.random() < 0.5:
            fcntl.fcntl(write_end, fcntl.F_SETFL, os.O_NONBLOCK)
        return write_end

    def broken_pipe(self):
        read_end, write_end = os.pipe()
        os.close(read_end)
        return write_end

    def stopped_terminal(self):
        leader, terminal = pty.openpty()
        self.keep.append(leader)
        return terminal

    def full_device(self):
        return os.open("/dev/full", os.O_WRONLY)

    def users_file(self):
        return os.open(self.subject.desktop.root / "log", os.O_WRONLY | os.O_CREAT | os.O_APPEND)

    def read_only(self):
        return os.open("/dev/null", os.O_RDONLY)

    def close(self):
        for number in [self.number, *self.keep]:
            os.close(number)


def press_much(subject):
    """Many presses without a launch, each with its log lines, and then one with a launch."""
    subject.switch("0")
    for _ in range(PRESSES):
        subject.keyboard.tap(MORE)
    subject.switch("1")
    subject.launch()


def closed(random, subject):
    subject.start(f'exec "$0" {random.choice(CLOSED[1:])}')
    press_much(subject)
    subject.end()


def bad_standard_error(random, subject):
    stream = StandardError(random, subject)
    try:
        subject.start(f'exec "$0" >"$1" 2>&{stream.number}', options={"pass_fds": [stream.number]})
        press_much(subject)
        subject.end()
    finally:
        stream.close()


def inherited(random):
    """A function for the child that sets signals and limits, and which of them must be minded."""
    ignored = random.sample(SIGNALS, random.randrange(3))
    blocked = random.sample(SIGNALS, random.randrange(3))
    limit = random.choice([None, (resource.RLIMIT_NOFILE, random.choice([3, 5, 8, 12, 20, 32, 64])),
                           (resource.RLIMIT_FSIZE, 4096), (resource.RLIMIT_CORE, 0),
                           (resource.RLIMIT_AS, random.choice([30, 100, 200, 400]) << 20)])
    if "ASAN_OPTIONS" in os.environ and limit and limit[0] == resource.RLIMIT_AS:
        limit = None

    def prepare():
        for number in ignored:
            signal.signal(number, signal.SIG_IGN)
        signal.pthread_sigmask(signal.SIG_BLOCK, blocked)
        if limit:
            resource.setrlimit(limit[0], (limit[1], limit[1]))

    return prepare, f"ignored {ignored}, blocked {blocked}, limit {limit}"


def inherits(random, subject):
    """It runs as ever or says why it cannot; SIGINT ends it."""
    prepare, story = inherited(random)
    print(f"  {story}", file=sys.stderr)
    subject.start(wait=False, options={"preexec_fn": prepare})
    wait_until(lambda: subject.holds() or subject.has_ended(), f"it runs or ends: {story}")
    if subject.has_ended():
        code = subject.application.process.returncode
        assert code > 0, f"ended with {code}: {story}"
        return
    subject.keyboard.tap(MORE)
    code = subject.application.stop(signal.SIGINT)
    assert code >= 0, f"ended with {code}: {story}"


def tool(random, subject):
    """vqmctl ends with one of its exit codes, with any kind of stdout and stderr."""
    prepare, story = inherited(random) if random.random() < 0.5 else (None, "")
    arguments = random.choice(COMMANDS)
    stream = StandardError(random, subject)
    redirection = random.choice([*CLOSED, f">&{stream.number}", f"2>&{stream.number}", f">&{stream.number} 2>&1"])
    try:
        # A full pipe without a reader at work stops any tool for ever, as it should.
        patient = stream.kind in (stream.full_pipe, stream.stopped_terminal)
        process = subprocess.Popen(
            ["sh", "-c", f'exec "$0" "$@" {redirection}', BUILD / "bin/vqmctl", *arguments], cwd=subject.documents,
            env=subject.desktop.environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, pass_fds=[stream.number], preexec_fn=prepare)
        code = process.wait(PATIENCE)
        # 127: within its limits the loader finds no library.
        assert code in (0, 1, 2, 3) or patient or code == -signal.SIGPIPE or (prepare and code == 127), \
            f"vqmctl {arguments} {redirection} {stream.kind.__name__} {story}: {code}"
    finally:
        process.kill()
        process.wait()
        stream.close()


def attack(random, steps, held):
    subject = Subject()
    held.append(subject)
    for _ in range(steps):
        random.choice([closed, bad_standard_error, inherits])(random, subject)
        for _ in range(6):
            tool(random, subject)
    subject.start()
    subject.measure()
    subject.finish()
