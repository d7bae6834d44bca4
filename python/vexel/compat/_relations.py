"""Correlations and regression, by SciPy's names."""

from __future__ import annotations

from itertools import accumulate
from math import factorial
from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel.compat._lanes import (
    NORMAL, ConfidenceInterval, Found, alternative_of, of_as_many_axes, one_of, over_lanes, plain, sides, symmetric_tail)


class SignificanceResult(Found):
    @property
    def correlation(self) -> Any:
        return self.statistic


class PearsonRResult(SignificanceResult):
    _alternative: str
    _n: int

    def confidence_interval(self, confidence_level: float = 0.95, method: Any = None) -> Any:
        """By Fisher's transformation: atanh r is nearly normal, of variance 1/(n - 3)."""
        if method is not None:
            raise NotImplementedError("confidence_interval: method must be None; resampling is scipy.stats' own")
        below, above = sides(self._alternative, confidence_level)
        r = np.asarray(self.statistic, dtype=np.float64)
        if self._n <= 3:
            return ConfidenceInterval(plain(np.full(r.shape, -1.0)), plain(np.full(r.shape, 1.0)))
        with np.errstate(divide="ignore"):
            z = np.arctanh(r)
        sd = 1 / np.sqrt(self._n - 3)
        low = np.tanh(z - sd * NORMAL.isf(below)) if below else np.where(np.isnan(r), r, -1.0)
        high = np.tanh(z + sd * NORMAL.isf(above)) if above else np.where(np.isnan(r), r, 1.0)
        return ConfidenceInterval(plain(low), plain(high))


def pearsonr(x: Any, y: Any, *, alternative: str = "two-sided", method: Any = None, axis: Any = 0) -> Any:
    alternative_of("pearsonr", alternative)
    if method is not None:
        raise NotImplementedError("pearsonr: method must be None; resampling is scipy.stats' own")
    n = np.size(x) if axis is None else of_as_many_axes("pearsonr", (x, y), axis)[0].shape[axis]
    if n < 2:
        raise ValueError(f"pearsonr: there must be at least 2 pairs, got {n}")
    r, p = over_lanes("pearsonr", lambda x, y: _correlation(x, y, "pearson", alternative), (x, y), axis, paired=True)
    return PearsonRResult(r, p, _alternative=alternative, _n=n)


def pointbiserialr(x: Any, y: Any, *, axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """Pearson's correlation of a variable with two values and another one."""
    return SignificanceResult(*over_lanes("pointbiserialr", lambda x, y: _correlation(x, y, "pearson", "two-sided"), (x, y), axis, nan_policy,
                                          keepdims, paired=True))


def spearmanr(a: Any, b: Any = None, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided") -> Any:
    alternative_of("spearmanr", alternative)

    def of_pair(x: Any, y: Any) -> Any:
        found = over_lanes("spearmanr", lambda x, y: _correlation(x, y, "spearman", alternative), (x, y), 0, nan_policy, paired=True)
        return SignificanceResult(*found)

    if axis is None:
        a, b = np.ravel(a), b if b is None else np.ravel(b)
    if b is not None and np.ndim(a) == np.ndim(b) == 1:
        return of_pair(a, b)
    tables = [np.atleast_2d(m).T if np.ndim(m) < 2 or axis == 1 else np.asarray(m) for m in (a, b) if m is not None]
    columns = np.hstack(tables)
    if columns.shape[1] < 2:
        raise ValueError(f"spearmanr: a must be two variables, got {columns.shape[1]}")
    if columns.shape[1] == 2:
        return of_pair(columns[:, 0], columns[:, 1])
    found = np.array([[of_pair(x, y) for y in columns.T] for x in columns.T])
    return SignificanceResult(*np.moveaxis(found, -1, 0))


def _correlation(x: Any, y: Any, method: Any, alternative: str) -> tuple[Any, Any]:
    """The coefficient and its p-value by Student's t of n - 2."""
    r, n = vx.corr(x, y, method=method), len(x)
    if n < 3 or np.isnan(r):
        return r, 1.0 if n == 2 else np.nan
    t = r * np.sqrt((n - 2) / ((1 - r) * (1 + r))) if abs(r) < 1 else np.copysign(np.inf, r)
    return r, symmetric_tail(vx.StudentT(n - 2), float(t), alternative)


# ---- Kendall's tau

def kendalltau(x: Any, y: Any, *, nan_policy: Any = "propagate", method: str = "auto", variant: str = "b",
               alternative: str = "two-sided") -> Any:
    """Tau-b; its p-value from the law of the count of inversions, or from the normal law with ties and many values."""
    alternative_of("kendalltau", alternative)
    one_of("kendalltau", "method", method, ("auto", "exact", "asymptotic"))
    if variant != "b":
        raise NotImplementedError(f'kendalltau: variant must be "b", got {variant!r}')
    x, y = np.ravel(x), np.ravel(y)
    tau = vx.corr(x, y, method="kendall", nan_policy=nan_policy)
    if np.isnan(tau):
        return SignificanceResult(np.nan, np.nan)
    there = ~(np.isnan(np.asarray(x, dtype=float)) | np.isnan(np.asarray(y, dtype=float)))
    ties = [vx.tally(v[there]).counts for v in (x, y)]
    n = int(there.sum())
    pairs = n * (n - 1)
    tied = [float(np.sum(c * (c - 1))) for c in ties]
    score = round(tau * np.sqrt((pairs - tied[0]) * (pairs - tied[1])) / 2)  # concordant less discordant pairs
    far = (pairs // 2 - abs(score)) // 2
    if method == "exact" and any(tied):
        raise ValueError("kendalltau: method must not be exact where there are ties")
    if method == "exact" or method == "auto" and not any(tied) and (n <= 33 or far <= 1):
        return SignificanceResult(tau, _exact_kendall(n, far, score, alternative))
    second = [float(np.sum(c * (c - 1) * (2 * c + 5))) for c in ties]
    third = [float(np.sum(c * (c - 1) * (c - 2))) for c in ties]
    variance = (pairs * (2 * n + 5) - sum(second)) / 18 + tied[0] * tied[1] / (2 * pairs)
    if n > 2:
        variance += third[0] * third[1] / (9 * pairs * (n - 2))
    return SignificanceResult(tau, symmetric_tail(NORMAL, score / float(np.sqrt(variance)), alternative))


def _exact_kendall(n: int, far: int, score: int, alternative: str) -> float:
    if alternative == "two-sided":
        return min(1.0, 2 * _few_inversions(n, far)) if score else 1.0
    if (score >= 0) == (alternative == "greater"):
        return _few_inversions(n, far)
    return 1 - _few_inversions(n, far - 1)


def _few_inversions(n: int, most: int) -> float:
    """The share of the orders of n values that have at most so many inversions."""
    if most < 0:
        return 0.0
    if n <= 33:
        counts = [1] + [0] * most
        for k in range(2, n + 1):
            sums = [0, *accumulate(counts)]
            counts = [sums[i + 1] - sums[max(0, i + 1 - k)] for i in range(most + 1)]
        return sum(counts) / factorial(n)
    shares = np.zeros(most + 1, dtype=np.longdouble)
    shares[0] = 1
    for k in range(2, n + 1):
        added = np.cumsum(shares)
        added[k:] -= added[:-k].copy()
        shares = added / k
    return float(np.sum(shares))


# ---- regression

class _Line(NamedTuple):
    slope: Any
    intercept: Any
    rvalue: Any
    pvalue: Any
    stderr: Any


class LinregressResult(_Line):
    """Unpacks to five parts, as SciPy's does; the sixth is an attribute."""

    intercept_stderr: Any

    def __new__(cls, *parts: Any, intercept_stderr: Any = np.nan) -> Any:
        self = super().__new__(cls, *parts)
        self.intercept_stderr = intercept_stderr
        return self

    def __repr__(self) -> str:
        return f"{super().__repr__()[:-1]}, intercept_stderr={self.intercept_stderr!r})"


def linregress(x: Any, y: Any, alternative: str = "two-sided", *, axis: Any = 0, nan_policy: Any = "propagate",
               keepdims: bool = False) -> Any:
    """The line of least squares, and Student's test of a slope of 0."""
    alternative_of("linregress", alternative)
    *parts, last = over_lanes("linregress", lambda x, y: _line(x, y, alternative), (x, y), axis, nan_policy, keepdims,
                              parts=6, paired=True, least=2)
    return LinregressResult(*parts, intercept_stderr=last)


def _line(x: Any, y: Any, alternative: str) -> tuple[float, ...]:
    n = len(x)
    (sxx, sxy), (_, syy) = vx.cov(np.column_stack((x, y)), ddof=0).tolist()
    if sxx == 0:
        raise ValueError("linregress: x must have different values, got equal ones")
    x_mean, y_mean = vx.mean(x), vx.mean(y)
    slope = sxy / sxx
    intercept = y_mean - slope * x_mean
    r = vx.corr(x, y)
    if n == 2:
        return slope, intercept, r, 0.0 if syy else 1.0, 0.0, 0.0
    residuals = (y - y_mean) - slope * (x - x_mean)
    error = vx.mean(residuals, kind="quadratic") / float(np.sqrt(sxx * (n - 2)))
    t = slope / error if error else float(np.copysign(np.inf, slope)) if slope else np.nan
    p = symmetric_tail(vx.StudentT(n - 2), t, alternative)
    return slope, intercept, r, p, error, error * float(np.sqrt(sxx + x_mean**2))
