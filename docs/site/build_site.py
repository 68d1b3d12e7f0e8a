#!/usr/bin/python3
"""Builds the documentation as one HTML site that works from a folder, without a server: the pages of docs/,
the reference of the public headers, and a search over both.

Usage: build_site.py SOURCE OUTPUT VERSION
Ends with 1 when a link leads nowhere.
"""
import html
import json
import pathlib
import re
import shutil
import sys
import tempfile

import markdown

import reference

HERE = pathlib.Path(__file__).resolve().parent
LUNR = pathlib.Path("/usr/share/javascript/lunr/lunr.min.js")
# (section, [pages]); a page that is not there is left out.
SECTIONS = [
    ("First steps", ["docs/start.md", "docs/install.md", "examples/README.md"]),
    ("The tool", ["docs/tool.md", "docs/profiles.md", "docs/workbench.md", "docs/workbench-api.md",
                  "docs/list-files.md", "docs/virtual-camera.md"]),
    ("Bindings", ["docs/bindings/cpp.md", "docs/bindings/csharp.md", "docs/bindings/node.md",
                  "docs/bindings/python.md"]),
    ("Background", ["README.md", "SECURITY.md", "CHANGELOG.md", "docs/performance.md", "docs/reliability.md",
                    "docs/architecture.md", "CONTRIBUTING.md"]),
]
EXTENSIONS = ["tables", "fenced_code", "toc", "codehilite", "sane_lists"]
LINK = re.compile(r'<a href="([^"]*)">(.*?)</a>', re.DOTALL)
TAG = re.compile(r"<[^>]+>")
HEADING = re.compile(r"<h([1-3])[^>]*?id=[\"']([^\"']+)[\"'][^>]*>(.*?)</h\1>", re.DOTALL)


def name_of(source):
    """The file of a page in the site: docs/tool.md becomes tool.html."""
    path = pathlib.PurePosixPath(source)
    stem = path.stem if path.stem != "README" else (path.parent.name or "overview")
    prefix = "binding-" if path.parent.name == "bindings" else ""
    return f"{prefix}{stem.lower()}.html"


class Page:
    """One page: its file, title and body."""

    def __init__(self, file, title, body):
        self.file, self.title, self.body = file, title, body

    @property
    def anchors(self):
        """What links may lead to."""
        return set(re.findall(r"id=[\"']([^\"']+)[\"']", self.body))


class Site:
    """All pages of the site."""

    def __init__(self, source, version):
        self.source, self.version = pathlib.Path(source).resolve(), version
        self.sections, self.files, self.problems = [], {}, []
        for section, names in SECTIONS:
            present = [name for name in names if (self.source / name).is_file()]
            self.files.update({name: name_of(name) for name in present})
            if present:
                self.sections.append((section, [self.page_of(name) for name in present]))
        with tempfile.TemporaryDirectory() as folder:
            headers = reference.pages(self.source / "include", folder)
        self.sections.append(("Reference", [
            Page(f"reference-{pathlib.Path(header).stem}.html", header, f"<h1 id='top'>{header}</h1>{body}")
            for header, body in headers] + [self.schemas()]))

    @property
    def pages(self):
        """All pages in the order of the sections."""
        return [page for _, pages in self.sections for page in pages]

    def page_of(self, name):
        """A page from its Markdown."""
        text = (self.source / name).read_text(encoding="utf-8")
        body = markdown.markdown(text, extensions=EXTENSIONS,
                                 extension_configs={"codehilite": {"guess_lang": False}})
        found = re.search(r"<h1[^>]*>(.*?)</h1>", body, re.DOTALL)
        title = html.unescape(TAG.sub("", found[1])) if found else name
        return Page(name_of(name), title, body.replace("<table>", "<div class=wide><table>")
                    .replace("</table>", "</table></div>"))

    def schemas(self):
        """The page of the JSON Schemas, which lie beside it."""
        rows = []
        for file in sorted((self.source / "docs/json").glob("*.json")):
            schema = json.loads(file.read_text(encoding="utf-8"))
            rows.append(f"<tr><td><a href=\"json/{file.name}\">{file.name}</a></td>"
                        f"<td>{html.escape(schema.get('description') or schema.get('title', ''))}</td></tr>")
        return Page("json.html", "JSON Schemas", "<h1 id='top'>JSON Schemas</h1><p>What <code>borvanusb</code> "
                    f"prints with <code>--json</code>, by command.</p><table>{''.join(rows)}</table>")

    def resolve_links(self):
        """Lets links lead to the site's pages; those to sources become plain text."""
        names = {page.file: name for name, file in self.files.items() for page in self.pages
                 if page.file == file}
        anchors = {page.file: page.anchors for page in self.pages}
        for page in self.pages:
            base = pathlib.PurePosixPath(names.get(page.file, "docs/json.md")).parent

            def resolve(match, base=base, page=page):
                target, text = match[1], match[2]
                if re.match(r"https?:|mailto:", target):
                    return match[0]
                path, _, anchor = target.partition("#")
                file = self.target_file(base, path) if path else page.file
                if file is None:
                    return text
                known = anchors.get(file)
                if known is not None and anchor and anchor not in known:
                    self.problems.append(f"{page.file}: {target} leads nowhere")
                return f'<a href="{file}{"#" + anchor if anchor else ""}">{text}</a>'
            # The pictures of docs/ lie beside the pages.
            page.body = LINK.sub(resolve, page.body).replace('src="docs/pictures/', 'src="pictures/')

    def target_file(self, base, path):
        """The site's file for a relative link, None for one that leads out of it."""
        if path.startswith("json/") and path.endswith(".json"):
            return path
        parts = []
        for part in (base / path).parts:
            if part == "..":
                parts = parts[:-1]
            elif part != ".":
                parts.append(part)
        target = "/".join(parts)
        if not (self.source / target).exists():
            self.problems.append(f"{base}: {path} does not exist")
        return "json.html" if target.rstrip("/") == "docs/json" else self.files.get(target)

    def navigation(self, current):
        """The list of pages, with the headings of the current one."""
        parts = []
        for section, pages in self.sections:
            parts.append(f"<h2>{section}</h2><ul>")
            for page in pages:
                here = page is current
                parts.append(f"<li><a href=\"{page.file}\"{' aria-current=page' if here else ''}>"
                             f"{html.escape(page.title)}</a>")
                headings = [found for found in HEADING.findall(page.body) if found[0] != "1"] if here else []
                if headings:
                    parts.append("<ul>" + "".join(
                        f"<li class=level{level}><a href=\"#{anchor}\">{TAG.sub('', text)}</a></li>"
                        for level, anchor, text in headings) + "</ul>")
                parts.append("</li>")
            parts.append("</ul>")
        return "".join(parts)

    def search_entries(self):
        """A piece of text for each heading."""
        entries = []
        for page in self.pages:
            found = list(HEADING.finditer(page.body))
            for here, after in zip(found, [*found[1:], None]):
                text = TAG.sub(" ", page.body[here.end():after.start() if after else None])
                entries.append({"file": f"{page.file}#{here[2]}", "page": page.title,
                                "title": html.unescape(TAG.sub("", here[3])),
                                "text": " ".join(html.unescape(text).split())})
        return entries

    def write(self, output):
        """Writes all files of the site."""
        output = pathlib.Path(output)
        shutil.rmtree(output, ignore_errors=True)
        output.mkdir(parents=True)
        template = (HERE / "page.html").read_text(encoding="utf-8")
        self.resolve_links()
        for number, page in enumerate(self.pages):
            text = template
            for key, value in (("TITLE", html.escape(page.title)), ("VERSION", self.version),
                               ("NAVIGATION", self.navigation(page)), ("BODY", page.body)):
                text = text.replace(f"@{key}@", value)
            (output / page.file).write_text(text, encoding="utf-8")
            if number == 0:
                (output / "index.html").write_text(text, encoding="utf-8")
        for file in ("style.css", "search.js"):
            shutil.copy(HERE / file, output / file)
        shutil.copy(LUNR, output / "lunr.min.js")
        shutil.copytree(self.source / "docs/json", output / "json", ignore=shutil.ignore_patterns("*.md"))
        pictures = self.source / "docs/pictures"
        if pictures.is_dir():
            shutil.copytree(pictures, output / "pictures")
        entries = json.dumps(self.search_entries(), ensure_ascii=False).replace("</", "<\\/")
        (output / "search-index.js").write_text(f"const searchEntries = {entries};\n", encoding="utf-8")


def main():
    """Builds the site that the command line names."""
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    site = Site(sys.argv[1], sys.argv[3])
    site.write(sys.argv[2])
    for problem in site.problems:
        print(f"build_site.py: {problem}", file=sys.stderr)
    sys.exit(1 if site.problems else 0)


if __name__ == "__main__":
    main()
