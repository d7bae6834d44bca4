"""Results of several parts: named tuples that print as tables and draw themselves."""

from __future__ import annotations

from collections.abc import Callable
from html import escape
from typing import TYPE_CHECKING, Any, Generic, NamedTuple

import numpy as np

if TYPE_CHECKING:
    from typing_extensions import TypeVar

    from ._types import Doubles

    V = TypeVar("V", default=float)  # what a part is: a float, or an array of a number for each lane
else:
    from typing import TypeVar

    V = TypeVar("V")

# With more values than these a repr is a summary in angle brackets.
MOST_IN_REPR = 100
_MOST_LANES = 12  # side by side in a table

Result = TypeVar("Result")


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


def _padded(cells: list[str], pad: Callable[[str, int], str]) -> list[str]:
    width = max(map(len, cells))
    return [pad(c, width) for c in cells]


# ---- what all results have

def _parts(result: Any) -> dict[str, Any]:
    """By name; `missing` too, which some have beside their elements."""
    return {**dict(zip(result._fields, result)), **getattr(result, "__dict__", {})}


def _same(a: Any, b: Any) -> bool:
    """Equal elements; NaN is the same as NaN."""
    a, b = np.asarray(a), np.asarray(b)
    return a.shape == b.shape and bool(np.all((a == b) | ((a != a) & (b != b))))


def _result(word: str = "") -> Callable[[type[Result]], type[Result]]:
    """Gives a named tuple a repr that reads back and an equality, with arrays among its parts or not.

    `word` says what a summary counts; without one it is the text of `str`.
    """
    def text(self: Any) -> str:
        n = min((v.size for v in self if isinstance(v, np.ndarray)), default=0)
        if n > MOST_IN_REPR:
            return f"<{type(self).__name__}" + (f" of {n} {word}>" if word else f": {self}>")
        with np.printoptions(floatmode="unique"):
            return f"{type(self).__name__}({', '.join(f'{k}={v!r}' for k, v in _parts(self).items())})"

    def equal(self: Any, other: Any) -> Any:
        if not isinstance(other, tuple):
            return NotImplemented
        if type(self) is type(other) and getattr(self, "__dict__", {}) != getattr(other, "__dict__", {}):
            return False
        return len(self) == len(other) and all(map(_same, self, other))

    def differs(self: Any, other: Any) -> Any:
        return not self == other

    def html(self: Any) -> str:
        if any(isinstance(v, np.ndarray) for v in self):
            return f"<pre>{escape(str(self))}</pre>"
        return html_table(("", ""), [list(self._fields), list(self)])

    def change(cls: type[Result]) -> type[Result]:
        for name, method in {"__repr__": text, "__eq__": equal, "__ne__": differs}.items():
            setattr(cls, name, method)
        if not hasattr(cls, "_repr_html_"):
            setattr(cls, "_repr_html_", html)
        return cls

    return change


@_result("lanes")
class FiveNumber(NamedTuple, Generic[V]):
    """What `five_number` finds.

    Attributes
    ----------
    min, lower_hinge, median, upper_hinge, max : float or ndarray
        Arrays where there are five numbers for each lane.
    """

    min: V
    lower_hinge: V
    median: V
    upper_hinge: V
    max: V


@_result("intervals")
class Interval(NamedTuple, Generic[V]):
    """A pair of ends.

    Attributes
    ----------
    low, high : float or ndarray
        Arrays where several intervals are asked for.
    """

    low: V
    high: V


@_result()
class TestResult(NamedTuple):
    """What a test of a hypothesis finds.

    Attributes
    ----------
    statistic : float
        The test's statistic.
    pvalue : float
        The probability of one at least as far out, if the hypothesis holds.
    """

    statistic: float
    pvalue: float


@_result("lanes")
class Description(NamedTuple, Generic[V]):
    """What `describe` finds; prints as a table.

    Attributes
    ----------
    count : float or ndarray
        Total weight of the values that are there: their number, without weights.
    missing : int or ndarray
        How many values are missing.
    mean, std, min, q1, median, q3, max, skewness, kurtosis : float or ndarray
        Of the values; arrays where there is a description of each lane.
    """

    count: V  # type: ignore[assignment]  # tuples have a method of that name
    missing: Any
    mean: V
    std: V
    min: V
    q1: V
    median: V
    q3: V
    max: V
    skewness: V
    kurtosis: V

    def _columns(self) -> tuple[tuple[str, ...], list[list[Any]]] | None:
        """A column for each lane, under its number; none for arrays of more dimensions or many lanes."""
        if isinstance(self.mean, float):
            return ("", ""), [list(self._fields), list(self)]
        lanes = np.transpose([np.asarray(v, dtype=np.float64) for v in self]).tolist()
        if np.asarray(self.mean).ndim != 1 or len(lanes) > _MOST_LANES:
            return None
        return ("", *map(str, range(len(lanes)))), [list(self._fields), *lanes]

    def __str__(self) -> str:
        columns = self._columns()
        if columns is None:
            return repr(self)
        cells = [[_six(v) for v in c] for c in columns[1]]
        names, *lanes = [[n, *c] for n, c in zip(columns[0], cells)]
        rows = zip(_padded(names, str.ljust), *(_padded(lane, str.rjust) for lane in lanes))
        return "\n".join("  ".join(row) for row in rows if any(cell.strip() for cell in row))

    def _repr_html_(self) -> str:
        columns = self._columns()
        return f"<pre>{escape(repr(self))}</pre>" if columns is None else html_table(*columns)


class _ValuesCounts(NamedTuple):
    values: Any
    counts: Doubles


@_result("values")
class TallyResult(_ValuesCounts):
    """What `tally` finds: a pair (values, counts); prints as a table.

    Attributes
    ----------
    values : ndarray
        Distinct values, ascending.
    counts : ndarray of float64
        How often each occurs, or its weight.
    missing : int
        How many pairs were left out.
    """

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
        """Draws a line for each value with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.vlines` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
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


@_result("bins")
class HistogramResult(_CountsEdges):
    """What `histogram` finds: a pair (counts, edges); prints as a table.

    Attributes
    ----------
    counts : ndarray of float64
        Counts of the bins, or their densities.
    edges : ndarray of float64
        The ends of the bins: one more than there are bins.
    missing : int
        How many pairs were left out.
    """

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
        """Draws the bars with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.stairs` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plot import axes

        ax = axes(ax)
        ax.stairs(self.counts, _drawn(self.edges), **{"fill": True, "alpha": 0.6, **style})
        return ax


@_result("bins")
class FrequencyTable(NamedTuple):
    """What `frequency_table` finds; prints as a table.

    Attributes
    ----------
    lower, upper : ndarray of float64
        The ends of the bins.
    count : ndarray of float64
        Counts, or weights.
    relative, cumulative : ndarray of float64
        Their shares of the total, and the sums of these from the first bin on.
    """

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
        """Draws the bars with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.bar` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plot import axes

        ax = axes(ax)
        edges = _drawn(np.append(self.lower, self.upper[-1:]))
        ax.bar(edges[:-1], self.count, width=np.diff(edges), align="edge",
               **{"alpha": 0.6, **style})
        return ax


@_result()
class BootstrapResult(NamedTuple):
    """What `bootstrap` finds.

    Attributes
    ----------
    estimate : float
        The statistic of the sample.
    standard_error : float
        Standard deviation of the replicates.
    interval : Interval
        The confidence interval.
    replicates : ndarray of float64
        The statistic of each resample.
    """

    estimate: float
    standard_error: float
    interval: Interval[float]
    replicates: Doubles

    def __str__(self) -> str:
        return (f"estimate {_six(self.estimate)}, standard error {_six(self.standard_error)}, "
                f"interval {_six(self.interval.low)} to {_six(self.interval.high)} "
                f"({len(self.replicates)} replicates)")

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """Draws a histogram of the replicates and the interval with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.hist` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
        from ._plot import axes

        ax = axes(ax)
        ax.hist(self.replicates, bins="fd", **{"density": True, "alpha": 0.6, **style})
        for end in self.interval:
            ax.axvline(end, linestyle="--", color="black")
        ax.axvline(self.estimate, color="black")
        return ax


@_result()
class RootResult(NamedTuple):
    """What `find_root` finds.

    Attributes
    ----------
    root : float
        Where the function has the target's value, to the tolerance.
    value : float
        The function there, less the target.
    evaluations : int
        How many values of the function it took.
    converged : bool
        Whether the tolerance was reached within the iterations.
    """

    root: float
    value: float
    evaluations: int
    converged: bool


@_result("values")
class NormalPlot(NamedTuple):
    """What `normal_plot` finds: a pair (quantiles, values).

    Attributes
    ----------
    quantiles : ndarray of float64
        Standard normal quantiles, at (i - 3/8) / (n + 1/4).
    values : ndarray of float64
        The data, ascending.
    """

    quantiles: Doubles
    values: Doubles

    def plot(self, ax: Any = None, **style: Any) -> Any:
        """Draws the points and the line through their quartiles with matplotlib.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to draw; new ones where they are left out.
        **style
            What `Axes.plot` takes: color, label, ...

        Returns
        -------
        matplotlib.axes.Axes
        """
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
