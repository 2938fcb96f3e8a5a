"""What the checks of the workflow files and of scripts/windows report: broken.py ROOT

Copies the tree, breaks one thing in the copy at a time, and expects a finding with a cause.
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

WORKFLOW = '.github/workflows/ci.yml'
BUILD = 'scripts/windows/build.ps1'
COMMON = 'scripts/windows/common.ps1'
DEMO = 'scripts/windows/demo.ps1'
LEFT_OUT = 'scripts/windows/left-out.txt'
FOLDERS = ('.ci', '.github', 'agent', 'bench', 'cmake', 'docs', 'examples', 'include', 'scripts', 'src', 'tests', 'tools')
FILES = ('CMakeLists.txt', 'CMakePresets.json', 'vcpkg.json')

# Check, file, what is replaced, by what, and the finding.
CASES = (
    ('lint', WORKFLOW, 'runs-on: windows-latest', 'runs-on: windows-lates', 'label "windows-lates" is unknown'),
    ('lint', WORKFLOW, 'persist-credentials:', 'persist-credential:', 'input "persist-credential" is not defined'),
    ('lint', WORKFLOW, 'timeout-minutes:', 'timeout-minute:', 'unexpected key "timeout-minute"'),
    ('lint', WORKFLOW, 'steps.setup.outputs.ports', 'steps.set-up.outputs.ports', 'property "set-up" is not defined'),
    ('lint', WORKFLOW, 'matrix.release }}\n    runs-on', 'matrix.version }}\n    runs-on', 'property "version" is not defined'),
    ('lint', WORKFLOW, '!cancelled()', '!canceled()', 'undefined function "canceled"'),
    ('lint', WORKFLOW, '  windows:\n', ' windows:\n', '[syntax-check]'),

    ('names', WORKFLOW, 'bash .ci/run', 'bash .ci/runs', 'there is no file .ci/runs'),
    ('names', WORKFLOW, 'windows/demo.ps1', 'windows/demos.ps1', 'there is no file scripts/windows/demos.ps1'),
    ('names', WORKFLOW, 'setup.ps1 -Install', 'setup.ps1 -Instal', 'there is no parameter of scripts/windows/setup.ps1 Instal'),
    ('names', WORKFLOW, 'bash .ci/run', 'make test', 'neither a script of this tree nor a command of CMake: make test'),
    ('names', WORKFLOW, 'bash .ci/run', 'cmake --preset nativ', 'there is no configure preset nativ'),
    ('names', WORKFLOW, 'bash .ci/run', 'cmake --build --preset native --target orlindex_unit',
     'there is no target orlindex_unit'),
    ('names', WORKFLOW, 'scripts/lib/packages.sh', 'scripts/lib/package.sh', 'there is no file scripts/lib/package.sh'),
    ('names', WORKFLOW, 'cmake/mingw-*.cmake', 'cmake/mingw64-*.cmake', 'there is no file cmake/mingw64-*.cmake'),
    ('names', WORKFLOW, 'build/msvc/test-report.xml', 'build/msvc/report.xml',
     'there is no script that makes build/msvc/report.xml'),
    ('names', WORKFLOW, 'actions/cache@v4', 'actions/cache@main', 'not an action of "actions" by its major version'),
    ('names', WORKFLOW, 'actions/cache@v4', 'somebody/cache@v4', 'not an action of "actions" by its major version'),
    ('names', WORKFLOW, 'contents: read', 'contents: write', 'the permissions are not "contents: read"'),
    ('names', WORKFLOW, 'persist-credentials: false', 'persist-credentials: true', 'the checkout would leave a token'),
    ('names', WORKFLOW, '    timeout-minutes: 180\n', '', 'it has no time limit'),
    ('names', BUILD, "'--preset', 'msvc', '-D", "'--preset', 'msvs', '-D", 'there is no configure preset msvs'),
    ('names', BUILD, "'--build', '--preset', 'msvc'", "'--build', '--preset', 'coverages'", 'there is no build preset coverages'),
    ('names', BUILD, 'ORLINDEX_BUILD_AGENT', 'ORLINDEX_BUILD_AGENTS', 'there is no CMake variable ORLINDEX_BUILD_AGENTS'),
    ('names', BUILD, 'FEATURES=tests', 'FEATURES=test', 'there is no vcpkg feature test'),
    ('names', 'scripts/windows/package.ps1', 'CMAKE_CXX_COMPILER', 'CMAKE_CPP_COMPILER', 'there is no CMake variable CMAKE_CPP'),
    ('names', 'scripts/windows/package.ps1', '/demo.ps1', '/demos.ps1', 'there is no file scripts/windows/demos.ps1'),
    ('names', 'scripts/windows/setup.ps1', 'tests/node/package.json', 'tests/nodes/package.json',
     'there is no file tests/nodes/package.json'),
    ('names', 'CMakePresets.json', '"ORLINDEX_COVERAGE"', '"ORLINDEX_COVERAGES"', 'there is no CMake variable ORLINDEX_COVERAGES'),
    ('names', LEFT_OUT, 'MachineRoots.AListedNameBelowARootThatThe', 'MachineRoots.AListedNameThatThe',
     'there is no test MachineRoots'),
    ('names', LEFT_OUT, 'doctor.MachineDoctorRoots.AnExpired', 'doctor.MachineDoctorRoot.AnExpired',
     'there is no test doctor.MachineDoctorRoot'),
    ('names', LEFT_OUT, ': adds a root certificate', '', 'not of the form'),
    ('products', DEMO, '$agent/Pellwick.exe', '$agent/bin/Pellwick.exe', 'agent/bin/Pellwick.exe'),
    ('products', DEMO, '$Build/tools/orlindex-doctor.exe', '$Build/bin/orlindex-doctor.exe', 'bin/orlindex-doctor.exe'),

    ('powershell', BUILD, "Write-Step 'Build'", "Write-Step 'Build", 'syntax error'),
    ('powershell', COMMON, 'if ($LASTEXITCODE -ne 0)', 'if ($LASTEXITCODE -ne 0', ''),
    ('powershell', BUILD, 'try\n{', 'try\n', ''),
    ('powershell', BUILD, '"$PSScriptRoot/common.ps1"', '"$PSScriptRoot/build.ps1"', 'does not source common.ps1'),
    ('powershell', BUILD, "Invoke-Native 'cmake.exe' '--build',", "cmake '--build',", 'starts cmake without Invoke-Native'),
    ('powershell', BUILD, "Invoke-Native 'cmake.exe' '--build',", "& 'cmake.exe' '--build',", 'without Invoke-Native'),
    ('powershell', BUILD, 'Pop-Location', 'Pop-Locations', 'Pop-Locations is no function'),
    ('powershell', COMMON, "$ErrorActionPreference = 'Stop'", "$ErrorActionPreference = 'Continue'", "no $ErrorActionPreference"),
    ('powershell', COMMON, '# Runs a program', '# Runs one program\u2019s', 'a character outside ASCII'),
)


def command(check, root, tree):
    here = root / 'tests/workflow'
    if check == 'lint':
        return ['node', here / 'lint.mjs', tree / WORKFLOW]
    if check == 'powershell':
        return ['node', here / 'powershell.mjs', *sorted((tree / 'scripts/windows').glob('*.ps1'))]
    # In a build that does not exist every product is missing. The finding must name the broken one.
    products = [tree / 'no-build'] if check == 'products' else []
    return ['node', here / 'names.mjs', tree, *products]


def run(check, root, tree):
    return subprocess.run(command(check, root, tree), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
                          stdin=subprocess.DEVNULL, env={'ORLINDEX_NODE': str(root / '.deps/node'), **os.environ})


def main(root):
    errors = []
    with tempfile.TemporaryDirectory() as folder:
        tree = Path(folder)
        for name in FOLDERS:
            shutil.copytree(root / name, tree / name)
        for name in FILES:
            shutil.copy(root / name, tree)
        for check in ('lint', 'names', 'powershell'):
            done = run(check, root, tree)
            if done.returncode != 0:
                errors.append(f'{check}: a finding without a break:\n{done.stdout}')
        for check, name, old, new, finding in CASES:
            file = tree / name
            text = file.read_text(encoding='utf-8')
            if old not in text:
                errors.append(f'{check}: {name} does not contain {old!r} any more')
                continue
            file.write_text(text.replace(old, new, 1), encoding='utf-8', newline='\n')
            done = run(check, root, tree)
            file.write_text(text, encoding='utf-8', newline='\n')
            if done.returncode != 1 or finding not in done.stdout:
                errors.append(f'{check}, {name}: {old!r} -> {new!r}: expected {finding!r}, ended with {done.returncode}\n'
                              f'{done.stdout}')
    print('\n'.join(errors) if errors else f'{len(CASES)} breaks, each with its finding')
    return 1 if errors else 0


if __name__ == '__main__':
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(Path(sys.argv[1]).resolve()))
