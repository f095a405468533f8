"""The commands `vqmctl schedule show` and `vqmctl schedule at` as a user and a script meet them."""
import calendar
import ctypes
import json
import os
import re
import subprocess
import time
from pathlib import Path

import jsonschema
import pytest

from home import BUILD, PATIENCE, ROOT

VQMCTL = str(BUILD / "bin/vqmctl")
DOCS = ROOT / "Docs"
COMMANDS = ("show", "at")

DOCUMENT = """<rsp state='ok'>
  <policy period='30'/>
  <project id='18446744073709551615' version='1.2' item_count='3' total_size='3145728' expiration='2099-12-31'/>
  <schedule start_time='09:00:00' end_time='12:00:00'>
    <item id='A10' order='2'><name>logo</name><size>2097152</size><format>jpg</format></item>
    <item id='A2' order='1'><name>intro</name><size>1048576</size><format>mp4</format></item>
  </schedule>
  <schedule start_time='12:00:00' end_time='18:30'/>
  <schedule start_time='10:00:00' end_time='11:00:00'>
    <item id='B1' order='1'><name>caf\xe9</name><size>7</size><format>mp4</format></item>
  </schedule>
  <schedule start_time='22:00:00' end_time='02:00:00'/>
  <rech_info IsMaster='1' NumOfPlayer='2' IPAddrOfMaster='192.168.0.10' IPType='0' IPAddr='192.168.0.11'
    SubnetMask='255.255.255.0' Gateway='192.168.0.1' TypeOfNetwork='-1' WirelessGroupName='group1' nImageDuration='10'/>
</rsp>
"""

SHOWN = """state              ok
period             30 minutes between checks
project id         18446744073709551615
version            1.2
item_count         3 announced, 3 read
total_size         3145728 bytes announced
expiration         2099-12-31
IsMaster           yes
NumOfPlayer        2
IPAddrOfMaster     192.168.0.10
IPType             0
IPAddr             192.168.0.11
SubnetMask         255.255.255.0
Gateway            192.168.0.1
TypeOfNetwork      -1
WirelessGroupName  group1
nImageDuration     10

period 1: 09:00:00 to 12:00:00; 2 files
    order  id     bytes  file
        2  A10  2097152  logo.jpg
        1  A2   1048576  intro.mp4

period 2: 12:00:00 to 18:03:00; no files

period 3: 10:00:00 to 11:00:00; 1 file
    order  id  bytes  file
        1  B1      7  caf\xe9.mp4

period 4: 22:00:00 to 02:00:00, never plays: it does not start before its end; no files
"""


class Tool:
    """Runs the commands in a folder of their own, without a display."""

    def __init__(self, folder):
        self.folder = folder
        self.environment = {
            **{name: value for name, value in os.environ.items() if name not in ("DISPLAY", "DLOG_LEVEL")},
            "TZ": "XYZ-5:45",
        }

    def write(self, content, name="schedule.xml"):
        data = content if isinstance(content, bytes) else content.encode()
        Path(os.fsdecode(os.path.join(os.fsencode(self.folder), os.fsencode(name)))).write_bytes(data)
        return name

    def __call__(self, *arguments, stdin=b"", **options):
        return subprocess.run([VQMCTL, "schedule", *arguments], cwd=self.folder, env=self.environment, input=stdin,
                              capture_output=True, timeout=4 * PATIENCE, **options)

    def json(self, command, *arguments, **options):
        """What a command prints with --json, held to its schema."""
        result = self(command, "--json", *arguments, **options)
        assert (result.returncode, result.stderr) == (0, b"")
        schema = json.loads((DOCS / f"schemas/schedule-{command}.schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        document = json.loads(result.stdout.decode("ascii"))
        jsonschema.Draft202012Validator(schema).validate(document)
        return document


@pytest.fixture
def tool(tmp_path):
    return Tool(tmp_path)


def outcome(result):
    return result.returncode, result.stdout.decode(), result.stderr.decode()


def test_show_prints_the_schedule_as_the_tv_reads_it(tool):
    tool.write(DOCUMENT)
    assert outcome(tool("show", "schedule.xml")) == (0, SHOWN, "")
    assert outcome(tool("show", "-", stdin=DOCUMENT.encode())) == (0, SHOWN, "")


def test_show_of_nearly_nothing(tool):
    code, text, talk = outcome(tool("show", "-", stdin=b"<rsp/>"))
    assert (code, talk) == (0, "")
    assert text.startswith("state              not ok\nperiod             0 minutes between checks\n")
    assert "\nversion\nitem_count         0 announced, 0 read\n" in text
    assert "\nexpiration         none\n" in text
    assert text.endswith("\n\nno periods\n")


def test_show_as_json(tool):
    tool.write(DOCUMENT)
    shown = tool.json("show", "schedule.xml")
    assert shown["project"] == {"id": 2**64 - 1, "version": "1.2", "item_count": 3, "total_size": 3145728}
    assert shown["expiration"] == {"status": "valid", "date": "2099-12-31"}
    assert shown["player"] == {
        "is_master": True, "players": 2, "master_address": "192.168.0.10", "ip_type": 0, "address": "192.168.0.11",
        "subnet_mask": "255.255.255.0", "gateway": "192.168.0.1", "network_type": -1, "wireless_group": "group1",
        "image_duration": 10}
    assert [(each["period"], each["start"], each["end"], each["ever_plays"]) for each in shown["periods"]] == [
        (1, "09:00:00", "12:00:00", True), (2, "12:00:00", "18:03:00", True), (3, "10:00:00", "11:00:00", True),
        (4, "22:00:00", "02:00:00", False)]
    assert shown["periods"][0]["files"] == [
        {"order": 2, "id": "A10", "name": "logo.jpg", "format": "jpg", "size": 2097152},
        {"order": 1, "id": "A2", "name": "intro.mp4", "format": "mp4", "size": 1048576}]
    assert shown["periods"][2]["files"][0]["name"] == "caf\xe9.mp4"
    assert {name: shown[name] for name in ("schema_version", "file", "text_after_nul", "state_ok", "check_period_minutes")} == {
        "schema_version": 1, "file": "schedule.xml", "text_after_nul": False, "state_ok": True, "check_period_minutes": 30}
    assert tool.json("show", "-", stdin=b"<rsp/>")["expiration"] == {"status": "none", "date": None}


@pytest.mark.parametrize("asked, answer", [
    ("10:30", """plays  period 1, because 09:00:00 <= 10:30:00 < 12:00:00
         1  intro.mp4
         2  logo.jpg
plays  period 3, because 10:00:00 <= 10:30:00 < 11:00:00
         1  caf\xe9.mp4
next   11:00:00 today: period 3 ends
note   periods 1 and 3 overlap at this time; the TV has all of them
"""),
    ("11:59:59", """plays  period 1, because 09:00:00 <= 11:59:59 < 12:00:00
         1  intro.mp4
         2  logo.jpg
next   12:00:00 today: period 1 ends, period 2 starts
"""),
    ("12:00:00", """plays  period 2, because 12:00:00 <= 12:00:00 < 18:03:00
plays  nothing: the period has no files
next   18:03:00 today: period 2 ends
"""),
    ("23:00", """plays  nothing: no period includes this time
next   09:00:00 tomorrow: period 1 starts
"""),
])
def test_at_a_time(tool, asked, answer):
    tool.write(DOCUMENT)
    code, text, talk = outcome(tool("at", asked, "schedule.xml"))
    assert (code, talk) == (0, "")
    first, rest = text.split("\n", 1)
    full = asked if len(asked) == 8 else asked + ":00"
    assert re.fullmatch(rf"time   {full}, as given; today is \d+-\d\d-\d\d by this machine's clock, time zone XYZ \(UTC\+05:45\)", first)
    assert rest == answer


def test_at_now_is_the_clock_in_its_zone(tool):
    tool.write("<rsp state='ok'><schedule start_time='00:00:00' end_time='24:00:00'><item order='1'/></schedule></rsp>")
    earliest = int(time.time())
    told = tool.json("at", "schedule.xml")
    latest = time.time()
    shown = time.strptime(told["clock"]["day"] + " " + told["clock"]["time"] + " UTC", "%Y-%m-%d %H:%M:%S %Z")
    assert earliest <= calendar.timegm(shown) - told["clock"]["utc_offset"] <= latest
    assert (told["time"], told["time_from"]) == (told["clock"]["time"], "clock")
    assert (told["clock"]["zone"], told["clock"]["zone_known"], told["clock"]["utc_offset"]) == ("XYZ", True, 20700)
    assert [each["period"] for each in told["plays"]] == [1]
    lines = tool("at", "schedule.xml").stdout.decode().splitlines()
    assert re.fullmatch(
        r"time   \d\d:\d\d:\d\d on \d+-\d\d-\d\d by this machine's clock, time zone XYZ \(UTC\+05:45\)", lines[0])
    assert lines[-1] == "next   never: the same plays all day"


def test_an_unknown_zone_is_reported_and_not_shown_as_a_zone(tool):
    tool.write(DOCUMENT)
    tool.environment["TZ"] = "Mars/Base"
    code, text, _ = outcome(tool("at", "10:00", "schedule.xml"))
    assert code == 0
    assert text.splitlines()[0].endswith("time zone UTC (UTC+00:00), because TZ is 'Mars/Base', an unknown zone")
    clock = tool.json("at", "10:00", "schedule.xml")["clock"]
    assert (clock["zone"], clock["zone_known"], clock["utc_offset"]) == ("UTC", False, 0)


def test_at_as_json(tool):
    tool.write(DOCUMENT)
    told = tool.json("at", "10:30", "schedule.xml")
    assert (told["time"], told["time_from"], told["overlap"]) == ("10:30:00", "argument", True)
    assert [(each["period"], [file["name"] for file in each["files"]]) for each in told["plays"]] == [
        (1, ["intro.mp4", "logo.jpg"]), (3, ["caf\xe9.mp4"])]
    assert told["idle"] is None
    assert told["next"] == {"time": "11:00:00", "tomorrow": False, "ending": [3], "starting": []}
    assert told["notes"] == ["periods 1 and 3 overlap at this time; the TV has all of them"]
    night = tool.json("at", "23:00", "schedule.xml")
    assert (night["plays"], night["overlap"], night["notes"]) == ([], False, [])
    assert night["idle"] == {"reason": "between-periods", "text": "no period includes this time"}
    assert night["next"] == {"time": "09:00:00", "tomorrow": True, "ending": [], "starting": [1]}
    nothing = tool.json("at", "23:00", "-", stdin=b"<rsp state='ok'/>")
    assert (nothing["idle"]["reason"], nothing["next"], nothing["file"]) == ("no-periods", None, "<stdin>")


def test_an_expired_schedule_is_said_to_be(tool):
    document = DOCUMENT.replace("2099", "2016").replace("state='ok'", "state='fail'")
    notes = ["the document does not say that its state is \"ok\"; the TV reads it all the same",
             "the schedule expired on 2016-12-31; the TV keeps the date and does not act on it"]
    tool.write(document)
    text = tool("at", "11:30", "schedule.xml").stdout.decode()
    assert text.endswith("".join(f"note   {note}\n" for note in notes))
    assert "plays  period 1, because" in text
    told = tool.json("at", "11:30", "schedule.xml")
    assert (told["notes"], told["state_ok"]) == (notes, False)
    assert told["expiration"] == {"status": "expired", "date": "2016-12-31"}
    assert re.search(r"\nexpiration         2016-12-31, expired: today is \d+-\d\d-\d\d\n", tool("show", "schedule.xml").stdout.decode())


@pytest.mark.parametrize("arguments, complaint", [
    (["show", "a", "b"], "unexpected argument 'b'; see 'vqmctl schedule show --help'"),
    (["at", "9:30", "schedule.xml"],
     "'9:30' is not a time of day; expected hours:minutes:seconds or hours:minutes, such as 09:30:00 or 09:30"),
    (["at", "24:00:00", "schedule.xml"],
     "'24:00:00' is not a time of day; expected hours:minutes:seconds or hours:minutes, such as 09:30:00 or 09:30"),
    (["at", "schedule.xml", "10:30"], "'schedule.xml' is not a time of day; expected the time first, then the document"),
    (["at", "10:30", "schedule.xml", "x"], "unexpected argument 'x'; see 'vqmctl schedule at --help'"),
    (["at", "\x1b[31m", "schedule.xml"],
     "'\\x1b[31m' is not a time of day; expected hours:minutes:seconds or hours:minutes, such as 09:30:00 or 09:30"),
])
def test_what_is_not_understood_is_usage(tool, arguments, complaint):
    tool.write(DOCUMENT)
    assert outcome(tool(*arguments)) == (2, "", f"vqmctl: {complaint}\n")


def test_a_document_may_be_called_like_a_time(tool):
    tool.write(DOCUMENT, "10:30")
    told = tool.json("at", "10:30")
    assert (told["file"], told["time_from"]) == ("10:30", "clock")
    assert tool.json("at", "11:30", "10:30")["time"] == "11:30:00"


WIDE = b'line 1, column 1: the document is encoded in UTF-16, which editors also call "Unicode"; save it as UTF-8'
BROKEN = [
    (b"", b"line 1, column 1: the document is empty; copy it again"),
    (DOCUMENT.encode()[:300], b"line 5, column 87: the document ends in the middle, inside what begins here; copy it again"),
    (bytes(range(256)), b"line 1, column 1: the file holds no text; copy the right file"),
    (b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR", b"line 1, column 1: the file holds a PNG picture; copy the right file"),
    (DOCUMENT.encode("utf-16"), WIDE),
    (DOCUMENT.encode("utf-16-le"), WIDE),
    (DOCUMENT.encode("utf-16-be"), WIDE),
    (DOCUMENT.encode().replace(b"intro", b"in\0tro"),
     b"line 6, column 37: a zero byte ends the document in the middle: 'name' of line 6 is not closed; copy it again, or "
     b"write what is missing"),
]


@pytest.mark.parametrize("command", COMMANDS)
@pytest.mark.parametrize("form", [[], ["--json"]])
def test_a_document_that_the_set_rejects_says_why_and_where(tool, command, form):
    for document, why in BROKEN:
        tool.write(document)
        result = tool(command, *form, "schedule.xml")
        assert (result.returncode, result.stdout, result.stderr) == (
            3, b"", b"vqmctl: cannot parse 'schedule.xml': " + why + b"\n")
        assert tool(command, *form, "-", stdin=document).stderr == b"vqmctl: cannot parse '<stdin>': " + why + b"\n"


@pytest.mark.parametrize("command", COMMANDS)
def test_text_after_a_zero_byte_is_told_to_be_unread(tool, command):
    tool.write(DOCUMENT.encode() + b"\0<more/>")
    result = tool(command, "schedule.xml")
    assert result.returncode == 0
    assert result.stderr == b"vqmctl: note: 'schedule.xml' has a zero byte and text after it, which the TV never reads\n"
    assert tool.json(command, "schedule.xml")["text_after_nul"] is True
    tool.write(DOCUMENT.encode() + b"\0\0\n")
    assert tool(command, "schedule.xml").stderr == b""
    assert tool.json(command, "schedule.xml")["text_after_nul"] is False


def without_override():
    """A program started after this obeys the permissions of files even where it belongs to root."""
    drop_from_bounding_set, dac_override, dac_read_search = 24, 1, 2
    for capability in (dac_override, dac_read_search):
        assert os.getuid() != 0 or ctypes.CDLL(None).prctl(drop_from_bounding_set, capability, 0, 0, 0) == 0


@pytest.mark.parametrize("command", COMMANDS)
def test_a_file_that_cannot_be_read_is_named_with_the_cause(tool, command):
    tool.write(DOCUMENT, "secret.xml")
    os.symlink("gone.xml", tool.folder / "dangling.xml")
    for name, cause in (("missing.xml", "No such file or directory"), ("dangling.xml", "No such file or directory"),
                        (".", "Is a directory"), ("secret.xml/x", "Not a directory"), ("x" * 300, "File name too long"),
                        ("/proc/self/mem", "Input/output error")):
        assert outcome(tool(command, name)) == (3, "", f"vqmctl: cannot read '{name}': {cause}\n")
    os.chmod(tool.folder / "secret.xml", 0)
    assert outcome(tool(command, "secret.xml", preexec_fn=without_override)) == (
        3, "", "vqmctl: cannot read 'secret.xml': Permission denied\n")


@pytest.mark.parametrize("command", COMMANDS)
def test_names_that_are_no_utf8_and_contents_come_out_escaped(tool, command):
    odd = b"\x1b[31m\xff\n.xml"
    assert tool(command, odd).stderr == b"vqmctl: cannot read '\\x1b[31m\\xff\\x0a.xml': No such file or directory\n"
    document = "<?xml version='1.0' encoding='ISO-8859-1'?>" + DOCUMENT.replace("intro", "a\x9b31m\x7f&#10;z").replace("A2", "\xe4")
    tool.write(document.encode("latin-1"), odd)
    shown = tool(command, *(["11:30"] if command == "at" else []), odd)
    assert (shown.returncode, shown.stderr) == (0, b"")
    assert b"a\\xc2\\x9b31m\\x7f\\x0az.mp4\n" in shown.stdout
    told = tool.json(command, *(["11:30"] if command == "at" else []), odd)
    assert told["file"] == "\\x1b[31m\\xff\\x0a.xml"
    files = (told["periods"][0] if command == "show" else told["plays"][0])["files"]
    assert ("a\x9b31m\x7f\nz.mp4", "\xe4") in [(file["name"], file["id"]) for file in files]


@pytest.mark.parametrize("command", COMMANDS)
@pytest.mark.parametrize("form", [[], ["--json"]])
def test_a_reader_that_has_gone_leaves_no_trace(tool, command, form):
    tool.write("<rsp state='ok'>" + "<schedule start_time='00:00:00' end_time='24:00:00'><item/></schedule>" * 5000 + "</rsp>")
    read, write = os.pipe()
    os.close(read)
    result = subprocess.run([VQMCTL, "schedule", command, *form, "schedule.xml"], cwd=tool.folder, env=tool.environment,
                            stdout=write, stderr=subprocess.PIPE, timeout=2 * PATIENCE)
    os.close(write)
    assert (result.returncode, result.stderr) == (0, b"")
    process = subprocess.Popen([VQMCTL, "schedule", command, *form, "schedule.xml"], cwd=tool.folder,
                               env=tool.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    process.stdout.read(1)
    process.stdout.close()
    assert (process.stderr.read(), process.wait()) == (b"", 0)


@pytest.mark.parametrize("command", COMMANDS)
def test_a_full_disk_is_told(tool, command):
    tool.write(DOCUMENT)
    with open("/dev/full", "wb") as full:
        result = subprocess.run([VQMCTL, "schedule", command, "schedule.xml"], cwd=tool.folder, env=tool.environment,
                                stdout=full, stderr=subprocess.PIPE, timeout=2 * PATIENCE)
    assert (result.returncode, result.stderr) == (3, b"vqmctl: cannot write to stdout: No space left on device\n")


@pytest.mark.parametrize("command", COMMANDS)
def test_what_is_huge_or_endless_ends_soon(tool, command):
    tool.write(DOCUMENT)
    os.truncate(tool.folder / "schedule.xml", 2**30)
    assert tool(command, "schedule.xml").returncode == 0
    assert tool(command, "/dev/zero").stderr == b"vqmctl: cannot parse '/dev/zero': line 1, column 1: the file begins with a zero byte, where a text ends for the TV; copy it again\n"
    endless = subprocess.Popen(["yes", "<item/>"], stdout=subprocess.PIPE)
    result = subprocess.run([VQMCTL, "schedule", command, "-"], stdin=endless.stdout, env=tool.environment,
                            capture_output=True, timeout=2 * PATIENCE)
    endless.stdout.close()
    endless.wait()
    assert (result.returncode, result.stdout) == (3, b"")
    assert result.stderr == b"vqmctl: cannot read '<stdin>': more than 67108864 bytes; expected a schedule document\n"


def test_lint_of_what_has_no_end_ends_too(tool):
    result = tool("lint", "--oneline", "/dev/zero")
    assert result.returncode == 1
    assert result.stdout.startswith(b"/dev/zero:1:1: error: the file begins with a zero byte, where a text ends for the TV; copy it again; ")


@pytest.mark.parametrize("command", COMMANDS)
def test_a_pipe_waits_for_its_writer_only_if_there_is_one(tool, command):
    os.mkfifo(tool.folder / "pipe")
    assert outcome(tool(command, "pipe")) == (3, "", "vqmctl: cannot parse 'pipe': line 1, column 1: the document is empty; copy it again\n")
    read, write = os.pipe()
    process = subprocess.Popen([VQMCTL, "schedule", command, f"/dev/fd/{read}"], pass_fds=[read], env=tool.environment,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    os.close(read)
    for byte in (DOCUMENT[:200], DOCUMENT[200:]):
        time.sleep(0.05)
        os.write(write, byte.encode())
    os.close(write)
    output, talk = process.communicate(timeout=2 * PATIENCE)
    assert (process.returncode, talk) == (0, b"")
    assert output.startswith(b"state              ok\n" if command == "show" else b"time   ")


@pytest.mark.parametrize("command", COMMANDS)
def test_a_closed_stdin_is_told(tool, command):
    result = subprocess.run(["sh", "-c", 'exec "$0" schedule "$1" - <&-', VQMCTL, command], env=tool.environment,
                            capture_output=True, timeout=2 * PATIENCE)
    assert outcome(result) == (3, "", "vqmctl: cannot read '<stdin>': Bad file descriptor\n")


def test_a_long_text_is_paid_for_once(tmp_path):
    items = "".join(f"<item id='{number}' order='1'><name>n</name><size>1</size><format>mp4</format></item>"
                    for number in range(2000))
    long_item = f"<item id='{1000000 * 'x'}' order='1'><name>n</name><size>1</size><format>mp4</format></item>"
    document = f"<rsp state='ok'><schedule start_time='09:00:00' end_time='10:00:00'>{items}{long_item}</schedule></rsp>"
    (tmp_path / "long.xml").write_text(document)
    result = subprocess.run([VQMCTL, "schedule", "show", "long.xml"], cwd=tmp_path, capture_output=True, timeout=60)
    assert (result.returncode, result.stderr) == (0, b"")
    assert len(result.stdout) < 2000000
