#!/usr/bin/env python3
"""Writes the assembly manifest with which a program uses the DLL without registration.

Usage: manifest.py FOLDER VERSION ARCHITECTURE MANIFEST

FOLDER holds the IDL, which gives the identifiers, and the class table, which gives the same names, texts and threading
models as the registration; ARCHITECTURE is "amd64" or "x86". The assembly is named after the component, not after the
DLL: the system would look for the manifest of an assembly of the DLL's name inside the DLL only.
"""

import os
import re
import sys
from xml.sax.saxutils import quoteattr

ASSEMBLY = "Quorvane.Vellobar"
# The system's own marshaler for interfaces that a type library describes.
TYPE_LIBRARY_MARSHALER = "{00020424-0000-0000-C000-000000000046}"
STATUS_WORDS = {
    0x00001: "recomposeonresize",
    0x00010: "cantlinkinside",
    0x00080: "insideout",
    0x00100: "activatewhenvisible",
    0x00400: "invisibleatruntime",
    0x20000: "setclientsitefirst",
}

GUID = r"uuid\(([0-9A-F-]{36})\)"
LIBRARY = re.compile(r"\[\s*" + GUID + r",\s*version\((\d+\.\d+)\)[^\[\]]*\]\s*library ", re.S)
INTERFACE = re.compile(r"\[object, " + GUID + r"[^\]]*\]\s*interface (\w+) : IDispatch\s*\{(.*?)^  \};", re.S | re.M)
CLASS = re.compile(r"\[" + GUID + r"[^\]]*\]\s*coclass (\w+)")
CONTROL_STATUS = re.compile(r"kControlStatus = (\d+);")
CLASS_COUNT = re.compile(r"kClassCount = (\d+);")
CLASS_ROW = re.compile(
    r'\{CLSID_(\w+), IID_\w+, L"([^"]*)", L"([^"]*)", L"([^"]*)",\s*k(\w+),\s*(true|false),\s*\w+\}'
)


def braced(guid):
    return "{%s}" % guid


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


def class_elements(rows, classes, library, status):
    lines = []
    for name, description, versioned, independent, model, is_control in rows:
        attributes = {
            "clsid": braced(classes[name]),
            "description": description,
            "threadingModel": model,
            "tlbid": braced(library),
            "progid": independent,
        }
        if is_control == "true":
            attributes["miscStatusContent"] = status_words(status)
        lines += element("comClass", attributes, ["<progid>%s</progid>" % versioned])
    return lines


def manifest(idl, table_header, table, version, architecture):
    """The text of the manifest."""
    library, library_version = LIBRARY.search(idl).groups()
    classes = {name: guid for guid, name in CLASS.findall(idl)}
    rows = CLASS_ROW.findall(table)
    assert len(rows) == int(CLASS_COUNT.search(table_header)[1]) == len(classes), "every class has its row"
    status = int(CONTROL_STATUS.search(table_header)[1])

    lines = element(
        "assemblyIdentity",
        {"type": "win32", "name": ASSEMBLY, "version": version, "processorArchitecture": architecture},
    )
    type_library = {"tlbid": braced(library), "version": library_version, "helpdir": "", "resourceid": "1"}
    content = class_elements(rows, classes, library, status) + element("typelib", type_library)
    lines += element("file", {"name": "vellobar.dll"}, content)
    for guid, name, body in INTERFACE.findall(idl):
        lines += element(
            "comInterfaceExternalProxyStub",
            {
                "name": name,
                "iid": braced(guid),
                "tlbid": braced(library),
                "proxyStubClsid32": TYPE_LIBRARY_MARSHALER,
                "baseInterface": "{00020400-0000-0000-C000-000000000046}",
                "numMethods": str(7 + body.count("HRESULT ")),
            },
        )
    root = element("assembly", {"xmlns": "urn:schemas-microsoft-com:asm.v1", "manifestVersion": "1.0"}, lines)
    return "\n".join(['<?xml version="1.0" encoding="UTF-8" standalone="yes"?>'] + root) + "\n"


def read(folder, name):
    with open(os.path.join(folder, name), encoding="ascii") as file:
        return file.read()


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: manifest.py FOLDER VERSION ARCHITECTURE MANIFEST")
    folder, version, architecture, target = sys.argv[1:]
    sources = [read(folder, name) for name in ("vellobar.idl", "class_table.h", "class_table.cpp")]
    with open(target, "w", encoding="ascii", newline="\n") as file:
        file.write(manifest(*sources, version, architecture))


if __name__ == "__main__":
    main()
