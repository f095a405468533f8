"""The command `vqmctl schedule lint` as a user and a script meet it."""
import json
import os
import subprocess
from pathlib import Path

import jsonschema
import pytest

from home import BUILD, ROOT

VQMCTL = str(BUILD / "bin/vqmctl")
DOCS = ROOT / "Docs"

GOOD = """<rsp state='ok'>
  <schedule start_time='09:00:00' end_time='18:00:00'>
    <item id='A1' order='1'><name>intro</name><size>1048576</size><format>mp4</format></item>
  </schedule>
</rsp>
"""
BAD = GOOD.replace("'09:00:00'", "'09:30'")
NOTE = GOOD.replace("'09:00:00'", "'9:00:00'")
BAD_LINE = (
    "{}:2:25: error: start_time '09:30' has no seconds; expected hours:minutes:seconds, such as 09:30:00; "
    "the TV reads 09:03:00 [time-without-seconds]\n"
)
BAD_SOURCE = """      <schedule start_time='09:30' end_time='18:00:00'>
                            ^~~~~
"""


@pytest.fixture
def lint(tmp_path):
    (tmp_path / "good.xml").write_text(GOOD)
    (tmp_path / "bad.xml").write_text(BAD)
    (tmp_path / "note.xml").write_text(NOTE)

    def run(*arguments, stdin=b""):
        environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "DLOG_LEVEL")}
        return subprocess.run(
            [VQMCTL, "schedule", "lint", *arguments], cwd=tmp_path, env=environment, input=stdin, capture_output=True
        )

    run.directory = tmp_path
    return run


def check_json(output):
    schema = json.loads((DOCS / "schemas" / "lint.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    document = json.loads(output.decode("utf-8", "strict"))
    jsonschema.Draft202012Validator(schema).validate(document)
    return document


def test_a_good_document_gives_nothing(lint):
    result = lint("good.xml")
    assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")


def test_a_finding_has_its_line_its_source_and_a_caret(lint):
    result = lint("bad.xml")
    assert result.returncode == 1
    assert result.stdout.decode() == BAD_LINE.format("bad.xml") + BAD_SOURCE
    assert result.stderr == b"vqmctl: 1 error, 0 warnings, 0 notes\n"


def test_colours_are_put_on_what_a_reader_looks_for(lint):
    result = lint("--color", "always", "bad.xml")
    first, source, marker, _ = result.stdout.decode().split("\n")
    assert first.startswith("\033[1mbad.xml:2:25:\033[0m \033[1;31merror:\033[0m start_time '09:30' has no seconds; ")
    assert (source, marker) == (BAD_SOURCE.split("\n")[0], 28 * " " + "\033[32m^~~~~\033[0m")
    assert lint("bad.xml", "--color=never").stdout == lint("bad.xml").stdout == lint("--color", "auto", "bad.xml").stdout


def test_oneline_has_the_line_alone(lint):
    result = lint("--oneline", "bad.xml", "good.xml", "bad.xml")
    assert (result.returncode, result.stderr) == (1, b"")
    assert result.stdout.decode() == 2 * BAD_LINE.format("bad.xml")


def test_notes_count_only_when_strict(lint):
    assert lint("note.xml").returncode == 0
    assert b": note: " in lint("note.xml").stdout
    assert lint("--strict", "note.xml").returncode == 1
    assert lint("--strict", "good.xml").returncode == 0


def test_ignored_rules_find_and_count_nothing(lint):
    result = lint("--ignore", "time-without-seconds", "bad.xml", "--ignore", "expired", "good.xml")
    assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")


def test_the_day_can_be_given(lint):
    document = GOOD.replace("  <schedule", "  <project expiration='2030-01-31'/>\n  <schedule").encode()
    assert lint("--on", "2030-01-31", "-", stdin=document).returncode == 0
    expired = lint("--on", "2030-02-01", "-", stdin=document)
    assert expired.returncode == 1
    assert expired.stdout.startswith(b"<stdin>:2:24: warning: expiration '2030-01-31' has passed; ")


@pytest.mark.parametrize(
    "arguments, complaint",
    [
        (["--ignore", "hour24", "good.xml"], "rule 'hour24' is unknown; did you mean hour-24?"),
        (["--jsno", "good.xml"], "unknown option '--jsno' of 'vqmctl schedule lint'; did you mean --json? see 'vqmctl "
                                 "schedule lint --help'"),
        (["--jsno=1", "good.xml"], "unknown option '--jsno' of 'vqmctl schedule lint'; did you mean --json? see 'vqmctl "
                                   "schedule lint --help'"),
        (["--foo", "good.xml"], "unknown option '--foo' of 'vqmctl schedule lint'; see 'vqmctl schedule lint --help'"),
        (["--json", "--oneline", "good.xml"], "--json, --oneline and --sarif exclude one another; expected one of them"),
        (["--color", "red", "good.xml"], "--color is 'red'; expected auto, always or never"),
        (["--on", "2026-02-30", "good.xml"], "--on '2026-02-30' is no day; expected year-month-day"),
    ],
)
def test_what_is_not_understood_is_usage(lint, arguments, complaint):
    result = lint(*arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode() == f"vqmctl: {complaint}\n"


def test_a_file_that_cannot_be_read_stops_no_other(lint):
    result = lint("--oneline", "missing.xml", ".", "bad.xml")
    assert result.returncode == 3
    assert result.stdout.decode() == BAD_LINE.format("bad.xml")
    assert result.stderr.decode() == (
        "vqmctl: cannot read 'missing.xml': No such file or directory\nvqmctl: cannot read '.': Is a directory\n"
    )


def test_an_error_while_reading_is_named(lint):
    result = lint("/proc/self/mem")
    assert result.returncode == 3
    assert result.stderr == b"vqmctl: cannot read '/proc/self/mem': Input/output error\n"


def test_json_validates_whatever_there_is(lint):
    (lint.directory / "noise.xml").write_bytes(b"<rsp state='\xff\xfe\x1b' \x80\xc3(")
    (lint.directory / "wide.xml").write_bytes(BAD.encode("utf-16"))
    (lint.directory / "latin.xml").write_bytes(
        ("<?xml version='1.0' encoding='ISO-8859-1'?>" + BAD.replace("A1' ", "\xe4' colour='\xe4' ")).encode("latin-1")
    )
    odd = os.fsencode(lint.directory) + b"/odd\xff\n.xml"
    Path(os.fsdecode(odd)).write_text(BAD)
    result = lint("--json", "good.xml", "bad.xml", "noise.xml", "wide.xml", "latin.xml", odd, "missing.xml")
    assert result.returncode == 3
    files = check_json(result.stdout)["files"]
    assert [len(entry["findings"]) for entry in files[:2]] == [0, 1]
    assert files[1]["findings"][0] == {
        "id": "time-without-seconds",
        "severity": "error",
        "line": 2,
        "column": 25,
        "end_column": 30,
        "message": "start_time '09:30' has no seconds",
        "expected": "hours:minutes:seconds, such as 09:30:00",
        "effect": "the TV reads 09:03:00",
        "source": {
            "text": "  <schedule start_time='09:30' end_time='18:00:00'>",
            "start": 24,
            "length": 5,
            "cut_before": False,
            "cut_after": False,
        },
        "fix": {"offset": 41, "old": "09:30", "new": "09:30:00"},
    }
    assert files[3]["findings"][0]["id"] == "unreadable-encoding"
    assert "\xe4" in files[4]["findings"][1]["source"]["text"]
    assert files[5]["file"].endswith("/odd\\xff\\x0a.xml")
    assert files[6]["error"] == "No such file or directory"
    assert "error" not in files[0]


def test_names_come_out_escaped(lint):
    odd = os.fsencode(lint.directory) + b"/\x1b[31m\xff\n"
    Path(os.fsdecode(odd)).write_text(BAD)
    result = lint("--oneline", odd, odd + b"gone")
    assert b"/\\x1b[31m\\xff\\x0a:2:25: error: " in result.stdout
    assert b"\\x1b[31m\\xff\\x0agone': No such file or directory\n" in result.stderr


def test_more_than_a_thousand_findings_are_counted(lint):
    (lint.directory / "many.xml").write_text("<rsp state='ok'>" + "\n<item/>" * 400 + "</rsp>")
    result = lint("many.xml")
    assert result.returncode == 1
    assert result.stdout.count(b"[") == 1000
    assert b"vqmctl: many.xml: 1401 further findings not shown\n" in result.stderr
    assert check_json(lint("--json", "many.xml").stdout)["files"][0]["not_shown"] == 1401


@pytest.mark.parametrize("form", [[], ["--oneline"], ["--json"]])
def test_a_reader_that_goes_early_leaves_no_trace(lint, form):
    (lint.directory / "many.xml").write_text("<rsp state='ok'>" + "\n<item/>" * 400 + "</rsp>")
    process = subprocess.Popen(
        [VQMCTL, "schedule", "lint", *form, "good.xml"] + ["many.xml"] * 20,
        cwd=lint.directory,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
    )
    process.stdout.read(1)
    process.stdout.close()
    talk = process.stderr.read().decode()
    assert process.wait() == 1
    assert [line for line in talk.splitlines() if "not shown" not in line and "errors, " not in line] == []


def test_a_full_disk_is_told(lint):
    with open("/dev/full", "wb") as full:
        result = subprocess.run(
            [VQMCTL, "schedule", "lint", "bad.xml"], cwd=lint.directory, stdout=full, stderr=subprocess.PIPE
        )
    assert result.returncode == 3
    assert result.stderr == b"vqmctl: cannot write to stdout: No space left on device\n"


def test_the_documentation_shows_how_to_call_it():
    usage = "vqmctl schedule lint [--json | --oneline] [--strict] [--ignore RULE] [--on DAY] FILE..."
    assert usage in (DOCS / "lint.md").read_text()


def test_a_tag_with_a_hundred_thousand_attributes(lint):
    """Each is found at its own place; counting each place from the tag's start would take minutes."""
    attributes = "".join(f"\n  bad{number}=''" for number in range(100000))
    (lint.directory / "wide.xml").write_text(GOOD.replace("<rsp state='ok'>", f"<rsp state='ok'{attributes}>"))
    result = lint("wide.xml", "--oneline")
    lines = result.stdout.decode().splitlines()
    assert [line.split(": ")[0] for line in lines[:2] + lines[-1:]] == ["wide.xml:2:3", "wide.xml:3:3", "wide.xml:1001:3"]
    assert result.stderr == b"vqmctl: wide.xml: 99000 further findings not shown\n"
