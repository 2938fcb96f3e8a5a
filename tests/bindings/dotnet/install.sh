#!/usr/bin/env bash
# Installs the package into an empty project: tests/bindings/dotnet/install.sh PACKAGES PROJECT
#
# As NuGet does: unpacks the package whose name and version its manifest has, and copies the assembly for netstandard2.0.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/../../../scripts/lib/common.sh"

packages=$1 project=$2
rm -rf "$project"
mkdir -p "$project/packages"
package=$(echo "$packages"/Orlindex.Client.*.nupkg)
python3 -B - "$package" "$project" <<'PYTHON'
import sys
import xml.etree.ElementTree as xml
import zipfile
from pathlib import Path

package, project = map(Path, sys.argv[1:])
with zipfile.ZipFile(package) as archive:
    manifests = [name for name in archive.namelist() if name.endswith('.nuspec')]
    assert len(manifests) == 1 and '/' not in manifests[0], manifests
    manifest = {each.tag.rpartition('}')[2]: each.text for each in xml.fromstring(archive.read(manifests[0])).iter()}
    assert package.name == f'{manifest["id"]}.{manifest["version"]}.nupkg', manifest
    # Every part has a content type, and every target of a relationship is there.
    extensions = {each.get('Extension') for each in xml.fromstring(archive.read('[Content_Types].xml'))}
    assert {name.rpartition('.')[2] for name in archive.namelist()} - {'xml'} <= extensions, extensions
    for each in xml.fromstring(archive.read('_rels/.rels')):
        assert each.get('Target').lstrip('/') in archive.namelist(), each.get('Target')
    assert manifest['readme'] in archive.namelist()
    folder = project / 'packages' / manifest['id'].lower() / manifest['version']
    archive.extractall(folder)
PYTHON
cp "$project"/packages/orlindex.client/*/lib/netstandard2.0/Orlindex.Client.dll "$project/"
