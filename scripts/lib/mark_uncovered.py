"""Turns the list of what the tests do not run into markers in the sources.

mark_uncovered.py ROOT

Puts each reason of tests/coverage/uncovered.txt beside the lines that it is about, in the form of coverage_markers.py, and
takes what it could place out of the list. What it cannot place stays there: a line that a file of that name no longer
holds. Format the sources afterwards, and run scripts/coverage.sh.
"""

import re
import sys
from pathlib import Path

WIDTH = 120


def read_groups(path):
    """The list as (file, texts, reason), in order."""
    groups, file, texts = [], None, []
    for raw in path.read_text().splitlines():
        line = raw.strip()
        kind, _, text = line.partition(': ')
        if raw.startswith('src/'):
            file = line
        elif kind in ('line', 'branch'):
            texts.append((kind, text))
        elif kind == 'why':
            groups.append((file, texts, text))
            texts = []
    return groups


def mark(lines, text, reason):
    """Puts the reason beside every line that has this text. False if there is none."""
    places = [index for index, line in enumerate(lines) if line.strip() == text]
    for index in reversed(places):
        marker = f'// not covered: {reason}'
        line = lines[index]
        if '//' not in line and len(line) + 1 + len(marker) <= WIDTH:
            lines[index] = f'{line} {marker}'
        else:
            lines.insert(index, re.match(r'\s*', line).group() + marker)
    return bool(places)


def main(root):
    root = Path(root)
    path = root / 'tests/coverage/uncovered.txt'
    heading = path.read_text().split('\n\n', 1)[0]
    left = [heading]
    for file, texts, reason in read_groups(path):
        source = root / file
        lines = source.read_text().split('\n') if source.exists() else []
        missing = [(kind, text) for kind, text in texts if not mark(lines, text, reason)]
        if len(missing) < len(texts):
            source.write_text('\n'.join(lines))
        if missing:
            print(f'{file}: not found: ' + ' | '.join(text for _, text in missing))
            left.append('\n'.join([file] + [f'    {kind}: {text}' for kind, text in missing] + [f'    why: {reason}']))
    path.write_text('\n\n'.join(left) + '\n')


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
