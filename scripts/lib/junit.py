"""Reads the report that CTest writes with --output-junit. Prints one line for each test, "<outcome>TAB<name>"; the outcome is
passed, skipped or failed. If a test prints "skipped: <reason>", the reason follows its name. Prints nothing if the report is
missing."""

import sys
import xml.etree.ElementTree as ElementTree


def outcome(case):
    if case.get("status") == "run":
        return "passed"
    if case.get("status") == "disabled":
        return "skipped"
    skipped = case.find("skipped")
    # CTest also writes "skipped" for a test whose program is missing. Only a test that skipped itself counts as skipped.
    if skipped is not None and skipped.get("message", "").startswith("SKIP_"):
        return "skipped"
    return "failed"


def title(case):
    name = case.get("name")
    output = case.findtext("system-out") or ""
    reasons = [line for line in output.splitlines() if line.startswith("skipped: ")]
    if outcome(case) == "skipped" and reasons:
        return f"{name} ({reasons[0].removeprefix('skipped: ')})"
    return name


def main():
    try:
        cases = ElementTree.parse(sys.argv[1]).iter("testcase")
    except FileNotFoundError:
        return
    for case in cases:
        print(outcome(case), title(case), sep="\t")


main()
