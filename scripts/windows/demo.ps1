# Shows Orlindex at work on Windows: lays out an installation in build/msvc, runs the example hosts in it, which sign a user in and
# out and start, watch and quit a server process, and lets the diagnostic tool retrace the start-up:
#
#     scripts/windows/demo.ps1                              with the build in build/msvc, which it makes
#     scripts/windows/demo.ps1 -Kit FOLDER -Hosts FOLDER    with an unpacked kit, and the hosts that were built with it
#
# It changes nothing outside build/msvc: a client config file names the server application, and the user's data has a folder of its
# own. It throws if a step fails.

param([string] $Kit = '', [string] $Hosts = '')

. "$PSScriptRoot/common.ps1"

if ($Kit)
{
    $library = "$Kit/bin/Orlindex.dll"
    $doctor = "$Kit/bin/orlindex-doctor.exe"
    $agent = "$Kit/agent"
}
else
{
    & "$PSScriptRoot/build.ps1"
    $library = "$Build/bin/Orlindex.dll"
    $doctor = "$Build/tools/orlindex-doctor.exe"
    $agent = "$Build/agent"
    $Hosts = "$Build/examples"
}

# The paths contain a space, as those of most installations do.
$installation = "$Build\demo"
$hostFolder = "$installation\Example Host"
$serverFolder = "$installation\Pellwick 1.10.0"
$server = "$serverFolder\Pellwick.exe"
$env:PELLWICK_SIMULATOR_DATA = "$installation\data"

Write-Step 'Lay out an installation'
if (Test-Path -LiteralPath $installation)
{
    if (Test-Path -LiteralPath $server)
    {
        Invoke-Native $server '--quit' # A run that failed may have left it.
    }
    Remove-Item -LiteralPath $installation -Recurse
}
New-Item -ItemType Directory $hostFolder, $serverFolder | Out-Null
Copy-Item -LiteralPath $library, "$Hosts/cpp_host.exe", "$Hosts/c_host.exe", "$Hosts/tools_host.exe" -Destination $hostFolder
Copy-Item -LiteralPath "$agent/Pellwick.exe", "$agent/PellwickClient.dll", "$agent/TALIXVersionCompatibility.config" `
    -Destination $serverFolder
# Set-Content of Windows PowerShell would write a byte order mark.
$config = @{ ssoServer = @{ bundleId = 'com.kestrany.simulator'; searchPaths = $serverFolder } }
[IO.File]::WriteAllText("$hostFolder\Orlindex.config", (ConvertTo-Json $config))
Get-ChildItem -LiteralPath $installation -Recurse -File | ForEach-Object { Write-Output "  $($_.FullName)" }

Write-Step 'Ask the server application for its version'
Invoke-Native $server '--version'

try
{
    foreach ($name in 'cpp_host', 'c_host', 'tools_host')
    {
        Write-Step "Run $name"
        Invoke-Native "$hostFolder\$name.exe"
    }
    Write-Step 'Diagnose the installation'
    Invoke-Native $doctor '--host', $hostFolder, '--load'
}
finally
{
    # Otherwise it would end a minute after its last host, and keep its files in use until then.
    Invoke-Native $server '--quit'
}
Write-Output '' 'Everything succeeded.'
