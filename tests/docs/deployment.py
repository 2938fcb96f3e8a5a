"""docs/deployment.md names the path variables, the keys of both files, the registry key and the limits, as the sources do."""

import re

from pages import ROOT, codes, page, report


def source(name):
    return (ROOT / 'src' / name).read_text(encoding='utf-8')


def table_below(deployment, heading):
    """The names in the first cells of the tables below a heading."""
    others = {line.lstrip('# ') for _, line in deployment.prose if line.startswith('#')} - {heading}
    return {name for _, cells in deployment.rows(without=others) for name in codes(cells[0])}


def compare(errors, what, wanted, found):
    if not wanted:
        errors.append(f'no {what} were found in the sources')
    for name in sorted(wanted ^ found):
        errors.append(f'{what}: {name} stands {"only in the sources" if name in wanted else "in no source"}')


def main():
    deployment = page('docs/deployment.md')
    text = deployment.path.read_text(encoding='utf-8')
    errors = []
    compare(errors, 'path variables', set(re.findall(r'\{L"(\w+)", \[', source('locate/SSOPathResolver.cpp'))),
            table_below(deployment, 'Path variables'))
    compare(errors, 'keys of the client config file',
            set(re.findall(r'keys\.(?:Text|Flag)\(server, "(\w+)"\)', source('locate/ClientConfig.cpp'))),
            table_below(deployment, 'Client config file'))
    document = source('load/VersionCompatibility.cpp')
    compare(errors, 'keys of the version compatibility file',
            set(re.findall(r'(?:TextAt|MemberOf)\((?:element|object), "(\w+)"\)', document)) |
            set(re.findall(r'wow64 \? "(\w+)" : "\w+"', document)) |
            set(re.findall(r'wow64 \? "\w+" : "(\w+)"', document)),
            table_below(deployment, 'Version compatibility file'))

    # What is said once, and must be what the sources say.
    facts = [
        ('locate/Registry.h', r'ServerApplicationKey = L"HKEY_LOCAL_MACHINE\\\\(.*)";', '`{}\\<version>`'),
        ('locate/Registry.h', r'LocationValueName = L"(.*)";', '`{}`'),
        ('locate/Registry.cpp', r'versionedLocationLimit = (\d+);', 'at most {} bytes'),
        ('locate/Registry.cpp', r'keyBelowLocalMachine\[\] = L"(.*)";', '`{}`'),
        ('locate/Registry.cpp', r'unversionedLocationLimit = (\d+);', 'at most {} bytes'),
        ('locate/ClientConfig.h', r'ClientConfigFileName\[\] = L"(.*)";', '`{}`'),
        ('load/VersionCompatibility.h', r'VersionCompatibilityFileName\[\] = L"(.*)";', '`{}`'),
        ('base/Files.h', r'LargestConfigFile = (\d+)ull \* 1024 \* 1024;', 'at most {} MiB'),
    ]
    for file, pattern, form in facts:
        match = re.search(pattern, source(file))
        if not match:
            errors.append(f'{file} has nothing like {pattern}')
            continue
        wanted = form.format(match.group(1).replace('\\\\', '\\'))
        if wanted not in text:
            errors.append(f'{deployment.name}: does not say {wanted}, as {file} does')
    for variable in ('ORLINDEX_PINNED_ROOT', 'ORLINDEX_SIGNERS'):
        if f'set({variable} ' not in (ROOT / 'cmake/PinnedRoot.cmake').read_text(encoding='utf-8'):
            errors.append(f'there is no setting {variable}')
    report(errors, f'{len(facts)} facts, path variables and keys')


main()
