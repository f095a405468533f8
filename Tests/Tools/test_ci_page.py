"""The page about CI does what it says."""

import json
import os
import re
import subprocess

import pytest

from documents import VQMCTL, Tool, document, item
from home import ROOT

GOOD = document([item("intro", 100)], "  <project item_count='1' total_size='100'/>\n")


def commands():
    """The page's blocks of commands."""
    return re.findall(r"^```sh\n(.*?)^```$", (ROOT / "Docs/ci.md").read_text(), re.M | re.S)


@pytest.fixture
def repository(tmp_path):
    (tmp_path / "schedules").mkdir()
    (tmp_path / "media").mkdir()
    (tmp_path / "media/intro.mp4").write_bytes(bytes(100))
    (tmp_path / "schedules/shop.xml").write_text(GOOD)

    def run(script):
        environment = {**os.environ, "PATH": f"{os.path.dirname(VQMCTL)}:{os.environ['PATH']}"}
        return subprocess.run(["sh", "-ec", script], cwd=tmp_path, env=environment, capture_output=True)

    run.folder = tmp_path
    return run


def test_all_commands_pass_for_good_documents(repository):
    assert len(commands()) == 3
    for script in commands():
        assert repository(script).returncode == 0, script
    assert json.loads((repository.folder / "lint.sarif").read_text())["runs"][0]["results"] == []


def test_each_command_stops_a_bad_document(repository):
    path = repository.folder / "schedules/shop.xml"
    for script in commands():
        path.write_text(GOOD.replace("'09:00:00'", "'09:00'").replace("<size>100<", "<size>99<"))
        assert repository(script).returncode == 1, script
    assert len(json.loads((repository.folder / "lint.sarif").read_text())["runs"][0]["results"]) == 2


def test_the_repairs_and_corrections_make_it_pass(repository):
    path = repository.folder / "schedules/shop.xml"
    path.write_text(GOOD.replace("'09:00:00'", "'09:00'").replace("<size>100<", "<size>99<"))
    Tool(repository.folder, "schedule", "sizes", "--media", "media", "--write", "schedules/shop.xml")()
    Tool(repository.folder, "schedule", "lint", "--fix", "--write", "schedules/shop.xml")()
    assert path.read_text() == GOOD
