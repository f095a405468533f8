"""Builds as somebody else would: with CMake, outside of this project."""

import os
import shutil
import subprocess
from pathlib import Path

import pytest

from home import BUILD, ROOT

PUBLIC_HEADERS = [
    *(f"Common/{name}" for name in ("VQMConfig.h", "VQMDataObject.h", "VQMException.h", "VQMSyncDemoMonitor.h")),
    *(f"Data/{name}" for name in ("VQMDataConstants.h", "VQMScheduleContainer.h", "VQMScheduleRecords.h")),
    *(f"VQMPipe/{name}" for name in ("IVQMPipe.h", "VQMFilePipe.h", "VQMFileRequestData.h")),
    "VQMSerialize/VQMXMLSerialize.h",
]


def run(*command, check=True, **options):
    """What a command prints, both streams together. With `check` off, the completed process."""
    completed = subprocess.run(
        [str(argument) for argument in command],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options,
    )  # fmt: skip
    if not check:
        return completed
    assert completed.returncode == 0, f"{command}\n{completed.stdout[-6000:]}"
    return completed.stdout


def build_folder(name):
    """An empty folder for a build of the whole library.

    It is in this build's folder: the path from there to the sources is the same in every checkout, so ccache can use
    what another checkout has compiled.
    """
    folder = BUILD / "consumers" / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def configure(source, build, *arguments, check=True, environment=None):
    """No build type and no compiler cache unless the arguments say so: what compiles is not measured here."""
    configured = run(
        "cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=", *arguments,
        check=check, env={**os.environ, **(environment or {})},
    )  # fmt: skip
    assert not check or "CMake Warning" not in configured
    return configured


def build_project(source, build, *arguments, environment=None):
    """Configures and builds a project."""
    configure(source, build, *arguments, environment=environment)
    run("cmake", "--build", build)


def readme_block(language):
    """The first block in that language of the README's section about using the library."""
    section = (ROOT / "README.md").read_text().split("\n## Using the library\n")[1].split("\n## ")[0]
    return section.split(f"```{language}\n")[1].split("```")[0]


SAMPLE = ROOT / "Packaging/sample/schedule.xml"


@pytest.fixture(scope="session")
def readme_project(tmp_path_factory):
    """The README's project, as it stands there."""
    folder = tmp_path_factory.mktemp("readme")
    (folder / "CMakeLists.txt").write_text(readme_block("cmake"))
    (folder / "main.cpp").write_text(readme_block("cpp"))
    return folder


def check_readme_program(program, **environment):
    """The program counts the periods of the sample."""
    expected = SAMPLE.read_text().count("<schedule ")
    printed = run(program, SAMPLE, env={**os.environ, "DLOG_LEVEL": "silent", **environment})
    assert printed == f"{expected} periods a day\n"


@pytest.fixture(scope="session")
def installed(tmp_path_factory):
    """This build's library, in a prefix that holds nothing else."""
    prefix = tmp_path_factory.mktemp("prefix")
    run("cmake", "--install", BUILD, "--prefix", prefix, "--component", "development")
    return prefix
