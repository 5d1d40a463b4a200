"""What registering the DLL writes into the registry (automation/registration.cpp), as a list for an installer.

Paths are those below HKEY_LOCAL_MACHINE\\Software\\Classes. The texts MODULE and FOLDER stand for the DLL's path and its folder.
"""

from dataclasses import dataclass

from class_source import TYPE_LIBRARY_MARSHALER

MODULE, FOLDER = "{the DLL}", "{its folder}"
TOOLBOX_BITMAP = 101  # its number among the DLL's resources


@dataclass
class Value:
    path: str
    text: str = None  # None for a key alone
    name: str = ""


def class_values(entry, surface):
    key = f"CLSID\\{entry.guid}"
    yield Value(key, entry.description)
    yield Value(f"{key}\\ProgID", entry.versioned_prog_id)
    yield Value(f"{key}\\VersionIndependentProgID", entry.prog_id)
    yield Value(f"{key}\\InprocServer32", MODULE)
    yield Value(f"{key}\\InprocServer32", entry.registered_threading_model, "ThreadingModel")
    if entry.is_control:
        for empty in ("Programmable", "Control", "Insertable"):
            yield Value(f"{key}\\{empty}")
        yield Value(f"{key}\\ToolboxBitmap32", f"{MODULE}, {TOOLBOX_BITMAP}")
        yield Value(f"{key}\\MiscStatus", "0")
        yield Value(f"{key}\\MiscStatus\\1", str(surface.control_status))
        yield Value(f"{key}\\TypeLib", surface.library.guid)
        yield Value(f"{key}\\Version", surface.library.version)


def prog_id_values(entry):
    for prog_id in (entry.versioned_prog_id, entry.prog_id):
        yield Value(prog_id, entry.description)
        yield Value(f"{prog_id}\\CLSID", entry.guid)
    if entry.is_control:
        yield Value(f"{entry.prog_id}\\CurVer", entry.versioned_prog_id)


def interface_values(entry, library):
    """What the system writes for each interface of a type library."""
    key = f"Interface\\{entry.guid}"
    yield Value(key, entry.name)
    yield Value(f"{key}\\ProxyStubClsid", TYPE_LIBRARY_MARSHALER)
    yield Value(f"{key}\\ProxyStubClsid32", TYPE_LIBRARY_MARSHALER)
    yield Value(f"{key}\\TypeLib", library.guid)
    yield Value(f"{key}\\TypeLib", library.version, "Version")


def library_key(library):
    return f"TypeLib\\{library.guid}\\{library.version}"


def values_of_bitness(surface, system):
    """What each bitness has of its own; `system` is "win64" or "win32"."""
    for entry in surface.classes:
        yield from class_values(entry, surface)
    yield Value(f"{library_key(surface.library)}\\{surface.library.locale:x}\\{system}", MODULE)


def values_of_program_identifiers(surface):
    """What a DLL of either bitness writes in the same place, which programs of both see."""
    for entry in surface.classes:
        yield from prog_id_values(entry)


def values_of_library(surface):
    key = library_key(surface.library)
    yield Value(key, surface.library.description)
    yield Value(f"{key}\\FLAGS", "0")
    yield Value(f"{key}\\HELPDIR", FOLDER)


def values_of_interfaces(surface):
    for entry in surface.interfaces:
        yield from interface_values(entry, surface.library)
