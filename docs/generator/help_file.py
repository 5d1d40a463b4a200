"""The same pages as a project for the help compiler: Vellobar.chm, the help file that the type library names.

The viewer's browser engine is old and its compiler reads Latin-1: pages are plain HTML in ASCII, without scripts.
"""

import html
import subprocess
from pathlib import Path
from string import Template

from website import code_style, other_files

PROJECT, HELP_FILE, CONTENTS, INDEX = "vellobar.hhp", "Vellobar.chm", "contents.hhc", "index.hhk"
PAGE = Template(
    '<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta http-equiv="X-UA-Compatible" content="IE=edge">\n'
    '<meta http-equiv="Content-Type" content="text/html; charset=us-ascii">\n<title>$title</title>\n'
    '<link rel="stylesheet" href="${up}theme/manual.css">\n<link rel="stylesheet" href="${up}theme/code.css">\n'
    '<style>.columns, main { display: block }</style>\n</head>\n<body>\n<main>\n$body\n</main>\n</body>\n</html>\n'
)
LIST_START = '<!DOCTYPE HTML PUBLIC "-//IETF//DTD HTML//EN">\n<html><head></head><body>\n<ul>\n'
LIST_END = "</ul>\n</body></html>\n"


def ascii_text(text):
    return text.encode("ascii", "xmlcharrefreplace").decode("ascii")


def list_item(title, address=""):
    parameters = f'<param name="Name" value="{html.escape(title)}">'
    if address:
        parameters += f'<param name="Local" value="{address}">'
    return f'<li><object type="text/sitemap">{parameters}</object>\n'


def contents_list(contents):
    """The tree at the viewer's left: groups with their pages one level below."""
    lines, depth = [LIST_START], 0
    for entry in contents:
        lines.append("<ul>\n" * (entry.depth - depth) + "</ul>\n" * (depth - entry.depth))
        depth = entry.depth
        lines.append(list_item(entry.title, entry.path.replace(".md", ".html")))
    return ascii_text("".join(lines) + "</ul>\n" * depth + LIST_END)


def index_list(surface):
    """The viewer's index: every member by its name and by its class, every error number."""
    items = {}
    for name, entry in surface.classes.items():
        items[f"{name} class"] = f"reference/{name}.html"
        for member in entry.members:
            items[f"{name}.{member}"] = items[f"{member} ({name})"] = f"reference/{name}.html#{member.lower()}"
    for name in surface.enumerations:
        items[f"{name} enumeration"] = f"reference/enumerations.html#{name.lower()}"
    for number in surface.errors:
        items[f"error {number}"] = f"reference/errors.html#{number}"
    lines = [list_item(title, items[title]) for title in sorted(items, key=str.lower)]
    return ascii_text(LIST_START + "".join(lines) + LIST_END)


def help_files(docs, surface, contents, pages):
    """Every text file of the help project by its path."""
    files = {}
    for page in pages.values():
        up = "../" * page.path.count("/")
        files[page.target] = ascii_text(PAGE.substitute(title=html.escape(page.title), up=up, body=page.body))
    files["theme/manual.css"] = (docs / "theme/manual.css").read_text(encoding="utf-8")
    files["theme/code.css"] = code_style()
    files[CONTENTS], files[INDEX] = contents_list(contents), index_list(surface)
    listed = sorted(files) + other_files(docs)
    files[PROJECT] = (
        f"[OPTIONS]\nTitle=Vellobar\nCompiled file={HELP_FILE}\nContents file={CONTENTS}\nIndex file={INDEX}\n"
        f"Default topic=index.html\nLanguage=0x409 English (United States)\nFull-text search=Yes\nBinary TOC=No\n"
        f"Binary Index=Yes\n\n[FILES]\n" + "\n".join(n for n in listed if not n.endswith((".hhc", ".hhk"))) + "\n"
    )
    return files


def compile_help(folder):
    """Runs the help compiler of Debian's fp-utils in the project's folder; gives the path of the help file."""
    made = Path(folder) / HELP_FILE
    made.unlink(missing_ok=True)
    run = subprocess.run(["chmcmd", PROJECT], cwd=folder, capture_output=True, text=True, errors="replace")
    if run.returncode != 0 or not made.exists():
        raise RuntimeError(f"chmcmd failed:\n{run.stdout}{run.stderr}")
    return made
