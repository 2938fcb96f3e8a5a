"""The C# declarations of the package for .NET, which docs/getting-started.md shows how to use, say what the C headers say, and work.

    csharp.py COMPILER FOLDER      COMPILER: of C, for this machine

The declarations are compared with talix.h and with the numbers of tests/boundary; then each function is called once, and
the host of the page run, against a stand-in for the library on this machine."""

import os
import re
import shutil
import sys
from pathlib import Path

from pages import ROOT, page, report
from samples import run, write_files

PAGE = 'docs/getting-started.md'
SOURCES = [ROOT / 'bindings/dotnet/src/Talix.cs', ROOT / 'bindings/dotnet/src/Utf8Buffer.cs']
HERE = Path(__file__).parent / 'csharp'

# What each type of C is in C#. A pointer to a record is the record by reference.
TYPES = {
    'void': 'void',
    'talix_bool': 'bool',
    'int': 'int',
    'int32_t': 'int',
    'uint16_t': 'ushort',
    'void*': 'IntPtr',
    'const char*': '[MarshalAs(UnmanagedType.LPUTF8Str)] string',
    'talix_product_config': 'IntPtr',
    'talix_buffer*': 'ref talix_buffer',
    'talix_user_info*': 'ref talix_user_info',
    'talix_proxy_info*': 'ref talix_proxy_info',
    'const talix_proxy_info*': 'ref talix_proxy_info',
    'talix_versions*': 'ref talix_versions',
}
# C# can say more of an argument than C.
NARROWER = {('talix_get_boolean', 'key'): 'talix_boolean_key'}


def arguments_of(text):
    """[(type, name)]"""
    found = []
    for argument in text.split(','):
        argument = ' '.join(argument.split())
        if argument and argument != 'void':
            kind, name = argument.rsplit(' ', 1)
            found.append((kind, name.lstrip('@')))  # C# marks a name that is a keyword.
    return found


def functions_of_header():
    header = (ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8')
    header = re.sub(r'/\*.*?\*/', '', header, flags=re.S)
    functions = {}
    for result, name, arguments in re.findall(r'ORLINDEX_API (\w+) TALIX_CALL (talix_\w+)\(([^)]*)\);', header):
        wanted = [(NARROWER.get((name, argument), TYPES.get(kind, kind)), argument)
                  for kind, argument in arguments_of(arguments)]
        functions[name] = (TYPES.get(result, result), wanted)
    return functions


def functions_of_declarations(text, errors):
    functions = {}
    pattern = r'((?:\[[^\n]*\]\s+)*)public static extern (\w+) (talix_\w+)\(((?:[^()]|\([^()]*\))*)\);'
    for attributes, result, name, arguments in re.findall(pattern, text):
        functions[name] = (result, arguments_of(arguments))
        if '[DllImport(Dll, CallingConvention = CallingConvention.Cdecl)]' not in attributes:
            errors.append(f'{name}: not declared with the calling convention Cdecl')
        if (result == 'bool') != ('[return: MarshalAs(UnmanagedType.U1)]' in attributes):
            errors.append(f'{name}: a returned bool, and nothing else, is one byte')
    return functions


def facts():
    """What tests/boundary says of records and values, as Layout.cs takes it."""
    text = (ROOT / 'tests/boundary/RecordLayout.c').read_text(encoding='utf-8')
    found = []
    for record, field, place in re.findall(r'^CHECK_TEXT\((\w+), (\w+), (\d+), \d+\);', text, re.M):
        found += [f'place {record} {field} {place}', f'place {record} {field}_size {int(place) + 8}']
    for record, field, place in re.findall(r'^CHECK_PLACE\((\w+), (\w+), (\d+), \d+\);', text, re.M):
        found.append(f'place {record} {field} {place}')
    for record, size in re.findall(r'^CHECK_SIZE\((\w+), (\d+), \d+\);', text, re.M):
        if record not in ('talix_bool', 'talix_product_config', 'talix_event_callback'):
            found.append(f'size {record} {size}')
    found += [f'size {name} 4' for name in re.findall(r'^CHECK_ENUMERATION\((\w+)\);', text, re.M)]
    # The header's values: those of tests/boundary, and the further ones.
    header = (ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8')
    found += [f'value {name} {value}' for name, value in re.findall(r'^ +(\w+) = (-?\d+)\b(?!\))', header, re.M)
              if not name.endswith('_MAX')]
    return found


def main(compiler, folder):
    folder = Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    write_files(PAGE, folder)
    errors = []
    declared = functions_of_declarations(SOURCES[0].read_text(encoding='utf-8'), errors)
    wanted = functions_of_header()
    for name in sorted(declared.keys() | wanted.keys()):
        if declared.get(name) != wanted.get(name):
            errors.append(f'{name}: {declared.get(name)} in C#, {wanted.get(name)} by the header')
    if len(wanted) != 32:
        errors.append(f'{len(wanted)} functions were found in talix.h, not 32')

    options = {'cwd': folder, 'env': {**os.environ, 'LD_LIBRARY_PATH': str(folder), 'LC_ALL': 'C.UTF-8'}}
    run(errors, PAGE, [compiler, '-std=c99', '-Wall', '-Wextra', '-Werror', '-shared', '-fPIC', f'-I{ROOT / "include"}',
                       HERE / 'StandIn.c', '-o', 'Orlindex.dll'], **options)
    known = facts()
    if sum(fact.startswith('place') for fact in known) < 20 or sum(fact.startswith('size talix_') for fact in known) < 5:
        errors.append('tests/boundary/RecordLayout.c is not read as it is written: places or sizes are missing')
    for program, arguments in ((HERE / 'Layout.cs', known), (HERE / 'Calls.cs', []), (folder / 'SignIn.cs', [])):
        if run(errors, PAGE, ['mcs', '-langversion:5', '-platform:x64', '-warnaserror', f'-out:{program.stem}.exe',
                              *SOURCES, program], **options):
            run(errors, PAGE, ['mono', f'{program.stem}.exe', *arguments], **options)
    report(errors, f'{len(declared)} functions, {len(known)} facts')


main(*sys.argv[1:])
