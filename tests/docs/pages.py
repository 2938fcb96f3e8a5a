"""The pages that people read: *.md and docs/*.md, with their code samples, headings, links and tables."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Sample:
    """A fenced block: its language, its attributes ("file=host.c", "fragment"), its text and where it begins."""

    def __init__(self, page, line, info):
        self.page = page
        self.line = line
        words = info.split()
        self.language = words[0] if words else ''
        self.attributes = dict((word.split('=', 1) + [''])[:2] for word in words[1:])
        self.lines = []

    @property
    def text(self):
        return '\n'.join(self.lines) + '\n'

    @property
    def place(self):
        return f'{self.page.name}:{self.line}'


class Page:
    def __init__(self, path, root=ROOT):
        self.path = path
        self.name = str(path.relative_to(root))
        self.samples = []
        self.prose = []  # (line number, text), without the samples
        sample = None
        for number, line in enumerate(path.read_text(encoding='utf-8').split('\n'), 1):
            fence = re.match(r'^\s*```(.*)$', line)
            if fence and sample is None:
                sample = Sample(self, number, fence.group(1))
            elif fence:
                self.samples.append(sample)
                sample = None
            elif sample is not None:
                sample.lines.append(line)
            else:
                self.prose.append((number, line))
        if sample is not None:
            raise ValueError(f'{sample.place}: the block is not closed')

    def anchors(self):
        """The names that headings get where the page is shown."""
        seen = {}
        for _, line in self.prose:
            heading = re.match(r'^#{1,6} +(.*?)\s*#*$', line)
            if not heading:
                continue
            text = re.sub(r'\[([^\]]*)\]\([^)]*\)', r'\1', heading.group(1))
            name = re.sub(r'[^\w\- ]', '', text.lower()).replace(' ', '-')
            count = seen.get(name, 0)
            seen[name] = count + 1
            yield f'{name}-{count}' if count else name

    def links(self):
        """(line number, target) of every link and picture."""
        for number, line in self.prose:
            for target in re.findall(r'\]\(([^)\s]+)\)', re.sub(r'`[^`]*`', '``', line)):
                yield number, target

    def rows(self, without=()):
        """(line number, cells) of every row of a table, without heads and without the tables below some headings."""
        table = []
        heading = ''
        for number, line in self.prose + [(0, '')]:
            if line.startswith('#'):
                heading = line.lstrip('# ')
            if line.startswith('|') and heading not in without:
                cells = [cell.strip().replace('\\|', '|') for cell in re.split(r'(?<!\\)\|', line)[1:-1]]
                table.append((number, cells))
                continue
            yield from table[2:]
            table = []


def all_pages():
    return [Page(path) for path in [*sorted(ROOT.glob('*.md')), *sorted((ROOT / 'docs').glob('*.md'))]]


def page(name):
    return Page(ROOT / name)


def codes(text):
    """What stands between backticks."""
    return re.findall(r'`([^`]+)`', text)


def contract_slots():
    """The operations of the plugin contract: '<interface> <slot> <operation>'."""
    table = (ROOT / 'tests/plugin/Slots.h').read_text(encoding='utf-8')
    return [' '.join(operation) for operation in re.findall(r'\{"(\w+)", (\d+), "(~?\w+)"\}', table)]


def report(errors, summary):
    """Ends a check."""
    for error in errors:
        print(f'error: {error}')
    print(summary)
    sys.exit(1 if errors else 0)
