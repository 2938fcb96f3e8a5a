# Packs the kit for host developers from the build with Visual Studio 2022, and uses it as they would:
#
#     scripts/windows/package.ps1
#
# Writes build/Orlindex-<version>-win64.zip, unpacks it, builds its examples as another project, and runs them with the kit's
# library and sign-in agent (demo.ps1).

. "$PSScriptRoot/common.ps1"

& "$PSScriptRoot/build.ps1"

Write-Step 'Pack'
$work = "$Build\package work"
$examples = "$work\examples"
if (Test-Path -LiteralPath $work)
{
    Remove-Item -LiteralPath $work -Recurse
}
New-Item -ItemType Directory $work | Out-Null
Invoke-Native 'cpack.exe' '--config', "$Build/CPackConfig.cmake", '-B', $work
$archive = @(Get-ChildItem -LiteralPath $work -Filter 'Orlindex-*-win64.zip')
if ($archive.Count -ne 1)
{
    throw "cpack made $($archive.Count) archives instead of one"
}
Copy-Item -LiteralPath $archive[0].FullName -Destination "$Root/build/"
Expand-Archive -LiteralPath $archive[0].FullName -DestinationPath $work
$kit = "$work\$($archive[0].BaseName)"

Write-Step 'Build the examples with the kit'
# Without these names CMake would prefer a gcc in the PATH.
Invoke-Native 'cmake.exe' '-G', 'Ninja', '-S', "$kit/examples", '-B', $examples, '-DCMAKE_BUILD_TYPE=Release',
    '-DCMAKE_C_COMPILER=cl', '-DCMAKE_CXX_COMPILER=cl', "-DOrlindex_DIR=$($kit.Replace('\', '/'))/lib/cmake/Orlindex"
Invoke-Native 'cmake.exe' '--build', $examples

& "$PSScriptRoot/demo.ps1" -Kit $kit -Hosts $examples
Write-Output "Packed: build/$($archive[0].Name) ($($archive[0].Length) bytes)"
