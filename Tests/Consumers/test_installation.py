"""The installed programs, in a prefix that was moved after the installation."""

import os
import shutil

import pytest

from conftest import run
from desktop import APP_ID, BUILD, TOOL_KEYS, Application, Keyboard, is_running, new_desktop, wait_until


@pytest.fixture(scope="module")
def moved(tmp_path_factory):
    folder = tmp_path_factory.mktemp("installed")
    for component in ("application", "tools"):
        run("cmake", "--install", BUILD, "--prefix", folder / "first", "--component", component)
    shutil.move(folder / "first", folder / "moved here")
    return folder / "moved here"


def test_the_application_launches_the_companion_it_was_installed_with(moved):
    desktop = new_desktop()
    try:
        keyboard = Keyboard(desktop)
        keyboard.add(*TOOL_KEYS.values())
        desktop.switch_on()
        application = Application([moved / "bin/VQMKeygrab"], desktop.environment, desktop.root / "installed.log")
        desktop.programs.append(application)
        application.wait_for("_app_control() called end")
        keyboard.tap(TOOL_KEYS["XF86More"])
        application.wait_for("result = ")
        companion = application.results()[0]
        assert companion > 0, application.output()
        wait_until(lambda: os.readlink(f"/proc/{companion}/exe") == str(moved / "bin/VQMCompanion"),
                   "the companion is the installed one")  # fmt: skip
        assert application.stop() == 0
        assert is_running(companion)
        os.kill(companion, 15)
    finally:
        desktop.close()


def test_the_tool_finds_its_desktop_part(moved):
    desktop = new_desktop()
    try:
        completed = run(moved / "bin/vqmctl", "remote", "keys", check=False, env=desktop.environment)
        assert "cannot run" not in completed.stdout
    finally:
        desktop.close()


def test_each_component_holds_its_files_alone(tmp_path):
    files = {}
    for component in ("application", "tools", "development", "documentation"):
        run("cmake", "--install", BUILD, "--prefix", tmp_path / component, "--component", component)
        files[component] = {str(path.relative_to(tmp_path / component))
                            for path in (tmp_path / component).rglob("*") if path.is_file()}  # fmt: skip
    assert {"bin/VQMKeygrab", "bin/VQMCompanion", f"share/applications/{APP_ID}.gui.desktop"} <= files["application"]
    assert {"bin/vqmctl", "libexec/vqmctl-desktop"} <= files["tools"]
    assert not [file for file in files["development"] if file.startswith(("bin/", "libexec/", "share/applications/"))]
    assert files["documentation"]
    everything = [file for component in files.values() for file in component]
    assert len(everything) == len(set(everything))


def test_the_components_are_the_whole_installation(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", tmp_path / "whole")
    for component in ("application", "tools", "development", "documentation"):
        run("cmake", "--install", BUILD, "--prefix", tmp_path / "parts", "--component", component)
    whole, parts = ({path.relative_to(folder) for path in folder.rglob("*") if path.is_file()}
                    for folder in (tmp_path / "whole", tmp_path / "parts"))  # fmt: skip
    assert whole == parts
