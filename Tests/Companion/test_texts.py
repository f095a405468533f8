"""The companion's texts: each that the sources have is translated, and no other."""

import shutil
import subprocess

import pytest

from home import ROOT


def check(root):
    result = subprocess.run([root / "Scripts/make-translations", "--check"], capture_output=True, text=True)
    return result.returncode, result.stdout + result.stderr


def test_template_is_up_to_date_and_every_language_is_complete():
    assert check(ROOT) == (0, "")


@pytest.mark.parametrize("old, new, complaint", [
    ('msgid "Files"', 'msgid "Unused"\nmsgstr "Unbenutzt"\n\nmsgid "Files"', "not used"),
    ('msgstr "Dateien"', 'msgstr ""', "untranslated"),
    ("%s von %s", "von %s", "format"),
    ('msgstr[1] "und %s weitere"', 'msgstr[1] ""', 'msgstr[1] ""'),
])
def test_check_fails_for_a_language_that_does_not_fit_the_texts(tmp_path, old, new, complaint):
    for folder in ("Scripts", "Companion"):
        shutil.copytree(ROOT / folder, tmp_path / folder)
    german = tmp_path / "Companion/po/de.po"
    text = german.read_text()
    assert old in text
    german.write_text(text.replace(old, new))
    result, said = check(tmp_path)
    assert result != 0
    assert complaint in said
