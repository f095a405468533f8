"""An installation of the build that is tested, and a copy of the checkout."""

import pytest

from checkout import copy_checkout, run
from home import BUILD


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    """Installed where its path needs quoting."""
    folder = tmp_path_factory.mktemp("prefix") / "an $HOME of 100 %"
    run("cmake", "--install", BUILD, "--prefix", folder)
    return folder


@pytest.fixture
def clone(tmp_path):
    return copy_checkout(tmp_path / "clone")
