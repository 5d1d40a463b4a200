"""Installs the library and the command from a build folder, moves what was installed elsewhere, and uses it as a program of
somebody else would.

    source_install_test.py BUILD FOLDER VERSION

BUILD is a native build folder; FOLDER is made new.
"""
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
HEADERS = """
    attachments/attachment.h attachments/attachments.h attachments/found_blocks.h attachments/made_attachments.h
    codecs/attachment_encoding.h codecs/decoder.h codecs/encoder.h codecs/progress.h
    compose/composition.h errors/error.h headers/header.h headers/header_text.h
    headers/headers.h headers/place_table.h mailbox/extent.h mailbox/item_iterator.h
    mailbox/made_on_use.h mailbox/message.h mailbox/message_entry.h mailbox/messages.h mailbox/owner.h
    mailbox/recent_messages.h mailbox/snapshot.h mailbox/vellobar.h content.h dates.h paths.h utf8.h vellobar.h
""".split()
FILES = """
    bin/vellobar
    lib/cmake/vellobar/vellobarConfig.cmake
    lib/cmake/vellobar/vellobarConfigVersion.cmake
    lib/cmake/vellobar/vellobarTargets-release.cmake
    lib/cmake/vellobar/vellobarTargets.cmake
    lib/libvellobar.a
    lib/pkgconfig/vellobar.pc
    share/bash-completion/completions/vellobar
    share/doc/libvellobar-dev/examples/CMakeLists.txt
    share/doc/libvellobar-dev/examples/mailbox_tasks.cpp
    share/doc/vellobar/CHANGELOG.md
    share/doc/vellobar/LICENSE
    share/man/man1/vellobar.1
""".split()
LISTING = "0: Rehearsal moved to Thursday\n"


def run(*words, **options):
    done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=300, **options)
    if done.returncode != 0:
        raise AssertionError(f"{words} ended with {done.returncode}\n{done.stdout}")
    return done.stdout


class SourceInstall(unittest.TestCase):
    build = folder = version = None

    @classmethod
    def setUpClass(cls):
        shutil.rmtree(cls.folder, ignore_errors=True)
        cls.folder.mkdir(parents=True)
        run("cmake", "--install", cls.build, "--prefix", cls.folder / "first place")
        cls.prefix = (cls.folder / "first place").rename(cls.folder / "second place")

    def pkg_config(self, *words):
        return run("pkg-config", *words, "vellobar",
                   env={"PATH": "/usr/bin", "PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")})

    def try_tasks(self, program):
        """The example's tasks do what those of every other host do."""
        run(sys.executable, SOURCES / "tests/examples/run_example.py", "--here", self.folder / "tasks",
            SOURCES / "examples/sample.mbox", program)

    def test_installs_these_files_and_no_others(self):
        installed = {str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if path.is_file()}
        self.assertEqual(installed, {*FILES, *(f"include/vellobar/{header}" for header in HEADERS)})

    def test_every_header_stands_alone(self):
        for header in HEADERS:
            program = f"#include <vellobar/{header}>\n#include <vellobar/{header}>\n"
            run("g++", "-std=c++20", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", "-I", self.prefix / "include", "-x",
                "c++", "-", input=program)

    def test_the_command_runs(self):
        self.assertEqual(run(self.prefix / "bin/vellobar", "--version"), f"vellobar {self.version}\n")

    def test_a_cmake_project_finds_the_library(self):
        work = self.folder / "cmake"
        run("cmake", "-S", self.prefix / "share/doc/libvellobar-dev/examples", "-B", work, "-G", "Ninja",
            f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", work)
        self.try_tasks(work / "mailbox_tasks")

    def test_a_cmake_project_can_ask_for_a_version(self):
        major = int(self.version.split(".")[0])
        for wanted, found in ((self.version, True), (f"{major}.0", True), (f"{major + 1}.0", False),
                              (f"{major - 1}.0", False)):
            project = self.folder / f"version {wanted}"
            project.mkdir()
            (project / "CMakeLists.txt").write_text(
                f"cmake_minimum_required(VERSION 3.25)\nproject(asks LANGUAGES CXX)\n"
                f"find_package(vellobar {wanted})\nmessage(STATUS \"found: ${{vellobar_FOUND}} ${{vellobar_VERSION}}\")\n")
            said = run("cmake", "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}")
            self.assertIn(f"found: 1 {self.version}" if found else "found: 0", said)

    def test_a_compiler_is_told_by_pkg_config(self):
        self.assertEqual(self.pkg_config("--modversion"), f"{self.version}\n")
        program = self.folder / "told_by_pkg_config"
        source = self.prefix / "share/doc/libvellobar-dev/examples/mailbox_tasks.cpp"
        run("sh", "-c", f'g++ -std=c++20 "$1" -o "$2" {self.pkg_config("--cflags", "--libs").strip()}', "sh", source, program)
        self.try_tasks(program)

    def test_the_example_of_the_readme_compiles_and_runs(self):
        block = re.search(r"```cpp\n(.*?)```", (SOURCES / "README.md").read_text(encoding="utf-8"), re.S)[1]
        work = self.folder / "readme"
        work.mkdir()
        (work / "readme.cpp").write_text(block, encoding="utf-8")
        shutil.copyfile(SOURCES / "examples/sample.mbox", work / "inbox.mbox")
        run("g++", "-std=c++20", "-I", self.prefix / "include", "readme.cpp", "-o", "readme",
            self.prefix / "lib/libvellobar.a", cwd=work)
        self.assertTrue(run("./readme", cwd=work).startswith(LISTING))
        self.assertIn(b"\r\nX-Reviewed: yes\r\n\r\n", (work / "inbox.mbox").read_bytes())


if __name__ == "__main__":
    SourceInstall.build, SourceInstall.folder = Path(sys.argv[1]), Path(sys.argv[2])
    SourceInstall.version = sys.argv[3]
    unittest.main(argv=sys.argv[:1], verbosity=2)
