"""Scripts/release, Scripts/debian-changelog and the one version."""

import re
import subprocess
import tarfile

import pytest
from checkout import commit, needs, run

from home import ROOT

VERSION = run(ROOT / "Scripts/version").strip()
RELEASED = f"## {VERSION} - 2026-01-31"

pytestmark = needs("git")


def set_heading(clone, *headings, entry="- Something."):
    changelog = clone / "CHANGELOG.md"
    body = "\n\n".join(f"{heading}\n\n{entry}" for heading in headings)
    changelog.write_text(f"# Changelog\n\n{body}\n")
    commit(clone)


def check(clone):
    return subprocess.run([clone / "Scripts/release", "--check"], capture_output=True, text=True, check=False)


def test_release_takes_a_changelog_with_its_version(clone):
    set_heading(clone, RELEASED, "## 0.0.9 - 2025-12-24")
    assert (check(clone).returncode, check(clone).stderr) == (0, "")


@pytest.mark.parametrize("headings, reason", [
    (["## Unreleased"], "begins with 'Unreleased'"),
    (["## 9.9.9 - 2026-01-31", RELEASED], f"but CMakeLists.txt has version {VERSION}"),
    ([f"## {VERSION}"], "has no date"),
    ([f"## {VERSION} - 2026-02-30"], "has no date"),
    ([RELEASED, RELEASED], "two sections"),
])  # fmt: skip
def test_release_refuses_a_changelog(clone, headings, reason):
    set_heading(clone, *headings)
    assert check(clone).returncode == 1
    assert reason in check(clone).stderr


def test_release_refuses_an_empty_section(clone):
    set_heading(clone, RELEASED, entry="")
    assert "says nothing" in check(clone).stderr


def test_release_refuses_uncommitted_changes(clone):
    set_heading(clone, RELEASED)
    (clone / "new file").write_text("")
    assert "not committed" in check(clone).stderr


def test_release_refuses_a_version_that_was_released(clone):
    set_heading(clone, RELEASED)
    run("git", "-C", clone, "tag", f"v{VERSION}")
    assert "has been released" in check(clone).stderr


def test_release_leaves_archive_packages_and_tag(clone):
    """What takes long is a script of one line here: the clean root, the tests in it, and the packages."""
    for path, line in {
        "Scripts/fresh-root": 'mkdir -p build/root/checkout; cd build/root/checkout; shift 2; exec "$@"',
        "Scripts/package": "mkdir -p build/packages/debian-12; touch build/packages/debian-12/some.deb",
        "test": 'touch "$(dirname "$0")/tested"',
    }.items():
        (clone / path).write_text(f"#!/bin/sh\n{line}\n")
    set_heading(clone, RELEASED)
    run(clone / "Scripts/release")
    assert (clone / f"build/root/vqmkeygrab-{VERSION}/tested").exists()
    release = clone / "build/release"
    left = {str(path.relative_to(release)) for path in release.rglob("*") if path.is_file()}
    assert left == {f"vqmkeygrab-{VERSION}.tar.gz", f"vqmkeygrab-{VERSION}.tar.gz.sha256", "debian-12/some.deb"}
    assert run("git", "-C", clone, "tag").split() == [f"v{VERSION}"]


def test_source_archive_is_the_commit_and_always_the_same(clone):
    archive = clone / f"build/release/vqmkeygrab-{VERSION}.tar.gz"
    run(clone / "Scripts/release", "--archive")
    first = archive.read_bytes()
    run(clone / "Scripts/release", "--archive")
    assert archive.read_bytes() == first
    run("sha256sum", "--check", f"{archive.name}.sha256", cwd=archive.parent)
    with tarfile.open(archive) as tar:
        names = {member.name for member in tar if not member.isdir()}
    tracked = run("git", "-C", clone, "ls-files").splitlines()
    assert names == {f"vqmkeygrab-{VERSION}/{name}" for name in tracked}


def test_changelog_of_the_packages_is_the_changelog(clone):
    set_heading(clone, RELEASED, "## 0.0.9 - 2025-12-24", entry=f"- First,\n  on two lines.\n- {'word ' * 20}")
    run(clone / "Scripts/debian-changelog")
    assert (clone / "debian/changelog").read_text() == "".join(
        f"vqmkeygrab ({version}) unstable; urgency=medium\n\n  * First, on two lines.\n"
        f"  * {' '.join(['word'] * 15)}\n    {' '.join(['word'] * 5)}\n\n"
        f" -- VQMKeygrab maintainers <maintainers@quillmere.org>  {day}\n\n"
        for version, day in ((VERSION, "Sat, 31 Jan 2026 00:00:00 +0000"), ("0.0.9", "Wed, 24 Dec 2025 00:00:00 +0000"))
    )


def test_unreleased_packages_sort_before_the_release(clone):
    set_heading(clone, "## Unreleased")
    run(clone / "Scripts/debian-changelog")
    version = re.match(r"vqmkeygrab \((.*)\)", (clone / "debian/changelog").read_text())[1]
    assert re.fullmatch(re.escape(VERSION) + r"~\d{8}", version)


def test_version_stands_in_one_place(clone):
    places = ("CMakeLists.txt", "cmake", "debian/rules", "debian/control", "Packaging", "Scripts", "Docs", "Companion", "Tools")
    found = run("git", "-C", clone, "grep", "--files-with-matches", "--fixed-strings", "--word-regexp", VERSION, "--", *places)
    assert found.split() == ["CMakeLists.txt"]
