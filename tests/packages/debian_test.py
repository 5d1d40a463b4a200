"""Builds the Debian packages of a build folder, installs them into a folder of their own, uses them there and removes them.

    debian_test.py BUILD FOLDER VERSION

FOLDER is made new. Installing runs as dpkg does it for root, below another root folder; somebody else unpacks.
"""
import gzip
import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from source_install_test import FILES, HEADERS, SOURCES, run

DEVELOPMENT = {f"usr/{path}" for path in FILES if path.startswith(("lib/", "share/doc/libvellobar-dev/"))}
DEVELOPMENT |= {f"usr/include/vellobar/{header}" for header in HEADERS}
COMMAND = {f"usr/{path}" for path in FILES if path.startswith(("bin/", "share/bash-completion/"))}
COMMAND |= {f"usr/{path}.gz" for path in FILES if path.startswith("share/man/")}


def documents(package):
    return {f"usr/share/doc/{package}/{name}" for name in ("changelog.Debian.gz", "changelog.gz", "copyright")} | {
        f"usr/share/lintian/overrides/{package}"}


class DebianPackages(unittest.TestCase):
    build = folder = version = None

    @classmethod
    def setUpClass(cls):
        shutil.rmtree(cls.folder, ignore_errors=True)
        cls.folder.mkdir(parents=True)
        run("cpack", "-B", cls.folder / "packages", cwd=cls.build)
        cls.packages = {path.name.split("_")[0]: path for path in (cls.folder / "packages").glob("*.deb")}
        cls.root = cls.install("root")

    @classmethod
    def install(cls, name):
        """A new root folder with the packages installed; what they depend on is outside it."""
        root = cls.folder / name
        (root / "var/lib/dpkg/info").mkdir(parents=True)
        (root / "var/lib/dpkg/updates").mkdir()
        (root / "var/lib/dpkg/status").touch()
        if os.geteuid() == 0:
            cls.dpkg(root, "--force-depends", "--install", *cls.packages.values())
        else:
            for package in cls.packages.values():
                run("dpkg-deb", "--extract", package, root)
        return root

    @staticmethod
    def dpkg(root, *words):
        return run("dpkg", f"--root={root}", "--force-bad-path", *words)

    @staticmethod
    def files(root):
        paths = {str(path.relative_to(root)) for path in root.rglob("*") if path.is_file()}
        return {path for path in paths if not path.startswith("var/")}

    def control(self, package, field):
        return run("dpkg-deb", "--field", self.packages[package], field).strip()

    def test_there_is_one_package_for_people_and_one_for_programs(self):
        self.assertEqual(set(self.packages), {"vellobar", "libvellobar-dev"})
        for package in self.packages:
            self.assertEqual(self.control(package, "Version"), f"{self.version}-1")
        self.assertIn("libstdc++6", self.control("vellobar", "Depends"))

    def test_install_these_files_and_no_others(self):
        self.assertEqual(self.files(self.root), DEVELOPMENT | COMMAND | documents("vellobar") | documents("libvellobar-dev"))

    def test_the_command_runs(self):
        self.assertEqual(run(self.root / "usr/bin/vellobar", "--version"), f"vellobar {self.version}\n")

    def test_a_program_is_built_with_the_installed_library(self):
        work = self.folder / "program"
        run("cmake", "-S", self.root / "usr/share/doc/libvellobar-dev/examples", "-B", work, "-G", "Ninja",
            f"-DCMAKE_PREFIX_PATH={self.root / 'usr'}")
        run("cmake", "--build", work)
        self.assertIn("5 messages\n", run(work / "mailbox_tasks", "list", self.sample()))

    def sample(self):
        copy = self.folder / "sample.mbox"
        shutil.copyfile(SOURCES / "examples/sample.mbox", copy)
        return copy

    def test_the_changelog_names_the_version(self):
        changelog = gzip.decompress((self.root / "usr/share/doc/vellobar/changelog.Debian.gz").read_bytes()).decode()
        self.assertTrue(changelog.startswith(f"vellobar ({self.version}-1) "), changelog)

    def test_removing_leaves_nothing(self):
        if os.geteuid() != 0:
            self.skipTest("only root installs and removes")
        root = self.install("another root")
        self.dpkg(root, "--purge", "vellobar", "libvellobar-dev")
        self.assertEqual(self.files(root), set())


if __name__ == "__main__":
    DebianPackages.build, DebianPackages.folder = Path(sys.argv[1]), Path(sys.argv[2])
    DebianPackages.version = sys.argv[3]
    unittest.main(argv=sys.argv[:1], verbosity=2)
