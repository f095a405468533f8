"""An X server that stops, goes on or dies: no phase of the application waits for it for ever."""

import signal
import socket
import time
from pathlib import Path

from desktop import PATIENCE, wait_until
from subject import Subject

STEPS = 4
ENDING = [signal.SIGTERM, signal.SIGINT, signal.SIGQUIT, signal.SIGHUP]


class SilentDisplay:
    """A display that accepts connections and never answers, or says a few bytes of nonsense first."""

    def __init__(self, greeting=b""):
        self.folder = Path("/tmp/.X11-unix")
        self.folder.mkdir(mode=0o1777, exist_ok=True)
        self.listener, self.taken = socket.socket(socket.AF_UNIX), []
        self.greeting = greeting
        self.number = next(number for number in range(4000, 5000) if self.bind(number))
        self.listener.listen(64)
        self.name = f":{self.number}"

    def bind(self, number):
        try:
            self.listener.bind(str(self.folder / f"X{number}"))
            return True
        except OSError:
            return False

    def greet(self):
        """Takes what has knocked so far."""
        self.listener.settimeout(0.2)
        try:
            while self.greeting:
                connection, _ = self.listener.accept()
                connection.sendall(self.greeting)
                self.taken.append(connection)
        except OSError:
            pass

    def die(self):
        """Its number stays taken: no other server is to answer in its place."""
        for connection in [*self.taken, self.listener]:
            connection.close()

    def close(self):
        self.die()
        (self.folder / f"X{self.number}").unlink()


def ends_by(subject, number):
    """A signal ends it at any moment on this display, and not by an abort."""
    program = subject.application
    if not subject.has_ended():
        program.process.send_signal(number)
    code = program.process.wait(PATIENCE)
    assert code >= 0 or -code in ENDING, f"ended with {code}"
    assert "AddressSanitizer" not in program.output()


def silent_display(random, subject):
    greeting = random.choice([b"", b"\0", b"\1\0\13\0\0\0", b"\1\0\13\0\0\0\377\377" + bytes(200), b"\2" * 400])
    display = SilentDisplay(greeting)
    subject.cleanup.callback(display.close)
    subject.start(wait=False, DISPLAY=display.name)
    display.greet()
    time.sleep(random.random())
    if random.random() < 0.3:
        display.die()
        subject.check_end(subject.application.process.wait(PATIENCE))
    else:
        ends_by(subject, random.choice(ENDING))


def stopped_in_a_phase(random, subject):
    """Stopped while the application starts, runs or ends; the signal that ends it comes meanwhile."""
    server = subject.desktop.server
    phase = random.choice(["start", "run", "end"])
    subject.start(wait=phase != "start")
    if phase == "start":
        time.sleep(random.random() / 5)
    if phase == "end":
        subject.application.process.send_signal(signal.SIGTERM)
        time.sleep(random.random() / 20)
    server.send_signal(signal.SIGSTOP)
    try:
        time.sleep(random.random() / 2)
        ends_by(subject, random.choice(ENDING))
    finally:
        server.send_signal(signal.SIGCONT)


def stopped_for_a_while(random, subject):
    """Presses that came meanwhile are answered afterwards."""
    subject.start()
    subject.measure()
    server = subject.desktop.server
    for _ in range(random.randrange(1, 4)):
        before = subject.launches()
        server.send_signal(signal.SIGSTOP)
        time.sleep(random.random() / 4)
        server.send_signal(signal.SIGCONT)
        subject.keyboard.tap(random.choice(list(subject.keyboard.own)))
        wait_until(lambda: subject.launches() == before + 1, "the key is answered")
    subject.finish()


def killed(random, subject):
    subject.start()
    subject.desktop.server.send_signal(signal.SIGKILL)
    subject.check_end(subject.application.process.wait(PATIENCE))


def attack(random, steps, held):
    subject = Subject(bus=random.random() < 0.5)
    held.append(subject)
    for _ in range(steps):
        random.choice([silent_display, stopped_in_a_phase, stopped_for_a_while])(random, subject)
    if random.random() < 0.3:
        killed(random, subject)
    else:
        subject.start()
        subject.measure()
        subject.finish()
    subject.check_files()
