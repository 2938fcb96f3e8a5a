"""Every relative link of a page leads to a file of this tree, and every anchor to a heading; what a page names of this
tree (folders, scripts, presets) is there.

    links.py          for this tree
    links.py KIT      links alone, for the pages of an unpacked kit
"""

import json
import re
import sys
from pathlib import Path

from pages import ROOT, Page, all_pages, codes, page, report

FOLDERS = r'(?:agent|bindings|cmake|docs|examples|include|scripts|src|tests|tools)/[\w./*-]*'


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


def check_links(pages, root, errors):
    """Returns the number of links, and the files that they lead to."""
    count = 0
    linked = set()
    for page in pages:
        for line, target in page.links():
            place = f'{page.name}:{line}'
            count += 1
            if re.match(r'^[a-z]+:', target):
                errors.append(f'{place}: {target} leads out of this tree')
                continue
            path, _, anchor = target.partition('#')
            file = (page.path.parent / path).resolve() if path else page.path
            linked.add(file)
            if not file.exists() or not file.is_relative_to(root):
                errors.append(f'{place}: there is no {target}')
            elif anchor and (file.suffix != '.md' or anchor not in set(Page(file, root).anchors())):
                errors.append(f'{place}: {target} names no heading')
    if count == 0:
        errors.append('no link was found')
    return count, linked


def check_tree():
    errors = []
    pages = [*all_pages(), page('examples/README.md'), page('tests/README.md')]
    count, linked = check_links(pages, ROOT, errors)
    # Readers do not find a page without a link to it.
    for other in all_pages():
        if other.path != ROOT / 'README.md' and other.path not in linked:
            errors.append(f'{other.name}: no page leads here')
    named = sum(check_mentions(checked, errors) for checked in pages)
    if named == 0:
        errors.append('no name was found')
    report(errors, f'{count} links, {named} names')


def check_kit(kit):
    errors = []
    pages = [Page(path, kit) for path in sorted(kit.rglob('*.md'))]
    count, _ = check_links(pages, kit, errors)
    report(errors, f'{count} links in {len(pages)} pages')


if len(sys.argv) > 1:
    check_kit(Path(sys.argv[1]).resolve())
else:
    check_tree()
