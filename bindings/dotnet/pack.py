#!/usr/bin/env python3
"""Lays out the NuGet package as "dotnet pack" does, without an SDK: pack.py FOLDER OUTPUT

FOLDER contains the project, README.md, LICENSE, and the compiled assembly with its documentation. The name, the version and the
texts come from the project file."""

import hashlib
import sys
import xml.etree.ElementTree as xml
import zipfile
from pathlib import Path
from xml.sax.saxutils import escape

TIME = (1980, 1, 1, 0, 0, 0)  # the same bytes at every build

NUSPEC = '''<?xml version="1.0" encoding="utf-8"?>
<package xmlns="http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd">
  <metadata>
    <id>{PackageId}</id>
    <version>{Version}</version>
    <authors>{Authors}</authors>
    <license type="expression">{PackageLicenseExpression}</license>
    <readme>{PackageReadmeFile}</readme>
    <description>{Description}</description>
    <dependencies>
      <group targetFramework=".NETStandard2.0" />
    </dependencies>
  </metadata>
</package>
'''

CONTENT_TYPES = '''<?xml version="1.0" encoding="utf-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
  <Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml" />
  <Default Extension="psmdcp" ContentType="application/vnd.openxmlformats-package.core-properties+xml" />
  <Default Extension="dll" ContentType="application/octet" />
  <Default Extension="xml" ContentType="application/octet" />
  <Default Extension="md" ContentType="application/octet" />
  <Default Extension="nuspec" ContentType="application/octet" />
</Types>
'''

RELATIONSHIPS = '''<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" Target="/{PackageId}.nuspec" Id="R1" />
  <Relationship Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" Target="/{core}" Id="R2" />
</Relationships>
'''

CORE = '''<?xml version="1.0" encoding="utf-8"?>
<coreProperties xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns="http://schemas.openxmlformats.org/package/2006/metadata/core-properties">
  <dc:creator>{Authors}</dc:creator>
  <dc:description>{Description}</dc:description>
  <dc:identifier>{PackageId}</dc:identifier>
  <version>{Version}</version>
</coreProperties>
'''


def main(folder, output):
    folder = Path(folder)
    project = xml.parse(folder / 'Orlindex.Client.csproj').getroot()
    properties = {each.tag: escape(each.text or '') for group in project.iter('PropertyGroup') for each in group}
    properties['core'] = ('package/services/metadata/core-properties/'
                          + hashlib.md5(properties['Version'].encode()).hexdigest() + '.psmdcp')
    assembly = properties['AssemblyName']
    files = {
        '[Content_Types].xml': CONTENT_TYPES,
        '_rels/.rels': RELATIONSHIPS.format(**properties),
        f'{properties["PackageId"]}.nuspec': NUSPEC.format(**properties),
        f'lib/netstandard2.0/{assembly}.dll': (folder / f'{assembly}.dll').read_bytes(),
        f'lib/netstandard2.0/{assembly}.xml': (folder / f'{assembly}.xml').read_bytes(),
        'README.md': (folder / 'README.md').read_bytes(),
        properties['core']: CORE.format(**properties),
    }
    name = f'{properties["PackageId"]}.{properties["Version"]}.nupkg'
    with zipfile.ZipFile(Path(output) / name, 'w', zipfile.ZIP_DEFLATED) as archive:
        for path, content in files.items():
            entry = zipfile.ZipInfo(path, TIME)
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, content)


main(*sys.argv[1:])
