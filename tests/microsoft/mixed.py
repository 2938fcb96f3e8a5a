"""Runs a library of one compiler with plugin modules of the same or of another one: mixed.py run|table|write ...

    run LIBRARY-BUILD PLUGIN-BUILD RESULT    tries one pair of builds, and writes what works into the file RESULT
    table PAGE RESULT...                     compares the table of the page with the results
    write PAGE RESULT...                     writes the table into the page

A build folder is named like its compiler: release for mingw-w64, microsoft for Microsoft's C++ ABI.
"""

import json
import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COMPILERS = {'release': 'mingw-w64', 'microsoft': 'Microsoft'}
BEGIN, END = '<!-- made by tests/microsoft/mixed.py: begin -->', '<!-- end -->'

# What one pair is tried with: the row of the table, the program, and its tests. The library's tests are the host, too, so that
# their hooks inside an operation of the plugin are the host's code.
LIBRARY, AGENT = 'orlindex_library_tests', 'agent_tests'
ROWS = [
    ('The module is verified and loaded, its factory is found', LIBRARY, 'Loading.*'),
    ('Each operation is called at its slot, with its arguments; its result arrives', LIBRARY,
     'Slots.*:PrivateSlots.*:ServerManager*.*:PrivateFallbacks*.*'),
    ('Texts of any length arrive', LIBRARY, 'FlatText*.*:*FlatTokens*.*'),
    ('Observers are notified', LIBRARY, 'Events.*'),
    ('The sign-in agent reads and fills the product configuration', AGENT, 'PluginProductJsonTest.*:PluginClientTest.*'),
    ('The sign-in agent serves the hosts of the demo that sign in', None, None),
    ('`Ping` passes its map', AGENT, 'PluginPingTest.ThePingAddsTheServersTexts'),
    ('An exception of the plugin', LIBRARY, 'PluginCompiler.*'),
]
# A map of one compiler is no map for another one. What happens then is undefined, so it is not tried.
ONE_COMPILER_ONLY = '`Ping` passes its map'
EXCEPTION = 'An exception of the plugin'


def wine(program, arguments, variables):
    command = [ROOT / 'scripts/wine-run', program, *arguments]
    result = subprocess.run(command, env={**os.environ, **variables}, cwd=program.parent, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return result.returncode, result.stdout.decode('utf-8', 'replace').replace('\r', '')


def demo(library, plugin):
    command = ['bash', ROOT / 'scripts/demo.sh', '--built', library, '--agent', plugin / 'agent']
    if library != plugin:
        command.append('--without-tools')  # Its calls are among those that need one compiler.
    result = subprocess.run(command,
                            env={key: value for key, value in os.environ.items() if key != 'WINEPREFIX'},
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return result.returncode, result.stdout.decode('utf-8', 'replace')


def ran(program, output):
    """Whether tests ran at all: a filter that matches nothing is an error of this script."""
    pattern = r'^([1-9]\d*) run, ' if program == LIBRARY else r'\] ([1-9]\d*) tests? from '
    return re.search(pattern, output, re.MULTILINE)


def try_row(row, program, tests, library, plugin):
    """Returns the text for the table."""
    one_compiler = library == plugin
    if row == ONE_COMPILER_ONLY and not one_compiler:
        return 'no'
    if one_compiler and program == LIBRARY and row != EXCEPTION:
        return 'yes'  # These tests are part of the ordinary run of each build.
    if program is None:
        status, output = demo(library, plugin)
    else:
        variables = {} if one_compiler else {
            'ORLINDEX_TEST_OTHER_PLUGINS': str(plugin / 'tests/plugins'), 'ORLINDEX_TEST_OTHER_AGENT': str(plugin / 'agent')}
        status, output = wine(library / f'bin/{program}.exe', [f'--gtest_filter={tests}'], variables)
        if not ran(program, output):
            print(output)
            sys.exit(f'error: no test of {tests} ran')
    if status != 0:
        print(f'== {row}: exit code {status}\n{output}')
        return 'no'
    if row == EXCEPTION:
        found = re.search(r'^exception of the plugin: ([^,]+),', output, re.MULTILINE)
        if not found:
            sys.exit(f'error: {program} does not say what the exception did:\n{output}')
        return found[1]
    return 'yes'


def run(library, plugin, result):
    library, plugin = Path(library).resolve(), Path(plugin).resolve()
    for build in (library, plugin):
        if not (build / 'bin/Orlindex.dll').exists():
            sys.exit(f'error: {build} has no library; scripts/test.sh builds both')
    cells = {}
    for row, program, tests in ROWS:
        cells[row] = try_row(row, program, tests, library, plugin)
        print(f'{row}: {cells[row]}')
    result = Path(result)
    result.parent.mkdir(parents=True, exist_ok=True)
    result.write_text(json.dumps({'library': COMPILERS[library.name], 'plugin': COMPILERS[plugin.name], 'cells': cells}),
                      encoding='utf-8')


def table(results):
    pairs = [json.loads(Path(result).read_text(encoding='utf-8')) for result in results]
    lines = ['| Library / plugin module | ' + ' | '.join(f'{pair["library"]} / {pair["plugin"]}' for pair in pairs) + ' |',
             '|' + '---|' * (len(pairs) + 1)]
    for row, _, _ in ROWS:
        lines.append(f'| {row} | ' + ' | '.join(pair['cells'][row] for pair in pairs) + ' |')
    return '\n'.join(lines)


def compare(page, results, write):
    page = Path(page)
    text = page.read_text(encoding='utf-8')
    before, begin, rest = text.partition(BEGIN)
    old, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f'error: {page} has no place for the table: {BEGIN} ... {END}')
    new = f'\n{table(results)}\n'
    if old == new:
        print(f'{len(ROWS)} rows, {len(results)} pairs')
    elif write:
        page.write_text(before + begin + new + end + after, encoding='utf-8')
    else:
        sys.exit(f'error: the table of {page.name} is another one than the tests give:\n{new}')


if sys.argv[1] == 'run':
    run(*sys.argv[2:5])
else:
    compare(sys.argv[2], sys.argv[3:], sys.argv[1] == 'write')
