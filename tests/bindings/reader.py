"""What the reader of talix.h refuses: a declaration that it does not know must not be left out silently."""

import re
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / 'bindings'))
from generator import header  # noqa: E402 # from the folder above

TEXT = (ROOT / 'include/orlindex/talix.h').read_text(encoding='utf-8')


def read(addition):
    return header.describe(TEXT.replace('/** @} */', addition), '1.0')


class Reader(unittest.TestCase):
    def test_finds_everything_that_the_header_declares(self):
        description = read('')
        self.assertEqual(len(description['functions']), TEXT.count('ORLINDEX_API '))
        self.assertEqual(len(description['records']), TEXT.count('typedef struct ') - len(description['handles']))
        self.assertEqual(len(description['enumerations']), TEXT.count('typedef enum '))

    def test_everything_has_a_meaning(self):
        description = read('')
        for group in ('enumerations', 'records', 'callbacks', 'handles', 'aliases', 'functions'):
            for declared in description[group]:
                self.assertTrue(declared['description'], declared['name'])
                for part in declared.get('values', []) + declared.get('fields', []):
                    self.assertTrue(part['meaning'], f'{declared["name"]}: {part["name"]}')

    def test_reads_an_added_function(self):
        added = read('/** Adds. */\nORLINDEX_API int TALIX_CALL talix_add(const char* text, talix_buffer* out);')
        self.assertEqual(added['functions'][-1], {
            'name': 'talix_add', 'returns': 'int', 'description': 'Adds.',
            'parameters': [{'name': 'text', 'type': 'const char*'}, {'name': 'out', 'type': 'talix_buffer*'}]})

    def test_refuses_what_it_does_not_know(self):
        for addition in ('ORLINDEX_API unknown TALIX_CALL talix_add(void);',
                         'ORLINDEX_API int talix_add(void);',
                         'ORLINDEX_API int TALIX_CALL talix_add(unknown* record);',
                         'typedef union both { int one; } both;',
                         'typedef struct bits { int one : 1; } bits;',
                         'typedef struct list { int many[4]; } list;',
                         'typedef enum next { ONE = 1, TWO } next;',
                         'static int number = 1;'):
            with self.subTest(addition), self.assertRaises(header.HeaderError):
                read(addition)


class Versions(unittest.TestCase):
    def test_packages_have_the_version_of_the_library(self):
        version = re.search(r'project\(Orlindex VERSION ([\d.]+)', (ROOT / 'CMakeLists.txt').read_text('utf-8')).group(1)
        for file, wanted in (('python/pyproject.toml', f'\nversion = "{version}"\n'),
                             # npm has versions of three numbers.
                             ('node/package.json', f'"version": "{version.rpartition(".")[0]}"'),
                             ('dotnet/Orlindex.Client.csproj', f'<Version>{version}</Version>')):
            self.assertIn(wanted, (ROOT / 'bindings' / file).read_text(encoding='utf-8'))


unittest.main()
