"""The coverage report: what it counts, and what it fails on."""

import json
import subprocess
import sys
from pathlib import Path

import pytest

SOURCE = """int Pick(int number)
{
    return number > 1 &&
                   number < 9 ? 1 : 2;
}
"""
FIRST = [3, 12, 3, 22]
SECOND = [4, 20, 4, 30]


@pytest.fixture
def report(tmp_path):
    """Runs the report over `functions`, lists of (condition's place, true count, false count)."""
    source = tmp_path / "Data/Pick.cpp"
    source.parent.mkdir()
    source.write_text(SOURCE)
    other = tmp_path / "Tools/Pick.cpp"

    def run(functions, accepted="", by_way_of="."):
        named = [f"{tmp_path}/{by_way_of}/{file.relative_to(tmp_path)}" for file in (source, other)]
        export = {
            "files": [
                {"filename": file, "summary": {"lines": {"count": 4, "covered": 3}}} for file in named
            ],
            "functions": [
                {
                    "name": "_Z4Picki",
                    "filenames": named[::-1],
                    "branches": [[*place, true, false, 1, 0, 4] for place, true, false in branches]
                    + [[1, 1, 1, 2, 0, 0, 0, 0, 4]],
                }
                for branches in functions
            ],
        }
        names = tmp_path / "accepted.txt"
        names.write_text(f"# why\n\n{accepted}")
        done = subprocess.run(
            [sys.executable, Path(__file__).with_name("report.py"), tmp_path, names],
            input=json.dumps({"data": [export]}),
            capture_output=True,
            text=True,
        )
        return done.returncode, done.stdout.splitlines(), done.stderr

    return run


def test_passes_when_each_branch_is_taken(report):
    code, lines, _ = report([[(FIRST, 1, 2), (SECOND, 3, 4)]])
    assert code == 0
    assert lines == [
        "                             lines            branches",
        "Data/Pick.cpp         3/4   75.0 %        4/4  100.0 %",
        "Data/                 3/4   75.0 %        4/4  100.0 %",
        "all                   3/4   75.0 %        4/4  100.0 %",
    ]


def test_fails_on_a_branch_that_is_not_taken_and_shows_it(report):
    code, lines, _ = report([[(FIRST, 1, 0), (SECOND, 0, 4)]])
    assert code == 1
    assert lines[-4:] == [
        "Data/Pick.cpp:3: Pick: `number > 1` is never false",
        "    not in accepted.txt: write its test",
        "Data/Pick.cpp:4: Pick: `number < 9` is never true",
        "    not in accepted.txt: write its test",
    ]


def test_passes_when_it_is_accepted_and_prints_the_reason(report):
    code, lines, _ = report(
        [[(FIRST, 1, 0), (SECOND, 3, 4)]], "Data/Pick.cpp | Pick | number > 1 | false | no list is so short\n"
    )
    assert code == 0
    assert lines[-2:] == ["Data/Pick.cpp:3: Pick: `number > 1` is never false", "    accepted: no list is so short"]


@pytest.mark.parametrize("name", ["Data/Pick.cpp | Pick | number > 1 | true", "Data/Gone.cpp | Gone | 1 | true"])
def test_fails_on_a_name_that_is_not_needed(report, name):
    code, lines, _ = report([[(FIRST, 1, 1), (SECOND, 1, 1)]], f"{name} | once it was so\n")
    assert code == 1
    assert lines[-1] == f"accepted.txt: not needed, it is taken or gone: {name}"


def test_adds_up_programs_and_the_instances_of_a_template(report):
    code, _, _ = report([[(FIRST, 1, 0), (SECOND, 0, 1)], [(FIRST, 0, 1), (SECOND, 1, 0)]])
    assert code == 0


def test_recognises_a_source_by_any_path_to_it(report):
    code, lines, _ = report([[(FIRST, 1, 2), (SECOND, 3, 4)]], by_way_of="build/coverage/../..")
    assert code == 0
    assert lines[1].startswith("Data/Pick.cpp ")


def test_refuses_a_list_that_it_cannot_read(report):
    code, _, error = report([[(FIRST, 1, 1)]], "Data/Pick.cpp | Pick | number > 1 | false\n")
    assert code == 1
    assert "accepted.txt:3: expected FILE | FUNCTION" in error
