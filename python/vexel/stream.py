"""Statistics of files that do not fit in memory: CSV, .npy and Parquet, read in pieces.

Every function takes a file or several in turn, keeps one piece and one state in memory, and gives
the same bits whatever the size of the pieces.  `describe` and `quantile` read the files four times,
`tally` once, `histogram` once to five times by its bins.

With `state=` a file takes the state of the work every few seconds; the same call goes on from there
after a crash or an interruption, and removes the file when it is done.  Parquet needs PyArrow, CSV
pandas.  `python3 -m vexel.stream describe FILE...` is a command of it; `--help` tells more.

Examples
--------
>>> import os, tempfile
>>> path = os.path.join(tempfile.mkdtemp(), "x.npy")
>>> np.save(path, np.arange(1001.0))
>>> quantile(path, [0.1, 0.5], rows=64)
array([100., 500.])
"""

from __future__ import annotations

import hashlib
import io
import os
import pickle
import time
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core, _passes
from ._progress import reporter
from ._results import Description, HistogramResult, TallyResult

if TYPE_CHECKING:
    from ._types import NanPolicy, Progress, QuantileMethod

__all__ = ["describe", "histogram", "pieces", "quantile", "tally"]

_header = b"vexel stream 1\n"
_every = 5.0  # seconds between two saved states


def _chosen(names: list[Any], column: Any, path: str) -> Any:
    if column is None:
        if len(names) != 1:
            shown = ", ".join(map(str, names[:8])) + (", ..." if len(names) > 8 else "")
            raise ValueError(f"column: one has to be chosen of {path}, which has {shown}")
        return names[0]
    if column not in names:
        raise ValueError(f"column: {path} has none that is called {column!r}")
    return column


def _csv(path: str, wanted: list[Any], rows: int) -> Iterator[tuple[list[Any], float]]:
    import pandas

    names = list(pandas.read_csv(path, nrows=0).columns)
    use = [_chosen(names, c, path) for c in wanted]
    size = max(os.path.getsize(path), 1)
    with open(path, "rb") as file:
        # Not the default parser of numbers, which does not round them correctly.
        for frame in pandas.read_csv(file, usecols=list(dict.fromkeys(use)), chunksize=rows, dtype=np.float64,
                                     float_precision="round_trip"):
            yield [frame[c].to_numpy() for c in use], file.tell() / size


def _npy(path: str, wanted: list[Any], rows: int) -> Iterator[tuple[list[Any], float]]:
    data = np.load(path, mmap_mode="r", allow_pickle=False)
    if data.ndim not in (1, 2):
        raise ValueError(f"{path}: one or two dimensions are allowed, {data.ndim} came")
    use = [_chosen(list(range(1 if data.ndim == 1 else data.shape[1])), c, path) for c in wanted]
    for start in range(0, len(data), rows):
        part = data[start:start + rows]
        yield ([np.array(part if data.ndim == 1 else part[:, c]) for c in use],
               (start + len(part)) / len(data))


def _parquet(path: str, wanted: list[Any], rows: int) -> Iterator[tuple[list[Any], float]]:
    import pyarrow.parquet

    file = pyarrow.parquet.ParquetFile(path)
    use = [_chosen(file.schema_arrow.names, c, path) for c in wanted]
    done, total = 0, max(file.metadata.num_rows, 1)
    for batch in file.iter_batches(batch_size=rows, columns=list(dict.fromkeys(use))):
        done += batch.num_rows
        yield [batch.column(batch.schema.get_field_index(c)) for c in use], done / total


_readers = {".csv": _csv, ".npy": _npy, ".parquet": _parquet, ".pq": _parquet}


def _reader(path: str) -> Any:
    kind = os.path.splitext(path)[1].lower()
    if kind not in _readers:
        raise ValueError(f"files: .csv, .npy and .parquet are allowed, {path} came")
    return _readers[kind]


def _paths(files: Any) -> list[str]:
    paths = [os.fspath(f) for f in ([files] if isinstance(files, (str, os.PathLike)) else files)]
    for path in paths:
        _reader(path)
        os.stat(path)  # the system's error names the file
    return paths


def pieces(files: Any, *, column: Any = None, weights: Any = None,
           rows: int = 1 << 20) -> Iterator[tuple[Any, Any, float]]:
    """The pieces of files: data, weights or None, the share of the files that is read.

    Parameters
    ----------
    files : path or list of paths
        .csv (with a line of names), .npy, .parquet.
    column : str or int, optional
        A name, of .npy a number from 0; not needed where there is one only.
    weights : str or int, optional
        The column of weights.
    rows : int
        In a piece.
    """
    if rows < 1:
        raise ValueError(f"rows: from 1 is allowed, {rows} came")
    paths = _paths(files)
    wanted = [column] if weights is None else [column, weights]
    for number, path in enumerate(paths):
        for found, share in _reader(path)(path, wanted, rows):
            yield found[0], found[1] if weights is not None else None, (number + share) / len(paths)


class _Unpickler(pickle.Unpickler):
    def find_class(self, module: str, name: str) -> Any:
        if module in (f"{__package__}._states", f"{__package__}._passes"):
            return super().find_class(module, name)
        raise pickle.UnpicklingError(f"{module}.{name} is no part of a state")


def _save(path: str, work: Any) -> None:
    body = pickle.dumps(work, protocol=4)
    with open(path + ".new", "wb") as file:
        file.write(_header + hashlib.sha256(body).digest() + body)
    os.replace(path + ".new", path)


def _load(path: str, task: str) -> Any:
    with open(path, "rb") as file:
        data = file.read()
    digest, body = data[len(_header):len(_header) + 32], data[len(_header) + 32:]
    if not data.startswith(_header) or hashlib.sha256(body).digest() != digest:
        raise ValueError(f"state: {path} is damaged, or of another version")
    try:
        found, *work = _Unpickler(io.BytesIO(body)).load()
    except pickle.UnpicklingError as error:
        raise ValueError(f"state: {path}: {error}") from None
    if found != task:
        raise ValueError(f"state: {path} is of other work, or the files have changed")
    return work


def _run(job: Any, files: Any, column: Any, weights: Any, rows: int, state: Any, progress: Progress) -> Any:
    paths = _paths(files)
    marks = [(os.path.abspath(p), os.path.getsize(p), os.stat(p).st_mtime_ns) for p in paths]
    described = sorted((k, v.tobytes() if isinstance(v, np.ndarray) else str(v)) for k, v in job.__dict__.items()
                       if not callable(v))
    task = repr((_core.__version__, type(job).__name__, described, marks, column, weights, rows))
    report = reporter(progress)
    state = None if state is None else os.fspath(state)
    first, done, kept, current = 0, 0, None, job.begin()
    if state is not None and os.path.exists(state):
        first, done, kept, current = _load(state, task)
    saved = time.monotonic()
    for number in range(first, job.passes):
        for at, (x, w, share) in enumerate(pieces(paths, column=column, weights=weights, rows=rows)):
            if at < done:
                continue
            try:
                current.update(x, w)
            except (TypeError, ValueError) as error:
                raise type(error)(f"piece {at} of {rows} rows: {error}") from None
            if state is not None and time.monotonic() - saved > _every:
                _save(state, (task, number, at + 1, kept, current))
                saved = time.monotonic()
            if report is not None:
                report((number + share) / job.passes)
        done = 0
        if number + 1 < job.passes:
            kept, current = job.advance(kept, current)
    result = job.finish(kept, current)
    if state is not None and os.path.exists(state):
        os.remove(state)
    return result


def describe(files: Any, *, column: Any = None, weights: Any = None, nan_policy: NanPolicy = "omit",
             rows: int = 1 << 20, state: Any = None, progress: Progress = None) -> Description:
    """The usual statistics of files; as `vexel.describe`.

    Parameters
    ----------
    files, column, weights, rows
        As in `pieces`.
    nan_policy : {"omit", "propagate", "raise"}
        Missing values (empty cells, nulls) are left out and counted, unless told otherwise.
    state : path, optional
        Where to keep the work, to go on from.
    progress : callable or bool, optional
        Told the share done, 0 to 1; True shows a bar where tqdm is installed.
    """
    return _run(_passes.DescribeJob(nan_policy), files, column, weights, rows, state, progress)


def quantile(files: Any, q: Any, *, method: QuantileMethod = "linear", column: Any = None, weights: Any = None,
             nan_policy: NanPolicy = "propagate", rows: int = 1 << 20, state: Any = None,
             progress: Progress = None) -> Any:
    """Exact quantiles of files, up to 250; as `vexel.quantile`, the rest as in `describe`."""
    return _run(_passes.QuantileJob(q, method, nan_policy), files, column, weights, rows, state, progress)


def tally(files: Any, *, column: Any = None, weights: Any = None, nan_policy: NanPolicy = "propagate",
          rows: int = 1 << 20, state: Any = None, progress: Progress = None) -> TallyResult:
    """Distinct values of files and their counts; memory goes by distinct values.  As `vexel.tally`."""
    return _run(_passes.tally_job(nan_policy), files, column, weights, rows, state, progress)


def histogram(files: Any, bins: Any = "auto", *, range: Any = None, density: bool = False, column: Any = None,
              weights: Any = None, nan_policy: NanPolicy = "propagate", rows: int = 1 << 20,
              state: Any = None, progress: Progress = None) -> HistogramResult:
    """Counts in bins of files; as `vexel.histogram`, the rest as in `describe`."""
    job = _passes.HistogramJob(bins, range, density, nan_policy)
    return _run(job, files, column, weights, rows, state, progress)


def _main() -> None:
    import argparse

    options = argparse.ArgumentParser(prog="python3 -m vexel.stream", description="Exact statistics of large files.")
    options.add_argument("what", choices=["describe", "quantile", "tally", "histogram"])
    options.add_argument("files", nargs="+", help=".csv, .npy or .parquet")
    options.add_argument("-q", type=float, nargs="+", default=[0.25, 0.5, 0.75], help="probabilities of quantile")
    options.add_argument("--bins", default="auto", help="of histogram: their number or a rule")
    options.add_argument("--column", help="a name, of .npy a number from 0")
    options.add_argument("--weights", help="the column of weights")
    options.add_argument("--missing", choices=["omit", "propagate", "raise"], default="omit")
    options.add_argument("--rows", type=int, default=1 << 20, help="in a piece")
    options.add_argument("--state", help="where to keep the work, to go on from")
    options.add_argument("--progress", action="store_true")
    given = options.parse_args()
    numbered = all(path.lower().endswith(".npy") for path in given.files)
    column, weights = (int(c) if c is not None and numbered else c for c in (given.column, given.weights))
    common = {"column": column, "weights": weights, "nan_policy": given.missing, "rows": given.rows,
              "state": given.state, "progress": given.progress}
    try:
        if given.what == "quantile":
            for q, value in zip(given.q, quantile(given.files, given.q, **common)):
                print(f"{q:<8g}  {float(value)!r}")
        elif given.what == "histogram":
            print(histogram(given.files, int(given.bins) if given.bins.isdigit() else given.bins, **common))
        else:
            print({"describe": describe, "tally": tally}[given.what](given.files, **common))
    except (OSError, ValueError, TypeError, ImportError) as error:
        options.exit(1, f"{error}\n")


if __name__ == "__main__":
    _main()
