"""Installs the Windows installer under Wine, uses what it installed, and removes it.

    installer_test.py INSTALLER VERSION ARCHITECTURE FOLDER DRIVE RUNNER...

DRIVE is drive C of the Windows installation in which RUNNER starts Windows programs; nothing else may use it meanwhile.
FOLDER is made new.
"""
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
SAMPLE = SOURCES / "examples/sample.mbox"
EXAMPLES = {path.name for path in (SOURCES / "examples").iterdir() if path.is_file()}
PROGRAMS = {"vellobar.dll", "vellobar.exe", "Quorvane.Vellobar.manifest", "Vellobar.chm", "Licences.txt"}
UPGRADE_CODES = {"x64": "{5EFA807A-28BC-43DA-A3C3-6CFB3E1EBF8C}", "x86": "{CA45A2CC-F8A1-490A-9349-EF6A863BBA78}"}
TITLES = {"x64": "Vellobar (64-bit)", "x86": "Vellobar (32-bit)"}
LIBRARY = r"typelib\{9bbc2702-7786-42fc-b9a8-87edf1626209}\1.0"


def read_export(path):
    """Every value of an exported part of the registry by its key and name, both in lower case; a key alone by its path."""
    values, key = {}, ""
    for line in path.read_text(encoding="utf-16").replace("\\\n", "").splitlines():
        if line.startswith("["):
            key = re.sub(r"^\[HKEY_LOCAL_MACHINE\\Software\\(Classes\\)?|\]$", "", line, flags=re.I).lower()
            values[key] = None
        elif "=" in line:
            name, value = line.split("=", 1)
            values[f"{key}\\{name.strip(chr(34)).lower()}"] = value
    return values


def difference(after, before):
    return {path: value for path, value in after.items() if path not in before or before[path] != value}


class Installer(unittest.TestCase):
    """One story: every step is taken once, in setUpClass, and the tests look at what it left."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        shutil.rmtree(cls.folder, ignore_errors=True)
        cls.folder.mkdir(parents=True)
        cls.warm_up()
        if cls.own_folder().exists():
            cls.remove_leftovers()
        cls.files_before, cls.classes_before, cls.uninstall_before = cls.files(), cls.classes(), cls.uninstall_entries()

        cls.install(cls.older_installer(cls.architecture))
        cls.install(cls.installer)
        cls.files_installed, cls.classes_installed = cls.files(), cls.classes()
        cls.uninstall_installed = cls.uninstall_entries()
        cls.use()
        if cls.architecture == "x64":
            cls.classes_beside_other = cls.install_and_remove_the_other_bitness()
        cls.remove(cls.installer)
        cls.files_removed, cls.classes_removed, cls.uninstall_removed = cls.files(), cls.classes(), cls.uninstall_entries()

        cls.classes_registered = cls.register_the_same_file()

    @classmethod
    def run_program(cls, *words, expected=0):
        done = subprocess.run([*cls.runner, *map(str, words)], stdout=subprocess.PIPE, timeout=300)
        if done.returncode != expected:
            raise AssertionError(f"{words} ended with {done.returncode}\n{done.stdout.decode('utf-8', 'replace')}")
        return done.stdout.decode("utf-8", "replace").replace("\r\n", "\n")

    @classmethod
    def warm_up(cls):
        """The script host notes its own libraries in the registry when it first uses them."""
        script = cls.folder / "warm_up.vbs"
        script.write_text('For Each name In Array("Scripting.FileSystemObject", "WScript.Shell")\n'
                          "  WScript.Echo TypeName(CreateObject(name))\nNext\n")
        cls.run_program("cscript", "//nologo", f"Z:{script}")

    @classmethod
    def install(cls, installer):
        cls.run_program("msiexec", "/i", f"Z:{installer}", "/qn")

    @classmethod
    def remove(cls, installer):
        cls.run_program("msiexec", "/x", f"Z:{installer}", "/qn")

    @classmethod
    def remove_leftovers(cls):
        """What a run that was cut short left behind."""
        for installer in (cls.installer, cls.older_installer("x64"), cls.older_installer("x86")):
            subprocess.run([*cls.runner, "msiexec", "/x", f"Z:{installer}", "/qn"], stdout=subprocess.DEVNULL, timeout=300)

    @classmethod
    def older_installer(cls, architecture):
        """An installer of an older version, with the same files."""
        work = cls.folder / f"older {architecture}"
        made = work / "older.msi"
        if not made.exists():
            build = cls.installer.parent
            subprocess.run(["/usr/bin/python3", "-B", SOURCES / "packages/windows/installer.py", build,
                            build / "help/Vellobar.chm", "2.1.9.7", architecture, work], check=True)
            subprocess.run(["wixl", "-a", architecture, "-o", made, "vellobar.wxs"], cwd=work, check=True)
        return made

    @classmethod
    def own_folder(cls):
        return cls.drive / "Program Files/Vellobar"

    @classmethod
    def files(cls):
        """All files but those that Windows keeps for itself."""
        paths = (path.relative_to(cls.drive) for path in cls.drive.rglob("*"))
        return {str(path) for path in paths if path.parts[0].lower() != "windows" and "Temp" not in path.parts}

    @classmethod
    def exported(cls, key):
        target = cls.folder / "export.reg"
        cls.run_program("reg", "export", key, f"Z:{target}", "/y")
        return read_export(target)

    @classmethod
    def classes(cls):
        """All classes of the machine, less what the installer of Windows notes for itself, and less the keys above ours and
        others', which are gone where they are empty. Program identifiers of both bitnesses are the same keys to Windows; Wine
        keeps those of 32-bit programs apart, which the products that share them know nothing of."""
        values = cls.exported(r"HKLM\Software\Classes")
        above = {f"{view}{key}" for view in ("", "wow6432node\\") for key in ("clsid", "interface", "typelib")}
        apart = ("installer", "wow6432node\\quorvane.")
        return {path: value for path, value in values.items() if path not in above and not path.startswith(apart)}

    @classmethod
    def uninstall_entries(cls):
        values = cls.exported(r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall")
        return {value for path, value in values.items() if path.endswith(("\\displayname", "\\displayversion"))}

    @classmethod
    def use(cls):
        shutil.copyfile(SAMPLE, cls.folder / "box.mbox")
        cls.script_said = cls.run_program("cscript", "//nologo", r"C:\Program Files\Vellobar\examples\list_and_edit.vbs",
                                          f"Z:{cls.folder / 'box.mbox'}")
        cls.command_said = cls.run_program(r"C:\Program Files\Vellobar\vellobar.exe", "--version")

    @classmethod
    def install_and_remove_the_other_bitness(cls):
        """What its files hold plays no part: nothing of them runs."""
        cls.install(cls.older_installer("x86"))
        cls.remove(cls.older_installer("x86"))
        return cls.classes()

    @classmethod
    def register_the_same_file(cls):
        cls.own_folder().mkdir()
        shutil.copyfile(cls.installer.parent / "vellobar.dll", cls.own_folder() / "vellobar.dll")
        cls.run_program("regsvr32", "/s", r"C:\Program Files\Vellobar\vellobar.dll")
        classes = cls.classes()
        cls.run_program("regsvr32", "/s", "/u", r"C:\Program Files\Vellobar\vellobar.dll")
        shutil.rmtree(cls.own_folder())
        return classes

    def test_installs_these_files_and_no_others(self):
        own = {f"Program Files/Vellobar/{name}" for name in PROGRAMS | {f"examples/{name}" for name in EXAMPLES}}
        new = {path for path in self.files_installed - self.files_before if (self.drive / path).suffix}
        menu = {path for path in new if path.endswith(".lnk")}
        self.assertEqual(new - menu, own)
        self.assertEqual([Path(path).parts[-2:] for path in menu], [(TITLES[self.architecture], "Vellobar manual.lnk")])

    def test_the_installed_example_edits_a_mailbox_through_the_installed_classes(self):
        self.assertIn("Rehearsal moved to Thursday", self.script_said)
        self.assertIn(b"\r\nX-Reviewed: yes\r\n\r\n", (self.folder / "box.mbox").read_bytes())

    def test_the_installed_command_runs(self):
        self.assertEqual(self.command_said, f"vellobar {self.version}\n")

    def test_writes_the_keys_and_texts_that_registering_the_dll_writes(self):
        installed = difference(self.classes_installed, self.classes_before)
        registered = difference(self.classes_registered, self.classes_removed)
        # Registering helps the system's marshaler under Wine, which looks for libraries of the neutral language only.
        for path in [path for path in registered if f"{LIBRARY}\\0" in path]:
            del registered[path]
        for values in (installed, registered):
            for path in [path for path in values if path.endswith(f"{LIBRARY}\\flags\\@")]:
                values[path] = "systems differ in them"
            for path in [path for path in values if path.endswith(f"{LIBRARY}\\helpdir\\@")]:
                values[path] = values[path].removesuffix('\\\\"') + '"' if values[path].endswith('\\\\"') else values[path]
        self.assertGreater(len(registered), 200)
        self.assertEqual(difference(installed, registered), {}, "only the installer writes these")
        self.assertEqual(difference(registered, installed), {}, "only registering writes these")

    def test_replaces_an_older_version(self):
        self.assertEqual(self.uninstall_installed - self.uninstall_before,
                         {f'"{TITLES[self.architecture]}"', f'"{self.version}"'})

    def test_the_code_by_which_versions_know_each_other_never_changes(self):
        source = (self.installer.parent / "installer/vellobar.wxs").read_text(encoding="utf-8")
        self.assertIn(f'UpgradeCode="{UPGRADE_CODES[self.architecture].strip("{}")}"', source)
        self.assertIn(f' Version="{self.version}"', source)

    def test_removing_takes_back_every_file_and_key(self):
        self.assertEqual(self.files_removed - self.files_before, set())
        self.assertEqual(difference(self.classes_removed, self.classes_before), {})
        self.assertEqual(self.uninstall_removed, self.uninstall_before)

    def test_removing_the_product_of_the_other_bitness_leaves_this_one_whole(self):
        if self.architecture != "x64":
            self.skipTest("a 32-bit system has one bitness")
        missing = difference(self.classes_installed, self.classes_beside_other)
        helpdirs = {path for path in missing if path.endswith(f"{LIBRARY}\\helpdir\\@")}  # one for both: the last one's
        self.assertEqual(set(missing) - helpdirs, set())


if __name__ == "__main__":
    Installer.installer, Installer.version, Installer.architecture = Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    Installer.folder, Installer.drive, Installer.runner = Path(sys.argv[4]), Path(sys.argv[5]), sys.argv[6:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
