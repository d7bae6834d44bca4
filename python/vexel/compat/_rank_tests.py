"""Tests by ranks, by SciPy's names; exact laws are counted, the smaller tail first."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial
from itertools import accumulate
from math import comb, floor, sqrt
from typing import Any

import numpy as np

import vexel as vx
from vexel.compat._lanes import NORMAL, Found, alternative_of, differences, one_of, over_lanes, symmetric_tail


def _ties(ranked: Any) -> float:
    """Σ(t³ - t) over the groups of equal values."""
    counts = np.unique(ranked, return_counts=True)[1].astype(np.float64)
    return float(np.sum(counts**3 - counts))


def _counted_tail(most: Callable[[int], float], statistic: int, total: int, alternative: str) -> float:
    """The p-value of a whole statistic whose law is symmetrical on 0 ... total; `most(k)` is the probability of at most k."""
    def at_least(k: int) -> float:
        return most(total - k) if 2 * k > total else 1 - most(k - 1)

    if alternative == "two-sided":
        return min(1.0, 2 * most(min(statistic, total - statistic)))
    return at_least(statistic if alternative == "greater" else total - statistic)


# ---- two samples

class MannwhitneyuResult(Found):
    pass


def mannwhitneyu(x: Any, y: Any, use_continuity: bool = True, alternative: str = "two-sided", axis: Any = 0, method: str = "auto", *,
                 nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """The statistic counts the pairs in which x is greater; the law is exact up to 8 values of one sample, without ties."""
    alternative_of("mannwhitneyu", alternative)
    one_of("mannwhitneyu", "method", method, ("auto", "asymptotic", "exact"))

    def test(x: Any, y: Any) -> tuple[float, float]:
        m, n = len(x), len(y)
        both = np.concatenate((x, y))
        u = float(np.sum(vx.rank(both)[:m])) - m * (m + 1) / 2
        ties = _ties(both)
        if method == "exact" or method == "auto" and min(m, n) <= 8 and not ties:
            # Half a win of a tie is rounded so that the p-value is the greater one.
            k = floor(max(u, m * n - u) if alternative == "two-sided" else u if alternative == "greater" else m * n - u)
            tail = "two-sided" if alternative == "two-sided" else "greater"
            return u, _counted_tail(lambda most: _few_wins(m, n, most), k, m * n, tail)
        variance = m * n / 12 * (m + n + 1 - ties / ((m + n) * (m + n - 1)))
        if variance <= 0:
            return u, 1.0
        d = u - m * n / 2
        away = abs(d) if alternative == "two-sided" else d if alternative == "greater" else -d
        z = (away - 0.5 * use_continuity) / sqrt(variance)
        return u, min(1.0, (2 if alternative == "two-sided" else 1) * NORMAL.sf(z))

    return MannwhitneyuResult(*over_lanes("mannwhitneyu", test, (x, y), axis, nan_policy, keepdims))


def _few_wins(m: int, n: int, most: int) -> float:
    """The share of the orders of m and n values in which at most so many pairs have the first one greater.

    The coefficients of the Gaussian binomial, the product of (1 - q^(n+k))/(1 - q^k).
    """
    if most < 0:
        return 0.0
    counts = [1] + [0] * most
    m, n = min(m, n), max(m, n)
    for k in range(1, m + 1):
        counts[n + k:] = [a - b for a, b in zip(counts[n + k:], counts)]
        for start in range(min(k, most + 1)):
            counts[start::k] = accumulate(counts[start::k])
    return sum(counts) / comb(m + n, m)


# ---- pairs

class WilcoxonResult(Found):
    pass


def wilcoxon(x: Any, y: Any = None, zero_method: str = "wilcox", correction: bool = False, alternative: str = "two-sided",
             method: str = "auto", *, axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """Signed ranks; exact up to 50 pairs, with ties or differences of 0 up to 13, where the signs of the ranks that there are are counted."""
    alternative_of("wilcoxon", alternative)
    method = "asymptotic" if method == "approx" else method  # its older name
    one_of("wilcoxon", "method", method, ("auto", "asymptotic", "exact"))
    one_of("wilcoxon", "zero_method", zero_method, ("wilcox", "pratt", "zsplit"))
    d = x if y is None else differences("wilcoxon", x, y, axis)
    statistic, p, z = over_lanes("wilcoxon", lambda d: _signed_ranks(d, zero_method, correction, alternative, method), (d,),
                                 axis, nan_policy, keepdims, parts=3)
    return WilcoxonResult(statistic, p, **({"zstatistic": z} if method == "asymptotic" else {}))


def _signed_ranks(d: Any, zero_method: str, correction: bool, alternative: str, method: str) -> tuple[float, float, float]:
    pairs = len(d)
    zeros = int(np.count_nonzero(d == 0))
    if zero_method == "wilcox":
        d = d[d != 0]
    if not len(d):
        return 0.0, 1.0, np.nan
    ranks = vx.rank(np.abs(d))
    above, below = float(ranks[d > 0].sum()), float(ranks[d < 0].sum())
    of_zeros = float(ranks[d == 0].sum()) / 2 if zero_method == "zsplit" else 0.0
    plus, minus = above + of_zeros, below + of_zeros
    statistic = min(plus, minus) if alternative == "two-sided" else plus
    ties = _ties(np.abs(d))
    if method == "exact" or method == "auto" and pairs <= (13 if ties or zeros else 50):
        doubled = np.rint(2 * ranks[d != 0]).astype(int).tolist()
        return statistic, _counted_tail(lambda k: _few_signs(doubled, k), round(2 * above), sum(doubled), alternative), np.nan
    n = len(d)
    mean, square = n * (n + 1) / 4, n * (n + 1) * (2 * n + 1)
    if zero_method == "pratt":
        mean -= zeros * (zeros + 1) / 4
        square -= zeros * (zeros + 1) * (2 * zeros + 1)
        ties -= zeros**3 - zeros
    error = sqrt((square - ties / 2) / 24)
    if not error:
        return statistic, 1.0, np.nan
    away = plus - mean
    if correction:
        away -= 0.5 * {"greater": 1, "less": -1, "two-sided": float(np.sign(away))}[alternative]
    z = away / error
    return statistic, symmetric_tail(NORMAL, z, alternative), -abs(z) if alternative == "two-sided" else z


def _few_signs(ranks: list[int], most: int) -> float:
    """The share of the choices of signs in which the positive ranks add up to at most so much."""
    if most < 0:
        return 0.0
    shares = np.zeros(most + 1)
    shares[0] = 1
    for r in ranks:  # only sums of what is positive, so that small shares keep their digits
        shares[r:] += shares[:max(0, most + 1 - r)].copy()
        shares /= 2
    return float(vx.Sums().update(shares).sum)


class RanksumsResult(Found):
    pass


def ranksums(x: Any, y: Any, alternative: str = "two-sided", *, axis: Any = 0, nan_policy: Any = "propagate",
             keepdims: bool = False) -> Any:
    """By the normal law without corrections; `mannwhitneyu` has them, and the exact law."""
    alternative_of("ranksums", alternative)

    def test(x: Any, y: Any) -> tuple[float, float]:
        m, n = len(x), len(y)
        ranks = float(np.sum(vx.rank(np.concatenate((x, y)))[:m]))
        z = (ranks - m * (m + n + 1) / 2) / sqrt(m * n * (m + n + 1) / 12)
        return z, symmetric_tail(NORMAL, z, alternative)

    return RanksumsResult(*over_lanes("ranksums", test, (x, y), axis, nan_policy, keepdims))


class BrunnerMunzelResult(Found):
    pass


def brunnermunzel(x: Any, y: Any, alternative: str = "two-sided", distribution: str = "t", nan_policy: Any = "propagate", *,
                  axis: Any = 0, keepdims: bool = False) -> Any:
    """E. Brunner and U. Munzel (2000), The nonparametric Behrens-Fisher problem."""
    alternative_of("brunnermunzel", alternative)
    one_of("brunnermunzel", "distribution", distribution, ("t", "normal"))

    def test(x: Any, y: Any) -> tuple[float, float]:
        m, n = len(x), len(y)
        ranks = np.split(vx.rank(np.concatenate((x, y))), [m])
        difference = float(np.mean(ranks[1]) - np.mean(ranks[0]))
        # Of the ranks among all less those in the sample of their own.
        spreads = [vx.var(r - vx.rank(v)) * k for r, v, k in zip(ranks, (x, y), (m, n))]
        total = sum(spreads)
        if not total > 0:
            return (np.nan if difference == 0 else float(np.copysign(np.inf, difference))), (np.nan if difference == 0 else 0.0)
        statistic = m * n * difference / ((m + n) * sqrt(total))
        df = total**2 / sum(s * s / (k - 1) for s, k in zip(spreads, (m, n)))
        law = NORMAL if distribution == "normal" else vx.StudentT(df)
        # SciPy's alternatives are those of the first sample.
        return statistic, symmetric_tail(law, -statistic, alternative)

    return BrunnerMunzelResult(*over_lanes("brunnermunzel", test, (x, y), axis, nan_policy, keepdims, least=2))


# ---- several samples

class FlignerResult(Found):
    pass


def fligner(*samples: Any, center: str = "median", proportiontocut: float = 0.05, axis: Any = 0, nan_policy: Any = "propagate",
            keepdims: bool = False) -> Any:
    """M. A. Fligner and T. J. Killeen (1976), with normal scores of the distances from the centers."""
    one_of("fligner", "center", center, ("median", "mean", "trimmed"))
    if len(samples) < 2:
        raise ValueError(f"fligner: there must be at least 2 samples, got {len(samples)}")
    middle: Any = {"median": vx.median, "mean": vx.mean, "trimmed": partial(vx.trimmed_mean, cut=proportiontocut)}[center]

    def test(*lanes: Any) -> tuple[float, float]:
        distances = np.concatenate([abs(lane - middle(lane)) for lane in lanes])
        n = len(distances)
        scores = NORMAL.ppf(vx.rank(distances) / (2 * (n + 1)) + 0.5)
        spread = vx.var(scores)
        if not spread > 0:
            return np.nan, np.nan
        mean = vx.mean(scores)
        parts = np.split(scores, np.cumsum([len(lane) for lane in lanes])[:-1])
        statistic = float(sum(len(part) * (vx.mean(part) - mean) ** 2 for part in parts) / spread)
        return statistic, vx.ChiSquare(len(lanes) - 1).sf(statistic)

    return FlignerResult(*over_lanes("fligner", test, samples, axis, nan_policy, keepdims))


class KruskalResult(Found):
    pass


def kruskal(*samples: Any, nan_policy: Any = "propagate", axis: Any = 0, keepdims: bool = False) -> Any:
    if len(samples) < 2:
        raise ValueError(f"kruskal: there must be at least 2 samples, got {len(samples)}")

    def test(*lanes: Any) -> tuple[float, float]:
        every = np.concatenate(lanes)
        n = len(every)
        ranks = np.split(vx.rank(every), np.cumsum([len(s) for s in lanes])[:-1])
        share = 1 - _ties(every) / (float(n) ** 3 - n) if n > 1 else 0.0
        if share <= 0:
            return np.nan, np.nan
        spread = sum(len(r) * (float(np.mean(r)) - (n + 1) / 2) ** 2 for r in ranks)
        h = 12 / (n * (n + 1)) * spread / share
        return h, vx.ChiSquare(len(lanes) - 1).sf(h)

    return KruskalResult(*over_lanes("kruskal", test, samples, axis, nan_policy, keepdims))


class FriedmanchisquareResult(Found):
    pass


def friedmanchisquare(*samples: Any, axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    k = len(samples)
    if k < 3:
        raise ValueError(f"friedmanchisquare: there must be at least 3 samples, got {k}")

    def test(*lanes: Any) -> tuple[float, float]:
        blocks = np.column_stack(lanes)
        n = len(blocks)
        sums = vx.rank(blocks, axis=1).sum(axis=0)
        share = 1 - sum(_ties(block) for block in blocks) / (n * k * (k * k - 1))
        if share <= 0:
            return np.nan, np.nan
        q = float(12 / (n * k * (k + 1)) * np.sum((sums - n * (k + 1) / 2) ** 2) / share)
        return q, vx.ChiSquare(k - 1).sf(q)

    return FriedmanchisquareResult(*over_lanes("friedmanchisquare", test, samples, axis, nan_policy, keepdims, paired=True))
