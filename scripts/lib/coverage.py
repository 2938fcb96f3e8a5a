"""Prints the coverage of each source and compares what did not run with the markers in the sources.

coverage.py ROOT COVERAGE-JSON

A marker gives the reason beside the line that no test runs: see coverage_markers.py. The exit code is 0 if exactly the marked
lines and branches did not run.
"""

import json
import re
import sys
from pathlib import Path

from coverage_markers import MarkerError, problems_of_markers

# Compilers add other branches, such as one for each element of an initialiser. These only count in the figures.
DECISION = re.compile(r"\b(if|for|while|switch|case)\b|&&|\|\||\?")


class Source:
    """The counts of one file."""

    def __init__(self, root, entry):
        self.name = entry["file"]
        self.texts = (root / self.name).read_text().splitlines()
        self.lines = [line for line in entry["lines"] if not line["gcovr/noncode"]]
        self.branches = [branch for line in self.lines for branch in line["branches"]]

    def text(self, line):
        return self.texts[line["line_number"] - 1].strip()

    def line_counts(self):
        return sum(1 for line in self.lines if line["count"]), len(self.lines)

    def branch_counts(self):
        return sum(1 for branch in self.branches if branch["count"]), len(self.branches)

    def uncovered(self):
        """Lines that did not run, and decisions of which one branch did not run: line number -> kind."""
        kinds = {}
        for line in self.lines:
            if not line["count"]:
                kinds[line["line_number"]] = "line"
            elif DECISION.search(self.text(line).split("// not covered")[0]) and any(not branch["count"] for branch in line["branches"]):
                kinds[line["line_number"]] = "branch"
        return kinds

    def unmarked(self):
        """Of these, the ones that no marker explains: (kind, text) -> line numbers; and the problems of the markers."""
        kinds = self.uncovered()
        code = {line["line_number"] for line in self.lines}
        numbers, problems = problems_of_markers(self.name, self.texts, code, set(kinds))
        found = {}
        for number in sorted(numbers):
            found.setdefault((kinds[number], self.texts[number - 1].strip()), []).append(number)
        return found, problems


def share(counts):
    covered, total = counts
    return f"{covered:5}/{total:<5} {100 * covered / total if total else 100:5.1f} %"


def print_table(sources):
    print(f"{'':42} {'lines':^19} {'branches':^19}")
    for source in sources:
        print(f"{source.name:42} {share(source.line_counts())} {share(source.branch_counts())}")
    totals = [[sum(column) for column in zip(*counts)]
              for counts in ([s.line_counts() for s in sources], [s.branch_counts() for s in sources])]
    print(f"{'total':42} {share(totals[0])} {share(totals[1])}")
    for kind, (covered, total) in zip(("lines", "branches"), totals):
        print(f"count: {kind} run = {covered}")
        print(f"count: {kind} in all = {total}")


def compare(sources):
    """What did not run and is not marked, and what is marked and ran."""
    problems = []
    for source in sources:
        unmarked, wrong = source.unmarked()
        problems += wrong
        problems += [f"{source.name}:{','.join(map(str, numbers))}: did not run, and has no marker: {kind}: {text}"
                     for (kind, text), numbers in sorted(unmarked.items())]
    return problems


def main(root, report):
    root = Path(root)
    sources = [Source(root, entry) for entry in json.loads(Path(report).read_text())["files"]]
    print_table(sorted(sources, key=lambda source: source.name))
    try:
        problems = compare(sources)
    except MarkerError as error:
        problems = [str(error)]
    for problem in problems:
        print(problem)
    if problems:
        print("Test these lines, or say why not with a marker: see scripts/lib/coverage_markers.py.")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
