"""`vqmctl status`, on real displays, buses and files."""

import contextlib
import datetime
import json
import os
import re
import shlex
import shutil
import signal
import socket
import subprocess

import jsonschema
import pytest
from Xlib import X

from desktop import APP_ID, BUILD, PATIENCE, SETTING_KEY, TOOL_KEYS, Keyboard, new_desktop
from holder import Holder
from home import ROOT
from notifications import Service, set_paused, start_dunst
from sandbox import sandboxed
from xserver import XServer

VQMCTL = BUILD / "bin/vqmctl"
SCHEMA = json.loads((ROOT / "Docs/schemas/status.schema.json").read_text())
SAMPLE = ROOT / "Packaging/sample"
RECH = f"/opt/usr/apps/{APP_ID}/RECH"
MEDIA = "/opt/data/demo_movie"
CONSTANTS = f"/opt/usr/apps/{APP_ID}/res/constants.xml"


def noon():
    """A time zone in which it is some minutes past noon, so that the sample's first period plays."""
    return f"NOON{datetime.datetime.now(datetime.timezone.utc).hour - 12:+d}"


def run(desktop, *arguments, prepare=":", binary=False, **environment):
    """The command where the product finds a sample set, after a shell command has changed that."""
    variables = {**desktop.environment, "VQM_APP_ID": APP_ID, "TZ": noon(), **environment}
    # The sandbox has settings of its own; here the desktop's are asked for.
    folder = variables.get("XDG_CONFIG_HOME")
    settings = "unset XDG_CONFIG_HOME" if folder is None else f"XDG_CONFIG_HOME={shlex.quote(folder)}"
    return subprocess.run(
        sandboxed("sh", "-c", f'{prepare}\n{settings}\nexec "$0" status "$@"', VQMCTL, *arguments),
        env={name: value for name, value in variables.items() if value is not None},
        stdin=subprocess.DEVNULL, capture_output=True, text=not binary, timeout=2 * PATIENCE,
    )


def status(desktop, *arguments, **options):
    """The JSON document, which is checked, as is the exit code."""
    completed = run(desktop, *arguments, "--json", **options)
    assert completed.stderr == ""
    document = json.loads(completed.stdout)
    jsonschema.Draft202012Validator(SCHEMA).validate(document)
    verdict = document["verdict"]
    assert completed.returncode == (0 if verdict["ready"] and not verdict["errors"] else 1)
    return document


def ids(document, name):
    return [reason["id"] for reason in document["verdict"][name]]


def reasons(document):
    return [reason["id"] for reason in document["verdict"]["reasons"]]


@pytest.fixture(scope="module")
def running():
    """A desktop on which all is well: the setting is on, the application holds the tool keys."""
    desktop = new_desktop()
    Keyboard(desktop).add(*TOOL_KEYS.values())
    desktop.install_companion("exit 0")
    desktop.switch_on()
    desktop.application = desktop.start_application()
    yield desktop
    desktop.close()


@pytest.fixture
def desktop(desktop):
    desktop.install_companion("exit 0")
    return desktop


def test_the_schema_is_one():
    jsonschema.Draft202012Validator.check_schema(SCHEMA)


def test_a_tv_in_order(running):
    document = status(running)
    assert document["verdict"] == {"ready": True, "reasons": [], "errors": [], "unknown": [], "remarks": [],
                                   "sentence": "It will launch and play."}
    assert document["setting"] == {
        "enabled": True, "file": str(running.settings / SETTING_KEY), "stored": "1", "valid": True, "problem": None}
    application = document["application"]
    assert (application["state"], application["display"], application["pid"]) == (
        "running", running.display_name, running.application.pid)
    assert application["tool_keys"] == [{"key": name, "state": "held"} for name in TOOL_KEYS]
    assert set(TOOL_KEYS) <= set(application["held_keys"])
    assert application["failed_keys"] == []
    assert (document["contents"]["complete"], document["contents"]["total"]) == (3, 3)
    assert document["clock"]["tz"].startswith("NOON")
    programme = document["programme"]
    assert [file["name"] for period in programme["plays"] for file in period["files"]] == ["intro.mp4", "logo.jpg"]
    assert programme["next"]["time"] == "18:30:00"
    assert [file["name"] for period in programme["plays_next"] for file in period["files"]] == ["evening.mp4"]


def test_the_screen_of_a_set_in_order(running):
    completed = run(running)
    assert (completed.returncode, completed.stderr) == (0, "")
    lines = completed.stdout.splitlines()
    keys = len(status(running)["application"]["held_keys"])
    clock = [line for line in lines if line.startswith("Clock")]
    assert [line for line in lines if line not in clock] == [
        "Setting      on",
        f"Application  {APP_ID} runs on display '{running.display_name}' as process {running.application.pid}"
        f" and holds {keys} keys, the tool keys among them",
        f"Companion    {status(running)['launch']['program']}",
        "Popups       unknown: no session bus",
        f"Constants    {CONSTANTS}; names 'schedule.xml'",
        f"Schedule     {RECH}/schedule.xml; expiration 2030-12-31",
        f"Contents     {MEDIA}/; 3 of 3 contents there",
        "Now          09:00:00 to 18:30:00: intro.mp4, logo.jpg",
        "Next         18:30:00: evening.mp4",
        "",
        "It will launch and play.",
    ]
    assert len(clock) == 1


@pytest.mark.parametrize("prepare, expected, text", [
    (f"truncate -s 500000 {MEDIA}/intro.mp4", ["file-size"],
     "'intro.mp4' has 500000 bytes; the schedule announces 1048576"),
    (f"rm {MEDIA}/*", ["file-missing"], "(and 2 more: 'vqmctl check' names them)"),
    (f"rm {RECH}/schedule.xml", ["schedule-missing"], f"'{RECH}/schedule.xml' is missing"),
    (f"truncate -s 100 {RECH}/schedule.xml", ["schedule-not-well-formed"], f"'{RECH}/schedule.xml'"),
    (f"rm {RECH}/schedule.xml; mkdir {RECH}/schedule.xml", ["schedule-unreadable"], "is a directory"),
    (f"rm {RECH}/schedule.xml; mkfifo {RECH}/schedule.xml", ["not-checked"], "is a pipe"),
    (f"rm {CONSTANTS}", ["constants-missing"], f"'{CONSTANTS}' is missing"),
    (f"sed -i s/09:00:00/13:30:00/ {RECH}/schedule.xml", ["nothing-scheduled"], "nothing is scheduled now"),
    (f"printf '<rsp/>' >{RECH}/schedule.xml", ["no-files", "nothing-scheduled"], "the schedule names no file"),
    (f"printf '<html/>' >{RECH}/schedule.xml", ["not-a-schedule", "nothing-scheduled"], "is an HTML page"),
])
def test_what_is_wrong_with_the_content_stands_in_the_way(running, prepare, expected, text):
    document = status(running, prepare=prepare)
    assert reasons(document) == expected
    assert text in document["verdict"]["reasons"][0]["message"]
    screen = run(running, prepare=prepare)
    assert screen.returncode == 1
    first = document["verdict"]["reasons"][0]["message"]
    assert f"- {first}" in screen.stdout.splitlines()
    assert screen.stdout.splitlines()[-1] == f"It will launch, but not play: {first}."


@pytest.mark.parametrize("prepare, code, errors, remarks, sentence", [
    ("s/2030/2020/", 0, [], ["expired", "lint"],
     "It will launch and play, but perhaps not what was meant: the schedule has 1 warning; see 'vqmctl schedule lint'."),
    ('s/start_time="18:30:00/start_time="18:30/', 1, ["time-without-seconds"], ["lint"],
     "It will launch and play, but not what was meant: line 9, column 25: start_time '18:30' has no seconds; the TV "
     "reads 18:03:00."),
])
def test_what_the_linter_finds_is_part_of_the_answer(running, prepare, code, errors, remarks, sentence):
    prepare = f"sed -i '{prepare}' {RECH}/schedule.xml"
    document = status(running, prepare=prepare)
    assert (reasons(document), ids(document, "errors"), ids(document, "remarks")) == ([], errors, remarks)
    quiet = run(running, "--quiet", prepare=prepare)
    assert (quiet.returncode, quiet.stdout, quiet.stderr) == (code, sentence + "\n", "")


def test_below_a_root_only_the_files_are_known(running):
    document = status(running, "--root", "/opt/tv", prepare="mkdir /opt/tv; cp -a /opt/usr /opt/data /opt/tv/ 2>/dev/null;"
                      "mkdir /opt/tv/opt; mv /opt/tv/usr /opt/tv/data /opt/tv/opt/; rm -r /opt/usr /opt/data", DISPLAY="")
    assert document["verdict"]["ready"]
    assert ids(document, "unknown") == ["another-machine"]
    assert (document["application"], document["setting"], document["launch"]) == (None, None, None)
    assert document["schedule"]["path"] == f"/opt/tv{RECH}/schedule.xml"


def test_the_constants_file_can_be_given(running):
    other = running.root / os.fsdecode(b"other\xff.xml")
    other.write_text('<C><Data key="ScheduleFile" value="evening.xml"/></C>')
    document = status(running, "--constants", other)
    assert document["constants"]["path"].endswith("other\\xff.xml")
    assert reasons(document) == ["schedule-missing"]
    assert status(running, "--constants", other, prepare=f"mv {RECH}/schedule.xml {RECH}/evening.xml")[
        "verdict"]["ready"]


@pytest.mark.parametrize("stored, expected, shown", [
    ("0", ["setting-off"], "off"),
    ("7", ["setting-off"], "off; {} holds '7', expected 0 or 1"),
    (" 1", [], "on; {} holds ' 1', expected 0 or 1"),
    (bytes(range(256)), ["setting-off"], "off; {} holds '\\x00\\x01\\x02"),
    (None, ["setting-off"], "off; nothing is stored in {}"),
    ("directory", ["setting-unreadable"], "off; {}: not a plain file"),
    ("link", ["setting-unreadable"], "off; {}: a symbolic link, not a plain file"),
    ("file above", ["setting-unreadable"], "off; {}: Not a directory"),
])
def test_whatever_is_stored_as_the_setting_is_told(running, tmp_path, stored, expected, shown):
    path = tmp_path / "tvsettings" / SETTING_KEY
    if stored == "file above":
        path.parent.parent.mkdir(parents=True)
        path.parent.write_text("")
    else:
        path.parent.mkdir(parents=True)
    if stored == "directory":
        path.mkdir()
    elif stored == "link":
        path.symlink_to("elsewhere")
    elif stored not in (None, "file above"):
        path.write_bytes(stored if isinstance(stored, bytes) else stored.encode())
    document = status(running, XDG_CONFIG_HOME=str(tmp_path))
    assert reasons(document) == expected
    assert document["setting"]["enabled"] is (stored == " 1")
    screen = run(running, XDG_CONFIG_HOME=str(tmp_path)).stdout
    assert screen.startswith("Setting      " + shown.format(path))


def test_without_a_home_the_setting_has_no_place(running):
    document = status(running, HOME=None, XDG_CONFIG_HOME=None)
    assert reasons(document) == ["setting-unreadable"]
    assert document["setting"]["problem"] == "no settings folder: neither XDG_CONFIG_HOME nor HOME holds an absolute path"


@pytest.mark.parametrize("display, text", [
    (":4711", "unknown: cannot open display ':4711'"),
    ("\udcff\n", "unknown: cannot open display '\\xff\\x0a'"),
])
def test_an_unknown_display_does_not_stand_in_the_way(running, display, text):
    document = status(running, DISPLAY=display)
    assert document["application"]["state"] == "display-unreachable"
    assert (reasons(document), ids(document, "unknown")) == ([], ["application-unknown"])
    screen = run(running, DISPLAY=display)
    assert screen.returncode == 0
    assert f"Application  {text}\n" in screen.stdout
    assert f"- whether the application runs is {text}\n" in screen.stdout
    assert screen.stdout.splitlines()[-1] == f"It will play; whether the application runs is {text}."


# Over ssh neither DISPLAY nor XAUTHORITY is set. Other tests' applications are not to be found.
ALONE = "exec unshare --pid --fork --kill-child --mount-proc"


def over_ssh(desktop, script):
    """Runs a shell's words among no other processes, with `status` for the command."""
    variables = {**desktop.environment, "VQM_APP_ID": APP_ID, "TZ": noon(), "display": desktop.display_name,
                 "status": f"{VQMCTL} status", "store": str(desktop.settings.parent),
                 "application": str(BUILD / "bin/VQMKeygrab")}
    del variables["DISPLAY"]
    script = f'export XDG_CONFIG_HOME="$store"\n{script}'
    return subprocess.run(sandboxed("sh", "-c", f"{ALONE} sh -c {shlex.quote(script)}"), env=variables,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * PATIENCE)


STARTED = """DISPLAY=$display $application >/dev/null 2>&1 & pid=$!
    until DISPLAY=$display $status --json | grep -q '"state": "held"'; do sleep 0.1; done
"""


def test_over_ssh_the_display_is_that_of_the_application(desktop, keyboard):
    desktop.switch_on()
    completed = over_ssh(desktop, f"{STARTED}$status --json; kill $pid; wait $pid")
    assert completed.stderr == ""
    document = json.loads(completed.stdout)
    application = document["application"]
    assert (application["state"], application["display"], application["display_found"]) == (
        "running", desktop.display_name, True)
    assert document["verdict"]["ready"]


def test_over_ssh_an_application_that_does_not_run_is_said_not_to(desktop):
    desktop.switch_on()
    completed = over_ssh(desktop, "$status --quiet")
    assert (completed.returncode, completed.stdout, completed.stderr) == (
        1, f"It will not launch: {APP_ID} does not run.\n", "")


def test_over_ssh_what_to_set_is_named(desktop):
    """An application whose environment names no display, as one of another user would look."""
    desktop.switch_on()
    completed = over_ssh(desktop, "cp /usr/bin/sleep /opt/VQMKeygrab; "
                         "/opt/VQMKeygrab 600 & pid=$!\n$status; kill $pid")
    assert completed.stderr == ""
    assert re.search(rf"^Application  {APP_ID} runs as process [0-9]+; which keys it holds is not known here: "
                     "set DISPLAY(, for example to :| to the TV's display)", completed.stdout, re.MULTILINE)


def test_over_ssh_applications_on_two_displays_are_not_called_instances_on_one(desktop):
    desktop.switch_on()
    completed = over_ssh(desktop, "cp /usr/bin/sleep /opt/VQMKeygrab; "
                         "for one in :4711 :4712; do DISPLAY=$one /opt/VQMKeygrab 600 & done\n$status; kill %1 %2")
    assert "set DISPLAY, for example to :4711 or :4712\n" in completed.stdout
    assert "instance" not in completed.stdout


def test_a_wayland_session_is_named(running, tmp_path):
    """Its X server is known by its name."""
    program = shutil.copy(shutil.which("Xvfb"), tmp_path / "Xwayland")
    server = XServer(tmp_path / "log", program=program)
    try:
        document = status(running, DISPLAY=server.display)
    finally:
        server.stop()
    assert document["application"]["wayland"]
    assert reasons(document) == ["application-not-running", "wayland"]
    assert not status(running, WAYLAND_DISPLAY="wayland-0")["application"]["wayland"]


def test_a_stopped_application_is_not_called_running_well(desktop, keyboard):
    desktop.switch_on()
    application = desktop.start_application()
    assert status(desktop)["application"]["answers"]
    os.kill(application.pid, signal.SIGSTOP)
    try:
        document = status(desktop)
    finally:
        os.kill(application.pid, signal.SIGCONT)
    assert reasons(document) == ["application-stopped"]
    assert f"'kill -CONT {application.pid}'" in document["verdict"]["reasons"][0]["message"]
    assert not document["application"]["answers"]


def test_an_application_whose_keys_go_nowhere_is_not_pinged(desktop, keyboard):
    """A message to no window reaches whichever one is below the pointer."""
    holder = Holder(desktop.display_name)
    holder.publish_key_window(X.NONE)
    application = status(desktop)["application"]
    assert (application["state"], application["answers"]) == ("running", True)


@pytest.mark.parametrize("content, reason, text", [
    (None, "companion-missing", "there is no '"),
    ("[Desktop Entry]\nType=Application\nHidden=true\n", "companion-missing", "hides it"),
    ("[Desktop Entry]\nType=Application\nName=x\n", "companion-entry-unusable", "no command line (Exec)"),
    ("[Desktop Entry]\nType=Application\nName=x\nExec=/none/gui\n", "companion-program-missing", "'/none/gui'"),
    ("[Desktop Entry]\nType=Application\nName=x\nExec=/bin/true\nTryExec=none\n", "companion-program-missing", "'none'"),
    ("[Desktop Entry]\nType=Application\nName=x\nExec=true %u\n", None, None),
])
def test_what_would_be_launched_is_examined(running, tmp_path, content, reason, text):
    folder = tmp_path / "applications"
    folder.mkdir()
    if content is not None:
        (folder / f"{APP_ID}.gui.desktop").write_text(content)
    document = status(running, XDG_DATA_HOME=str(tmp_path), XDG_DATA_DIRS=str(tmp_path / "none"))
    if reason is None:
        assert (reasons(document), document["launch"]["state"]) == ([], "ready")
        assert document["launch"]["program"].endswith("/true")
    else:
        assert reasons(document) == [reason]
        assert text in document["launch"]["problem"]


def test_a_display_that_never_answers_is_given_up(running):
    with socket.create_server(("127.0.0.1", 0)) as server:
        display = f"127.0.0.1:{server.getsockname()[1] - 6000}"
        document = status(running, DISPLAY=display)
    assert document["application"] == {"id": APP_ID, "state": "display-silent", "display": display, "problem": None,
                                       "display_found": False, "wayland": False}
    assert ids(document, "unknown") == ["application-unknown"]


def test_a_parent_that_ignores_its_children_changes_nothing(running):
    with socket.create_server(("127.0.0.1", 0)) as server:
        display = f"127.0.0.1:{server.getsockname()[1] - 6000}"
        document = status(running, DISPLAY=display, prepare="trap '' CHLD")
    assert document["application"]["state"] == "display-silent"
    assert status(running, prepare="trap '' CHLD")["application"]["state"] == "running"


def test_a_display_without_the_application(desktop):
    desktop.switch_on()
    document = status(desktop)
    assert document["application"] == {"id": APP_ID, "state": "not-running", "display": desktop.display_name,
                                       "problem": None, "display_found": False, "wayland": False}
    assert reasons(document) == ["application-not-running"]


@pytest.mark.parametrize("modifiers, state, expected", [
    (X.AnyModifier, "taken", ["tool-key-taken"]),
    (X.ControlMask, "partly-held", []),
])
def test_a_grab_that_failed_is_named_by_its_key(desktop, keyboard, modifiers, state, expected):
    other = desktop.connect()
    other.screen().root.grab_key(
        keyboard.keycode(TOOL_KEYS["XF86More"]), modifiers, True, X.GrabModeAsync, X.GrabModeAsync)
    other.sync()
    desktop.switch_on()
    desktop.start_application()
    document = status(desktop)
    assert document["application"]["tool_keys"] == [
        {"key": "XF86SimpleMenu", "state": "held"}, {"key": "XF86More", "state": state}]
    assert document["application"]["failed_keys"] == ["XF86More"]
    assert reasons(document) == expected
    assert ("- XF86More is taken by another program\n" in run(desktop).stdout) is (state == "taken")


def test_keys_that_the_keyboard_lacks_do_not_stand_in_the_way(desktop):
    desktop.switch_on()
    desktop.start_application()
    document = status(desktop)
    assert [key["state"] for key in document["application"]["tool_keys"]] == 2 * ["not-on-keyboard"]
    assert reasons(document) == []


def popups(desktop):
    found = status(desktop)["popups"]
    return found["state"], found["service"], found["pid"]


def test_popups_from_the_bus_without_a_daemon_to_the_application_that_was_killed(bus):
    assert popups(bus) == ("not-held-back", None, None)
    dunst = start_dunst(bus)
    assert popups(bus) == ("not-held-back", "dunst", None)
    set_paused(bus, True)
    assert popups(bus) == ("held-back-by-others", "dunst", None)
    set_paused(bus, False)
    application = bus.start_application()
    assert popups(bus) == ("held-back", "dunst", application.pid)
    assert f"Popups       held back by dunst for process {application.pid}\n" in run(bus).stdout
    dunst.process.send_signal(signal.SIGSTOP)
    try:
        assert status(bus)["popups"]["problem"].endswith(" does not answer")
    finally:
        dunst.process.send_signal(signal.SIGCONT)
    application.stop(signal.SIGKILL)
    assert popups(bus) == ("left-held-back", "dunst", application.pid)


def test_a_notification_daemon_with_a_long_name_fills_no_screen(bus):
    service = Service(bus, "--name-bytes", "1000000")
    service.wait_for("ready")
    assert popups(bus) == ("not-held-back", 80 * "x" + "...", None)
    assert len(run(bus).stdout) < 10_000


@contextlib.contextmanager
def silent_bus(folder):
    """A socket that takes connections and never answers."""
    with socket.socket(socket.AF_UNIX) as server:
        server.bind(str(folder / "silent"))
        server.listen()
        yield f"unix:path={folder / 'silent'}"


def test_a_bus_that_never_answers_is_given_up(running, tmp_path):
    with silent_bus(tmp_path) as address:
        document = status(running, DBUS_SESSION_BUS_ADDRESS=address)
    assert document["popups"] == {
        "state": "unknown", "service": None, "pid": None, "problem": "the session bus does not answer"}
    assert document["verdict"]["ready"]


def test_without_means_to_ask_servers_the_rest_is_told(running, tmp_path):
    """One descriptor is not enough to talk to another process."""
    with silent_bus(tmp_path) as address:
        document = status(running, prepare="ulimit -n 4", DBUS_SESSION_BUS_ADDRESS=address)
    assert document["application"]["state"] == "display-not-asked"
    assert document["application"]["problem"] == "Too many open files"
    assert document["popups"]["problem"] == "cannot ask the session bus: Too many open files"
    assert document["verdict"]["unknown"][0]["message"] == (
        f"whether the application runs is unknown: cannot ask display '{running.display_name}': Too many open files")


def test_two_descriptors_are_enough_to_read_the_files(running, tmp_path):
    with silent_bus(tmp_path) as address:
        document = status(running, prepare="ulimit -n 5", DBUS_SESSION_BUS_ADDRESS=address)
    assert ids(document, "unknown") == ["application-unknown"]


def test_no_bus_is_started(running):
    document = status(running, DBUS_SESSION_BUS_ADDRESS="autolaunch:")
    assert document["popups"]["problem"] == "no session bus"


@pytest.mark.parametrize("form", [[], ["--json"]])
def test_a_reader_that_has_gone_leaves_no_trace(running, form):
    read, write = os.pipe()
    os.close(read)
    completed = subprocess.run([VQMCTL, "status", *form], env={**running.environment, "DISPLAY": ""},
                               stdout=write, stderr=subprocess.PIPE, timeout=PATIENCE)
    os.close(write)
    assert (completed.returncode, completed.stderr) == (1, b"")


def test_a_full_disk_and_a_wrong_word_have_their_exit_codes(running):
    with open("/dev/full", "wb") as full:
        completed = subprocess.run([VQMCTL, "status"], env={**running.environment, "DISPLAY": ""}, stdout=full,
                                   stderr=subprocess.PIPE, timeout=PATIENCE)
    assert (completed.returncode, completed.stderr) == (3, b"vqmctl: cannot write to stdout: No space left on device\n")
    completed = running.vqmctl("status", "now", check=False)
    assert (completed.returncode, completed.stderr) == (
        2, "vqmctl: unexpected argument 'now'; see 'vqmctl status --help'\n")


def test_nothing_is_left_behind(running):
    """The copies that ask servers end themselves."""
    with socket.create_server(("127.0.0.1", 0)) as server:
        process = subprocess.Popen(
            [VQMCTL, "status"], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
            env={**running.environment, "DISPLAY": f"127.0.0.1:{server.getsockname()[1] - 6000}"})
        connection, _ = server.accept()
        process.kill()
        process.wait()
        with connection:
            connection.settimeout(PATIENCE)
            while connection.recv(4096):  # what it said before it was killed
                pass
