"""The declarations for koffi: types by name, so that they exist once in a process."""

import json

from . import names


def type_of(description, kind):
    """koffi knows the base types of C by their names."""
    if kind == 'void' or kind in ('int', 'uint16_t', 'int32_t', 'int64_t', 'void*'):
        return kind
    if kind == 'talix_bool':
        return 'uint8_t'
    if kind == 'const char*':
        return 'str'
    if kind == 'char*' or any(handle['name'] == kind for handle in description['handles']):
        return 'void*'
    if names.is_enumeration(description, kind):
        return 'int32_t'
    target = kind.removeprefix('const ').removesuffix('*')
    if kind.endswith('*') and names.is_record(description, target):
        return f'{target}*'
    return next(callback['name'] + '*' for callback in description['callbacks'] if callback['name'] == kind)


def text(value):
    """A text in single quotes."""
    return "'" + json.dumps(value, ensure_ascii=False)[1:-1].replace('\\"', '"').replace("'", "\\'") + "'"


def declarations(description):
    lines = ['// The flat interface of Orlindex.dll. Made from talix.h by bindings/generate.py. Do not edit.', '',
             "'use strict';", '',
             f'exports.libraryFile = {text(description["library"]["file"])};',
             f'exports.libraryVersion = {text(description["library"]["version"])};']
    for enumeration in description['enumerations']:
        lines += ['', f'/** {enumeration["description"]} */',
                  f'exports.{names.ENUMERATIONS[enumeration["name"]]} = Object.freeze({{']
        for name, value, meaning in names.members(enumeration):
            lines += [f'    /** {meaning} */', f'    {name}: {value},']
        lines.append('});')
    lines += ['', '/** The meaning of each status code. */', 'exports.meanings = new Map([']
    lines += [f'    [{value}, {text(meaning)}],'
              for _, value, meaning in names.members(names.status_codes(description))] + [']);']
    lines += ['', '/** The fields of each record, with their types, in their order. */', 'exports.records = {']
    for record in description['records']:
        fields = ', '.join(f'{field["name"]}: {text(type_of(description, field["type"]))}' for field in record['fields'])
        lines.append(f'    {record["name"]}: {{ {fields} }},')
    lines += ['};', '', '/** The type of the result and those of the arguments. */']
    for group in ('callbacks', 'functions'):
        lines.append(f'exports.{group} = {{')
        for declared in description[group]:
            arguments = ', '.join(text(type_of(description, parameter['type'])) for parameter in declared['parameters'])
            result = text(type_of(description, declared['returns']))
            lines.append(f'    {declared["name"]}: [{result}, [{arguments}]],')
        lines.append('};')
    return '\n'.join(lines) + '\n'


def types(description):
    """The enumerations for TypeScript: a constant object, and the type of its values."""
    lines = ['// The values of the flat interface. Made from talix.h by bindings/generate.py. Do not edit.', '',
             '/** The version of the library that this package belongs to; it needs this or a later one of the major version. */',
             'export declare const libraryVersion: string;']
    for enumeration in description['enumerations']:
        name = names.ENUMERATIONS[enumeration['name']]
        lines += ['', f'/** {enumeration["description"]} */', f'export declare const {name}: {{']
        for member, value, meaning in names.members(enumeration):
            lines += [f'    /** {meaning} */', f'    readonly {member}: {value};']
        lines += ['};', f'export type {name} = (typeof {name})[keyof typeof {name}];']
    return '\n'.join(lines) + '\n'
