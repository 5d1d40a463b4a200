"""Tests of the DLL as a file: its size, what it imports and what it exports.

Usage: dll_test.py DLL
"""

import struct
import sys
import unittest

LARGEST_SIZE = 2_500_000
# Part of every Windows since 7. The compiler's own runtimes are not: they are linked into the DLL.
SYSTEM_DLLS = {
    "advapi32.dll",
    "comctl32.dll",
    "gdi32.dll",
    "kernel32.dll",
    "msvcrt.dll",
    "ole32.dll",
    "oleaut32.dll",
    "rpcrt4.dll",
    "shell32.dll",
    "shlwapi.dll",
    "user32.dll",
    "ws2_32.dll",
}
# Functions that came after Windows 7, for which a name that stands in an import table would keep the DLL from loading.
LATER_FUNCTIONS = {
    "CreateFile2",
    "GetSystemTimePreciseAsFileTime",
    "GetCurrentThreadStackLimits",
    "GetTempPath2A",
    "GetTempPath2W",
    "SetThreadDescription",
    "WaitOnAddress",
    "WakeByAddressAll",
    "WakeByAddressSingle",
}
ENTRY_POINTS = ["DllCanUnloadNow", "DllGetClassObject", "DllInstall", "DllRegisterServer", "DllUnregisterServer"]
EXPORTS, IMPORTS, DEBUG = 0, 1, 6
HAS_64_BITS = 0x20B
RANDOM_ADDRESS, NO_EXECUTE = 0x40, 0x100


class Image:
    """A DLL in the PE format."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        pe = self.word(0x3C)
        assert self.data[pe : pe + 4] == b"PE\0\0", "not a PE image"
        section_count, optional_size = self.short(pe + 6), self.short(pe + 20)
        optional = pe + 24
        self.wide = self.short(optional) == HAS_64_BITS
        self.flags = self.short(optional + 70)
        self.directories = optional + (112 if self.wide else 96)
        self.symbols = self.word(pe + 12)
        table = optional + optional_size
        self.sections = [struct.unpack_from("<8sIIII", self.data, table + 40 * i) for i in range(section_count)]

    def short(self, at):
        return struct.unpack_from("<H", self.data, at)[0]

    def word(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def place(self, address):
        """Where in the file an address of the loaded image is."""
        for _, size, start, file_size, file_start in self.sections:
            if start <= address < start + max(size, file_size):
                return file_start + address - start
        raise AssertionError("no such address")

    def text(self, address):
        at = self.place(address)
        return self.data[at : self.data.index(b"\0", at)].decode("ascii")

    def directory(self, which):
        return self.word(self.directories + 8 * which)

    def imports(self):
        """The imported functions of each DLL by name; an ordinal is none."""
        found = {}
        at = self.place(self.directory(IMPORTS))
        while self.word(at + 12):
            size, ordinal = (8, 1 << 63) if self.wide else (4, 1 << 31)
            names, thunk = set(), self.place(self.word(at) or self.word(at + 16))
            while value := int.from_bytes(self.data[thunk : thunk + size], "little"):
                if not value & ordinal:
                    names.add(self.text(value + 2))
                thunk += size
            found.setdefault(self.text(self.word(at + 12)).lower(), set()).update(names)
            at += 20
        return found

    def exports(self):
        at = self.place(self.directory(EXPORTS))
        names = self.place(self.word(at + 32))
        return [self.text(self.word(names + 4 * i)) for i in range(self.word(at + 24))]


class Dll(unittest.TestCase):
    image = Image(sys.argv[1])

    def test_it_is_small_and_stripped(self):
        self.assertLessEqual(len(self.image.data), LARGEST_SIZE)
        self.assertEqual(self.image.symbols, 0)
        self.assertEqual(self.image.directory(DEBUG), 0)

    def test_it_imports_only_from_dlls_that_every_system_has(self):
        self.assertEqual(set(self.image.imports()) - SYSTEM_DLLS, set())

    def test_it_imports_no_function_that_older_systems_lack(self):
        for dll, names in self.image.imports().items():
            self.assertEqual(names & LATER_FUNCTIONS, set(), dll)

    def test_it_exports_its_entry_points_by_their_plain_names_and_nothing_else(self):
        self.assertEqual(sorted(self.image.exports()), ENTRY_POINTS)

    def test_it_can_be_loaded_anywhere_and_its_data_are_not_executed(self):
        self.assertEqual(self.image.flags & (RANDOM_ADDRESS | NO_EXECUTE), RANDOM_ADDRESS | NO_EXECUTE)


unittest.main(argv=sys.argv[:1])
