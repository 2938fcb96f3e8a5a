"""Checks the list of the tests that a build leaves out: left_out.py LIST PREFIX=PROGRAM...

Each line is "<name>: <reason>", without a pattern. Each name is the name of a test: the prefix of its program, and its name there.
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def tests_of(prefix, program):
    """The names of a program's tests."""
    result = subprocess.run([ROOT / 'scripts/wine-run', program, '--gtest_list_tests'], stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, check=True)
    names = set()
    suite = ''
    for line in result.stdout.decode('utf-8', 'replace').splitlines():
        name = line.split('#')[0].rstrip()
        if name.startswith('  '):
            names.add(prefix + suite + name.strip())
        elif name.endswith('.'):
            suite = name
    return names


def main():
    known = set()
    for pair in sys.argv[2:]:
        prefix, _, program = pair.partition('=')
        known |= tests_of(prefix, program)
    errors = []
    count = 0
    for number, line in enumerate(Path(sys.argv[1]).read_text(encoding='utf-8').splitlines(), 1):
        if not line or line.startswith('#'):
            continue
        parts = re.match(r'([^#:]+): (\S.*)$', line)
        if not parts:
            errors.append(f'{number}: this is not "<name>: <reason>": {line}')
        elif parts[1] not in known:
            errors.append(f'{number}: there is no test {parts[1]}')
        else:
            count += 1
    if not known:
        errors.append('0: the programs have no tests')
    for error in errors:
        print(f'error: {sys.argv[1]}:{error}')
    print(f'{count} of {len(known)} tests are left out')
    sys.exit(1 if errors else 0)


main()
