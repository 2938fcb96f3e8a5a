"""The stand-in for the library, built for this machine: tests/bindings/StandIn.c. ORLINDEX_STANDIN names its folder."""

import ctypes
import os
import unittest
from pathlib import Path

import orlindex

FOLDER = Path(os.environ['ORLINDEX_STANDIN'])
LIBRARY = str(FOLDER / 'Orlindex.dll')
NAME = 'Jürgen 中文'
# Nothing here depends on the speed of the machine: this only ends a test that would wait for ever.
PATIENCE = 300

control = ctypes.CDLL(LIBRARY)
control.standin_product.restype = ctypes.c_char_p


def open_client(**options):
    return orlindex.Client('my-client-id', 'openid', library=LIBRARY, **options)


class StandInTest(unittest.TestCase):
    def setUp(self):
        control.standin_reset()

    def tearDown(self):
        self.assertEqual(control.standin_starts(), 0, 'the library was not stopped as often as started')
        self.assertFalse(control.standin_stopped_while_inside(), 'the library was stopped during a call')
        self.assertFalse(control.standin_stopped_with_callback(), 'the callback was not removed before the stop')
