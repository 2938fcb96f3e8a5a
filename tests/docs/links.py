"""Every relative link of a page leads to a file of this tree, and every anchor to a heading; what a page names of this
tree (folders, scripts, presets) is there."""

import json
import re

from pages import ROOT, Page, all_pages, codes, report

FOLDERS = r'(?:cmake|docs|examples|include|scripts|simulator|src|tests|tools)/[\w./*-]*'


def mentions(page):
    """(line number, path or preset) that stands between backticks or in a command."""
    commands = [(sample.line + number, line) for sample in page.samples if sample.language == 'sh'
                for number, line in enumerate(sample.lines, 1)]
    inline = [(line, code) for line, text in page.prose for code in codes(text)]
    for line, text in commands + inline:
        for path in re.findall(rf'(?:^|\s)({FOLDERS})', text):
            yield line, path, None
        for preset in re.findall(r'--preset ([\w-]+)', text):
            yield line, None, preset


def check_mentions(page, errors):
    presets = json.loads((ROOT / 'CMakePresets.json').read_text(encoding='utf-8'))['configurePresets']
    names = {preset['name'] for preset in presets if not preset.get('hidden')}
    count = 0
    for line, path, preset in mentions(page):
        count += 1
        if preset and preset not in names:
            errors.append(f'{page.name}:{line}: there is no preset {preset}')
        if path and not any(ROOT.glob(path.rstrip('/.'))):
            errors.append(f'{page.name}:{line}: there is no {path}')
    return count


def main():
    errors = []
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
                errors.append(f'{place}: there is no {target}')
            elif anchor and (file.suffix != '.md' or anchor not in set(Page(file).anchors())):
                errors.append(f'{place}: {target} names no heading')
    # A page that nothing leads to is not found by its readers.
    for page in all_pages():
        if page.path != ROOT / 'README.md' and page.path not in linked:
            errors.append(f'{page.name}: no page leads here')
    named = sum(check_mentions(page, errors) for page in all_pages())
    if count == 0 or named == 0:
        errors.append('no link or name was found')
    report(errors, f'{count} links, {named} names')


main()
