"""Writes a plan for ninja that runs clang-tidy over sources: lint_plan.py TOOLS BUILD SOURCE...

TOOLS has clang++ and clang-tidy. BUILD is a configured build, whose compile_commands.json says how each source is compiled; a
source that several programs compile is checked once. The plan is BUILD/lint/build.ninja. It needs nothing of the build, and
checks a source again when the source, a header, .clang-tidy or its command has changed.
"""

import functools
import json
import os
import shlex
import subprocess
import sys
from pathlib import Path

HEAD = '''rule lint
  command = $clang -w -M -MF $out.d -MT $out $flags $in && $tidy $in -- $flags && touch $out
  description = clang-tidy $in
  depfile = $out.d
  deps = gcc
'''


@functools.cache
def header_folders(compiler):
    """Where the cross compiler has its headers: clang understands its command lines, but does not find all of them."""
    output = subprocess.run([compiler, '-E', '-v', '-x', 'c++', '-', '-o', os.devnull], stdin=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, text=True, check=True).stderr
    block = output.split('#include <...> search starts here:', 1)[1].split('End of search list.', 1)[0]
    folders = [os.path.normpath(line.strip()) for line in block.splitlines() if line.strip()]
    # clang has headers of its own in place of those in gcc's other folders.
    return [folder for folder in folders if '/c++' in folder or '/lib/gcc/' not in folder]


def escaped(text):
    """As the value of a variable of ninja."""
    return text.replace('$', '$$')


def escaped_path(text):
    """As a path in a list of ninja."""
    return escaped(text).replace(' ', '$ ').replace(':', '$:')


def flags_of(entry):
    words = shlex.split(entry['command'])
    first = next(index for index, word in enumerate(words) if '-g++' in Path(word).name)  # Behind a launcher, if there is one.
    output = words.index('-o')
    source = words.index('-c')
    flags = words[first + 1:min(output, source)]
    extra = [f'-isystem{folder}' for folder in header_folders(words[first])]
    # gcc has options that clang does not know or use.
    return ['--target=x86_64-w64-mingw32', *flags, *extra, '-Wno-unused-command-line-argument']


def main(tools, build, *sources):
    root = Path(__file__).resolve().parents[2]
    entries = {}
    for entry in json.loads((build / 'compile_commands.json').read_text(encoding='utf-8')):
        entries.setdefault(entry['file'], entry)
    lines = [HEAD, f'clang = {escaped(shlex.quote(str(tools / "clang++")))}',
             f'tidy = {escaped(shlex.quote(str(tools / "clang-tidy")))} --quiet --warnings-as-errors=*']
    for source in sources:
        path = str(root / source)
        if path not in entries:
            print(f'not linted, because the Windows build does not compile it: {source}')
            continue
        # Paths in commands are absolute, or relative to the build.
        lines += [f'build {escaped_path(source)}.ok: lint {escaped_path(path)} | {escaped_path(str(root / ".clang-tidy"))}',
                  f'  flags = {escaped(shlex.join(flags_of(entries[path])))}']
    folder = build / 'lint'
    folder.mkdir(exist_ok=True)
    (folder / 'build.ninja').write_text('\n'.join(lines) + '\n', encoding='utf-8')


if __name__ == '__main__':
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(Path(sys.argv[1]).absolute(), Path(sys.argv[2]).absolute(), *sys.argv[3:])
