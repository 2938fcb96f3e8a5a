"""Bad input: every library that cannot be used is one exception with the path, the reason and what to do."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import orlindex
from standin import FOLDER, LIBRARY, StandInTest


class Library(StandInTest):
    def check(self, path, reason, remedy):
        with self.assertRaises(orlindex.LibraryError) as raised:
            orlindex.Client('my-client-id', 'openid', library=str(path))
        error = raised.exception
        self.assertEqual(error.path, os.path.abspath(path))
        self.assertIn(reason, error.reason)
        self.assertIn(remedy, error.remedy)
        for part in (error.path, error.reason, error.remedy):
            self.assertIn(part, str(error))
        # The right library would find this one by its name.
        self.assertFalse(f'{path}\n' in Path('/proc/self/maps').read_text(encoding='utf-8'), f'{path} stays loaded')

    def test_no_library(self):
        self.check('missing/Orlindex.dll', 'no such file', 'Copy the 64-bit Orlindex.dll')

    def test_a_folder(self):
        self.check(FOLDER, 'cannot be read', 'Copy the 64-bit Orlindex.dll')

    def test_other_bitness(self):
        self.check(FOLDER / 'bits32/Orlindex.dll', 'built for 32-bit x86, and this process is 64-bit x64', '64-bit')

    def test_no_module(self):
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder, 'Orlindex.dll')
            for content in (b'', b'MZ', b'text', b'MZ' + bytes(100), b'MZ' + b'\xff' * 100):
                file.write_bytes(content)
                with self.subTest(content):
                    self.check(file, 'the system cannot load it', 'Copy the 64-bit Orlindex.dll')

    def test_other_versions(self):
        for version in ('2.0.0.0', '1.11.13.2', 'unknown'):
            with self.subTest(version):
                self.check(FOLDER / f'version-{version}/Orlindex.dll', f'it has the version {version}', 'of the same major')

    def test_a_later_version(self):
        with orlindex.Client('my-client-id', 'openid', library=str(FOLDER / 'version-1.12.0.0/Orlindex.dll')) as client:
            self.assertEqual(client.versions().library, '1.12.0.0')

    def test_a_library_without_a_function(self):
        self.check(FOLDER / 'without-login/Orlindex.dll', 'does not export talix_login', 'Use the Orlindex.dll')

    def test_is_looked_for_beside_the_program_only(self):
        with tempfile.TemporaryDirectory() as folder:
            program = Path(folder, 'host.py')
            program.write_text('import orlindex\n'
                               'try:\n'
                               '    orlindex.Client("my-client-id", "openid").close()\n'
                               '    print("opened")\n'
                               'except orlindex.LibraryError as error:\n'
                               '    print(error.path)\n', encoding='utf-8')

            def run():
                environment = {**os.environ, 'PATH': f'{FOLDER}:{os.environ["PATH"]}'}
                return subprocess.run([sys.executable, str(program)], cwd=FOLDER, env=environment, check=True, text=True,
                                      stdout=subprocess.PIPE).stdout.strip()

            self.assertEqual(run(), os.path.join(folder, 'Orlindex.dll'))
            os.symlink(LIBRARY, os.path.join(folder, 'Orlindex.dll'))
            self.assertEqual(run(), 'opened')


unittest.main()
