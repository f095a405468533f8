"""`vqmctl schedule lint --sarif`: the findings for other programs."""

import json
import os
import re
from pathlib import Path

import jsonschema
import pytest

from documents import Tool, document, item
from home import ROOT

BAD = document([item("intro", 100)], "  <project item_count='2'/>\n", start="09:00")


@pytest.fixture
def lint(tmp_path):
    return Tool(tmp_path, "schedule", "lint", "--sarif", "--on", "2026-06-01")


def write(lint, content, name="a.xml"):
    (lint.folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())


def log_of(lint, *names, **options):
    """The log, which is valid. The schema is the one that was published with SARIF 2.1.0."""
    output = lint(*names, **options).stdout
    assert output.isascii()
    log = json.loads(output)
    schema = json.loads(Path(__file__).with_name("sarif-2.1.0.schema.json").read_text())
    jsonschema.Draft4Validator(schema, format_checker=jsonschema.FormatChecker()).validate(log)
    return log


def results_of(log):
    return log["runs"][0]["results"]


def test_a_clean_document_has_no_results(lint):
    write(lint, document([item("intro", 100)]))
    result = lint("a.xml")
    assert (result.returncode, result.stderr) == (0, b"")
    log = log_of(lint, "a.xml")
    assert results_of(log) == []
    assert log["runs"][0]["invocations"][0]["executionSuccessful"]


def test_every_rule_has_a_description_help_and_a_level(lint):
    write(lint, BAD)
    rules = log_of(lint, "a.xml")["runs"][0]["tool"]["driver"]["rules"]
    page = (ROOT / "Docs/lint.md").read_text()
    assert [(rule["id"], rule["defaultConfiguration"]["level"]) for rule in rules] == re.findall(r"^### `(.*)` \((.*)\)$", page, re.M)
    for rule in rules:
        assert rule["shortDescription"]["text"].endswith((".", ":"))
        assert rule["help"]["markdown"].strip() in page


def test_a_result_names_its_rule_place_and_repair(lint):
    write(lint, BAD)
    log = log_of(lint, "a.xml")
    assert lint("a.xml").returncode == 1
    rules = log["runs"][0]["tool"]["driver"]["rules"]
    results = results_of(log)
    assert [rules[result["ruleIndex"]]["id"] for result in results] == [result["ruleId"] for result in results]
    result = next(result for result in results if result["ruleId"] == "time-without-seconds")
    assert result["level"] == "error"
    assert result["message"]["text"] == (
        "start_time '09:00' has no seconds; expected hours:minutes:seconds, such as 09:30:00; the TV reads 09:00:00"
    )
    assert result["locations"] == [
        {
            "physicalLocation": {
                "artifactLocation": {"uri": "a.xml"},
                "region": {"startLine": 3, "startColumn": 25, "endColumn": 30, "snippet": {"text": "09:00"}},
            }
        }
    ]


def test_the_fixes_make_the_document_that_fix_makes(lint):
    text = "\ufeff<?xml version='1.0' encoding='UTF-8'?><!-- H\xe4user -->" + BAD
    write(lint, text)
    content = text.encode()
    lines = text.lstrip("\ufeff").split("\n")
    replacements = []
    for result in results_of(log_of(lint, "a.xml")):
        for fix in result.get("fixes", []):
            (change,) = fix["artifactChanges"]
            assert change["artifactLocation"] == {"uri": "a.xml"}
            replacements += change["replacements"]
    assert len(replacements) == 2
    for replacement in sorted(replacements, key=lambda one: -one["deletedRegion"]["byteOffset"]):
        region, new = replacement["deletedRegion"], replacement["insertedContent"]["text"]
        begin, end = region["byteOffset"], region["byteOffset"] + region["byteLength"]
        line = lines[region["startLine"] - 1]
        assert line[region["startColumn"] - 1 : region["endColumn"] - 1].encode() == content[begin:end]
        content = content[:begin] + new.encode() + content[end:]
    Tool(lint.folder, "schedule", "lint", "--fix", "--write", "a.xml")()
    assert (lint.folder / "a.xml").read_bytes() == content


def test_fingerprints_stay_when_lines_come_before_and_differ_within_a_document(lint):
    def fingerprints(text):
        write(lint, text)
        return [result["partialFingerprints"]["finding/v1"] for result in results_of(log_of(lint, "a.xml"))]

    twice = BAD.replace("</rsp>", BAD[BAD.index("  <schedule") :])
    before = fingerprints(twice)
    assert len(set(before)) == len(before) == 2
    assert fingerprints("<!-- a new first line -->\n\n" + twice.replace("\n  <", "\n\t\t<")) == before
    assert fingerprints(twice.replace("'09:00'", "'09:01'", 1)) != before


def test_what_could_not_be_read_is_in_the_log(lint):
    write(lint, BAD)
    result = lint("a.xml", "gone.xml")
    assert result.returncode == 3
    log = log_of(lint, "a.xml", "gone.xml")
    invocation = log["runs"][0]["invocations"][0]
    assert not invocation["executionSuccessful"]
    (notification,) = invocation["toolExecutionNotifications"]
    assert notification["message"]["text"] == "the file cannot be read: No such file or directory"
    assert len(results_of(log)) == 2


def test_odd_names_and_documents_are_valid_too(lint):
    odd = os.fsencode(lint.folder) + b"/a b:\xff\x1b%\n.xml"
    with open(odd, "wb") as file:
        file.write(BAD.encode())
    write(lint, b"<rsp state='\xff\xfe\x1b' \x80\xc3(", "noise.xml")
    write(lint, BAD.encode("utf-16"), "wide.xml")
    write(lint, "<rsp state='ok'>" + "\n<item/>" * 400 + "</rsp>", "many.xml")
    log = log_of(lint, odd, "noise.xml", "wide.xml", "many.xml", "-", stdin=b"")
    uris = [result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"] for result in results_of(log)]
    assert uris[0] == "file://" + str(lint.folder) + "/a%20b%3A%FF%1B%25%0A.xml"
    assert uris[-1] == "%3Cstdin%3E"
    (notification,) = log["runs"][0]["invocations"][0]["toolExecutionNotifications"]
    assert "further findings not shown" in notification["message"]["text"]


@pytest.mark.parametrize("other", [["--fix"], ["--json"]])
def test_it_is_one_format_among_others(lint, other):
    write(lint, BAD)
    result = lint("a.xml", *other)
    assert (result.returncode, result.stdout) == (2, b"")
