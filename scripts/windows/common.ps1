# Shared by the scripts of this folder. Dot-source it; do not run it. Sets $Root (the source tree) and $Build (the build folder of
# the preset msvc), and ends the calling script at its first error.

Set-StrictMode -Version Latest
$ErrorActionPreference = 'Stop'
# PowerShell 7.4 can turn an exit code into an error by itself. Invoke-Native does so in every version.
$PSNativeCommandUseErrorActionPreference = $false

$Root = [IO.Path]::GetFullPath("$PSScriptRoot/../..")
$Build = [IO.Path]::GetFullPath("$Root/build/msvc")

function Write-Step([string] $Title)
{
    Write-Output '' "== $Title"
}

# Runs a program and throws if it fails: PowerShell itself continues after an exit code other than 0. The arguments are an array of
# quoted texts, because PowerShell splits an unquoted -DNAME=1.2 at its full stop.
function Invoke-Native([string] $Program, [string[]] $Arguments = @())
{
    & $Program @Arguments
    if ($LASTEXITCODE -ne 0)
    {
        throw "$Program $Arguments ended with exit code $LASTEXITCODE"
    }
}

# The path of the first program that exists: a name that the PATH finds, or a full path. Nothing if there is none.
function Find-Program([string[]] $Candidates)
{
    foreach ($candidate in $Candidates)
    {
        if ([IO.Path]::IsPathRooted($candidate))
        {
            if (Test-Path -LiteralPath $candidate -PathType Leaf)
            {
                return $candidate
            }
            continue
        }
        $found = Get-Command -Name $candidate -CommandType Application -ErrorAction SilentlyContinue |
            Select-Object -First 1
        if ($found)
        {
            return $found.Source
        }
    }
}

# A path in the form that CMake stores. Throws if there is none.
function Get-ToolPath([string] $Name, [string] $Path)
{
    if (-not $Path)
    {
        throw "$Name was not found: scripts/windows/setup.ps1 says how to install it"
    }
    $Path.Replace('\', '/')
}

# The folder of Visual Studio 2022 with the C++ tools for x64. Nothing if it is not installed.
function Find-VisualStudio
{
    $locator = "${env:ProgramFiles(x86)}/Microsoft Visual Studio/Installer/vswhere.exe"
    if (Test-Path -LiteralPath $locator)
    {
        Invoke-Native $locator '-latest', '-products', '*', '-version', '[17.0,18.0)', '-requires',
            'Microsoft.VisualStudio.Component.VC.Tools.x86.x64', '-property', 'installationPath'
    }
}

# OpenSSL's tool: the one of the PATH, or the one of Git for Windows, which only its own shell has in the PATH.
function Find-OpenSsl
{
    $candidates = @('openssl.exe')
    $git = Find-Program 'git.exe'
    if ($git)
    {
        $candidates += [IO.Path]::GetFullPath((Join-Path (Split-Path $git) '../usr/bin/openssl.exe'))
    }
    Find-Program $candidates
}

function Find-Signer
{
    Find-Program 'osslsigncode.exe', 'C:/msys64/ucrt64/bin/osslsigncode.exe'
}

# The folder of vcpkg. Throws if it is missing, or if it is the vcpkg that Visual Studio contains.
function Find-Vcpkg
{
    $folder = $env:VCPKG_ROOT
    if (-not $folder)
    {
        $folder = $env:VCPKG_INSTALLATION_ROOT # on a hosted runner
    }
    if (-not $folder -or -not (Test-Path -LiteralPath "$folder/scripts/buildsystems/vcpkg.cmake"))
    {
        throw 'vcpkg was not found: clone it, run its bootstrap-vcpkg.bat, and set VCPKG_ROOT to its folder'
    }
    # Without ports of its own it would require a baseline in vcpkg.json.
    if (-not (Test-Path -LiteralPath "$folder/ports"))
    {
        throw "$folder is the vcpkg of Visual Studio, which has no ports: set VCPKG_ROOT to the folder of a clone"
    }
    [IO.Path]::GetFullPath($folder)
}

# Gives this process the environment of the x64 compiler, and VCPKG_ROOT.
function Enter-DeveloperShell
{
    $vcpkg = Find-Vcpkg
    if ($env:VSCMD_ARG_TGT_ARCH -ne 'x64')
    {
        $folder = Find-VisualStudio
        if (-not $folder)
        {
            throw 'Visual Studio 2022 with the C++ tools for x64 was not found'
        }
        Import-Module "$folder/Common7/Tools/Microsoft.VisualStudio.DevShell.dll"
        Enter-VsDevShell -VsInstallPath $folder -SkipAutomaticLocation -DevCmdArguments '-arch=x64 -host_arch=x64' |
            Out-Null
    }
    # Visual Studio's environment sets it to its own vcpkg.
    $env:VCPKG_ROOT = $vcpkg
}
