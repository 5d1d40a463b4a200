#!/usr/bin/env python3
"""Writes the assembly manifest with which a program uses the DLL without registration.

Usage: manifest.py FOLDER VERSION ARCHITECTURE MANIFEST

FOLDER holds the sources of the classes; ARCHITECTURE is "amd64" or "x86". The assembly is named after the component, not
after the DLL: the system would look for the manifest of an assembly of the DLL's name inside the DLL only.
"""

import sys
from xml.sax.saxutils import quoteattr

from class_source import TYPE_LIBRARY_MARSHALER, read_surface

ASSEMBLY = "Quorvane.Vellobar"
STATUS_WORDS = {
    0x00001: "recomposeonresize",
    0x00010: "cantlinkinside",
    0x00080: "insideout",
    0x00100: "activatewhenvisible",
    0x00400: "invisibleatruntime",
    0x20000: "setclientsitefirst",
}


def status_words(status):
    """The names of the bits of a miscellaneous status."""
    words = [word for bit, word in sorted(STATUS_WORDS.items()) if status & bit]
    assert status == sum(bit for bit in STATUS_WORDS if status & bit), "every bit has a name"
    return ",".join(words)


def element(name, attributes, content=None):
    """An element on a line of its own; `content` is a list of lines."""
    start = "<" + name + "".join(" %s=%s" % (key, quoteattr(value)) for key, value in attributes.items())
    if content is None:
        return [start + "/>"]
    return [start + ">"] + ["  " + line for line in content] + ["</%s>" % name]


def class_elements(surface):
    lines = []
    for entry in surface.classes:
        attributes = {
            "clsid": entry.guid,
            "description": entry.description,
            "threadingModel": entry.threading_model,
            "tlbid": surface.library.guid,
            "progid": entry.prog_id,
        }
        if entry.is_control:
            attributes["miscStatusContent"] = status_words(surface.control_status)
        lines += element("comClass", attributes, ["<progid>%s</progid>" % entry.versioned_prog_id])
    return lines


def manifest(surface, version, architecture):
    """The text of the manifest."""
    library = surface.library
    lines = element(
        "assemblyIdentity",
        {"type": "win32", "name": ASSEMBLY, "version": version, "processorArchitecture": architecture},
    )
    type_library = {"tlbid": library.guid, "version": library.version, "helpdir": "", "resourceid": "1"}
    content = class_elements(surface) + element("typelib", type_library)
    lines += element("file", {"name": "vellobar.dll"}, content)
    for entry in surface.interfaces:
        lines += element(
            "comInterfaceExternalProxyStub",
            {
                "name": entry.name,
                "iid": entry.guid,
                "tlbid": library.guid,
                "proxyStubClsid32": TYPE_LIBRARY_MARSHALER,
                "baseInterface": "{00020400-0000-0000-C000-000000000046}",
                "numMethods": str(entry.method_count),
            },
        )
    root = element("assembly", {"xmlns": "urn:schemas-microsoft-com:asm.v1", "manifestVersion": "1.0"}, lines)
    return "\n".join(['<?xml version="1.0" encoding="UTF-8" standalone="yes"?>'] + root) + "\n"


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: manifest.py FOLDER VERSION ARCHITECTURE MANIFEST")
    folder, version, architecture, target = sys.argv[1:]
    with open(target, "w", encoding="ascii", newline="\n") as file:
        file.write(manifest(read_surface(folder), version, architecture))


if __name__ == "__main__":
    main()
