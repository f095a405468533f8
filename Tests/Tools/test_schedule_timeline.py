"""The command `vqmctl schedule timeline` as a user and a script meet it, and its picture in two renderers."""
import os
import re
import shutil
import subprocess
import time
from xml.etree import ElementTree

import pytest
from home import PATIENCE, ROOT
from terminal import shown_on_terminal
from test_schedule_show_at import BROKEN, VQMCTL, Tool, outcome, tool, without_override  # noqa: F401

DAY = (ROOT / "Docs/examples/day.xml").read_text()
SVG = "{http://www.w3.org/2000/svg}"


def test_the_day_of_the_example(tool):
    tool.write(DAY, "day.xml")
    tool.environment["LC_ALL"] = "C"
    code, text, talk = outcome(tool("timeline", "--on", "2026-01-05", "day.xml"))
    assert (code, talk) == (0, "")
    assert text == """day.xml on 2026-01-05

  00    02    04    06    08    10    12    14    16    18    20    22    24
  |     |     |     |     |     |     |     |     |     |     |     |     |
1 ...........................=========##..................................
  09:00:00 to 12:30:00; intro.mp4, logo.jpg
2 ....................................##====..............................
  12:00:00 to 14:00:00; lunch.mp4
3 ...........................................=================............
  14:30:00 to 20:00:00; tour.mp4
4 ............................................................---.........
  20:00:00 to 21:00:00; no files
5 ..................................................................x.....
  22:00:00 to 02:00:00, never plays: it does not start before its end; night.mp4

  = plays   # overlaps   - plays no file   x never plays

overlap  12:00:00 to 12:30:00: periods 1 and 2
gap      00:00:00 to 09:00:00
gap      14:00:00 to 14:30:00
gap      21:00:00 to 24:00:00
"""
    assert outcome(tool("timeline", "--on", "2026-01-05", "-", stdin=DAY.encode()))[1] == text.replace("day.xml", "<stdin>")


def test_only_today_has_a_now(tool):
    tool.write(DAY)
    before = time.time()
    today = tool("timeline", "schedule.xml").stdout.decode()
    shown = re.search(r"now (\d\d:\d\d:\d\d)", today)[1]
    assert shown in [time.strftime("%H:%M:%S", time.gmtime(second + 20700)) for second in range(int(before), int(time.time()) + 1)]
    assert tool.json("timeline", "schedule.xml")["now"] is not None
    assert "now" not in tool("timeline", "--on", "2026-01-05", "schedule.xml").stdout.decode()
    assert tool.json("timeline", "--on", "2026-01-05", "schedule.xml")["now"] is None


def test_timeline_as_json(tool):
    tool.write(DAY.replace("2030-12-31", "2026-01-04"))
    day = tool.json("timeline", "--on", "2026-01-05", "schedule.xml")
    assert [(each["period"], each["start"], each["end"], each["ever_plays"]) for each in day["periods"]] == [
        (1, "09:00:00", "12:30:00", True), (2, "12:00:00", "14:00:00", True), (3, "14:30:00", "20:00:00", True),
        (4, "20:00:00", "21:00:00", True), (5, "22:00:00", "02:00:00", False)]
    assert [file["name"] for file in day["periods"][0]["files"]] == ["intro.mp4", "logo.jpg"]
    assert day["overlaps"] == [{"start": "12:00:00", "end": "12:30:00", "count": 2, "periods": [1, 2]}]
    assert day["gaps"] == [{"start": start, "end": end} for start, end in (
        ("00:00:00", "09:00:00"), ("14:00:00", "14:30:00"), ("21:00:00", "24:00:00"))]
    assert day["expiration"] == {"status": "expired", "date": "2026-01-04"}
    assert day["notes"] == ["the schedule expired on 2026-01-04; the TV keeps the date and does not act on it"]
    assert tool.json("timeline", "-", stdin=b"<rsp state='ok'/>")["notes"] == ["the schedule has no periods"]


def on_terminal(tool, columns, **environment):
    """What the command shows on a terminal of that width."""
    return shown_on_terminal([VQMCTL, "schedule", "timeline", "schedule.xml"], columns, cwd=tool.folder,
                             env={**tool.environment, "TERM": "xterm", **environment})


def test_a_terminal_gets_colours_and_its_width(tool):
    tool.write(DAY)
    tool.environment.pop("NO_COLOR", None)
    coloured = on_terminal(tool, 160, LC_ALL="C.UTF-8")
    assert "\033[32m\u2588" in coloured
    plain = on_terminal(tool, 160, NO_COLOR="1", LC_ALL="C.UTF-8")
    assert "\033" not in plain
    rows = [line for line in plain.splitlines() if re.match(r"[1-5] ", line)]
    assert [len(row) for row in rows] == 5 * [2 + 144]
    assert max(map(len, on_terminal(tool, 40, NO_COLOR="1", LC_ALL="C").split("\noverlap")[0].splitlines())) <= 40
    assert "\033" not in on_terminal(tool, 80, TERM="dumb")


# The picture


def picture(tool, document, *arguments):
    """The SVG of a document, with its tree."""
    tool.write(document)
    result = tool("timeline", *arguments, "-o", "-", "schedule.xml")
    assert (result.returncode, result.stderr) == (0, b"")
    return result.stdout, ElementTree.fromstring(result.stdout)


def test_the_picture_is_accessible_and_needs_nothing_else(tool):
    data, root = picture(tool, DAY, "--on", "2026-01-05")
    assert (root.get("role"), root.get("aria-labelledby")) == ("img", "timeline-title timeline-desc")
    title, description = root.find(SVG + "title"), root.find(SVG + "desc")
    assert (title.get("id"), description.get("id")) == ("timeline-title", "timeline-desc")
    assert title.text == "schedule.xml on 2026-01-05"
    for words in ("Period 1: 09:00:00 to 12:30:00; intro.mp4, logo.jpg.", "Overlap 12:00:00 to 12:30:00: periods 1 and 2.",
                  "Period 5: 22:00:00 to 02:00:00, never plays: it does not start before its end; night.mp4.",
                  "No period 14:00:00 to 14:30:00."):
        assert words in description.text
    texts = [each.text for each in root.iter(SVG + "text")]
    assert "3: 14:30:00 to 20:00:00; tour.mp4" in texts
    assert {element.tag for element in root.iter()} <= {SVG + name for name in (
        "svg", "title", "desc", "defs", "pattern", "path", "rect", "text", "g", "clipPath")}
    links = set(re.findall(rb"(?:https?:|href|url\([^#]|@import|<script|<style)[^\"]*", data)) - {b"http://www.w3.org/2000/svg"}
    assert links == set()


def pixels(png):
    """Width, height and the bytes of red, green and blue of an image."""
    data = subprocess.run(["convert", png, "-background", "white", "-alpha", "remove", "-depth", "8", "ppm:-"],
                          capture_output=True, check=True).stdout
    header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
    return int(header[1]), int(header[2]), data[header.end():]


def by_librsvg(svg, png):
    subprocess.run(["rsvg-convert", svg, "-o", png], check=True, timeout=PATIENCE)


def by_cairosvg(svg, png):
    cairosvg = pytest.importorskip("cairosvg")
    cairosvg.svg2png(url=str(svg), write_to=str(png))


def at(image, hour, row):
    """The colour at a time of day, in the middle of a row's bar."""
    width, _, data = image
    place = 3 * (width * (116 + 56 * row + 18) + 34 + round(44 * hour))
    return tuple(data[place:place + 3])


@pytest.mark.parametrize("render", [by_librsvg, by_cairosvg])
def test_a_renderer_shows_the_day(tool, tmp_path, render):
    if render is by_librsvg and shutil.which("rsvg-convert") is None:
        pytest.skip("rsvg-convert is not installed")
    tool.write(DAY)
    assert outcome(tool("timeline", "--on", "2026-01-05", "-o", "day.svg", "schedule.xml")) == (0, "", "")
    render(tmp_path / "day.svg", tmp_path / "day.png")
    image = pixels(tmp_path / "day.png")
    assert image[0] == 1124
    bar, empty = (156, 195, 230), (255, 255, 255)
    inside = {(0, 9.3), (0, 11.7), (1, 12.7), (1, 13.7), (2, 14.7), (2, 19.7)}
    outside = {(0, 13.2), (1, 9.3), (1, 14.7), (2, 9.3), (4, 9.3)}
    assert [place for place in inside if at(image, place[1], place[0]) != bar] == []
    assert [place for place in outside if at(image, place[1], place[0]) != empty] == []
    # Both bars are hatched where they overlap, and the time is shaded elsewhere.
    for row in (0, 1):
        assert len({at(image, 12 + step / 44, row) for step in range(3, 19)}) > 1
    assert at(image, 12.2, 3) == (247, 220, 207)
    # Nothing plays at night: the background is hatched.
    assert len({at(image, 3 + step / 44, 0) for step in range(20)}) > 1


def test_the_documentation_shows_the_picture_of_today(tool):
    """Made anew by: build/dev/bin/vqmctl schedule timeline --on 2026-01-05 -o Docs/images/day.svg Docs/examples/day.xml"""
    result = subprocess.run([VQMCTL, "schedule", "timeline", "--on", "2026-01-05", "-o", "-", "Docs/examples/day.xml"],
                            cwd=ROOT, capture_output=True, timeout=PATIENCE)
    assert result.stdout == (ROOT / "Docs/images/day.svg").read_bytes()
    assert "Docs/images/day.svg" in (ROOT / "README.md").read_text()


# Files


def test_a_picture_replaces_a_file_whole_or_not_at_all(tool, tmp_path):
    tool.write(DAY)
    path = tmp_path / "day.svg"
    assert outcome(tool("timeline", "-o", "day.svg", "schedule.xml", preexec_fn=lambda: os.umask(0o027))) == (0, "", "")
    assert path.stat().st_mode & 0o777 == 0o640
    path.chmod(0o604)
    os.symlink("day.svg", tmp_path / "link.svg")
    path.write_text("old")
    assert outcome(tool("timeline", "-o", "link.svg", "schedule.xml")) == (0, "", "")
    assert path.read_text().startswith("<?xml") and (tmp_path / "link.svg").is_symlink()
    assert path.stat().st_mode & 0o777 == 0o604
    before = path.read_text()
    assert outcome(tool("timeline", "-o", "day.svg", "missing.xml"))[0] == 3
    assert path.read_text() == before
    assert sorted(os.listdir(tmp_path)) == ["day.svg", "link.svg", "schedule.xml"]


@pytest.mark.parametrize("name, complaint", [
    ("missing/day.svg", "No such file or directory"),
    ("folder.svg", "it is not a regular file"),
    ("pipe.svg", "it is not a regular file"),
    ("dangling.svg", "No such file or directory"),
    ("full.svg", "it is not a regular file"),
    ("x" * 300 + ".svg", "File name too long"),
    ("bad\x1b[31m/day.svg", "No such file or directory"),
])
def test_a_picture_that_cannot_be_written_is_told(tool, tmp_path, name, complaint):
    tool.write(DAY)
    (tmp_path / "folder.svg").mkdir()
    os.mkfifo(tmp_path / "pipe.svg")
    os.symlink("nowhere.svg", tmp_path / "dangling.svg")
    os.symlink("/dev/full", tmp_path / "full.svg")
    before = sorted(os.listdir(tmp_path))
    result = tool("timeline", "-o", name, "schedule.xml")
    assert outcome(result) == (3, "", f"vqmctl: cannot write '{name}': {complaint}\n".replace("\x1b", "\\x1b"))
    assert sorted(os.listdir(tmp_path)) == before


def test_a_full_disk_keeps_the_old_picture(tool, tmp_path):
    tool.write(DAY)
    (tmp_path / "day.svg").write_text("old")
    limit = "import resource, signal; signal.signal(signal.SIGXFSZ, signal.SIG_IGN); resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))"
    result = tool("timeline", "-o", "day.svg", "schedule.xml", preexec_fn=lambda: exec(limit))  # noqa: S102
    assert outcome(result) == (3, "", "vqmctl: cannot write 'day.svg': File too large\n")
    assert (tmp_path / "day.svg").read_text() == "old"
    assert sorted(os.listdir(tmp_path)) == ["day.svg", "schedule.xml"]


@pytest.mark.parametrize("arguments, complaint", [
    (["--on", "today", "a.xml"], "--on 'today' is no day; expected year-month-day"),
    (["--on", "2026-02-30", "a.xml"], "--on '2026-02-30' is no day; expected year-month-day"),
    (["-o", "a.xml", "a.xml"], "-o 'a.xml' is no name of an SVG picture; expected one that ends in .svg, or '-'"),
    (["-o", ".svg", "a.xml"], "-o '.svg' is no name of an SVG picture; expected one that ends in .svg, or '-'"),
    (["--json", "-o", "a.svg", "a.xml"], "--json and -o exclude each other"),
    (["a.xml", "b.xml"], "unexpected argument 'b.xml'; see 'vqmctl schedule timeline --help'"),
])
def test_what_is_not_understood_is_usage(tool, arguments, complaint):
    tool.write(DAY, "a.xml")
    assert outcome(tool("timeline", *arguments)) == (2, "", f"vqmctl: {complaint}\n")
    assert (tool.folder / "a.xml").read_text() == DAY


# Bad input, in each form

FORMS = [[], ["--json"], ["-o", "-"]]


@pytest.mark.parametrize("form", FORMS)
def test_a_document_that_does_not_parse_says_why_and_where(tool, form):
    for document, why in BROKEN:
        tool.write(document)
        result = tool("timeline", *form, "schedule.xml")
        assert (result.returncode, result.stdout, result.stderr) == (
            3, b"", b"vqmctl: cannot parse 'schedule.xml': " + why + b"\n")


@pytest.mark.parametrize("form", FORMS)
def test_a_file_that_cannot_be_read_is_named_with_the_cause(tool, form):
    tool.write(DAY, "secret.xml")
    for name, cause in (("missing.xml", "No such file or directory"), (".", "Is a directory"),
                        ("/proc/self/mem", "Input/output error")):
        assert outcome(tool("timeline", *form, name)) == (3, "", f"vqmctl: cannot read '{name}': {cause}\n")
    os.chmod(tool.folder / "secret.xml", 0)
    assert outcome(tool("timeline", *form, "secret.xml", preexec_fn=without_override)) == (
        3, "", "vqmctl: cannot read 'secret.xml': Permission denied\n")
    os.mkfifo(tool.folder / "pipe")
    for name, cause in (("pipe", "the document is empty; copy it again"),
                        ("/dev/zero", "the file begins with a zero byte, where a text ends for the TV; copy it again")):
        assert outcome(tool("timeline", *form, name))[2] == (
            f"vqmctl: cannot parse '{name}': line 1, column 1: {cause}\n")


@pytest.mark.parametrize("form", FORMS)
def test_control_characters_never_come_out_raw(tool, form):
    document = DAY.replace("UTF-8", "ISO-8859-1").replace("intro", "a\x9b31m\x7f&#10;&amp;&lt;z&#x202e;")
    odd = b"\x1b[31m\xff\n<&.xml"
    tool.write(document.encode("latin-1", "xmlcharrefreplace"), odd)
    result = tool("timeline", *form, odd)
    assert (result.returncode, result.stderr) == (0, b"")
    assert re.search(rb"[\x00-\x09\x0b-\x1f\x7f]", result.stdout) is None
    text = result.stdout.decode()
    assert re.search("[\x80-\x9f\u202e\uffff]", text) is None
    if form == ["-o", "-"]:
        texts = "".join(ElementTree.fromstring(text).itertext())
        assert "a\\xc2\\x9b31m\\x7f\\x0a&<z\\xe2\\x80\\xae.mp4" in texts
        assert "\\x1b[31m\\xff\\x0a<&.xml on " in texts


@pytest.mark.parametrize("form", FORMS)
def test_a_reader_that_has_gone_and_a_full_disk(tool, form):
    tool.write("<rsp state='ok'>" + "<schedule start_time='00:00:00' end_time='24:00:00'><item/></schedule>" * 5000 + "</rsp>")
    read, write = os.pipe()
    os.close(read)
    command = [VQMCTL, "schedule", "timeline", *form, "schedule.xml"]
    result = subprocess.run(command, cwd=tool.folder, stdout=write, stderr=subprocess.PIPE, timeout=2 * PATIENCE)
    os.close(write)
    assert (result.returncode, result.stderr) == (0, b"")
    with open("/dev/full", "wb") as full:
        result = subprocess.run(command, cwd=tool.folder, stdout=full, stderr=subprocess.PIPE, timeout=2 * PATIENCE)
    assert (result.returncode, result.stderr) == (3, b"vqmctl: cannot write to stdout: No space left on device\n")
    closed = subprocess.run(["sh", "-c", '"$@" >&-', "sh", *command], cwd=tool.folder, stderr=subprocess.PIPE,
                            timeout=2 * PATIENCE)
    assert (closed.returncode, closed.stderr) == (3, b"vqmctl: cannot write to stdout: it is not open for writing\n")


@pytest.mark.parametrize("form, count", [([], 500000), (["--json"], 50000), (["-o", "-"], 50000)])
def test_half_a_million_items_are_a_bounded_picture(tool, form, count):
    item = "<item id='1' order='1'><name>n</name><size>1</size><format>mp4</format></item>"
    one = f"<schedule start_time='09:00:00' end_time='18:00:00'>{item * count}</schedule>"
    many = "".join(f"<schedule start_time='{second // 3600:02}:{second // 60 % 60:02}:{second % 60:02}'"
                   f" end_time='24:00:00'/>" for second in range(0, 80000, 4))
    tool.write(f"<rsp state='ok'>{one}{many}</rsp>")
    result = tool("timeline", *form, "schedule.xml")
    assert (result.returncode, result.stderr) == (0, b"")
    assert form == ["--json"] or len(result.stdout) < 1000000
