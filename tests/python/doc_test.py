"""The examples of the docstrings, and what the package shows of itself."""

import doctest
import importlib
import inspect
import pathlib
import pkgutil

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


def test_surface():
    assert not [n for n in dir(vx) if n.startswith("_") and n != "__version__"]
    for name in dir(vx):
        value = getattr(vx, name)
        assert name == "__version__" or inspect.getdoc(value), name
        if inspect.isfunction(value):
            assert "Examples" in value.__doc__ and "Parameters" in value.__doc__, name
            assert inspect.signature(value).return_annotation is not inspect.Signature.empty, name


ROOT = pathlib.Path(__file__).resolve().parents[2]


PAGES = ["python.md", "from-scipy.md", *(f"guide/{p.name}" for p in (ROOT / "docs/guide").glob("*.md") if p.name != "README.md")]


@pytest.mark.parametrize("page", PAGES)
def test_pages(page, monkeypatch):
    monkeypatch.chdir(ROOT)
    result = doctest.testfile(str(ROOT / "docs" / page), module_relative=False, globs={"vx": vx, "np": np},
                              optionflags=doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS)
    assert result.failed == 0 and result.attempted > 1
