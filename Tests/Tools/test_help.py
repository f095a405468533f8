"""What vqmctl says about itself: help, examples, the rules, and what it makes of slips of the hand."""

import re
import shlex
import subprocess

import pytest
from home import BUILD, ROOT
from terminal import shown_on_terminal

VQMCTL = str(BUILD / "bin/vqmctl")
# What `check` finds: its name, what it means, what to do.
FINDINGS = re.findall(r"^\| `([a-z0-9-]+)` \| ([^|]+) \| ([^|]+) \|$", (ROOT / "Docs/troubleshooting.md").read_text(),
                      re.MULTILINE)
RULES = re.findall(r"^### `([a-z0-9-]+)`", (ROOT / "Docs/lint.md").read_text(), re.MULTILINE)


def vqmctl(*arguments):
    return subprocess.run([VQMCTL, *arguments], capture_output=True, text=True, timeout=60)


def commands(path=()):
    """The words of each command that does something."""
    listed = re.findall(r"^ {1,4}([a-z]\S*) {2,}", vqmctl(*path, "--help").stdout.partition("ubcommands:\n")[2], re.MULTILINE)
    if not listed:
        yield path
    for name in listed:
        yield from commands((*path, name))


COMMANDS = list(commands())


@pytest.mark.parametrize("words", COMMANDS, ids=" ".join)
def test_help_of_a_command_is_the_same_both_ways_and_has_an_example(words):
    asked = vqmctl(*words, "--help")
    assert (asked.returncode, asked.stderr) == (0, "")
    assert vqmctl("help", *words).stdout == asked.stdout
    assert max(len(line) for line in asked.stdout.splitlines()) <= 80
    example = shlex.split(re.search(r"^Example:\n  (.*)$", asked.stdout, re.MULTILINE)[1])
    assert example[:1 + len(words)] == ["vqmctl", *words]
    options = {word for word in example if word.startswith("-")}
    assert options <= set(re.findall(r"--[a-z]+", asked.stdout))


def test_help_alone_is_that_of_the_tool():
    assert vqmctl("help").stdout == vqmctl("--help").stdout


@pytest.mark.parametrize("arguments, complaint", [
    (["help", "chek"], "unknown command 'chek' after 'vqmctl'; did you mean check?"),
    (["help", "schedule", "lnt"], "unknown command 'lnt' after 'vqmctl schedule'; did you mean lint?"),
    (["help", "check", "now"], "'vqmctl check' has no command 'now'"),
    (["--jsno"], "unknown option '--jsno' of 'vqmctl'; see 'vqmctl --help'"),
    (["check", "--jsno"], "unknown option '--jsno' of 'vqmctl check'; did you mean --json? see 'vqmctl check --help'"),
    (["check", "--wacth=1"], "unknown option '--wacth' of 'vqmctl check'; did you mean --watch? see 'vqmctl check --help'"),
    (["check", "--colour", "never"],
     "unknown option '--colour' of 'vqmctl check'; did you mean --color? see 'vqmctl check --help'"),
    (["setting", "-x"], "unknown option '-x' of 'vqmctl setting'; see 'vqmctl setting --help'"),
    (["explain", "expird"], "there is no rule or finding 'expird'; did you mean expired?"),
    (["explain", "file-sise"], "there is no rule or finding 'file-sise'; did you mean file-size?"),
    (["explain", "nonsense!"], "there is no rule or finding 'nonsense!'; 'vqmctl explain' lists them"),
])
def test_a_slip_of_the_hand_is_answered_with_what_there_is(arguments, complaint):
    result = vqmctl(*arguments)
    assert (result.returncode, result.stdout, result.stderr) == (2, "", f"vqmctl: {complaint}\n")


@pytest.mark.parametrize("columns, width", [(45, 45), (60, 60), (300, 100)])
def test_help_keeps_to_the_width_of_the_terminal(columns, width):
    shown = shown_on_terminal([VQMCTL, "help", "check"], columns)
    lengths = [len(line) for line in shown.splitlines() if " " in line.strip()]  # a word stays whole
    assert width - 20 <= max(lengths) <= width
    words = vqmctl("help", "check").stdout.split()
    assert shown.split() == words


def test_explain_lists_all_rules_and_findings_with_what_they_are_about():
    result = vqmctl("explain")
    assert (result.returncode, result.stderr) == (0, "")
    assert re.findall(r"^([a-z0-9-]+) \((?:error|warning|note)\)\n    \S", result.stdout, re.MULTILINE) == RULES
    assert re.findall(r"^([a-z0-9-]+) \(check\)\n    \S", result.stdout, re.MULTILINE) == [name for name, _, _ in FINDINGS]
    assert max(len(line) for line in result.stdout.splitlines()) <= 80


@pytest.mark.parametrize("rule", RULES)
def test_explain_prints_the_section_of_the_page(rule):
    result = vqmctl("explain", rule)
    assert (result.returncode, result.stderr) == (0, "")
    section = re.search(rf"^### `{rule}` \((\w+)\)\n(.*?)(?=^##)", (ROOT / "Docs/lint.md").read_text() + "\n##",
                        re.MULTILINE | re.DOTALL)
    assert result.stdout.startswith(f"{rule} ({section[1]})\n\n")
    words = re.sub(r"^```\w*$|`", "", section[2], flags=re.MULTILINE).split()
    assert result.stdout.partition(f"\n{rule} (check)\n")[0].partition("\n")[2].split() == words
    assert "`" not in result.stdout
    for line in re.findall(r"^<.*", section[2], re.MULTILINE):
        assert f"    {line}\n" in result.stdout


def test_explain_says_what_a_finding_of_check_means_and_what_to_do():
    assert len(FINDINGS) > 20
    for name, meaning, advice in FINDINGS:
        result = vqmctl("explain", name)
        assert (result.returncode, result.stderr) == (0, "")
        told = result.stdout.partition(f"{name} (check)\n")[2].casefold().split()
        assert told == f"{meaning}. {advice}.".replace("`", "").casefold().split()
