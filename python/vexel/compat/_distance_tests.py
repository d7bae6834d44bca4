"""Kolmogorov and Smirnov's tests of one and two samples, by SciPy's names."""

from __future__ import annotations

from math import ceil, exp, sqrt
from typing import Any

import numpy as np

import vexel as vx
from vexel._distributions import Distribution
from vexel.compat import _laws
from vexel.compat._families import Family, Frozen
from vexel.compat._lanes import Found, alternative_of, one_of, over_lanes


class KstestResult(Found):
    statistic_location: Any
    statistic_sign: Any


def _result(parts: list[Any]) -> Any:
    statistic, pvalue, location, sign = parts
    whole = sign if np.isnan(sign).any() else np.asarray(sign, dtype=np.int8) if np.ndim(sign) else int(sign)
    return KstestResult(statistic, pvalue, statistic_location=location, statistic_sign=whole)


# ---- one sample

def kstest(rvs: Any, cdf: Any, args: tuple[Any, ...] = (), N: int = 20, alternative: str = "two-sided",  # noqa: N803
           method: str = "auto", *, axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """`ks_1samp`, or `ks_2samp` where `cdf` is a sample; `rvs` may be a law or a function that draws N values."""
    if isinstance(rvs, str):
        rvs = _laws.named("kstest: rvs", rvs)
    if isinstance(rvs, Family):
        rvs = rvs.rvs(*args, size=N)
    elif callable(rvs):
        rvs = rvs(*args, size=N)
    options = {"axis": axis, "nan_policy": nan_policy, "keepdims": keepdims}
    if isinstance(cdf, (str, Family, Frozen, Distribution)) or callable(cdf):
        return ks_1samp(rvs, cdf, args, alternative, method, **options)
    return ks_2samp(rvs, cdf, alternative, method, **options)


def ks_1samp(x: Any, cdf: Any, args: tuple[Any, ...] = (), alternative: str = "two-sided", method: str = "auto", *,
             axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """The law of the distance is the exact one whatever the method."""
    alternative_of("ks_1samp", alternative)
    one_of("ks_1samp", "method", method, ("auto", "exact", "approx", "asymp"))
    if isinstance(cdf, str):
        cdf = _laws.named("kstest: cdf", cdf)
    if isinstance(cdf, Family):
        cdf = cdf(*args)
        args = ()

    def test(sample: Any) -> tuple[float, ...]:
        x = np.sort(sample)
        values = _probabilities(cdf, x, args)
        n = len(x)
        above, below = np.arange(1, n + 1) / n - values, values - np.arange(n) / n
        at = int(above.argmax()), int(below.argmax())
        sign = {"greater": 1, "less": -1}.get(alternative) or (1 if above[at[0]] > below[at[1]] else -1)
        location = float(x[at[0] if sign == 1 else at[1]])
        if alternative != "two-sided":
            d = max(0.0, float(above[at[0]] if sign == 1 else below[at[1]]))
            return d, smirnov_tail(n, d), location, sign
        law = cdf._law if isinstance(cdf, Frozen) and (cdf._loc, cdf._scale) == (0, 1) else None
        return (*(vx.ks_test(values, vx.Uniform()) if law is None else vx.ks_test(x, law)), location, sign)

    return _result(over_lanes("ks_1samp", test, (x,), axis, nan_policy, keepdims, parts=4))


def _probabilities(cdf: Any, x: Any, args: tuple[Any, ...]) -> Any:
    """Values of the distribution function, which may be one of an array or of a number."""
    function = getattr(cdf, "cdf", cdf)
    try:
        values = np.asarray(function(x, *args), dtype=np.float64)
    except (TypeError, ValueError):  # a function of one number
        values = np.empty(0)
    if values.shape == x.shape:
        return values
    return np.array([function(v, *args) for v in x.tolist()], dtype=np.float64)


def smirnov_tail(n: int, d: float) -> float:
    """P(D+ >= d), D+ the largest distance of the distribution function of n values above the true one.

    Birnbaum and Tingey (1951): d times the sum of C(n, j) p^(j-1) (1 - p)^(n-j), p = d + j/n, over j <= n(1 - d),
    binomial probabilities over p, which are taken by Loader's deviances: all terms are positive.
    """
    if d <= 0:
        return 1.0
    j = np.arange(0, min(n, ceil(n * (1 - d)) + 1), dtype=np.float64)
    p = d + j / n
    there = n * (1 - d) > j
    j, p = j[there], p[there]
    if not len(j):
        return 0.0
    rest = n - j
    shift = n * d  # from j to the mean n p
    with np.errstate(divide="ignore", invalid="ignore"):
        below = np.where(j > 0, j * np.log1p(shift / j), 0.0) - shift
        left = n * (1 - d) - j  # n (1 - p), which has its digits where p is near 1
        above = rest * np.where(2 * left < rest, np.log(left / rest), np.log1p(-shift / rest)) + shift
        width = np.where(j > 0, 0.5 * np.log(n / (2 * np.pi * j * rest)), 0.0)
    log_terms = _stirling_rest(np.float64(n)) - _stirling_rest(j) - _stirling_rest(rest) + below + above + width
    return float(min(1.0, d * np.sum(np.exp(log_terms) / p)))


_SMALL = np.array([0.0, *(float(sum(np.log(range(1, k + 1)))) - ((k + 0.5) * float(np.log(k)) - k + 0.5 * float(np.log(2 * np.pi)))
                          for k in range(1, 16))])


def _stirling_rest(k: Any) -> Any:
    """log k! less Stirling's formula; 0 of 0, where the formula is not used."""
    large = np.maximum(k, 15.0)
    t = 1 / (large * large)
    series = (1 / 12 - t * (1 / 360 - t * (1 / 1260 - t * (1 / 1680 - t / 1188)))) / large
    return np.where(k < 16, _SMALL[np.minimum(k, 15).astype(int)], series)


# ---- two samples

def ks_2samp(data1: Any, data2: Any, alternative: str = "two-sided", method: str = "auto", *, axis: Any = 0,
             nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """Exact up to 10,000 values in each sample."""
    alternative_of("ks_2samp", alternative)
    one_of("ks_2samp", "method", method, ("auto", "exact", "asymp"))

    def test(x: Any, y: Any) -> tuple[float, ...]:
        m, n = len(x), len(y)
        every = np.sort(np.concatenate((x, y)))
        # The distances times mn, whole numbers.
        apart = np.searchsorted(np.sort(x), every, "right") * n - np.searchsorted(np.sort(y), every, "right") * m
        up, down = int(apart.argmax()), int(apart.argmin())
        sign = {"greater": 1, "less": -1}.get(alternative) or (1 if apart[up] >= -apart[down] else -1)
        at = up if sign == 1 else down
        far = max(0, sign * int(apart[at]))
        if method == "exact" or method == "auto" and max(m, n) <= 10_000:
            p = _share_of_paths(m, n, far, alternative != "two-sided")
        else:
            p = _limit(m, n, far / (m * n), alternative != "two-sided")
        return far / (m * n), p, float(every[at]), sign

    return _result(over_lanes("ks_2samp", test, (data1, data2), axis, nan_policy, keepdims, parts=4))


def _share_of_paths(m: int, n: int, far: int, one_sided: bool) -> float:
    """The probability that a random path from (0, 0) to (m, n) comes to a point with i n - j m, or its size, at least `far`.

    Backwards, diagonal by diagonal, over the points where that is still open: beyond them it is 1, and a step goes right
    with the share of what is left there.  Only positive terms are added, so that the smallest probabilities have their digits.
    """
    if far == 0:
        return 1.0
    reached = np.ones(m + 2)
    reached[m] = 0.0
    before = slice(m, m + 1)
    for s in range(m + n - 1, -1, -1):
        low = max(0, s - n) if one_sided else max(0, s - n, (s * m - far) // (m + n) + 1)
        high = min(m, s, (s * m + far - 1) // (m + n))
        k = np.arange(low, high + 1)
        open_ones = ((m - k) * reached[low + 1:high + 2] + (n - s + k) * reached[low:high + 1]) / (m + n - s)
        reached[before] = 1.0
        before = slice(low, high + 1)
        reached[before] = open_ones
    return float(reached[0])


def _limit(m: int, n: int, d: float, one_sided: bool) -> float:
    """The law of many values: two-sided that of one sample of mn/(m + n), one-sided Hodges' expansion (1957)."""
    m, n = max(m, n), min(m, n)
    size = m * n / (m + n)
    if one_sided:
        z = sqrt(size) * d
        return min(1.0, exp(-2 * z * z - 2 * z * (m + 2 * n) / sqrt(m * n * (m + n)) / 3))
    whole = max(1, round(size))
    if d <= 0.5 / whole:
        return 1.0
    # A sample with that distance.
    return vx.ks_test(np.clip(np.arange(1, whole + 1) / whole - d, 0, 1), vx.Uniform()).pvalue
