"""The command `vqmctl schedule sizes`."""

import os
import subprocess

import pytest

from documents import Tool, document, item
from shop import validated

TOTALS = "  <project item_count='2' total_size='300'/>\n"
RIGHT = document([item("intro", 100), item("logo", 200, "jpg")], TOTALS)
WRONG = RIGHT.replace("<size>100<", "<size>1,5 MB<").replace("'300'", "'7'").replace("'2'", "'3'")
WRONG_DIFF = """\
--- a.xml
+++ a.xml
@@ -1,7 +1,7 @@
 <rsp state='ok'>
-  <project item_count='3' total_size='7'/>
+  <project item_count='2' total_size='300'/>
   <schedule start_time='09:00:00' end_time='18:00:00'>
-    <item id='intro' order='1'><name>intro</name><size>1,5 MB</size><format>mp4</format></item>
+    <item id='intro' order='1'><name>intro</name><size>100</size><format>mp4</format></item>
     <item id='logo' order='1'><name>logo</name><size>200</size><format>jpg</format></item>
   </schedule>
 </rsp>
"""


@pytest.fixture
def sizes(tmp_path):
    media = tmp_path / "media"
    media.mkdir()
    (media / "intro.mp4").write_bytes(bytes(100))
    (media / "logo.jpg").write_bytes(bytes(200))
    return Tool(tmp_path, "schedule", "sizes", "--media", "media")


def write(sizes, content, name="a.xml"):
    path = sizes.folder / name
    path.write_bytes(content if isinstance(content, bytes) else content.encode())
    return path


def test_right_sizes_give_nothing(sizes):
    write(sizes, RIGHT)
    for arguments in ([], ["--write"]):
        result = sizes("a.xml", *arguments)
        assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")


def test_without_write_there_is_a_diff_and_the_file_stays(sizes):
    path = write(sizes, WRONG)
    result = sizes("a.xml")
    assert (result.returncode, result.stdout.decode()) == (1, WRONG_DIFF)
    assert result.stderr == b"vqmctl: 3 numbers to correct; --write does it\n"
    assert path.read_text() == WRONG


def test_the_diff_of_an_ordinary_document_is_a_patch(sizes):
    path = write(sizes, WRONG)
    diff = sizes("a.xml").stdout
    subprocess.run(["patch", "-s", "-p0", "a.xml"], cwd=sizes.folder, input=diff, check=True)
    assert path.read_text() == RIGHT


def test_write_corrects_the_file(sizes):
    path = write(sizes, WRONG)
    result = sizes("a.xml", "--write")
    assert (result.returncode, result.stdout.decode()) == (0, WRONG_DIFF)
    assert result.stderr == b"vqmctl: 3 numbers corrected in 'a.xml'\n"
    assert path.read_text() == RIGHT
    assert sizes("a.xml").returncode == 0


UTF8_MARK = b"\xef\xbb\xbf"


@pytest.mark.parametrize(
    "dress",
    [
        lambda text: UTF8_MARK + text.encode(),
        lambda text: text.replace("\n", "\r\n").encode(),
        lambda text: text.replace("\n", "\r").encode(),
        lambda text: text.replace("\n", " ").encode(),
        lambda text: ("<?xml version='1.0' encoding='ISO-8859-1'?><!-- H\xe4user -->" + text).encode("latin-1"),
        lambda text: text.replace("<schedule ", "<!-- <size>9</size> -->\t<schedule\n\n  ").encode(),
        lambda text: text.replace("'", '"').rstrip().encode(),
        lambda text: text.encode() + b"\0\0 \n",
    ],
    ids=["byte-order-mark", "crlf", "cr", "one-line", "latin-1", "comments", "quotes-no-last-line-end", "nul"],
)
def test_nothing_but_the_numbers_changes(sizes, dress):
    path = write(sizes, dress(WRONG))
    path.chmod(0o640)
    if os.geteuid() == 0:
        os.chown(path, 1234, 4321)
    before = path.stat()
    assert sizes("a.xml", "--write").returncode == 0
    after = path.stat()
    assert path.read_bytes() == dress(RIGHT)
    assert (after.st_mode, after.st_uid, after.st_gid) == (before.st_mode, before.st_uid, before.st_gid)


@pytest.mark.parametrize(
    "bad, good",
    [
        ("<size></size>", "<size>100</size>"),
        ("<size>\n 7\n</size>", "<size>100</size>"),
        ("<size>&#55;</size>", "<size>100</size>"),
        ("<size a='>'>7</size >", "<size a='>'>100</size >"),
        ("<size>18446744073709551617</size>", "<size>100</size>"),
    ],
)
def test_any_text_of_a_size_becomes_the_number(sizes, bad, good):
    path = write(sizes, RIGHT.replace("<size>100</size>", bad))
    assert sizes("a.xml", "--write").returncode == 0
    assert path.read_text() == RIGHT.replace("<size>100</size>", good)


MIXED = "the size of 'intro.mp4' is mixed with comments, sections or elements; write 100 [size-not-plain]"


@pytest.mark.parametrize(
    "size, complaint",
    [
        ("<size>1<!-- remark -->0</size>", "3:56: " + MIXED),
        ("<size><![CDATA[7]]></size>", "3:56: " + MIXED),
        ("<size/>", "3:50: " + MIXED),
        ("", "3:38: the item of 'intro.mp4' has no size [size-missing]"),
    ],
)
def test_a_size_that_is_not_plain_text_stays(sizes, size, complaint):
    text = document([item("intro", 100).replace("<size>100</size>", size)])
    path = write(sizes, text)
    result = sizes("a.xml", "--write")
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr.decode().splitlines() == ["vqmctl: a.xml:" + complaint]
    assert path.read_text() == text


def test_files_that_are_missing_empty_or_none_keep_their_announced_size(sizes):
    (sizes.folder / "media/empty.mp4").touch()
    (sizes.folder / "media/folder.mp4").mkdir()
    names = ["gone", "empty", "folder", "intro"]
    totals = "  <project item_count='4' total_size='400'/>\n"
    path = write(sizes, document([item(name, 5) for name in names], totals))
    result = sizes("a.xml", "--write")
    assert result.returncode == 1
    assert result.stderr.decode() == (
        "vqmctl: a.xml:4:37: 'gone.mp4' is missing [file-missing]\n"
        "vqmctl: a.xml:5:38: 'empty.mp4' is empty; copy it again [file-empty]\n"
        "vqmctl: a.xml:6:39: 'folder.mp4' is not a file [not-a-file]\n"
        "vqmctl: 2 numbers corrected in 'a.xml'\n"
    )
    sizes_now = [item(name, 100 if name == "intro" else 5) for name in names]
    assert path.read_text() == document(sizes_now, totals.replace("400", "115"))


def test_json_says_what_is_corrected_and_what_is_not(sizes):
    write(sizes, document([item("intro", 1), item("f\xfchrung\x7f", 2)]).encode("utf-8"))
    result = sizes("a.xml", "--json")
    assert (result.returncode, result.stderr) == (1, b"")
    found = validated("schedule-sizes", result.stdout)
    assert found["corrections"] == [
        {"what": "size", "file": "intro.mp4", "line": 3, "column": 56, "offset": 127, "old": "1", "new": "100"}
    ]
    assert [problem["id"] for problem in found["problems"]] == ["file-missing"]
    assert (found["items"], found["written"], found["not_shown"]) == (2, False, 0)
    assert validated("schedule-sizes", sizes("a.xml", "--json", "--write").stdout)["written"]
    assert validated("schedule-sizes", sizes("a.xml", "--json", "--write").stdout)["corrections"] == []


def test_what_cannot_be_read_is_named(sizes):
    write(sizes, b"", "empty.xml")
    write(sizes, WRONG.encode()[:90], "cut.xml")
    write(sizes, bytes(range(256)), "binary.xml")
    write(sizes, WRONG.encode("utf-16"), "wide.xml")
    (sizes.folder / "folder").mkdir()
    os.mkfifo(sizes.folder / "pipe")
    for name in ("empty.xml", "cut.xml", "binary.xml", "wide.xml", "folder", "pipe", "gone.xml", "/dev/zero", "-"):
        result = sizes(name)
        assert (result.returncode, result.stdout) == (3, b""), name
        shown = "<stdin>" if name == "-" else name
        assert result.stderr.decode().startswith(f"vqmctl: cannot read '{shown}': "), name
    write(sizes, RIGHT)
    for media in ("gone", "empty.xml"):
        result = Tool(sizes.folder, "schedule", "sizes", "a.xml", "--media", media)()
        assert (result.returncode, result.stdout) == (3, b"")
        assert result.stderr.decode().startswith(f"vqmctl: cannot read the media folder '{media}': ")


def test_a_document_declared_in_another_encoding_is_mended_first(sizes):
    path = write(sizes, "<?xml version='1.0' encoding='ISO-8859-1'?>" + document([item("F\xfchrung", 1)]))
    result = sizes("a.xml", "--write")
    assert (result.returncode, result.stdout) == (3, b"")
    assert "the document declares 'ISO-8859-1' and is written in UTF-8" in result.stderr.decode()
    assert "1'" in path.read_text()


def test_stdin_is_read_and_never_written(sizes):
    result = sizes("-", stdin=WRONG.encode())
    assert (result.returncode, result.stdout.decode()) == (1, WRONG_DIFF.replace("a.xml", "<stdin>"))
    result = sizes("-", "--write", stdin=WRONG.encode())
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr == b"vqmctl: --write changes a file; expected its name, not '-'\n"


def test_links_are_refused(sizes):
    path = write(sizes, WRONG)
    (sizes.folder / "soft.xml").symlink_to("a.xml")
    os.link(path, sizes.folder / "hard.xml")
    for name in ("soft.xml", "hard.xml", "a.xml"):
        result = sizes(name, "--write")
        assert (result.returncode, result.stdout) == (3, b"")
        assert result.stderr.decode().startswith(f"vqmctl: cannot change '{name}': it ")
    assert path.read_text() == WRONG
    assert sizes("soft.xml").returncode == 1


def test_control_characters_of_names_and_documents_stay_inside(sizes):
    odd = os.fsencode(sizes.folder) + b"/\x1b[31m\xff\n.xml"
    with open(odd, "wb") as file:
        file.write(WRONG.replace("state", "lang='\u009b31m' state").encode() )
    result = sizes(odd)
    shown = result.stdout + result.stderr
    assert b"/\\x1b[31m\\xff\\x0a.xml\n" in result.stdout
    assert b"lang='\\xc2\\x9b31m'" in shown
    assert b"\x1b" not in shown and b"\xc2\x9b" not in shown


def test_a_full_disk_for_the_diff_leaves_the_document(sizes):
    path = write(sizes, WRONG)
    with open("/dev/full", "wb") as full:
        result = sizes("a.xml", "--write", capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert result.returncode == 3
    assert path.read_text() == WRONG


def test_a_reader_that_goes_early_does_not_keep_the_document_from_being_written(sizes):
    path = write(sizes, document([item("intro", 1)] * 20000))
    process = subprocess.Popen(
        [*sizes.command, "a.xml", "--write"], cwd=sizes.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE
    )
    process.stdout.read(1)
    process.stdout.close()
    assert process.stderr.read() == b"vqmctl: 20000 numbers corrected in 'a.xml'\n"
    assert process.wait() == 0
    assert path.read_text() == document([item("intro", 100)] * 20000)


def test_half_a_million_items(sizes):
    path = write(sizes, document([item("intro", 1)] * 500000, TOTALS))
    assert sizes("a.xml", "--write", capture_output=False, stdout=subprocess.DEVNULL).returncode == 0
    right = TOTALS.replace("'2'", "'500000'").replace("'300'", "'50000000'")
    assert path.read_text() == document([item("intro", 100)] * 500000, right)


def test_killed_at_any_moment_it_leaves_the_old_file_or_the_new_one(sizes):
    path = write(sizes, document([item("intro", 1)] * 300))
    sizes.kill_again_and_again(path, ["a.xml", "--write"], int(os.environ.get("VQM_KILLS", "500")))
