"""The description as a source in C: each line compiles only if it is true."""


def number(value):
    return '(-2147483647 - 1)' if value == -2147483648 else str(value)


def signature(declared, name):
    kinds = ', '.join(parameter['type'] for parameter in declared['parameters']) or 'void'
    return f'{declared["returns"]}(TALIX_CALL* {name})({kinds})'


def source(description):
    lines = ['/* Made by bindings/generate.py from bindings/interface.json. */', '#include <stddef.h>', '',
             '#include "orlindex/talix.h"', '']

    def holds(condition):
        lines.append(f'_Static_assert({condition}, "{condition}");')

    for group in ('enumerations', 'aliases', 'handles', 'callbacks', 'records'):
        for declared in description[group]:
            holds(f'sizeof({declared["name"]}) == {declared["size"]}')
    for enumeration in description['enumerations']:
        for value in enumeration['values']:
            holds(f'{value["name"]} == {number(value["value"])}')
    for record in description['records']:
        holds(f'_Alignof({record["name"]}) == {record["alignment"]}')
        for field in record['fields']:
            place = f'{record["name"]}, {field["name"]}'
            holds(f'offsetof({place}) == {field["offset"]}')
            holds(f'_Generic((({record["name"]}*)0)->{field["name"]}, {field["type"]}: 1, default: 0)')
    # The exact types, in both directions: a pointer to a function converts implicitly only to its own type.
    for callback in description['callbacks']:
        name = f'check_{callback["name"]}'
        lines.append(f'typedef {signature(callback, name)};')
        holds(f'_Generic(({callback["name"]})0, {name}: 1, default: 0)')
    for function in description['functions']:
        name = f'check_{function["name"]}'
        lines.append(f'typedef {signature(function, name)};')
        holds(f'_Generic(&{function["name"]}, {name}: 1, default: 0)')
    return '\n'.join(lines) + '\n'
