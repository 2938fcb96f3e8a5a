"""The sign-in agent's sources include only what their folder may know: includes.py SOURCE-TREE

Simulated users and OpenID Connect providers are sources of identity behind the interface in agent/identity: only the place
that chooses the source may include their headers. The core of the latter is portable: it includes no platform header.
"""

import re
import sys
from pathlib import Path

AGENT = Path(sys.argv[1]) / 'agent'
SIMULATED = 'identity/simulated'
OPENID = 'identity/openid'
OPENID_WINDOWS = OPENID + '/windows'
SOURCES = (SIMULATED, OPENID_WINDOWS, OPENID)
CHOICE = 'server/ChooseSource.cpp'
# What each folder may include, besides itself.
MAY_INCLUDE = {
    'platform': {'platform'},
    'identity': {'platform'},
    SIMULATED: {'identity', 'platform'},
    OPENID: {'identity'},
    OPENID_WINDOWS: {OPENID, 'identity', 'platform'},
    'connection': {'identity', 'platform'},
    'server': {'connection', 'identity', 'platform'},
    'plugin': {'connection', 'identity', 'platform', 'server'},
}


def folder_of(path):
    return next((source for source in SOURCES if path.startswith(source + '/')), path.split('/')[0])


def main():
    errors = []
    count = 0
    for file in sorted(AGENT.rglob('*.[hc]*')):
        if file.suffix not in ('.h', '.cpp'):
            continue
        path = file.relative_to(AGENT).as_posix()
        folder = folder_of(path)
        for line, text in enumerate(file.read_text(encoding='utf-8').split('\n'), 1):
            found = re.match(r'#include "([^"]+)"', text)
            if not found or not (AGENT / found[1]).exists():
                continue
            count += 1
            target = folder_of(found[1])
            chooses = path == CHOICE and target in SOURCES
            if target != folder and target not in MAY_INCLUDE[folder] and not chooses:
                errors.append(f'agent/{path}:{line}: {folder}/ may not include {found[1]}')
    print(*errors, f'{count} includes', sep='\n')
    if errors or count == 0:
        sys.exit(1)


main()
