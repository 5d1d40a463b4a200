#!/usr/bin/python3
"""Checks and renders the manual: manual.py check | site FOLDER | help FOLDER

`check` prints every complaint and ends with 1 when there is one. `site` writes the static site and `help` the help
file, both after the same check.
"""

import re
import sys
from pathlib import Path

import check
import help_file
import website
from pages import read_pages
from surface import surface_of

ROOT = Path(__file__).resolve().parents[2]
DOCS = ROOT / "docs"
MARKDOWN_FILES = ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md")


def version():
    return re.search(r"project\(vellobar VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


class Manual:
    def __init__(self):
        self.surface = surface_of(ROOT)
        self.contents, self.pages = read_pages(DOCS, self.surface)
        self.files = website.site_files(DOCS, version(), self.contents, self.pages)

    def complaints(self):
        html_files = {path: text for path, text in self.files.items() if path.endswith(".html")}
        others = set(self.files) | set(website.other_files(DOCS))
        return [
            *check.check_members(self.surface, self.pages),
            *check.check_enumerations(self.surface, self.pages),
            *check.check_errors(self.surface, self.pages),
            *check.check_names(self.surface, self.pages),
            *check.check_contents(self.contents, self.pages),
            *check.check_links(html_files, others),
            *check.check_files(ROOT, MARKDOWN_FILES),
        ]


def main():
    if not (sys.argv[1:] == ["check"] or len(sys.argv) == 3 and sys.argv[1] in ("site", "help")):
        sys.exit(__doc__.splitlines()[0])
    manual = Manual()
    complaints = manual.complaints()
    print("\n".join(complaints), end="\n" if complaints else "", file=sys.stderr)
    if complaints:
        sys.exit(1)
    if sys.argv[1] == "site":
        website.write_site(sys.argv[2], DOCS, manual.files)
        print(f"{sys.argv[2]}/index.html: {len(manual.pages)} pages")
    elif sys.argv[1] == "help":
        website.write_site(sys.argv[2], DOCS, help_file.help_files(DOCS, manual.surface, manual.contents, manual.pages))
        made = help_file.compile_help(sys.argv[2])
        print(f"{made}: {made.stat().st_size} bytes")


if __name__ == "__main__":
    main()
