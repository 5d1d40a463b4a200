"""The pages of the manual: Markdown files below docs/, in the order of docs/contents.md, made complete with what the
sources of the component say (signatures under the headings of members, values in the tables of enumerations, messages
under error numbers) and turned into HTML.

These link themselves outside code blocks: a code span `Class.Member`, a code span that is the name of a class or an
enumeration or, on the page of a class, of one of its members, and an error number.
"""

import html
import re
from dataclasses import dataclass

import markdown

CONTENTS = "contents.md"
ERRORS_PAGE, ENUMERATIONS_PAGE = "reference/errors.md", "reference/enumerations.md"
CONTENTS_ENTRY = re.compile(r"^( *)- (?:\[([^]]+)\]\(([^)]+)\)|(.+))$")
FENCE = re.compile(r"^(```|~~~)")
HEADING = re.compile(r"^(#{1,6}) +(.*)$")
MEMBER_SPAN = re.compile(r"(?<!\[)`(\w+)\.(\w+)(\([^`]*\))?`")
NAME_SPAN = re.compile(r"(?<!\[)`(\w+)`(?!\])")
ERROR_WORD = re.compile(r"(?<![\w\[#.])(30\d\d\d)(?![\w\]])")
ENUM_ROW = re.compile(r"^\| `(\w+)` \| (.*)$")
MARKDOWN_LINK = re.compile(r'(href|src)="(?![a-z]+:)([^"#]*)\.md(#[^"]*)?"')
EXTENSIONS = ["tables", "fenced_code", "codehilite", "toc", "sane_lists"]
SETTINGS = {"codehilite": {"guess_lang": False}, "toc": {"permalink": False}}
HIGHLIGHTER = {"vb": "vbscript", "vba": "vbscript", "delphi": "delphi", "jscript": "js", "console": "text", "cmd": "text"}


@dataclass
class Entry:
    """One line of the contents: a page, or (without a path) the name of a group of pages."""

    title: str
    path: str
    depth: int


@dataclass
class Page:
    path: str  # of the Markdown file, from docs/
    source: str
    title: str
    body: str  # HTML

    @property
    def target(self):
        return self.path.removesuffix(".md") + ".html"


def read_contents(text):
    entries = []
    for line in text.splitlines():
        found = CONTENTS_ENTRY.match(line)
        if found:
            indent, title, path, group = found.groups()
            entries.append(Entry(title or group, path or "", len(indent) // 2))
    return entries


def headings(source, level):
    """The texts of the headings of one level, in order; those inside code blocks are none."""
    return [match[2] for kind, line in lines_of(source) if kind == "text" and (match := HEADING.match(line))
            and len(match[1]) == level]


def lines_of(source):
    """Each line with its kind: "text", or "code" inside a fenced block and for its fences."""
    fence = None
    for line in source.splitlines():
        mark = FENCE.match(line)
        if fence:
            yield "code", line
            if mark and mark[1] == fence:
                fence = None
        elif mark:
            fence = mark[1]
            yield "code", line
        else:
            yield "text", line


def member_facts(member):
    """What the type library says about one member, as HTML below its heading."""
    code = "\n".join(f"{html.escape(o.declaration)}  // {o.kind}, slot {o.slot}" for o in member.operations)
    return (
        f'<div class="facts"><p class="signature"><code>{html.escape(member.signature())}</code></p>'
        f'<p class="kind">{member.kind()} · DISPID {member.dispid}</p>'
        f'<p class="help">{html.escape(member.help)}</p>'
        f"<details><summary>Early binding</summary><pre>{code}</pre></details></div>"
    )


def class_facts(entry):
    return (
        f'<div class="facts"><p class="signature"><code>CreateObject("{entry.program_id}")</code></p>'
        f'<p class="kind">Class · default interface <code>{entry.interface}</code> · '
        f"versioned name <code>{entry.versioned_id}</code></p></div>"
    )


def member_list(entry):
    """Links to the members of a class, by their names."""
    names = sorted((name for name in entry.members if not name.startswith("_")), key=str.lower)
    links = "".join(f'<li><a href="#{name.lower()}">{name}</a></li>' for name in names)
    return f'<ul class="members">{links}</ul>'


def error_facts(number, message):
    return (
        f'<div class="facts"><p class="signature"><code>{html.escape(message)}</code></p>'
        f'<p class="kind">HRESULT 0x{0x800A0000 + number:08X}</p></div>'
    )


class Writer:
    """Completes the Markdown of a page from the surface of the component."""

    def __init__(self, surface):
        self.surface = surface

    def complete(self, path, source):
        lines, entry, is_listed = [], self.class_of(path), False
        for kind, line in lines_of(source):
            if kind == "code":
                lines.append(line)
                continue
            heading = HEADING.match(line)
            if entry and not is_listed and heading and len(heading[1]) == 2:
                lines += [member_list(entry), ""]
                is_listed = True
            lines.append(line if heading else self.linked(path, self.enum_row(path, line)))
            if heading:
                facts = self.facts(path, len(heading[1]), heading[2])
                lines += ["", facts, ""] if facts else []
        return "\n".join(lines) + "\n"

    def class_of(self, path):
        """The class that a page is about, if any."""
        folder, _, name = path.removesuffix(".md").rpartition("/")
        return self.surface.classes.get(name) if folder == "reference" else None

    def facts(self, path, level, heading):
        if path == ERRORS_PAGE:
            number = int(heading) if heading.isdigit() else None
            return error_facts(number, self.surface.errors[number]) if number in self.surface.errors else ""
        entry = self.class_of(path)
        if not entry:
            return ""
        if level == 1:
            return class_facts(entry)
        return member_facts(entry.members[heading]) if level == 2 and heading in entry.members else ""

    def enum_row(self, path, line):
        """A table row `| name | meaning |` with the member's value and help string put between the two."""
        row = ENUM_ROW.match(line) if path == ENUMERATIONS_PAGE else None
        if not row:
            return line
        for enumeration in self.surface.enumerations.values():
            if row[1] in enumeration.members:
                return f"| `{row[1]}` | {enumeration.members[row[1]][0]} | {row[2]}"
        return line

    def linked(self, path, line):
        up, own = "../" * path.count("/"), self.class_of(path)

        def member_link(match):
            entry = self.surface.classes.get(match[1])
            if not entry or match[2] not in entry.members:
                return match[0]
            return f"[{match[0]}]({up}reference/{match[1]}.md#{match[2].lower()})"

        def name_link(match):
            if own and match[1] in own.members:
                return f"[{match[0]}](#{match[1].lower()})"
            if match[1] in self.surface.classes and self.surface.classes[match[1]] is not own:
                return f"[{match[0]}]({up}reference/{match[1]}.md)"
            if match[1] in self.surface.enumerations and path != ENUMERATIONS_PAGE:
                return f"[{match[0]}]({up}{ENUMERATIONS_PAGE}#{match[1].lower()})"
            return match[0]

        line = NAME_SPAN.sub(name_link, MEMBER_SPAN.sub(member_link, line))
        return ERROR_WORD.sub(lambda match: f"[{match[1]}]({up}{ERRORS_PAGE}#{match[1]})", line)

    def page(self, path, source):
        completed = self.complete(path, source)
        for ours, known in HIGHLIGHTER.items():
            completed = re.sub(rf"^```{ours}$", f"```{known}", completed, flags=re.M)
        body = markdown.markdown(completed, extensions=EXTENSIONS, extension_configs=SETTINGS, output_format="html")
        body = MARKDOWN_LINK.sub(r'\1="\2.html\3"', body)
        body = body.replace("<table>", '<div class="table"><table>').replace("</table>", "</table></div>")
        titles = headings(source, 1)
        return Page(path, source, titles[0] if titles else path, body)


def read_pages(docs, surface):
    """The contents, and every page below the folder `docs` by its path."""
    contents = read_contents((docs / CONTENTS).read_text(encoding="utf-8"))
    writer = Writer(surface)
    paths = sorted(p.relative_to(docs).as_posix() for p in docs.rglob("*.md"))
    pages = {p: writer.page(p, (docs / p).read_text(encoding="utf-8")) for p in paths if p != CONTENTS}
    return contents, pages
