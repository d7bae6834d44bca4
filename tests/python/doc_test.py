"""The examples of the docstrings, and what the package shows of itself."""

import doctest
import importlib
import inspect
import pathlib
import pkgutil
import re

import numpy as np
import pytest

import vexel as vx

MODULES = [m.name for m in pkgutil.walk_packages(vx.__path__, "vexel.")
           if m.name.rpartition(".")[2] not in ("_core", "_host", "dask", "stream") and not m.name.startswith("vexel.lib")]


@pytest.mark.parametrize("name", MODULES)
def test_examples(name):
    module = importlib.import_module(name)
    result = doctest.testmod(module, extraglobs={"vx": vx, "np": np},
                             optionflags=doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS)
    assert result.failed == 0


def functions_of(owner):
    """The functions and methods that a user may call, with their names."""
    if not inspect.isclass(owner):
        return [(owner.__name__, owner)]
    members = ((n, inspect.getattr_static(owner, n)) for n in dir(owner) if not n.startswith("_") or n == "__call__")
    plain = ((n, getattr(m, "__func__", m)) for n, m in members)
    return [(f"{owner.__name__}.{n}", m) for n, m in plain if inspect.isfunction(m) and m.__module__.startswith("vexel.")]


def test_surface():
    assert not [n for n in dir(vx) if n.startswith("_") and n != "__version__"]
    for name in dir(vx):
        value = getattr(vx, name)
        assert name == "__version__" or inspect.getdoc(value), name
        if inspect.isfunction(value):
            assert inspect.signature(value).return_annotation is not inspect.Signature.empty, name
        if inspect.isfunction(value) or inspect.isclass(value) and not issubclass(value, Exception):
            assert "Examples\n" in inspect.getdoc(value), name


PUBLIC = [getattr(vx, n) for n in dir(vx) if n != "__version__"] + [getattr(vx.results, n) for n in vx.results.__all__]


@pytest.mark.parametrize("owner", PUBLIC, ids=lambda owner: owner.__name__)
def test_docstrings(owner):
    for name, function in functions_of(owner):
        text = inspect.getdoc(function) or ""
        assert re.match(r"\S.*[.)]$", text.split("\n")[0]), name
        assert "As in `" not in text, name  # filled in
        sections = dict(re.findall(r"^(\w+)\n-+\n(.*?)(?=^\w+\n-+\n|\Z)", text, re.S | re.M))
        listed = re.findall(r"^(?! )([*\w, ]+?)(?: :.*)?$", sections.get("Parameters", ""), re.M)
        documented = [n.strip(" *") for line in listed for n in line.split(",")]
        parameters = [p for p in inspect.signature(function).parameters if p not in ("self", "cls")]
        assert documented == parameters or sorted(documented) == sorted(parameters), (name, documented)
        assert not parameters or "Examples" in sections or "plot" in name or "from_bytes" in name, name
    if inspect.isclass(owner):
        properties = [n for n in dir(owner) if not n.startswith("_") and not callable(getattr(owner, n)) and not hasattr(Exception, n)]
        text = inspect.getdoc(owner) or ""
        bare = [n for n in properties if not re.search(rf"\b{n}\b", text) and not getattr(owner, n).__doc__]
        assert not bare, (owner, bare)


ROOT = pathlib.Path(__file__).resolve().parents[2]


PAGES = ["python.md", "from-scipy.md", *(f"guide/{p.name}" for p in (ROOT / "docs/guide").glob("*.md") if p.name != "README.md")]


@pytest.mark.parametrize("page", PAGES)
def test_pages(page, monkeypatch):
    monkeypatch.chdir(ROOT)
    result = doctest.testfile(str(ROOT / "docs" / page), module_relative=False, globs={"vx": vx, "np": np},
                              optionflags=doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS)
    assert result.failed == 0 and result.attempted > 1
