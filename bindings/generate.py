#!/usr/bin/env python3
"""Makes the description of the flat interface, interface.json, from talix.h, and the declarations of all bindings from it:

    generate.py                    writes the files
    generate.py --check            compares the files, and lists those that differ
    generate.py --assertions FILE  writes a source in C that compiles only if the description is true
"""

import json
import re
import sys
from pathlib import Path

from generator import assertions, dotnet, header, node, python

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent


def make_description():
    version = re.search(r'project\(Orlindex VERSION ([\d.]+)', (ROOT / 'CMakeLists.txt').read_text(encoding='utf-8'))
    return header.describe((ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8'), version.group(1))


def make_files(description):
    """The content of each generated file, by its path below bindings/."""
    return {
        'interface.json': json.dumps(description, indent=2, ensure_ascii=False) + '\n',
        'python/src/orlindex/_declarations.py': python.declarations(description),
        'node/lib/declarations.js': node.declarations(description),
        'node/lib/declarations.d.ts': node.types(description),
        'dotnet/src/Talix.cs': dotnet.declarations(description),
        'dotnet/src/StatusMeanings.cs': dotnet.meanings(description),
    }


def check(files):
    different = [name for name, text in files.items()
                 if not (HERE / name).is_file() or (HERE / name).read_text(encoding='utf-8') != text]
    for name in different:
        print(f'error: bindings/{name} is not what talix.h says; run bindings/generate.py')
    print(f'{len(files)} files, {len(different)} differ')
    return 1 if different else 0


def write(files):
    for name, text in files.items():
        (HERE / name).parent.mkdir(parents=True, exist_ok=True)
        (HERE / name).write_text(text, encoding='utf-8')
    return 0


def main(arguments):
    description = make_description()
    if arguments == ['--check']:
        return check(make_files(description))
    if len(arguments) == 2 and arguments[0] == '--assertions':
        Path(arguments[1]).write_text(assertions.source(description), encoding='utf-8')
        return 0
    if arguments:
        print(__doc__)
        return 2
    return write(make_files(description))


sys.exit(main(sys.argv[1:]))
