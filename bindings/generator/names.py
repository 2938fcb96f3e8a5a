"""Names for languages that do not keep the names of C."""

import os
import re

# The enumerations of the header, as bindings call them.
ENUMERATIONS = {
    'talix_status_code': 'StatusCode',
    'Server': 'Server',
    'TALIXEnvironment': 'Environment',
    'talix_login_mode': 'LoginMode',
    'talix_logout_flags': 'LogoutFlags',
    'talix_boolean_key': 'BooleanKey',
    'talix_event_code': 'EventCode',
}


def members(enumeration):
    """(name, value, meaning) without the bounds. Status codes keep their names, which all pages use; the other names lose
    the prefix that they share."""
    values = [value for value in enumeration['values'] if not value.get('bound')]
    prefix = ''
    if enumeration['name'] != 'talix_status_code':
        prefix = re.match(r'(?:[A-Z]+_)*', os.path.commonprefix([value['name'] for value in values])).group()
    return [(value['name'].removeprefix(prefix), value['value'], value['meaning']) for value in values]


def status_codes(description):
    return next(each for each in description['enumerations'] if each['name'] == 'talix_status_code')


def is_record(description, kind):
    return any(record['name'] == kind for record in description['records'])


def is_enumeration(description, kind):
    return any(each['name'] == kind for each in description['enumerations'])
