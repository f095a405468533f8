"""The manual pages that are made from Docs."""

import re

import pytest
from checkout import needs, run

from home import BUILD, ROOT

PAGES = {
    "vqmctl.1": "find out why a TV does not play its sync demo",
    "VQMKeygrab.1": "open the sync demo's companion on a tool key",
    "vqm-schedule.5": "the schedule document of the sync demo",
    "vqm-constants.5": "the constants file of the sync demo",
}

pytestmark = needs("pandoc")


def rendered(prefix, page):
    path = prefix / f"share/man/man{page[-1]}" / page
    # Wider than a terminal, so that no word is broken at a line's end.
    return run("man", "--local-file", "--warnings", path, env={"PATH": "/usr/bin:/bin", "MANWIDTH": "500", "LC_ALL": "C.UTF-8"})


@needs("man")
@pytest.mark.parametrize("width", ["60", "80", "200"])
@pytest.mark.parametrize("page", PAGES)
def test_page_is_shown_without_a_warning(prefix, page, width, tmp_path):
    path = prefix / f"share/man/man{page[-1]}" / page
    environment = {"PATH": "/usr/bin:/bin", "MANWIDTH": width, "LC_ALL": "C.UTF-8", "HOME": str(tmp_path)}
    text = tmp_path / "text"
    messages = run("sh", "-c", 'exec man --warnings=w --local-file "$1" >"$2"', "sh", path, text, env=environment)
    assert messages == ""
    assert text.stat().st_size > 0


@needs("man")
@pytest.mark.parametrize("page", PAGES)
def test_page_is_found_by_what_it_is_about(prefix, page):
    text = rendered(prefix, page)
    assert re.search(rf"^NAME\n +{re.escape(page[:-2])} - {re.escape(PAGES[page])}$", text, re.MULTILINE)
    assert ".md" not in text and "](" not in text


def commands_and_options(path=()):
    """Each command's words and the options that its help names."""
    help_text = run(BUILD / "bin/vqmctl", *path, "--help")
    yield path, set(re.findall(r"(?<=[ ,])--?[a-z][a-z-]*(?=[ ,])", help_text))
    _, _, listed = help_text.partition("ubcommands:\n")
    for name in re.findall(r"^ {1,4}([a-z]\S*) {2,}", listed, re.MULTILINE):
        yield from commands_and_options((*path, name))


def test_manual_of_vqmctl_names_every_command_and_option():
    page = (ROOT / "Docs/vqmctl.md").read_text()
    missing = []
    for path, options in commands_and_options():
        if path and len(path) == len(("group", "command")) and f"`vqmctl {' '.join(path)}" not in page:
            missing.append(" ".join(path))
        missing += [option for option in options if not re.search(rf"[`\[| ]{option}\b", page)]
    assert missing == []


def test_manual_of_vqmctl_names_no_option_that_is_gone():
    known = set().union(*(options for _, options in commands_and_options()))
    named = set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", (ROOT / "Docs/vqmctl.md").read_text()))
    assert named - known == set()
