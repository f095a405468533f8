"""The completions of vqmctl, asked of the shells themselves."""

import os
import pty
import re
import select
import shlex
import subprocess
import time

import pytest
from checkout import needs, run

from home import BUILD, PATIENCE, ROOT

FOLDER = ROOT / "Packaging/completions"
FILES = ["vqmctl.bash", "_vqmctl", "vqmctl.fish"]


def test_completions_say_what_help_says(tmp_path):
    run(ROOT / "Scripts/make-completions", BUILD / "bin/vqmctl", tmp_path)
    for name in FILES:
        assert (tmp_path / name).read_text() == (FOLDER / name).read_text(), "run Scripts/make-completions"


@pytest.fixture
def folder(tmp_path):
    """Where the user is."""
    for name in ("schedule.xml", "notes.txt"):
        (tmp_path / name).write_text("")
    (tmp_path / "season").mkdir()
    return tmp_path


def in_bash(line, folder):
    words = line.split(" ")
    script = (
        f"compopt() {{ :; }}; source {shlex.quote(str(FOLDER / 'vqmctl.bash'))};"
        f" COMP_WORDS=({' '.join(map(shlex.quote, words))}); COMP_CWORD={len(words) - 1}; _vqmctl;"
        ' printf "%s\\n" "${COMPREPLY[@]}"'
    )
    return set(run("bash", "--norc", "-c", script, cwd=folder).split())


def in_fish(line, folder):
    environment = {**os.environ, "HOME": str(folder / "home"), "XDG_CONFIG_HOME": str(folder / "home")}
    script = f"source {shlex.quote(str(FOLDER / 'vqmctl.fish'))}; complete -C {shlex.quote(line)}"
    answer = run("fish", "--no-config", "-c", script, cwd=folder, env=environment)
    return {entry.split("\t")[0].rstrip("/") for entry in answer.splitlines()}


class Zsh:
    """An interactive zsh; what it lists is read from its terminal."""

    def __init__(self, folder):
        environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "TERM": "dumb", "LC_ALL": "C.UTF-8"}
        self.terminal, end = pty.openpty()
        self.process = subprocess.Popen(
            ["zsh", "-f", "-i"], cwd=folder, env=environment, stdin=end, stdout=end, stderr=end, start_new_session=True
        )
        os.close(end)
        self.ask(
            f"unset zle_bracketed_paste; PS1=ready; fpath=({FOLDER} $fpath); autoload -U compinit; compinit -u -D;"
            " LISTMAX=10000; zstyle ':completion:*' verbose no; stty columns 200 rows 500\n"
        )

    def ask(self, text):
        """What it prints from here to the end of the next command. Then its line editor waits for keys."""
        os.write(self.terminal, text.encode() + b"\x15print e''nd\n")
        printed, deadline = "", time.monotonic() + PATIENCE
        while not re.search(r"^end\r?\n.*ready", printed, re.MULTILINE | re.DOTALL):
            readable, _, _ = select.select([self.terminal], [], [], max(0, deadline - time.monotonic()))
            assert readable, f"zsh does not answer:\n{printed}"
            printed += os.read(self.terminal, 65536).decode()
        return printed

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.terminal)


def in_zsh(line, folder):
    zsh = Zsh(folder)
    try:
        printed = zsh.ask(line + "\x04")
    finally:
        zsh.close()
    _, _, listed = printed.partition("\n")
    return {word.rstrip("/") for word in listed.split()}


SHELLS = [
    pytest.param(in_bash, id="bash", marks=needs("bash")),
    pytest.param(in_zsh, id="zsh", marks=needs("zsh")),
    pytest.param(in_fish, id="fish", marks=needs("fish")),
]

# line, what must be offered, what must not be
CASES = [
    ("vqmctl ", {"status", "check", "schedule", "constants", "setting", "remote"}, {"lint", "notes.txt"}),
    ("vqmctl schedule ", {"lint", "at", "show"}, {"status", "schedule.xml"}),
    ("vqmctl setting ", {"get", "on", "off", "watch"}, {"lint"}),
    ("vqmctl schedule lint ", {"schedule.xml", "season"}, {"notes.txt", "show"}),
    ("vqmctl schedule lint --ignore ", {"expired", "time-without-seconds"}, {"schedule.xml"}),
    ("vqmctl --color ", {"auto", "always", "never"}, {"status"}),
    ("vqmctl schedule lint --json ", {"schedule.xml"}, {"always", "notes.txt"}),
    ("vqmctl -v schedule lint --st", {"--strict"}, {"--json"}),
    ("vqmctl explain ", {"expired", "time-without-seconds", "file-size"}, {"schedule.xml"}),
    ("vqmctl check --constants ", {"schedule.xml"}, {"notes.txt", "status"}),
    ("vqmctl remote press XF86Mo", {"XF86More"}, {"XF86SimpleMenu"}),
    ("vqmctl remote press --hold 5 XF86Sim", {"XF86SimpleMenu"}, {"XF86More"}),
]


@pytest.mark.parametrize("shell", SHELLS)
@pytest.mark.parametrize("line, offered, others", CASES)
def test_shell_offers_what_can_follow(shell, line, offered, others, folder):
    found = shell(line, folder)
    # A single candidate is put into the line at once.
    assert offered <= found or any(word in "".join(found) for word in offered if len(offered) == 1)
    if shell is in_fish and "notes.txt" in others and "schedule.xml" in offered:
        others = others - {"notes.txt"}  # it puts matching files first and offers the rest behind them
    assert not others & found


def test_bash_completes_behind_an_equals_sign(folder):
    assert in_bash("vqmctl --color = al", folder) == {"always"}
    assert in_bash("vqmctl --color =", folder) == {"auto", "always", "never"}
