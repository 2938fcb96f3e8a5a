"""Markers in sources: each uncovered line needs one, and none stands for a line that ran."""

import contextlib
import io
import json
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, sys.argv.pop(1))

import coverage  # noqa: E402  The script under test; its folder comes from the command line.


def evaluate(source, counts):
    """The exit code and the output for a file with this text. `counts` gives for each line of code how often it ran, and
    how often each of its branches."""
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        (root / 'src').mkdir()
        (root / 'src/File.cpp').write_text(source)
        lines = [{'line_number': number, 'count': count, 'gcovr/noncode': False,
                  'branches': [{'count': branch} for branch in branches]}
                 for number, (count, branches) in counts.items()]
        (root / 'report').write_text(json.dumps({'files': [{'file': 'src/File.cpp', 'lines': lines}]}))
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            code = coverage.main(root, root / 'report')
        return code, output.getvalue()


RAN, MISSED = (1, []), (0, [])
BOTH, ONE = (1, [1, 1]), (1, [1, 0])


class Markers(unittest.TestCase):
    def expect_success(self, *arguments):
        code, output = evaluate(*arguments)
        self.assertEqual(code, 0, output)

    def expect_problem(self, problem, *arguments):
        code, output = evaluate(*arguments)
        self.assertEqual(code, 1)
        self.assertIn(problem, output)

    def test_what_ran_needs_no_marker(self):
        self.expect_success('if (a)\n    b();\n', {1: BOTH, 2: RAN})

    def test_an_uncovered_line_needs_a_marker(self):
        self.expect_problem('src/File.cpp:2: did not run, and has no marker: line: b();', 'if (a)\n    b();\n',
                            {1: BOTH, 2: MISSED})
        self.expect_success('if (a)\n    b(); // not covered: Why.\n', {1: BOTH, 2: MISSED})

    def test_a_branch_that_did_not_run_needs_a_marker(self):
        self.expect_problem('src/File.cpp:1: did not run, and has no marker: branch: if (a)', 'if (a)\n', {1: ONE})
        self.expect_success('if (a) // not covered: Why.\n', {1: ONE})

    def test_a_branch_that_is_no_decision_needs_none(self):
        self.expect_success('call();\n', {1: ONE})
        self.expect_problem('which ran', 'call(); // not covered: Only if somebody calls.\n', {1: ONE})

    def test_a_marker_on_a_covered_line_fails(self):
        self.expect_problem('src/File.cpp:1: says "not covered" of line 1, which ran', 'b(); // not covered: Why.\n',
                            {1: RAN})
        self.expect_problem('which ran', 'if (a) // not covered: Why.\n', {1: BOTH})

    def test_a_marker_on_a_line_of_its_own_stands_for_the_next_line_of_code(self):
        source = '// not covered: Why,\n// at length.\nb();\nc();\n'
        self.expect_success(source, {3: MISSED, 4: RAN})
        self.expect_problem('of line 3, which ran', source, {3: RAN, 4: RAN})
        self.expect_problem('src/File.cpp:4: did not run', source, {3: MISSED, 4: MISSED})

    def test_a_block_stands_for_each_of_its_lines_of_code(self):
        source = 'a();\n// not covered from here: Why.\nb();\n\nc();\n// not covered to here\nd();\n'
        self.expect_success(source, {1: RAN, 3: MISSED, 5: MISSED, 7: RAN})
        self.expect_problem('of line 5, which ran', source, {1: RAN, 3: MISSED, 5: RAN, 7: RAN})
        self.expect_problem('src/File.cpp:7: did not run', source, {1: RAN, 3: MISSED, 5: MISSED, 7: MISSED})
        self.expect_problem('stands for no line of code', source, {1: RAN, 7: RAN})

    def test_a_marker_of_another_form_fails(self):
        for source, problem in {
                'b(); // not covered\n': 'has no reason',
                'b(); // not covered: \n': 'has no reason',
                '// not covered from here\nb();\n// not covered to here\n': 'has no reason',
                '// not covered from here: Why.\nb();\n': 'begins a block that does not end',
                '// not covered to here\nb();\n': 'ends a block that did not begin',
                '// not covered from here: Why.\nb(); // not covered: Why.\n': 'within the block',
                'b();\n// not covered: Why.\n': 'no line of code follows'}.items():
            code = {number: MISSED for number, line in enumerate(source.splitlines(), 1) if line.startswith('b')}
            self.expect_problem(problem, source, code)



if __name__ == '__main__':
    unittest.main()
