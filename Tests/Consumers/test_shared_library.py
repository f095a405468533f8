"""The shared library and vqmctl, built on a machine that seems to have no EFL, X11 and D-Bus."""

import os
import re
import shutil

import pytest

from conftest import PUBLIC_HEADERS, ROOT, SAMPLE, build_folder, build_project, check_readme_program, configure, run
from public_names import declared_names

ONLY_PROGRAMS = re.compile(r"lib(elementary|ecore|eina|evas|efreet|X11|Xi|Xtst|dbus-1|gio-2\.0)\.so")


def modules_of(module):
    """The module and all that its file refers to, which is not the same in every release of Debian."""
    required = run("pkg-config", "--print-requires", "--print-requires-private", module)
    return {module}.union(*(modules_of(line.split()[0]) for line in required.splitlines()))


@pytest.fixture(scope="session")
def without_toolkit(tmp_path_factory):
    """The environment of such a machine: all that pkg-config finds there is GLib."""
    folder = tmp_path_factory.mktemp("modules")
    for module in modules_of("glib-2.0"):
        place = run("pkg-config", "--variable=pcfiledir", module).strip()
        shutil.copy(f"{place}/{module}.pc", folder)
    return {"PKG_CONFIG_LIBDIR": str(folder), "PKG_CONFIG_PATH": ""}


@pytest.fixture(scope="session")
def build(without_toolkit):
    folder = build_folder("shared")
    build_project(ROOT, folder, "-DVQM_BUILD_APPLICATION=OFF", "-DBUILD_SHARED_LIBS=ON", "-DVQM_APPS_DIR=/srv/apps",
                  "-DVQM_APP_ID=com.example.tv", environment=without_toolkit)  # fmt: skip
    return folder


@pytest.fixture(scope="session")
def prefix(tmp_path_factory, build):
    folder = tmp_path_factory.mktemp("prefix")
    run("cmake", "--install", build, "--prefix", folder)
    return folder


def needed(file):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-dW", file))


def test_without_the_toolkit_the_application_is_refused_in_one_line(without_toolkit, tmp_path):
    completed = configure(ROOT, tmp_path, check=False, environment=without_toolkit)
    assert completed.returncode != 0
    assert "-DVQM_BUILD_APPLICATION=OFF" in completed.stdout


def test_nothing_needs_the_toolkit(build):
    for file in (build / "libvqm.so", build / "bin/vqmctl"):
        assert [name for name in needed(file) if ONLY_PROGRAMS.match(name)] == []


def test_vqmctl_reads_documents(prefix):
    assert "period" in run(prefix / "bin/vqmctl", "schedule", "show", SAMPLE)
    run(prefix / "bin/vqmctl", "schedule", "lint", SAMPLE)


def test_the_readmes_project_builds_and_runs(prefix, readme_project, tmp_path):
    build_project(readme_project, tmp_path, f"-DCMAKE_PREFIX_PATH={prefix}")
    assert "libvqm.so.0" in needed(tmp_path / "periods")
    check_readme_program(tmp_path / "periods")


def test_a_program_sees_the_directories_that_the_library_was_built_with(prefix, readme_project, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text((readme_project / "CMakeLists.txt").read_text())
    (tmp_path / "main.cpp").write_text("""#include <iostream>
#include "Common/VQMConfig.h"
#include "Common/VQMSyncDemoMonitor.h"
int main()
{
    std::string schedules;
    CVQMSyncDemoMonitor::GetInstance()->GetSyncDemoSchedulePath(schedules);
    std::cout << VQM_CONSTANTS_FILE << " " << schedules;
}
""")
    build_project(tmp_path, tmp_path / "build", f"-DCMAKE_PREFIX_PATH={prefix}")
    printed = run(tmp_path / "build/periods", env={**os.environ, "DLOG_LEVEL": "silent"})
    assert printed == "/srv/apps/com.example.tv/res/constants.xml /srv/apps/com.example.tv/RECH/"


def test_without_the_toolkit_a_watch_is_refused(prefix, readme_project, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text((readme_project / "CMakeLists.txt").read_text())
    (tmp_path / "main.cpp").write_text("""#include <vconf.h>
#include <iostream>
int main()
{
    const auto callback = [](keynode_t*, void*) {};
    std::cout << vconf_set_int("a/key", 1) << " " << vconf_notify_key_changed("a/key", callback, nullptr);
}
""")
    build_project(tmp_path, tmp_path / "build", f"-DCMAKE_PREFIX_PATH={prefix}")
    environment = {**os.environ, "DLOG_LEVEL": "error", "XDG_CONFIG_HOME": str(tmp_path)}
    *log, result = run(tmp_path / "build/periods", env=environment).splitlines()
    assert result == "0 -1"
    assert "a/key: changes are not reported: this library was built without VQM_ECORE_WATCH" in "".join(log)


def exported(library):
    """What the library exports, as a reader of the headers would write it."""
    lines = run("nm", "-DC", "--defined-only", library).splitlines()
    names = [line.split(maxsplit=2)[2].replace("[abi:cxx11]", "") for line in lines]
    return {re.sub(r"@@?\w+$", "", name).split("(")[0] for name in names if not re.match(r"VQM_\d+$", name)}


def test_it_exports_what_the_public_headers_declare_and_nothing_else(build):
    headers = [ROOT / header for header in PUBLIC_HEADERS]
    headers += [ROOT / "Platform/desktop/include" / header for header in ("dlog.h", "vconf.h")]
    declared = set().union(*(declared_names(header) for header in headers))
    names = exported(build / "libvqm.so")
    of_classes = {name for name in names if re.match(r"(vtable|typeinfo|typeinfo name) for ", name)}
    assert sorted(names - of_classes) == sorted(declared)
    classes = {name.rpartition("::")[0] for name in declared} - {""}
    assert {name.rpartition(" for ")[2] for name in of_classes} == classes


def test_the_list_of_exported_names_is_that_of_the_public_headers(build):
    lines = (ROOT / "cmake/exported-names.txt").read_text().splitlines()
    listed = {line for line in lines if not line.startswith("#")}
    names = exported(build / "libvqm.so")
    assert sorted(listed) == sorted(name for name in names if " for " not in name)


def test_it_runs_nothing_before_the_program_does(build):
    assert ".preinit_array" not in run("readelf", "-SW", build / "libvqm.so")


def test_its_soname_has_the_number_of_the_interface_alone(build):
    assert "soname: [libvqm.so.0]" in run("readelf", "-dW", build / "libvqm.so")


def test_with_no_platform_at_all_boost_and_expat_suffice(tmp_path):
    (tmp_path / "none").mkdir()
    environment = {"PKG_CONFIG_LIBDIR": str(tmp_path / "none"), "PKG_CONFIG_PATH": ""}
    folder = build_folder("no-platform")
    build_project(ROOT, folder, "-DVQM_PLATFORM=none", environment=environment)
    assert (folder / "Common/libvqm-core.a").exists()
