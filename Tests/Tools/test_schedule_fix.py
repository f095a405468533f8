"""`vqmctl schedule lint --fix`: the repairs that leave no doubt."""

import os

import pytest

from documents import Tool, document, item

ITEMS = [item("intro", 100), item("logo", 200, "jpg")]
TOTALS = "  <project item_count='2' total_size='300'/>\n"
RIGHT = document(ITEMS, TOTALS)
WRONG = RIGHT.replace("'09:00:00'", "'09:00'").replace("'300'", "'7'").replace("'2'", "'3'")
WRONG_DIFF = """\
--- a.xml
+++ a.xml
@@ -1,6 +1,6 @@
 <rsp state='ok'>
-  <project item_count='3' total_size='7'/>
+  <project item_count='2' total_size='300'/>
-  <schedule start_time='09:00' end_time='18:00:00'>
+  <schedule start_time='09:00:00' end_time='18:00:00'>
     <item id='intro' order='1'><name>intro</name><size>100</size><format>mp4</format></item>
     <item id='logo' order='1'><name>logo</name><size>200</size><format>jpg</format></item>
   </schedule>
"""
# Both items have the order 1.
ORDERS = ["--ignore", "duplicate-order"]


@pytest.fixture
def fix(tmp_path):
    return Tool(tmp_path, "schedule", "lint", "--fix", *ORDERS)


def write(fix, content, name="a.xml"):
    path = fix.folder / name
    path.write_bytes(content if isinstance(content, bytes) else content.encode())
    return path


def lint(fix, *arguments):
    return Tool(fix.folder, "schedule", "lint", *ORDERS)(*arguments)


def test_a_clean_document_gives_nothing(fix):
    write(fix, RIGHT)
    for arguments in ([], ["--write"]):
        result = fix("a.xml", *arguments)
        assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")


def test_without_write_there_is_a_diff_and_the_file_stays(fix):
    path = write(fix, WRONG)
    result = fix("a.xml")
    assert (result.returncode, result.stdout.decode()) == (1, WRONG_DIFF)
    assert result.stderr == b"vqmctl: a.xml: 3 repairs to make; --fix --write makes them; 0 findings left\n"
    assert path.read_text() == WRONG


def test_write_mends_the_file(fix):
    path = write(fix, WRONG)
    result = fix("a.xml", "--write")
    assert (result.returncode, result.stdout.decode()) == (0, WRONG_DIFF)
    assert result.stderr == b"vqmctl: a.xml: 3 repairs made; 0 findings left\n"
    assert path.read_text() == RIGHT
    assert lint(fix, "a.xml").stdout == b""


@pytest.mark.parametrize(
    "bad, good",
    [
        ("start_time='09:30'", "start_time='09:30:00'"),
        ('start_time="9:30"', 'start_time="9:30:00"'),
        ("end_time = '24:00'", "end_time = '24:00:00'"),
        # What was meant is in doubt, or stands elsewhere.
        ("start_time='09:3'", None),
        ("start_time='09:'", None),
        ("start_time='09'", None),
        ("start_time='9.30'", None),
        ("start_time='09:60'", None),
        ("start_time='09&#58;30'", None),
        ("start_time='09:30:'", None),
    ],
)
def test_seconds_are_added_where_hour_and_minute_are_sure(fix, bad, good):
    name = "end_time='18:00:00'" if bad.startswith("end") else "start_time='09:00:00'"
    path = write(fix, RIGHT.replace(name, bad))
    fix("a.xml", "--write")
    assert path.read_text() == RIGHT.replace(name, good or bad)


@pytest.mark.parametrize(
    "what, spoilt",
    [
        ("a misspelt item", RIGHT.replace("<item id='logo'", "<itme id='logo'").replace("</item>\n  </", "</itme>\n  </")),
        ("an item outside", RIGHT.replace("</schedule>", "</schedule>" + ITEMS[0])),
        ("a second project", RIGHT.replace(TOTALS, TOTALS + TOTALS.replace("'2'", "'4'").replace("'300'", "'8'"))),
        ("text after a zero byte", RIGHT.replace("'2'", "'3'").replace("'300'", "'9'") + "\0" + RIGHT),
    ],
)
def test_totals_stay_where_the_items_are_in_doubt(fix, what, spoilt):
    path = write(fix, spoilt)
    assert fix("a.xml", "--write").returncode == 1, what
    assert path.read_text() == spoilt, what


@pytest.mark.parametrize("size", ["<size>1.5</size>", "<size>1<!-- -->2</size>", "<size>0</size>", ""])
def test_the_total_size_stays_where_a_size_is_in_doubt(fix, size):
    spoilt = RIGHT.replace("<size>100</size>", size).replace("'2'", "'3'")
    path = write(fix, spoilt)
    assert fix("a.xml", "--write").returncode == 1
    assert path.read_text() == spoilt.replace("'3'", "'2'")


GERMAN = document([item("F\xfchrung", 100)])


@pytest.mark.parametrize(
    "declared, content, mended",
    [
        ("utf-16", GERMAN.encode(), True),
        ("windows-1252", GERMAN.encode(), True),
        ("windows-1252", RIGHT.encode(), True),
        ("US-ASCII", GERMAN.encode(), True),
        ("ISO-8859-1", GERMAN.encode(), True),
        ("ISO-8859-1", GERMAN.encode("latin-1"), False),
        ("ISO-8859-1", RIGHT.encode(), False),
        ("windows-1252", GERMAN.encode("latin-1"), False),
        ("utf-8", GERMAN.encode(), False),
        # Another cause than the encoding.
        ("ISO-8859-1", GERMAN.encode().replace(b"<rsp", b"<rsp <"), False),
    ],
)
def test_utf8_is_declared_where_the_document_is_in_utf8(fix, declared, content, mended):
    declaration = b"<?xml version = '1.0' encoding = \"%s\" ?>\r\n"
    before = declaration % declared.encode() + content
    path = write(fix, before)
    rule = b"[encoding-declared-wrongly]"
    assert (rule in lint(fix, "a.xml").stdout) == mended
    fix("a.xml", "--write")
    assert path.read_bytes() == (declaration % b"UTF-8" + content if mended else before)
    assert rule not in lint(fix, "a.xml").stdout


def test_what_the_encoding_had_hidden_is_mended_at_once(fix):
    declaration = "<?xml version='1.0' encoding='{}'?><!-- \u20ac -->"
    path = write(fix, declaration.format("utf-16") + WRONG)
    assert fix("a.xml", "--write").returncode == 0
    assert path.read_text() == declaration.format("UTF-8") + RIGHT


@pytest.mark.parametrize(
    "dress",
    [
        lambda text: b"\xef\xbb\xbf" + text.encode(),
        lambda text: text.replace("\n", "\r\n").encode(),
        lambda text: text.replace("\n", "\r").encode(),
        lambda text: text.replace("\n", " ").encode(),
        lambda text: ("<?xml version='1.0' encoding='ISO-8859-1'?><!-- H\xe4user -->" + text).encode("latin-1"),
        lambda text: text.replace("'", '"').rstrip().encode(),
        lambda text: text.encode() + b"\0\0 \n",
    ],
    ids=["byte-order-mark", "crlf", "cr", "one-line", "latin-1", "quotes-no-last-line-end", "nul"],
)
def test_nothing_else_changes(fix, dress):
    path = write(fix, dress(WRONG))
    path.chmod(0o604)
    fix("a.xml", "--write")
    assert path.read_bytes() == dress(RIGHT)
    assert path.stat().st_mode & 0o777 == 0o604


def test_more_repairs_than_findings_are_kept(fix):
    periods = "".join(document(ITEMS, start="09:00").splitlines(True)[1:-1])
    path = write(fix, "<rsp state='ok'>\n" + 1500 * periods + "</rsp>\n")
    result = fix("a.xml", "--write")
    assert b"1500 repairs made" in result.stderr
    assert path.read_text().count("'09:00:00'") == 1500


def test_an_ignored_rule_mends_nothing(fix):
    path = write(fix, WRONG)
    fix("a.xml", "--write", "--ignore", "time-without-seconds")
    assert path.read_text() == RIGHT.replace("'09:00:00'", "'09:00'")


def test_a_file_that_cannot_be_changed_stops_no_other(fix):
    path = write(fix, WRONG)
    (fix.folder / "link.xml").symlink_to("b.xml")
    write(fix, WRONG, "b.xml")
    result = fix("--write", "gone.xml", "link.xml", "a.xml")
    assert result.returncode == 3
    assert result.stderr.decode().splitlines() == [
        "vqmctl: cannot read 'gone.xml': No such file or directory",
        "vqmctl: cannot change 'link.xml': it is a link; name the file that it leads to",
        "vqmctl: a.xml: 3 repairs made; 0 findings left",
    ]
    assert path.read_text() == RIGHT
    assert (fix.folder / "b.xml").read_text() == WRONG


@pytest.mark.parametrize(
    "arguments, complaint",
    [
        (["a.xml", "-", "--write"], "--write changes a file; expected its name, not '-'"),
        (["a.xml", "--json"], "--fix prints a diff; expected no other format"),
    ],
)
def test_what_does_not_go_together_is_usage(fix, arguments, complaint):
    path = write(fix, WRONG)
    result = fix(*arguments)
    assert (result.returncode, result.stdout, result.stderr.decode()) == (2, b"", f"vqmctl: {complaint}\n")
    result = lint(fix, "a.xml", "--write")
    assert (result.returncode, result.stderr) == (2, b"vqmctl: --write belongs to --fix: expected both\n")
    assert path.read_text() == WRONG


def test_bad_input_is_named_or_has_no_repair(fix):
    write(fix, b"", "empty.xml")
    write(fix, bytes(range(256)), "binary.xml")
    write(fix, WRONG.encode("utf-16"), "wide.xml")
    write(fix, WRONG.encode()[:90], "cut.xml")
    for name in ("empty.xml", "binary.xml", "wide.xml", "cut.xml"):
        before = (fix.folder / name).read_bytes()
        result = fix(name, "--write")
        assert (result.returncode, result.stdout) == (1, b""), name
        assert (fix.folder / name).read_bytes() == before
    for name in (".", "/dev/zero", "/proc/self/mem"):
        result = fix(name)
        assert (result.returncode, result.stdout) == (3, b""), name
        assert result.stderr.decode().startswith(f"vqmctl: cannot read '{name}': ")


def test_killed_at_any_moment_it_leaves_the_old_file_or_the_new_one(fix):
    path = write(fix, document(ITEMS * 150, start="09:00"))
    fix.kill_again_and_again(path, ["a.xml", "--write"], int(os.environ.get("VQM_KILLS", "500")))
