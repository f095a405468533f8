"""A TV's directories with the sample in them, in a sandbox of a test's own; and what --json prints."""

import json
import os
import subprocess

import jsonschema

from home import APP_ID, BUILD, PATIENCE, ROOT
from sandbox import sandboxed

RES = f"/opt/usr/apps/{APP_ID}/res"
RECH = f"/opt/usr/apps/{APP_ID}/RECH"
MEDIA = "/opt/data/demo_movie"


def validated(schema, output):
    """The document that a command has printed, which is one of this schema of Docs."""
    schema = json.loads((ROOT / f"Docs/schemas/{schema}.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    assert output.isascii()
    document = json.loads(output)
    jsonschema.Draft202012Validator(schema).validate(document)
    return document


class Shop:
    def __init__(self, home):
        self.environment = {**home.environment, "VQM_APP_ID": APP_ID, "DLOG_LEVEL": "error", "TZ": "UTC",
                            "PATH": f"{BUILD / 'bin'}:{ROOT / 'Scripts'}:{os.environ['PATH']}",
                            "out": str(home.folder), "res": RES, "rech": RECH, "media": MEDIA}

    def command(self, script, *options):
        return sandboxed(*options, "sh", "-c", script)

    def run(self, script, *options, **streams):
        streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        return subprocess.run(self.command(script, *options), env=self.environment, timeout=4 * PATIENCE, **streams)

    def start(self, script, *options):
        return subprocess.Popen(self.command(script, *options), env=self.environment, stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
