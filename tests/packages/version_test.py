"""The version stands in the project's CMakeLists.txt; everything that tells it tells the same.

    version_test.py BUILD VERSION
"""
import re
import struct
import subprocess
import sys
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
# Code that could tell a version of its own; tests tell what they expect.
CODE = ("*.cpp", "*.h", "*.in", "*.idl", "*.py", "*.cmake", "*.txt", "*.bash", "*.def")
NO_CODE = {"tests", "build", ".git"}
# What a reader is shown, with the version written out.
SHOWN = {
    "CHANGELOG.md": r"^## ([\d.]+)$",
    "docs/install.md": r"\b(\d+\.\d+\.\d+\.\d+)\b",
    "examples/registration_free.exe.manifest": r'name="Quorvane\.Vellobar" version="([\d.]+)"',
}


def resource_version(path):
    """The number in the version resource of a Windows program."""
    data = path.read_bytes()
    at = data.index(struct.pack("<II", 0xFEEF04BD, 0x00010000))
    high, low, product_high, product_low = struct.unpack_from("<IIII", data, at + 8)
    assert (high, low) == (product_high, product_low)
    return ".".join(map(str, (high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF)))


class Version(unittest.TestCase):
    build = version = None

    def test_stands_in_one_file_of_the_code(self):
        told = [path.relative_to(SOURCES) for pattern in CODE for path in SOURCES.rglob(pattern)
                if path.relative_to(SOURCES).parts[0] not in NO_CODE
                and re.search(re.escape(self.version).replace(r"\.", "[.,]"), path.read_text(encoding="utf-8"))]
        self.assertEqual([str(path) for path in told], ["CMakeLists.txt"])

    def test_is_what_readers_are_shown(self):
        for name, pattern in SHOWN.items():
            with self.subTest(name):
                found = re.findall(pattern, (SOURCES / name).read_text(encoding="utf-8"), re.M)
                told = found[:1] if name == "CHANGELOG.md" else sorted(set(found))  # the newest stands first there
                self.assertEqual(told, [self.version])

    def test_is_that_of_the_package_files(self):
        for name in ("vellobar.pc", "vellobarConfigVersion.cmake"):
            text = (self.build / "package" / name).read_text(encoding="utf-8")
            self.assertRegex(text, rf'(?m)^(Version: |set\(PACKAGE_VERSION "){re.escape(self.version)}("\))?$')

    def test_is_that_of_the_command(self):
        program = self.build / "vellobar"
        if not program.exists():
            self.skipTest("a Windows build; its installer's test runs the command")
        said = subprocess.run([program, "--version"], stdout=subprocess.PIPE, text=True, check=True).stdout
        self.assertEqual(said, f"vellobar {self.version}\n")

    def test_is_that_of_the_dll_its_manifest_and_its_installer(self):
        dll = self.build / "vellobar.dll"
        if not dll.exists():
            self.skipTest("no Windows build")
        self.assertEqual(resource_version(dll), self.version)
        self.assertIn(self.version.encode("utf-16-le"), dll.read_bytes())
        manifest = (self.build / "Quorvane.Vellobar.manifest").read_text(encoding="ascii")
        self.assertIn(f'name="Quorvane.Vellobar" version="{self.version}"', manifest)
        self.assertEqual(len(list(self.build.glob(f"vellobar-{self.version}-x*.msi"))), 1)


if __name__ == "__main__":
    Version.build, Version.version = Path(sys.argv[1]), sys.argv[2]
    unittest.main(argv=sys.argv[:1], verbosity=2)
