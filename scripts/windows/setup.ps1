# Checks that this Windows machine can build and test Orlindex, and makes ready what the tests need in .deps/:
#
#     scripts/windows/setup.ps1 [-Install]
#
# It prints the path of each tool, or how to install it, and throws if one is missing. -Install installs osslsigncode by MSYS2,
# which hosted runners have in C:/msys64.

param([switch] $Install)

. "$PSScriptRoot/common.ps1"

if ($Install -and -not (Find-Signer))
{
    Write-Step 'Install osslsigncode'
    Invoke-Native 'C:/msys64/usr/bin/bash.exe' '-lc',
        'pacman --sync --refresh --needed --noconfirm mingw-w64-ucrt-x86_64-osslsigncode'
}

Write-Step 'Tools'
$vcpkg = Find-Vcpkg
$studio = Find-VisualStudio
if ($studio)
{
    Enter-DeveloperShell # It contains CMake and Ninja.
}
$tools = @(
    @('Visual Studio 2022', $studio, 'install it with the workload for desktop development in C++'),
    @('CMake', (Find-Program 'cmake.exe'), 'install it, or select it in the installer of Visual Studio'),
    @('Ninja', (Find-Program 'ninja.exe'), 'install it, or select CMake in the installer of Visual Studio'),
    @('Git', (Find-Program 'git.exe'), 'install Git for Windows'),
    @('OpenSSL', (Find-OpenSsl), 'install Git for Windows, which contains it'),
    @('osslsigncode', (Find-Signer), 'scripts/windows/setup.ps1 -Install installs it by MSYS2 in C:/msys64'),
    @('Node.js', (Find-Program 'node.exe'), 'install version 18 or newer'),
    @('Python', (Find-Program 'python.exe'), 'install version 3'),
    @('vcpkg', $vcpkg, '')
)
$missing = @()
foreach ($tool in $tools)
{
    if ($tool[1])
    {
        Write-Output ('  {0,-20} {1}' -f $tool[0], $tool[1])
    }
    else
    {
        Write-Output ('  {0,-20} missing: {1}' -f $tool[0], $tool[2])
        $missing += $tool[0]
    }
}
if ($missing)
{
    throw "tools are missing: $($missing -join ', ')"
}

Write-Step 'Node.js packages for the tests'
$node = "$Root/.deps/node"
New-Item -ItemType Directory -Force $node | Out-Null
Copy-Item -LiteralPath "$Root/tests/node/package.json", "$Root/tests/node/package-lock.json" -Destination $node
Push-Location -LiteralPath $node
try
{
    Invoke-Native 'npm.cmd' 'ci', '--ignore-scripts', '--no-audit', '--no-fund'
}
finally
{
    Pop-Location
}

# vcpkg does not make this folder itself.
if ($env:VCPKG_DEFAULT_BINARY_CACHE)
{
    New-Item -ItemType Directory -Force $env:VCPKG_DEFAULT_BINARY_CACHE | Out-Null
}
# Names the state of vcpkg's ports for the key of a cache.
if ($env:GITHUB_OUTPUT)
{
    $ports = (Get-FileHash -LiteralPath "$vcpkg/versions/baseline.json").Hash
    Add-Content -LiteralPath $env:GITHUB_OUTPUT -Value "ports=$ports"
}
