"""The library as a part of somebody else's build."""

import json
import shutil
from pathlib import Path

import pytest

from conftest import ROOT, build_folder, check_readme_program, configure, run

PARENT = Path(__file__).parent / "Subproject"


def arguments(readme_project, *more):
    return [f"-DVQM_SOURCE={ROOT}", f"-DPROGRAM={readme_project}", *more]


@pytest.fixture(scope="module")
def build(readme_project):
    folder = build_folder("subproject")
    query = folder / ".cmake/api/v1/query"
    query.mkdir(parents=True)
    (query / "codemodel-v2").touch()
    launcher = shutil.which("ccache") or ""  # the library leaves it to its parent
    configure(PARENT, folder, *arguments(readme_project, "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
                                         f"-DCMAKE_CXX_COMPILER_LAUNCHER={launcher}"))  # fmt: skip
    run("cmake", "--build", folder)
    return folder


def test_add_subdirectory_gives_the_library(build):
    check_readme_program(build / "periods")


def test_fetch_content_gives_the_library(readme_project, tmp_path):
    configure(PARENT, tmp_path, *arguments(readme_project, "-DFETCH=ON"))
    assert "libvqm.a" in run("ninja", "-C", tmp_path, "-t", "query", "periods")


def test_it_brings_its_parent_the_library_and_nothing_else(build):
    replies = (build / ".cmake/api/v1/reply").glob("target-*.json")
    targets = [json.loads(reply.read_text()) for reply in replies]
    programs = {target["name"] for target in targets if target["type"] == "EXECUTABLE"}
    assert programs == {"periods"}


def test_its_warnings_stay_at_home(build):
    commands = json.loads((build / "compile_commands.json").read_text())
    assert commands
    assert [entry["file"] for entry in commands if "-Wall" in entry["command"]] == []


def test_it_installs_nothing_with_its_parent(build, tmp_path):
    run("cmake", "--install", build, "--prefix", tmp_path)
    assert [path.name for path in tmp_path.rglob("*") if path.is_file()] == ["periods"]
