"""docs/diagnostics.md names every status code with its number, as talix.h does, and no other."""

import re

from pages import ROOT, codes, page, report


def main():
    header = (ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8')
    values = {name: number for name, number in re.findall(r'^ +(Id\w+) = (\d+),', header, re.M)}
    diagnostics = page('docs/diagnostics.md')
    errors = []
    described = {}
    for line, cells in diagnostics.rows():
        if len(cells) == 4 and cells[0].isdigit():
            described[codes(cells[1])[0]] = cells[0]
            if not cells[2]:
                errors.append(f'{diagnostics.name}:{line}: the meaning is missing')
    for name in sorted(values.keys() | described.keys()):
        if values.get(name) != described.get(name):
            errors.append(f'{name}: {values.get(name)} in talix.h, {described.get(name)} in the page')
    if not values:
        errors.append('no status code was found in talix.h')
    report(errors, f'{len(values)} status codes')


main()
