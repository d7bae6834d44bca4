"""Statistics of files that do not fit in memory: CSV, .npy and Parquet, read in pieces.

Every function takes a file or several in turn, keeps one piece and one state in memory, and gives
the same bits whatever the size of the pieces.  `describe` and `quantile` read the files four times,
`tally` once, `histogram` once to five times by its bins.

With `state=` a file takes the state of the work every few seconds; the same call goes on from there
after a crash or an interruption, and removes the file when it is done.  The command `vexel describe
FILE...` reads and writes the same, so that each can go on with the other's work.  Parquet needs
PyArrow, CSV pandas.  `python3 -m vexel.stream describe FILE...` is a command of it; `--help` tells more.

Examples
--------
>>> import os, tempfile
>>> path = os.path.join(tempfile.mkdtemp(), "x.npy")
>>> np.save(path, np.arange(1001.0))
>>> quantile(path, [0.1, 0.5], rows=64)
array([100., 500.])
"""

from __future__ import annotations

import os
import sys
import time
import warnings
from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _passes
from ._pass_states import Several, require_weight, weightless
from ._progress import reporter
from ._results import Description, HistogramResult, TallyResult
from ._state_tables import Histogram, Ranks, Tally
from ._states import Extremes, Moments
from ._stream_files import Text, paths_of, tell, text_of, uses

if TYPE_CHECKING:
    from ._types import NanPolicy, Progress, QuantileMethod

__all__ = ["describe", "histogram", "pieces", "quantile", "tally"]

_magic = b"vexel stream 2\n"
_every = 5.0  # seconds between two saved states


def _require_rows(rows: int) -> None:
    if not isinstance(rows, (int, np.integer)) or isinstance(rows, bool):
        raise TypeError(f"rows must be a whole number, got {rows!r}")
    if rows < 1:
        raise ValueError(f"rows must be at least 1, got {rows}")


def pieces(files: Any, *, column: Any = None, weights: Any = None, headings: bool | None = None,
           separator: str | None = None, decimal: str = ".", na: Iterable[str] = (),
           rows: int = 1 << 20) -> Iterator[tuple[Any, Any, float]]:
    """The pieces of files: data, weights or None, the share of the files that is read.

    Parameters
    ----------
    files : path or list of paths
        .csv, .npy, .parquet.
    column : str or int, optional
        A name or a number from 0; not needed where there is one only.
    weights : str or int, optional
        The column of weights.
    headings : bool, optional
        Whether the first row of CSV files holds names.  By default it holds data if every cell of it is a number
        or missing; a warning tells where there are numbers in it.
    separator : str, optional
        What stands between the cells of CSV files: a comma, or a semicolon where the decimal mark is one.
    decimal : str
        The decimal mark of CSV files.
    na : list of str, optional
        Further texts of missing cells in CSV files.
    rows : int
        In a piece.
    """
    _require_rows(rows)
    text = text_of(headings, separator, decimal, na)
    tell(paths_of(files), column, weights, text)
    yield from _pieces(paths_of(files), column, weights, text, rows)


def _pieces(paths: list[str], column: Any, weights: Any, text: Text, rows: int) -> Iterator[tuple[Any, Any, float]]:
    for number, path in enumerate(paths):
        reader, use = uses(path, column, weights, text)
        for found, share in reader.pieces(use, rows):
            if len(found[0]):
                yield found[0], found[1] if weights is not None else None, (number + share) / len(paths)


_kinds: dict[bytes, Any] = {b"mome": Moments, b"extr": Extremes, b"rank": Ranks,
                            b"taly": Tally, b"hist": Histogram}


def _check(text: bytes) -> bytes:
    """FNV-1a, as the states have it."""
    value = 0xCBF29CE484222325
    for byte in text:
        value = (value ^ byte) * 0x100000001B3 & 0xFFFFFFFFFFFFFFFF
    return b"check %016x\n" % value


def _parts(kept: Any, current: Any) -> list[Any]:
    """The states of a pass: what is kept of earlier ones, and what takes the data."""
    return list(current.states) if isinstance(current, Several) else [*(kept or ()), current]


def _save(path: str, task: bytes, number: int, done: int, kept: Any, current: Any) -> None:
    # Lines of text and the bytes of the states, as the command has them (cli/stream/state_file.hpp).
    states = [part.to_bytes() for part in _parts(kept, current)]
    sizes = "".join(f" {len(state)}" for state in states)
    head = _magic + task + f"pass {number + 1}\npiece {done}\nstates{sizes}\n".encode()
    with open(path + ".new", "wb") as file:
        file.write(head + _check(head) + b"".join(states))
    os.replace(path + ".new", path)


def _require_writable(path: str) -> None:
    """Complains of a path that cannot take a state, before hours of work find out."""
    if os.path.isdir(path):
        raise IsADirectoryError(f"state: {path} is a folder, not a file")
    try:
        with open(path + ".new", "wb"):
            pass
        os.remove(path + ".new")
    except OSError as error:
        raise type(error)(error.errno, f"state: {error.strerror}", path) from None


def _load(path: str, task: bytes) -> tuple[int, int, Any, Any]:
    with open(path, "rb") as file:
        data = file.read()
    damaged = f"state: {path} is damaged, or of another version"
    at = data.find(b"\ncheck ") + 1
    head, check, rest = data[:at], data[at:at + 23], data[at + 23:]
    if not data.startswith(_magic) or not at or check != _check(head):
        raise ValueError(damaged)
    if not head.startswith(_magic + task + b"pass "):
        raise ValueError(f"state: {path} is of other work, or the files have changed")
    (_, number), (_, done), (_, *sizes) = (line.split() for line in head[len(_magic + task):].splitlines())
    parts = []
    for size in map(int, sizes):
        part, rest = rest[:size], rest[size:]
        if len(part) != size or part[4:8] not in _kinds:
            raise ValueError(damaged)
        try:
            parts.append(_kinds[part[4:8]].from_bytes(part))
        except ValueError as error:
            raise ValueError(f"state: {path}: {error}") from None
    if rest or not parts:
        raise ValueError(damaged)
    if number == b"1":
        return 0, int(done), None, parts[0] if len(parts) == 1 else Several(*parts)
    return int(number) - 1, int(done), tuple(parts[:-1]) or None, parts[-1]


def _escaped(text: str) -> bytes:
    return os.fsencode(text).replace(b"\\", b"\\\\").replace(b"\n", b"\\n")


def _bits(values: Any) -> str:
    return "".join(f" {bits:016x}" for bits in np.asarray(values, dtype=np.float64).ravel().view(np.uint64).tolist())


def _task(what: str, paths: list[str], column: Any, weights: Any, text: Text, rows: int) -> bytes:
    """Lines that tell this work from other work: what is done, with files untouched since."""
    lines = [what.encode(), b"rows %d" % rows, *(b"na " + _escaped(na) for na in text.na)]
    if (text.between, text.decimal) != (",", "."):
        lines.append(b"separator %d decimal %d" % (ord(text.between), ord(text.decimal)))
    for path in paths:
        reader, use = uses(path, column, weights, text)
        status = os.stat(path)
        second = str(use[1]) if len(use) == 2 else "-"
        lines.append(f"file {status.st_size} {status.st_mtime_ns} {use[0]} {second} ".encode()
                     + _escaped(os.path.abspath(path)))
        if reader.has_headings is False:
            lines.append(b"no headings")
    return b"\n".join(lines) + b"\n"


def _run(what: str, job: Any, files: Any, column: Any, weights: Any, text: Text, rows: int, state: Any,
         progress: Progress) -> Any:
    _require_rows(rows)
    paths = paths_of(files)
    report = reporter(progress)
    first, done, kept, current = 0, 0, None, job.begin()
    if state is not None:
        state = os.fsdecode(state)
        _require_writable(state)
        task = _task(what, paths, column, weights, text, rows)
        if os.path.exists(state):
            first, done, kept, current = _load(state, task)
    if first == done == 0:
        tell(paths, column, weights, text)
    saved, zeros = time.monotonic(), False
    for number in range(first, job.passes):
        for at, (x, w, share) in enumerate(_pieces(paths, column, weights, text, rows)):
            if at < done:
                continue
            try:
                current.update(x, w)
            except (TypeError, ValueError) as error:
                raise type(error)(f"piece {at} of {rows} rows: {error}") from None
            zeros = zeros or weightless(x, w)
            if state is not None and time.monotonic() - saved > _every:
                _save(state, task, number, at + 1, kept, current)
                saved = time.monotonic()
            if report is not None:
                report((number + share) / job.passes)
        done = 0
        if number + 1 < job.passes:
            kept, current = job.advance(kept, current)
    if zeros:
        require_weight(kept, current)
    result = job.finish(kept, current)
    if state is not None and os.path.exists(state):
        os.remove(state)
    return result


def describe(files: Any, *, column: Any = None, weights: Any = None, headings: bool | None = None,
             separator: str | None = None, decimal: str = ".", na: Iterable[str] = (), nan_policy: NanPolicy = "omit",
             rows: int = 1 << 20, state: Any = None, progress: Progress = None) -> Description[float]:
    """The usual statistics of files; as `vexel.describe`.

    Parameters
    ----------
    files, column, weights, headings, separator, decimal, na, rows
        As in `pieces`.
    nan_policy : {"omit", "propagate", "raise"}
        Missing values (empty cells, nulls) are left out and counted, unless told otherwise.
    state : path, optional
        Where to keep the work, to go on from.
    progress : callable or bool, optional
        Told the share done, 0 to 1; True shows a bar where tqdm is installed.
    """
    found: Description[float] = _run(f"describe {nan_policy}", _passes.DescribeJob(nan_policy), files, column, weights,
                                     text_of(headings, separator, decimal, na), rows, state, progress)
    return found


def quantile(files: Any, q: Any, *, method: QuantileMethod = "linear", column: Any = None, weights: Any = None,
             headings: bool | None = None, separator: str | None = None, decimal: str = ".", na: Iterable[str] = (),
             nan_policy: NanPolicy = "propagate", rows: int = 1 << 20, state: Any = None,
             progress: Progress = None) -> Any:
    """Exact quantiles of files, up to 250; as `vexel.quantile`, the rest as in `describe`."""
    what = f"quantile {nan_policy} {method}{_bits(q)}"
    return _run(what, _passes.QuantileJob(q, method, nan_policy), files, column, weights,
                text_of(headings, separator, decimal, na), rows, state, progress)


def tally(files: Any, *, column: Any = None, weights: Any = None, headings: bool | None = None,
          separator: str | None = None, decimal: str = ".", na: Iterable[str] = (),
          nan_policy: NanPolicy = "propagate", rows: int = 1 << 20, state: Any = None,
          progress: Progress = None) -> TallyResult:
    """Distinct values of files and their counts; memory goes by distinct values.  As `vexel.tally`."""
    found: TallyResult = _run(f"tally {nan_policy}", _passes.tally_job(nan_policy), files, column, weights,
                              text_of(headings, separator, decimal, na), rows, state, progress)
    return found


def histogram(files: Any, bins: Any = "auto", *, range: Any = None, density: bool = False, column: Any = None,
              weights: Any = None, headings: bool | None = None, separator: str | None = None, decimal: str = ".",
              na: Iterable[str] = (), nan_policy: NanPolicy = "propagate", rows: int = 1 << 20, state: Any = None,
              progress: Progress = None) -> HistogramResult:
    """Counts in bins of files; as `vexel.histogram`, the rest as in `describe`."""
    job = _passes.HistogramJob(bins, range, density, nan_policy)
    between = "" if range is None else " range" + _bits(range)
    what = f"histogram {nan_policy} {bins if np.ndim(bins) == 0 else 'edges' + _bits(bins)}{between}"
    found: HistogramResult = _run(what, job, files, column, weights, text_of(headings, separator, decimal, na), rows,
                                  state, progress)
    return found


def _main() -> None:
    import argparse

    options = argparse.ArgumentParser(prog="python3 -m vexel.stream", description="Exact statistics of large files.")
    options.add_argument("what", choices=["describe", "quantile", "tally", "histogram"])
    options.add_argument("files", nargs="+", help=".csv, .npy or .parquet")
    options.add_argument("-q", type=float, nargs="+", default=[0.25, 0.5, 0.75], help="probabilities of quantile")
    options.add_argument("--bins", default="auto", help="of histogram: their number or a rule")
    options.add_argument("--column", help="a name, or a number from 0")
    options.add_argument("--weights", help="the column of weights")
    options.add_argument("--headings", action=argparse.BooleanOptionalAction, help="whether row 1 of a .csv holds names")
    options.add_argument("--separator", help="what stands between cells of a .csv; a comma otherwise")
    options.add_argument("--decimal", default=".", help="the decimal mark of a .csv")
    options.add_argument("--na", action="append", default=[], help="a further text of missing cells")
    options.add_argument("--missing", choices=["omit", "propagate", "raise"], default="omit")
    options.add_argument("--rows", type=int, default=1 << 20, help="in a piece")
    options.add_argument("--state", help="where to keep the work, to go on from")
    options.add_argument("--progress", action="store_true")
    given = options.parse_args()
    common = {"column": given.column, "weights": given.weights, "headings": given.headings,
              "separator": "\t" if given.separator in ("tab", "\\t") else given.separator, "decimal": given.decimal,
              "na": given.na, "nan_policy": given.missing, "rows": given.rows, "state": given.state,
              "progress": given.progress}
    failed = ""
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        try:
            if given.what == "quantile":
                for q, value in zip(given.q, quantile(given.files, given.q, **common)):
                    print(f"{q:<8g}  {float(value)!r}")
            elif given.what == "histogram":
                print(histogram(given.files, int(given.bins) if given.bins.isdigit() else given.bins, **common))
            else:
                print({"describe": describe, "tally": tally}[given.what](given.files, **common))
        except (OSError, ValueError, TypeError, ImportError) as error:
            failed = f"{error}\n"
    for one in told:
        print(one.message, file=sys.stderr)
    options.exit(1 if failed else 0, failed)


if __name__ == "__main__":
    _main()
