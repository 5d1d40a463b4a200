"""What has to hold for the manual. Each check gives complaints, one line each; none means that it holds."""

import re
from html.parser import HTMLParser
from pathlib import PurePosixPath
from urllib.parse import unquote

from pages import ENUMERATIONS_PAGE, ERRORS_PAGE, MEMBER_SPAN, headings, lines_of

ENUM_ROW = re.compile(r"^\| `(\w+)` \|", re.M)
LINK = re.compile(r"\]\(([^)#\s]+)(#[^)\s]*)?\)")
EMPTY_SECTION_LENGTH = 20  # characters: less than that explains nothing


def sections(source):
    """The text under each heading of the second level, by its heading."""
    found, current = {}, None
    for kind, line in lines_of(source):
        if kind == "text" and line.startswith("## "):
            current = line[3:].strip()
            found[current] = ""
        elif current is not None:
            found[current] += line + "\n"
    return found


def source_of(pages, path):
    return pages[path].source if path in pages else ""


def check_members(surface, pages):
    """Every member of every class has a section that says something, and no section is about anything else."""
    for name, entry in surface.classes.items():
        path = f"reference/{name}.md"
        if path not in pages:
            yield f"{path}: the page of the class {name} is missing"
            continue
        written = sections(pages[path].source)
        for member in entry.members:
            if member not in written:
                yield f"{path}: no section about {member}"
            elif len(written[member].strip()) < EMPTY_SECTION_LENGTH:
                yield f"{path}: the section about {member} is empty"
        for heading in written:
            if heading not in entry.members:
                yield f"{path}: a section about {heading}, which is no member of {name}"


def check_enumerations(surface, pages):
    """Every enumeration has a section, and that section has a row for each of its members and no other."""
    written = sections(source_of(pages, ENUMERATIONS_PAGE))
    for name, enumeration in surface.enumerations.items():
        rows = ENUM_ROW.findall(written.get(name, ""))
        for member in enumeration.members:
            if rows.count(member) != 1:
                yield f"{ENUMERATIONS_PAGE}: {rows.count(member)} rows for {name}.{member}"
        for row in rows:
            if row not in enumeration.members:
                yield f"{ENUMERATIONS_PAGE}: a row for {row}, which is no member of {name}"


def check_errors(surface, pages):
    """Every error number has its cause and its cure, and no other number has a section."""
    written = sections(source_of(pages, ERRORS_PAGE))
    for number in surface.errors:
        text = written.get(str(number))
        if text is None:
            yield f"{ERRORS_PAGE}: no section about {number}"
            continue
        for word in ("Cause", "Cure"):
            if not re.search(rf"^\*\*{word}\.\*\* \S+", text, re.M):
                yield f"{ERRORS_PAGE}: {number} has no {word.lower()}"
    for heading in written:
        if heading.isdigit() and int(heading) not in surface.errors:
            yield f"{ERRORS_PAGE}: a section about {heading}, which no error has"


def check_names(surface, pages):
    """A code span `Class.Member` names a member that exists."""
    for path, page in pages.items():
        for kind, line in lines_of(page.source):
            for name, member, _ in MEMBER_SPAN.findall(line) if kind == "text" else ():
                entry = surface.classes.get(name)
                if entry and member not in entry.members:
                    yield f"{path}: {name} has no member {member}"


def check_contents(contents, pages):
    """Every page stands in the contents exactly once, and the contents name no page that is missing."""
    listed = [entry.path for entry in contents if entry.path]
    for path in pages:
        if listed.count(path) != 1:
            yield f"contents.md: {path} is listed {listed.count(path)} times"
    for path in listed:
        if path not in pages:
            yield f"contents.md: there is no page {path}"


class Anchors(HTMLParser):
    """The links and the targets of one HTML page."""

    def __init__(self, text):
        super().__init__()
        self.links, self.targets = [], set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src") and value:
                self.links.append(value)
            elif name == "id":
                self.targets.add(value)


def check_links(files, others=()):
    """Every link between HTML files leads somewhere. `files`: text by path; `others`: paths of what is not HTML."""
    anchors = {path: Anchors(text) for path, text in files.items()}
    for path, page in anchors.items():
        for link in page.links:
            if re.match(r"[a-z]+:", link):
                continue
            target, _, fragment = link.partition("#")
            whole = resolve(path, unquote(target)) if target else path
            if whole not in anchors and whole not in others:
                yield f"{path}: a link to {link}, which is not there"
            elif fragment and whole in anchors and unquote(fragment) not in anchors[whole].targets:
                yield f"{path}: a link to {link}, a page without that heading"


def resolve(path, target):
    parts = list(PurePosixPath(path).parent.parts)
    for part in PurePosixPath(target).parts:
        parts = parts[:-1] if part == ".." else parts + [part]
    return "/".join(parts)


def check_files(root, names):
    """Links in Markdown files outside the manual lead to files of the repository."""
    for name in names:
        for kind, line in lines_of((root / name).read_text(encoding="utf-8")):
            for target, _ in LINK.findall(line) if kind == "text" else ():
                if not re.match(r"[a-z]+:", target) and not (root / name).parent.joinpath(target).exists():
                    yield f"{name}: a link to {target}, which is not there"
