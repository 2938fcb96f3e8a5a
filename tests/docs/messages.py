"""docs/diagnostics.md names every log message with its level, as the sources write them, and no other."""

import re

from pages import ROOT, codes, page, report

LITERALS = re.compile(r'L"((?:[^"\\]|\\.)*)"(?:\s*L"((?:[^"\\]|\\.)*)")*')
LITERAL = re.compile(r'L"((?:[^"\\]|\\.)*)"')
LEVEL = re.compile(r'TALIXLog::(Error|Warning|Info)\b')

# Wide texts with a blank that are no message.
OTHER_TEXTS = {
    'Kestrany/Identity Services': 'a folder',
    'The specified module could not be found.': 'the reason within a message',
}


def level_at(source, begin, end):
    """The level that a message is written with: the call around it names it before or after the text."""
    before = source[:begin].rstrip()
    if before.endswith(','):
        named = re.search(r'LogLine\(TALIXLog::(\w+),$', before)
        if named:
            return named.group(1)
        if re.search(r'Obtain\([^;]*,$', before):
            return 'Error'
    after = LEVEL.search(source, end, source.index('\n}', end))
    if after:
        return after.group(1)
    # A function that only makes the text: whoever calls it says the level.
    maker = re.findall(r'^\S.*?(\w+)\([^;{}]*\)\n\{', source[:begin], re.M)[-1]
    written = re.search(rf'\b{maker}\(.*?{LEVEL.pattern}', source[end:], re.S)
    return written.group(1) if written else None


def messages_of_sources():
    """{text: {(level, file)}}"""
    found = {}
    for file in sorted((ROOT / 'src').rglob('*.cpp')):
        source = file.read_text(encoding='utf-8')
        for match in LITERALS.finditer(source):
            text = ''.join(LITERAL.findall(match.group(0)))
            if ' ' in text and text not in OTHER_TEXTS:
                level = level_at(source, match.start(), match.end())
                found.setdefault(text, set()).add((level, str(file.relative_to(ROOT))))
    return found


def messages_of_page():
    """{text: (line, level, file)} from the tables whose rows begin with a message."""
    found = {}
    errors = []
    diagnostics = page('docs/diagnostics.md')
    for line, cells in diagnostics.rows():
        if len(cells) != 5:
            continue
        place = f'{diagnostics.name}:{line}'
        texts = codes(cells[0])
        files = re.findall(r'\(\.\./(src/[^)]+)\)', cells[2])
        if len(texts) != 1 or len(files) != 1 or not cells[3] or not cells[4]:
            errors.append(f'{place}: a row is one message, its level, its source, the cause and the remedy')
        elif texts[0] in found:
            errors.append(f'{place}: this message was described before')
        else:
            found[texts[0]] = (place, cells[1], files[0])
    return found, errors


def main():
    written = messages_of_sources()
    described, errors = messages_of_page()
    for text in sorted(written.keys() - described.keys()):
        errors.append(f'not described: {text}')
    for text in sorted(described.keys() - written.keys()):
        errors.append(f'{described[text][0]}: no source writes this message: {text}')
    for text in sorted(written.keys() & described.keys()):
        place, level, file = described[text]
        if written[text] != {(level, file)}:
            errors.append(f'{place}: is written as {sorted(map(str, written[text]))}, not at {level} by {file}')
    if not written:
        errors.append('no message was found in the sources')
    report(errors, f'{len(written)} messages')


main()
