"""Docstrings whose parameters are "As in `mean`." get the text from there, so that `help` of each is whole."""

from __future__ import annotations

import re
from collections import ChainMap
from collections.abc import Mapping
from inspect import cleandoc, isclass, isfunction
from typing import Any

_PARAMETERS = re.compile(r"(?<=^Parameters\n----------\n).*?(?=\n\n|\Z)", re.M | re.S)
_ENTRY = re.compile(r"^(\S[^:\n]*).*((?:\n .*)*)", re.M)
_REFERENCE = re.compile(r"\s+As in `([\w.]+)`\.\Z")


def complete(namespace: Mapping[str, Any]) -> None:
    """Fills in the docstrings of the functions and classes of a namespace."""
    for value in namespace.values():
        if isfunction(value):
            _fill(value, namespace)
        elif isclass(value) and value.__module__.startswith("vexel."):
            names = ChainMap({n: getattr(value, n) for n in dir(value)}, dict(namespace))
            for member in names.maps[0].values():
                _fill(member, names)
            _fill(value, namespace)


def _fill(documented: Any, names: Mapping[str, Any]) -> None:
    documented = getattr(documented, "__func__", documented)
    text = documented.__doc__ if isfunction(documented) or isclass(documented) else None
    if text and "As in `" in text:
        documented.__doc__ = _PARAMETERS.sub(lambda m: _whole(m[0], names), cleandoc(text))


def _whole(section: str, names: Mapping[str, Any]) -> str:
    """The entries, with those that refer to another docstring taken from there."""
    lines = []
    for entry in _ENTRY.finditer(section):
        reference = _REFERENCE.match(entry[2])
        there = _entries(reference[1], names) if reference else {}
        wanted = [n.strip(" *") for n in entry[1].split(",")]
        lines += list(dict.fromkeys(there[n] for n in wanted)) if all(n in there for n in wanted) else [entry[0]]
    return "\n".join(lines)


def _entries(path: str, names: Mapping[str, Any]) -> dict[str, str]:
    """The entries of a function or class of that name, by parameter."""
    if path.startswith("vexel."):  # not the method of that name
        path, names = path[6:], getattr(names, "maps", [names])[-1]
    first, *more = path.split(".")
    target = names.get(first)
    for name in more:
        target = getattr(target, name, None)
    _fill(target, names)
    section = _PARAMETERS.search(cleandoc(getattr(target, "__doc__", None) or ""))
    found = _ENTRY.finditer(section[0]) if section else ()
    return {name.strip(" *"): entry[0] for entry in found for name in entry[1].split(",")}
