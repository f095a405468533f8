"""Reports what a run left out, and why, and how tests failed: run_report.py JUNIT_FILE, as ctest writes it."""

import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import defaultdict

# pytest ends with a line for each failure, GoogleTest with the failure and its counts.
LAST_LINES = 15


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


def failed(results):
    """Each test that failed, with the lines that it printed."""
    for case in ElementTree.parse(results).getroot().iter("testcase"):
        if case.find("failure") is not None:
            yield case.get("name"), (case.findtext("system-out") or "").splitlines()


def main(results):
    for reason, tests in left_out(results).items():
        total = sum(count or 1 for _, count in tests)
        print(f"Left out: {total} {'test' if total == 1 else 'tests'}, because {reason}")
        for name, count in sorted(tests):
            print(f"    {name}" + (f" ({count} of its tests)" if count else ""))
    # ctest has printed it where the test ended. A reader who has only the end of the log needs it here.
    for name, lines in failed(results):
        print(f"Failed: {name}")
        for line in lines[-LAST_LINES:]:
            print(f"    {line}")


if __name__ == "__main__":
    main(sys.argv[1])
