"""The reference site: `make docs` writes build/site from the pages of docs/, the headers and the docstrings.

Pages of Python and of the C++ headers are written at build time, from dir(vexel) and include/vexel, so that no
text stands twice.
"""

import inspect
import os
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = ROOT / "build" / "pages"  # what Sphinx reads: a copy of docs/, and the generated pages
sys.path.insert(0, os.environ.get("VEXEL_PYTHON", str(ROOT / "build" / "python")))

project = "vexel"
author = "the vexel developers"
release = re.search(r"VERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
extensions = ["myst_parser", "sphinx.ext.autodoc", "sphinx.ext.napoleon"]
source_suffix = {".md": "markdown", ".rst": "restructuredtext"}
html_theme = "furo"
html_title = f"vexel {release}"
myst_heading_anchors = 4
autodoc_typehints = "none"
autodoc_member_order = "bysource"
napoleon_google_docstring = False
napoleon_use_rtype = False
nitpicky = False

SECTIONS = {
    "Functions": lambda v: inspect.isroutine(v),
    "Distributions": lambda v: inspect.isclass(v) and hasattr(v, "logsf"),
    "Random numbers and sequences": lambda v: inspect.isclass(v) and v.__name__ in {"Random", "Urn", "Sobol", "Halton", "Faure"},
    "States": lambda v: inspect.isclass(v) and hasattr(v, "to_bytes"),
    "The host and errors": lambda v: inspect.isclass(v),
}


def write(path, title, body):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(f"{title}\n{'=' * len(title)}\n\n{body}")


def python_pages():
    """A page for each section of the package; returns their names."""
    import vexel

    left = {n: getattr(vexel, n) for n in dir(vexel) if not n.startswith("_")}
    written = []
    for title, belongs in SECTIONS.items():
        names = [n for n, v in left.items() if belongs(v)]
        entry = {True: ".. autoclass:: vexel.{}\n   :members:\n   :inherited-members:\n",
                 False: ".. autofunction:: vexel.{}\n"}
        write(PAGES / "python" / f"{title.lower().replace(' ', '_')}.rst", title,
              "\n".join(entry[inspect.isclass(left.pop(n))].format(n) for n in names))
        written.append(f"python/{title.lower().replace(' ', '_')}")
    return written


def header_pages():
    written = []
    for header in sorted((ROOT / "include" / "vexel").rglob("*.hpp")):
        name = header.relative_to(ROOT / "include").with_suffix("")
        code = "".join(f"   {line}\n" for line in header.read_text().splitlines())
        write(PAGES / "headers" / f"{name}.rst", f"<{name}.hpp>", f".. code-block:: cpp\n\n{code}")
        written.append(str(name))
    write(PAGES / "headers" / "index.rst", "Headers", tree("", written))
    return ["headers/index"]


def tree(caption, pages):
    heading = f"   :caption: {caption}\n" if caption else ""
    return f".. toctree::\n{heading}   :maxdepth: 1\n\n" + "".join(f"   {p}\n" for p in pages) + "\n"


def pages_of(folder, *first):
    """The pages of a folder of docs/, those named first in their order."""
    rest = sorted(p.stem for p in (ROOT / "docs" / folder).glob("*.md") if p.stem not in first)
    prefix = folder + "/" if folder else ""
    return [prefix + p for p in [*first, *rest]]


CODE = re.compile(r"^```.*?^```|^    .*?$", re.M | re.S)
LINK = re.compile(r"(?<!!)\[([^\]]*)\]\(([^)#\s]+)(#[^)]*)?\)")


def stage():
    """Copies docs/ to where Sphinx reads it.  A link that leaves docs/ keeps its text; one to a folder goes to its page."""
    docs = ROOT / "docs"
    for source in docs.rglob("*"):
        if not source.is_file() or "site" in source.relative_to(docs).parts:
            continue
        target = PAGES / source.relative_to(docs)
        target.parent.mkdir(parents=True, exist_ok=True)
        if source.suffix != ".md":
            target.write_bytes(source.read_bytes())
            continue

        def mend(match, folder=source.parent):
            words, path, anchor = match.group(1), match.group(2), match.group(3) or ""
            if "://" in path:
                return match.group(0)
            file = (folder / path).resolve()
            if not file.exists():
                raise FileNotFoundError(f"{folder}: {path}")
            if docs not in file.parents or (file.is_dir() and not (file / "README.md").exists()):
                return words
            return f"[{words}]({path.rstrip('/') + '/README.md' if file.is_dir() else path}{anchor})"

        text, at, parts = source.read_text(), 0, []
        for code in CODE.finditer(text):  # there brackets are brackets
            parts += [LINK.sub(mend, text[at:code.start()]), code.group(0)]
            at = code.end()
        target.write_text("".join(parts) + LINK.sub(mend, text[at:]))


def write_index():
    first = "Statistics that are right to the last digit, for Python, C++ and a language of their own."
    write(PAGES / "index.rst", "vexel", first + "\n\n" +
          tree("Guide", ["guide/README", "guide/weights", "guide/missing", "guide/quantiles", "guide/seeds", "guide/exactness",
                         "guide/own_laws", "guide/states", "guide/entry_points", "guide/coming_from", "from-scipy"]) +
          tree("Python", ["python", *python_pages()]) +
          tree("C++", [*pages_of("functions", "README", "statistics", "distributions"), *header_pages()]) +
          tree("Language and entry points", ["command", *pages_of("reference", "README", "tasks", "language"), "beside_r", "gallery"]) +
          tree("The project", ["architecture", "comparison", "accuracy", "performance", "reliability", "beyond-one-machine", "embedding",
                               "host-interface"]))


def escape_bars(app, what, name, value, options, lines):
    """|x| in a docstring is a size, not a substitution."""
    lines[:] = [line if line.lstrip().startswith((">>>", "...")) else line.replace("|", r"\|") for line in lines]


def setup(app):
    app.connect("autodoc-process-docstring", escape_bars, priority=900)
    return {"parallel_read_safe": True}


stage()
write_index()
