"""Statistics of Dask collections that have the same bits for every chunking and every cluster.

Each function takes a Dask array, Series or DataFrame and returns a `Delayed`; `.compute()` gives
what the function of the same name gives for the data in one array.  A DataFrame gives a dict from
column to result, `by=` a dict from level to result, `axis=0` an array over the columns.  What takes
more than one pass reads the chunks anew in each, so that no worker has to keep them;
docs/beyond-one-machine.md tells how many passes and how exact.
"""

from __future__ import annotations

from ._random import Faure, Halton, Sobol, sample
from ._statistics import (
    bootstrap, corr, cov, describe, histogram, kde, kurtosis, mean, median, mode, moment, quantile,
    rank, skewness, std, tally, trimmed_mean, var, winsorized_mean)

__all__ = ["Faure", "Halton", "Sobol", "bootstrap", "corr", "cov", "describe", "histogram", "kde",
           "kurtosis", "mean", "median", "mode", "moment", "quantile", "rank", "sample", "skewness",
           "std", "tally", "trimmed_mean", "var", "winsorized_mean"]
