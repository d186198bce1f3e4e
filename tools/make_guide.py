#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the guide's pages of HTML from Markdown.

usage: make_guide.py PLATFORM OUTPUT PAGE.md... [-- PAGE.md...]

The table of contents has the pages in the order given, those after "--" below the word Reference;
each begins with its title, a heading of the first level. A link to another page is written to its Markdown file ("records.md#format").
A heading may say which windows of the program it is about:

    ## The test window {#window f1="frmCControl"}

For each such window f1/<window>.html leads there: the program's F1 key opens it, and needs to know
no anchor (many desktops pass on a file's name only). On the page about the message boxes each block
of literal text is a place of its own, f1/message-N.html, and so is each row of its table of errors;
f1/messages.txt says by which part of a message it is found: the file's name without its ending, a
tab, the part, a tab, the first sentence below it. The message box shows that sentence.

Of headings that follow each other and are each for a platform, with what is below them, that of the
reader's PLATFORM comes first:

    ## Windows {#windows platform="windows"}

Every page is whole by itself: style within, nothing from the network. The pictures are in
OUTPUT/pictures and are made by a test; one that is not there is not shown. search.html has every
place of the guide with its text: the template's script shows those that have what was searched for.
"""

import collections
import html
import html.parser
import pathlib
import re
import string
import sys
import textwrap

import markdown
from markdown.extensions import Extension
from markdown.treeprocessors import Treeprocessor
from markdown.util import AtomicString

TEMPLATE = pathlib.Path(__file__).parents[1] / "docs" / "guide" / "template.html"
EXTENSIONS = ["attr_list", "def_list", "fenced_code", "sane_lists", "tables"]
REDIRECT = """<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta http-equiv="refresh" content="0; url={target}">
<title>Guide</title>
<p><a href="{target}">To the guide</a></p>
</html>
"""


MESSAGES = "msgBox"
LEAST_PART = 8  # characters of a message by which it may be found
BLOCK = re.compile(r"<pre><code>([^<]*)</code></pre>")
# What follows a block, or several in a row.
BELOW = re.compile(r"\s*(?:<pre><code>[^<]*</code></pre>\s*)*<p>(.*?)</p>", re.S)
SENTENCE = re.compile(r".+?[.?!](?= |$)")
ERROR_ROW = re.compile(r"<tr>\n<td>(\d+)</td>\n<td>(.*?)</td>\n<td>(.*?)</td>")


INDEX = '<ul class="a-to-z"></ul>'


def index_of(body):
    """The lines of the messages of a page, from A to Z, each a link to its message."""
    lines = {}
    for place, block in re.findall(r'<pre id="([^"]+)"><code>([^<]*)</code></pre>', body):
        for line in html.unescape(block).splitlines():
            # A name that it begins with is another one each time.
            words = re.sub(r"‹[^›]*›", "", line).strip(" ,:;.'\"")
            if line[:1].isupper() or (line[:1] in "‹'\"" and " " in words):
                lines.setdefault((words.lower(), line.strip()), place)
    rows = [
        f'<li><a href="#{lines[words, line]}">{html.escape(line)}</a></li>'
        for words, line in sorted(lines)
    ]
    return '<ul class="a-to-z">\n' + "\n".join(rows) + "\n</ul>"


def first_sentence(below):
    """Of the HTML below a message, as plain text."""
    text = " ".join(html.unescape(re.sub(r"<[^>]*>", "", below)).split())
    sentence = SENTENCE.match(text)
    return sentence[0] if sentence else text


HEADINGS = ("h1", "h2", "h3")


def platform_first(root, platform):
    """Of headings that follow each other and are each for a platform, that of platform comes first."""
    children, ordered, run = list(root), [], []

    def end_run():
        for _, block in sorted(run, key=lambda one: one[0]):
            ordered.extend(block)
        run.clear()

    while children:
        heading = children[0]
        if "platform" not in heading.attrib:
            end_run()
            ordered.append(children.pop(0))
            continue
        above = HEADINGS[: HEADINGS.index(heading.tag) + 1]
        after = (i for i, one in enumerate(children) if i > 0 and one.tag in above)
        end = next(after, len(children))
        run.append((heading.attrib.pop("platform") != platform, children[:end]))
        del children[:end]
    end_run()
    root[:] = ordered


class PageParts(Treeprocessor):
    """Orders by platform, takes windows out of headings, turns links to Markdown into links to pages."""

    def __init__(self, md, platform):
        super().__init__(md)
        self.platform = platform
        self.windows = {}
        self.sections = []

    def run(self, root):
        platform_first(root, self.platform)
        for element in root.iter():
            if element.tag in HEADINGS:
                self.heading(element)
            elif element.tag == "a":
                page, hash_, anchor = element.get("href", "").partition("#")
                if page.endswith(".md") and "://" not in page:
                    name = pathlib.PurePosixPath(page).stem
                    element.set("href", name + ".html" + hash_ + anchor)
            elif element.tag == "img":
                element.set("onerror", "this.remove()")
            elif element.tag == "pre":
                for code in element:
                    code.text = AtomicString(textwrap.dedent(code.text))
            elif element.tag == "code" and (element.text or "").startswith("-"):
                # A browser would break "--summary" behind its hyphens.
                element.set("class", "option")
            elif element.tag == "table":
                # A wide table scrolls by itself on a narrow screen.
                element.set("tabindex", "0")

    def heading(self, element):
        text = "".join(element.itertext())
        if not element.get("id"):
            element.set("id", re.sub(r"[^a-z0-9]+", "-", text.lower()).strip("-"))
        for window in element.attrib.pop("f1", "").split():
            self.windows[window] = element.get("id")
        if element.tag == "h2":
            self.sections.append((element.get("id"), text))


class Parts(Extension):
    def __init__(self, platform):
        super().__init__()
        self.platform = platform

    def extendMarkdown(self, md):
        self.processor = PageParts(md, self.platform)
        md.treeprocessors.register(self.processor, "page-parts", 0)


class Places(html.parser.HTMLParser):
    """The places of a page: anchor, heading or message, and the text up to the next one."""

    def __init__(self, body):
        super().__init__()
        self.found, self.heading, self.index = [], None, False
        self.feed(body)

    def handle_starttag(self, tag, attributes):
        anchor = dict(attributes).get("id")
        self.index = self.index or dict(attributes).get("class") == "a-to-z"
        if anchor and tag in (*HEADINGS, "pre"):
            self.found.append([anchor, "", ""])
            self.heading = tag

    def handle_endtag(self, tag):
        if tag == self.heading:
            self.heading = None
        if tag == "ul":
            self.index = False

    def handle_data(self, data):
        # What is searched for is to be found at its message, not in the index of messages.
        if self.found and not self.index:
            self.found[-1][1 if self.heading else 2] += data


class Page:
    def __init__(self, path, platform, reference=False):
        self.name = path.stem
        self.reference = reference
        text = path.read_text("utf-8")
        parts = Parts(platform)
        converter = markdown.Markdown(
            extensions=[*EXTENSIONS, parts], output_format="html", tab_length=2
        )
        self.body = converter.convert(text)
        self.windows = parts.processor.windows
        self.messages = []  # of each: its place, the parts that are always the same, what to do
        if MESSAGES in self.windows:
            self.body = BLOCK.sub(self.message, self.body)
            self.body = ERROR_ROW.sub(self.error, self.body)
            self.body = self.body.replace(INDEX, index_of(self.body))
        self.sections = parts.processor.sections
        title = re.match(r"# (.+?)(?: *\{.*\})?\n", text)
        if not title:
            raise SystemExit(f"{path} does not begin with its title")
        self.title = title[1]


    def message(self, block):
        parts = re.split(r"‹[^›]*›|\n", html.unescape(block[1]))
        parts = [part.strip() for part in parts if len(part.strip()) >= LEAST_PART]
        place = f"message-{len(self.messages) + 1}"
        below = BELOW.match(block.string, block.end())
        self.messages.append((place, parts, first_sentence(below[1]) if below else ""))
        return f'<pre id="{place}"><code>{block[1]}</code></pre>'

    def error(self, row):
        place = f"message-error-{row[1]}"
        advice = first_sentence(row[3][0].upper() + row[3][1:])
        self.messages.append((place, [f"Run-time error '{row[1]}'"], advice.rstrip(".") + "."))
        return row[0].replace("<tr>", f'<tr id="{place}">', 1)


def contents(pages, current):
    """The table of contents, with the sections of the page that is shown; of none it is the index."""
    lines = ["<ul>"]
    for page, before in zip(pages, [None, *pages]):
        if before and page.reference > before.reference:
            lines.append('</ul>\n<p class="part">Reference</p>\n<ul>')
        mark = ' aria-current="page"' if page is current else ""
        lines.append(f'<li><a href="{page.name}.html"{mark}>{html.escape(page.title)}</a>')
        if page is current and page.sections:
            lines.append("<ul>")
            lines += [
                f'<li><a href="#{anchor}">{html.escape(text)}</a></li>'
                for anchor, text in page.sections
            ]
            lines.append("</ul>")
        lines.append("</li>")
    mark = "" if current else ' aria-current="page"'
    lines.append(f'<li><a href="search.html"{mark}>Index</a></li>')
    lines.append("</ul>")
    return "\n".join(lines)


def every_place(pages):
    """The page that is searched: every place, with its text."""
    lines = ['<h1 id="places">Index</h1>', '<p id="found" role="status"></p>', '<ul class="places">']
    for page in pages:
        for anchor, heading, text in Places(page.body).found:
            title = textwrap.shorten(heading, 120, placeholder="…")
            page_title = "" if heading == page.title else f"<span>{html.escape(page.title)}</span>"
            lines.append(
                f'<li><a href="{page.name}.html#{anchor}">{html.escape(title)}</a> {page_title}'
                f"<p>{html.escape(' '.join(text.split()))}</p></li>"
            )
    lines.append("</ul>")
    return "\n".join(lines)


def neighbours(pages, index):
    """Links to the page before and the one after."""
    links = []
    if index > 0:
        before = pages[index - 1]
        links.append(f'<a rel="prev" href="{before.name}.html">← {html.escape(before.title)}</a>')
    if index + 1 < len(pages):
        after = pages[index + 1]
        links.append(f'<a rel="next" href="{after.name}.html">{html.escape(after.title)} →</a>')
    return "\n".join(links)


def main(platform, output, names):
    end = names.index("--") if "--" in names else len(names)
    pages = [
        Page(pathlib.Path(name), platform, reference=i > end)
        for i, name in enumerate(names)
        if i != end
    ]
    template = string.Template(TEMPLATE.read_text("utf-8"))
    redirects = output / "f1"
    redirects.mkdir(parents=True, exist_ok=True)
    for old in [*output.glob("*.html"), *redirects.glob("*.html")]:
        old.unlink()
    windows = {}
    for index, page in enumerate(pages):
        text = template.substitute(
            name=page.name,
            title=html.escape(page.title),
            contents=contents(pages, page),
            body=page.body,
            neighbours=neighbours(pages, index),
        )
        (output / f"{page.name}.html").write_text(text, "utf-8")
        for window, anchor in page.windows.items():
            if window in windows:
                raise SystemExit(f"{window} has two places: {windows[window]}, {page.name}")
            windows[window] = page.name
            target = f"../{page.name}.html#{anchor}"
            (redirects / f"{window}.html").write_text(REDIRECT.format(target=target), "utf-8")
        for place, _, _ in page.messages:
            target = f"../{page.name}.html#{place}"
            (redirects / f"{place}.html").write_text(REDIRECT.format(target=target), "utf-8")
        if page.messages:
            # What two messages have in common tells neither.
            times = collections.Counter(
                part for _, parts, _ in page.messages for part in set(parts))
            lines = [
                f"{place}\t{part}\t{advice}\n"
                for place, parts, advice in page.messages
                for part in parts
                if times[part] == 1
            ]
            (redirects / "messages.txt").write_text("".join(lines), "utf-8")
    search = template.substitute(
        name="search", title="Index", contents=contents(pages, None), body=every_place(pages), neighbours=""
    )
    (output / "search.html").write_text(search, "utf-8")


if __name__ == "__main__":
    main(sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:])
