"""docs/fallbacks.md has a row for everything that the library exports, and for nothing else; its slots are those of the
plugin contract, and its fallbacks those that the forwarding members name in the sources."""

import re
from collections import Counter

from pages import ROOT, codes, contract_slots, page, report

# Slots that the library calls itself, while it starts and configures the plugin.
CALLED_BY_THE_LOADER = {
    'ISSOServerManager 2 ConfigureServerApp',
    'ISSOServerManager 6 SetProcessIdentityName',
    'ISSOServerManager 8 SetServerIdentityName',
    'ISSOServerManager 18 SetSupportBothLocalAndAdmin',
}
FORWARDED = ('ISSOClient ', 'ISSOClientPrivate ', 'ISSOServerManager ', 'ISSOClientModule ')
FALLBACKS = {
    'IdClientUnavailable': '3005',
    'IdFailed': '3004',
    'TALIX_SERVER_UNAVAILABLE': '-1',
    'static_cast<Server>(0)': '0',
    'static_cast<TALIXEnvironment>(0)': '0',
    'std::uint32_t{0}': '0',
    '0': '0',
    'false': 'false',
    'true': 'true',
}


def plain_name(signature):
    """Class::Member, or a function's name, without arguments."""
    name = signature.replace('Kestrany::IdentityServices::', '').replace('[abi:cxx11]', '')
    return re.sub(r'\(.*$', '', name)


def exported_names():
    lines = (ROOT / 'tests/boundary/exports.txt').read_text(encoding='utf-8').splitlines()
    return Counter(plain_name(line) for line in lines if not line.startswith(('typeinfo for', 'vtable for')))


def first_argument(arguments):
    depth = 0
    for position, character in enumerate(arguments):
        depth += {'(': 1, ')': -1}.get(character, 0)
        if character == ',' and depth == 0:
            return arguments[:position]
    return arguments


def fallbacks_of_sources():
    """{(member, operation): value} of the members that only forward."""
    found = {}
    for file in (ROOT / 'src').rglob('*.cpp'):
        source = file.read_text(encoding='utf-8')
        for match in re.finditer(r'^\S[^;{}]*?\b(\w+::\w+)\([^;{}]*\)(?: const)?\n\{\n    return '
                                 r'Forward<&\w+::(\w+)>\(([^;]*)\);\n\}', source, re.M):
            member, operation, arguments = match.groups()
            found[member, operation] = first_argument(arguments)
    return found


def flat_fallbacks_of_sources():
    """{function: (result while not initialized, result without client)} of those that have the usual shape."""
    found = {}
    for file in (ROOT / 'src/api').glob('Flat*.cpp'):
        source = file.read_text(encoding='utf-8')
        for name, body in re.findall(r'^\w+ TALIX_CALL (talix_\w+)\([^)]*\)\n\{\n(.*?)^\}', source, re.M | re.S):
            usual = re.search(r'\bWithClient\((\w+),', body)
            if usual:
                found[name] = ('2000', {**FALLBACKS, 'IdApiUnavailable': '3071', 'IdSuccess': '1000'}[usual.group(1)])
    return found


def flat_parameters_of_header():
    """{function: (names of its parameters)}"""
    header = (ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8')
    found = {}
    for name, parameters in re.findall(r'ORLINDEX_API \w+ TALIX_CALL (talix_\w+)\(([^)]*)\);', header):
        found[name] = tuple(re.findall(r'(\w+)(?:,|$)', '' if parameters == 'void' else parameters))
    return found


def main():
    fallbacks = page('docs/fallbacks.md')
    errors = []
    described = Counter()
    slots = set()
    results = {}
    flat = {}
    parameters = {}
    for line, cells in fallbacks.rows(without={'Texts'}):
        place = f'{fallbacks.name}:{line}'
        name = plain_name(codes(cells[0])[0])
        described[name] += 1
        if name.startswith('talix_'):
            parameters[name] = tuple(re.findall(r'(\w+)[,)]', codes(cells[0])[0]))
            flat[name] = (place, tuple(re.split(r'[;:, ]', cell)[0] for cell in cells[2:4]))
        rows_slots = re.findall(r'(\w+ \d+) `(\w+)`', cells[-1])
        slots.update(f'{where} {operation}' for where, operation in rows_slots)
        for _, operation in rows_slots:
            results[name, operation] = (place, re.split(r'[;: ]', cells[1])[0])

    exported = exported_names()
    for name in sorted(exported | described):
        if exported[name] != described[name]:
            errors.append(f'{name}: {exported[name]} exported, {described[name]} described')

    contract = set(contract_slots())
    for slot in sorted(slots - contract):
        errors.append(f'there is no slot {slot}')
    needed = {slot for slot in contract if slot.startswith(FORWARDED) and 'Reserved' not in slot}
    for slot in sorted(needed - CALLED_BY_THE_LOADER - slots):
        errors.append(f'nothing forwards to slot {slot}')

    for name, wanted in sorted(flat_parameters_of_header().items()):
        if parameters.get(name) != wanted:
            errors.append(f'{name}: the parameters are {wanted} in the header and {parameters.get(name)} in the page')

    values = fallbacks_of_sources()
    for key, value in sorted(values.items()):
        if key not in results:
            errors.append(f'{key[0]} forwards to {key[1]}, and the page does not say so')
        elif value not in FALLBACKS or results[key][1] != FALLBACKS[value]:
            errors.append(f'{results[key][0]}: {key[0]} returns {value}, not {results[key][1]}')
    if len(values) < 40:
        errors.append(f'only {len(values)} forwarding members were recognised in the sources')
    usual = flat_fallbacks_of_sources()
    for name, result in sorted(usual.items()):
        place, documented = flat.get(name, (fallbacks.name, None))
        if result != documented:
            errors.append(f'{place}: {name} returns {result} while not initialized and without client, '
                          f'not {documented}')
    if len(usual) < 15:
        errors.append(f'only {len(usual)} flat functions were recognised in the sources')
    report(errors, f'{sum(exported.values())} exported names, {len(slots)} slots, {len(values) + len(usual)} fallbacks')


main()
