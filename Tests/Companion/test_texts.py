"""The companion's texts: each that the sources have is translated."""

import subprocess

from home import ROOT


def test_template_is_up_to_date_and_every_language_is_complete():
    result = subprocess.run([ROOT / "Scripts/make-translations", "--check"], capture_output=True, text=True)
    assert result.returncode == 0, result.stderr
