"""Tests of what the type library pass leaves in the compiled library where the system's own reader cannot show it.

Usage: type_library_test.py FOLDER-OF-THE-PASS FOLDER-OF-THE-LIBRARY
"""

import os
import sys
import unittest

pass_folder, library_folder = sys.argv[1:3]
sys.dont_write_bytecode = True
sys.path.insert(0, pass_folder)
import type_library  # noqa: E402


def read(folder, name):
    with open(os.path.join(folder, name), "rb") as file:
        return file.read()


def parameter_names(library, interface, method, kind):
    """Names of the parameters of one method; kind 4 is a property put, 2 a get, 1 a method."""
    for type_at, block in zip(library.types, library.members):
        types = library.segments[type_library.TYPES]
        if library.name(type_library.word(types, type_at + type_library.NAME_AT)) != interface:
            continue
        counts = type_library.word(types, type_at + type_library.MEMBER_COUNTS_AT)
        members = type_library.Members(block, counts)
        for record, name in zip(members.records, members.names):
            if library.name(name) == method and record[0x10] >> 3 & 0xF == kind:
                count = record[0x14]
                places = range(len(record) - 12 * count, len(record), 12)
                return [library.name(type_library.word(record, place + 4)) for place in places]
    raise AssertionError("no such method")


class TypeLibraryPass(unittest.TestCase):
    def setUp(self):
        self.idl = read(pass_folder, "vellobar.idl").decode("ascii")
        self.compiled = read(library_folder, "compiled.tlb")
        self.finished = read(library_folder, "vellobar.tlb")

    def test_the_parameter_of_a_property_put_is_named(self):
        library = type_library.Library(self.finished)
        self.assertEqual(parameter_names(library, "IvHeader", "Value", 4), ["value"])
        self.assertEqual(parameter_names(library, "IvMessage", "Tag", 4), ["value"])
        self.assertEqual(parameter_names(library, "IVellobar", "Filename", 4), ["value"])

    def test_names_that_differ_only_in_case_keep_their_spelling(self):
        library = type_library.Library(self.finished)
        self.assertEqual(parameter_names(library, "IvHeaders", "Add", 1), ["Name", "Value", "hdr"])

    def test_the_same_idl_gives_the_same_bytes(self):
        self.assertEqual(type_library.complete(self.idl, self.compiled), self.finished)
        self.assertNotIn(b"widl", self.finished)

    def test_an_untouched_library_is_joined_to_the_same_bytes(self):
        self.assertEqual(type_library.Library(self.compiled).join(), self.compiled)


unittest.main(argv=sys.argv[:1])
