"""The documents as pages that a browser opens from the unzipped folder."""
import html
import re
import shutil
import subprocess
from pathlib import Path

# The index: what a station builder reads comes first, with all documents that are not named here.
FIRST_PAGES = ["docs/quick-start.md", "examples/README.md"]
LAST_PAGES = ["docs/packaging.md", "simulator/README.md", "CHANGELOG.md"]
INSIDE = ["README.md", "docs/architecture.md", "docs/binding.md", "docs/protocol.md",
          "docs/states.md", "docs/benchmarks.md"]
NAMES = {"examples/README.md": "examples", "simulator/README.md": "simulator",
         "README.md": "overview", "CHANGELOG.md": "changes"}
STYLE = Path(__file__).with_name("page.css")

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title}</title>
<link rel="stylesheet" href="page.css">
</head>
<body>
<nav><a href="index.html">QorControl</a></nav>
{body}</body>
</html>
"""


class BadPage(Exception):
    pass


def page_name(document):
    return NAMES.get(document, Path(document).stem) + ".html"


def documents(source):
    """Paths relative to the source folder, in the order of the index."""
    named = FIRST_PAGES + LAST_PAGES + INSIDE
    guides = sorted(path.relative_to(source).as_posix() for path in (source / "docs").glob("*.md"))
    rest = [name for name in guides if name not in named]
    return [name for name in FIRST_PAGES + rest + LAST_PAGES + INSIDE if (source / name).is_file()]


def anchor(heading, taken):
    """As the links of the documents name it: lower case, without signs, blanks as hyphens."""
    text = html.unescape(re.sub(r"<[^>]+>", "", heading)).lower()
    name = re.sub(r"[^\w\- ]", "", text).strip().replace(" ", "-")
    count = taken.get(name, 0)
    taken[name] = count + 1
    return f"{name}-{count}" if count else name


def with_anchors(body):
    taken = {}
    return re.sub(r"<(h[1-6])>(.*?)</\1>",
                  lambda m: f'<{m[1]} id="{anchor(m[2], taken)}">{m[2]}</{m[1]}>', body)


class Links:
    """Where what a document links to is in the package."""

    def __init__(self, source, package):
        self.source = source
        self.package = package
        self.pages = {name: page_name(name) for name in documents(source)}
        self.headers = {path.name: path for path in (package / "include").rglob("*.h")}

    def target(self, document, link):
        """None for what is not in the package."""
        path = (self.source / document).parent.joinpath(link).resolve()
        if not path.is_relative_to(self.source):
            return None
        name = path.relative_to(self.source).as_posix()
        if name in self.pages:
            return self.pages[name]
        if path.suffix == ".h" and path.name in self.headers:
            return "../" + self.headers[path.name].relative_to(self.package).as_posix()
        for folder in ("examples", "docs/images"):
            if name.startswith(folder + "/") and (self.package / name).is_file():
                return name.removeprefix("docs/") if folder != "examples" else "../" + name
        return None

    def rewrite(self, document, body):
        """What is not in the package stays as text."""
        def link(match):
            address, _, place = match[1].partition("#")
            if not address or "://" in address:
                return match[0]
            target = self.target(document, html.unescape(address))
            return f'<a href="{target}{"#" + place if place else ""}">{match[2]}</a>' \
                if target else match[2]

        def image(match):
            target = self.target(document, html.unescape(match[1]))
            if not target:
                raise BadPage(f"{document}: the picture {match[1]} is not in the package")
            return f'<img src="{target}"'

        body = re.sub(r'<a href="([^"]*)">(.*?)</a>', link, body, flags=re.DOTALL)
        return re.sub(r'<img src="([^"]*)"', image, body)


def body_of(path):
    command = ["cmark-gfm", "--extension", "table", "--extension", "autolink", str(path)]
    try:
        return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout
    except FileNotFoundError:
        raise BadPage("there is no 'cmark-gfm': cmake/install-packages.sh package") from None
    except subprocess.CalledProcessError as error:
        raise BadPage(f"cmark-gfm cannot read {path}: exit code {error.returncode}") from None


def first(pattern, body, document):
    match = re.search(pattern, body, re.DOTALL)
    if not match:
        raise BadPage(f"{document} has no title, or no first paragraph")
    return match[1]


def index(entries):
    """entries: (document, page, title, first sentence)."""
    def rows(inside):
        return "".join(f'<dt><a href="{page}">{title}</a></dt>\n<dd>{sentence}</dd>\n'
                       for document, page, title, sentence in entries
                       if (document in INSIDE) == inside)

    return (f"<h1>QorControl</h1>\n<h2>For stations</h2>\n<dl>\n{rows(False)}</dl>\n"
            "<h2>The library from inside</h2>\n<p>These pages speak of the sources and of building "
            f"them.</p>\n<dl>\n{rows(True)}</dl>\n")


def write_pages(source, package):
    folder = package / "docs"
    folder.mkdir()
    if (source / "docs/images").is_dir():
        shutil.copytree(source / "docs/images", folder / "images")
    shutil.copyfile(STYLE, folder / STYLE.name)
    links = Links(source, package)
    entries = []
    for document, page in links.pages.items():
        body = links.rewrite(document, with_anchors(body_of(source / document)))
        title = first(r"<h1[^>]*>(.*?)</h1>", body, document)
        sentence = re.sub(r"<[^>]+>", "", first(r"<p>(.*?)(?<=[.:])(?:\s|</p>)", body, document))
        entries.append((document, page, title, sentence.rstrip(":.") + "."))
        write(folder / page, re.sub(r"<[^>]+>", "", title), body)
    write(folder / "index.html", "QorControl", index(entries))


def write(path, title, body):
    path.write_text(PAGE.format(title=title, body=body), encoding="utf-8", newline="\n")
