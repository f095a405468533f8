"""A pytest plugin for emulated runs: leaves out the tests of native-only.txt."""

from pathlib import Path

NATIVE_ONLY = set(Path(__file__).with_name("native-only.txt").read_text().splitlines())


def pytest_collection_modifyitems(config, items):
    native = [item for item in items if f"{item.path.name}::{item.originalname}" in NATIVE_ONLY]
    if native:
        config.hook.pytest_deselected(items=native)
        items[:] = [item for item in items if item not in native]
