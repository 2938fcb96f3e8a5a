# Builds Orlindex with Visual Studio 2022 (preset msvc) into build/msvc, with sign-in agent, tools, examples and tests:
#
#     scripts/windows/build.ps1
#
# scripts/windows/setup.ps1 says whether the machine has what it needs.

. "$PSScriptRoot/common.ps1"

Enter-DeveloperShell
$openSsl = Get-ToolPath 'OpenSSL' (Find-OpenSsl)
$signer = Get-ToolPath 'osslsigncode' (Find-Signer)
# Tests configure projects that look for it. At the end, because its folder may hold other tools with the names of Windows' own.
$env:PATH += ';' + (Split-Path $openSsl)

# CMake looks for presets in the current directory.
Push-Location -LiteralPath $Root
try
{
    Write-Step 'Configure'
    Invoke-Native 'cmake.exe' '--preset', 'msvc', '-DORLINDEX_BUILD_AGENT=ON', '-DORLINDEX_BUILD_TESTS=ON',
        '-DVCPKG_MANIFEST_FEATURES=tests', "-DORLINDEX_OPENSSL=$openSsl", "-DORLINDEX_OSSLSIGNCODE=$signer"
    Write-Step 'Build'
    Invoke-Native 'cmake.exe' '--build', '--preset', 'msvc'
}
finally
{
    Pop-Location
}
