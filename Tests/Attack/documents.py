"""Hostile documents, from a grammar that knows the two formats, and hostile files in a document's place."""

import json
import os
import resource
import subprocess
import threading

from home import BUILD, PATIENCE, ROOT

from desktop import new_desktop

STEPS = 40
MEMORY = 1 << 30
NAMES = ["rsp", "schedule", "item", "name", "size", "format", "Data", "c", "x:y", "n" * 2000, "größe"]
ATTRIBUTES = ["state", "start_time", "end_time", "id", "order", "expiration", "key", "value", "xmlns", "xml:lang"]
VALUES = ["ok", "09:00:00", "25:61:61", "9:0", "-1", "2030-12-31", "9999999999999999999999", "ScheduleFile", "schedule.xml",
          "../../etc/passwd", "", " ", "&lt;", "&#0;", "&#x1b;[31m", "&a;", "&#x202e;", "\t", "é" * 3000, "1e9", "0x10"]
TEXTS = [*VALUES, "<![CDATA[x]]]]>", "<!-- -- -->", "<?p i?>", "]]>", "\0", "\ud800", "\ufeff"]
PROLOGS = ["", "", "", '<?xml version="1.0"?>', '<?xml version="1.0" encoding="UTF-16"?>',
           '<?xml version="1.0" encoding="nonsense"?>', "\ufeff", '<!DOCTYPE rsp [<!ENTITY a "b">]>',
           '<!DOCTYPE c [<!ENTITY a SYSTEM "/etc/passwd">]>',
           '<!DOCTYPE c [<!ENTITY b "bbbbbbbbbbbbbbbb"><!ENTITY a "' + "&b;" * 50 + '">]>']


class Grammar:
    """Elements, attributes and texts of both formats, in sizes from none to many."""

    def __init__(self, random):
        self.random = random

    def count(self, most=6):
        """Mostly few; one dimension of some documents is long."""
        return self.random.choice([0, 1, 1, 2, 3, most, 3000 if self.random.random() < 0.02 else 2])

    def attributes(self):
        unique = self.random.random() < 0.9
        names = [self.random.choice(ATTRIBUTES) + (str(number) if number > 3 else "") for number in range(self.count())]
        names = sorted(set(names)) if unique else names
        quote = self.random.choice("'\"")
        return "".join(f" {name}={quote}{self.random.choice(VALUES)}{quote}" for name in names)

    def element(self, depth=0):
        name = self.random.choice(NAMES)
        if self.random.random() < 0.2:
            return f"<{name}{self.attributes()}/>"
        inside = "".join(self.element(depth + 1) if depth < 6 and self.random.random() < 0.5 else
                         self.random.choice(TEXTS) for _ in range(self.count(4 if depth else 8)))
        end = name if self.random.random() < 0.98 else "other"
        return f"<{name}{self.attributes()}>{inside}</{end}>"

    def proper(self):
        """Close to what the TV reads."""
        items = "".join(
            f"<item id='{self.random.choice(VALUES)}' order='{self.random.choice(VALUES)}'><name>{self.random.choice(TEXTS)}"
            f"</name><size>{self.random.choice(VALUES)}</size><format>{self.random.choice(TEXTS)}</format></item>"
            for _ in range(self.count()))
        schedules = "".join(f"<schedule start_time='{self.random.choice(VALUES)}' end_time='{self.random.choice(VALUES)}'>"
                            f"{items}</schedule>" for _ in range(self.count(3)))
        return f"<rsp state='ok' expiration='{self.random.choice(VALUES)}'>{schedules}</rsp>"

    def constants(self):
        return "<c>" + "".join(f"<Data key='{self.random.choice(VALUES)}' value='{self.random.choice(VALUES)}'/>"
                               for _ in range(self.count(20))) + "</c>"

    def large(self):
        """Long in one dimension or two, a megabyte or some more in all."""
        return self.random.choice([
            lambda: "<rsp" + "".join(f" a{number}='{number}'" for number in range(80000)) + "/>",
            lambda: "<rsp state='ok'><schedule start_time='09:00:00' end_time='10:00:00'>" + "".join(
                f"<item id='{number}' order='{number}'><name>{'n' * 900000 if number == 7 else 'n'}</name>"
                f"<size>1</size><format>mp4</format></item>" for number in range(4000)) + "</schedule></rsp>",
            lambda: "<c>" + "".join(f"<Data key='{number:0300}' value='v'/>" for number in range(20000)) + "</c>",
            lambda: "<rsp>" + "<a>" * 50000 + "</a>" * 50000 + "</rsp>",
        ])()

    def document(self):
        text = self.random.choice(PROLOGS) + self.random.choice([self.element, self.proper, self.proper, self.constants])()
        data = text.encode(self.random.choice(["utf-8"] * 6 + ["utf-16", "latin-1"]), errors="replace")
        if self.random.random() < 0.3:
            data = self.damage(bytearray(data))
        return bytes(data)

    def damage(self, data):
        for _ in range(self.random.randrange(1, 4)):
            if data:
                at = self.random.randrange(len(data))
                choice = self.random.randrange(4)
                if choice == 0:
                    del data[at:]
                elif choice == 1:
                    data[at] = self.random.randrange(256)
                elif choice == 2:
                    del data[at:at + 5]
                else:
                    data[at:at] = data[at:at + 50] * 3
        return data


class Tool:
    """vqmctl in a private home, with a limit of memory."""

    def __init__(self, desktop, random):
        self.desktop, self.random = desktop, random
        self.folder = desktop.home / "documents"
        self.folder.mkdir()
        self.limited = not any(name.endswith("SAN_OPTIONS") for name in os.environ)

    def limit(self):
        if self.limited:
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))

    def commands(self, path):
        form = self.random.choice([[], ["--json"]])
        return self.random.choice([
            ["schedule", "lint", path, *self.random.choice([[], ["--json"], ["--strict"]])],
            ["schedule", "show", path, *form], ["schedule", "at", *self.random.choice([[], ["12:00"]]), path, *form],
            ["constants", "list", "--constants", path, *form],
            ["constants", "get", self.random.choice(["ScheduleFile", "k" * 300]), "--constants", path],
            ["check", "--constants", path, *form], ["status", "--constants", path, *form]])

    def run(self, path, arguments=None, codes=(0, 1, 2, 3)):
        arguments = arguments or self.commands(str(path))
        completed = subprocess.run(
            [BUILD / "bin/vqmctl", *arguments], env=self.desktop.environment, cwd=self.folder, preexec_fn=self.limit,
            stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE)
        story = f"vqmctl {arguments}: {completed.returncode} {completed.stderr[-500:]}"
        assert completed.returncode in codes, story
        assert completed.stdout or completed.stderr or completed.returncode == 0, f"not a word: {story}"
        assert not completed.stdout.count(b"\x1b"), f"a terminal is commanded: {story}"
        if "json" in "".join(map(str, arguments)) and completed.returncode in (0, 1):
            json.loads(completed.stdout)


class Swapped:
    """A file whose place is taken in turn by other things, all the while."""

    def __init__(self, path, data, random):
        self.path, self.data = path, data
        self.order = [random.choice([0, 0, 0, 1, 2, 3]) if odd else 3 for odd in [True, False] * 30]
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.swap)
        self.thread.start()

    def swap(self):
        new = self.path.with_name("new")
        while not self.ended.is_set():
            for kind in self.order:
                if kind == 0:
                    os.mkfifo(new)
                elif kind == 1:
                    new.symlink_to("/dev/zero")
                elif kind == 2:
                    new.write_bytes(self.data[:len(self.data) // 2])
                else:
                    new.write_bytes(self.data)
                new.rename(self.path)

    def close(self):
        self.ended.set()
        self.thread.join()


def hostile_file(random, folder, data):
    """Anything but a plain file."""
    path = folder / "odd"
    path.unlink(missing_ok=True)
    kind = random.choice(["fifo", "device", "full", "loop", "dangling", "folder", "process"])
    if kind == "fifo":
        os.mkfifo(path)
    else:
        path.symlink_to({"device": "/dev/zero", "full": "/dev/full", "loop": path, "dangling": "/nonexistent",
                         "folder": folder, "process": "/proc/self/mem"}[kind])
    return path


def attack(random, steps, held):
    desktop = new_desktop()
    try:
        tool, grammar = Tool(desktop, random), Grammar(random)
        path = tool.folder / "document.xml"
        path.write_text(grammar.large())
        for command in (["schedule", "lint"], ["schedule", "show"], ["schedule", "at", "12:00"]):
            tool.run(path, [*command, path], codes=(0, 1))
        tool.run(path, ["constants", "get", "k" * 300, "--constants", path], codes=(0, 1))
        for _ in range(steps):
            data = grammar.document()
            path.write_bytes(data)
            before = path.stat()
            tool.run(path)
            assert path.read_bytes() == data and path.stat().st_mtime_ns == before.st_mtime_ns, "the document has changed"
            if random.random() < 0.2:
                tool.run(hostile_file(random, tool.folder, data))
        swapped = Swapped(tool.folder / "swapped.xml", (ROOT / "Packaging/sample/schedule.xml").read_bytes(), random)
        try:
            for _ in range(steps // 2):
                tool.run(swapped.path)
        finally:
            swapped.close()
    except Exception as fault:
        kept = f"/tmp/attack-document-{os.getpid()}.xml"
        with open(kept, "wb") as copy:
            copy.write(path.read_bytes())
        raise AssertionError(f"{fault} (the last document is {kept})") from fault
    finally:
        desktop.close()
