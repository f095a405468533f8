"""The build for the TV, held to its contract with a stand-in for the SDK."""

import os
import re
import shlex
from pathlib import Path
from xml.etree import ElementTree

from Xlib import X

from desktop import APP_ID, BUILD, COMPANION_ID, TOOL_KEYS, Keyboard, new_desktop, wait_until
from home import ROOT
from tv_build import EMULATOR, TV, find_library, run
from windows import find_shown

NM = os.environ.get("VQM_TV_NM", "nm")

# Everything the product may ask of the platform.
INTERFACES = set(
    """
    ui_app_main ui_app_add_event_handler
    dlog_print
    vconf_get_int vconf_get_str vconf_set_int vconf_set_str
    vconf_notify_key_changed vconf_ignore_key_changed vconf_keynode_get_name vconf_keynode_get_int
    aul_launch_app
    system_info_get_value_int
    tvcontext_init tvcontext_begin_popup_free tvcontext_end_popup_free tvcontext_fini
    Grab_InitKeys Grab_AddKey Grab_RegisterKeys UnGrab_RegisterKeys
    """.split()
)
OTHERS = re.compile(
    r"lib(elementary|evas|ecore|ecore_x|eina|eo|efl|boost_(thread|filesystem|system|atomic)"
    r"|expat|stdc\+\+|m|c|gcc_s|pthread)\.so\b|ld-linux.*\.so\b"
)


def symbols(*options_and_files):
    """Names, without the version that a library gives them."""
    lines = run(NM, "-A", *options_and_files).splitlines()
    return {line.split()[-1].split("@")[0] for line in lines if " " in line and "no symbols" not in line}


def test_the_headers_are_those_of_the_sdk(tv, sdk):
    lines = run("ninja", "-C", tv, "-t", "deps").splitlines()
    # A compiler cache may have made the paths relative to the build folder.
    dependencies = {os.path.normpath(tv / line.strip()) for line in lines if line.startswith(" ")}
    for header in ("app.h", "dlog.h", "vconf.h", "aul.h", "system_info.h"):
        assert str(sdk / "include" / header) in dependencies
    assert not [path for path in dependencies if "Platform/desktop" in path]


def product_objects(tv):
    others = ("Companion", "Diagnostics", "Platform", "Tools")
    return [path for path in tv.rglob("*.o")
            if "CMakeFiles" in path.parts and path.relative_to(tv).parts[0] not in others]


def test_the_product_asks_for_nothing_else(tv):
    objects = product_objects(tv)
    assert len(objects) == len(list(ROOT.glob("VQMKeygrab/*.cpp"))) + sum(
        len(list(ROOT.glob(f"{folder}/*.cpp"))) for folder in ("Common", "VQMSerialize", "Data", "VQMPipe")
    )
    wanted = symbols("--undefined-only", *objects) - symbols("--defined-only", *objects)
    cache = run("ninja", "-C", tv, "-t", "commands", "VQMKeygrab").splitlines()[-1]
    libraries = [word for word in shlex.split(cache) if OTHERS.search(Path(word).name)]
    names = {Path(word).name for word in libraries}
    for name in ("libc.so.6", "libstdc++.so.6", "libm.so.6", "libgcc_s.so.1"):
        if name not in names:
            libraries.append(find_library(name))
    libraries += [find_library(f"lib{name}.so.1") for name in ("elementary", "evas", "ecore", "ecore_x", "expat")]
    provided = symbols("-D", "--defined-only", *libraries)
    # The linker itself makes these.
    provided |= {"_GLOBAL_OFFSET_TABLE_", "__dso_handle"}
    assert wanted & INTERFACES, "the product talks to the platform"
    assert sorted(wanted - INTERFACES - provided) == []


def test_nothing_of_the_desktop_platform_is_used(tv):
    desktop_objects = list((BUILD / "Platform/desktop").rglob("*.o"))
    assert desktop_objects
    theirs = symbols("--defined-only", "--extern-only", *desktop_objects) - INTERFACES
    theirs = {name for name in theirs if "desktop" in name}
    assert theirs
    assert not theirs & symbols(*product_objects(tv))


def test_the_manifest_names_what_is_installed(tv, tmp_path):
    run("cmake", "--install", tv, "--component", "application", DESTDIR=str(tmp_path))
    space = "{http://tizen.org/ns/packages}"
    manifest = ElementTree.parse(tmp_path / f"usr/share/packages/{APP_ID}.xml").getroot()
    applications = {entry.get("appid"): entry for entry in manifest.iter(f"{space}ui-application")}
    assert set(applications) == {APP_ID, COMPANION_ID}
    for entry in applications.values():
        assert os.access(tmp_path / entry.get("exec").lstrip("/"), os.X_OK)
    application = applications[APP_ID]
    assert manifest.get("package") == APP_ID
    assert (application.get("on-boot"), application.get("auto-restart")) == ("true", "true")
    assert application.find(f"{space}background-category").get("value") == "system"
    privileges = {entry.text.rsplit("/", 1)[1] for entry in manifest.iter(f"{space}privilege")}
    assert privileges == {"appmanager.launch", "keygrab", "systemsettings.admin"}


def test_the_companion_shows_its_window_on_the_stand_in(tv):
    desktop = new_desktop()
    try:
        program = desktop.run([*EMULATOR, TV / "bin/VQMCompanion"], name="companion", STAND_IN_SETTING="1")
        connection = desktop.connect()
        wait_until(lambda: find_shown(connection, "sync-demo"), f"the companion's window:\n{program.output()}")
        assert program.stop() == 0
        assert find_shown(connection, "sync-demo") is None
    finally:
        desktop.close()


def test_one_key_release_on_the_stand_in(tv):
    desktop = new_desktop()
    try:
        keyboard = Keyboard(desktop)
        keyboard.add(*TOOL_KEYS.values())
        names = desktop.root / "keysyms"
        names.write_text("".join(f"{name} :{number:X}\n" for name, number in TOOL_KEYS.items()))
        program = desktop.run(
            [*EMULATOR, TV / "bin/VQMKeygrab"], name="tv", XKEYSYMDB=str(names), STAND_IN_SETTING="1"
        )
        grabbed = wait_until(
            lambda: re.search(r"^Grab_RegisterKeys\((\d+), 193 keys\)$", program.output(), re.MULTILINE), "keys grabbed"
        )
        wait_until(lambda: "_resume() called start" in program.output(), "the application runs")
        assert f"UnGrab_RegisterKeys({grabbed[1]}, 10 keys)\n" in program.output()

        connection = desktop.connect()
        window = connection.create_resource_object("window", int(grabbed[1]))
        wait_until(lambda: window.get_attributes().map_state == X.IsViewable, "the window shows")
        window.set_input_focus(X.RevertToParent, X.CurrentTime)
        connection.sync()
        wait_until(lambda: connection.get_input_focus().focus == window, "the window has the focus")

        keyboard.press(TOOL_KEYS["XF86More"])
        assert "TOOL KEY" not in program.output()
        keyboard.release(TOOL_KEYS["XF86More"])
        wait_until(lambda: "result = " in program.output(), f"the key's release:\n{program.output()}")
        assert f"aul_launch_app({COMPANION_ID}, null)\n" in program.output()
        assert re.search(r"^3 Quillmere VQMKeyGrab\.cpp: OnKeyReleaseCB\(\d+\) > result = 4711$", program.output(), re.M)

        assert program.stop() == 0
        calls = re.findall(r"^(tvcontext_\w+)\(\)$", program.output(), re.MULTILINE)
        assert calls == ["tvcontext_init", "tvcontext_begin_popup_free", "tvcontext_end_popup_free", "tvcontext_fini"]
    finally:
        desktop.close()
