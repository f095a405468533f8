"""Docs/vqmctl.md: each command of its examples prints what the page shows."""
import re
import subprocess

import pytest
from home import BUILD, PATIENCE, ROOT

PAGE = ROOT / "Docs/vqmctl.md"


def examples():
    """Commands and what they print."""
    found = []
    for block in re.findall(r"```console\n(.*?)```", PAGE.read_text(), re.DOTALL):
        for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            command, _, output = part.partition("\n")
            found.append((command, output))
    return found


@pytest.mark.parametrize("command, output", examples())
def test_each_command_prints_what_the_page_shows(command, output):
    result = subprocess.run(["sh", "-c", f"exec 2>&1\n{command}"], cwd=ROOT, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, timeout=PATIENCE,
                            env={"PATH": f"{BUILD}/bin:/usr/bin:/bin", "LC_ALL": "C", "TZ": "UTC"})
    assert result.stdout.decode() == output


def test_there_are_examples():
    assert examples() != []
