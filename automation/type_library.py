#!/usr/bin/env python3
"""Prepares the IDL for the compiler and completes the type library it makes.

The IDL compiler knows no help strings on enumeration members, keeps a single spelling of names that differ only in the
case of their letters, leaves the parameter of a property put unnamed, and writes the time of day and its own version
into the library. `prepare` takes the help strings out of the IDL; `complete` puts them into the compiled library, gives
every parameter its name as the IDL spells it, and drops time and version, so that the same IDL always gives the same
bytes.

The library is in the MSFT format: a header, one offset per type, a directory of segments, the segments, and behind them
one block of member records per type. Every number is little-endian; `-1` stands for "none".
"""

import re
import struct
import sys

NONE = 0xFFFFFFFF
HEADER_SIZE = 0x54
TYPE_COUNT_AT, HAS_HELP_DLL_AT, NAME_COUNT_AT, NAME_CHARACTERS_AT = 0x20, 0x14, 0x30, 0x34
SEGMENT_COUNT = 15
TYPES, GUIDS, NAMES, STRINGS, CUSTOM_DATA, CUSTOM_GUIDS = 0, 5, 7, 8, 11, 12
TYPE_SIZE = 0x64
MEMBERS_AT, MEMBER_COUNTS_AT, NAME_AT = 0x04, 0x18, 0x34
VARIABLE_SIZE, VARIABLE_SIZE_WITH_HELP = 0x14, 0x1C
CUSTOM_DATA_AT = 0x40
COMPILER_GUIDS = {bytes.fromhex(first + "ba77de7c51d111a2da0000f8773ce9") for first in ("63", "64", "65")}

ENUM_MEMBER = re.compile(r'^(\s*)\[helpstring\("([^"]*)"\)\]\s+(\w+)(\s*=)', re.M)
INTERFACE = re.compile(r"^  interface (\w+) : IDispatch\s*\{(.*?)^  \};", re.M | re.S)
METHOD = re.compile(r"^    HRESULT (\w+)\((.*)\);", re.M)


def prepare(idl):
    """The IDL without the help strings of enumeration members."""
    return ENUM_MEMBER.sub(r"\1\3\4", idl)


def enum_help(idl):
    """Help string of each enumeration member, by its name."""
    return {member[2]: member[1] for member in ENUM_MEMBER.findall(idl)}


def parameter_names(idl):
    """For each interface its methods in order: (name, [parameter names])."""
    interfaces = {}
    for name, body in INTERFACE.findall(idl):
        methods = []
        for method, parameters in METHOD.findall(body):
            plain = re.sub(r"\[[^]]*\]", "", parameters)
            methods.append((method, [p.split()[-1].strip("*") for p in plain.split(",") if p.strip()]))
        interfaces[name] = methods
    return interfaces


def word(data, at):
    return struct.unpack_from("<I", data, at)[0]


def put_word(data, at, value):
    struct.pack_into("<I", data, at, value)


class Library:
    """A compiled library, taken apart into its header, segments and member blocks."""

    def __init__(self, data):
        assert data[:4] == b"MSFT", "not a type library"
        count = word(data, TYPE_COUNT_AT)
        directory = HEADER_SIZE + (4 if word(data, HAS_HELP_DLL_AT) & 0x100 else 0) + 4 * count
        first = directory + 16 * SEGMENT_COUNT
        self.head = bytearray(data[:directory])
        self.directory = [list(struct.unpack_from("<IIII", data, directory + 16 * i)) for i in range(SEGMENT_COUNT)]
        self.segments = [bytearray(data[e[0] : e[0] + e[1]] if e[0] != NONE else b"") for e in self.directory]
        self.types = range(0, count * TYPE_SIZE, TYPE_SIZE)
        starts = [word(self.segments[TYPES], t + MEMBERS_AT) for t in self.types]
        assert min(starts) >= first, "member blocks stand behind the segments"
        ends = starts[1:] + [len(data)]
        self.members = [bytearray(data[a:b]) for a, b in zip(starts, ends)]

    def join(self):
        """The library as bytes, with every offset set anew; segments keep their order in the file."""
        position = len(self.head) + 16 * SEGMENT_COUNT
        body = bytearray()
        present = [i for i in range(SEGMENT_COUNT) if self.directory[i][0] != NONE]
        for i in sorted(present, key=lambda i: self.directory[i][0]):
            self.directory[i][:2] = [position + len(body), len(self.segments[i])]
            body += self.segments[i]
        blocks = bytearray()
        for t, block in zip(self.types, self.members):
            put_word(body, self.directory[TYPES][0] - position + t + MEMBERS_AT, position + len(body) + len(blocks))
            blocks += block
        directory = b"".join(struct.pack("<IIII", *entry) for entry in self.directory)
        return bytes(self.head + directory + body + blocks)

    def name(self, offset):
        names = self.segments[NAMES]
        return names[offset + 12 : offset + 12 + names[offset + 8]].decode("ascii")

    def find_name(self, name):
        """Offset of a name, whatever the case of its letters."""
        names, offset = self.segments[NAMES], 0
        while self.name(offset).lower() != name.lower():
            offset += 12 + names[offset + 8] + -names[offset + 8] % 4
        return offset

    def add_spelling(self, offset, spelling):
        """A second entry for a name that differs only in case. Look-ups by hash still find the first one."""
        names = self.segments[NAMES]
        added = len(names)
        entry = names[offset : offset + 12] + spelling.encode("ascii")
        entry += b"W" * (-len(entry) % 4)
        put_word(names, offset + 4, added)
        names += entry
        put_word(self.head, NAME_COUNT_AT, word(self.head, NAME_COUNT_AT) + 1)
        put_word(self.head, NAME_CHARACTERS_AT, word(self.head, NAME_CHARACTERS_AT) + len(spelling))
        return added

    def respell(self, offset, spelling):
        """Changes the case of letters in a name."""
        self.segments[NAMES][offset + 12 : offset + 12 + len(spelling)] = spelling.encode("ascii")

    def add_string(self, text):
        strings = self.segments[STRINGS]
        offset = len(strings)
        entry = struct.pack("<H", len(text)) + text.encode("ascii")
        strings += entry + b"W" * max(-len(entry) % 4, 8 - len(entry))
        return offset


class Members:
    """The member block of one type: its records, then their identifiers, names and record offsets."""

    def __init__(self, block, counts):
        self.functions, variables = counts & 0xFFFF, counts >> 16
        count = self.functions + variables
        size = word(block, 0)
        tables = struct.unpack_from("<%dI" % (3 * count), block, 4 + size)
        self.identifiers, self.names, starts = tables[:count], list(tables[count : 2 * count]), tables[2 * count :]
        self.records = [bytearray(block[4 + s : 4 + s + (word(block, 4 + s) & 0xFFFF)]) for s in starts]
        assert sum(map(len, self.records)) == size, "the records fill the block"

    def join(self):
        starts, position = [], 0
        for record in self.records:
            starts.append(position)
            position += len(record)
        tables = struct.pack("<%dI" % (3 * len(self.records)), *self.identifiers, *self.names, *starts)
        return bytearray(struct.pack("<I", position) + b"".join(self.records) + tables)


def add_help(library, members, texts):
    """Lengthens the records of enumeration members by a help context of 0 and their help string."""
    for i, record in enumerate(members.records):
        text = texts.pop(library.name(members.names[i]), None)
        if text is None:
            continue
        assert len(record) == VARIABLE_SIZE
        record += struct.pack("<II", 0, library.add_string(text))
        put_word(record, 0, (word(record, 0) & 0xFFFF0000) | VARIABLE_SIZE_WITH_HELP)


def restore_spelling(library, members, methods, spellings):
    """Gives each parameter the spelling that the IDL has."""
    for record, (_, parameters) in zip(members.records, methods):
        first = len(record) - 12 * len(parameters)
        for at, spelling in zip(range(first, len(record), 12), parameters):
            offset = word(record, at + 4)
            if offset == NONE:
                offset = library.find_name(spelling)
            elif library.name(offset) == spelling:
                continue
            assert library.name(offset).lower() == spelling.lower()
            if spelling not in spellings:
                spellings[spelling] = library.add_spelling(offset, spelling)
            put_word(record, at + 4, spellings[spelling])


def remove_compiler_marks(library):
    """Drops the custom data, which hold the time, the compiler's version and a text of both, and nothing of ours."""
    guids = library.segments[CUSTOM_GUIDS]
    offsets = [word(guids, at) for at in range(0, len(guids), 12)]
    assert {bytes(library.segments[GUIDS][o : o + 16]) for o in offsets} == COMPILER_GUIDS
    put_word(library.head, CUSTOM_DATA_AT, NONE)
    for segment in (CUSTOM_DATA, CUSTOM_GUIDS):
        library.directory[segment][:2] = [NONE, 0]


def complete(idl, compiled):
    """The compiled library with everything that the IDL says."""
    library = Library(compiled)
    interfaces, texts, spellings = parameter_names(idl), enum_help(idl), {}
    blocks = []
    for t, block in zip(library.types, library.members):
        counts = word(library.segments[TYPES], t + MEMBER_COUNTS_AT)
        blocks.append(Members(block, counts) if counts else None)
    type_names = [library.name(word(library.segments[TYPES], t + NAME_AT)) for t in library.types]

    # A member's own spelling stands first, where a look-up by name finds it; parameters follow.
    for name, members in zip(type_names, blocks):
        for offset, (method, _) in zip(members.names if members else [], interfaces.get(name, [])):
            assert library.name(offset).lower() == method.lower()
            library.respell(offset, method)
    for name, members in zip(type_names, blocks):
        if not members:
            continue
        if name in interfaces:
            assert members.functions == len(interfaces[name])
            restore_spelling(library, members, interfaces[name], spellings)
        else:
            add_help(library, members, texts)
    assert not texts, "every help string found its member"
    remove_compiler_marks(library)
    library.members = [m.join() if m else b for m, b in zip(blocks, library.members)]
    return library.join()


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "prepare":
        text = prepare(open(sys.argv[2], encoding="ascii").read())
        open(sys.argv[3], "w", encoding="ascii", newline="\n").write(text)
    elif len(sys.argv) == 5 and sys.argv[1] == "complete":
        done = complete(open(sys.argv[2], encoding="ascii").read(), open(sys.argv[3], "rb").read())
        open(sys.argv[4], "wb").write(done)
    else:
        sys.exit("usage: type_library.py prepare IDL PREPARED | complete IDL COMPILED LIBRARY")


if __name__ == "__main__":
    main()
