"""Tests of counts, by SciPy's names."""

from __future__ import annotations

from bisect import bisect_right
from dataclasses import dataclass
from math import sqrt
from typing import Any, NamedTuple

import numpy as np

import vexel as vx
from vexel.compat._lanes import NORMAL, ConfidenceInterval, Found, alternative_of, over_lanes, sides
from vexel.compat._relations import SignificanceResult


class Power_divergenceResult(Found):  # noqa: N801
    pass


def chisquare(f_obs: Any, f_exp: Any = None, ddof: int = 0, axis: Any = 0, *, sum_check: bool = True, nan_policy: Any = "propagate",
              keepdims: bool = False) -> Any:
    def test(observed: Any, expected: Any = None) -> tuple[float, float]:
        if expected is not None and not sum_check:
            return _tested(_divergence(observed, expected, 1.0), len(observed) - 1 - ddof)
        if expected is not None:
            _same_total("chisquare", observed, expected)
        return tuple(vx.chi_square_test(observed, expected, ddof=ddof))  # type: ignore[return-value]

    samples = (f_obs,) if f_exp is None else (f_obs, f_exp)
    return Power_divergenceResult(*over_lanes("chisquare", test, samples, axis, nan_policy, keepdims, paired=True))


_POWERS = {"pearson": 1.0, "log-likelihood": 0.0, "freeman-tukey": -0.5, "mod-log-likelihood": -1.0, "neyman": -2.0, "cressie-read": 2 / 3}


def power_divergence(f_obs: Any, f_exp: Any = None, ddof: int = 0, axis: Any = 0, lambda_: Any = None, *,
                     nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """Cressie and Read's statistics (1984); 0 is that of the likelihood ratio, the G test."""
    power = _power(lambda_)

    def test(observed: Any, expected: Any = None) -> tuple[float, float]:
        if expected is None:
            expected = np.full(len(observed), vx.mean(observed))
        _same_total("power_divergence", observed, expected)
        return _tested(_divergence(observed, expected, power), len(observed) - 1 - ddof)

    samples = (f_obs,) if f_exp is None else (f_obs, f_exp)
    return Power_divergenceResult(*over_lanes("power_divergence", test, samples, axis, nan_policy, keepdims, paired=True))


def _tested(statistic: float, df: int) -> tuple[float, float]:
    return statistic, vx.ChiSquare(df).sf(statistic) if df > 0 else np.nan


def _same_total(name: str, observed: Any, expected: Any) -> None:
    totals = float(np.sum(observed)), float(np.sum(expected))
    if not np.isclose(*totals, rtol=sqrt(np.finfo(float).eps), atol=0):
        raise ValueError(f"{name}: f_exp must have the sum of f_obs, {totals[0]}, got {totals[1]}")


def _power(lambda_: Any) -> float:
    if isinstance(lambda_, str):
        if lambda_ not in _POWERS:
            raise ValueError(f"lambda_ must be a number or one of {', '.join(_POWERS)}, got {lambda_!r}")
        return _POWERS[lambda_]
    return 1.0 if lambda_ is None else float(lambda_)


def _divergence(observed: Any, expected: Any, power: float) -> float:
    o, e = np.asarray(observed, dtype=np.float64).reshape(-1), np.asarray(expected, dtype=np.float64).reshape(-1)
    if power == 1:
        return float(np.sum((o - e) ** 2 / e))
    with np.errstate(divide="ignore", invalid="ignore"):
        if power == 0:
            terms = np.where(o == 0, 0.0, o * np.log(o / e))
        elif power == -1:
            terms = np.where(e == 0, 0.0, e * np.log(e / o))
        else:
            terms = o * ((o / e) ** power - 1) / (power * (power + 1)) if power > 0 else np.where(
                o == 0, 0.0 if power > -1 else np.inf, o * ((o / e) ** power - 1)) / (power * (power + 1))
    return 2 * float(np.sum(terms))


# ---- tables

class Chi2ContingencyResult(NamedTuple):
    statistic: Any
    pvalue: Any
    dof: int
    expected_freq: Any


def chi2_contingency(observed: Any, correction: bool = True, lambda_: Any = None, *, method: Any = None) -> Any:
    """Independence of the rows and columns; Yates' correction where there is one degree of freedom."""
    if method is not None:
        raise NotImplementedError("chi2_contingency: method must be None; resampling is scipy.stats' own")
    table = np.asarray(observed, dtype=np.float64)
    if not table.size or not (table >= 0).all():
        raise ValueError(f"chi2_contingency: observed must be counts, got {table.min() if table.size else 'none'}")
    total = table.sum()
    expected = np.asarray(total)
    for axis in range(table.ndim):
        others = tuple(a for a in range(table.ndim) if a != axis)
        expected = expected * (table.sum(axis=others, keepdims=True) / total)
    if not (expected > 0).all():
        raise ValueError("chi2_contingency: observed must have a count in each row and column, got one without")
    df = table.size - sum(table.shape) + table.ndim - 1
    if df == 0:
        return Chi2ContingencyResult(0.0, 1.0, 0, expected)
    if df == 1 and correction:
        apart = expected - table
        table = table + np.sign(apart) * np.minimum(0.5, np.abs(apart))
    statistic = _divergence(table, expected, _power(lambda_))
    return Chi2ContingencyResult(statistic, vx.ChiSquare(df).sf(statistic), df, expected)


def fisher_exact(table: Any, alternative: Any = None, *, method: Any = None) -> Any:
    """Of a table of two rows and columns; the statistic is the odds ratio of the sample."""
    alternative = alternative_of("fisher_exact", "two-sided" if alternative is None else alternative)
    counts = np.asarray(table)
    if counts.shape != (2, 2) or method is not None:
        raise NotImplementedError(f"fisher_exact: table must be of 2 rows and columns and method None, got {counts.shape} and {method!r}")
    if (counts < 0).any() or (counts != np.floor(counts)).any():
        raise ValueError(f"fisher_exact: table must be of counts, got {counts.tolist()}")
    (a, b), (c, d) = ((int(v) for v in row) for row in counts)
    if 0 in (a + b, c + d, a + c, b + d):
        return SignificanceResult(np.nan, 1.0)
    odds = a * d / (b * c) if b * c else np.inf
    n, row, column = a + b + c + d, a + b, a + c
    law = vx.Hypergeometric(population=n, marked=row, drawn=column)
    ends = max(0, column - (n - row)), min(row, column)
    return SignificanceResult(odds, _tail(law, a, ends, (row + 1) * (column + 1) // (n + 2), alternative))


def _tail(law: Any, k: int, ends: tuple[int, int], mode: int, alternative: str) -> float:
    """The p-value of k; two-sided that of all values as improbable, of a law that rises to its mode and falls from it."""
    if alternative != "two-sided":
        return float(law.cdf(k) if alternative == "less" else law.sf(k - 1))
    low, high = ends
    most = law.pmf(k) * (1 + 1e-11)  # equal ones differ by their rounding
    if k >= mode:
        last = low + bisect_right(range(low, mode + 1), most, key=law.pmf) - 1
        return float(min(1.0, law.sf(k - 1) + (law.cdf(last) if last >= low else 0.0)))
    first = high - bisect_right(range(high, mode - 1, -1), most, key=law.pmf) + 1
    return float(min(1.0, law.cdf(k) + (law.sf(first - 1) if first <= high else 0.0)))


# ---- proportions

@dataclass
class BinomTestResult:
    k: int
    n: int
    alternative: str
    statistic: float
    pvalue: float

    def proportion_ci(self, confidence_level: float = 0.95, method: str = "exact") -> Any:
        """Clopper and Pearson's interval, or Wilson's, with or without continuity."""
        below, above = sides(self.alternative, confidence_level)
        if method == "exact":
            return ConfidenceInterval(
                vx.Beta(self.k, self.n - self.k + 1).quantile(below) if self.k and below else 0.0,
                vx.Beta(self.k + 1, self.n - self.k).isf(above) if self.k < self.n and above else 1.0)
        if method not in ("wilson", "wilsoncc"):
            raise ValueError(f'proportion_ci: method must be "exact", "wilson" or "wilsoncc", got {method!r}')
        return ConfidenceInterval(self._wilson(below, -1, method) if below else 0.0, self._wilson(above, 1, method) if above else 1.0)

    def _wilson(self, outside: float, side: int, method: str) -> float:
        """R. G. Newcombe (1998), Two-sided confidence intervals for the single proportion."""
        n, p, z = self.n, self.k / self.n, NORMAL.isf(outside)
        if method == "wilson":
            reach = z * sqrt(z * z + 4 * n * p * (1 - p))
        elif self.k == (0 if side < 0 else n):
            return 0.0 if side < 0 else 1.0
        else:
            reach = 1 + z * sqrt(z * z + side * 2 - 1 / n + 4 * p * (n * (1 - p) - side))
        return (2 * n * p + z * z + side * reach) / (2 * (n + z * z))


def binomtest(k: int, n: int, p: float = 0.5, alternative: str = "two-sided") -> Any:
    alternative_of("binomtest", alternative)
    if int(n) != n or int(k) != k or not 0 <= k <= n or n < 1:
        raise ValueError(f"binomtest: k and n must be whole, 0 <= k <= n and n >= 1, got {k!r} and {n!r}")
    if not 0 <= p <= 1:
        raise ValueError(f"binomtest: p must be in [0, 1], got {p!r}")
    k, n = int(k), int(n)
    pvalue = _tail(vx.Binomial(n, p), k, (0, n), min(n, int((n + 1) * p)), alternative)
    return BinomTestResult(k, n, alternative, k / n, pvalue)
