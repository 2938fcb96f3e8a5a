"""Checks that no source includes anything above its own floor.

includes.py ROOT

The floors of src/, from the lowest: base, load, locate, then private and api side by side. The headers of include/orlindex
stand beside base: they include each other alone. What a plugin implements, src/load/contract, takes no host's facade.
"""

import re
import sys
from pathlib import Path

FLOORS = {'base': 0, 'load': 1, 'locate': 2, 'private': 3, 'api': 3}
FACADES = {'IdServicesMgr.h', 'IdServicesAutomation.h', 'SSOClientPrivate.h', 'SSOServerManager.h'}
INCLUDE = re.compile(r'^\s*#\s*include "([^"]+)"', re.MULTILINE)


def includes(file):
    return INCLUDE.findall(file.read_text(encoding='utf-8'))


def check_source(name, target):
    """Returns what is wrong with one include of a file below src, or None."""
    if target.startswith('orlindex/'):
        if name.parts[:2] == ('load', 'contract') and target.split('/')[1] in FACADES:
            return 'takes a type of a host\'s facade'
        return None
    floor = target.split('/')[0]
    if floor not in FLOORS:
        return None if floor == 'BuildData.h' else 'is on no floor'
    if FLOORS[floor] > FLOORS[name.parts[0]]:
        return f'is above {name.parts[0]}'
    if {floor, name.parts[0]} == {'private', 'api'}:
        return f'is beside {name.parts[0]}, which needs nothing of it'
    return None


def main():
    root = Path(sys.argv[1])
    errors = []
    sources = [file for file in sorted((root / 'src').rglob('*')) if file.suffix in ('.h', '.cpp')]
    count = 0
    for file in sources:
        for target in includes(file):
            count += 1
            if wrong := check_source(file.relative_to(root / 'src'), target):
                errors.append(f'{file.relative_to(root)}: {target} {wrong}')
    for file in sorted((root / 'include/orlindex').glob('*.h')):
        for target in includes(file):
            count += 1
            if '/' in target:
                errors.append(f'{file.relative_to(root)}: {target} is no header beside it')
    if not sources or count < len(sources):
        errors.append('no includes were found')
    for error in errors:
        print(f'error: {error}')
    print(f'{count} includes in {len(sources)} sources')
    sys.exit(1 if errors else 0)


main()
