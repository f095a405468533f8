"""Docs/troubleshooting.md: each of its commands runs, and prints what the page shows."""

import re

import pytest
from home import APP_ID, ROOT
from shop import Shop
from test_check import FAULTS

PAGE = ROOT / "Docs/troubleshooting.md"
DEFAULT_APP_ID = "org.quillmere.vqmkeygrab"
MARK = "=== the next command ==="


def sessions():
    """Each sandbox that the page opens: its options, and the commands in it with what they print."""
    found = []
    for block in re.findall(r"```console\n(.*?)```", PAGE.read_text(), re.DOTALL):
        for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            command, _, output = part.partition("\n")
            if command.startswith("Scripts/sandbox"):
                assert output == ""
                found.append((command.split()[1:], []))
            else:
                found[-1][1].append((command, output))
    return found


def normal(text):
    """Without what differs between machines and days."""
    text = text.replace(APP_ID, DEFAULT_APP_ID)
    text = re.sub(r"[0-9.]+ ([kMGTP]B|bytes?) free", "12.3 GB free", text)
    text = re.sub(r"today is [0-9-]+ by this machine's clock, time zone .*", "today is TODAY", text)
    return re.sub(r"expected a day from [0-9-]+ on", "expected a day from TODAY on", text)


def run(shop, options, commands):
    script = "".join(f"{command}\necho '{MARK}'\n" for command in commands)
    result = shop.run("exec 2>&1\n" + script.replace(DEFAULT_APP_ID, APP_ID), *options, cwd=ROOT)
    outputs = result.stdout.decode().split(MARK + "\n")
    assert (outputs.pop(), result.stderr) == ("", b"")
    return outputs


@pytest.mark.parametrize("options, steps", sessions(), ids=lambda value: " ".join(value[:2]) if value and isinstance(value[0], str) else "")
def test_each_command_prints_what_the_page_shows(home, options, steps):
    outputs = run(Shop(home), options, [command for command, _ in steps])
    assert [(command, normal(output)) for (command, _), output in zip(steps, outputs)] == [
        (command, normal(output)) for command, output in steps]


def test_ten_tvs_are_brought_to_play():
    assert [options for options, _ in sessions()] == [["--broken", fault] for fault in (
        "time", "size", "constants", "encoding", "names", "lost", "page", "digits", "disk", "stick")]
    for _, steps in sessions():
        last = [output for command, output in steps if command.startswith("vqmctl check")][-1]
        assert last.splitlines()[-1] == "the TV: ready"
        assert "problem: " not in last
        assert "error: " not in last


def test_the_page_explains_each_diagnostic():
    told = {line.rpartition("[")[2][:-1] for _, _, text in FAULTS.values() for line in text.splitlines()
            if line.endswith("]")} | {"not-checked", "changed-meanwhile", "only-for-root"}
    explained = re.findall(r"^\| `([a-z0-9-]+)` \|", PAGE.read_text(), re.MULTILINE)
    assert sorted(explained) == sorted(told)
    source = (ROOT / "Diagnostics/Readiness/Explain.cpp").read_text()
    assert told == set(re.findall(r'Add(?:Problem|Note|Fault)\(\s*"([a-z0-9-]+)"', source))
