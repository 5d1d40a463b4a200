"""What the component offers, read from its own sources: classes, members and enumerations from the IDL, programmatic
names from the class table, error numbers and messages from the error table. The reference of the manual is checked
against this and takes its signatures from it, so that the two cannot drift apart.
"""

import re
from dataclasses import dataclass, field

ENUM = re.compile(r"typedef \[v1_enum\] enum (\w+) \{(.*?)\} \w+;", re.S)
ENUM_MEMBER = re.compile(r'(?:\[helpstring\("([^"]*)"\)\]\s+)?(\w+)\s*=\s*(\d+)')
INTERFACE = re.compile(r"^  interface (\w+) : IDispatch\s*\{(.*?)^  \};", re.M | re.S)
OPERATION = re.compile(r'\[([^"\n]*?)helpstring\("([^"]*)"\)\]\s*(HRESULT (\w+)\((.*)\));')
DISPID = re.compile(r"id\((-?\d+)\)")
CLASS = re.compile(r"^  coclass (\w+)\s*\{\s*\[default\] interface (\w+);", re.M)
PARAMETER = re.compile(r"(?:\[([^]]*)\]\s*)?(SAFEARRAY\(unsigned char\)|\w+)(\**)\s+(\w+)$")
CLASS_ROW = re.compile(r'\{CLSID_(\w+), \w+, L"[^"]*",\s*L"([^"]+)",\s*L"([^"]+)",\s*(\w+)')
ERROR_NUMBER = re.compile(r"^  (\w+) = (\d+),", re.M)
ERROR_MESSAGE = re.compile(r'\{ErrorNumber::(\w+), "([^"]*)"\}')

FIRST_OWN_SLOT = 7  # behind the operations of IUnknown and IDispatch
PLAIN_TYPES = {
    "BSTR": "String",
    "long": "Long",
    "short": "Integer",
    "DATE": "Date",
    "VARIANT": "Variant",
    "VARIANT_BOOL": "Boolean",
    "IUnknown": "Object",
    "SAFEARRAY(unsigned char)": "Byte()",
}


@dataclass
class Parameter:
    name: str
    type: str
    is_optional: bool
    is_result: bool


@dataclass
class Operation:
    """One slot of an interface."""

    kind: str  # "get", "put" or "method"
    slot: int
    declaration: str
    parameters: list


@dataclass
class Member:
    name: str
    dispid: int
    help: str
    operations: list = field(default_factory=list)

    @property
    def is_method(self):
        return self.operations[0].kind == "method"

    def kind(self):
        """What the member is, in a reader's words."""
        if self.is_method:
            return "Method"
        kinds = {operation.kind for operation in self.operations}
        return "Property, read and write" if kinds == {"get", "put"} else "Property, read only"

    def signature(self):
        """The member as a Basic programmer reads it."""
        inputs, result = [], ""
        for parameter in self.operations[0].parameters:
            if parameter.is_result:
                result = f" As {parameter.type}"
                continue
            text = f"{parameter.name} As {parameter.type}"
            inputs.append(f"[{text}]" if parameter.is_optional else text)
        brackets = f"({', '.join(inputs)})" if inputs or self.is_method else ""
        return self.name + brackets + result


@dataclass
class Class:
    name: str
    interface: str
    versioned_id: str
    program_id: str
    members: dict


@dataclass
class Enumeration:
    name: str
    members: dict  # name: (value, help string)


@dataclass
class Surface:
    classes: dict
    enumerations: dict
    errors: dict  # number: message


def read_parameter(text, type_names):
    marks, type_name, _, name = PARAMETER.fullmatch(text.strip()).groups()
    return Parameter(name, type_names.get(type_name, type_name), "optional" in (marks or ""), "retval" in (marks or ""))


def read_members(body, type_names):
    members = {}
    for slot, found in enumerate(OPERATION.finditer(body), FIRST_OWN_SLOT):
        attributes, help_string, declaration, name, parameters = found.groups()
        kind = "get" if "propget" in attributes else "put" if "propput" in attributes else "method"
        dispid = int(DISPID.search(attributes)[1])
        # A comma inside brackets belongs to the marks of one parameter.
        pieces = [p for p in re.split(r",(?![^[]*\])", parameters) if p.strip()]
        operation = Operation(kind, slot, declaration, [read_parameter(p, type_names) for p in pieces])
        members.setdefault(name, Member(name, dispid, help_string)).operations.append(operation)
    return members


def read_surface(idl, class_table, error_header, error_source):
    """The surface out of the texts of the four files that define it."""
    classes = CLASS.findall(idl)
    type_names = PLAIN_TYPES | {interface: name for name, interface in classes}
    interfaces = {name: read_members(body, type_names) for name, body in INTERFACE.findall(idl)}
    identifiers = {name: (versioned, plain) for name, versioned, plain, _ in CLASS_ROW.findall(class_table)}
    messages = dict(ERROR_MESSAGE.findall(error_source))
    return Surface(
        {name: Class(name, interface, *identifiers[name], interfaces[interface]) for name, interface in classes},
        {
            name: Enumeration(name, {member: (int(value), text) for text, member, value in ENUM_MEMBER.findall(body)})
            for name, body in ENUM.findall(idl)
        },
        {int(number): messages[name] for name, number in ERROR_NUMBER.findall(error_header)},
    )


def surface_of(root):
    """The surface that the sources below `root` define."""
    files = ("automation/vellobar.idl", "automation/class_table.cpp", "errors/error.h", "errors/error.cpp")
    return read_surface(*((root / name).read_text(encoding="utf-8") for name in files))
