"""Keys that overlap: every release of a tool key launches the companion, once."""

import time

from Xlib import XK

from desktop import TOOL_KEYS, keysym, wait_until
from subject import Subject

STEPS = 150
OTHERS = ["XF86AudioPlay", "XF86AudioStop", "XF86HomePage", "a", "space", "Shift_L", "Control_L", "Alt_L", "Up"]


def attack(random, steps, held):
    subject = Subject()
    held.append(subject)
    XK.load_keysym_group("xf86")
    keyboard = subject.keyboard
    others = [keysym(name) for name in OTHERS]
    keyboard.add(*others)
    tools = list(TOOL_KEYS.values())
    subject.start()
    subject.measure()

    down, releases, before = set(), 0, subject.launches()
    for _ in range(steps):
        key = random.choice(tools if random.random() < 0.5 else others)
        if key in down:
            keyboard.release(key)
            down.remove(key)
            releases += key in tools
        else:
            keyboard.press(key)
            down.add(key)
        if random.random() < 0.2:
            time.sleep(random.random() / 100)
    for key in sorted(down):
        keyboard.release(key)
        releases += key in tools
    wait_until(lambda: subject.launches() - before >= releases,
               f"as many launches as releases of tool keys, {releases}")
    before = subject.launches() - releases - before
    assert before == 0, f"{before} launches more than releases of tool keys"
    subject.finish()
