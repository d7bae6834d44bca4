"""SciPy's names: `from vexel.compat import scipy as stats` in place of `from scipy import stats`.

Distributions take their shapes, `loc` and `scale` as SciPy's do, at each call or frozen; functions
take SciPy's arguments and give results that unpack like SciPy's.  What differs from SciPy, and why,
is in docs/from-scipy.md.

Examples
--------
>>> from vexel.compat import scipy as stats
>>> stats.norm.cdf([0, 1.0], loc=1)
array([0.15865525, 0.5       ])
>>> frozen = stats.gamma(2.5, scale=2)
>>> frozen.mean(), frozen.args
(5.0, (2.5,))
"""

from __future__ import annotations

from functools import partial
from inspect import signature
from math import inf
from types import SimpleNamespace
from typing import Any, NamedTuple

import vexel as vx
from vexel.compat._distance_tests import ks_1samp, ks_2samp, kstest
from vexel.compat._empirical import binned_statistic, cumfreq, ecdf, gaussian_kde, probplot, relfreq
from vexel.compat._families import stream
from vexel.compat._lanes import ConfidenceInterval, alternative_of
from vexel.compat._laws import (
    bernoulli, beta, binom, cauchy, chi2, expon, f, gamma, gennorm, geom, gumbel_r, hypergeom, invgauss, laplace, logistic, lognorm,
    maxwell, moyal, nbinom, ncf, nct, ncx2, norm, pareto, poisson, powerlaw, randint, rayleigh, t, triang, uniform, weibull_min)
from vexel.compat._parametric_tests import (
    bartlett, f_oneway, jarque_bera, kurtosistest, levene, normaltest, shapiro, skewtest, ttest_1samp, ttest_ind,
    ttest_ind_from_stats, ttest_rel)
from vexel.compat._p_values import combine_pvalues, entropy, false_discovery_control, wasserstein_distance
from vexel.compat._rank_tests import brunnermunzel, fligner, friedmanchisquare, kruskal, mannwhitneyu, ranksums, wilcoxon
from vexel.compat._relations import kendalltau, linregress, pearsonr, pointbiserialr, spearmanr
from vexel.compat._summaries import (
    describe, gmean, gstd, gzscore, hmean, iqr, kurtosis, median_abs_deviation, mode, moment, percentileofscore, rankdata,
    scoreatpercentile, sem, sigmaclip, skew, tmax, tmean, tmin, trim_mean, tsem, tstd, tvar, variation, zmap, zscore)
from vexel.compat._table_tests import binomtest, chi2_contingency, chisquare, fisher_exact, power_divergence

__all__ = [
    "bartlett", "bernoulli", "beta", "binned_statistic", "binom", "binomtest", "bootstrap", "brunnermunzel", "cauchy", "chi2",
    "chi2_contingency", "chisquare", "combine_pvalues", "cumfreq", "describe", "ecdf", "entropy", "expon", "f", "f_oneway",
    "false_discovery_control", "fisher_exact", "fligner", "friedmanchisquare", "gamma", "gaussian_kde", "gennorm", "geom",
    "gmean", "gstd", "gumbel_r", "gzscore", "hmean", "hypergeom", "invgauss", "iqr", "jarque_bera", "kendalltau", "kruskal",
    "ks_1samp", "ks_2samp", "kstest", "kurtosis", "kurtosistest", "laplace", "levene", "linregress", "logistic", "lognorm",
    "mannwhitneyu", "maxwell", "median_abs_deviation", "mode", "moment", "moyal", "nbinom", "ncf", "nct", "ncx2", "norm",
    "normaltest", "pareto", "pearsonr", "percentileofscore", "pointbiserialr", "poisson", "power_divergence", "powerlaw",
    "probplot", "qmc", "randint", "rankdata", "ranksums", "rayleigh", "relfreq", "scoreatpercentile", "sem", "shapiro",
    "sigmaclip", "skew", "skewtest", "spearmanr", "t", "tmax", "tmean", "tmin", "triang", "trim_mean", "tsem", "tstd",
    "ttest_1samp", "ttest_ind", "ttest_ind_from_stats", "ttest_rel", "tvar", "uniform", "variation", "wasserstein_distance",
    "weibull_min", "wilcoxon", "zmap", "zscore",
]


class BootstrapResult(NamedTuple):
    confidence_interval: Any
    bootstrap_distribution: Any
    standard_error: Any


def bootstrap(data: Any, statistic: Any, *, n_resamples: int = 9999, batch: int | None = None, vectorized: bool | None = None,
              axis: int = 0, confidence_level: float = 0.95, alternative: str = "two-sided", method: Any = "BCa", random_state: Any = None,
              rng: Any = None) -> Any:
    """Of one sample of one dimension, whose `axis` is 0 or -1; `batch` makes no difference: resamples are drawn and looked at one by one."""
    alternative_of("bootstrap", alternative)
    if len(data) != 1:
        raise NotImplementedError(f"bootstrap: data must be of one sample, as (x,), got {len(data)}")
    if axis not in (0, -1):
        raise NotImplementedError(f"bootstrap: axis must be 0 or -1, got {axis!r}")
    (sample,) = data
    # An interval of one side leaves out there what one of two sides leaves out on both.
    two_sided = confidence_level if alternative == "two-sided" else 2 * confidence_level - 1
    of_lanes = _needs_axis(statistic) if vectorized is None else vectorized
    b = vx.bootstrap(sample, partial(statistic, axis=-1) if of_lanes else statistic, replicates=n_resamples, confidence=two_sided,
                     method="BCa" if method == "bca" else method, rng=stream(random_state) if rng is None else rng)
    low, high = b.interval
    interval = ConfidenceInterval(-inf if alternative == "less" else low, inf if alternative == "greater" else high)
    return BootstrapResult(interval, b.replicates, b.standard_error)


def _needs_axis(statistic: Any) -> bool:
    """Whether a function of lanes has to be told which."""
    try:
        axis = signature(statistic).parameters.get("axis")
    except (TypeError, ValueError):  # a text, or a function that does not show its parameters
        return False
    return axis is not None and axis.default is axis.empty


def _engine(kind: Any) -> Any:
    """A sequence that is scrambled by default, as SciPy's engines are."""

    class Engine(kind):  # type: ignore[misc]
        __doc__ = kind.__doc__

        def __init__(self, d: int, *, scramble: bool = True, seed: Any = None, rng: Any = None) -> None:
            super().__init__(d, scramble=scramble, rng=stream(seed) if rng is None else rng)

    Engine.__name__ = Engine.__qualname__ = kind.__name__
    return Engine


class _Engines(SimpleNamespace):
    def __getattr__(self, name: str) -> Any:
        raise _elsewhere(name, "qmc.")


def _elsewhere(name: str, part: str = "") -> AttributeError:
    if name.startswith("__"):
        return AttributeError(name)
    where = f"scipy.stats.{part}"[:-1] if part else "scipy.stats"
    return AttributeError(f"vexel.compat.scipy has no {part}{name}: take it from {where}", name=name)


qmc = _Engines(Sobol=_engine(vx.Sobol), Halton=_engine(vx.Halton))


def __getattr__(name: str) -> Any:
    raise _elsewhere(name)


def __dir__() -> list[str]:
    return sorted(__all__)
