"""An X server of a test's own."""

import os
import subprocess
from pathlib import Path


class XServer:
    """An Xvfb on a free display; `display` is its name. Stop it when done."""

    def __init__(self, log, width=1920, height=1080, options=(), program="Xvfb"):
        self.log = Path(log)
        read_end, write_end = os.pipe()
        with open(self.log, "wb") as output:
            self.process = subprocess.Popen(
                [program, "-displayfd", str(write_end), "-noreset", "-screen", "0", f"{width}x{height}x24", *options],
                pass_fds=[write_end], stdin=subprocess.DEVNULL, stderr=output, start_new_session=True,
            )
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        if not number:
            self.stop()
            raise AssertionError("Xvfb did not start: " + self.log.read_text(errors="replace"))
        self.display = ":" + number

    def stop(self):
        self.process.kill()
        self.process.wait()
