#!/usr/bin/python3
"""Measures what a tool key's release costs, here and in what people use for it.

tool-key BUILD [--rounds N] [--presses N] [--idle SECONDS] [--json FILE]

Every peer gets an X server, a home and a key of its own; all of them run at the same time, and the
rounds take them in turn. Nothing is asserted: the figures, the ratios and the goals are printed.

Instructions are the processor's own count, user and kernel, of the peer and all it starts, where
the machine lets perf read it. Elsewhere (most virtual machines) the table says so and has two
other figures in their place: the user instructions that valgrind counts, and the processor time,
user and kernel.
"""

import argparse
import json
import os
import re
import signal
import statistics
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "Tests/Support"))

PAGE = os.sysconf("SC_PAGE_SIZE")
APPLICATION, SXHKD, XBINDKEYS, XLIB, ELEMENTARY = (
    "VQMKeygrab", "sxhkd", "xbindkeys", "Xlib floor", "Elementary floor",
)
# The toolkit knows the tool key's number as a symbol; the peers want a key that has a name.
OWN_KEY, PEER_KEY, PEER_KEY_NUMBER = "1008FFF2", "XF86Launch5", 0x1008FF45
QUIET_SECONDS = 1.0
WARM_UP = 5
VALGRIND_PRESSES = 40

# (of which figure, against whom, at most)
GOALS = [
    ("instructions", SXHKD, 0.35),
    ("time", SXHKD, 0.45),
    ("instructions", ELEMENTARY, 1.2),
    ("time", ELEMENTARY, 1.2),
    ("dirty", ELEMENTARY, 1.05),
    ("private", ELEMENTARY, 1.05),
    ("startup", ELEMENTARY, 1.05),
]


def say(text):
    print(text, file=sys.stderr, flush=True)


def percentile(values, share):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(len(ordered) * share))]


class Peer:
    """One program on a desktop of its own, with a key that starts the little program."""

    def __init__(self, name, build, desktop, keyboard, command, key=PEER_KEY, environment=None):
        self.name = name
        self.build = build
        self.desktop = desktop
        self.keyboard = keyboard  # kept: its connection keeps the key
        self.command = [str(part) for part in command]
        self.key = key
        self.environment = {**desktop.environment, **(environment or {})}
        self.folder = desktop.root
        self.pipe = self.folder / "launched"
        os.mkfifo(self.pipe)
        self.process = None
        self.pid = None

    def start(self, prefix=()):
        """Starts the peer, below a measuring program if one is given, and waits until it idles."""
        with open(self.folder / "peer.log", "ab") as log:
            self.process = subprocess.Popen(
                [*prefix, *self.command], cwd=self.folder, env=self.environment,
                stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True,
            )
        self.pid = self.process.pid
        if prefix and prefix[0] == "perf":
            self.pid = self._child_of(self.pid)
        self._wait_until_quiet()
        return self

    def stop(self, number=signal.SIGTERM):
        os.kill(self.pid, number)
        self.process.wait(60)

    def _child_of(self, pid):
        while True:
            children = Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
            if children:
                return int(children[0])
            time.sleep(0.01)

    def _running_time(self):
        try:
            return sum(int((task / "schedstat").read_text().split()[0])
                       for task in Path(f"/proc/{self.pid}/task").iterdir())
        except FileNotFoundError:
            raise SystemExit(f"{self.name} ended:\n" + (self.folder / "peer.log").read_text()[-2000:])

    def _wait_until_quiet(self):
        before, now = -1, self._running_time()
        while before != now or now == 0:
            time.sleep(QUIET_SECONDS)
            before, now = now, self._running_time()

    def presses(self, count):
        return [str(self.build / "bin/KeyReleases"), self.key, str(count), str(self.pipe)]

    def times(self, count):
        """Nanoseconds from the release to the started program's first instruction."""
        done = subprocess.run(self.presses(count), env=self.environment, capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"{self.name}: {done.stderr}" + (self.folder / "peer.log").read_text()[-2000:])
        return [int(line) for line in done.stdout.split()]

    def private_bytes(self, *states):
        """Of memory that no other process maps, in these states."""
        usage = Path(f"/proc/{self.pid}/smaps_rollup").read_text()
        return sum(int(re.search(rf"^Private_{state}: +(\d+)", usage, re.M)[1]) for state in states) * 1024

    def wake_ups(self):
        return sum(
            int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", (task / "status").read_text(), re.M)[1])
            for task in Path(f"/proc/{self.pid}/task").iterdir()
        )


class Perf:
    """Counters of a process and all it starts."""

    EVENTS = ("instructions:u", "instructions:k", "task-clock")

    def __init__(self, folder):
        self.report = folder / "perf.csv"

    def prefix(self, *target):
        return ["perf", "stat", "-x", ",", "-o", str(self.report), "-e", ",".join(self.EVENTS), *target, "--"]

    def counts(self):
        """Event to count; those that this machine cannot count are left out."""
        counts = {}
        for line in self.report.read_text().splitlines():
            fields = line.split(",")
            if len(fields) > 3 and fields[2] in self.EVENTS and not fields[0].startswith("<"):
                counts[fields[2]] = float(fields[0])
        return counts

    def counts_instructions(self):
        subprocess.run([*self.prefix(), "true"], check=True)
        return "instructions:k" in self.counts()

    def startup(self, peer):
        """Until the peer idles."""
        peer.start(self.prefix())
        peer.stop(signal.SIGKILL)
        return self.counts()

    def press(self, peer, count):
        command = self.prefix("-p", str(peer.pid)) + peer.presses(count)
        subprocess.run(command, env=peer.environment, stdout=subprocess.DEVNULL, check=True)
        return {event: value / count for event, value in self.counts().items()}


class Valgrind:
    """User instructions, where the processor's counter is out of reach.

    Each program counts for itself, so what a forked child does before it becomes another program
    is left out; so is the little program that the key starts, the same for all.
    """

    def instructions(self, peer, presses):
        logs = peer.folder / f"valgrind{presses}"
        logs.mkdir()
        peer.start(["valgrind", "--tool=cachegrind", "--cache-sim=no", "--trace-children=yes",
                    "--trace-children-skip=*/Launched", "--cachegrind-out-file=/dev/null", f"--log-file={logs}/%p"])
        if presses:
            peer.times(presses)
        # Ends the peer at once, without the clean-up of a SIGTERM.
        peer.stop(signal.SIGVTALRM)
        own = self._read(logs / str(peer.pid))
        total = own["count"]
        for log in logs.iterdir():
            program = self._read(log)
            # A copy of the peer that never became another program reports what it inherited.
            if program and program["command"] != own["command"]:
                total += program["count"]
        return total

    def _read(self, log):
        """None where the program became another one, which valgrind did not follow."""
        text = log.read_text()
        command = re.search(r"Command: (.*)", text)
        count = re.search(r"I +refs: +([\d,]+)", text)
        return {"command": command[1], "count": int(count[1].replace(",", ""))} if command and count else None

    def measure(self, peer):
        """User instructions of the start and of one press."""
        startup = self.instructions(peer, 0)
        return startup, (self.instructions(peer, VALGRIND_PRESSES) - startup) / VALGRIND_PRESSES


def make_peers(build):
    """The peers, each on a new desktop, none of them started."""
    os.environ["VQM_BUILD_DIR"] = str(build)
    import desktop as end_to_end

    launched = build / "bin/Launched"
    peers = []

    def add(name, command, prepare=None, **options):
        desktop = end_to_end.new_desktop()
        keyboard = end_to_end.Keyboard(desktop)
        keyboard.add(PEER_KEY_NUMBER, *end_to_end.TOOL_KEYS.values())
        if prepare:
            prepare(desktop)
        peers.append(Peer(name, build, desktop, keyboard, command, **options))

    def prepare_application(desktop):
        desktop.install_entry(
            f"[Desktop Entry]\nType=Application\nName=Launched\nExec={launched}\nPath={desktop.root}\n")
        desktop.switch_on()

    add(APPLICATION, [build / "bin/VQMKeygrab"], prepare_application, key=OWN_KEY)
    add(SXHKD, ["sxhkd", "-c", "bindings"],
        lambda desktop: (desktop.root / "bindings").write_text(f"@{PEER_KEY}\n\t{launched}\n"),
        environment={"SXHKD_SHELL": "/bin/sh"})
    add(XBINDKEYS, ["xbindkeys", "--nodaemon", "--file", "bindings"],
        lambda desktop: (desktop.root / "bindings").write_text(f'"{launched}"\n  Release + {PEER_KEY}\n'))
    add(XLIB, [build / "bin/XlibFloor", PEER_KEY, launched])
    add(ELEMENTARY, [build / "bin/ElementaryFloor", PEER_KEY, launched])
    return peers


class Figures:
    """What was measured of one peer, a list of one value per round each."""

    def __init__(self):
        self.rounds = {}

    def add(self, name, value):
        self.rounds.setdefault(name, []).append(value)

    def add_counts(self, what, counts):
        """What is "press" or "startup"."""
        if "instructions:k" in counts:
            self.add(what + " instructions", counts["instructions:u"] + counts["instructions:k"])
        self.add(what + " cpu", counts["task-clock"])

    def get(self, name):
        values = self.rounds.get(name)
        return statistics.median(values) if values else None


def measure_startups(peers, figures, perf, rounds):
    for number in range(rounds):
        say(f"start-up, round {number + 1} of {rounds}")
        for peer in peers:
            figures[peer.name].add_counts("startup", perf.startup(peer))


def measure_idle(peers, figures, seconds):
    say(f"{seconds} s without a key")
    before = {peer.name: peer.wake_ups() for peer in peers}
    time.sleep(seconds)
    for peer in peers:
        figures[peer.name].add("wake-ups", peer.wake_ups() - before[peer.name])
        figures[peer.name].add("dirty", peer.private_bytes("Dirty") // PAGE)
        figures[peer.name].add("private", peer.private_bytes("Dirty", "Clean"))


def measure_presses(peers, figures, perf, rounds, presses):
    for peer in peers:
        peer.times(WARM_UP)
    for number in range(rounds):
        say(f"presses, round {number + 1} of {rounds}")
        for peer in peers:
            times = peer.times(presses)
            figures[peer.name].add("time", statistics.median(times))
            figures[peer.name].add("time 95", percentile(times, 0.95))
            figures[peer.name].add_counts("press", perf.press(peer, presses))


def measure_user_instructions(peers, figures):
    for peer in peers:
        say(f"user instructions: {peer.name}")
        startup, press = Valgrind().measure(peer)
        figures[peer.name].add("startup user", startup)
        figures[peer.name].add("press user", press)


def table(rows):
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    for row in rows:
        print("  ".join(text.ljust(width) if column == 0 else text.rjust(width)
                        for column, (text, width) in enumerate(zip(row, widths))).rstrip())


def print_figures(figures, hardware):
    columns = [
        ("µs", "time", 1000, ".0f"), ("95 %", "time 95", 1000, ".0f"),
    ]
    if hardware:
        columns += [("instr./press", "press instructions", 1, ",.0f")]
    else:
        columns += [("user instr./press", "press user", 1, ",.0f")]
    columns += [("CPU µs/press", "press cpu", 0.001, ".0f")]
    if hardware:
        columns += [("start-up instr.", "startup instructions", 1, ",.0f")]
    else:
        columns += [("start-up user instr.", "startup user", 1, ",.0f")]
    columns += [
        ("start-up CPU ms", "startup cpu", 1, ".1f"), ("dirty MB", "dirty", 1e6 / PAGE, ".2f"),
        ("pages", "dirty", 1, ".0f"), ("private MB", "private", 1e6, ".2f"), ("wake-ups", "wake-ups", 1, ".0f"),
    ]
    table([["", *(column[0] for column in columns)]] +
          [[name, *(format(of.get(key) / unit, form) for _, key, unit, form in columns)]
           for name, of in figures.items()])


def print_goals(figures, hardware, idle):
    names = {
        "time": [("time", "time")],
        "dirty": [("dirty pages", "dirty")],
        "private": [("private memory", "private")],
        "instructions": [("instructions per press", "press instructions")] if hardware else
                        [("user instructions per press", "press user"), ("CPU time per press", "press cpu")],
        "startup": [("start-up instructions", "startup instructions")] if hardware else
                   [("start-up user instructions", "startup user"), ("start-up CPU time", "startup cpu")],
    }
    own = figures[APPLICATION]
    rows = [["VQMKeygrab", "of", "ratio", "goal", ""]]
    for what, other, most in GOALS:
        for label, key in names[what]:
            ratio = own.get(key) / figures[other].get(key)
            rows.append([label, other, f"{ratio:.2f}", f"{most}", "met" if ratio <= most else "missed"])
    wake_ups = own.get("wake-ups")
    rows.append([f"wake-ups in {idle} s", "", f"{wake_ups:.0f}", "0", "met" if wake_ups == 0 else "missed"])
    table(rows)


def main():
    parser = argparse.ArgumentParser(description="What a tool key's release costs, beside peers.")
    parser.add_argument("build", type=Path, help="a build folder with the application and the benchmarks")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--presses", type=int, default=200)
    parser.add_argument("--idle", type=int, default=30, metavar="SECONDS")
    parser.add_argument("--json", type=Path, help="write the figures of each round there")
    options = parser.parse_args()

    peers = make_peers(options.build.resolve())
    figures = {peer.name: Figures() for peer in peers}
    try:
        perf = Perf(peers[0].folder)
        hardware = perf.counts_instructions()
        measure_startups(peers, figures, perf, options.rounds)
        if not hardware:
            measure_user_instructions(peers, figures)
        for peer in peers:
            peer.start()
        measure_idle(peers, figures, options.idle)
        measure_presses(peers, figures, perf, options.rounds, options.presses)
    finally:
        for peer in peers:
            if peer.process is not None and peer.process.poll() is None:
                peer.stop(signal.SIGKILL)
            peer.desktop.close()

    if options.json:
        options.json.write_text(json.dumps({name: of.rounds for name, of in figures.items()}, indent=1) + "\n")
    print(f"{options.presses} presses in each of {options.rounds} rounds; medians of the rounds; "
          "95 %: the 95th percentile.")
    if not hardware:
        print("This machine's processor counters cannot be read: user instructions by valgrind, and CPU time\n"
              "(user and kernel) in place of the instructions of both.")
    print()
    print_figures(figures, hardware)
    print()
    print_goals(figures, hardware, options.idle)


if __name__ == "__main__":
    main()
