"""Every code sample of the pages is compiled, validated or run by one of the checks below:

    samples.py kinds                                 no sample is of a kind that nothing checks
    samples.py c COMPILER FOLDER                     compiled as C89 and as C11
    samples.py cpp COMPILER LIBRARY FOLDER           compiled; a whole host is linked, as FOLDER/<page>-<number>.exe
    samples.py js FOLDER                             read by Node.js, without running it
    samples.py json NODE FOLDER                      parsed, and valid by their schema where there is one
    samples.py commands BUILD FOLDER                 run, in FOLDER/<page>, or named in ELSEWHERE with a reason
    samples.py windows PAGE                          prints the Windows commands of a page that tests/docs/hosts.sh runs
    samples.py files PAGE FOLDER                     writes the samples of a page that name a file
    samples.py elsewhere TEST                        prints the commands that ELSEWHERE leaves to a test

C# is checked by csharp.py, and the hosts are run by hosts.sh.
"""

import json
import os
import re
import shutil
import subprocess
import sys
from collections import Counter
from pathlib import Path

from pages import ROOT, all_pages, page, report

KINDS = {
    'c': 'compiled',
    'cpp': 'compiled',
    'def': 'linked by a command of its page',
    'cmake': 'configured and built by the test package.hosts-by-find_package',
    'csharp': 'compiled and run',
    'js': 'read by the interpreter',
    'python': 'run by the test bindings.hosts.python',
    'json': 'validated',
    'sh': 'run',
    'bat': 'run under Wine',
    'text': 'output, not checked',
}

# Commands that are not run here: a regular expression for the whole line, and why.
ELSEWHERE = {
    r'scripts/demo\.sh': 'takes a build of its own; run by scripts/test.sh --long',
    r'scripts/test\.sh( .*)?': 'is what runs this test',
    r'scripts/bench\.sh( --quick)?': 'run by the test bench.quick',
    r'scripts/simulate\.sh ~/simulator': 'run by the test Agent.Script.LaysOutWhatAHostNeeds',
    r'scripts/reference\.sh build/reference': 'run by the test docs.reference',
    r'cmake -S \. -B build -DOrlindex_DIR=.*': 'run by the test package.hosts-by-find_package',
    r'cmake --build build': 'run by the test package.hosts-by-find_package',
    r'.* \$\(pkg-config .*': 'run by the test package.hosts-by-pkg-config',
    r'export PKG_CONFIG_PATH=.*': 'run by the test package.hosts-by-pkg-config',
    r'scripts/bindings\.sh': 'run by the tests bindings.python.package, bindings.node.package and bindings.dotnet.package',
    r'cmake --preset msvc': 'needs Visual Studio',
    r'cmake --build --preset msvc': 'needs Visual Studio',
    r'cmake --preset mingw-release -DORLINDEX_PINNED_ROOT=.*': 'both settings are tried by the tests configuration.*',
    r'cl /.*': 'needs Visual Studio; the same source is compiled with mingw-w64',
    r'csc /.*': 'needs Visual Studio; the same sources are compiled with mcs',
    r'signtool .*': 'needs the Windows SDK and a time stamp server; osslsigncode signs the same file',
}

WARNINGS = ['-pedantic', '-Wall', '-Wextra', '-Wshadow', '-Werror']
SCHEMAS = {
    'Orlindex.config': 'client-config.schema.json',
    'TALIXVersionCompatibility.config': 'version-compatibility.schema.json',
    'Pellwick.scenario.json': 'simulator-scenario.schema.json',
    'Pellwick.config.json': 'provider-config.schema.json',
}


def samples(*languages):
    return [sample for each in all_pages() for sample in each.samples if sample.language in languages]


def lines_of(sample):
    """The commands of a sample, without comments."""
    lines = [re.sub(r'\s+# .*$', '', line).strip() for line in sample.lines]
    return [line for line in lines if line and not line.startswith('#')]


def is_elsewhere(line):
    return any(re.fullmatch(pattern, line) for pattern in ELSEWHERE)


def run(errors, place, command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors='replace',
                          stdin=subprocess.DEVNULL, check=False, **options)
    if done.returncode != 0:
        errors.append(f'{place}: {command if isinstance(command, str) else " ".join(map(str, command))} '
                      f'ended with {done.returncode}\n{done.stdout}')
    return done.returncode == 0


def file_of(sample, folder, suffix):
    """The sample as a file, under a name of its own."""
    name = sample.page.name.replace('/', '-').removesuffix('.md')
    number = [each for each in sample.page.samples if each.language == sample.language].index(sample) + 1
    folder.mkdir(parents=True, exist_ok=True)
    file = folder / f'{name}-{number}{suffix}'
    file.write_text(sample.text, encoding='utf-8')
    return file


def write_files(name, folder):
    """The samples that name a file, under that name."""
    folder.mkdir(parents=True, exist_ok=True)
    for sample in page(name).samples:
        if 'file' in sample.attributes:
            file = folder / sample.attributes['file']
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(sample.text, encoding='utf-8')


def finish(errors, what, count):
    if count == 0:
        errors.append(f'no {what} was found')
    report(errors, f'{count} {what}')


def check_kinds():
    errors = []
    count = Counter()
    for each in all_pages():
        for sample in each.samples:
            count[sample.language] += 1
            if not sample.language:
                errors.append(f'{sample.place}: the language is missing; "text" for output')
            elif sample.language not in KINDS:
                errors.append(f'{sample.place}: nothing checks {sample.language}')
            unknown = set(sample.attributes) - {'file'}
            if unknown:
                errors.append(f'{sample.place}: unknown attributes {sorted(unknown)}')
    lines = [line for sample in samples('sh', 'bat') for line in lines_of(sample)]
    for pattern in ELSEWHERE:
        if not any(re.fullmatch(pattern, line) for line in lines):
            errors.append(f'ELSEWHERE: no page has this command any more: {pattern}')
    for kind, number in sorted(count.items()):
        print(f'{number:3} {kind}: {KINDS.get(kind, "not checked")}')
    print(f'{sum(is_elsewhere(line) for line in lines):3} of {len(lines)} commands are not run here, for a reason')
    finish(errors, 'samples', sum(count.values()))


def check_c(compiler, folder):
    errors = []
    found = samples('c')
    for sample in found:
        file = file_of(sample, Path(folder), '.c')
        for standard in ('c89', 'c11'):
            run(errors, sample.place,
                [compiler, f'-std={standard}', *WARNINGS, '-fsyntax-only', f'-I{ROOT / "include"}', file])
    finish(errors, 'samples in C', len(found))


def check_cpp(compiler, library, folder):
    errors = []
    found = samples('cpp')
    for sample in found:
        file = file_of(sample, Path(folder), '.cpp')
        # The contract that plugins implement lies with the sources.
        command = [compiler, '-std=c++17', *WARNINGS, f'-I{ROOT / "include"}', f'-I{ROOT / "src"}', file]
        if 'int main(' in sample.text:
            run(errors, sample.place, [*command, '-static', library, '-o', file.with_suffix('.exe')])
        else:
            run(errors, sample.place, [*command, '-fsyntax-only'])
    finish(errors, 'samples in C++', len(found))


def check_json(node, folder):
    errors = []
    found = samples('json')
    for sample in found:
        try:
            json.loads(sample.text)
        except ValueError as error:
            errors.append(f'{sample.place}: {error}')
            continue
        schema = ROOT / 'docs/schema' / SCHEMAS.get(sample.attributes.get('file'), '-')
        if schema.exists():
            file = file_of(sample, Path(folder), '.json')
            run(errors, sample.place, ['node', ROOT / 'tests/node/validate.mjs', schema, file],
                env={**os.environ, 'ORLINDEX_NODE': node})
    finish(errors, 'samples in JSON', len(found))


def check_js(folder):
    errors = []
    found = samples('js')
    for sample in found:
        run(errors, sample.place, ['node', '--check', file_of(sample, Path(folder), '.mjs')])
    finish(errors, 'samples in JavaScript', len(found))


def prepare(name, build, folder):
    """A folder that looks like this tree to the commands of a page, with what the page assumes to be there."""
    shutil.rmtree(folder, ignore_errors=True)
    (folder / 'build').mkdir(parents=True)
    (folder / 'build/release').symlink_to(build)
    for entry in ('CMakeLists.txt', 'CMakePresets.json', 'bindings', 'docs', 'examples', 'include', 'scripts', 'src'):
        (folder / entry).symlink_to(ROOT / entry)
    for file, target in (('signer-chain.pem', 'signing/good.pem'), ('signer.key', 'signing/signer.key'),
                         ('root.pem', 'signing/root.pem'),
                         ('PellwickClient-unsigned.dll', 'agent/unsigned/PellwickClient.dll')):
        (folder / file).symlink_to(build / target)
    write_files(name, folder)


def check_commands(build, folder):
    errors = []
    count = 0
    for each in all_pages():
        commands = [(sample.place, line) for sample in each.samples if sample.language == 'sh'
                    for line in lines_of(sample)]
        count += len(commands)
        commands = [(place, line) for place, line in commands if not is_elsewhere(line)]
        if not commands:
            continue
        scratch = Path(folder) / each.path.stem
        prepare(each.name, Path(build), scratch)
        for place, line in commands:
            if not run(errors, place, line, shell=True, cwd=scratch, executable='/bin/bash'):
                break
    finish(errors, 'commands', count)


def print_windows(name):
    for sample in page(name).samples:
        if sample.language == 'bat':
            for line in lines_of(sample):
                if not is_elsewhere(line):
                    print(line)


def print_elsewhere(test):
    """In the order of the pages, so that a script may be made of them."""
    for sample in samples('sh'):
        for line in lines_of(sample):
            if any(re.fullmatch(pattern, line) and reason.endswith(f' {test}') for pattern, reason in ELSEWHERE.items()):
                print(line)


CHECKS = {
    'kinds': check_kinds,
    'c': check_c,
    'cpp': check_cpp,
    'js': check_js,
    'json': check_json,
    'commands': check_commands,
    'windows': print_windows,
    'elsewhere': print_elsewhere,
    'files': lambda name, folder: write_files(name, Path(folder)),
}

if __name__ == '__main__':
    if len(sys.argv) < 2 or sys.argv[1] not in CHECKS:
        sys.exit(__doc__)
    CHECKS[sys.argv[1]](*sys.argv[2:])
