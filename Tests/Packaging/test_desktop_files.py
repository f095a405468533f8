"""The menu entry, the autostart entry, the user unit, the icon and the description for software centres."""

import configparser
import shlex
from xml.etree import ElementTree

import pytest
from checkout import needs, run

from home import APP_ID

ENTRIES = [
    f"share/applications/{APP_ID}.desktop",
    f"share/applications/{APP_ID}.gui.desktop",
    f"etc/xdg/autostart/{APP_ID}.desktop",
]
UNIT = "lib/systemd/user/vqmkeygrab.service"


def read_entry(path):
    parser = configparser.ConfigParser(interpolation=None, strict=False)
    parser.optionxform = str
    parser.read(path)
    return parser


@needs("desktop-file-validate")
@pytest.mark.parametrize("entry", ENTRIES)
def test_desktop_entry_is_valid(prefix, entry):
    assert run("desktop-file-validate", prefix / entry) == ""


@needs("appstreamcli")
def test_description_for_software_centres_is_valid(prefix):
    report = run("sh", "-c", 'appstreamcli validate --no-net "$0" || true',
                 prefix / f"share/metainfo/{APP_ID}.metainfo.xml")  # fmt: skip
    assert "Validation" in report
    # The product has no home page; some releases of the validator warn of that.
    faults = [line for line in report.splitlines() if line.startswith(("E:", "W:"))]
    assert [fault for fault in faults if not fault.endswith("url-homepage-missing")] == []


def test_description_launches_the_menu_entry(prefix):
    component = ElementTree.parse(prefix / f"share/metainfo/{APP_ID}.metainfo.xml").getroot()
    assert component.findtext("id") == APP_ID
    assert component.findtext("launchable") == f"{APP_ID}.desktop"
    for binary in component.iter("binary"):
        assert (prefix / "bin" / binary.text).exists()


@pytest.mark.parametrize("entry", ENTRIES)
def test_icon_of_the_entry_is_installed(prefix, entry):
    name = read_entry(prefix / entry)["Desktop Entry"]["Icon"]
    icon = prefix / f"share/icons/hicolor/scalable/apps/{name}.svg"
    assert ElementTree.parse(icon).getroot().tag == "{http://www.w3.org/2000/svg}svg"


def test_autostart_entry_is_off(prefix):
    assert read_entry(prefix / ENTRIES[2])["Desktop Entry"]["Hidden"] == "true"


@pytest.mark.parametrize("entry", [ENTRIES[0], ENTRIES[2]])
def test_started_by_a_desktop_it_leaves_media_keys_alone_and_logs_little(prefix, entry):
    command = read_entry(prefix / entry)["Desktop Entry"]["Exec"]
    program, *assignments, application = shlex.split(command)
    assert program == "env"
    assert set(assignments) == {"TV_REMOTE_KEYS=tool", "DLOG_LEVEL=warn"}
    assert application.replace("%%", "%").replace("\\$", "$") == str(prefix / "bin/VQMKeygrab")


def test_started_by_systemd_it_leaves_media_keys_alone_and_logs_little(prefix):
    lines = (prefix / UNIT).read_text().splitlines()
    assert {"Environment=TV_REMOTE_KEYS=tool", "Environment=DLOG_LEVEL=warn"} <= set(lines)
    # The companion outlives the application, and a failure starts it again.
    assert {"KillMode=process", "Restart=on-failure", "WantedBy=graphical-session.target"} <= set(lines)


@needs("systemd-analyze")
def test_unit_is_valid(prefix, tmp_path):
    environment = {"PATH": "/usr/bin:/bin", "HOME": str(tmp_path), "XDG_RUNTIME_DIR": str(tmp_path)}
    assert run("systemd-analyze", "--user", "--man=no", "verify", prefix / UNIT, env=environment) == ""


def test_nothing_enables_the_unit(prefix):
    assert not [path for path in prefix.rglob("*.wants")]
    assert not [path for path in prefix.rglob("*.preset")]
