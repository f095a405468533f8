"""A settings store in which anything may stand in a folder's or a key's place, and be replaced while it is watched."""

import os
import signal
import subprocess

from desktop import BUILD, PATIENCE, SETTING_KEY, wait_until
from subject import Subject, facts_of

STEPS = 30


class Store:
    """The folders of the setting, and what a hostile neighbour does to them."""

    def __init__(self, subject, random):
        self.subject, self.random = subject, random
        self.top = subject.desktop.settings
        self.setting = self.top / SETTING_KEY
        self.places = [self.setting, *self.setting.parents[:4]]
        self.shared = subject.desktop.root / "shared"
        self.count = 0

    def aside(self):
        self.count += 1
        return self.subject.desktop.root / f"aside-{self.count}"

    def remove(self, place):
        """Moves what stands there away, so that nothing of it is lost."""
        if os.path.lexists(place):
            place.rename(self.aside())

    def put(self, place):
        """Anything but what belongs there."""
        place.parent.mkdir(parents=True, exist_ok=True)
        kind = self.random.choice(["fifo", "loop", "dangling", "folder", "file", "large", "device", "users", "nothing"])
        if kind == "fifo":
            os.mkfifo(place)
        elif kind == "folder":
            place.mkdir()
        elif kind in ("file", "large"):
            place.write_bytes(self.random.randbytes(1 << 20 if kind == "large" else 20))
        elif kind != "nothing":
            place.symlink_to({"loop": place, "dangling": "/nonexistent", "device": "/dev/zero",
                              "users": self.subject.documents / "letter.txt"}[kind])

    def hostile(self):
        place = self.random.choice(self.places)
        try:
            self.remove(place)
            self.put(place)
        except OSError:
            pass  # something hostile stands in the way already

    def clear(self):
        """A proper store, partly behind links to folders with other modes."""
        config = self.top.parent
        for path in sorted(config.iterdir()):
            self.remove(path)
        if self.random.random() < 0.5:
            self.remove(self.shared)
            self.shared.mkdir()
            self.top.symlink_to(self.shared)
        self.setting.parent.mkdir(parents=True)
        for folder in [self.top.resolve(), *self.setting.parents[:3]]:
            folder.chmod(self.random.choice([0o700, 0o755, 0o2770, 0o1777]))

    def write(self, value):
        """Changes the store as a person, an editor or a sync tool would."""
        way = self.random.choice(["in place", "renamed", "linked", "kept open"])
        other = self.setting.with_name("other")
        if way == "in place":
            self.setting.write_text(value)
        elif way == "renamed":
            other.write_text(value)
            other.rename(self.setting)
        elif way == "linked":
            other.write_text(value)
            self.setting.unlink(missing_ok=True)
            os.link(other, self.setting)
            other.unlink()
        else:
            file = open(self.setting, "w")
            file.write(value)
            file.flush()
            self.subject.cleanup.callback(file.close)


def modes_of(folder):
    return {path: facts[:3] for path, facts in facts_of(folder).items() if os.path.isdir(path)}


def said(watch):
    """The states that the watch has printed; what it complains of stands between them."""
    return [line for line in watch.output().splitlines() if line in ("on", "off")]


def vqmctl(subject, *arguments):
    completed = subprocess.run([BUILD / "bin/vqmctl", *arguments], env=subject.desktop.environment,
                               stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE)
    assert completed.returncode in (0, 1, 3), f"vqmctl {arguments}: {completed.returncode}\n{completed.stderr}"
    assert completed.returncode == 0 or completed.stderr.strip() or completed.stdout.strip(), "not a word"
    return completed


def attack(random, steps, held):
    subject = Subject()
    held.append(subject)
    store = Store(subject, random)
    store.clear()
    store.write("1")
    subject.start()
    watch = subject.desktop.run([BUILD / "bin/vqmctl", "setting", "watch"], name="watch")
    wait_until(lambda: watch.output() == "on\n", "the watch shows what it finds")
    subject.measure()

    for _ in range(steps):
        store.hostile()
        if random.random() < 0.5:
            vqmctl(subject, "setting", random.choice(["on", "off", "get"]))
        if random.random() < 0.1:
            store.clear()
    store.clear()
    for value, word in [("0", "off"), ("1", "on"), ("0", "off"), ("1", "on")]:
        if random.random() < 0.3:
            store.clear()
        modes = modes_of(store.top.resolve())
        store.write(value)
        wait_until(lambda: said(watch)[-1] == word, f"the watch says {word}")
        assert vqmctl(subject, "setting", "get").stdout == f"{word}\n"
        vqmctl(subject, "setting", word)
        assert modes_of(store.top.resolve()) == modes, "the folders' modes are as they were"

    assert watch.stop(signal.SIGINT) == 0
    del subject.watched[subject.desktop.settings]
    subject.finish()
