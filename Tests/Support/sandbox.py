"""Tests that run their commands in Scripts/sandbox are skipped where no namespace can be made."""

import functools
import subprocess

import pytest

from home import ROOT


@functools.cache
def refusal():
    completed = subprocess.run([ROOT / "Tests/Support/needs-namespace", "true"], capture_output=True, text=True)
    return completed.stdout.strip() if completed.returncode == 77 else None


def sandboxed(*arguments):
    """The command line that gives these arguments to the sandbox."""
    if refusal():
        pytest.skip(refusal())
    return [ROOT / "Scripts/sandbox", *arguments]
