"""The build for the TV, with a stand-in for its SDK, as a packager would make it."""

import os
import shlex
import subprocess
from pathlib import Path

from home import APP_ID, BUILD, ROOT

SDK = BUILD / "tv-sdk"
TV = BUILD / "tv"
# Empty when the machine that builds runs what it builds.
SYSROOT = os.environ.get("VQM_TV_SYSROOT", "")
TOOLCHAIN = os.environ.get("VQM_TV_TOOLCHAIN", "")
EMULATOR = shlex.split(os.environ.get("VQM_TV_EMULATOR", ""))


def run(*command, **environment):
    completed = subprocess.run(
        [str(argument) for argument in command],
        env={**os.environ, **environment},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
    )
    assert completed.returncode == 0, f"{command}\n{completed.stdout[-4000:]}"
    return completed.stdout


def find_library(name):
    """A shared library of the target."""
    places = [Path(SYSROOT or "/") / folder for folder in ("lib", "usr/lib")]
    multiarch = "arm-linux-gnueabihf" if SYSROOT else run("cc", "-print-multiarch").strip()
    for place in places:
        for candidate in (place / multiarch / name, place / name):
            if candidate.exists():
                return candidate
    raise AssertionError(f"{name} is not in {places}")


def make_sdk():
    """Gives the SDK's folder."""
    run(ROOT / "Scripts/tv-stand-in-sdk", SDK, *([SYSROOT] if SYSROOT else []))
    return SDK / "opt/tv"


def build_for_tv(sdk, *targets):
    """Gives the build folder. Not optimised: compiling takes longer than what is run here."""
    environment = {"PKG_CONFIG_PATH": str(sdk / "lib/pkgconfig")}
    if SYSROOT:
        environment["VQM_SYSROOT"] = str(SDK)
    run(
        "cmake", "-S", ROOT, "-B", TV, "-G", "Ninja", "-DVQM_PLATFORM=tv",
        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", f"-DVQM_APP_ID={APP_ID}",
        *([f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}"] if TOOLCHAIN else []),
        **environment,
    )  # fmt: skip
    run("cmake", "--build", TV, "--target", *targets, **environment)
    return TV
