#!/usr/bin/python3
"""Looks at the rendered site as a reader does, in headless Chromium: browser.py SITE SCREENSHOTS

Every page is opened in a frame as wide as a phone: nothing may be wider than that, and the links of what the browser
made of the page have to lead somewhere. The search is asked. A few pages are photographed as wide as a desk and as a
phone.
"""

import html
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path
from urllib.parse import quote

import check

DESK, PHONE = (1280, 900), (390, 844)
PHOTOGRAPHED = ("index.html", "reference/Message.html", "reference/enumerations.html", "howto/huge-mailboxes.html",
                "architecture.html", "index.html?q=boundary")
SEARCHES = {"partsboundary": "reference/Message.html#partsboundary", "30002": "reference/errors.html#30002",
            "save attachments": "howto/save-attachments.html"}
LONGEST_RUN = 300  # seconds
LOOK = """<!DOCTYPE html><meta charset="utf-8"><body><script>
const pages = PAGES, seen = {};
function open(page) {
  const frame = document.createElement('iframe');
  frame.width = WIDTH; frame.height = HEIGHT; frame.src = 'SITE' + page;
  frame.onload = () => {
    const root = frame.contentDocument.documentElement;
    seen[page] = {width: root.scrollWidth, html: root.outerHTML};
    frame.remove();
    if (Object.keys(seen).length === pages.length) {
      const result = document.createElement('pre');
      result.textContent = JSON.stringify(seen);
      document.body.append(result);
    } else open(pages[Object.keys(seen).length]);
  };
  document.body.append(frame);
}
open(pages[0]);
</script></body>"""
FRAME = '<!DOCTYPE html><body style="margin:0"><iframe style="border:0" width="{}" height="{}" src="{}"></iframe>'


def chromium(*arguments):
    options = ["--headless=new", "--disable-gpu", "--hide-scrollbars", "--no-first-run", "--virtual-time-budget=30000",
               "--allow-file-access-from-files"]
    if os.geteuid() == 0:
        options.append("--no-sandbox")
    with tempfile.TemporaryDirectory() as profile:
        run = subprocess.run(["chromium", *options, f"--user-data-dir={profile}", *arguments], capture_output=True,
                             timeout=LONGEST_RUN, check=True)
    return run.stdout.decode("utf-8", "replace")


def look_at(site, pages, work):
    """What the browser made of each page: its width and its HTML."""
    text = LOOK.replace("PAGES", json.dumps(pages)).replace("SITE", site.as_uri() + "/")
    look = work / "look.html"
    look.write_text(text.replace("WIDTH", str(PHONE[0])).replace("HEIGHT", str(PHONE[1])), encoding="utf-8")
    result = re.search(r"<pre>(.*)</pre>", chromium("--dump-dom", look.as_uri()), re.S)
    return json.loads(html.unescape(result[1]))


def complaints_about(site, work):
    paths = sorted(p.relative_to(site).as_posix() for p in site.rglob("*.html"))
    searches = {f"index.html?q={quote(words)}": (words, expected) for words, expected in SEARCHES.items()}
    seen = look_at(site, [*paths, *searches], work)
    others = {p.relative_to(site).as_posix() for p in site.rglob("*") if p.is_file()} - set(paths)
    yield from check.check_links({path: seen[path]["html"] for path in paths}, others)
    for path in paths:
        if seen[path]["width"] > PHONE[0]:
            yield f"{path}: {seen[path]['width']} pixels wide on a phone of {PHONE[0]}"
    for address, (words, expected) in searches.items():
        if expected not in check.Anchors(seen[address]["html"]).links:
            yield f"the search for {words} does not show {expected}"


def photograph(site, folder, work):
    folder.mkdir(parents=True, exist_ok=True)
    for page in PHOTOGRAPHED:
        address = f"{site.as_uri()}/{page}"
        name = page.replace(".html", "").replace("/", "-").replace("?q=", "-search-")
        chromium(f"--window-size={DESK[0]},{DESK[1]}", f"--screenshot={folder / name}-desk.png", address)
        # The browser's own window is never as narrow as a phone; a frame inside it is.
        frame = work / "frame.html"
        frame.write_text(FRAME.format(*PHONE, html.escape(address)))
        chromium(f"--window-size=500,{PHONE[1]}", f"--screenshot={folder / name}-phone.png", frame.as_uri())


def main():
    site, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    with tempfile.TemporaryDirectory() as work:
        complaints = list(complaints_about(site, Path(work)))
        photograph(site, folder, Path(work))
    fine = f"every link leads somewhere, nothing is wider than a phone; screenshots in {folder}"
    print("\n".join(complaints) or fine)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
