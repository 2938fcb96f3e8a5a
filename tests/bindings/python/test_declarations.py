"""The declarations for ctypes against the description, which compilers have checked: names, sizes, offsets and types."""

import ctypes
import json
import os
import typing
import unittest
from pathlib import Path

import orlindex
from orlindex import _declarations as declarations

DESCRIPTION = json.loads(Path(os.environ['ORLINDEX_INTERFACE']).read_text(encoding='utf-8'))
ENUMERATIONS = {
    'talix_status_code': orlindex.StatusCode, 'Server': orlindex.Server, 'TALIXEnvironment': orlindex.Environment,
    'talix_login_mode': orlindex.LoginMode, 'talix_logout_flags': orlindex.LogoutFlags,
    'talix_boolean_key': orlindex.BooleanKey, 'talix_event_code': orlindex.EventCode,
}
SIZES = {'void*': 8, 'const char*': 8, 'int': 4, 'int32_t': 4, 'uint16_t': 2, 'talix_bool': 1, 'talix_product_config': 8,
         'talix_event_callback': 8}


class Declarations(unittest.TestCase):
    def test_records(self):
        for record in DESCRIPTION['records']:
            structure = getattr(declarations, record['name'])
            self.assertEqual(ctypes.sizeof(structure), record['size'], record['name'])
            self.assertEqual([name for name, _ in structure._fields_], [field['name'] for field in record['fields']])
            for field in record['fields']:
                place = getattr(structure, field['name'])
                self.assertEqual((place.offset, place.size), (field['offset'], field['size']), field['name'])

    def test_values(self):
        self.assertEqual({each['name'] for each in DESCRIPTION['enumerations']}, ENUMERATIONS.keys())
        for enumeration in DESCRIPTION['enumerations']:
            values = [value for value in enumeration['values'] if not value.get('bound')]
            members = ENUMERATIONS[enumeration['name']].__members__
            self.assertEqual([member.value for member in members.values()], [value['value'] for value in values])
            for value, name in zip(values, members):
                self.assertTrue(value['name'].endswith(name), f'{value["name"]} is called {name}')

    def test_functions(self):
        self.assertEqual(list(declarations.FUNCTIONS), [function['name'] for function in DESCRIPTION['functions']])
        for function in DESCRIPTION['functions']:
            result, arguments = declarations.FUNCTIONS[function['name']]
            self.check_type(function['name'], result, function['returns'])
            self.assertEqual(len(arguments), len(function['parameters']), function['name'])
            for argument, parameter in zip(arguments, function['parameters']):
                self.check_type(f'{function["name"]}: {parameter["name"]}', argument, parameter['type'])

    def check_type(self, what, declared, kind):
        record = kind.removeprefix('const ').removesuffix('*')
        if kind == 'void':
            self.assertIsNone(declared, what)
        elif kind in ENUMERATIONS:
            self.assertIs(declared, ctypes.c_int32, what)
        elif any(each['name'] == record for each in DESCRIPTION['records']):
            self.assertIs(declared, ctypes.POINTER(getattr(declarations, record)), what)
        else:
            self.assertEqual(ctypes.sizeof(declared), SIZES[kind], what)
            # A text goes in as bytes; a number of the wrong sign would change on the way.
            self.assertEqual(declared is ctypes.c_char_p, kind == 'const char*', what)
            if kind in ('int', 'int32_t'):
                self.assertEqual(declared(-1).value, -1, what)

    def test_codes_have_meanings(self):
        self.assertEqual(declarations.MEANINGS.keys(), set(orlindex.StatusCode))

    def test_version(self):
        self.assertEqual(orlindex.LIBRARY_VERSION, DESCRIPTION['library']['version'])

    def test_every_public_function_has_type_hints(self):
        for kind in (orlindex.Client, orlindex.AsyncClient):
            for name, member in vars(kind).items():
                function = member.fget if isinstance(member, property) else member
                if not name.startswith('_') and callable(function):
                    self.assertIn('return', typing.get_type_hints(function), f'{kind.__name__}.{name}')


unittest.main()
