"""Results of several parts: named tuples that print as tables and draw themselves."""

from __future__ import annotations

from html import escape
from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np

if TYPE_CHECKING:
    from ._types import Doubles


def _six(value: Any) -> str:
    """Six significant digits of a float."""
    if not isinstance(value, float):
        return str(value)
    return f"{value:.6g}"


def text_table(names: tuple[str, ...], columns: list[list[Any]]) -> str:
    """Columns under their names, right-justified."""
    cells = [[_six(v) for v in column] for column in columns]
    widths = [max([len(n), *map(len, column)]) for n, column in zip(names, cells)]
    rows = [names, *zip(*cells)]
    return "\n".join("  ".join(v.rjust(w) for v, w in zip(row, widths)) for row in rows)


def html_table(names: tuple[str, ...], columns: list[list[Any]], limit: int = 60) -> str:
    """The same for notebooks; long tables lose their middle."""
    head = "".join(f"<th>{escape(n)}</th>" for n in names)
    rows = ["".join(f"<td>{escape(_six(v))}</td>" for v in row) for row in zip(*columns)]
    if len(rows) > limit:
        rows[limit // 2:-limit // 2] = ["<td>…</td>" * len(names)]
    body = "".join(f"<tr>{row}</tr>" for row in rows)
    return f'<table class="vexel"><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>'


class FiveNumber(NamedTuple):
    """Tukey's five numbers."""

    min: Any
    lower_hinge: Any
    median: Any
    upper_hinge: Any
    max: Any


class Interval(NamedTuple):
    """A pair of ends."""

    low: float
    high: float


class TestResult(NamedTuple):
    """A test's statistic and the probability of one at least as far out."""

    statistic: float
    pvalue: float


class Description(NamedTuple):
    """What `describe` finds; prints as a table."""

    count: Any
    missing: Any
    mean: Any
    std: Any
    min: Any
    q1: Any
    median: Any
    q3: Any
    max: Any
    skewness: Any
    kurtosis: Any

    def __str__(self) -> str:
        if not isinstance(self.mean, float):
            return repr(self)
        cells = [_six(v) for v in self]
        width = max(map(len, cells))
        return "\n".join(f"{n:<8}  {v.rjust(width)}" for n, v in zip(self._fields, cells))

    def _repr_html_(self) -> str:
        if not isinstance(self.mean, float):
            return f"<pre>{escape(repr(self))}</pre>"
        return html_table(("", ""), [list(self._fields), list(self)])


class _ValuesCounts(NamedTuple):
    values: Any
    counts: Doubles


class TallyResult(_ValuesCounts):
    """Distinct values and their counts or weights; `missing` tells how many pairs were left out."""

    missing: int

    def __new__(cls, values: Any, counts: Doubles, missing: int = 0) -> TallyResult:
        self = super().__new__(cls, values, counts)
        self.missing = missing
        return self

    def __str__(self) -> str:
        return text_table(self._fields, [list(self.values), self.counts.tolist()])

    def _repr_html_(self) -> str:
        return html_table(self._fields, [list(self.values), self.counts.tolist()])

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """A line for each value; returns the axes."""
        from ._plot import axes

        ax = axes(ax)
        ax.vlines([float(v) for v in self.values], 0, self.counts, **style)
        ax.set(xlabel="value", ylabel="count", ylim=(0, None))
        return ax


def _drawn(edges: Doubles) -> Doubles:
    """Edges for a drawing: an open bin as wide as all the closed ones."""
    inner = edges[np.isfinite(edges)]
    low, high = (inner[0], inner[-1]) if len(inner) else (0.0, 0.0)
    width = (high - low) or 1.0
    return edges.clip(low - width, high + width)


class _CountsEdges(NamedTuple):
    counts: Doubles
    edges: Doubles


class HistogramResult(_CountsEdges):
    """Counts (or densities) of the bins and their edges; `missing` tells how many pairs were left out."""

    missing: int

    def __new__(cls, counts: Doubles, edges: Doubles, missing: int = 0) -> HistogramResult:
        self = super().__new__(cls, counts, edges)
        self.missing = missing
        return self

    def _columns(self) -> list[list[Any]]:
        edges = self.edges.tolist()
        return [edges[:-1], edges[1:], self.counts.tolist()]

    def __str__(self) -> str:
        return text_table(("lower", "upper", "count"), self._columns())

    def _repr_html_(self) -> str:
        return html_table(("lower", "upper", "count"), self._columns())

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """The bars; returns the axes."""
        from ._plot import axes

        ax = axes(ax)
        ax.stairs(self.counts, _drawn(self.edges), **{"fill": True, "alpha": 0.6, **style})
        return ax


class FrequencyTable(NamedTuple):
    """Bins, their counts, shares and cumulative shares; prints as a table."""

    lower: Doubles
    upper: Doubles
    count: Doubles  # type: ignore[assignment]  # tuples have a method of that name
    relative: Doubles
    cumulative: Doubles

    def __str__(self) -> str:
        return text_table(self._fields, [c.tolist() for c in self])

    def _repr_html_(self) -> str:
        return html_table(self._fields, [c.tolist() for c in self])

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """The bars; returns the axes."""
        from ._plot import axes

        ax = axes(ax)
        edges = _drawn(np.append(self.lower, self.upper[-1:]))
        ax.bar(edges[:-1], self.count, width=np.diff(edges), align="edge",
               **{"alpha": 0.6, **style})
        return ax


class BootstrapResult(NamedTuple):
    """What `bootstrap` finds."""

    estimate: float
    standard_error: float
    interval: Interval
    replicates: Doubles

    def __str__(self) -> str:
        return (f"estimate {_six(self.estimate)}, standard error {_six(self.standard_error)}, "
                f"interval {_six(self.interval.low)} to {_six(self.interval.high)} "
                f"({len(self.replicates)} replicates)")

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """A histogram of the replicates with the interval; returns the axes."""
        from ._plot import axes

        ax = axes(ax)
        ax.hist(self.replicates, bins="fd", **{"density": True, "alpha": 0.6, **style})
        for end in self.interval:
            ax.axvline(end, linestyle="--", color="black")
        ax.axvline(self.estimate, color="black")
        return ax


class RootResult(NamedTuple):
    """What `find_root` finds."""

    root: float
    value: float
    evaluations: int
    converged: bool


class NormalPlot(NamedTuple):
    """Values in order against the normal quantiles that one expects of them."""

    quantiles: Doubles
    values: Doubles

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """The points and the line through the quartiles; returns the axes."""
        from ._plot import axes

        ax = axes(ax)
        ax.plot(self.quantiles, self.values, **{"marker": ".", "linestyle": "none", **style})
        n = len(self.values)
        if n > 1:
            low, high = n // 4, n - 1 - n // 4
            slope = (self.values[high] - self.values[low]) / (self.quantiles[high] - self.quantiles[low])
            ax.axline((self.quantiles[low], self.values[low]), slope=slope, color="grey")
        ax.set(xlabel="normal quantile", ylabel="value")
        return ax
