"""The static library, installed, as other projects use it."""

import os
import shlex
import subprocess
from pathlib import Path

import pytest

from conftest import PUBLIC_HEADERS, build_project, check_readme_program, readme_block, run

HERE = Path(__file__).parent
CXX = os.environ.get("CXX", "c++")


def test_the_readmes_project_builds_and_runs(installed, readme_project, tmp_path):
    build_project(readme_project, tmp_path, f"-DCMAKE_PREFIX_PATH={installed}")
    check_readme_program(tmp_path / "periods")


def test_the_readmes_compiler_line_builds_and_runs(installed, readme_project, tmp_path):
    modules = next(installed.rglob("vqm.pc")).parent
    command = readme_block("sh").splitlines()[-1].replace("c++ ", f"{shlex.quote(CXX)} ", 1)
    (tmp_path / "main.cpp").write_text((readme_project / "main.cpp").read_text())
    run("sh", "-c", command, cwd=tmp_path, env={**os.environ, "PKG_CONFIG_PATH": str(modules)})
    check_readme_program(tmp_path / "periods")


def test_a_program_brings_its_own_log_and_settings(installed, tmp_path):
    build_project(HERE / "OwnPlatform", tmp_path, f"-DCMAKE_PREFIX_PATH={installed}")
    *log, result = filter(None, run(tmp_path / "own_platform").splitlines())
    assert result == "stored 1, changed 1 times"
    assert log and {line.split(": ")[0] for line in log} == {"Quillmere"}


def test_the_static_library_can_become_part_of_a_shared_object(installed, readme_project, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text(readme_block("cmake").replace("add_executable(", "add_library(")
                                             .replace(" main.cpp", " MODULE main.cpp"))
    (tmp_path / "main.cpp").write_text((readme_project / "main.cpp").read_text())
    build_project(tmp_path, tmp_path / "build", f"-DCMAKE_PREFIX_PATH={installed}")
    sections = run("readelf", "-SW", tmp_path / "build/libperiods.so")
    assert ".preinit_array" not in sections


def test_the_public_headers_are_installed_as_they_stand(installed):
    include = installed / "include/vqm"
    found = {str(path.relative_to(include)) for path in include.rglob("*.h")}
    assert found == {*PUBLIC_HEADERS, "Common/VQMInstalledConfig.h", "platform/dlog.h", "platform/vconf.h"}


@pytest.mark.parametrize("header", [*PUBLIC_HEADERS, "dlog.h", "vconf.h"])
def test_each_public_header_compiles_alone(installed, tmp_path, header):
    include = installed / "include/vqm"
    (tmp_path / "alone.cpp").write_text(f'#include "{header}"\n#include "{header}"\n')
    run(CXX, "-std=c++17", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror",
        "-I", include, "-I", include / "platform", tmp_path / "alone.cpp")  # fmt: skip


def test_a_program_for_another_minor_version_is_refused(installed, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.25)\nproject(other LANGUAGES CXX)\nfind_package(VQM 0.2 REQUIRED)\n"
    )
    completed = subprocess.run(
        ["cmake", "-G", "Ninja", "-S", tmp_path, "-B", tmp_path / "build", f"-DCMAKE_PREFIX_PATH={installed}"],
        capture_output=True, text=True,
    )  # fmt: skip
    assert completed.returncode != 0
    assert "0.2" in completed.stderr
