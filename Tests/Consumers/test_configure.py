"""What a build is told, and what it says when that cannot be."""

import shutil

from conftest import ROOT, configure, run

# Quick to configure: nothing but the library.
LIBRARY_ALONE = "-DVQM_PLATFORM=none"


def refusal(source, build, *arguments, environment=None):
    """The one error of a build that cannot be configured, without CMake's line breaks."""
    completed = configure(source, build, *arguments, check=False, environment=environment)
    assert completed.returncode != 0
    errors = completed.stdout.split("CMake Error at ")[1:]
    assert len(errors) == 1, completed.stdout
    return " ".join(errors[0].split())


def test_an_unknown_platform_is_refused_with_those_there_are(tmp_path):
    assert "VQM_PLATFORM is 'phone'; use desktop, tv or none." in refusal(ROOT, tmp_path, "-DVQM_PLATFORM=phone")


def test_a_missing_sdk_is_refused_with_the_page_that_helps(tmp_path):
    error = refusal(ROOT, tmp_path, "-DVQM_PLATFORM=tv")
    assert "pkg-config does not find the TV's SDK (dlog;vconf" in error
    assert "Docs/target.md" in error


def test_a_build_in_the_source_folder_is_refused(tmp_path):
    source = tmp_path / "source"
    source.mkdir()
    shutil.copy(ROOT / "CMakeLists.txt", source)
    assert "Build in a folder of its own" in refusal(source, source)
    assert {path.name for path in source.iterdir()} <= {"CMakeLists.txt", "CMakeCache.txt", "CMakeFiles"}


def cache(build):
    lines = (build / "CMakeCache.txt").read_text().splitlines()
    return {line.split(":")[0]: line.split("=", 1)[1] for line in lines if ":" in line and "=" in line}


def test_there_are_no_tests_without_a_desktop(tmp_path):
    configure(ROOT, tmp_path, LIBRARY_ALONE, "-DVQM_BUILD_TESTS=ON")
    assert not (tmp_path / "CTestTestfile.cmake").exists()


def test_every_option_has_a_help_text(tmp_path):
    configure(ROOT, tmp_path, LIBRARY_ALONE)
    lines = (tmp_path / "CMakeCache.txt").read_text().splitlines()
    for name in ("VQM_PLATFORM", "VQM_APP_ID", "VQM_APPS_DIR", "VQM_MEDIA_DIR", "VQM_CONSTANTS_FILE", "VQM_INSTALL"):
        place = next(i for i, line in enumerate(lines) if line.startswith(f"{name}:"))
        assert lines[place - 1].startswith("//") and "No help" not in lines[place - 1], name


def commands(build):
    """What compiles, launcher included."""
    lines = run("ninja", "-C", build, "-t", "commands", "vqm").splitlines()
    compiling = [line for line in lines if " -c " in line]
    assert compiling
    return compiling


def test_directories_and_id_reach_the_compiler(tmp_path):
    configure(ROOT, tmp_path, LIBRARY_ALONE, "-DVQM_APP_ID=com.example.tv", "-DVQM_APPS_DIR=/srv/apps",
              "-DVQM_MEDIA_DIR=/srv/media", "-DVQM_CONSTANTS_FILE=/etc/constants.xml")  # fmt: skip
    wanted = ('VQM_APP_ID=\\"com.example.tv\\"', 'VQM_APPS_DIR=\\"/srv/apps\\"', 'VQM_MEDIA_DIR=\\"/srv/media\\"',
              'VQM_CONSTANTS_FILE=\\"/etc/constants.xml\\"')  # fmt: skip
    assert all(definition in command for command in commands(tmp_path) for definition in wanted)


def test_a_named_build_type_and_launcher_are_kept_even_when_empty(tmp_path):
    configure(ROOT, tmp_path, LIBRARY_ALONE, "-DCMAKE_CXX_COMPILER_LAUNCHER=")
    assert cache(tmp_path)["CMAKE_BUILD_TYPE"] == ""
    assert not any("ccache" in command or "-O2" in command for command in commands(tmp_path))


def test_a_launcher_of_the_users_is_used(tmp_path):
    configure(ROOT, tmp_path, LIBRARY_ALONE, "-DCMAKE_CXX_COMPILER_LAUNCHER=/usr/bin/env")
    assert all(command.startswith("/usr/bin/env ") for command in commands(tmp_path))


def test_another_id_leaves_no_desktop_entry_of_the_old_one(tmp_path):
    for app_id in ("com.example.first", "com.example.second"):
        configure(ROOT, tmp_path, "-DVQM_BUILD_TESTS=OFF", f"-DVQM_APP_ID={app_id}")
    for folder in ("entries/applications", "Companion/install"):
        assert [path.name for path in (tmp_path / folder).iterdir()] == ["com.example.second.gui.desktop"]
