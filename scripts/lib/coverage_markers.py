"""The markers in sources that say why the tests do not run a line, or one branch of a decision.

    return {}; // not covered: The reason.

    // not covered: The reason, if it does not fit behind the line. It holds for the next line of code.
    return {};

    // not covered from here: The reason for a block.
    ...
    // not covered to here

A marker needs a reason, and every line of code that it stands for must be one that did not run, or a decision of which
one branch did not run.
"""

import re

MARKER = re.compile(r'//\s*not covered( from here| to here)?(?::\s*(.*))?$')


class MarkerError(Exception):
    """A marker that is not of this form: place and problem."""


def marked_lines(name, texts, code):
    """The lines of code for which a marker stands: {line number: line number of the marker}.

    `texts` are the lines of the file `name`, and `code` the numbers, from 1, of those that have code.
    """
    marked, opened = {}, None
    for number, text in enumerate(texts, 1):
        marker = MARKER.search(text)
        if not marker:
            if opened and number in code:
                marked[number] = opened
            continue
        kind, reason = (marker.group(1) or '').strip(), (marker.group(2) or '').strip()
        place = f'{name}:{number}'
        if kind == 'to here':
            if not opened:
                raise MarkerError(f'{place}: ends a block that did not begin')
            opened = None
            continue
        if opened:
            raise MarkerError(f'{place}: within the block that begins at line {opened}')
        if not reason:
            raise MarkerError(f'{place}: has no reason')
        if kind == 'from here':
            opened = number
        elif text[:marker.start()].strip():
            marked[number] = number
        else:
            following = [line for line in code if line > number]
            if not following:
                raise MarkerError(f'{place}: no line of code follows')
            marked[min(following)] = number
    if opened:
        raise MarkerError(f'{name}:{opened}: begins a block that does not end')
    return marked


def problems_of_markers(name, texts, code, uncovered):
    """The uncovered lines without a marker, and a problem for each marker that stands for a covered line.

    `uncovered` are the numbers of the lines that did not run, or of which one branch did not run.
    """
    marked = marked_lines(name, texts, code)
    problems = []
    for number, marker in sorted(marked.items()):
        if number not in uncovered:
            problems.append(f'{name}:{marker}: says "not covered" of line {number}, which ran: {texts[number - 1].strip()}')
    used = set(marked.values())
    for number, text in enumerate(texts, 1):
        if 'not covered from here' in text and MARKER.search(text) and number not in used:
            problems.append(f'{name}:{number}: stands for no line of code')
    return uncovered - marked.keys(), problems
