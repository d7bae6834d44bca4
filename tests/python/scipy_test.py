"""SciPy as a peer, through the names that it has in vexel.compat.scipy; run where VEXEL_PEERS is set."""

import os
import warnings

import numpy as np
import pytest

from vexel.compat import scipy as ours

if not os.environ.get("VEXEL_PEERS"):
    pytest.skip("VEXEL_PEERS is not set", allow_module_level=True)
theirs = pytest.importorskip("scipy.stats")

# Ranges of the shapes; below the digits that SciPy has in the tails are not asked for.
CONTINUOUS = {
    "norm": [], "lognorm": [(0.2, 2)], "uniform": [], "expon": [], "gamma": [(0.3, 50)], "beta": [(0.3, 20), (0.3, 20)],
    "chi2": [(0.5, 100)], "t": [(1, 100)], "f": [(1, 50), (1, 50)], "cauchy": [], "laplace": [], "logistic": [], "gumbel_r": [],
    "weibull_min": [(0.3, 8)], "pareto": [(0.5, 8)], "powerlaw": [(0.3, 8)], "rayleigh": [], "maxwell": [], "triang": [(0.1, 0.9)],
    "invgauss": [(0.1, 3)], "moyal": [], "gennorm": [(0.5, 5)], "ncx2": [(1, 20), (0.1, 20)], "ncf": [(1, 20), (5, 40), (0.1, 20)], "nct": [(2, 30), (-3, 3)]}
DISCRETE = {
    "bernoulli": [(0.1, 0.9)], "binom": [(1, 200), (0.1, 0.9)], "poisson": [(0.1, 200)], "geom": [(0.05, 0.95)],
    "nbinom": [(1, 50), (0.1, 0.9)], "hypergeom": [(60, 100), (5, 50), (5, 50)], "randint": [(-5, 5), (6, 50)]}
WHOLE = {"binom": [0], "hypergeom": [0, 1, 2], "randint": [0, 1]}
LOOSE = {"ncx2": 1e-7, "ncf": 1e-7, "nct": 1e-6, "moyal": 1e-8, "triang": 1e-8}


@pytest.mark.parametrize("name", [*CONTINUOUS, *DISCRETE])
def test_distributions(name):
    rng = np.random.default_rng(list(name.encode()))
    continuous = name in CONTINUOUS
    for _ in range(12):
        shapes = [rng.uniform(*r) for r in (CONTINUOUS if continuous else DISCRETE)[name]]
        shapes = [round(s) if i in WHOLE.get(name, []) else s for i, s in enumerate(shapes)]
        place = {"loc": round(rng.uniform(-3, 3)), **({"scale": rng.uniform(0.2, 4)} if continuous else {})}
        a, b = getattr(ours, name)(*shapes, **place), getattr(theirs, name)(*shapes, **place)
        p = rng.uniform(1e-3, 1 - 1e-3, 6)
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            x = b.ppf(p)
            for f in (["pdf", "logpdf"] if continuous else ["pmf", "logpmf"]) + ["cdf", "sf", "logcdf", "logsf"]:
                np.testing.assert_allclose(getattr(a, f)(x), getattr(b, f)(x), rtol=LOOSE.get(name, 1e-9), atol=1e-13, err_msg=f"{f}{shapes}")
            if continuous:
                np.testing.assert_allclose(a.ppf(p), x, rtol=LOOSE.get(name, 1e-8), atol=1e-9)
                np.testing.assert_allclose(a.isf(p), b.isf(p), rtol=LOOSE.get(name, 1e-8), atol=1e-9)
            else:
                np.testing.assert_array_equal(a.ppf(p), x)
            for f in ("mean", "var"):
                expected = getattr(b, f)()
                if np.isfinite(expected):
                    np.testing.assert_allclose(getattr(a, f)(), expected, rtol=1e-7)


@pytest.mark.parametrize("name, tail", [
    ("skew", ()), ("kurtosis", ()), ("trim_mean", (0.1,)), ("iqr", ()), ("median_abs_deviation", ()), ("sem", ()), ("rankdata", ()),
    ("gmean", ()), ("hmean", ()), ("pearsonr", ("y",)), ("spearmanr", ("y",)), ("kendalltau", ("y",)), ("shapiro", ()), ("ttest_1samp", (0.1,)),
    ("ttest_ind", ("y",)), ("ttest_rel", ("y",)), ("chisquare", ()), ("kstest", ("norm",))])
def test_functions(name, tail):
    rng = np.random.default_rng(list(name.encode()))
    for n in (10, 57, 200):
        x = rng.normal(size=n)
        x = np.abs(x) + 0.1 if name in ("gmean", "hmean", "chisquare") else x
        arguments = [x, *(x + rng.normal(size=n) if a == "y" else a for a in tail)]
        expected = getattr(theirs, name)(*arguments)
        expected = [expected.statistic, expected.pvalue] if hasattr(expected, "pvalue") else np.atleast_1d(expected)
        found = getattr(ours, name)(*arguments)
        found = list(found) if isinstance(found, tuple) else np.atleast_1d(found)
        np.testing.assert_allclose(found, expected, rtol=1e-5 if name in ("shapiro", "kstest") else 1e-8)


def test_arrays_of_parameters():
    loc = np.arange(3.0)
    np.testing.assert_allclose(ours.norm.cdf(1.0, loc, [[1], [2]]), theirs.norm.cdf(1.0, loc, [[1], [2]]), rtol=1e-14)
    assert ours.gamma.fit([1, 2, 6], floc=0) == pytest.approx(theirs.gamma.fit([1, 2, 6], floc=0), rel=1e-6)
    w = [0.2, 0.5, 0.3]
    for given in ({}, {"weights": w}, {"bw_method": "silverman", "weights": w}, {"bw_method": 0.3}):
        np.testing.assert_allclose(ours.gaussian_kde([1, 2, 4], **given)(2.5), theirs.gaussian_kde([1, 2, 4], **given)(2.5), rtol=1e-12)
    np.testing.assert_allclose(ours.t.interval(0.95, [3, 5], loc=[1, 2]), theirs.t.interval(0.95, [3, 5], loc=[1, 2]), rtol=1e-8)
    np.testing.assert_allclose(ours.norm(loc, 2).ppf(0.3), theirs.norm(loc, 2).ppf(0.3), rtol=1e-14)


def test_tables():
    x, y = np.random.default_rng(1).normal(size=(2, 7, 3))
    for name, arguments in (("ttest_1samp", (x, 0.5)), ("ttest_ind", (x, y)), ("ttest_rel", (x, y)), ("chisquare", (np.abs(x),))):
        for axis in (0, 1, None) if name != "chisquare" else (0, 1):
            expected = getattr(theirs, name)(*arguments, axis=axis)
            found = getattr(ours, name)(*arguments, axis=axis)
            np.testing.assert_allclose(found, [expected.statistic, expected.pvalue], rtol=1e-9)
    found, expected = ours.describe(x), theirs.describe(x)
    assert found._fields == expected._fields and found.nobs == expected.nobs
    for a, b in zip(found[1:], expected[1:]):
        np.testing.assert_allclose(a, b, rtol=1e-10)
    with pytest.raises(TypeError):
        ours.gamma.cdf(1.0)
