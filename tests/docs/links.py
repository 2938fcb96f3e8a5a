"""Every relative link of a page leads to a file of this tree, and every anchor to a heading."""

import re

from pages import ROOT, Page, all_pages, report

# Pages that are announced before they are there. A page that has come leaves this list.
ANNOUNCED = {'docs/doctor.md', 'docs/simulator.md', 'docs/reliability.md'}


def main():
    errors = [f'{name} is there: take it from ANNOUNCED' for name in sorted(ANNOUNCED) if (ROOT / name).exists()]
    count = 0
    linked = set()
    for page in all_pages():
        for line, target in page.links():
            place = f'{page.name}:{line}'
            count += 1
            if re.match(r'^[a-z]+:', target):
                errors.append(f'{place}: {target} leads out of this tree')
                continue
            path, _, anchor = target.partition('#')
            file = (page.path.parent / path).resolve() if path else page.path
            linked.add(file)
            if not file.exists():
                if not (file.is_relative_to(ROOT) and str(file.relative_to(ROOT)) in ANNOUNCED):
                    errors.append(f'{place}: there is no {target}')
            elif anchor and (file.suffix != '.md' or anchor not in set(Page(file).anchors())):
                errors.append(f'{place}: {target} names no heading')
    # A page that nothing leads to is not found by its readers.
    for page in all_pages():
        if page.path != ROOT / 'README.md' and page.path not in linked:
            errors.append(f'{page.name}: no page leads here')
    if count == 0:
        errors.append('no link was found')
    report(errors, f'{count} links')


main()
