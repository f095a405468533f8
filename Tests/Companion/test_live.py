"""The companion itself: what it follows without a restart, and how a remote control drives it."""

import shlex

import pytest
from conftest import CLOSE, FILES, HEADLINE, NOW, SETTING
from home import BUILD, wait_until

SCHEDULE = "$rech/schedule.xml"


def replace(path, expression):
    """As an editor saves: another file in its place."""
    return f"sed '{expression}' {path} >{path}.new && mv {path}.new {path}"


def test_switch_is_live_both_ways(tv):
    tv.start()
    (on,) = tv.settled(SETTING)
    tv.store("menu/syncdemo/state", "0")
    tv.wait_for_change(SETTING, on, "the screen follows the setting")
    (off,) = tv.settled(SETTING)
    for _ in range(6):  # through the list, up to the switch
        tv.tap("Up")
    tv.tap("Return")
    wait_until(lambda: tv.stored("menu/syncdemo/state") == "1", "the setting follows the switch")
    tv.wait_for_change(SETTING, off, "the screen follows the switch")


@pytest.mark.parametrize("part, change", [
    (HEADLINE, "rm $media/logo.jpg"),
    (FILES, "truncate -s 5 $media/intro.mp4"),
    (FILES, replace(SCHEDULE, "s/logo/picture/")),
    (HEADLINE, replace("$res/constants.xml", "s/ScheduleFile/Other/")),
    (HEADLINE, f"truncate -s 300 {SCHEDULE}"),
    (NOW, f"rm {SCHEDULE}"),
], ids=["media lost", "media cut", "schedule", "constants", "broken schedule", "no schedule"])
def test_change_of_files_is_shown_and_so_is_its_end(tv, part, change):
    tv.sh("cp -a /opt/usr /opt/usr.before; cp -a /opt/data /opt/data.before")
    tv.start()
    wait_until(tv.answered, "the check has ended")
    (before,) = tv.settled(part)
    tv.sh(change)
    tv.wait_for_change(part, before, "the change is shown")
    tv.sh("for tree in usr data; do cp -a /opt/$tree.before/. /opt/$tree/; done")
    wait_until(lambda: tv.picture(part) == before, "it is shown as before")
    tv.tap("Escape")
    assert tv.ended_with() == 0


def test_menu_language_is_followed(tv):
    tv.store("menu_widget/language", "en_US.UTF-8")
    tv.start(f"env -u LC_ALL LC_MESSAGES=xx_XX.UTF-8 LOCPATH={shlex.quote(str(BUILD / 'locales'))}")
    (english,) = tv.settled(CLOSE)
    seen = [english]
    for language in ("de_DE.UTF-8", "ar_AE.UTF-8"):
        tv.store("menu_widget/language", language)
        wait_until(lambda: tv.picture(CLOSE) not in seen, f"the screen speaks {language}")
        seen += tv.settled(CLOSE)
    tv.store("menu_widget/language", "en_US.UTF-8")
    wait_until(lambda: tv.picture(CLOSE) == english, "the screen speaks English again")


def test_pointer_closes_it(tv):
    tv.start()
    tv.settled(CLOSE)
    tv.click(CLOSE)
    assert tv.ended_with() == 0


@pytest.mark.skipif("asan" in str(BUILD) or "tsan" in str(BUILD), reason="a sanitizer's runtime must be loaded first")
def test_disk_that_does_not_answer_leaves_the_window_alive(tv):
    tv.start(f"LD_PRELOAD={BUILD}/lib/libhanging_disk.so HANGING_DISK=$media/ HANGING_DISK_ANSWERS=/opt/answers")
    (waiting,) = tv.settled(HEADLINE)
    (on,) = tv.settled(SETTING)
    tv.store("menu/syncdemo/state", "0")
    tv.wait_for_change(SETTING, on, "the screen follows the setting")
    tv.sh("touch /opt/answers")
    tv.wait_for_change(HEADLINE, waiting, "the answer is shown")
    tv.sh("rm /opt/answers; touch $media/new")  # a check that hangs begins
    tv.tap("Escape")
    assert tv.ended_with() == 0
