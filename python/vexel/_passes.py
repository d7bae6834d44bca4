"""Statistics of data that come in pieces, each found in a known number of passes over them.

A job makes the state that a pass begins with (`begin`, then `advance`), which every piece updates a
copy of; the copies are merged, and `finish` reads the result off the last one.  What a later pass
has to know of an earlier one is kept beside the state, so that merging does not multiply it.
"""

from __future__ import annotations

import math
from collections.abc import Callable
from functools import partial
from typing import TYPE_CHECKING, Any

import numpy as np

from ._core import short_text
from ._kernel_density import kde as _kde
from ._ordering import histogram as _histogram
from ._pass_states import Changed, Middle, Several
from ._results import Description, HistogramResult, TallyResult
from ._state_tables import DensityGrid, Histogram, Ranks, Tally
from ._states import Covariance, Extremes, Moments, Sums
from ._statistics import _ends

if TYPE_CHECKING:
    from ._types import NanPolicy, QuantileMethod


class Job:
    """One state in one pass; the others are more."""

    passes = 1

    def __init__(self, make: Callable[[], Any], result: Callable[[Any], Any]) -> None:
        self.make = make
        self.result = result

    def begin(self) -> Any:
        """The state of the first pass."""
        return self.make()

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        """What is kept of the passes so far and the state of the next one."""
        return kept, state

    def finish(self, kept: Any, state: Any) -> Any:
        return self.result(state)


def read(name: str, state: Any) -> Any:
    return getattr(state, name)


def _spread(ddof: float, root: bool, m: Moments) -> float:
    if ddof == 1:
        return m.std if root else m.var
    rest = m.weight - ddof
    value = m.moment(2) * m.weight / rest if rest > 0 else math.nan
    return math.sqrt(value) if root else value


def _unbiased(kind: str, bias: bool, m: Moments) -> float:
    # Joanes and Gill (1998), Comparing measures of sample skewness and kurtosis: G1 and G2.
    g, n = m.skewness if kind == "skewness" else m.kurtosis, m.weight
    if bias:
        return g
    if kind == "skewness":
        return g * math.sqrt(n * (n - 1)) / (n - 2) if n > 2 else math.nan
    return (n - 1) / ((n - 2) * (n - 3)) * ((n + 1) * g + 6) if n > 3 else math.nan


_powers = {"geometric": np.log, "harmonic": np.reciprocal, "quadratic": np.square}


def _power_mean(kind: str, s: Any) -> float:
    sums, smallest = s.states[0].state, s.states[1].min
    if kind != "quadratic" and smallest < 0:
        return math.nan
    if kind == "geometric":
        return math.exp(sums.mean)
    return math.sqrt(sums.mean) if kind == "quadratic" else math.inf if sums.mean == 0 else 1 / sums.mean


def _change_mean(kind: str, nan_policy: NanPolicy) -> Any:
    return Several(Changed(_powers[kind], Sums(nan_policy=nan_policy)), Extremes(nan_policy=nan_policy))


def mean_job(kind: str, nan_policy: NanPolicy) -> Job:
    if kind == "arithmetic":
        return Job(partial(Sums, nan_policy=nan_policy), partial(read, "mean"))
    if kind not in _powers:
        raise ValueError(f'kind must be "arithmetic", "geometric", "harmonic" or "quadratic", got {short_text(kind)}')
    return Job(partial(_change_mean, kind, nan_policy), partial(_power_mean, kind))


def spread_job(ddof: float, root: bool, nan_policy: NanPolicy) -> Job:
    return Job(partial(Moments, 2, nan_policy=nan_policy), partial(_spread, ddof, root))


def shape_job(kind: str, bias: bool, nan_policy: NanPolicy) -> Job:
    order = 3 if kind == "skewness" else 4
    return Job(partial(Moments, order, nan_policy=nan_policy), partial(_unbiased, kind, bias))


def _power(center: float, order: int, x: Any) -> Any:
    return (x - center) ** order


class MomentJob(Job):
    """Moments about the mean, or about a given center."""

    def __init__(self, order: Any, center: float | None, nan_policy: NanPolicy) -> None:
        self.orders = np.atleast_1d(order)
        if np.any(self.orders != np.floor(self.orders)) or np.any((self.orders < 0) | (self.orders > 64)):
            raise ValueError(f"order must be whole numbers 0 to 64, got {short_text(order)}")
        self.scalar = np.ndim(order) == 0
        self.center = center
        self.nan_policy = nan_policy
        self.exact = center is None and self.orders.max(initial=0) <= 8
        self.passes = 1 if self.exact or center is not None else 2

    def begin(self) -> Any:
        if self.exact:
            return Moments(max(1, int(self.orders.max(initial=1))), nan_policy=self.nan_policy)
        return Sums(nan_policy=self.nan_policy) if self.center is None else self._about(self.center)

    def _about(self, center: float) -> Any:
        return Several(*(Changed(partial(_power, center, int(k)), Sums(nan_policy=self.nan_policy))
                         for k in self.orders))

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        return None, self._about(state.mean)

    def finish(self, kept: Any, state: Any) -> Any:
        values = [state.moment(int(k)) for k in self.orders] if self.exact \
            else [s.state.mean for s in state.states]
        return values[0] if self.scalar else np.array(values)


class QuantileJob(Job):
    """Exact quantiles: every pass settles some bits of each."""

    passes = 4

    def __init__(self, q: Any, method: QuantileMethod, nan_policy: NanPolicy) -> None:
        self.q = np.asarray(q, dtype=np.float64)
        self.method = method
        self.nan_policy = nan_policy
        self.begin()  # complains of what is wrong

    def begin(self) -> Any:
        return Ranks(self.q.ravel(), self.method, nan_policy=self.nan_policy)

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        return kept, state.next_pass()

    def finish(self, kept: Any, state: Any) -> Any:
        result = np.asarray(state.result).reshape(self.q.shape)
        return float(result) if result.ndim == 0 else result


class TrimmedJob(Job):
    """Means without the ends, or with them pulled in: the count, the ends, what is between."""

    passes = 6

    def __init__(self, cut: Any, winsorized: bool, nan_policy: NanPolicy) -> None:
        self.low, self.high = _ends(cut)
        if not (self.low >= 0 and self.high >= 0 and self.low + self.high <= 1):
            raise ValueError("cut must be fractions of at least 0, together at most 1, "
                             f"got {self.low} and {self.high}")
        self.winsorized = winsorized
        self.nan_policy = nan_policy

    def begin(self) -> Any:
        return Sums(nan_policy=self.nan_policy)

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        if isinstance(state, Sums):
            n = state.weight
            below, above = math.floor(self.low * n), math.floor(self.high * n)
            lost = n == 0 or below + above >= n or (state.missing > 0 and self.nan_policy == "propagate")
            # Half a value inside of what goes: there no rounding of q matters.
            q = [math.nan] * 2 if lost else [(below + 0.5) / n, (n - above - 0.5) / n]
            if not lost and n != math.floor(n):
                q = [min(1.0, np.nextafter(below / n, 2)), (n - above) / n]
            return (n, below, above), Ranks(np.clip(q, 0, 1), "inverted_cdf", nan_policy="omit")
        if isinstance(state, Ranks) and state.number <= 3:
            return kept, state.next_pass()
        return kept, Middle(*state.result)

    def finish(self, kept: Any, state: Any) -> Any:
        n, below, above = kept
        if math.isnan(state.low) or math.isnan(state.high) or state.low == state.high:
            return float(state.low)
        if self.winsorized:
            below = above = 0
        return state.mean(n, below, above)


class DescribeJob(Job):
    """Everything that `describe` tells, with the passes of its quartiles."""

    passes = 4

    def __init__(self, nan_policy: NanPolicy) -> None:
        self.nan_policy = nan_policy

    def begin(self) -> Any:
        return Several(Moments(4, nan_policy=self.nan_policy), Extremes(nan_policy=self.nan_policy),
                       Ranks([0.25, 0.5, 0.75], nan_policy=self.nan_policy))

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        if isinstance(state, Several):
            return state.states[:2], state.states[2].next_pass()
        return kept, state.next_pass()

    def finish(self, kept: Any, state: Any) -> Any:
        m, e = kept
        q1, median, q3 = (float(v) for v in state.result)
        return Description(m.weight, int(m.missing), m.mean, m.std, e.min, q1, median, q3, e.max,
                           m.skewness, m.kurtosis)


def _tally(dtype: Any, state: Any) -> TallyResult:
    whole = dtype is not None and np.issubdtype(dtype, np.integer)
    return TallyResult(state.values.astype(dtype) if whole else state.values, state.counts, int(state.missing))


def _mode(nan_policy: NanPolicy, state: Any) -> float:
    values, counts = state.values, state.counts
    if not len(values) or (state.missing and nan_policy == "propagate"):
        return math.nan
    return float(values[np.argmax(counts)])


def tally_job(nan_policy: NanPolicy, dtype: Any = None) -> Job:
    return Job(partial(Tally, nan_policy=nan_policy), partial(_tally, dtype))


def mode_job(nan_policy: NanPolicy) -> Job:
    return Job(partial(Tally, nan_policy=nan_policy), partial(_mode, nan_policy))


def covariance_job(k: int, ddof: float, correlation: bool, nan_policy: NanPolicy) -> Job:
    return Job(partial(Covariance, k, nan_policy=nan_policy), partial(_covariance, k, ddof, correlation))


def _covariance(k: int, ddof: float, correlation: bool, state: Any) -> Any:
    if correlation:
        return state.corr
    if ddof == 1:
        return state.cov
    rest = state.weight - ddof
    return state.cov * ((state.weight - 1) / rest) if rest > 0 else np.full((k, k), math.nan)


class HistogramJob(Job):
    """Counts between edges; before, what the edges depend on."""

    def __init__(self, bins: Any, range: Any, density: bool, nan_policy: NanPolicy, whole: bool = False) -> None:
        self.rule = bins if isinstance(bins, str) else None
        if self.rule not in (None, "auto", "fd", "scott", "sturges"):
            raise ValueError(f'bins must be a number, edges, "auto", "fd", "scott" or "sturges", got {short_text(bins)}')
        self.bins, self.range, self.density = bins, range, density
        self.nan_policy, self.whole = nan_policy, whole
        self.edges = None
        if self.rule is None and (np.ndim(bins) > 0 or range is not None):
            self.edges = self._edges(bins, range)
        ranks = self.rule in ("auto", "fd")
        if self.rule is not None and range is not None:
            raise ValueError("range: with a rule for the bins it is not allowed here; give their number")
        self.passes = 1 if self.edges is not None else 5 if ranks else 2

    @staticmethod
    def _edges(bins: Any, range: Any) -> Any:
        return np.asarray(_histogram([], bins, range=range).edges)

    def begin(self) -> Any:
        if self.edges is not None:
            return Histogram(self.edges, nan_policy=self.nan_policy)
        first = [Extremes(nan_policy="omit"), Moments(2, nan_policy="omit")]
        if self.passes == 5:
            first.append(Ranks([0.25, 0.75], nan_policy="omit"))
        return Several(*first)

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        if isinstance(state, Several):
            kept = state.states[:2]
            if self.passes == 5:
                return kept, state.states[2].next_pass()
        elif isinstance(state, Ranks) and state.number <= 3:
            return kept, state.next_pass()
        elif isinstance(state, Histogram):
            return kept, state
        extremes, moments = kept
        low, high = extremes.min, extremes.max
        if math.isnan(low):
            return None, Histogram(self._edges(self.bins if self.rule is None else 1, (0, 1)),
                                   nan_policy=self.nan_policy)
        bins = self.bins
        if self.rule is not None:
            iqr = state.result[1] - state.result[0] if self.passes == 5 else math.nan
            bins = self._count(low, high, moments, iqr)
        return None, Histogram(self._edges(bins, (low, high)), nan_policy=self.nan_policy)

    def _count(self, low: float, high: float, m: Any, iqr: float) -> int:
        n = m.weight
        sturges = (high - low) / (math.log2(n) + 1)
        width = sturges
        if self.rule == "scott":
            width = np.cbrt(24 * math.sqrt(math.pi) / n) * math.sqrt(m.moment(2))
        elif self.rule in ("fd", "auto"):
            fd = 2 * iqr / np.cbrt(n)
            width = fd if self.rule == "fd" else min(max(fd, (high - low) / math.sqrt(n) / 2), sturges)
        if not width > 0:
            return 1
        count = (high - low) / (max(width, 1.0) if self.whole else width)
        if not count <= 2 ** 27:
            raise ValueError("bins: the rule makes more than 2^27 of them; give their number")
        return max(1, math.ceil(count))

    def finish(self, kept: Any, state: Any) -> Any:
        counts, edges = np.asarray(state.counts), np.asarray(state.edges)
        if self.density:
            counts = counts / (Sums().update(counts).sum * np.diff(edges))
        return HistogramResult(counts, edges, int(state.missing))


class GridDensity:
    """A kernel density at equally spaced points: x, y, bandwidth."""

    def __init__(self, x: Any, y: Any, bandwidth: float) -> None:
        self.x, self.y, self.bandwidth = x, y, bandwidth

    def __repr__(self) -> str:
        return f"<GridDensity of {len(self.x)} points, bandwidth {self.bandwidth:.6g}>"


class PointDensity:
    """A kernel density at points so far apart that a grid between them would be too fine: direct sums."""

    reach = 40  # bandwidths, beyond which every kernel is 0

    def __init__(self, x: Any, bandwidth: float, kernel: Any, nan_policy: NanPolicy) -> None:
        self.x, self.bandwidth, self.kernel = x, bandwidth, kernel
        self.total = Sums(nan_policy=nan_policy)
        self.sums: dict[int, Sums] = {}

    @property
    def weight(self) -> float:
        return self.total.weight

    def update(self, x: Any, weights: Any = None) -> PointDensity:
        x = np.asarray(x, dtype=np.float64).ravel()
        w = np.ones(x.size) if weights is None else np.asarray(weights, dtype=np.float64).ravel()
        self.total.update(x, w)
        order = np.argsort(x)[:np.count_nonzero(~np.isnan(x))]
        x, w = x[order], w[order]
        near = self.reach * self.bandwidth
        begin, end = np.searchsorted(x, self.x - near), np.searchsorted(x, self.x + near)
        of = _kde([0.0], bandwidth=1.0, kernel=self.kernel)
        for i in np.flatnonzero(begin < end):
            here = slice(begin[i], end[i])
            self.sums.setdefault(int(i), Sums()).update(of((x[here] - self.x[i]) / self.bandwidth), w[here])
        return self

    def merge(self, other: PointDensity) -> PointDensity:
        self.total.merge(other.total)
        for i, theirs in other.sums.items():
            self.sums.setdefault(i, Sums()).merge(theirs)
        return self

    def density(self) -> Any:
        y = np.zeros(len(self.x))
        for i, s in self.sums.items():
            y[i] = s.sum / (self.weight * self.bandwidth)
        return y * np.nan if math.isnan(self.total.mean) else y


class KdeJob(Job):
    """A kernel density: spread and ends, then the shares of a fine grid."""

    most = 2 ** 24  # points of the grid

    fineness = 64  # grid steps in a bandwidth, at least

    def __init__(self, bandwidth: Any, kernel: str, points: int, bounds: Any, nan_policy: NanPolicy) -> None:
        if isinstance(bandwidth, str) and bandwidth not in ("silverman", "scott"):
            raise ValueError(f'bandwidth must be a number, "silverman" or "scott", got {short_text(bandwidth)}')
        if points < 2:
            raise ValueError(f"points must be at least 2, got {points}")
        self.bandwidth, self.kernel, self.points, self.bounds = bandwidth, kernel, points, bounds
        self.nan_policy = nan_policy
        self.passes = 5 if isinstance(bandwidth, str) else 1 if bounds is not None else 2

    def begin(self) -> Any:
        if self.passes == 1:
            return self._grid(self.bandwidth, self.bounds)
        first = [Extremes(nan_policy="omit"), Moments(2, nan_policy="omit")]
        if self.passes == 5:
            first.append(Ranks([0.25, 0.75], nan_policy="omit"))
        return Several(*first)

    def _layout(self, h: float, bounds: Any) -> tuple[int, int]:
        step = (bounds[1] - bounds[0]) / (self.points - 1)
        finer = max(1, math.ceil(self.fineness * step / h))
        return finer, math.ceil(9 * h / (step / finer))

    def _grid(self, h: float, bounds: Any) -> DensityGrid | PointDensity:
        finer, margin = self._layout(h, bounds)
        count = (self.points - 1) * finer + 1 + 2 * margin
        if count > self.most:
            return PointDensity(np.linspace(bounds[0], bounds[1], self.points), h, self.kernel, self.nan_policy)
        step = (bounds[1] - bounds[0]) / ((self.points - 1) * finer)
        return DensityGrid((bounds[0] - margin * step, bounds[1] + margin * step), count,
                           nan_policy=self.nan_policy)

    def advance(self, kept: Any, state: Any) -> tuple[Any, Any]:
        if isinstance(state, Several):
            kept = state.states[:2]
            if self.passes == 5:
                return kept, state.states[2].next_pass()
        elif isinstance(state, Ranks) and state.number <= 3:
            return kept, state.next_pass()
        elif not isinstance(state, Ranks):
            return kept, state
        extremes, m = kept
        if math.isnan(extremes.min):
            return (math.nan, (0.0, 1.0)), DensityGrid((0, 1), 2, nan_policy=self.nan_policy)
        h = self.bandwidth
        if isinstance(h, str):
            robust = (state.result[1] - state.result[0]) / 1.34
            least = min(m.std, robust) if robust > 0 else m.std
            if not (least > 0 and math.isfinite(least)):
                raise ValueError("bandwidth: data without spread need one")
            h = (0.9 if h == "silverman" else 1.06) * least * m.weight ** -0.2
        bounds = self.bounds or (extremes.min - 3 * h, extremes.max + 3 * h)
        return (h, bounds), self._grid(h, bounds)

    def finish(self, kept: Any, state: Any) -> Any:
        h, bounds = kept or (self.bandwidth, self.bounds)
        if math.isnan(h):
            nothing = np.full(self.points, math.nan)
            return GridDensity(nothing, nothing, h)
        if isinstance(state, PointDensity):
            return GridDensity(state.x, state.density(), h)
        finer, margin = self._layout(h, bounds)
        fine = state.density(h, self.kernel)
        return GridDensity(np.linspace(bounds[0], bounds[1], self.points),
                           fine[margin:margin + (self.points - 1) * finer + 1:finer], h)
