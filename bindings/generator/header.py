"""Reads talix.h into a description: enumerations, records, callbacks and functions, with the layout for 64-bit Windows.

The reader is strict. A declaration of a form that it does not know is an error, so that nothing is left out silently."""

import re

POINTER = 8
PACKING = 8
BASE_TYPES = {
    'unsigned char': 1,
    'int': 4,
    'uint16_t': 2,
    'int32_t': 4,
    'int64_t': 8,
}

# Macros of Export.h that stand in declarations.
EXPORTED = 'ORLINDEX_API'
CONVENTION = 'TALIX_CALL'


class HeaderError(Exception):
    pass


def clean(comment):
    """The text of a documentation comment in one line."""
    lines = [re.sub(r'^\s*\*? ?', '', line).strip() for line in comment.split('\n')]
    return ' '.join(' '.join(lines).split())


def pointer(kind):
    """'const char *' as the description writes it: 'const char*'."""
    return re.sub(r'\s*\*', '*', ' '.join(kind.split()))


class Reader:
    """Takes one declaration after the other from the text."""

    def __init__(self, text):
        # Directives and the linkage block for C++ do not matter to other languages. Line numbers stay.
        text = re.sub(r'(?m)^#ifdef __cplusplus\n.*\n#endif$', '\n\n', text)
        text = re.sub(r'(?m)^#.*$', '', text)
        self.text = text
        self.place = 0
        self.comment = ''

    def take(self, pattern):
        found = re.compile(pattern, re.S).match(self.text, self.place)
        if found:
            self.place = found.end()
        return found

    def skip(self):
        """White space and comments. The last documentation comment belongs to what follows it."""
        while True:
            if self.take(r'\s+'):
                continue
            found = self.take(r'/\*\*(?!<)(.*?)\*/')
            if found:
                self.comment = clean(found.group(1))
                continue
            if not self.take(r'/\*(?!\*).*?\*/'):
                return

    def description(self):
        text, self.comment = self.comment, ''
        return text

    def at_end(self):
        self.skip()
        return self.place == len(self.text)

    def fail(self):
        line = self.text.count('\n', 0, self.place) + 1
        raise HeaderError(f'talix.h:{line}: not understood: {self.text[self.place:].splitlines()[0]}')


class Header:
    def __init__(self, text):
        self.enumerations = []
        self.records = []
        self.aliases = []
        self.handles = []
        self.callbacks = []
        self.functions = []
        reader = Reader(text)
        while not reader.at_end():
            self.declaration(reader)

    def declaration(self, reader):
        if found := reader.take(r'typedef enum (\w+)\s*\{(.*?)\}\s*(\w+);'):
            self.enumerations.append({'name': found.group(3), 'size': 4, 'description': reader.description(),
                                      'values': list(self.values(found.group(2)))})
        elif found := reader.take(r'typedef struct (\w+)\s*\{(.*?)\}\s*(\w+);'):
            self.records.append(self.record(found.group(3), reader.description(), found.group(2)))
        elif found := reader.take(r'typedef struct \w+\s*\*\s*(\w+);'):
            self.handles.append({'name': found.group(1), 'size': POINTER, 'description': reader.description()})
        elif found := reader.take(rf'typedef\s+(\w+)\s*\({CONVENTION}\s*\*\s*(\w+)\)\(([^)]*)\);'):
            self.callbacks.append({'name': found.group(2), 'returns': found.group(1), 'size': POINTER,
                                   'parameters': self.parameters(found.group(3)),
                                   'description': reader.description()})
        elif found := reader.take(r'typedef ([\w ]+?) (\w+);'):
            self.aliases.append({'name': found.group(2), 'type': found.group(1), 'size': self.size(found.group(1)),
                                 'description': reader.description()})
        elif found := reader.take(rf'{EXPORTED} (\w+)\s+{CONVENTION}\s+(\w+)\(([^)]*)\);'):
            self.functions.append({'name': found.group(2), 'returns': self.known(found.group(1)),
                                   'parameters': self.parameters(found.group(3)),
                                   'description': reader.description()})
        else:
            reader.fail()

    @staticmethod
    def values(body):
        """Each value of an enumeration. The meaning stands behind it, or before it for several."""
        reader = Reader(body)
        while not reader.at_end():
            found = reader.take(r'(\w+)\s*=\s*(-?\d+|\(-2147483647 - 1\))\s*,?\s*(?:/\*\*<(.*?)\*/)?')
            if not found:
                reader.fail()
            number = -2147483648 if found.group(2).startswith('(') else int(found.group(2))
            value = {'name': found.group(1), 'value': number,
                     'meaning': clean(found.group(3)) if found.group(3) else reader.comment}
            if number in (-2147483648, 2147483647):
                value['bound'] = True
            yield value

    def record(self, name, description, body):
        """A record with the offset of each field, packed to PACKING bytes."""
        reader = Reader(body)
        fields = []
        end, widest = 0, 1
        while not reader.at_end():
            found = reader.take(r'((?:const )?\w+\s*\**)\s*\b(\w+);\s*(?:/\*\*<(.*?)\*/)?')
            if not found:
                reader.fail()
            kind = pointer(found.group(1))
            size = self.size(kind)
            alignment = min(size, PACKING)
            offset = -(-end // alignment) * alignment
            fields.append({'name': found.group(2), 'type': kind, 'offset': offset, 'size': size,
                           'meaning': clean(found.group(3) or '')})
            end, widest = offset + size, max(widest, alignment)
        return {'name': name, 'size': -(-end // widest) * widest, 'alignment': widest, 'description': description,
                'fields': fields}

    def parameters(self, text):
        found = []
        for parameter in text.split(','):
            if parameter.strip() == 'void':
                continue
            kind, name = re.fullmatch(r'\s*(.*?)\s*\b(\w+)\s*', parameter, re.S).groups()
            found.append({'name': name, 'type': self.known(pointer(kind))})
        return found

    def size(self, kind):
        if kind.endswith('*'):
            return POINTER
        if kind in BASE_TYPES:
            return BASE_TYPES[kind]
        for group in (self.enumerations, self.aliases, self.handles, self.callbacks, self.records):
            for declared in group:
                if declared['name'] == kind:
                    return declared['size']
        raise HeaderError(f'unknown type: {kind}')

    def known(self, kind):
        target = kind.removeprefix('const ').rstrip('*')
        if target not in ('void', 'char'):
            self.size(target)
        return kind


def describe(header_text, version):
    """The description that bindings/interface.json contains."""
    header = Header(header_text)
    return {
        'comment': 'Made from include/orlindex/talix.h by bindings/generate.py. Do not edit.',
        'library': {'file': 'Orlindex.dll', 'version': version, 'convention': 'cdecl', 'text': 'UTF-8',
                    'pointerSize': POINTER, 'packing': PACKING},
        'enumerations': header.enumerations,
        'aliases': header.aliases,
        'handles': header.handles,
        'callbacks': header.callbacks,
        'records': header.records,
        'functions': header.functions,
    }
