"""Texts as statements of the language."""

from __future__ import annotations

import re
from typing import Any

from ._core import short_text


def string(x: Any, name: str) -> str:
    if isinstance(x, str):
        return x
    raise TypeError(f"{name} must be a str, got {short_text(x)}")


def name_of(name: str) -> str:
    if not re.fullmatch(r"[A-Za-z_]\w*", string(name, "name")):
        raise ValueError(f"name must be letters, digits and _, got {short_text(name)}")
    return name


def statement(text: str) -> str:
    """The text as a statement, with or without its final semicolon."""
    bare = re.sub(r'("(?:[^"\\]|\\.)*")|#[^\n]*', r"\1", text).rstrip()
    return text if bare.endswith((";", ":")) else text + "\n;"


def placed(message: str, text: str) -> str | None:
    """A syntax error at the semicolon that `statement` added, as one at the end of the text; None for any other."""
    line = text.count("\n") + 2
    error = re.match(rf"syntax error at line {line}, column \d+: ", message)
    if error is None or statement(text) == text:
        return None
    lines = text.rstrip().split("\n")
    rest = message[error.end():].replace("found ';'", "found the end of the text")
    return f"syntax error at line {len(lines)}, column {len(lines[-1]) + 1}: {rest}"
