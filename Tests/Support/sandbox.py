"""Tests that run their commands in Scripts/sandbox or in a namespace are skipped where none can be made."""

import functools
import subprocess

import pytest

from home import ROOT


@functools.cache
def refusal():
    completed = subprocess.run([ROOT / "Tests/Support/needs-namespace", "true"], capture_output=True, text=True)
    return completed.stdout.strip() if completed.returncode == 77 else None


def require_namespace():
    """Skips the test where no namespace can be made."""
    if refusal():
        pytest.skip(refusal())


def sandboxed(*arguments):
    """The command line that gives these arguments to the sandbox."""
    require_namespace()
    return [ROOT / "Scripts/sandbox", *arguments]
