"""Jobs on chunks: a task for each chunk, a tree of merges, and the chunks read anew for each pass."""

from __future__ import annotations

import pickle
from collections.abc import Callable
from itertools import product
from typing import Any

import dask.array as da
import numpy as np
from dask.base import tokenize
from dask.delayed import Delayed
from dask.graph_manipulation import bind
from dask.highlevelgraph import HighLevelGraph

from .._core import short_text
from .._pass_states import require_weight, weightless
from .._passes import Job

_fan = 8  # states merged by one task


class Source:
    """Chunks of data with their weights and levels, and how each chunk falls into variables."""

    def __init__(self, x: Any, weights: Any, by: Any, split: Callable[..., Any]) -> None:
        self.x, self.weights, self.by, self.split = x, weights, by, split

    def after(self, step: Delayed) -> Source:
        """The same chunks, read once more when `step` is done, so that nobody keeps them."""
        given = [a for a in (self.x, self.weights, self.by) if a is not None]
        again = iter(bind(given, parents=step, seed=step.key))
        x, weights, by = (None if a is None else next(again) for a in (self.x, self.weights, self.by))
        return Source(x, weights, by, self.split)


def whole(x: Any, weights: Any, by: Any) -> dict[Any, Any]:
    return {None: (x, weights)}


def columns(x: Any, weights: Any, by: Any) -> dict[Any, Any]:
    return {i: (x[:, i], weights if weights is None or weights.ndim == 1 else weights[:, i])
            for i in range(x.shape[1])}


def levels(x: Any, weights: Any, by: Any) -> dict[Any, Any]:
    if by.shape != x.shape[:1]:
        raise ValueError(f"by must be a level for each of {x.shape[0]} values, got {by.shape[0]}")
    import pandas

    codes, found = pandas.factorize(by)  # a missing level has the code -1
    order = np.argsort(codes, kind="stable")
    starts = np.searchsorted(codes[order], np.arange(len(found) + 1))
    parts = (order[starts[i]:starts[i + 1]] for i in range(len(found)))
    return {level: (x[rows], None if weights is None else weights[rows])
            for level, rows in zip(found.tolist() if hasattr(found, "tolist") else found, parts)}


def _array(x: Any) -> Any:
    return np.ma.filled(x.astype(float), np.nan) if isinstance(x, np.ma.MaskedArray) else np.asarray(x)


def take(job: Job, split: Callable[..., Any], place: tuple[int, ...], before: Any, x: Any, weights: Any,
         by: Any) -> dict[Any, tuple[bytes, bool]]:
    """The states of one chunk, by variable: as bytes, which have no room for empty cells, and
    whether values of weight 0 were there."""
    states: dict[Any, tuple[bytes, bool]] = {}
    try:
        x = _array(x)
        if x.dtype == object:
            x = x.astype(np.float64)
        if x.dtype.kind not in "biuf":
            raise TypeError(f"x must be numbers, got {x.dtype}")
        weights = None if weights is None else _array(weights)
        if weights is not None and len(weights) != len(x):
            raise ValueError(f"weights must be {len(x)} numbers, got {len(weights)}")
        for key, (values, w) in split(x, weights, None if by is None else np.asarray(by)).items():
            state = job.begin() if before is None else pickle.loads(before[key][1])
            states[key] = pickle.dumps(state.update(values, w)), weightless(values, w)
    except (ValueError, TypeError, LookupError, ArithmeticError) as error:
        kind = TypeError if isinstance(error, TypeError) else ValueError
        raise kind(f"chunk {place}: {error}") from None
    return states


def combine(parts: list[dict[Any, tuple[bytes, bool]]]) -> dict[Any, tuple[bytes, bool]]:
    """The merged states of each variable."""
    out: dict[Any, tuple[bytes, bool]] = {}
    for key in {key: None for part in parts for key in part}:
        merged, zeros = None, False
        for part in parts:
            if key in part:
                state = pickle.loads(part[key][0])
                merged = state if merged is None else merged.merge(state)
                zeros = zeros or part[key][1]
        out[key] = pickle.dumps(merged), zeros
    return out


def _merged(before: Any, states: dict[Any, tuple[bytes, bool]]) -> Any:
    """What is kept of earlier passes and the state of this one, by variable."""
    for key, (data, zeros) in states.items():
        kept, state = None if before is None else before[key][0], pickle.loads(data)
        if zeros:
            try:
                require_weight(kept, state)
            except ValueError as error:
                raise error if key is None else ValueError(f"{short_text(key)}: {error}") from None
        yield key, kept, state


def advance(job: Job, before: Any, states: dict[Any, tuple[bytes, bool]]) -> dict[Any, Any]:
    out = {}
    for key, kept, state in _merged(before, states):
        kept, state = job.advance(kept, state)
        out[key] = kept, pickle.dumps(state)
    return out


def finish(job: Job, shape: Callable[..., Any], before: Any, states: dict[Any, tuple[bytes, bool]]) -> Any:
    return shape({key: job.finish(kept, state) for key, kept, state in _merged(before, states)})


def _one_pass(job: Job, source: Source, before: Delayed | None, last: Any, number: int) -> Delayed:
    token = tokenize(job.__class__, job.__dict__, source.x.name, source.split, number,
                     *(a.name for a in (source.weights, source.by) if a is not None),
                     before.key if before is not None else None, last)
    name = f"vexel-chunk-{token}"
    held = before.key if before is not None else None
    tasks: dict[Any, Any] = {}
    keys: list[Any] = []
    for place in product(*map(range, source.x.numblocks)):
        rows = place[:1]
        weights = None if source.weights is None else \
            (source.weights.name, *place[:source.weights.ndim], *(0,) * (source.weights.ndim - len(place)))
        by = None if source.by is None else (source.by.name, *rows)
        key = (name, 0, len(keys))
        tasks[key] = (take, job, source.split, place, held, (source.x.name, *place), weights, by)
        keys.append(key)
    depth = 0
    while len(keys) > 1:
        depth += 1
        above = []
        for i in range(0, len(keys), _fan):
            key = (name, depth, i // _fan)
            tasks[key] = (combine, keys[i:i + _fan])
            above.append(key)
        keys = above
    end = f"vexel-{'result' if last else 'pass'}-{token}"
    tasks[end] = (finish, job, last, held, keys[0]) if last else (advance, job, held, keys[0])
    needed: list[Any] = [a for a in (source.x, source.weights, source.by, before) if a is not None]
    graph = HighLevelGraph.from_collections(end, tasks, dependencies=needed)
    return Delayed(end, graph)


def run(job: Job, source: Source, shape: Callable[..., Any]) -> Delayed:
    """The result, lazily; `shape` makes it of the results by variable."""
    before = None
    for number in range(job.passes):
        last = shape if number + 1 == job.passes else None
        step = _one_pass(job, source if before is None else source.after(before), before, last, number)
        before = step
    return step


def as_array(a: Any, kind: Any = np.float64) -> Any:
    """A Series or DataFrame as a Dask array; columns of pandas' own types become `kind`."""
    if not hasattr(a, "to_dask_array"):
        return a
    own = {name: kind for name, t in a.dtypes.items() if not isinstance(t, np.dtype)} if a.ndim == 2 else \
        None if isinstance(a.dtype, np.dtype) else kind
    return (a.astype(own) if own else a).to_dask_array()


def chunks_like(a: Any, x: Any, name: str) -> Any:
    """Weights or levels as a Dask array in the chunks of x, or of its rows."""
    if a is None:
        return None
    a = as_array(a, object if name == "by" else np.float64)
    if not isinstance(a, da.Array):
        a = np.asarray(a)
        if any(np.isnan(c) for axis in x.chunks for c in axis):
            raise ValueError(f"{name} must be a Dask collection where the chunks of x are of unknown sizes")
        if a.shape not in (x.shape, x.shape[:1]):
            allowed = f"{x.shape}" if x.ndim == 1 else f"{x.shape} or {x.shape[:1]}"
            raise ValueError(f"{name} must be of shape {allowed}, got {a.shape}")
        a = da.from_array(a, chunks=x.chunks[:a.ndim])
    if a.ndim not in (1, x.ndim):
        raise ValueError(f"{name} must be of one dimension or as many as x has, got {a.ndim}")
    known = not any(np.isnan(c) for b in (a, x) for axis in b.chunks for c in axis)
    if known:
        if a.shape != x.shape[:a.ndim]:
            raise ValueError(f"{name} must be of shape {x.shape[:a.ndim]}, got {a.shape}")
        return a.rechunk(x.chunks[:a.ndim])
    if a.numblocks != x.numblocks[:a.ndim]:
        raise ValueError(f"{name} must have as many chunks as x where their sizes are not known")
    return a
