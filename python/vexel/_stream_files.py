"""The files of `vexel.stream`: where their columns are, and their pieces."""

from __future__ import annotations

import csv
import io
import itertools
import os
import re
import warnings
from collections.abc import Iterable, Iterator
from typing import Any, NamedTuple

import numpy as np

from ._core import short_text

# What every reader of the library takes for a missing number, beyond what pandas does.
_missing = [".", *("".join(letters) for text in ("na", "n/a", "nan", "null")
                   for letters in itertools.product(*((c, c.upper()) if c.isalpha() else (c,) for c in text)))]
_number = re.compile(r"[+-]?((\d+\.?\d*|\.\d+)(e[+-]?\d+)?|inf(inity)?)", re.IGNORECASE | re.ASCII)


class Text(NamedTuple):
    """How CSV files are written."""

    headings: bool | None = None
    separator: str | None = None
    decimal: str = "."
    na: tuple[str, ...] = ()

    @property
    def between(self) -> str:
        return self.separator or (";" if self.decimal == "," else ",")


def text_of(headings: Any, separator: Any, decimal: Any, na: Iterable[str]) -> Text:
    for name, mark in (("separator", separator), ("decimal", decimal)):
        if name == "separator" and mark is None:
            continue
        if not (isinstance(mark, str) and len(mark) == 1 and mark.isascii() and not mark.isalnum() and mark not in '"\r\n+-'):
            raise ValueError(f"{name} must be a character like ',', ';' or '\\t', got {short_text(mark)}")
    if not (headings is None or isinstance(headings, (bool, np.bool_))):
        raise TypeError(f"headings must be True, False or None, got {short_text(headings)}")
    text = Text(None if headings is None else bool(headings), separator, decimal, tuple(sorted(na)))
    if text.between == decimal:
        raise ValueError(f"separator must be another character than the decimal mark, got {separator!r}")
    return text


def _chosen(names: list[str] | int, column: Any, path: str) -> int:
    """The position of a column among names, or among so many without names."""
    count, known = (names, []) if isinstance(names, int) else (len(names), names)
    if column is None and count == 1:
        return 0
    if isinstance(column, str) and column in known:
        if known.count(column) > 1:
            raise ValueError(f"column: {path} has several {short_text(column)}; give the number of one")
        return known.index(column)
    if isinstance(column, str) and column.isdecimal() and int(column) < count:
        return int(column)
    if isinstance(column, (int, np.integer)) and 0 <= column < count:
        return int(column)
    shown = ", ".join(n if len(n) <= 40 else n[:37] + "..." for n in known[:8]) + (", ..." if count > 8 else "")
    shown = shown if known else f"columns 0 to {count - 1}"
    if column is None:
        raise ValueError(f"column: one has to be chosen of {path}, which has {shown}")
    raise ValueError(f"column: {path} has no {short_text(column)}, it has {shown}")


class _Csv:
    """Row 1 holds headings, unless every cell of it is a number or missing, or `headings` says otherwise."""

    def __init__(self, path: str, text: Text) -> None:
        import pandas

        self.path, self.pandas, self.text = path, pandas, text
        self._require_text()
        # The parsers of numbers that round correctly: from 3.1 on that of default, before it the one so named.
        version = tuple(map(int, re.findall(r"\d+", pandas.__version__)[:2]))
        self.exact = {} if version >= (3, 1) else {"float_precision": "round_trip"}
        try:
            first = pandas.read_csv(path, nrows=1, dtype=str, keep_default_na=False, **self._form(header=None))
        except pandas.errors.EmptyDataError:
            raise ValueError(f"{path} is empty") from None
        cells = [str(cell).strip() for cell in first.iloc[0]]
        self._require_separator(cells)
        self._require_width(len(cells))
        known = [self._known(cell) for cell in cells]
        self.has_headings = "text" in known if text.headings is None else bool(text.headings)
        self.names: list[str] | int = cells if self.has_headings else len(cells)
        self.note = self._doubt(cells, known)

    def _doubt(self, cells: list[str], known: list[str]) -> str:
        """What a user should know of guessed headings; nothing where there is no number to lose or to gain."""
        shown = " | ".join(cell[:30] + "..." * (len(cell) > 30) for cell in cells[:5]) + " | ..." * (len(cells) > 5)
        if self.text.headings is not None:
            return ""
        if not self.has_headings:
            return f"row 1 has numbers alone and is read as data: {shown} (headings=True reads it as headings)"
        if "number" in known:
            return (f"row 1 is read as headings, though some are numbers: {shown} "
                    "(headings=False reads them as data)")
        return ""

    def _require_text(self) -> None:
        with open(self.path, "rb") as file:
            start = file.read(1 << 16)
        if start[:2] in (b"\xff\xfe", b"\xfe\xff"):
            raise ValueError(f"{self.path} is text in UTF-16; save it in UTF-8")
        if b"\0" in start:
            raise ValueError(f"{self.path} is no text")
        whole = start[:start.rfind(b"\n") + 1] or start if len(start) == 1 << 16 else start
        self.start = whole.decode(errors="replace")

    def _form(self, header: int | None) -> dict[str, Any]:
        return {"header": header, "sep": self.text.between, "index_col": False, "skipinitialspace": True,
                "encoding_errors": "replace"}

    def _known(self, cell: str) -> str:
        """number, missing or text."""
        if not cell or cell in _missing or cell in self.text.na:
            return "missing"
        pointed = cell if self.text.decimal == "." else cell.replace(".", " ").replace(self.text.decimal, ".")
        return "number" if _number.fullmatch(pointed) else "text"

    def _require_separator(self, cells: list[str]) -> None:
        own = self.text.between
        for mark, name in ((";", "semicolons"), ("\t", "tabs")):
            among = [cell for cell in cells if mark in cell]
            if self.text.separator is None and mark != own and among and (
                    len(cells) == 1 or any(not set(c) - set("0123456789.,;\t+-eE ") for c in among)):
                raise ValueError(f"separator: row 1 of {self.path} has {name} in its cells; "
                                 f"{mark!r} separates at them, {own!r} leaves them")

    def _require_width(self, width: int) -> None:
        """Cells beyond those of row 1 would be lost: most often a mark in them separates that should not."""
        rows = csv.reader(io.StringIO(self.start, newline=""), delimiter=self.text.between, skipinitialspace=True)
        for number, row in enumerate(rows, 1):
            if any(cell.strip() for cell in row[width:]):
                raise ValueError(f"{self.path}: row {number} has {len(row)} cells, row 1 has {width}")

    def pieces(self, use: list[int], rows: int) -> Iterator[tuple[list[Any], float]]:
        size = max(os.path.getsize(self.path), 1)
        columns = sorted(set(use))
        with open(self.path, "rb") as file:
            frames = self.pandas.read_csv(file, usecols=columns, chunksize=rows, dtype=np.float64,
                                          na_values=[*_missing, *self.text.na], decimal=self.text.decimal,
                                          **self._form(0 if self.has_headings else None), **self.exact)
            while True:
                try:
                    frame = next(frames)
                except StopIteration:
                    return
                except ValueError as error:  # pandas' own are of this kind, too
                    raise ValueError(f"{self.path}: {error}") from None
                yield [frame.iloc[:, columns.index(c)].to_numpy() for c in use], file.tell() / size


class _Npy:
    note, has_headings = "", None

    def __init__(self, path: str, text: Text) -> None:
        self.data = np.load(path, mmap_mode="r", allow_pickle=False)
        if self.data.ndim not in (1, 2):
            raise ValueError(f"{path} must be of one or two dimensions, got {self.data.ndim}")
        self.names: list[str] | int = 1 if self.data.ndim == 1 else self.data.shape[1]

    def pieces(self, use: list[int], rows: int) -> Iterator[tuple[list[Any], float]]:
        for start in range(0, len(self.data), rows):
            part = self.data[start:start + rows]
            yield ([np.array(part if self.data.ndim == 1 else part[:, c]) for c in use],
                   (start + len(part)) / len(self.data))


class _Parquet:
    note, has_headings = "", None

    def __init__(self, path: str, text: Text) -> None:
        import pyarrow.parquet

        self.file = pyarrow.parquet.ParquetFile(path)
        self.names: list[str] | int = list(self.file.schema_arrow.names)

    def pieces(self, use: list[int], rows: int) -> Iterator[tuple[list[Any], float]]:
        names = [self.file.schema_arrow.names[c] for c in use]
        done, total = 0, max(self.file.metadata.num_rows, 1)
        for batch in self.file.iter_batches(batch_size=rows, columns=list(dict.fromkeys(names))):
            done += batch.num_rows
            yield [batch.column(batch.schema.get_field_index(n)) for n in names], done / total


_readers: dict[str, Any] = {".csv": _Csv, ".npy": _Npy, ".parquet": _Parquet, ".pq": _Parquet}


def _reader(path: str) -> Any:
    kind = os.path.splitext(path)[1].lower()
    if kind not in _readers:
        raise ValueError(f"files must be .csv, .npy or .parquet, got {path}")
    return _readers[kind]


def paths_of(files: Any) -> list[str]:
    paths = [os.fspath(f) for f in ([files] if isinstance(files, (str, os.PathLike)) else files)]
    if not paths:
        raise ValueError("files must be at least one, got none")
    for path in paths:
        _reader(path)
        os.stat(path)  # the system's error names the file
    return paths


def uses(path: str, column: Any, weights: Any, text: Text) -> tuple[Any, list[int]]:
    """A reader of the file and the positions of the columns."""
    reader = _reader(path)(path, text)
    try:
        return reader, [_chosen(reader.names, c, path) for c in ([column] if weights is None else [column, weights])]
    except ValueError as error:
        if not reader.note:
            raise
        raise ValueError(f"{error}; {reader.note}") from None


def tell(paths: list[str], column: Any, weights: Any, text: Text) -> None:
    """Warns of headings that were guessed, unless a column is named by one."""
    for path in paths:
        reader, _ = uses(path, column, weights, text)
        if reader.note and not (reader.has_headings and column in reader.names):
            warnings.warn(f"{path}: {reader.note}", stacklevel=4)
