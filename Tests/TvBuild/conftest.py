"""The SDK and the build that these tests look at."""

import pytest

from tv_build import build_for_tv, make_sdk


@pytest.fixture(scope="session")
def sdk():
    return make_sdk()


@pytest.fixture(scope="session")
def tv(sdk):
    """The folder with the applications."""
    return build_for_tv(sdk, "VQMKeygrab", "VQMCompanion")


@pytest.fixture(scope="session")
def tool(sdk):
    """vqmctl."""
    return build_for_tv(sdk, "vqmctl") / "bin/vqmctl"
