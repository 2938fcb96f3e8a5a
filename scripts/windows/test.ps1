# Builds Orlindex with Visual Studio 2022 and runs the tests that need no Debian and no Wine:
#
#     scripts/windows/test.ps1 [-Matching REGULAR-EXPRESSION]
#
# left-out.txt names the tests that do not run, each with its reason. Tests whose suite starts with "Machine" write the registry
# of the machine; without an administrator's rights they do not run either. The report is build/msvc/test-report.xml.

param([string] $Matching = '')

. "$PSScriptRoot/common.ps1"

& "$PSScriptRoot/build.ps1"

# The lines of ctest's list: "  Test  #12: Suite.Name".
function Get-TestName
{
    Invoke-Native 'ctest.exe' '--preset', 'msvc', '--show-only' |
        ForEach-Object { if ($_ -match '^ *Test +#[0-9]+: (.+)$') { $Matches[1].Trim() } }
}

# The names in left-out.txt. Throws if there is no such test, because the list would then leave out nothing.
function Get-LeftOut([string[]] $Tests)
{
    foreach ($line in Get-Content -LiteralPath "$PSScriptRoot/left-out.txt")
    {
        if ($line -match '^([^#:]+): (.+)$')
        {
            $name = $Matches[1]
            if ($Tests -notcontains $name)
            {
                throw "left-out.txt names a test that does not exist: $name"
            }
            Write-Host "left out: $name ($($Matches[2]))"
            $name
        }
    }
}

function Test-Administrator
{
    $user = [Security.Principal.WindowsPrincipal] [Security.Principal.WindowsIdentity]::GetCurrent()
    $user.IsInRole([Security.Principal.WindowsBuiltInRole]::Administrator)
}

# The folder for temporary files often has a short name such as RUNNER~1 in its path; tests compare full names.
$temporary = "$Build\temp"
New-Item -ItemType Directory -Force $temporary | Out-Null
$env:TEMP = $temporary
$env:TMP = $temporary

Push-Location -LiteralPath $Root
try
{
    Write-Step 'Tests'
    $excluded = @(Get-LeftOut (Get-TestName) | ForEach-Object { $_.Replace('.', '[.]') })
    if (-not (Test-Administrator))
    {
        Write-Output 'left out: all suites that start with "Machine" (this user is not an administrator)'
        $excluded += '(.*[.])?Machine.*'
    }
    $options = @('--preset', 'msvc', '-j', $env:NUMBER_OF_PROCESSORS, '--output-junit', "$Build/test-report.xml")
    if ($excluded)
    {
        $options += '-E', ('^(' + ($excluded -join '|') + ')$')
    }
    if ($Matching)
    {
        $options += '-R', $Matching
    }
    Invoke-Native 'ctest.exe' $options
}
finally
{
    Pop-Location
}
