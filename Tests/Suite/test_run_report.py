"""The report of ./test about tests that are left out or fail, from a real run of ctest."""

import json
import os
import shutil
import subprocess
from pathlib import Path

import pytest

from run_report import LAST_LINES, main

ROOT = Path(__file__).parents[2]
NEEDS_NAMESPACE = ROOT / "Tests/Support/needs-namespace"
PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(Sample NONE)
enable_testing()
function(sample name skips text result)
    file(WRITE ${CMAKE_BINARY_DIR}/${name} "${text}\\n")
    add_test(NAME ${name} COMMAND sh -c "cat ${name}; exit ${result}" )
    if(skips)
        set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77)
    endif()
endfunction()
"""
SUMMARY = """..s
=========================== short test summary info ============================
SKIPPED [2] test_a.py:12: no namespace (for a reason)
SKIPPED [1] test_b.py:7: no bus
7 passed, 3 skipped in 0.1s"""


def run(folder, capsys, *samples):
    """The report about a run of these samples: name, output, exit code."""
    lines = "".join(f'sample({name} ON "{text}" {code})\n' for name, text, code in samples)
    (folder / "CMakeLists.txt").write_text(PROJECT + lines)
    build = folder / "build"
    subprocess.run(["cmake", "-G", "Ninja", "-S", folder, "-B", build], check=True, capture_output=True)
    subprocess.run(["ctest", "--test-dir", build, "--output-junit", folder / "tests.xml",
                    "--test-output-size-passed", "65536"], capture_output=True)
    main(folder / "tests.xml")
    return capsys.readouterr().out


def test_prints_nothing_when_nothing_is_left_out(tmp_path, capsys):
    assert run(tmp_path, capsys, ("passes", "SKIPPED is a word", 0)) == ""


def test_whole_tests_and_parts_are_counted_by_reason(tmp_path, capsys):
    said = run(tmp_path, capsys, ("whole", "no namespace (for a reason)", 77), ("parts", SUMMARY, 0), ("fine", "", 0))
    assert said == (
        "Left out: 3 tests, because no namespace (for a reason)\n"
        "    parts (2 of its tests)\n"
        "    whole\n"
        "Left out: 1 test, because no bus\n"
        "    parts (1 of its tests)\n")


def test_last_lines_of_a_failing_test_come_again(tmp_path, capsys):
    output = "\n".join(f"line {number}" for number in range(LAST_LINES + 5))
    said = run(tmp_path, capsys, ("fine", "well", 0), ("fails", output, 1))
    assert said == "Failed: fails\n" + "".join(f"    line {number}\n" for number in range(5, LAST_LINES + 5))


def test_the_script_ends_with_the_report_and_the_result_of_the_tests(tmp_path):
    """./test itself, with a project of two tests in place of the product."""
    for name in ("test", "Scripts/common.sh", "Tests/Support/run_report.py"):
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, tmp_path / name)
    (tmp_path / "CMakeLists.txt").write_text(PROJECT + 'sample(whole ON "no bus" 77)\nsample(fails OFF "reason" 1)\n')
    preset = {"name": "dev", "configurePreset": "dev"}
    (tmp_path / "CMakePresets.json").write_text(json.dumps({
        "version": 3, "buildPresets": [preset], "testPresets": [preset],
        "configurePresets": [{"name": "dev", "generator": "Ninja", "binaryDir": "${sourceDir}/build/dev"}],
    }))  # fmt: skip
    completed = subprocess.run([tmp_path / "test"], capture_output=True, text=True,
                               env={**os.environ, "VQM_NO_INSTALL": "1", "VQM_PRESET": "dev"})
    assert completed.stdout.endswith("Left out: 1 test, because no bus\n    whole\nFailed: fails\n    reason\n")
    assert completed.returncode == 8, completed.stderr  # ctest's: some tests failed


@pytest.mark.parametrize("program, result, output", [
    ('shift; exec "$@"', 0, "ran\n"),
    ("echo 'unshare: no' >&2; exit 1", 77, "this machine lets you make no mount namespace (unshare: no)\n"),
])
def test_a_test_that_needs_a_namespace_runs_or_reports_why_not(tmp_path, program, result, output):
    """In place of unshare and mount: a machine that gives the right, and one that does not."""
    for name, body in (("unshare", program), ("mount", "")):
        path = tmp_path / name
        path.write_text(f"#!/bin/sh\n{body}\n")
        path.chmod(0o755)
    completed = subprocess.run([NEEDS_NAMESPACE, "echo", "ran"], capture_output=True, text=True,
                               env={**os.environ, "PATH": f"{tmp_path}:{os.environ['PATH']}"})
    assert (completed.returncode, completed.stdout) == (result, output)
