"""The manual as a static site: one HTML file a page, a search index beside them, nothing that needs a server."""

import html
import json
import re
import shutil
from pathlib import Path
from string import Template

from pygments.formatters import HtmlFormatter

COPIED = (".svg", ".png")
HEADING = re.compile(r'<h([12]) id="([^"]*)">(.*?)</h\1>', re.S)
UNSEARCHED = re.compile(r"<details>.*?</details>", re.S)
TAG = re.compile(r"<[^>]+>")


def plain(text):
    return re.sub(r"\s+", " ", html.unescape(TAG.sub(" ", UNSEARCHED.sub(" ", text)))).strip()


def search_entries(page):
    """One entry for each heading of the first two levels, with the text that stands under it."""
    found = list(HEADING.finditer(page.body))
    for heading, following in zip(found, found[1:] + [None]):
        text = page.body[heading.end() : following.start() if following else len(page.body)]
        address = page.target if heading[1] == "1" else f"{page.target}#{heading[2]}"
        yield {"page": page.title, "heading": plain(heading[3]), "address": address, "text": plain(text)}


def contents_html(contents, current, up):
    lines = ["<ul>"]
    for entry in contents:
        title = html.escape(entry.title)
        if not entry.path:
            lines.append(f'<li><p class="group">{title}</p></li>')
            continue
        mark = ' aria-current="page"' if entry.path == current else ""
        lines.append(f'<li><a href="{up}{entry.path.removesuffix(".md")}.html"{mark}>{title}</a></li>')
    return "\n".join(lines + ["</ul>"])


def turn_html(contents, current, up):
    """Links to the page before and the page behind."""
    listed = [entry for entry in contents if entry.path]
    at = [entry.path for entry in listed].index(current)
    links = []
    for step, text in ((-1, "← {}"), (1, "{} →")):
        neighbour = listed[at + step] if 0 <= at + step < len(listed) else None
        if neighbour:
            address = f'{up}{neighbour.path.removesuffix(".md")}.html'
            links.append(f'<a href="{address}">{text.format(html.escape(neighbour.title))}</a>')
        else:
            links.append("<span></span>")
    return "".join(links)


def site_files(docs, version, contents, pages):
    """Every text file of the site by its path."""
    template = Template((docs / "theme/page.html").read_text(encoding="utf-8"))
    files, index = {}, []
    for page in pages.values():
        up = "../" * page.path.count("/")
        title = page.title if page.path == "index.md" else f"{page.title} · Vellobar"
        files[page.target] = template.substitute(
            title=html.escape(title), up=up, version=version, body=page.body,
            contents=contents_html(contents, page.path, up), turn=turn_html(contents, page.path, up))
        index += search_entries(page)
    files["theme/index.js"] = "const manualIndex = " + json.dumps(index, ensure_ascii=False, indent=0) + ";\n"
    files["theme/code.css"] = code_style()
    for name in ("manual.css", "search.js"):
        files[f"theme/{name}"] = (docs / "theme" / name).read_text(encoding="utf-8")
    return files


def code_style():
    light = HtmlFormatter(style="default").get_style_defs(".codehilite")
    dark = HtmlFormatter(style="monokai").get_style_defs(".codehilite")
    keep = [line for line in light.splitlines() if line.startswith(".codehilite .")]
    kept_dark = [line for line in dark.splitlines() if line.startswith(".codehilite .")]
    no_frames = ".codehilite .err { border: 0; color: inherit; background: none }"
    return "\n".join(keep + ["@media (prefers-color-scheme: dark) {"] + kept_dark + ["}", no_frames]) + "\n"


def other_files(docs):
    """Pictures, as paths from `docs`."""
    return sorted(p.relative_to(docs).as_posix() for p in docs.rglob("*") if p.suffix in COPIED)


def write_site(folder, docs, files):
    shutil.rmtree(folder, ignore_errors=True)
    for path, text in files.items():
        target = Path(folder) / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text, encoding="utf-8")
    for path in other_files(docs):
        (Path(folder) / path).parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(docs / path, Path(folder) / path)
