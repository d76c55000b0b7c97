#!/bin/sh
# Checks the help page qvl.html before it ships.
#
#   check-help.sh [PAGE]        check PAGE (default: qvl.html next to this script)
#   check-help.sh --self-test   also prove that the checks catch broken pages
#
# The page is opened from the program folder in the player's browser, so it
# must stand on its own: no network addresses, no outside files, no scripts.
# It must also be well-formed HTML, and the skin layout it documents must
# keep the exact numbers the game cuts skins by.
#
# Needs only POSIX sh and python3 (standard library).
# Exit status: 0 = page is fine, 1 = problems found, 2 = usage error.

set -eu
here=$(CDPATH= cd -- "$(dirname -- "$0")" && pwd)
exec python3 - "$here" "$@" <<'PYTHON'
import re
import sys
from html.parser import HTMLParser

HERE = sys.argv[1]
ARGS = sys.argv[2:]

# Elements without an end tag in HTML.
VOID = {"area", "base", "br", "col", "embed", "hr", "img", "input", "link",
        "meta", "source", "track", "wbr"}
# Elements that load or run something from elsewhere, or need a src to exist.
FORBIDDEN_ELEMENTS = {"script", "link", "iframe", "frame", "frameset", "object",
                      "embed", "applet", "base", "img", "picture", "source",
                      "video", "audio", "track", "portal", "form", "noscript"}
# Attributes whose value is an address.
URL_ATTRIBUTES = {"href", "src", "srcset", "xlink:href", "action", "formaction",
                  "data", "poster", "background", "cite", "longdesc", "manifest",
                  "ping", "codebase", "archive", "lowsrc", "dynsrc", "profile",
                  "icon", "usemap"}

# The skin layout: piece -> (x, y, width, height) in skin picture pixels.
SKIN_AREAS = {
    "top": (0, 0, 280, 20),
    "left": (0, 20, 20, 300),
    "right": (260, 20, 20, 300),
    "bottom": (0, 320, 280, 20),
    "exit": (80, 320, 120, 20),
    "title": (280, 0, 90, 340),
    "banner": (0, 340, 370, 40),
    "big": (20, 20, 120, 120),
    "wide": (20, 140, 120, 60),
    "tall1": (20, 200, 60, 120),
    "tall2": (80, 200, 60, 120),
    "tall3": (140, 200, 60, 120),
    "tall4": (200, 200, 60, 120),
    "small": (200, 140, 60, 60),
    "big2": (140, 20, 120, 120),
    "small2": (140, 140, 60, 60),
}
# The same pieces as the table lists them: (x, y, width, height) cells as text.
SKIN_TABLE_ROWS = [
    ("0", "0", "280", "20"),
    ("0", "20", "20", "300"),
    ("260", "20", "20", "300"),
    ("0", "320", "280", "20"),
    ("280", "0", "90", "340"),
    ("0", "340", "370", "40"),
    ("20", "20", "120", "120"),
    ("20", "140", "120", "60"),
    ("20, 80, 140, 200", "200", "60", "120 each"),
    ("200", "140", "60", "60"),
    ("140", "20", "120", "120"),
    ("140", "140", "60", "60"),
]
# Where the pieces go in the game window: piece -> (x, y, width, height).
WINDOW_AREAS = {
    "top": (10, 10, 280, 20),
    "left": (10, 30, 20, 300),
    "right": (270, 30, 20, 300),
    "bottom": (10, 330, 280, 20),
    "exit": (90, 330, 120, 20),
    "title": (310, 10, 90, 340),
    "cells": (30, 30, 240, 300),
}


def url_is_local(value):
    v = value.strip()
    return v.startswith("#") or v.lower().startswith("mailto:")


def css_problems(css, where):
    problems = []
    low = css.lower()
    if "@import" in low:
        problems.append(f"{where}: CSS @import loads another file")
    if "@font-face" in low:
        problems.append(f"{where}: CSS @font-face (web fonts are not allowed)")
    if "image-set(" in low:
        problems.append(f"{where}: CSS image-set() loads pictures")
    for m in re.finditer(r"url\(\s*(['\"]?)(.*?)\1\s*\)", css, re.I | re.S):
        if not m.group(2).startswith("#"):
            problems.append(f"{where}: CSS url({m.group(2)}) is not a reference inside the page")
    return problems


class Page(HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.problems = []
        self.stack = []          # (tag, line)
        self.ids = {}
        self.links = []          # (fragment, line)
        self.doctype = None
        self.html_lang = None
        self.meta_charset = None
        self.meta_charset_in_head = False
        self.title_text = None
        self.in_title = False
        self.in_style = False
        self.headings = []       # (level, text, line)
        self.heading_text = None
        self.sections = []       # ids of <section>
        self.nav_links = set()
        self.in_nav = 0
        self.svgs = []           # dicts describing each <svg>
        self.svg = None
        self.svg_depth = 0
        self.table_class = None
        self.table_rows = {}     # class -> list of rows (list of cell texts)
        self.row = None
        self.cell = None

    # -- helpers ---------------------------------------------------------
    def where(self):
        return f"line {self.getpos()[0]}"

    def bad(self, msg):
        self.problems.append(f"{self.where()}: {msg}")

    def inside(self, tag):
        return any(t == tag for t, _ in self.stack)

    # -- parser callbacks --------------------------------------------------
    def handle_decl(self, decl):
        if self.doctype is None:
            self.doctype = decl

    def handle_starttag(self, tag, attrs):
        self.open_tag(tag, attrs, self_closing=False)

    def handle_startendtag(self, tag, attrs):
        self.open_tag(tag, attrs, self_closing=True)

    def open_tag(self, tag, attrs, self_closing):
        a = {}
        for name, value in attrs:
            if name in a:
                self.bad(f"<{tag}> has the attribute {name} twice")
            a[name] = "" if value is None else value

        if tag in FORBIDDEN_ELEMENTS:
            self.bad(f"<{tag}> is not allowed (the page must be self-contained and script-free)")
        for name, value in a.items():
            if name in URL_ATTRIBUTES and not url_is_local(value):
                self.bad(f'<{tag} {name}="{value}"> points outside the page '
                         f"(only #anchors and mailto: are allowed)")
            if name.startswith("on"):
                self.bad(f"<{tag}> has an event handler {name}= (no scripts)")
            if name == "style":
                for p in css_problems(value, f"style attribute of <{tag}>"):
                    self.bad(p)
        if tag == "meta" and a.get("http-equiv", "").lower() == "refresh":
            self.bad("<meta http-equiv=refresh> sends the reader elsewhere")

        if "id" in a:
            if a["id"] in self.ids:
                self.bad(f'id "{a["id"]}" is used twice (first on line {self.ids[a["id"]]})')
            self.ids.setdefault(a["id"], self.getpos()[0])
        for name in ("href", "xlink:href"):
            if a.get(name, "").startswith("#"):
                self.links.append((a[name][1:], self.getpos()[0]))
                if self.in_nav:
                    self.nav_links.add(a[name][1:])

        if tag == "html":
            self.html_lang = a.get("lang", "").strip()
        elif tag == "meta" and "charset" in a:
            self.meta_charset = a["charset"].strip().lower()
            self.meta_charset_in_head = self.inside("head")
        elif tag == "title" and self.inside("head"):
            self.in_title = True
            self.title_text = ""
        elif tag == "style":
            self.in_style = True
        elif tag in ("h1", "h2", "h3", "h4", "h5", "h6"):
            self.heading_text = ""
        elif tag == "section":
            self.sections.append(a.get("id"))
        elif tag == "nav":
            self.in_nav += 1
        elif tag == "svg":
            if self.svg is None:
                self.svg = {"line": self.getpos()[0], "attrs": a, "title": False,
                            "skin": {}, "window": {}}
                self.svgs.append(self.svg)
            self.svg_depth += 1
        elif tag == "title" and self.svg is not None:
            self.svg["title"] = True
        elif tag == "rect" and self.svg is not None:
            try:
                box = tuple(int(float(a[k])) for k in ("x", "y", "width", "height"))
            except (KeyError, ValueError):
                box = None
            for key, store in (("data-area", "skin"), ("data-win", "window")):
                if key in a:
                    self.svg[store][a[key]] = box
        elif tag == "table":
            self.table_class = a.get("class", "")
            self.table_rows.setdefault(self.table_class, [])
        elif tag == "tr" and self.table_class is not None and self.inside("tbody"):
            self.row = []
        elif tag in ("td", "th") and self.row is not None:
            self.cell = ""

        if tag in VOID:
            return
        if self_closing:
            if self.svg is None:
                self.bad(f"<{tag}/>: an HTML element cannot be closed with />")
            return
        self.stack.append((tag, self.getpos()[0]))

    def handle_endtag(self, tag):
        if tag in VOID:
            self.bad(f"</{tag}>: <{tag}> has no end tag")
            return
        if not self.stack:
            self.bad(f"</{tag}> closes nothing")
            return
        open_tag, open_line = self.stack[-1]
        if open_tag != tag:
            self.bad(f"</{tag}> found, but <{open_tag}> from line {open_line} is still open")
            # recover: pop up to a matching tag if there is one
            if any(t == tag for t, _ in self.stack):
                while self.stack and self.stack[-1][0] != tag:
                    self.stack.pop()
                self.stack.pop()
            return
        self.stack.pop()

        if tag == "title" and self.in_title:
            self.in_title = False
        elif tag == "style":
            self.in_style = False
        elif tag in ("h1", "h2", "h3", "h4", "h5", "h6") and self.heading_text is not None:
            self.headings.append((int(tag[1]), " ".join(self.heading_text.split()), self.getpos()[0]))
            self.heading_text = None
        elif tag == "nav":
            self.in_nav -= 1
        elif tag == "svg":
            self.svg_depth -= 1
            if self.svg_depth == 0:
                self.svg = None
        elif tag in ("td", "th") and self.cell is not None:
            self.row.append(" ".join(self.cell.split()))
            self.cell = None
        elif tag == "tr" and self.row is not None:
            self.table_rows[self.table_class].append(self.row)
            self.row = None
        elif tag == "table":
            self.table_class = None

    def handle_data(self, data):
        if self.in_title:
            self.title_text += data
        if self.in_style:
            for p in css_problems(data, "<style>"):
                self.bad(p)
        if self.heading_text is not None:
            self.heading_text += data
        if self.cell is not None:
            self.cell += data


def check(text):
    """Return the list of problems found in the page text."""
    problems = []

    low = text.lower()
    for needle in ("http:", "https:", "//"):
        pos = low.find(needle)
        if pos >= 0:
            line = text.count("\n", 0, pos) + 1
            problems.append(f"line {line}: '{needle}' found; the page must not refer to anything outside itself")

    page = Page()
    page.feed(text)
    page.close()
    problems += page.problems

    # well-formedness
    for tag, line in page.stack:
        problems.append(f"line {line}: <{tag}> is never closed")
    if page.doctype is None or page.doctype.strip().lower() != "doctype html":
        problems.append("the page must start with <!DOCTYPE html>")
    elif not text.lstrip("\ufeff").lstrip().lower().startswith("<!doctype html>"):
        problems.append("<!DOCTYPE html> must come first")
    if not page.html_lang:
        problems.append('<html> needs a lang attribute, e.g. <html lang="en">')
    if page.meta_charset != "utf-8":
        problems.append('<meta charset="utf-8"> is missing')
    elif not page.meta_charset_in_head or len(text[:low.find("<meta charset")].encode("utf-8")) > 1024:
        problems.append('<meta charset="utf-8"> must be in <head>, within the first 1024 bytes')
    if not (page.title_text or "").strip():
        problems.append("<title> is missing or empty")

    # anchors, headings, contents
    for frag, line in page.links:
        if frag not in page.ids:
            problems.append(f'line {line}: link to "#{frag}", but no element has that id')
    levels = [lvl for lvl, _, _ in page.headings]
    if levels.count(1) != 1:
        problems.append(f"the page needs exactly one <h1> (found {levels.count(1)})")
    prev = 0
    for lvl, txt, line in page.headings:
        if lvl > prev + 1:
            problems.append(f"line {line}: heading <h{lvl}> \"{txt}\" skips a level after <h{prev}>")
        prev = lvl
    for sec in page.sections:
        if not sec:
            problems.append("a <section> has no id, so the contents cannot link to it")
        elif sec not in page.nav_links:
            problems.append(f'section "{sec}" is not listed in the contents (<nav>)')

    # pictures: accessible and drawn to scale
    for svg in page.svgs:
        a = svg["attrs"]
        where = f"line {svg['line']}: <svg>"
        if a.get("aria-hidden") != "true" and not (svg["title"] or a.get("aria-label")):
            problems.append(f"{where} needs a <title> (or aria-hidden=\"true\" if it is decoration)")
        if "viewbox" in a and "width" in a and "height" in a:
            try:
                _, _, vw, vh = (float(v) for v in a["viewbox"].replace(",", " ").split())
                sx, sy = float(a["width"]) / vw, float(a["height"]) / vh
            except ValueError:
                problems.append(f"{where} has an unreadable viewBox/width/height")
            else:
                if abs(sx - sy) > 0.01:
                    problems.append(f"{where} is stretched ({sx:.3f} across, {sy:.3f} down)")

    # the documented skin layout
    skin = [s for s in page.svgs if s["skin"]]
    if len(skin) != 1:
        problems.append(f"expected one skin layout diagram (rects with data-area), found {len(skin)}")
    else:
        found = skin[0]["skin"]
        for name, box in SKIN_AREAS.items():
            if found.get(name) != box:
                problems.append(f"skin diagram: {name} should be at {box}, found {found.get(name)}")
        for name in sorted(set(found) - set(SKIN_AREAS)):
            problems.append(f"skin diagram: unknown piece {name}")
        vb = skin[0]["attrs"].get("viewbox", "").split()
        if len(vb) == 4 and abs(float(skin[0]["attrs"].get("width", 0)) / float(vb[2]) - 1.5) > 0.01:
            problems.append("skin diagram: it must be shown at 1.5 screen pixels per picture pixel, as its caption says")
    win = [s for s in page.svgs if s["window"]]
    if len(win) != 1:
        problems.append(f"expected one window layout diagram (rects with data-win), found {len(win)}")
    else:
        found = win[0]["window"]
        for name, box in WINDOW_AREAS.items():
            if found.get(name) != box:
                problems.append(f"window diagram: {name} should be at {box}, found {found.get(name)}")
        for name in sorted(set(found) - set(WINDOW_AREAS)):
            problems.append(f"window diagram: unknown piece {name}")
    rows = [r[1:] for r in page.table_rows.get("skin", [])]
    if [tuple(r) for r in rows] != SKIN_TABLE_ROWS:
        problems.append("skin table: its x, y, width, height columns differ from the skin layout")

    return problems


def read_page(path):
    with open(path, "rb") as f:
        raw = f.read()
    try:
        return raw.decode("utf-8"), []
    except UnicodeDecodeError as e:
        return raw.decode("utf-8", "replace"), [f"not valid UTF-8 at byte {e.start}"]


def self_test(text):
    """Break the page in known ways; each must be reported, the intact page must not."""
    def sub(old, new, count=1):
        def mutate(t):
            assert old in t, f"self-test needs {old!r} in the page"
            return t.replace(old, new, count)
        return mutate

    end_main = "</main>"
    cases = [
        ("intact page", lambda t: t, None),
        ("a mailto link is fine", sub(end_main, '<p><a href="mailto:x@example.org">x</a></p>' + end_main), None),
        ("picture from the web", sub(end_main, '<img src="https://example.org/a.png" alt="">' + end_main), "https:"),
        ("protocol-relative link", sub(end_main, '<p><a href="//example.org/x">x</a></p>' + end_main), "'//'"),
        ("link to another file", sub(end_main, '<p><a href="other.html">x</a></p>' + end_main), "points outside the page"),
        ("style sheet file", sub("</head>", '<link rel="stylesheet" href="qvl.css">\n</head>'), "<link> is not allowed"),
        ("script", sub("</head>", "<script>document.title = 1;</script>\n</head>"), "<script> is not allowed"),
        ("event handler", sub("<body>", '<body onload="go()">'), "event handler"),
        ("CSS import", sub("<style>", '<style>\n@import "more.css";'), "@import"),
        ("CSS picture", sub("<style>", "<style>\nbody { background: url(paper.png); }"), "CSS url(paper.png)"),
        ("web font", sub("<style>", "<style>\n@font-face { font-family: X; }"), "@font-face"),
        ("SVG picture from a file", sub(end_main, '<svg aria-hidden="true"><image href="pic.png"/></svg>' + end_main),
         "points outside the page"),
        ("no lang", sub('<html lang="en">', "<html>"), "lang attribute"),
        ("no charset", sub('<meta charset="utf-8">', ""), "meta charset"),
        ("empty title", lambda t: re.sub(r"<title>.*?</title>", "<title></title>", t, count=1, flags=re.S),
         "<title> is missing or empty"),
        ("no doctype", sub("<!DOCTYPE html>", ""), "DOCTYPE"),
        ("section not closed", sub("</section>", ""), "still open"),
        ("stray end tag", sub(end_main, "</div>" + end_main), "</div> found"),
        ("self-closed div", sub(end_main, "<div/>" + end_main), "cannot be closed with />"),
        ("dangling anchor", sub('href="#files"', 'href="#nowhere"'), 'link to "#nowhere"'),
        ("duplicate id", sub(end_main, '<p id="files">x</p>' + end_main), "used twice"),
        ("skipped heading level", sub(end_main, "<h4>x</h4>" + end_main), "skips a level"),
        ("section missing from contents", sub(end_main, '<section id="extra"><h2>x</h2></section>' + end_main),
         'section "extra" is not listed'),
        ("skin piece moved", sub('data-area="right" x="260"', 'data-area="right" x="250"'), "skin diagram: right"),
        ("window piece moved", sub('data-win="title" x="310"', 'data-win="title" x="300"'), "window diagram: title"),
        ("skin table changed", sub('<td class="n">370</td>', '<td class="n">360</td>'), "skin table"),
        ("diagram stretched", sub('width="624" height="609"', 'width="624" height="500"'), "stretched"),
        ("diagram without title", lambda t: re.sub(r'<title id="fig-skin-t">(.*?)</title>',
                                                   r'<desc id="fig-skin-t">\1</desc>', t, count=1, flags=re.S),
         "needs a <title>"),
    ]
    failures = 0
    for name, mutate, expect in cases:
        found = check(mutate(text))
        if expect is None:
            ok = not found
            detail = "; ".join(found[:3])
        else:
            ok = any(expect in p for p in found)
            detail = f"expected a problem mentioning {expect!r}, got: " + ("; ".join(found[:3]) or "nothing")
        print(f"  {'ok  ' if ok else 'FAIL'} {name}" + ("" if ok else f"\n       {detail}"))
        failures += not ok
    return failures


def main():
    self_testing = "--self-test" in ARGS
    rest = [a for a in ARGS if a != "--self-test"]
    if len(rest) > 1 or any(a.startswith("-") for a in rest):
        print("usage: check-help.sh [--self-test] [PAGE]", file=sys.stderr)
        return 2
    path = rest[0] if rest else HERE + "/qvl.html"
    try:
        text, problems = read_page(path)
    except OSError as e:
        print(f"{path}: {e.strerror}", file=sys.stderr)
        return 1
    problems += check(text)
    for p in problems:
        print(f"{path}: {p}")
    status = 1 if problems else 0
    if self_testing:
        print("self-test:")
        if self_test(text):
            status = 1
    if status == 0:
        print(f"{path}: ok")
    return status


sys.exit(main())
PYTHON
