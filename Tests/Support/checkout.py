"""Commands, and copies of the checkout, for the tests of packaging and releases."""

import shutil
import subprocess

import pytest

from home import ROOT


def needs(program):
    """A machine without the program leaves the test out."""
    return pytest.mark.skipif(shutil.which(program) is None, reason=f"{program} is not installed")


def run(*command, **options):
    """What the command prints; fails with it unless the command succeeds."""
    completed = subprocess.run(
        [str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, text=True, **options,
    )  # fmt: skip
    assert completed.returncode == 0, f"{command}\n{completed.stdout[-4000:]}"
    return completed.stdout


def commit(folder):
    """Everything that has changed there."""
    run("git", "-C", folder, "add", "--all")
    run("git", "-C", folder, "commit", "--quiet", "--message", "Change")


def copy_checkout(folder):
    """The checkout as it is, committed, in a repository of its own."""
    if (ROOT / ".git").exists():
        listed = run("git", "-C", ROOT, "ls-files", "--cached", "--others", "--exclude-standard", "-z").split("\0")
        names = [name for name in listed if name and (ROOT / name).exists()]
    else:
        outside = ("build", ".pytest_cache", "__pycache__")
        paths = [path.relative_to(ROOT) for path in ROOT.rglob("*") if not path.is_dir()]
        names = [path for path in paths if not set(outside) & set(path.parts)]
    for name in names:
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, folder / name, follow_symlinks=False)
    run("git", "init", "--quiet", folder)
    for name, value in (("user.name", "Tester"), ("user.email", "tester@localhost")):
        run("git", "-C", folder, "config", name, value)
    commit(folder)
    return folder
