"""Schedule documents for the tests of commands that read and change them."""

import os
import random
import subprocess
import time

from home import BUILD

VQMCTL = str(BUILD / "bin/vqmctl")


def item(name, size, extension="mp4"):
    return f"    <item id='{name}' order='1'><name>{name}</name><size>{size}</size><format>{extension}</format></item>\n"


def document(items, project="", start="09:00:00"):
    """A clean document, unless the arguments say otherwise."""
    return (
        f"<rsp state='ok'>\n{project}  <schedule start_time='{start}' end_time='18:00:00'>\n"
        + "".join(items)
        + "  </schedule>\n</rsp>\n"
    )


class Tool:
    """Runs a command of the tool in a folder of the test's own."""

    def __init__(self, folder, *command):
        self.folder = folder
        self.command = [VQMCTL, *command]
        self.environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "DLOG_LEVEL")}

    def __call__(self, *arguments, stdin=b"", **options):
        options = {"capture_output": True, **options}
        return subprocess.run(
            [*self.command, *arguments], cwd=self.folder, env=self.environment, input=stdin, **options
        )

    def kill_again_and_again(self, path, arguments, times):
        """Kills the command at any moment, `times` times; each time the file is put back. Gives what was in it
        afterwards, which must be the old content or the new one."""
        old = path.read_bytes()
        begin = time.monotonic()
        self(*arguments)
        duration = time.monotonic() - begin
        new = path.read_bytes()
        assert new != old
        contents = set()
        for _ in range(times):
            path.write_bytes(old)
            process = subprocess.Popen(
                [*self.command, *arguments],
                cwd=self.folder,
                env=self.environment,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )
            time.sleep(random.uniform(0, 1.2 * duration))
            process.kill()
            process.wait()
            contents.add(path.read_bytes())
        assert contents <= {old, new}
        # What the killed ones left beside it goes with the next change.
        path.write_bytes(old)
        self(*arguments)
        assert [entry for entry in os.listdir(path.parent) if entry.startswith(".")] == []
        return contents
