"""docs/plugin-contract.md describes every slot of every interface, at its place, and the factory's names."""

import re

from pages import ROOT, codes, contract_slots, page, report


def main():
    contract = page('docs/plugin-contract.md')
    errors = []
    described = {}
    interface = ''
    for number, line in contract.prose:
        heading = re.match(r'^### (I\w+)$', line)
        if line.startswith('#'):
            interface = heading.group(1) if heading else ''
        row = re.match(r'^\| (\d+(?:, \d+)*|\d+ to \d+) \| (.*)$', line)
        if interface and row:
            span = [int(part) for part in re.findall(r'\d+', row.group(1))]
            numbers = range(span[0], span[1] + 1) if ' to ' in row.group(1) else span
            for slot in numbers:
                if (interface, slot) in described:
                    errors.append(f'{contract.name}:{number}: slot {slot} of {interface} was described before')
                names = codes(row.group(2))
                described[interface, slot] = names[0].split('(')[0].split()[-1] if names else ''

    expected = {}
    for line in contract_slots():
        if not line.startswith(('BaseConfig ', 'ProductConfig ')):  # Hosts' own classes, not the plugin's.
            name, slot, operation = line.split()
            expected[name, int(slot)] = operation
    for key in sorted(expected.keys() | described.keys()):
        wanted, found = expected.get(key), described.get(key)
        if wanted is None or found is None:
            errors.append(f'{key[0]} {key[1]}: {wanted} in the contract, {found} in the page')
        elif not (wanted.startswith('Reserved') and not found) and wanted != found:
            errors.append(f'{key[0]} {key[1]} is {wanted}, not {found}')

    whole = contract.path.read_text(encoding='utf-8')
    source = (ROOT / 'src/load/PluginLoader.cpp').read_text(encoding='utf-8')
    symbols = re.findall(r'"(\?GetSSOClientFactory[^"]*)"', source)
    errors.extend(f'{contract.name}: the symbol {symbol} is missing' for symbol in symbols if f'`{symbol}`' not in whole)
    if len(symbols) != 2 or not expected:
        errors.append('no symbols or slots were found in the sources')
    report(errors, f'{len(expected)} slots, {len(symbols)} symbols')


main()
