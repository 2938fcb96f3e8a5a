"""The declarations for ctypes."""

from . import names

TYPES = {
    'talix_bool': 'ctypes.c_uint8',
    'int': 'ctypes.c_int32',
    'uint16_t': 'ctypes.c_uint16',
    'int32_t': 'ctypes.c_int32',
    'int64_t': 'ctypes.c_int64',
    'void*': 'ctypes.c_void_p',
    # Of records: the address of a buffer.
    'char*': 'ctypes.c_void_p',
    'const char*': 'ctypes.c_char_p',
}


def type_of(description, kind):
    if kind == 'void':
        return 'None'
    if kind in TYPES:
        return TYPES[kind]
    if names.is_enumeration(description, kind):
        return 'ctypes.c_int32'
    if any(handle['name'] == kind for handle in description['handles']):
        return 'ctypes.c_void_p'
    target = kind.removeprefix('const ').removesuffix('*')
    if kind.endswith('*') and names.is_record(description, target):
        return f'ctypes.POINTER({target})'
    return next(callback['name'] for callback in description['callbacks'] if callback['name'] == kind)


def quoted(text):
    return '"' + text.replace('\\', '\\\\').replace('"', '\\"') + '"'


def signature(description, declared):
    return [type_of(description, kind) for kind in
            [declared['returns'], *(parameter['type'] for parameter in declared['parameters'])]]


def declarations(description):
    lines = ['"""The flat interface of Orlindex.dll. Made from talix.h by bindings/generate.py. Do not edit."""', '',
             '# fmt: off', 'import ctypes', 'import enum', 'from typing import Any, Dict, Sequence, Tuple', '',
             f'LIBRARY_FILE = {quoted(description["library"]["file"])}',
             f'LIBRARY_VERSION = {quoted(description["library"]["version"])}']
    for enumeration in description['enumerations']:
        lines += ['', '', f'class {names.ENUMERATIONS[enumeration["name"]]}(enum.IntEnum):',
                  f'    """{enumeration["description"]}"""', '']
        for name, value, meaning in names.members(enumeration):
            lines += [f'    #: {meaning}', f'    {name} = {value}']
    lines += ['', '', '#: The meaning of each status code.', 'MEANINGS: Dict[int, str] = {']
    lines += [f'    {value}: {quoted(meaning)},'
              for _, value, meaning in names.members(names.status_codes(description))] + ['}']
    for record in description['records']:
        lines += ['', '', f'class {record["name"]}(ctypes.Structure):', f'    """{record["description"]}"""', '',
                  '    _fields_ = [']
        lines += [f'        ({quoted(field["name"])}, {type_of(description, field["type"])}),'
                  for field in record['fields']] + ['    ]']
    for callback in description['callbacks']:
        lines += ['', '', f'{callback["name"]} = ctypes.CFUNCTYPE({", ".join(signature(description, callback))})']
    lines += ['', '#: The type of the result and those of the arguments.',
              'FUNCTIONS: Dict[str, Tuple[Any, Sequence[Any]]] = {']
    for function in description['functions']:
        result, *arguments = signature(description, function)
        lines.append(f'    {quoted(function["name"])}: ({result}, [{", ".join(arguments)}]),')
    return '\n'.join([*lines, '}']) + '\n'
