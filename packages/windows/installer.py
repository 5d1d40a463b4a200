#!/usr/bin/python3
"""Writes the source of the Windows installer: installer.py BUILD HELP VERSION ARCHITECTURE FOLDER

BUILD holds what a Windows preset built, HELP is the help file, ARCHITECTURE is "x64" or "x86"; FOLDER gets the source,
`vellobar.wxs`, and beside it the files that the source names. The registration is written by the tables of the installer, from the
same sources as the DLL's own: removing the product takes back exactly that.
"""

import shutil
import sys
import uuid
import xml.etree.ElementTree as xml
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES / "automation"))

from class_source import read_surface
import registry

# These never change: by the first Windows knows an older version of the product, by the second every other identifier is
# made of its name.
UPGRADE_CODES = {"x64": "5EFA807A-28BC-43DA-A3C3-6CFB3E1EBF8C", "x86": "CA45A2CC-F8A1-490A-9349-EF6A863BBA78"}
NAMES = uuid.UUID("6124D02F-71A6-4E59-874E-7AB567AA3658")
TITLES = {"x64": "Vellobar (64-bit)", "x86": "Vellobar (32-bit)"}
PROGRAM_FILES = {"x64": "ProgramFiles64Folder", "x86": "ProgramFilesFolder"}
SYSTEMS = {"x64": "win64", "x86": "win32"}

# What the programs hold of others, as Debian tells it.
OTHERS_LICENCES = ("libcli11-dev", "nlohmann-json3-dev", "mingw-w64-common", "gcc-mingw-w64-base")


def identifier(name):
    return str(uuid.uuid5(NAMES, name)).upper()


def add_upgrade(made, version, code):
    """An older version is removed first; over a newer one nothing is installed. Windows compares three numbers of a version,
    so one that differs in the fourth alone counts as older."""
    first, second, third = map(int, version.split(".")[:3])
    behind = f"{first}.{second}.{third + 1}"
    upgrade = xml.SubElement(made, "Upgrade", Id=code)
    xml.SubElement(upgrade, "UpgradeVersion", Minimum="0.0.0", IncludeMinimum="yes", Maximum=behind, IncludeMaximum="no",
                   Property="OLDERVERSION")
    xml.SubElement(upgrade, "UpgradeVersion", Minimum=behind, IncludeMinimum="yes", OnlyDetect="yes", Property="NEWERVERSION")
    condition = xml.SubElement(made, "Condition", Message="A newer version of Vellobar is installed.")
    condition.text = "NOT NEWERVERSION"
    sequence = xml.SubElement(made, "InstallExecuteSequence")
    xml.SubElement(sequence, "LaunchConditions", After="FindRelatedProducts")
    xml.SubElement(sequence, "RemoveExistingProducts", After="InstallInitialize")


def product(version, architecture):
    """The product with its package, without content."""
    root = xml.Element("Wix", xmlns="http://schemas.microsoft.com/wix/2006/wi")
    made = xml.SubElement(
        root, "Product", Id=identifier(f"product {version} {architecture}"), Name=TITLES[architecture], Language="1033",
        Codepage="1252", Version=version, Manufacturer="The Vellobar authors", UpgradeCode=UPGRADE_CODES[architecture])
    xml.SubElement(made, "Package", InstallerVersion="200", Compressed="yes", InstallScope="perMachine",
                   Description=f"{TITLES[architecture]} {version}", Manufacturer="The Vellobar authors")
    xml.SubElement(made, "Media", Id="1", Cabinet="vellobar.cab", EmbedCab="yes")
    add_upgrade(made, version, UPGRADE_CODES[architecture])
    return root, made


class Installer:
    def __init__(self, build, help_file, version, architecture, folder):
        self.build, self.help_file, self.folder, self.architecture = build, help_file, folder, architecture
        self.root, self.product = product(version, architecture)
        self.components = []
        self.add_folders()

    def add_folders(self):
        target = xml.SubElement(self.product, "Directory", Id="TARGETDIR", Name="SourceDir")
        programs = xml.SubElement(target, "Directory", Id=PROGRAM_FILES[self.architecture])
        self.own_folder = xml.SubElement(programs, "Directory", Id="INSTALLDIR", Name="Vellobar")
        self.examples_folder = xml.SubElement(self.own_folder, "Directory", Id="EXAMPLES", Name="examples")
        menu = xml.SubElement(target, "Directory", Id="ProgramMenuFolder")
        self.menu = xml.SubElement(menu, "Directory", Id="MENU", Name=TITLES[self.architecture])

    def component(self, name, parent, is_shared=False, is_native=True):
        """A new component. A shared one is the same in the products of both bitnesses: the first that is installed writes
        it and the last that is removed takes it back. One that is not native writes where 32-bit programs read."""
        component_id = "C_" + name
        attributes = {"Id": component_id, "Guid": identifier(name if is_shared else f"{name} {self.architecture}")}
        if self.architecture == "x64" and is_native:
            attributes["Win64"] = "yes"
        self.components.append(component_id)
        return xml.SubElement(parent, "Component", attributes)

    def add_file(self, path, parent):
        """A file that is installed; what the source names stands beside it. Gives its component."""
        if path.parent != self.folder:
            shutil.copyfile(path, self.folder / path.name)
        word = "".join(c if c.isalnum() else "_" for c in path.name)
        component = self.component(word, parent)
        xml.SubElement(component, "File", Id="F_" + word, Name=path.name, Source=path.name, KeyPath="yes")
        return component

    def add_values(self, component, values):
        for value in values:
            key = f"Software\\Classes\\{value.path}"
            text = (value.text or "").replace(registry.MODULE, "[#F_vellobar_dll]").replace(registry.FOLDER, "[INSTALLDIR]")
            name = "*" if value.text is None else value.name  # "*" makes a key alone
            attributes = {"Name": name} if name else {}
            xml.SubElement(component, "RegistryValue", attributes, Root="HKLM", Key=key, Type="string", Value=text)

    def add_files(self):
        self.dll = self.add_file(self.build / "vellobar.dll", self.own_folder)
        for name in ("Quorvane.Vellobar.manifest", "vellobar.exe"):
            self.add_file(self.build / name, self.own_folder)
        self.add_file(self.help_file, self.own_folder)
        self.add_file(write_licences(self.folder), self.own_folder)
        for path in sorted((SOURCES / "examples").iterdir()):
            if path.is_file():
                self.add_file(path, self.examples_folder)

    def add_menu_entry(self):
        component = self.component("menu", self.menu)
        xml.SubElement(component, "Shortcut", Id="S_manual", Directory="MENU", Name="Vellobar manual",
                       Target="[#F_Vellobar_chm]", WorkingDirectory="INSTALLDIR")
        xml.SubElement(component, "RemoveFolder", Id="R_menu", On="uninstall")

    def add_registration(self):
        surface = read_surface(SOURCES / "automation")
        self.add_values(self.dll, registry.values_of_bitness(surface, SYSTEMS[self.architecture]))
        if self.architecture == "x64":
            self.add_values(self.dll, registry.values_of_interfaces(surface))
        identifiers = self.component("program_identifiers", self.own_folder, is_shared=True)
        self.add_values(identifiers, registry.values_of_program_identifiers(surface))
        # Either product describes the interfaces to 32-bit programs, as the system does.
        library = self.component("type_library", self.own_folder, is_shared=True, is_native=False)
        self.add_values(library, [*registry.values_of_library(surface), *registry.values_of_interfaces(surface)])

    def source(self):
        self.add_files()
        self.add_menu_entry()
        self.add_registration()
        feature = xml.SubElement(self.product, "Feature", Id="Everything", Title="Vellobar", Level="1")
        for component in self.components:
            xml.SubElement(feature, "ComponentRef", Id=component)
        xml.indent(self.root)
        return xml.tostring(self.root, encoding="unicode") + "\n"


def write_licences(folder):
    texts = [(SOURCES / "LICENSE").read_text(encoding="utf-8")]
    for package in OTHERS_LICENCES:
        told = Path("/usr/share/doc", package, "copyright").read_text(encoding="utf-8")
        texts.append(f"{'=' * 78}\nParts of the programs come from {package}:\n\n{told}")
    path = folder / "Licences.txt"
    path.write_text("\n".join(texts), encoding="utf-8", newline="\r\n")
    return path


def main():
    if len(sys.argv) != 6:
        sys.exit(__doc__.splitlines()[0])
    build, help_file, version, architecture, folder = sys.argv[1:]
    Path(folder).mkdir(parents=True, exist_ok=True)
    installer = Installer(Path(build), Path(help_file), version, architecture, Path(folder))
    Path(folder, "vellobar.wxs").write_text(installer.source(), encoding="utf-8")


if __name__ == "__main__":
    main()
