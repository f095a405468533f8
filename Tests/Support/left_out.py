"""Says which tests a run left out, and why: left_out.py JUNIT_FILE, as ctest writes it."""

import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import defaultdict


def left_out(results):
    """For each reason its tests: (name, how many of its tests, or None for a test as a whole)."""
    found = defaultdict(list)
    for case in ElementTree.parse(results).getroot().iter("testcase"):
        name, output = case.get("name"), case.findtext("system-out") or ""
        # pytest's summary, below a file's tests that did run.
        counts = defaultdict(int)
        for count, reason in re.findall(r"^SKIPPED \[(\d+)\] [^ ]+: (.+)$", output, re.MULTILINE):
            counts[reason] += int(count)
        for reason, count in counts.items():
            found[reason].append((name, count))
        if not counts and case.find("skipped") is not None:
            lines = [line for line in output.splitlines() if line.strip() and not line.startswith("[")]
            found[lines[-1].strip() if lines else "no reason given"].append((name, None))
    return found


def main(results):
    for reason, tests in left_out(results).items():
        total = sum(count or 1 for _, count in tests)
        print(f"Left out: {total} {'test' if total == 1 else 'tests'}, because {reason}")
        for name, count in sorted(tests):
            print(f"    {name}" + (f" ({count} of its tests)" if count else ""))


if __name__ == "__main__":
    main(sys.argv[1])
