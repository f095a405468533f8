"""An installation of the build that is tested."""

import shutil
import subprocess

import pytest

from home import BUILD, ROOT


def needs(program):
    """A machine without the program leaves the test out."""
    return pytest.mark.skipif(shutil.which(program) is None, reason=f"{program} is not installed")


def run(*command, **options):
    completed = subprocess.run(
        [str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, text=True, **options,
    )  # fmt: skip
    assert completed.returncode == 0, f"{command}\n{completed.stdout[-4000:]}"
    return completed.stdout


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    """Installed where its path needs quoting."""
    folder = tmp_path_factory.mktemp("prefix") / "an $HOME of 100 %"
    run("cmake", "--install", BUILD, "--prefix", folder)
    return folder


@pytest.fixture
def clone(tmp_path):
    """The checkout as it is, committed, in a repository of its own."""
    folder = tmp_path / "clone"
    files = run("git", "-C", ROOT, "ls-files", "--cached", "--others", "--exclude-standard", "-z").split("\0")
    for name in filter(None, files):
        source, target = ROOT / name, folder / name
        if source.exists():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(source, target, follow_symlinks=False)
    run("git", "init", "--quiet", folder)
    for name, value in (("user.name", "Tester"), ("user.email", "tester@localhost")):
        run("git", "-C", folder, "config", name, value)
    commit(folder)
    return folder


def commit(folder):
    run("git", "-C", folder, "add", "--all")
    run("git", "-C", folder, "commit", "--quiet", "--message", "Change")
