"""Tests of means, variances and normal laws, by SciPy's names."""

from __future__ import annotations

from math import asinh, log, sqrt
from typing import Any

import numpy as np

import vexel as vx
from vexel.compat._lanes import (
    NORMAL, ConfidenceInterval, Found, alternative_of, differences, one_of, over_lanes, plain, sides, symmetric_tail)
from vexel.compat._relations import SignificanceResult

# ---- Student's test

class TtestResult(Found):
    df: Any
    _alternative: str
    _estimate: Any
    _error: Any

    def confidence_interval(self, confidence_level: float = 0.95) -> Any:
        """Of the mean, or of the difference of means."""
        below, above = sides(self._alternative, confidence_level)
        return ConfidenceInterval(*(plain(self._estimate + sign * _deviates(p, self.df) * self._error) for sign, p in ((-1, below), (1, above))))


def _deviates(p: float, df: Any) -> Any:
    return np.vectorize(lambda d: vx.StudentT(d).isf(p) if d > 0 else np.nan, otypes=[np.float64])(df)[()]  # infinite for p = 0


def _sided(found: Any, alternative: str) -> tuple[float, float]:
    """The statistic of a two-sided test and its p-value for the alternative."""
    t, p = found
    if alternative == "two-sided":
        return t, p
    return t, p / 2 if (t > 0) == (alternative == "greater") else 1 - p / 2


def _tail(t: float, df: float, alternative: str) -> Any:
    return symmetric_tail(vx.StudentT(df), t, alternative) if df > 0 and t == t else np.nan


def _ttest_result(parts: list[Any], alternative: str) -> Any:
    statistic, pvalue, df, estimate, error = parts
    return TtestResult(statistic, pvalue, df=df, _estimate=estimate, _error=error, _alternative=alternative)


def ttest_1samp(a: Any, popmean: Any, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided", *,
                keepdims: bool = False) -> Any:
    alternative_of("ttest_1samp", alternative)

    def test(x: Any, means: Any) -> tuple[float, ...]:
        if len(means) != 1:
            raise ValueError(f"ttest_1samp: popmean must be one number for each lane, got {len(means)}")
        mean, df = float(means[0]), len(x) - 1
        return *_sided(vx.t_test(x, mean=mean), alternative), df, vx.mean(x), vx.std(x) / sqrt(len(x))

    of_lanes = popmean if np.ndim(popmean) else np.full((1,) * max(1, np.ndim(a)), popmean)
    return _ttest_result(over_lanes("ttest_1samp", test, (a, of_lanes), axis, nan_policy, keepdims, parts=5), alternative)


def ttest_rel(a: Any, b: Any, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided", *,
              keepdims: bool = False) -> Any:
    return ttest_1samp(differences("ttest_rel", a, b, axis), 0, axis, nan_policy, alternative, keepdims=keepdims)


def ttest_ind(a: Any, b: Any, axis: Any = 0, equal_var: bool = True, nan_policy: Any = "propagate", *,
              alternative: str = "two-sided", trim: float = 0, method: Any = None, keepdims: bool = False) -> Any:
    alternative_of("ttest_ind", alternative)
    if trim or method is not None:
        raise NotImplementedError("ttest_ind: trim must be 0 and method None; trimming and resampling are scipy.stats' own")

    def test(x: Any, y: Any) -> tuple[float, ...]:
        error, df = _spread(vx.var(x), len(x), vx.var(y), len(y), equal_var)
        return *_sided(vx.t_test(x, y, equal_var=equal_var), alternative), df, vx.mean(x) - vx.mean(y), error

    return _ttest_result(over_lanes("ttest_ind", test, (a, b), axis, nan_policy, keepdims, parts=5), alternative)


def _spread(v1: float, n1: float, v2: float, n2: float, equal_var: bool) -> tuple[float, float]:
    """The standard error of a difference of means, and its degrees of freedom."""
    if equal_var:
        df = n1 + n2 - 2
        pooled = sum((n - 1) * v for n, v in ((n1, v1), (n2, v2)) if n > 1) / df if df > 0 else np.nan
        return sqrt(pooled * (1 / n1 + 1 / n2)), df
    e1, e2 = v1 / n1, v2 / n2
    return sqrt(e1 + e2), (e1 + e2) ** 2 / (e1**2 / (n1 - 1) + e2**2 / (n2 - 1)) if e1 + e2 > 0 else np.nan


def ttest_ind_from_stats(mean1: Any, std1: Any, nobs1: Any, mean2: Any, std2: Any, nobs2: Any, equal_var: bool = True,
                         alternative: str = "two-sided") -> Any:
    alternative_of("ttest_ind_from_stats", alternative)

    def test(m1: float, s1: float, n1: float, m2: float, s2: float, n2: float) -> tuple[float, ...]:
        error, df = _spread(s1 * s1, n1, s2 * s2, n2, equal_var)
        t = (m1 - m2) / error if error else np.inf * np.sign(m1 - m2) if m1 != m2 else np.nan
        return t, _tail(float(t), df, alternative), df, m1 - m2, error

    found = np.vectorize(test, otypes=[np.float64] * 5)(mean1, std1, nobs1, mean2, std2, nobs2)
    return _ttest_result([plain(part) for part in found], alternative)


# ---- several samples

class F_onewayResult(Found):  # noqa: N801
    pass


def f_oneway(*samples: Any, axis: Any = 0, equal_var: bool = True, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    """The F test of equal means; Welch's where variances may differ."""
    _at_least("f_oneway", samples, 2)
    test = _f_ratio if equal_var else _welch_f
    return F_onewayResult(*over_lanes("f_oneway", lambda *s: test(s), samples, axis, nan_policy, keepdims))


def _at_least(name: str, samples: tuple[Any, ...], least: int) -> None:
    if len(samples) < least:
        raise TypeError(f"{name}: there must be at least {least} samples, got {len(samples)}")


def _f_ratio(samples: tuple[Any, ...]) -> tuple[float, float]:
    sizes = np.array([len(s) for s in samples])
    between, within = len(samples) - 1, int(sizes.sum()) - len(samples)
    if within < 1:
        return np.nan, np.nan
    means = np.array([vx.mean(s) for s in samples])
    above = float(np.dot(sizes, (means - vx.mean(np.concatenate(samples))) ** 2)) / between
    below = float(np.dot(sizes, [vx.var(s, ddof=0) for s in samples])) / within
    if below == 0:
        return (np.inf, 0.0) if means.min() < means.max() else (np.nan, np.nan)
    return above / below, vx.FRatio(between, within).sf(above / below)


def _welch_f(samples: tuple[Any, ...]) -> tuple[float, float]:
    """B. L. Welch (1951), On the comparison of several mean values."""
    k = len(samples)
    sizes, variances = (np.array(v) for v in ([len(s) for s in samples], [vx.var(s) for s in samples]))
    if not (variances > 0).all():
        return np.nan, np.nan
    means = np.array([vx.mean(s) for s in samples])
    weights = sizes / variances
    shares = weights / weights.sum()
    lack = float(np.sum((1 - shares) ** 2 / (sizes - 1)))
    above = float(np.dot(weights, (means - np.dot(shares, means)) ** 2)) / (k - 1)
    f = above / (1 + 2 * (k - 2) / (k * k - 1) * lack)
    return f, vx.FRatio(k - 1, (k * k - 1) / (3 * lack)).sf(f)


class LeveneResult(Found):
    pass


def levene(*samples: Any, center: str = "median", proportiontocut: float = 0.05, axis: Any = 0, nan_policy: Any = "propagate",
           keepdims: bool = False) -> Any:
    """The F test of the distances from the centers: Brown and Forsythe's (1974) with medians."""
    _at_least("levene", samples, 2)
    one_of("levene", "center", center, ("mean", "median", "trimmed"))

    centers: dict[str, Any] = {"mean": vx.mean, "median": vx.median, "trimmed": lambda s: vx.trimmed_mean(s, proportiontocut)}
    middle = centers[center]

    def test(*lanes: Any) -> tuple[float, float]:
        return _f_ratio(tuple(np.abs(s - middle(s)) for s in lanes))

    return LeveneResult(*over_lanes("levene", test, samples, axis, nan_policy, keepdims))


class BartlettResult(Found):
    pass


def bartlett(*samples: Any, axis: Any = 0, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    _at_least("bartlett", samples, 2)

    def test(*lanes: Any) -> tuple[float, float]:
        k, free = len(lanes), np.array([len(s) - 1 for s in lanes])
        variances = np.array([vx.var(s) for s in lanes])
        if not (variances > 0).all():
            return np.nan, np.nan
        total = int(free.sum())
        pooled = np.dot(free, variances) / total
        excess = -float(np.dot(free, np.log(variances / pooled)))
        t = excess / (1 + (np.sum(1 / free) - 1 / total) / (3 * (k - 1)))
        return t, vx.ChiSquare(k - 1).sf(float(t))

    return BartlettResult(*over_lanes("bartlett", test, samples, axis, nan_policy, keepdims, least=2))


# ---- normality

class ShapiroResult(Found):
    pass


def shapiro(x: Any, *, axis: Any = None, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    return ShapiroResult(*over_lanes("shapiro", lambda x: tuple(vx.shapiro(x)), (x,), axis, nan_policy, keepdims))


class SkewtestResult(Found):
    pass


class KurtosistestResult(Found):
    pass


class NormaltestResult(Found):
    pass


def skewtest(a: Any, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided", *, keepdims: bool = False) -> Any:
    """R. B. D'Agostino (1970), Transformation to normality of the null distribution of g1; of 8 values and more."""
    alternative_of("skewtest", alternative)

    def test(x: Any) -> tuple[float, float]:
        z = _skewness_score(x)
        return z, symmetric_tail(NORMAL, z, alternative)

    return SkewtestResult(*over_lanes("skewtest", test, (a,), axis, nan_policy, keepdims, least=8))


def kurtosistest(a: Any, axis: Any = 0, nan_policy: Any = "propagate", alternative: str = "two-sided", *,
                 keepdims: bool = False) -> Any:
    """F. J. Anscombe and W. J. Glynn (1983), Distribution of the kurtosis statistic b2; of 5 values and more."""
    alternative_of("kurtosistest", alternative)

    def test(x: Any) -> tuple[float, float]:
        z = _kurtosis_score(x)
        return z, symmetric_tail(NORMAL, z, alternative)

    return KurtosistestResult(*over_lanes("kurtosistest", test, (a,), axis, nan_policy, keepdims, least=5))


def normaltest(a: Any, axis: Any = 0, nan_policy: Any = "propagate", *, keepdims: bool = False) -> Any:
    """D'Agostino and Pearson's K²: the squares of both scores."""
    def test(x: Any) -> tuple[float, float]:
        square = _skewness_score(x) ** 2 + _kurtosis_score(x) ** 2
        return square, vx.ChiSquare(2).sf(square)

    return NormaltestResult(*over_lanes("normaltest", test, (a,), axis, nan_policy, keepdims, least=8))


def jarque_bera(x: Any, *, axis: Any = None, nan_policy: Any = "propagate", keepdims: bool = False) -> Any:
    def test(x: Any) -> tuple[float, float]:
        statistic = len(x) / 6 * (vx.skewness(x) ** 2 + vx.kurtosis(x) ** 2 / 4)
        return statistic, vx.ChiSquare(2).sf(statistic)

    return SignificanceResult(*over_lanes("jarque_bera", test, (x,), axis, nan_policy, keepdims))


def _skewness_score(x: Any) -> float:
    n = len(x)
    skewness = vx.skewness(x)
    y = skewness * sqrt((n + 1) * (n + 3) / (6 * (n - 2)))
    kurtosis = 3 * (n * n + 27 * n - 70) * (n + 1) * (n + 3) / ((n - 2) * (n + 5) * (n + 7) * (n + 9))
    square = sqrt(2 * (kurtosis - 1)) - 1
    return asinh(y / sqrt(2 / (square - 1))) / sqrt(log(square) / 2) if y == y else np.nan


def _kurtosis_score(x: Any) -> float:
    n = len(x)
    mean = 3 * (n - 1) / (n + 1)
    variance = 24 * n * (n - 2) * (n - 3) / ((n + 1) ** 2 * (n + 3) * (n + 5))
    standard = (vx.kurtosis(x) + 3 - mean) / sqrt(variance)
    skewness = 6 * (n * n - 5 * n + 2) / ((n + 7) * (n + 9)) * sqrt(6 * (n + 3) * (n + 5) / (n * (n - 2) * (n - 3)))
    a = 6 + 8 / skewness * (2 / skewness + sqrt(1 + 4 / skewness**2))
    below = 1 + standard * sqrt(2 / (a - 4))
    if not below:
        return np.nan
    return float((1 - 2 / (9 * a) - np.cbrt((1 - 2 / a) / below)) / sqrt(2 / (9 * a)))
