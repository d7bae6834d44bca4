"""Statistics on NumPy arrays: descriptive statistics, distributions, random numbers, tests.

The functions take whatever NumPy makes an array of, pandas and Arrow columns too; missing values
are NaN.  `help(vexel.quantile)` explains one; docs/python.md explains them together.
"""

from __future__ import annotations

from typing import TYPE_CHECKING

from ._continuous_laws import (
    Beta, Cauchy, Exponential, ExponentialPower, Gamma, Gumbel, InverseGaussian, Laplace, Logistic,
    LogNormal, Maxwell, Moyal, Normal, Pareto, Power, Rayleigh, Triangular, Uniform, Weibull)
from ._discrete_laws import (
    Bernoulli, Binomial, DiscreteUniform, Empirical, Geometric, Hypergeometric, NegativeBinomial, Poisson)
from ._docs import complete as _complete
from ._kernel_density import KernelDensity, kde
from ._laws_of_tests import (
    ChiSquare, FRatio, NonCentralBeta, NonCentralChiSquare, NonCentralFRatio, NonCentralStudentT, StudentT)
from ._ordering import (
    argsort, cumulative, frequency_table, histogram, mode, rank, sort, tally, trim, winsorize)
from ._own_laws import CumulativeDistribution, Density
from ._quantiles import five_number, iqr, median, order_statistic, quantile
from ._random import Random
from ._roots import RootError, find_integer, find_root
from ._sampling import Urn, bootstrap, choice, permutation, shuffle
from ._sequences import Faure, Halton, Sobol
from ._series import (
    autocorrelation, chi_square_test, filter, ks_test, moving, normal_plot, shapiro, t_test)
from ._state_tables import DensityGrid, Histogram, Ranks, Tally
from ._states import Covariance, Extremes, Moments, Sums
from ._statistics import (
    corr, cov, describe, kurtosis, mean, mean_absolute_deviation, median_absolute_deviation, moment,
    skewness, std, trimmed_mean, var, winsorized_mean)
from ._core import __version__

__all__ = [
    "Bernoulli", "Beta", "Binomial", "Cauchy", "ChiSquare", "Covariance", "CumulativeDistribution", "Density",
    "DensityGrid", "DiscreteUniform", "Empirical", "Exponential", "ExponentialPower", "Extremes", "FRatio",
    "Faure", "Gamma", "Geometric", "Gumbel", "Halton", "Histogram", "Hypergeometric", "InverseGaussian",
    "Kernel", "KernelDensity", "KernelError", "Laplace", "LogNormal", "Logistic", "Maxwell", "Moments",
    "Moyal", "NegativeBinomial", "NonCentralBeta", "NonCentralChiSquare", "NonCentralFRatio",
    "NonCentralStudentT", "Normal", "Pareto", "Poisson", "Power", "Random", "Ranks", "Rayleigh", "RootError",
    "Sobol", "StudentT", "Sums", "Tally", "Triangular", "Uniform", "Urn", "Weibull", "__version__", "argsort",
    "autocorrelation", "bootstrap", "chi_square_test", "choice", "corr", "cov", "cumulative", "describe",
    "filter", "find_integer", "find_root", "five_number", "frequency_table", "histogram", "iqr", "kde",
    "ks_test", "kurtosis", "mean", "mean_absolute_deviation", "median", "median_absolute_deviation", "mode",
    "moment", "moving", "normal_plot", "order_statistic", "permutation", "quantile", "rank", "shapiro",
    "shuffle", "skewness", "sort", "std", "t_test", "tally", "trim", "trimmed_mean", "var", "winsorize",
    "winsorized_mean",
]
if TYPE_CHECKING:
    from ._host_values import KernelError
    from ._kernel import Kernel
_lazy = {"Kernel": "_kernel", "KernelError": "_host_values"}


def __getattr__(name: str) -> object:
    # What stands on the host is loaded when it is asked for.
    from importlib import import_module

    if name in _lazy:
        value = getattr(import_module("." + _lazy[name], __name__), name)
    elif name in ("compat", "entry", "results"):
        value = import_module("." + name, __name__)
    else:
        import sys  # for what Python suggests in its place

        raise AttributeError(f"module {__name__!r} has no attribute {name!r}", name=name, obj=sys.modules[__name__])
    globals()[name] = value
    return value


def __dir__() -> list[str]:
    return sorted(__all__)


_complete(globals())
