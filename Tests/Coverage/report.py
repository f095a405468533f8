"""Which lines and branches of the product the tests took, from llvm-cov's export.

usage: report.py ROOT ACCEPTED < export.json

Prints a table, then each branch that no test took. The file ACCEPTED names those that may stay, a line
each:  FILE | FUNCTION | CONDITION | true or false | REASON
Fails on a branch that it does not name, and on a name that it does not need.
"""

import json
import os
import re
import subprocess
import sys
from collections import defaultdict
from dataclasses import dataclass
from pathlib import Path

FOLDERS = ["VQMKeygrab", "Common", "VQMSerialize", "Data", "VQMPipe"]


@dataclass(frozen=True, order=True)
class Branch:
    """One outcome of one condition."""

    file: str
    line: int
    column: int
    function: str
    condition: str
    outcome: str

    def name(self):
        return (self.file, self.function, self.condition, self.outcome)


def demangled(names):
    """The functions' own names: without parameters, template arguments, or the name of a file's own namespace."""
    names = sorted(names)
    text = subprocess.run(
        ["c++filt", "--no-params"], input="\n".join(names), capture_output=True, text=True, check=True
    ).stdout
    return {
        name: re.sub(r"<.*", "", line.replace("(anonymous namespace)::", "")).split(" ")[-1]
        for name, line in zip(names, text.splitlines())
    }


def text_between(source, start_line, start_column, end_line, end_column):
    lines = source[start_line - 1 : end_line]
    lines[-1] = lines[-1][: end_column - 1]
    lines[0] = lines[0][start_column - 1 :]
    return " ".join(" ".join(lines).split())


def read_branches(export, sources):
    """Every branch, with how often it was taken: in all programs and all instances of a template."""
    # Functions of a file's own come with its name before theirs.
    plain = demangled({function["name"].split(":")[-1] for function in export["functions"]})
    taken = defaultdict(int)
    for function in export["functions"]:
        name = plain[function["name"].split(":")[-1]]
        for start, column, end, end_column, true, false, file_id, *_ in function["branches"]:
            file = function["filenames"][file_id]
            if file not in sources:
                continue
            condition = text_between(sources[file][1], start, column, end, end_column)
            for outcome, count in (("true", true), ("false", false)):
                taken[Branch(sources[file][0], start, column, name, condition, outcome)] += count
    return taken


def read_accepted(path):
    accepted = {}
    for number, line in enumerate(path.read_text().splitlines(), start=1):
        if not line or line.startswith("#"):
            continue
        parts = [part.strip() for part in line.split(" | ")]
        if len(parts) != 5 or not all(parts) or parts[3] not in ("true", "false"):
            sys.exit(f"{path}:{number}: expected FILE | FUNCTION | CONDITION | true or false | REASON")
        accepted[tuple(parts[:4])] = parts[4]
    return accepted


def share(covered, count):
    return f"{covered}/{count}".rjust(11) + (f"{100 * covered / count:7.1f} %" if count else "        -")


def print_table(files, branches):
    """`files`: covered and all lines by file."""
    rows = defaultdict(lambda: [0, 0, 0, 0])
    for file, (covered, count) in files.items():
        for row in (file, file.split("/")[0] + "/", "all"):
            rows[row][0] += covered
            rows[row][1] += count
    for branch, count in branches.items():
        for row in (branch.file, branch.file.split("/")[0] + "/", "all"):
            rows[row][2] += count > 0
            rows[row][3] += 1
    width = max(map(len, rows)) + 1
    print(f"{'':{width}}{'lines':>20}{'branches':>20}")
    names = [name for folder in FOLDERS for name in sorted(rows) if name.startswith(folder + "/")]
    for name in [name for name in names if not name.endswith("/")] + [n for n in names if n.endswith("/")] + ["all"]:
        covered, count, taken, outcomes = rows[name]
        print(f"{name:{width}}{share(covered, count)}{share(taken, outcomes)}")


def main(root, accepted_path):
    export = json.load(sys.stdin)["data"][0]
    sources, files = {}, {}
    for file in export["files"]:
        # Compilers record a path by way of the build folder.
        path = Path(os.path.normpath(file["filename"]))
        name = path.relative_to(root).as_posix() if path.is_relative_to(root) else ""
        if name.split("/")[0] in FOLDERS:
            sources[file["filename"]] = (name, path.read_text().splitlines())
            files[name] = (file["summary"]["lines"]["covered"], file["summary"]["lines"]["count"])

    branches = read_branches(export, sources)
    accepted = read_accepted(accepted_path)
    print_table(files, branches)

    untaken = sorted(branch for branch, count in branches.items() if count == 0)
    needless = set(accepted) - {branch.name() for branch in untaken}
    failed = False
    for branch in untaken:
        reason = accepted.get(branch.name())
        failed = failed or reason is None
        print(f"{branch.file}:{branch.line}: {branch.function}: `{branch.condition}` is never {branch.outcome}")
        print(f"    accepted: {reason}" if reason else f"    not in {accepted_path.name}: write its test")
    for name in sorted(needless):
        failed = True
        print(f"{accepted_path.name}: not needed, it is taken or gone: {' | '.join(name)}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]).resolve(), Path(sys.argv[2])))
