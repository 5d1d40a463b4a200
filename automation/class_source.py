"""What the sources say about the classes a client can create: the IDL gives the identifiers, the class table the same names,
texts and threading models as the registration."""

import os
import re
from dataclasses import dataclass

# The system's own marshaler for interfaces that a type library describes.
TYPE_LIBRARY_MARSHALER = "{00020424-0000-0000-C000-000000000046}"

GUID = r"uuid\(([0-9A-F-]{36})\)"
LIBRARY = re.compile(
    r"\[\s*" + GUID + r',\s*version\((\d+\.\d+)\),\s*lcid\((\d+)\),\s*helpstring\("([^"]*)"\)[^\[\]]*\]\s*library ', re.S
)
INTERFACE = re.compile(r"\[object, " + GUID + r"[^\]]*\]\s*interface (\w+) : IDispatch\s*\{(.*?)^  \};", re.S | re.M)
CLASS = re.compile(r"\[" + GUID + r"[^\]]*\]\s*coclass (\w+)")
CONTROL_STATUS = re.compile(r"kControlStatus = (\d+);")
CLASS_COUNT = re.compile(r"kClassCount = (\d+);")
CLASS_ROW = re.compile(
    r'\{CLSID_(\w+), IID_\w+, L"([^"]*)", L"([^"]*)", L"([^"]*)",\s*k(\w+),\s*(true|false),\s*\w+\}'
)
THREADING_MODEL = re.compile(r'const wchar_t\* k(\w+) = L"(\w+)";')


@dataclass
class Library:
    guid: str
    version: str
    locale: int
    description: str


@dataclass
class Interface:
    guid: str
    name: str
    method_count: int  # with those of IUnknown and IDispatch


@dataclass
class Class:
    guid: str
    description: str
    versioned_prog_id: str
    prog_id: str
    threading_model: str  # as the constant is called
    registered_threading_model: str  # as it is written into the registry
    is_control: bool


@dataclass
class Surface:
    library: Library
    interfaces: list
    classes: list
    control_status: int


def braced(guid):
    return "{%s}" % guid


def parse_surface(idl, table_header, table):
    guid, version, locale, description = LIBRARY.search(idl).groups()
    guids = {name: braced(class_guid) for class_guid, name in CLASS.findall(idl)}
    models = dict(THREADING_MODEL.findall(table))
    classes = [
        Class(guids[name], text, versioned, independent, model, models[model], is_control == "true")
        for name, text, versioned, independent, model, is_control in CLASS_ROW.findall(table)
    ]
    assert len(classes) == int(CLASS_COUNT.search(table_header)[1]) == len(guids), "every class has its row"
    interfaces = [
        Interface(braced(interface_guid), name, 7 + body.count("HRESULT "))
        for interface_guid, name, body in INTERFACE.findall(idl)
    ]
    status = int(CONTROL_STATUS.search(table_header)[1])
    return Surface(Library(braced(guid), version, int(locale), description), interfaces, classes, status)


def read_surface(folder):
    """The surface that the sources in the folder `automation/` declare."""
    texts = []
    for name in ("vellobar.idl", "class_table.h", "class_table.cpp"):
        with open(os.path.join(folder, name), encoding="ascii") as file:
            texts.append(file.read())
    return parse_surface(*texts)
