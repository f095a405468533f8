"""vqmctl check, in a sandbox with the sample set: constants, a schedule of three items, and their files."""

import os
import re
import signal
import subprocess

import pytest
from home import BUILD, PATIENCE
from shop import MEDIA, RECH, RES, Shop, validated
from terminal import open_terminal, read_until

SCHEDULE = f"{RECH}/schedule.xml"


def summary(outcome, rest, verdict):
    return f"summary:   {outcome}{rest}\nthe TV: {verdict}\n"


def ready(items, outcome="it will play what was meant"):
    return summary(outcome, f"; {items}", "ready")


def not_ready(items):
    return summary("it will not play", f"; {items}", "not ready")


TIME = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\n"
READY = ready("3 of 3 items complete")
NO_SCHEDULE = summary("it will not play", ": there is no readable schedule", "not ready")
# As the person at the TV, who may not read everything.
PLAIN_USER = "setpriv --inh-caps=-dac_override,-dac_read_search --bounding-set=-dac_override,-dac_read_search"


@pytest.fixture
def shop(home):
    return Shop(home)


def check_json(output):
    return validated("check", output)


def without_sizes_of_the_disk(text):
    return re.sub(r"[0-9.]+ [kMGTP]?B(ytes)? free", "SPACE free", text)


def test_a_ready_set(shop):
    result = shop.run("vqmctl check")
    assert (result.returncode, result.stderr) == (0, b"")
    assert without_sizes_of_the_disk(result.stdout.decode()) == (
        f"constants: {RES}/constants.xml (ScheduleFile is 'schedule.xml')\n"
        f"schedule:  {SCHEDULE} (2 periods, 3 items, expires on 2030-12-31)\n"
        f"media:     {MEDIA}/ (3 of 3 items complete, 0 bytes to copy, SPACE free)\n" + READY)


def test_a_ready_set_as_json(shop):
    result = shop.run("vqmctl check --json")
    assert (result.returncode, result.stderr) == (0, b"")
    document = check_json(result.stdout)
    assert document["contents"].pop("bytes_free") > 0
    files = document["contents"].pop("files")
    assert document == {
        "schema_version": 1,
        "verdict": {"ready": True, "ran": True, "problem": None, "schedule": True, "contents": True},
        "constants": {"path": f"{RES}/constants.xml", "state": "loaded", "problem": None,
                      "schedule_file": "schedule.xml", "lines_to_write": None},
        "schedule": {"directory": f"{RECH}/", "path": SCHEDULE, "state": "loaded", "problem": None, "periods": 2,
                     "items": 3, "item_count": 3, "bytes": 1075843072, "total_size": 1075843072, "state_is_ok": True,
                     "expiration": "2030-12-31", "expiry": "valid"},
        "contents": {"directory": f"{MEDIA}/", "directory_present": True, "closed_directory": None,
                     "complete": 3, "bytes_to_copy": 0},
        "lint": {"errors": 0, "warnings": 0, "notes": 0},
        "diagnostics": [],
        "outcome": "as-meant",
    }
    assert files[2] == {"period": 2, "name": "evening.mp4", "path": f"{MEDIA}/evening.mp4", "kind": "file",
                        "announced": 1073740800, "size": 1073740800, "size_matches": True, "readable": True,
                        "problem": None}
    assert [file["name"] for file in files] == ["intro.mp4", "logo.jpg", "evening.mp4"]


def item(name, size=5, form="mp4"):
    return f"<item id='{name}' order='1'><name>{name}</name><size>{size}</size><format>{form}</format></item>"


def schedule(items, project="", state="ok"):
    return (f"<rsp state='{state}'>{project}<schedule start_time='09:00:00' end_time='18:30:00'>{items}</schedule>"
            "</rsp>")


def store(document):
    """A shell's words that make a document the schedule."""
    assert '"' not in document
    return f'printf %s "{document}" >$rech/schedule.xml'


def lines(*diagnostics):
    return "".join(f"{diagnostic}\n" for diagnostic in diagnostics)


KEYLESS = "[no-schedule-file]"
WRITE = ["    Write these lines into it; 'vqmctl constants init' does:", "      <Constants>",
         '        <Data key="ScheduleFile" value="schedule.xml"/>', "      </Constants>"]
CONSTANTS = f"the constants file '{RES}/constants.xml'"
UNNAMED = "; without it the TV does not know the name of its schedule"
EMPTY = summary("it will not play", ": no file is named", "ready")
FIVE = "truncate -s 5 $media/a.mp4; "

FAULTS = {
    "no constants": ("rm $res/constants.xml", 1, lines(
        f"problem: {CONSTANTS} is missing{UNNAMED} [constants-missing]", *WRITE) + NO_SCHEDULE),
    "no constants, no directory": ("rm -r $res $rech", 1, lines(
        f"problem: {CONSTANTS} is missing: the directory '{RES}' is not there{UNNAMED} [constants-missing]",
        *WRITE) + NO_SCHEDULE),
    "no constants, and a schedule of another name": ("rm $res/constants.xml; mv $rech/schedule.xml $rech/2026.XML", 1, lines(
        f"problem: {CONSTANTS} is missing{UNNAMED} [constants-missing]",
        *[line.replace("schedule.xml", "2026.XML") for line in WRITE]) + NO_SCHEDULE),
    "constants are a directory": ("rm $res/constants.xml; mkdir $res/constants.xml", 1, lines(
        f"problem: {CONSTANTS} is a directory{UNNAMED} [constants-unreadable]") + NO_SCHEDULE),
    "constants are unreadable": ("chmod 0 $res/constants.xml", 1, lines(
        f"problem: {CONSTANTS} cannot be read: Permission denied{UNNAMED} [constants-unreadable]") + NO_SCHEDULE),
    "constants are empty": (": >$res/constants.xml", 1, lines(
        f"problem: {CONSTANTS} cannot be parsed: line 1, column 1: the document is empty; copy it again; only what stands before that "
        "place counts [constants-not-well-formed]",
        f"problem: {CONSTANTS} has no constant ScheduleFile {KEYLESS}") + NO_SCHEDULE),
    "constants broken behind the name": ("echo '<' >>$res/constants.xml", 0, lines(
        f"note: {CONSTANTS} cannot be parsed: line 5, column 2: '<' begins no tag here; write &lt; for "
        "the character itself; only what stands before that place counts [constants-not-well-formed]") + READY),
    "a misspelt constant": ("sed -i s/ScheduleFile/SchedulFile/ $res/constants.xml", 1, lines(
        f"problem: {CONSTANTS} has no constant ScheduleFile; 'SchedulFile' is there {KEYLESS}") + NO_SCHEDULE),
    "a value before its key": ("echo '<c><Data value=\"s.xml\" key=\"ScheduleFile\"/></c>' >$res/constants.xml", 1, lines(
        f"problem: {CONSTANTS} has no constant ScheduleFile; it has a value without a name: key must stand before value "
        f"{KEYLESS}") + NO_SCHEDULE),
    "an empty constant": ("sed -i s/schedule.xml// $res/constants.xml", 1, lines(
        "problem: the constant ScheduleFile is empty; expected the file name of the schedule [schedule-file-empty]") + NO_SCHEDULE),
    "no schedule": ("mv $rech/schedule.xml $rech/shedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing; 'shedule.xml' is there; rename the "
        "schedule, or name it in the constants [schedule-missing]") + NO_SCHEDULE),
    "a schedule of another name": ("mv $rech/schedule.xml $rech/Plan_2026.xml; touch $rech/notes.txt", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing; 'Plan_2026.xml' is there; rename the schedule, or name it in the "
        "constants [schedule-missing]") + NO_SCHEDULE),
    "a schedule with one more extension": ("mv $rech/schedule.xml $rech/schedule.xml.txt", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing; 'schedule.xml.txt' is there, with one more extension "
        "[schedule-missing]") + NO_SCHEDULE),
    "a schedule a directory too deep": ("mkdir $rech/RECH; mv $rech/schedule.xml $rech/RECH", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing; 'RECH/schedule.xml' is there, a directory too deep "
        "[schedule-missing]") + NO_SCHEDULE),
    "no schedule directory": ("mv $rech ${rech%RECH}Rech", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing: the directory '{RECH}' is not there; 'Rech' is there, but upper "
        "and lower case count [schedule-missing]") + NO_SCHEDULE),
    "the schedule directory is a dangling link": ("rm -r $rech; ln -s /mnt/a ${rech%RECH}b; ln -s b $rech", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing: '{RECH}' is a link to 'b', which is a link to '/mnt/a', which is "
        "not there [schedule-missing]") + NO_SCHEDULE),
    "the schedule is a dangling link": ("ln -sf gone $rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is missing: it is a link to 'gone', which is not there "
        "[schedule-missing]") + NO_SCHEDULE),
    "the schedule is a directory": ("rm $rech/schedule.xml; mkdir $rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' is a directory [schedule-unreadable]") + NO_SCHEDULE),
    "the schedule is unreadable": ("chmod 0 $rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' cannot be read: Permission denied [schedule-unreadable]") + NO_SCHEDULE),
    "the schedule is empty": (": >$rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' cannot be parsed: line 1, column 1: the document is empty; copy it again "
        "[schedule-not-well-formed]") + NO_SCHEDULE),
    "the schedule is cut short": ("truncate -s 200 $rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' cannot be parsed: line 5, column 3: the document ends in the middle, inside what "
        "begins here; copy it again [schedule-not-well-formed]") + NO_SCHEDULE),
    "the schedule is noise": ("printf '\\377\\001\\002' >$rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' cannot be parsed: line 1, column 1: the file holds no text; "
        "copy the right file [schedule-not-well-formed]") + NO_SCHEDULE),
    "the schedule is UTF-16": ("iconv -t UTF-16 $rech/schedule.xml >$res/u; mv $res/u $rech/schedule.xml", 1, lines(
        f"problem: the schedule '{SCHEDULE}' cannot be parsed: line 1, column 1: the document is encoded in UTF-16, "
        "which editors also call \"Unicode\"; save it as UTF-8 [schedule-not-well-formed]") + NO_SCHEDULE),
    "no media directory": ("rm -r $media", 1, lines(
        f"problem: the media directory '{MEDIA}/' is missing; none of 3 items can be there [media-directory-missing]") +
        not_ready("0 of 3 items complete; the TV looks no further than 'intro.mp4'")),
    "the media directory in another case": ("mv $media /opt/data/Demo_Movie", 1, lines(
        f"problem: the media directory '{MEDIA}/' is missing; 'Demo_Movie' is there, but upper and lower case count; none "
        "of 3 items can be there [media-directory-missing]") +
        not_ready("0 of 3 items complete; the TV looks no further than 'intro.mp4'")),
    "the media on a disk that is not there": ("rm -r $media; ln -s /mnt/disk $media", 1, lines(
        f"problem: the media directory '{MEDIA}/' is missing: it is a link to '/mnt/disk', which is not there; none of 3 "
        "items can be there [media-directory-missing]") +
        not_ready("0 of 3 items complete; the TV looks no further than 'intro.mp4'")),
    "names that look alike": ("cd $media; mv intro.mp4 'intro (1).mp4'; mv logo.jpg 'logo .jpg'; mv evening.mp4 "
                              "evening.mp4.mp4", 1, lines(
        "problem: 'intro.mp4' is missing; the schedule announces 1048576 bytes; 'intro (1).mp4' is there, under the name "
        "of a copy [file-missing]",
        "problem: 'logo.jpg' is missing; the schedule announces 1053696 bytes; 'logo .jpg' is there, but blanks count "
        "[file-missing]",
        "problem: 'evening.mp4' is missing; the schedule announces 1073740800 bytes; 'evening.mp4.mp4' is there, with its "
        "extension twice [file-missing]") +
        not_ready("0 of 3 items complete; the TV looks no further than 'intro.mp4'")),
    "a file a directory too deep": ("mkdir $media/season; mv $media/logo.jpg $media/season", 1, lines(
        "problem: 'logo.jpg' is missing; the schedule announces 1053696 bytes; 'season/logo.jpg' is there, a directory too "
        "deep [file-missing]") + not_ready("2 of 3 items complete")),
    "another case, and half a file": ("mv $media/logo.jpg $media/Logo.JPG; truncate -s 536870400 $media/evening.mp4", 1,
        lines("problem: 'logo.jpg' is missing; the schedule announces 1053696 bytes; 'Logo.JPG' is there, but upper and "
              "lower case count [file-missing]",
              "problem: 'evening.mp4' has 536870400 bytes; the schedule announces 1073740800 [file-size]") +
        not_ready("1 of 3 items complete; the TV looks no further than 'logo.jpg'")),
    "a file that is too long": ("echo >>$media/intro.mp4", 1, lines(
        "problem: 'intro.mp4' has 1048577 bytes; the schedule announces 1048576 [file-size]") +
        not_ready("2 of 3 items complete")),
    "a dangling link": ("ln -sf /mnt/gone $media/intro.mp4", 1, lines(
        "problem: 'intro.mp4' is missing: it is a link to '/mnt/gone', which is not there; the schedule announces "
        "1048576 bytes [file-missing]") +
        not_ready("2 of 3 items complete")),
    "a link that goes in circles": ("ln -sf intro.mp4 $media/intro.mp4", 1, lines(
        "problem: 'intro.mp4' cannot be examined: Too many levels of symbolic links; it counts as 0 bytes, the schedule "
        "announces 1048576 [file-not-examined]") +
        not_ready("2 of 3 items complete")),
    "a directory for a file": ("rm $media/intro.mp4; mkdir $media/intro.mp4", 1, lines(
        "problem: 'intro.mp4' is a directory; the schedule announces 1048576 bytes [file-of-another-kind]") +
        not_ready("2 of 3 items complete")),
    "a media directory that may not be entered": ("chmod 0 /opt/data", 1, lines(
        "problem: you may not enter the directory '/opt/data'; whether the application may is not known: ask as the user "
        "that it runs as, or as root [media-directory-closed]") +
        not_ready("0 of 3 items complete; the TV looks no further than 'intro.mp4'")),
    "a pipe for a file": ("rm $media/intro.mp4; mkfifo $media/intro.mp4", 1, lines(
        "problem: 'intro.mp4' is a pipe; the schedule announces 1048576 bytes [file-of-another-kind]") +
        not_ready("2 of 3 items complete")),
    "a name that is too long": (store(schedule(item("n" * 300))), 1, lines(
        f"problem: '{'n' * 300}.mp4' cannot be examined: File name too long; it counts as 0 bytes, the schedule "
        "announces 5 [file-not-examined]") + not_ready("0 of 1 item complete")),
    "a name with a line break": (store(schedule(item("in\ntro"))), 1, lines(
        "problem: 'in\\x0atro.mp4' is missing; the schedule announces 5 bytes; 'intro.mp4' is there, but blanks count "
        "[file-missing]") +
        not_ready("0 of 1 item complete")),
    "the same file twice": (store(schedule(item("a") + item("a"))), 1, lines(
        "problem: 'a.mp4' is missing; the schedule announces 5 bytes [file-missing]") +
        not_ready("0 of 2 items complete; the TV looks no further than 'a.mp4'")),
    "more than the disk has room for": (store(schedule(item("a", 2**63) + item("b", 2**63))), 1, lines(
        "problem: 'a.mp4' is missing; the schedule announces 9223372036854775808 bytes [file-missing]",
        "problem: 'b.mp4' is missing; the schedule announces 9223372036854775808 bytes [file-missing]",
        "note: 18.4 EB are to be copied, and the disk has room for ROOM [disk-full]") +
        not_ready("0 of 2 items complete; the TV looks no further than 'a.mp4'")),
    "an absent file of no bytes": (store(schedule(item("a", 0))), 0, lines(
        "note: 'a.mp4' is announced with 0 bytes: it counts as present, although it is missing [size-0]") +
        ready("1 of 1 item complete")),
    "a pipe for a file of no bytes": ("mkfifo $media/a.mp4; " + store(schedule(item("a", 0))), 0, lines(
        "note: 'a.mp4' is a pipe; it counts, for its size is the announced one [file-of-another-kind]") +
        ready("1 of 1 item complete")),
    "a file that cannot be read": ("chmod 0 $media/intro.mp4", 0, lines(
        "note: 'intro.mp4' has its size, but cannot be read here: Permission denied; the check does not try to "
        "[file-unreadable]") + READY),
    "expired": (FIVE + store(schedule(item("a"), "<project expiration='2020-12-31'/>")), 0, lines(
        "note: the schedule has expired on 2020-12-31; the check does not look at the date [expired]") +
        ready("1 of 1 item complete")),
    "an expiration that is no day": (FIVE + store(schedule(item("a"), "<project expiration='2020-13-31'/>")), 1, lines(
        "note: the schedule expires on 2020-13-31, which is not a day; the check does not look at it [expiration-no-day]") +
        ready("1 of 1 item complete")),
    "a state that is not ok": (FIVE + store(schedule(item("a"), state="fail")), 1, lines(
        "note: the schedule's state is not \"ok\"; the check does not ask for it [state-not-ok]") +
        ready("1 of 1 item complete")),
    "other totals": (FIVE + store(schedule(item("a"), "<project item_count='2' total_size='6'/>")), 0, lines(
        "note: item_count is 2, but there is 1 item; the check goes by the items [item-count]",
        "note: total_size is 6, but the items' sizes add up to 5; the check goes by the items [total-size]") +
        ready("1 of 1 item complete")),
    "no items": (store(schedule("")), 1, lines(
        "problem: the schedule names no file: nothing is missing, and nothing plays [no-files]") + EMPTY),
    "an HTML page": (store("<html><body>404 Not Found</body></html>"), 1, lines(
        f"problem: the file '{SCHEDULE}' is an HTML page; copy the schedule document in its place [not-a-schedule]") +
        EMPTY),
    "a document without rsp": (FIVE + store(schedule(item("a")).replace("rsp", "policy")), 1, lines(
        f"problem: the file '{SCHEDULE}' has no element rsp; copy the schedule document in its place [not-a-schedule]") +
        summary("it will not play", "; 1 of 1 item complete", "ready")),
}


def without_lint(text):
    """What the check itself says. Most of these documents are too short for the linter."""
    text = re.sub(r"^(error|lint): .*\n", "", text, flags=re.MULTILINE)
    return re.sub("it will play, but (perhaps )?not what was meant", "it will play what was meant", text)


@pytest.mark.parametrize("fault", FAULTS)
def test_each_fault_is_explained_and_the_verdict_is_the_librarys(shop, tmp_path, fault):
    prepare, code, expected = FAULTS[fault]
    result = shop.run(f"""{prepare}
        {PLAIN_USER} {BUILD}/bin/vqmctl check; echo code $?
        {PLAIN_USER} {BUILD}/bin/vqmctl check --json >$out/json; echo code $?
        DLOG_LEVEL=silent {PLAIN_USER} {BUILD}/bin/example_content_check >$out/library; echo code $?""")
    shown = re.sub(r"room for [0-9.]+ [kMGTPE]?B", "room for ROOM", result.stdout.decode())
    assert result.stderr == b""
    library = 0 if "the TV: ready" in expected else 1
    assert without_lint(shown.partition("media: ")[2].partition("\n")[2]) == (
        expected + 2 * f"code {code}\n" + f"code {library}\n")
    document = check_json((tmp_path / "json").read_bytes())
    told_lines = "".join(line[6:] + "\n" for line in expected.splitlines() if line.startswith("      "))
    assert (document["constants"]["lines_to_write"] or "") == told_lines
    diagnostics = document["diagnostics"]
    assert [(diagnostic["id"], diagnostic["blocking"]) for diagnostic in diagnostics
            if diagnostic["blocking"] or diagnostic["severity"] == "note"] == [
        (line.rpartition("[")[2][:-1], line.startswith("problem"))
        for line in expected.splitlines() if line.endswith("]")]


@pytest.mark.parametrize("prepare, problem", [
    ("rm $rech/schedule.xml; mkfifo $rech/schedule.xml",
     f"the schedule '{SCHEDULE}' is a pipe, where reading waits for a writer"),
    ("truncate -s 3G $rech/schedule.xml",
     f"the schedule '{SCHEDULE}' is larger than the 2147483647 bytes that can be parsed"),
    ("chmod 0 $rech", f"the schedule '{SCHEDULE}' cannot be examined: Permission denied; you may not enter '{RECH}'"),
])
def test_a_check_that_cannot_run_is_no_verdict(shop, tmp_path, prepare, problem):
    result = shop.run(f"""{prepare}
        export DLOG_LEVEL=silent
        {PLAIN_USER} {BUILD}/bin/vqmctl check; echo code $?
        {PLAIN_USER} {BUILD}/bin/vqmctl check --json >$out/json; echo code $?""")
    assert result.stderr == b""
    assert result.stdout.decode().partition("media: ")[2].partition("\n")[2] == (
        f"problem: the check did not run: {problem} [not-checked]\n" +
        summary("it is not known whether it will play", f": {problem}", "not checked") + "code 3\ncode 3\n")
    verdict = check_json((tmp_path / "json").read_bytes())["verdict"]
    assert verdict == {"ready": False, "ran": False, "problem": problem, "schedule": False, "contents": False}


def test_constants_in_a_pipe_are_not_waited_for(shop):
    result = shop.run("rm $res/constants.xml; mkfifo $res/constants.xml; exec vqmctl check")
    assert result.returncode == 1
    assert (f"problem: {CONSTANTS} is a pipe, where reading waits for a writer{UNNAMED} [constants-unreadable]\n".encode()
            in result.stdout)


@pytest.mark.parametrize("mode, closed, path", [
    ("0", "$media", MEDIA), ("750", "/opt/data", "/opt/data"), ("700", "$res", RES), ("400", "$rech/schedule.xml", SCHEDULE),
    ("640", "$res/constants.xml", f"{RES}/constants.xml"),
])
@pytest.mark.parametrize("option", ["", "--root /proc/self/root"])
def test_what_holds_for_root_alone_is_said_to(shop, mode, closed, path, option):
    result = shop.run(f"chmod {mode} {closed}; vqmctl check {option}")
    root = "/proc/self/root" if option else ""
    assert result.stdout.decode().partition("media: ")[2].partition("\n")[2] == lines(
        f"note: this is root's answer: '{root}{path}' is closed to other users, and the application may be one of them "
        "[only-for-root]") + READY


LINTED = {
    "an error": ("start_time=.18:30:00/start_time=\"18:30", 1, "it will play, but not what was meant", lines(
        "error: line 9, column 25: start_time '18:30' has no seconds; the TV reads 18:03:00 [time-without-seconds]",
        "lint:      1 error in the schedule; see 'vqmctl schedule lint'"), "not-as-meant"),
    "a warning": ("2030-12-31/2020-12-31", 0, "it will play, but perhaps not what was meant", lines(
        "note: the schedule has expired on 2020-12-31; the check does not look at the date [expired]",
        "lint:      1 warning in the schedule; see 'vqmctl schedule lint'"), "perhaps-not-as-meant"),
}


@pytest.mark.parametrize("fault", LINTED)
def test_what_the_linter_finds_is_part_of_the_answer_and_not_of_the_librarys_verdict(shop, fault):
    change, code, outcome, expected, name = LINTED[fault]
    result = shop.run(f"sed -i 's/{change}/' $rech/schedule.xml; "
                      "vqmctl check; echo code $?; vqmctl check --json; echo code $?")
    assert result.stderr == b""
    shown, _, rest = result.stdout.decode().partition("code ")
    assert shown.partition("media: ")[2].partition("\n")[2] == expected + ready("3 of 3 items complete", outcome)
    document = check_json(rest[rest.index("{"):rest.rindex("}") + 1])
    assert document["verdict"]["ready"]
    assert document["outcome"] == name
    assert rest.startswith(f"{code}\n") and f"}}\ncode {code}\n" in rest


def test_the_librarys_verdict_stands_alone_in_the_last_line(shop):
    for prepare, verdict in (("true", "ready"), ("rm $media/intro.mp4", "not ready"), ("chmod 0 $rech", "not checked")):
        shown = shop.run(f"{prepare}; {PLAIN_USER} {BUILD}/bin/vqmctl check").stdout.decode()
        assert shown.splitlines()[-1] == f"the TV: {verdict}"


TREES = {
    "a copy": "cp -a /opt $out/tv/opt",
    "absolute links, which lead inside": "cp -a /opt $out/tv/opt; mv $out/tv$media $out/tv/films; "
                                         "ln -s /films $out/tv$media; mv $out/tv$rech/schedule.xml $out/tv/plan; "
                                         "ln -s /opt/../../plan $out/tv$rech/schedule.xml",
}


@pytest.mark.parametrize("tree", TREES)
def test_a_tree_below_a_root_is_checked_as_the_tv_would(shop, tree):
    result = shop.run(f"""mkdir $out/tv; {TREES[tree]}; vqmctl check >$out/own; rm -r /opt/usr /opt/data
        vqmctl check --root $out/tv/ | sed "s|$out/tv/|/|g" >$out/below
        sed -i "s/[0-9.]* .B free/SPACE/" $out/own $out/below; diff $out/own $out/below && echo same
        vqmctl schedule lint --root $out/tv && vqmctl schedule at 10:00 --root $out/tv | grep -c intro.mp4
        vqmctl schedule show --root $out/tv | grep -c period; vqmctl constants get ScheduleFile --root $out/tv""")
    assert (result.stdout, result.stderr) == (b"same\n1\n3\nschedule.xml\n", b"")


@pytest.mark.parametrize("prepare", [
    ":", "rm $media/intro.mp4", "rm $res/constants.xml", "chmod 0 $rech", "chmod 0 $rech/schedule.xml",
    "rm $rech/schedule.xml; mkfifo $rech/schedule.xml", "rm $rech/schedule.xml; mkdir $rech/schedule.xml",
    "truncate -s 100 $rech/schedule.xml", "chmod 0 $media", store("<rsp/>"),
])
def test_below_a_root_the_verdict_is_the_librarys_too(shop, prepare):
    """The root is the machine's own by another name, so that both look at the same files."""
    result = shop.run(f"""{prepare}
        {PLAIN_USER} {BUILD}/bin/vqmctl check --json >$out/own; echo $? >$out/code
        {PLAIN_USER} {BUILD}/bin/vqmctl check --json --root /proc/self/root | sed 's|/proc/self/root/|/|g' >$out/below
        diff $out/own $out/below && echo same""")
    assert result.stdout == b"same\n"


def test_a_stick_is_checked_before_it_is_plugged_in(shop):
    result = shop.run("""mkdir $out/stick; mv $media/* $rech/schedule.xml $out/stick; rm -r $res; cd $out/stick
        vqmctl check --schedule schedule.xml --media .; echo code $?; rm logo.jpg
        vqmctl check --schedule $out/stick/schedule.xml --media $out/stick/; echo code $?""")
    first, second = re.findall(r"(.*?)code (\d)\n", result.stdout.decode(), re.DOTALL)
    assert first[1] == "0" and first[0].startswith("constants: not needed: the schedule is given\nschedule:  ./schedule.xml (")
    assert first[0].endswith(READY)
    assert second[1] == "1" and second[0].endswith(not_ready("2 of 3 items complete"))


@pytest.mark.parametrize("arguments, code, complaint", [
    ("check --root /nowhere", 3, "cannot look below '/nowhere': No such file or directory"),
    ("check --root /etc/passwd", 3, "cannot look below '/etc/passwd': it is not a directory"),
    ("check --schedule -", 2,
     "--schedule is '-'; expected a file: the check reads it more than once, which stdin does not allow"),
    ("check --schedule a --constants b", 2,
     "--constants only names the schedule, and --schedule does already; expected one of the two"),
    ("schedule lint --root / $rech/schedule.xml", 2, f"--root and --constants say where the TV's own schedule is, but "
     f"'{SCHEDULE}' was named; expected one of the two"),
])
def test_places_that_make_no_sense_are_refused(shop, arguments, code, complaint):
    result = shop.run(f"vqmctl {arguments}")
    assert (result.returncode, result.stdout, result.stderr.decode()) == (code, b"", f"vqmctl: {complaint}\n")


def test_without_a_name_the_tvs_own_schedule_is_meant(shop):
    result = shop.run("""vqmctl schedule lint && vqmctl schedule show | grep -c period; vqmctl schedule at 18:45 | grep evening
        vqmctl schedule at | grep -c ^time; rm $res/constants.xml; vqmctl schedule lint""")
    assert result.returncode == 3
    assert result.stdout == b"3\n         1  evening.mp4\n1\n"
    assert result.stderr.decode() == (
        f"vqmctl: the TV's own schedule is not known: {CONSTANTS} is missing; name a document\n")


def test_a_file_of_another_normalization_is_renamed_as_the_hint_says(shop):
    """As a file manager writes the name: the accent behind its letter."""
    document = schedule(item("F\u00fchrung"))
    result = shop.run(f"""{store(document)}; truncate -s 5 "$media/$(printf 'Fu\\314\\210hrung.mp4')"
        vqmctl check | tee $out/check | grep -o "mv -- [^[]*" >$out/hint; cd $media; bash $out/hint
        cat $out/check; vqmctl check | tail -1""")
    assert "'Fu\u0308hrung.mp4' is there, which looks the same, but writes its accents" in result.stdout.decode()
    assert result.stdout.decode().endswith("the TV: ready\n")


def test_the_constants_may_lie_elsewhere(shop):
    result = shop.run(r"""name=$out/$(printf 'odd\377\033')
        mv $res/constants.xml "$name"
        vqmctl check --constants "$name" && vqmctl check --json --constants - <"$name" """)
    assert (result.returncode, result.stderr) == (0, b"")
    assert f"constants: {shop.environment['out']}/odd\\xff\\x1b (ScheduleFile is".encode() in result.stdout
    assert check_json(result.stdout[result.stdout.index(b"{"):])["constants"]["path"] == "<stdin>"


@pytest.mark.parametrize("items, announced, to_copy", [
    (item("a", 10) + item("b", 7) + item("a", 10), 27, 14),
    (item("b", 1), 1, 0),
    (item("a", 2**64 - 1) + item("c", 2**64 - 1), 2**64 - 1, 2**64 - 1),
])
def test_to_be_copied_is_what_is_not_there_each_file_once(shop, items, announced, to_copy):
    document = check_json(shop.run(f"truncate -s 3 $media/b.mp4; {store(schedule(items))}; vqmctl check --json").stdout)
    assert (document["schedule"]["bytes"], document["contents"]["bytes_to_copy"]) == (announced, to_copy)


def test_a_hundred_thousand_files(shop):
    result = shop.run(f"""python3 - <<'END'
import os
os.truncate(os.open('{MEDIA}/0.mp4', os.O_CREAT | os.O_WRONLY), 5)
for number in range(1, 100000):
    os.link('{MEDIA}/0.mp4', f'{MEDIA}/{{number}}.mp4')
os.unlink('{MEDIA}/99999.mp4')
with open('{SCHEDULE}', 'w') as file:
    file.write("<rsp state='ok'><schedule start_time='09:00:00' end_time='18:30:00'>")
    for number in range(100000):
        file.write(f"<item id='{{number}}' order='1'><name>{{number}}</name><size>5</size><format>mp4</format></item>")
    file.write("</schedule></rsp>")
END
        exec vqmctl check""")
    assert result.returncode == 1
    assert without_lint(result.stdout.decode()).endswith(
        "problem: '99999.mp4' is missing; the schedule announces 5 bytes [file-missing]\n"
        + not_ready("99999 of 100000 items complete"))


def test_each_of_many_files_has_its_own_answer(shop):
    """They are examined side by side. Every third is missing, and every second has another size."""
    numbers = list(range(500)) + list(range(0, 500, 7))
    items = "".join(item(number, 5 + number % 2) for number in numbers)
    document = check_json(shop.run(f"""for number in $(seq 0 499); do
            [ $((number % 3)) = 0 ] || truncate -s 5 $media/$number.mp4; done
        {store(schedule(items))}; vqmctl check --json""").stdout)
    assert [(file["name"], file["kind"], file["size"], file["announced"]) for file in document["contents"]["files"]] == [
        (f"{number}.mp4",) + (("missing", 0) if number % 3 == 0 else ("file", 5)) + (5 + number % 2,) for number in numbers]
    whole = sum(number % 3 != 0 and number % 2 == 0 for number in numbers)
    assert (document["contents"]["complete"], document["schedule"]["items"]) == (whole, len(numbers))


@pytest.mark.parametrize("options", ["", "--json"])
def test_a_reader_that_has_gone_leaves_no_trace(shop, options):
    read, write = os.pipe()
    os.close(read)
    for prepare, code in (("true", 0), ("rm $media/intro.mp4", 1)):
        result = shop.run(f"{prepare}; exec vqmctl check {options}", stdout=write)
        assert (result.returncode, result.stderr) == (code, b"")
    os.close(write)


def test_a_full_disk_is_told(shop):
    with open("/dev/full", "wb") as full:
        result = shop.run("exec vqmctl check", stdout=full)
    assert (result.returncode, result.stderr) == (3, b"vqmctl: cannot write to stdout: No space left on device\n")


def test_a_quick_check_draws_nothing_on_a_terminal(shop):
    controller, terminal = open_terminal()
    assert shop.run("exec vqmctl check", stderr=terminal).returncode == 0
    os.set_blocking(controller, False)
    with pytest.raises(BlockingIOError):
        os.read(controller, 100)
    os.close(terminal)
    os.close(controller)


@pytest.mark.parametrize("arguments, line", [
    (["--watch", "--constants", "-"], "--watch needs a file to watch; expected --constants FILE instead of '-'"),
    (["now"], "unexpected argument 'now'; see 'vqmctl check --help'"),
])
def test_the_command_line_is_checked(home, arguments, line):
    result = home.vqmctl("check", *arguments)
    assert (result.returncode, result.stdout, result.stderr) == (2, "", f"vqmctl: {line}\n")


class Watched:
    """A watch in a sandbox whose shell does what it is told."""

    def __init__(self, shop, options="--json"):
        self.shell = shop.start(f"vqmctl check --watch {options} & exec sh -s $!")

    def do(self, command):
        self.shell.stdin.write(command + "\n")
        self.shell.stdin.flush()

    def diagnostics(self):
        document = check_json(self.shell.stdout.readline())
        return document["verdict"]["ready"], [diagnostic["id"] for diagnostic in document["diagnostics"]]

    def end(self, signal_name="TERM"):
        self.do(f"kill -{signal_name} $1; while kill -0 $1; do sleep 0.05; done 2>$out/ignored; exit")
        output, complaints = self.shell.communicate(timeout=2 * PATIENCE)
        assert complaints == ""
        return output


def test_watch_prints_each_changed_verdict(shop):
    watched = Watched(shop)
    assert watched.diagnostics() == (True, [])
    for change, expected in [
        ("rm $media/logo.jpg", (False, ["file-missing"])),
        ("truncate -s 5 $media/logo.jpg", (False, ["file-size"])),
        ("truncate -s 6 $media/logo.jpg; sleep 0.5; truncate -s 1053696 $media/logo.jpg", (True, [])),
        ("mv $res $res.away", (False, ["constants-missing"])),
        ("mv $res.away $res", (True, [])),
        ("mv $media /opt/away", (False, ["media-directory-missing"])),
        ("mv /opt/away $media", (True, [])),
        ("mv $rech/schedule.xml $rech/s", (False, ["schedule-missing"])),
        ("mv $rech/s $rech/schedule.xml", (True, [])),
        ("chmod 1 $media; touch $media; rm -r $rech", (False, ["schedule-missing"])),
    ]:
        watched.do(change)
        assert watched.diagnostics() == expected
    assert watched.end() == ""


def test_watch_shows_whole_reports_to_people(shop):
    watched = Watched(shop, "")
    first = [watched.shell.stdout.readline() for _ in range(6)]
    assert re.fullmatch(TIME, first[0])
    assert first[4] + first[5] == READY
    watched.do("rm $media/logo.jpg")
    second = [watched.shell.stdout.readline() for _ in range(8)]
    assert second[0] == "\n"
    assert re.fullmatch(TIME, second[1])
    assert second[5].startswith("problem: 'logo.jpg' is missing")
    assert second[6] + second[7] == not_ready("2 of 3 items complete")
    assert watched.end("INT") == ""


def test_watch_on_a_terminal_puts_each_answer_in_the_place_of_the_one_before(shop):
    shop.environment["TERM"] = "xterm"
    controller, terminal = open_terminal()
    watch = subprocess.Popen(shop.command("vqmctl check --watch & exec sh"), env=shop.environment,
                             stdin=subprocess.PIPE, stdout=terminal, stderr=subprocess.PIPE)
    os.close(terminal)
    shown = read_until(controller, b"the TV: ready\x1b[0m\r\n")
    watch.stdin.write(b"rm $media/logo.jpg\n")
    watch.stdin.flush()
    shown += read_until(controller, b"the TV: not ready\x1b[0m\r\n")
    answers = shown.decode().split("\x1b[2J\x1b[H")
    assert [re.match(TIME[:-2], answer) is not None for answer in answers] == [False, True, True]
    assert ["\x1b[32mthe TV: ready\x1b[0m" in answers[1], "\x1b[1;31mproblem:\x1b[0m 'logo.jpg'" in answers[2]] == [True, True]
    os.close(controller)
    watch.communicate(timeout=2 * PATIENCE)


def test_watch_ends_with_its_reader_and_tells_the_last_verdict(shop):
    watch = shop.start("rm $media/logo.jpg; exec vqmctl check --watch --json")
    check_json(watch.stdout.readline())
    watch.stdout.close()
    assert watch.wait(timeout=2 * PATIENCE) == 1
    assert watch.stderr.read() == ""
    watch.stdin.close()


@pytest.mark.parametrize("signal_name", ["SIGINT", "SIGTERM", "SIGQUIT", "SIGHUP"])
def test_watch_ends_on_each_signal_that_ends_a_program(shop, signal_name):
    watch = shop.start("exec vqmctl check --watch --json")
    document = check_json(watch.stdout.readline())
    assert document["verdict"]["ready"]
    assert re.fullmatch(TIME, f"{document['asked_at']['day']} {document['asked_at']['time']}\n")
    watch.send_signal(signal.Signals[signal_name])
    assert watch.wait(timeout=2 * PATIENCE) == 0
    assert watch.stderr.read() == ""


def test_watch_needs_no_folder_that_can_be_written(shop):
    watch = shop.start("unset XDG_RUNTIME_DIR; HOME=/proc/1 exec vqmctl check --watch --json")
    assert check_json(watch.stdout.readline())["verdict"]["ready"]
    watch.send_signal(signal.SIGTERM)
    assert watch.wait(timeout=2 * PATIENCE) == 0
    assert watch.stderr.read() == ""


def test_watch_follows_a_directory_that_is_linked_elsewhere(shop):
    watched = Watched(shop)
    assert watched.diagnostics() == (True, [])
    for change, expected in [
        ("cp -r $media /opt/elsewhere; mv $media /opt/away; ln -s elsewhere /opt/shelf", (False, ["media-directory-missing"])),
        ("ln -s /opt/shelf ${media%/}", (True, [])),
        ("rm /opt/elsewhere/logo.jpg", (False, ["file-missing"])),
        ("ln -sfn away /opt/shelf", (True, [])),
    ]:
        watched.do(change)
        assert watched.diagnostics() == expected
    assert watched.end() == ""
