"""The command `vqmctl schedule group` as a user and a script meet it."""
import json
import os
import subprocess

import jsonschema
import pytest
from home import PATIENCE
from test_schedule_show_at import BROKEN, DOCS, VQMCTL, outcome, tool, without_override  # noqa: F401

SCHEMA = json.loads((DOCS / "schemas/schedule-group.schema.json").read_text())


def document(number, players=2):
    """That of TV `number`; TV 1 is the master."""
    return f"""<rsp state='ok'>
<project id='1001' version='1.2'/>
<schedule start_time='09:00:00' end_time='12:00:00'>
<item id='A1' order='1'><name>intro</name><size>10</size><format>mp4</format></item>
<item id='A2' order='2'><name>logo</name><size>20</size><format>jpg</format></item>
</schedule>
<schedule start_time='12:00:00' end_time='18:00:00'/>
<rech_info IsMaster='{int(number == 1)}' NumOfPlayer='{players}' IPAddrOfMaster='10.0.0.1' IPAddr='10.0.0.{number}'
SubnetMask='255.255.255.0'/>
</rsp>
"""


def compared(tool, *documents):
    """What the command finds, as JSON that its schema accepts."""
    names = [tool.write(text, f"{index + 1}.xml") for index, text in enumerate(documents)]
    result = tool("group", "--json", *names)
    assert result.stderr == b""
    told = json.loads(result.stdout.decode("ascii"))
    jsonschema.Draft202012Validator(SCHEMA).validate(told)
    assert told["documents"] == names
    assert result.returncode == (1 if told["differences"] else 0)
    return told["differences"]


def places(differences):
    """What differs, and where both places are."""
    return [(each["id"], f"{each['file']}:{each['line']}:{each['column']}",
             each["other"] and f"{each['other']['file']}:{each['other']['line']}:{each['other']['column']}")
            for each in differences]


def test_documents_that_belong_together(tool):
    jsonschema.Draft202012Validator.check_schema(SCHEMA)
    assert compared(tool, document(1), document(2)) == []
    assert compared(tool, *(document(number, 5) for number in (3, 2, 1, 4, 5))) == []
    assert outcome(tool("group", "1.xml", "2.xml", "3.xml", "4.xml", "5.xml")) == (
        0, "", "vqmctl: the 5 documents belong together\n")


# What is wrong with the second of two documents: what is replaced by what, and the differences.
FAULTS = [
    ("id='1001'", "id='1002'", [("project-differs", "2.xml:2:14", "1.xml:2:14")]),
    ("version='1.2'", "", [("version-differs", "2.xml:2:1", "1.xml:2:29")]),
    ("IsMaster='0'", "IsMaster='1'", [("several-masters", "2.xml:8:22", "1.xml:8:22")]),
    ("NumOfPlayer='2'", "NumOfPlayer='3'", [("player-count", "2.xml:8:38", "1.xml:8:38")]),
    ("IPAddrOfMaster='10.0.0.1'", "IPAddrOfMaster='10.0.0.9'", [("master-address-wrong", "2.xml:8:57", "1.xml:8:75")]),
    ("IPAddr='10.0.0.2'", "IPAddr='10.0.0.1'", [("address-twice", "2.xml:8:75", "1.xml:8:75")]),
    ("IPAddr='10.0.0.2'", "", [("address-missing", "2.xml:8:1", None)]),
    ("IPAddr='10.0.0.2'", "IPAddr='10.0.1.2'", [("subnet-differs", "2.xml:8:75", "1.xml:8:75")]),
    ("255.255.255.0", "255.255.0.0", [("subnet-mask-differs", "2.xml:9:13", "1.xml:9:13")]),
    ("end_time='18:00:00'", "end_time='18:30:00'", [("period-differs", "2.xml:7:1", "1.xml:7:1")]),
    ("<schedule start_time='12:00:00' end_time='18:00:00'/>", "", [("period-missing", "2.xml:3:1", "1.xml:7:1")]),
    ("<rech", "<schedule start_time='20:00:00' end_time='21:00:00'/><rech", [("period-extra", "2.xml:8:1", "1.xml:7:1")]),
    ("<name>logo</name>", "<name>Logo</name>",
     [("item-missing", "2.xml:3:1", "1.xml:5:1"), ("item-extra", "2.xml:5:1", "1.xml:3:1")]),
    ("order='2'", "order='3'", [("item-order-differs", "2.xml:5:1", "1.xml:5:1")]),
    ("<size>20</size>", "<size>21</size>", [("item-size-differs", "2.xml:5:1", "1.xml:5:1")]),
    ("id='A2'", "id='A3'", [("item-id-differs", "2.xml:5:1", "1.xml:5:1")]),
]


@pytest.mark.parametrize("before, after, expected", FAULTS)
def test_each_difference_names_both_places(tool, before, after, expected):
    assert before in document(2)
    assert places(compared(tool, document(1), document(2).replace(before, after))) == expected


def test_no_master_and_a_number_that_is_right_nowhere(tool):
    told = compared(tool, document(2, 3), document(3, 3))
    assert places(told) == [("no-master", "1.xml:8:22", "2.xml:8:22"), ("player-count", "1.xml:8:38", None),
                            ("player-count", "2.xml:8:38", None)]
    # Without a master, the addresses of it must agree at least.
    other = document(3).replace("IPAddrOfMaster='10.0.0.1'", "IPAddrOfMaster='10.0.0.2'")
    assert places(compared(tool, document(2), other))[1:] == [("master-address-differs", "2.xml:8:57", "1.xml:8:57")]


def test_the_order_in_the_document_and_the_way_of_writing_do_not_matter(tool):
    lines = document(2).splitlines()
    lines[2:7] = [lines[6], lines[2], lines[4], lines[3], lines[5]]
    assert compared(tool, document(1), "\n".join(lines)) == []
    assert compared(tool, document(1), document(2).replace("'09:00:00'", "'9:00:00'").replace("'1001'", "'01001'")) == []
    v6 = [text.replace("10.0.0.1'", "fe80::1'").replace("10.0.0.2'", "fe80::2'") for text in (document(1), document(2))]
    assert compared(tool, v6[0], v6[1].replace("'fe80::1'", "'FE80:0::0:1'")) == []
    assert places(compared(tool, v6[0], v6[1].replace("'fe80::2'", "'FE80:0::0:1'"))) == [
        ("address-twice", "2.xml:8:74", "1.xml:8:74")]


def test_what_is_compared_is_what_the_tv_reads(tool):
    """Of several values the last counts, attributes beyond the slots do not, and elements may stand anywhere."""
    odd = document(2).replace("<project id='1001' version='1.2'/>",
                              "<project id='7' version='x'/><x><project id='1001' version='1.2'/></x>")
    assert compared(tool, document(1), odd) == []
    assert places(compared(tool, document(1), odd.replace("version='1.2'", "version='2'"))) == [
        ("version-differs", "2.xml:2:61", "1.xml:2:29")]
    nested = document(2).replace("<schedule start_time='12:00:00' end_time='18:00:00'/>\n", "").replace(
        "</schedule>", "<schedule start_time='09:00:00' end_time='12:00:00'/></schedule>")
    assert [each["id"] for each in compared(tool, document(1), nested)] != []


def test_the_text_shows_both_places(tool):
    tool.write(document(1), "a.xml")
    tool.write(document(2).replace("'1001'", "'1002'"), "b.xml")
    assert outcome(tool("group", "a.xml", "b.xml")) == (1, """\
b.xml:2:14: error: project id '1002' differs from '1001'; expected the same project in all documents; \
the TVs do not play the same in sync [project-differs]
    <project id='1002' version='1.2'/>
                 ^~~~
a.xml:2:14: note: project id '1001' [project-differs]
    <project id='1001' version='1.2'/>
                 ^~~~
""", "vqmctl: 1 difference\n")
    result = tool("group", "a.xml", "-", stdin=document(2).encode())
    assert outcome(result) == (0, "", "vqmctl: the 2 documents belong together\n")


@pytest.mark.parametrize("arguments, complaint", [
    ([], "file is missing; see 'vqmctl schedule group --help'"),
    (["a.xml"], "'a.xml' alone is no group; expected the document of each TV"),
    (["-", "-"], "'-' is given twice; stdin can be read once"),
])
def test_what_is_not_understood_is_usage(tool, arguments, complaint):
    assert outcome(tool("group", *arguments)) == (2, "", f"vqmctl: {complaint}\n")


@pytest.mark.parametrize("place", [0, 1])
def test_a_document_that_cannot_be_read_is_named_with_the_cause(tool, place):
    tool.write(document(1), "good.xml")
    tool.write(document(2), "secret.xml")
    os.chmod(tool.folder / "secret.xml", 0)
    os.mkfifo(tool.folder / "pipe")

    def run(name):
        names = ["good.xml"]
        names.insert(place, name)
        return outcome(tool("group", *names, preexec_fn=without_override))

    for name, cause in (("missing.xml", "No such file or directory"), (".", "Is a directory"),
                        ("secret.xml", "Permission denied"), ("/proc/self/mem", "Input/output error")):
        assert run(name) == (3, "", f"vqmctl: cannot read '{name}': {cause}\n")
    for name, cause in (("pipe", "the document is empty; copy it again"),
                        ("/dev/zero", "the file begins with a zero byte, where a text ends for the TV; copy it again")):
        assert run(name) == (3, "", f"vqmctl: cannot parse '{name}': line 1, column 1: {cause}\n")
    for text, why in BROKEN:
        tool.write(text, "broken.xml")
        assert run("broken.xml") == (3, "", f"vqmctl: cannot parse 'broken.xml': {why.decode()}\n")


def test_control_characters_never_come_out_raw(tool):
    odd = b"\x1b[31m\xff\n.xml"
    tool.write(document(1), "a.xml")
    tool.write(document(2).replace("logo", "a\x9b31m\x7f&#10;&#x202e;").replace("1.2", "\x9b"), odd)
    for form in ([], ["--json"]):
        result = tool("group", *form, "a.xml", odd)
        assert result.returncode == 1
        for byte in result.stdout + result.stderr:
            assert byte == 0x0A or 0x20 <= byte != 0x7F
        text = result.stdout.decode()
        assert "\x9b" not in text and "\u202e" not in text
        assert "\\x1b[31m\\xff\\x0a.xml" in text.replace("\\\\", "\\")


@pytest.mark.parametrize("form", [[], ["--json"]])
def test_a_reader_that_has_gone_and_a_full_disk(tool, form):
    tool.write(document(1), "a.xml")
    tool.write(document(2).replace("<item ", "<item id='x'/>" * 2000 + "<item ", 1), "b.xml")
    command = [VQMCTL, "schedule", "group", *form, "a.xml", "b.xml"]
    read, write = os.pipe()
    os.close(read)
    result = subprocess.run(command, cwd=tool.folder, stdout=write, stderr=subprocess.PIPE, timeout=PATIENCE)
    os.close(write)
    assert result.returncode == 1
    assert b"stdout" not in result.stderr
    with open("/dev/full", "wb") as full:
        result = subprocess.run(command, cwd=tool.folder, stdout=full, stderr=subprocess.PIPE, timeout=PATIENCE)
    assert (result.returncode, result.stderr) == (3, b"vqmctl: cannot write to stdout: No space left on device\n")


def test_of_very_many_differences_the_last_are_counted(tool):
    count = 100000

    def large(number, name):
        items = "".join(f"<item id='{index}' order='{index}'><name>{name}{index}</name><size>1</size><format>mp4</format></item>"
                        for index in range(count))
        return document(number).replace("<item id='A1'", items + "<item id='A1'")

    tool.write(large(1, "n"), "a.xml")
    tool.write(large(2, "m").replace("'1001'", "'1002'"), "b.xml")
    result = tool("group", "--json", "a.xml", "b.xml")
    told = json.loads(result.stdout)
    assert (result.returncode, told["not_shown"]) == (1, 2 * count - 1000)
    assert "project-differs" in {each["id"] for each in told["differences"]}
