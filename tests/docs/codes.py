"""docs/diagnostics.md names every status code with its number, as talix.h does, and docs/agent.md every code that the
sign-in agent adds, as its ResultCodes.h does; docs/openid.md those of providers, as Failure.h does. None names another."""

import re

from pages import ROOT, codes, page, report


def status_codes(errors):
    header = (ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8')
    values = {name: number for name, number in re.findall(r'^ +(Id\w+) = (\d+),', header, re.M)}
    diagnostics = page('docs/diagnostics.md')
    described = {}
    for line, cells in diagnostics.rows():
        if len(cells) == 4 and cells[0].isdigit():
            described[codes(cells[1])[0]] = cells[0]
            if not cells[2]:
                errors.append(f'{diagnostics.name}:{line}: the meaning is missing')
    for name in sorted(values.keys() | described.keys()):
        if values.get(name) != described.get(name):
            errors.append(f'{name}: {values.get(name)} in talix.h, {described.get(name)} in the page')
    if not values:
        errors.append('no status code was found in talix.h')
    return len(values)


def agent_codes(errors):
    header = (ROOT / 'agent/identity/ResultCodes.h').read_text(encoding='utf-8')
    values = re.findall(r'static_cast<IdErrorCode>\((\d+)\)', header)
    agent = page('docs/agent.md')
    described = []
    for line, cells in agent.rows():
        if len(cells) == 2 and cells[0].isdigit():
            described.append(cells[0])
            if not cells[1]:
                errors.append(f'{agent.name}:{line}: the meaning is missing')
    # In the header's order, and each once.
    if described != values or not values:
        errors.append(f'{agent.name} has {", ".join(described)}; ResultCodes.h has {", ".join(values)}')
    return len(values)


def provider_codes(errors):
    header = (ROOT / 'agent/identity/openid/Failure.h').read_text(encoding='utf-8')
    values = re.findall(r'static_cast<IdErrorCode>\((\d+)\)', header)
    openid = page('docs/openid.md')
    # The first codes are those that all sources of identity share.
    described = [cells[0] for line, cells in openid.rows() if len(cells) == 2 and cells[0].isdigit() and cells[0] >= '4030']
    if described != values or not values:
        errors.append(f'{openid.name} has {", ".join(described)}; Failure.h has {", ".join(values)}')
    return len(values)


def main():
    errors = []
    count = status_codes(errors)
    added = agent_codes(errors)
    providers = provider_codes(errors)
    report(errors, f'{count} status codes, {added} of the agent, {providers} of providers')


main()
