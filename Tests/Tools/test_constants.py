"""vqmctl constants, as a user and a script meet it."""

import ctypes
import os
import re
import shutil
import subprocess
import threading
from pathlib import Path

import pytest
from home import BUILD, PATIENCE, ROOT
from shop import validated

LIBC = ctypes.CDLL(None)
AT_FDCWD, RENAME_EXCHANGE = -100, 2

GOOD = '<c><Data key="ScheduleFile" value="schedule.xml"/><Data key="Retries" value="3"/><Data key="Empty" value=""/></c>'
BROKEN = '<c>\n<Data key="ScheduleFile" value="schedule.xml"/>\n<Data key="Retries" value="3"></c>'


@pytest.fixture
def constants(home, tmp_path):
    (tmp_path / "good.xml").write_text(GOOD)
    (tmp_path / "broken.xml").write_text(BROKEN)

    def run(*arguments, stdin=b"", **streams):
        streams = streams or {"stdout": subprocess.PIPE}
        return subprocess.run([BUILD / "bin/vqmctl", "constants", *arguments], env=home.environment, cwd=tmp_path,
                              input=stdin, stderr=subprocess.PIPE, timeout=2 * PATIENCE, **streams)

    run.folder = tmp_path
    return run


def check_json(output):
    return validated("constants", output)


def test_list_prints_all_by_key(constants):
    result = constants("list", "--constants", "good.xml")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout == b'"Empty" = ""\n"Retries" = "3"\n"ScheduleFile" = "schedule.xml"\n'


def test_list_gives_the_same_as_json(constants):
    result = constants("list", "--constants", "good.xml", "--json")
    assert (result.returncode, result.stderr) == (0, b"")
    assert check_json(result.stdout) == {
        "schema_version": 1, "file": "good.xml", "state": "loaded", "problem": None,
        "constants": [{"key": "Empty", "value": ""}, {"key": "Retries", "value": "3"},
                      {"key": "ScheduleFile", "value": "schedule.xml"}]}


@pytest.mark.parametrize("key, value", [("ScheduleFile", b"schedule.xml\n"), ("Retries", b"3\n"), ("Empty", b"\n")])
def test_get_prints_the_value_alone(constants, key, value):
    result = constants("get", key, "--constants", "good.xml")
    assert (result.returncode, result.stdout, result.stderr) == (0, value, b"")
    found = check_json(constants("get", key, "--constants", "good.xml", "--json").stdout)["constants"]
    assert found == [{"key": key, "value": value.decode().strip()}]


@pytest.mark.parametrize("key, hint", [
    ("schedulefile", "; did you mean ScheduleFile?"),
    ("Retires", "; did you mean Retries?"),
    ("Unlike", ""),
    ("", ""),
])
def test_a_missing_key_is_said_to_be_missing(constants, key, hint):
    result = constants("get", key, "--constants", "good.xml")
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr.decode() == f"vqmctl: the constants file 'good.xml' has no constant '{key}'{hint}\n"
    result = constants("get", key, "--constants", "good.xml", "--json")
    assert (result.returncode, check_json(result.stdout)["constants"]) == (1, [])


def test_what_stands_before_an_error_counts_and_the_error_is_told(constants):
    complaint = ("vqmctl: the constants file 'broken.xml' cannot be parsed: line 3, column 33: '</c>' stands here, "
                 "but 'Data' of line 3 is not closed yet; write </Data> before it; only what stands before that place counts\n")
    result = constants("list", "--constants", "broken.xml")
    assert (result.returncode, result.stderr.decode()) == (1, complaint)
    assert result.stdout == b'"Retries" = "3"\n"ScheduleFile" = "schedule.xml"\n'
    result = constants("get", "Retries", "--constants", "broken.xml")
    assert (result.returncode, result.stdout, result.stderr.decode()) == (1, b"3\n", complaint)
    assert check_json(constants("list", "--constants", "broken.xml", "--json").stdout)["state"] == "not-well-formed"


def test_stdin_is_read_as_a_file(constants):
    result = constants("get", "Retries", "--constants", "-", stdin=GOOD.encode())
    assert (result.returncode, result.stdout, result.stderr) == (0, b"3\n", b"")
    result = constants("list", "--constants", "-", stdin=b"<c>")
    assert result.returncode == 1
    assert result.stderr.startswith(b"vqmctl: the constants file '<stdin>' cannot be parsed: line 1, column 4: ")
    assert check_json(constants("list", "--constants", "-", "--json", stdin=GOOD.encode()).stdout)["file"] == "<stdin>"


@pytest.mark.parametrize("content, problem", [
    (b"", "cannot be parsed: line 1, column 1: the document is empty; copy it again"),
    (b"\0\1\2\377" * 1000, "cannot be parsed: line 1, column 1: the file holds no text; copy the right file"),
    (b"\377\1\2\3" * 1000, "cannot be parsed: line 1, column 1: the file holds no text; copy the right file"),
    (GOOD.encode("utf-16"), "cannot be parsed: line 1, column 1: the document is encoded in UTF-16, which editors also "
                            'call "Unicode"; save it as UTF-8'),
    (b"<c>" + b" " * 20_000_000, "cannot be parsed: line 1, column 20000004: "),
], ids=["empty", "zeros", "noise", "UTF-16", "huge"])
def test_what_is_no_document_is_told(constants, content, problem):
    (constants.folder / "odd.xml").write_bytes(content)
    for command in (["list"], ["list", "--json"]):
        result = constants(*command, "--constants", "odd.xml")
        assert result.returncode == 1
        assert result.stderr.decode().startswith(f"vqmctl: the constants file 'odd.xml' {problem}")
    assert check_json(result.stdout)["constants"] == []


@pytest.mark.parametrize("prepare, problem", [
    ("true", "is missing"),
    ("ln -s nowhere odd.xml", "is missing: it is a link to 'nowhere', which is not there"),
    ("mkdir odd.xml", "is a directory"),
    ("mkfifo odd.xml", "is a pipe, where reading waits for a writer"),
    ("ln -s odd.xml odd.xml", "cannot be examined: Too many levels of symbolic links"),
    ("ln -s /proc/self/mem odd.xml", "cannot be read: Input/output error"),
    ("truncate -s 3G odd.xml", "is larger than the 2147483647 bytes that can be parsed"),
])
def test_what_cannot_be_read_is_told(constants, prepare, problem):
    subprocess.run(prepare, shell=True, check=True, cwd=constants.folder)
    for command in (["get", "ScheduleFile"], ["list"], ["list", "--json"]):
        result = constants(*command, "--constants", "odd.xml")
        assert result.stderr.decode() == f"vqmctl: the constants file 'odd.xml' {problem}\n"
        assert result.returncode == 3
    assert check_json(result.stdout)["constants"] == []


def test_texts_come_out_escaped(constants):
    name = os.fsencode(constants.folder) + b"/\x1b[31m\xff\n.xml"
    Path(os.fsdecode(name)).write_bytes(b'<?xml version="1.0" encoding="ISO-8859-1"?><c>'
                                        b'<Data key="a&#10;b" value="\xe4&#9;\x9b31m"/></c>')
    result = constants("list", "--constants", name)
    assert (result.returncode, result.stdout) == (0, '"a\\x0ab" = "\u00e4\\x09\\xc2\\x9b31m"\n'.encode())
    document = check_json(constants("list", "--constants", name, "--json").stdout)
    assert document["constants"] == [{"key": "a\nb", "value": "\u00e4\t\x9b31m"}]
    assert document["file"].endswith("/\\x1b[31m\\xff\\x0a.xml")
    assert constants("get", "x\x1b", "--constants", name).stderr.endswith(b"\\x0a.xml' has no constant 'x\\x1b'\n")


@pytest.mark.parametrize("command", [["list"], ["list", "--json"], ["get", "Retries"]])
def test_a_reader_that_has_gone_leaves_no_trace(constants, command):
    for file, code in (("good.xml", 0), ("broken.xml", 1)):
        read, write = os.pipe()
        os.close(read)
        result = constants(*command, "--constants", file, stdout=write)
        os.close(write)
        assert result.returncode == code
        assert result.stderr.count(b"\n") == code


def test_a_pipe_that_takes_the_files_place_is_not_waited_for(constants):
    """Another process swaps the two all the time, so that some reads open the pipe after they looked at the file."""
    pipe, place = (os.fsencode(constants.folder / name) for name in ("pipe", "good.xml"))
    os.mkfifo(pipe)
    ended = threading.Event()

    def swap():
        while not ended.is_set():
            LIBC.renameat2(AT_FDCWD, pipe, AT_FDCWD, place, RENAME_EXCHANGE)

    swapper = threading.Thread(target=swap)
    swapper.start()
    try:
        codes = {constants("list", "--constants", "good.xml").returncode for _ in range(100)}
    finally:
        ended.set()
        swapper.join()
    assert codes <= {0, 1, 3}


def test_a_long_key_among_many_long_ones_is_only_said_to_be_missing(constants):
    entries = "".join(f'<Data key="{number:0300}" value=""/>' for number in range(50000))
    (constants.folder / "many.xml").write_text(f"<c>{entries}</c>")
    result = constants("get", 300 * "k", "--constants", "many.xml")
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr.decode() == f"vqmctl: the constants file 'many.xml' has no constant '{300 * 'k'}'\n"


def test_stdin_that_cannot_be_kept_is_not_called_unreadable(constants):
    result = subprocess.run(
        ["sh", "-c", 'ulimit -f 0; trap "" XFSZ; exec "$0" constants list --constants -', BUILD / "bin/vqmctl"],
        input=GOOD.encode(), capture_output=True, timeout=60)
    assert (result.returncode, result.stderr) == (3, b"vqmctl: cannot copy stdin: File too large\n")


@pytest.mark.parametrize("arguments, name", [([], "schedule.xml"), (["a & \"b\" <c>.xml"], 'a & "b" <c>.xml')])
def test_init_writes_a_file_that_names_the_schedule(constants, arguments, name):
    result = constants("init", *arguments, "--constants", "new.xml")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == f"wrote new.xml: the schedule is '{name}'\n"
    assert constants("get", "ScheduleFile", "--constants", "new.xml").stdout.decode() == name + "\n"


@pytest.mark.parametrize("prepare", ["echo mine >new.xml", "ln -s nowhere new.xml", "mkdir new.xml"])
def test_init_replaces_nothing(constants, prepare):
    subprocess.run(prepare, shell=True, check=True, cwd=constants.folder)
    before = subprocess.run("ls -l; cat new.xml", shell=True, capture_output=True, cwd=constants.folder).stdout
    result = constants("init", "--constants", "new.xml")
    assert (result.returncode, result.stdout) == (3, b"")
    assert result.stderr == b"vqmctl: cannot write 'new.xml': it is there already\n"
    assert subprocess.run("ls -l; cat new.xml", shell=True, capture_output=True, cwd=constants.folder).stdout == before


@pytest.mark.parametrize("arguments, code, complaint", [
    (["--constants", "-"], 2, "init writes a file; expected --constants FILE instead of '-'"),
    (["a/b.xml"], 2, "'a/b.xml' is a path; expected the schedule's file name"),
    (["--constants", "no/new.xml"], 3,
     "cannot write 'no/new.xml': No such file or directory: the directory 'no' is not there"),
])
def test_init_says_why_it_cannot_write(constants, arguments, code, complaint):
    result = constants("init", *arguments)
    assert (result.returncode, result.stdout, result.stderr.decode()) == (code, b"", f"vqmctl: {complaint}\n")


def test_a_document_without_constants_is_told(constants):
    (constants.folder / "other.xml").write_text("<rsp state='ok'/>")
    result = constants("list", "--constants", "other.xml")
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr == (b"vqmctl: 'other.xml' holds no constants; expected elements "
                             b"<Data key=\"...\" value=\"...\"/>\n")


def test_a_full_disk_is_told(constants):
    with open("/dev/full", "wb") as full:
        result = constants("list", "--constants", "good.xml", stdout=full)
    assert (result.returncode, result.stderr) == (3, b"vqmctl: cannot write to stdout: No space left on device\n")


def test_the_command_line_is_checked(constants):
    assert constants("get").returncode == 2
    assert constants("set", "A").stderr.startswith(b"vqmctl: unknown command 'set' after 'vqmctl constants'; did you mean get?")
    assert constants("list", "A").stderr == b"vqmctl: unexpected argument 'A'; see 'vqmctl constants list --help'\n"


def test_the_page_about_the_format_shows_what_list_prints(constants):
    page = (ROOT / "Docs/constants-format.md").read_text()
    examples = re.findall(r"```xml\n(.*?)```\n\ngives\n\n```text\n(.*?)```", page, re.DOTALL)
    assert len(examples) >= 3
    for document, expected in examples:
        (constants.folder / "example.xml").write_text(document)
        result = constants("list", "--constants", "example.xml")
        assert result.stdout.decode() == expected.replace("(not well-formed)\n", "")
        assert result.returncode == ("(not well-formed)" in expected)
