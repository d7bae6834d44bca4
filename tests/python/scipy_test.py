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


def pieces(found):
    """The parts that a result unpacks to, or the statistic and the p-value of one that does not."""
    parts = found if isinstance(found, (tuple, list)) else [found.statistic, found.pvalue] if hasattr(found, "pvalue") else [found]
    flat = [p for part in parts for p in (part if isinstance(part, tuple) else (part,))]
    return [np.asarray(p, dtype=float) for p in flat]


def compare(name, *arguments, rtol=1e-9, **options):
    expected, found = getattr(theirs, name)(*arguments, **options), getattr(ours, name)(*arguments, **options)
    a, b = pieces(found), pieces(expected)
    assert len(a) == len(b), name
    for x, y in zip(a, b):
        assert x.shape == y.shape, (name, options)
        np.testing.assert_allclose(x, y, rtol=rtol, atol=1e-13, err_msg=f"{name} {options}")
    for attribute in ("df", "intercept_stderr", "zstatistic"):
        if hasattr(expected, attribute) and hasattr(found, attribute):
            np.testing.assert_allclose(getattr(found, attribute), getattr(expected, attribute), rtol=1e-9)
    if hasattr(expected, "confidence_interval") and options.get("nan_policy") != "propagate":
        np.testing.assert_allclose(found.confidence_interval(0.9), expected.confidence_interval(0.9), rtol=1e-9)


SUMMARIES = [
    ("mode", (), {}), ("variation", (), {}), ("variation", (), {"ddof": 1}), ("tmean", (), {}), ("tmean", ((-2, 1), (False, True)), {}),
    ("tvar", ((None, 2),), {"ddof": 0}), ("tstd", (), {}), ("tsem", (), {}), ("tmin", (-1,), {"inclusive": False}), ("tmax", (1,), {}),
    ("skewtest", (), {}), ("kurtosistest", (), {"alternative": "less"}), ("normaltest", (), {}), ("jarque_bera", (), {}),
    ("ttest_1samp", (0.2,), {}), ("ttest_1samp", (0.2,), {"alternative": "greater"})]


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("seed", range(4))
def test_summaries(seed):
    rng = np.random.default_rng(seed)
    x = rng.normal(size=(rng.integers(20, 40), 3))
    holes = x.copy()
    holes[3, 1] = np.nan
    for a in (x, holes, x[:, 0], rng.integers(1, 6, size=(25, 2))):
        for axis in (0, None):
            for nan_policy in ("propagate", "omit"):
                for name, arguments, options in SUMMARIES:
                    if axis == 0 or name != "ttest_1samp":
                        compare(name, a, *arguments, axis=axis, nan_policy=nan_policy, keepdims=bool(seed % 2), **options)
                compare("zscore", a, axis=axis, nan_policy=nan_policy)
                compare("zmap", a, a[::2], axis=axis, nan_policy=nan_policy, ddof=1)
                compare("gstd", np.abs(a) + 0.1, axis=axis, nan_policy=nan_policy)
    sample, whole = x[:, 0], rng.integers(0, 6, size=30)
    for kind in ("rank", "strict", "weak", "mean"):
        compare("percentileofscore", whole, [1, 2.5, np.nan], kind)
    for method in ("fraction", "lower", "higher"):
        compare("scoreatpercentile", x, [5, 50, 97], axis=0, interpolation_method=method)
        compare("scoreatpercentile", sample, 30, (-1, 1), method)
    compare("sigmaclip", sample, 1.5, 1.5)
    compare("cumfreq", sample, 5, weights=np.abs(x[:, 1]))
    compare("relfreq", sample, 4, (-1, 1))
    compare("probplot", sample)
    compare("probplot", sample, sparams=(3,), dist="t", fit=False)
    for statistic in ("mean", "std", "median", "count", "sum", "min", "max", np.ptp):
        compare("binned_statistic", sample, x[:, 1], statistic, 5)
        compare("binned_statistic", sample, [x[:, 1], x[:, 2]], statistic, [-1, 0, 0.5, 3])
    a, b = ours.ecdf(whole), theirs.ecdf(whole)
    for side in ("cdf", "sf"):
        for method in ("linear", "log-log"):
            (low, high), (lowest, highest) = (getattr(e, side).confidence_interval(method=method) for e in (a, b))
            np.testing.assert_allclose([low.probabilities, high.probabilities], [lowest.probabilities, highest.probabilities], rtol=1e-9)
        np.testing.assert_allclose(getattr(a, side).evaluate([-1, 0, 2.5, 9]), getattr(b, side).evaluate([-1, 0, 2.5, 9]), atol=1e-15)


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("side", ["two-sided", "less", "greater"])
@pytest.mark.parametrize("seed", range(3))
def test_tests(seed, side):
    rng = np.random.default_rng(seed)
    n, m = rng.integers(9, 40), rng.integers(9, 30)
    x, y, z = rng.normal(size=n), rng.normal(size=n), rng.normal(0.4, 1.3, size=m)
    ties, others = rng.integers(-2, 4, size=n).astype(float), rng.integers(-2, 4, size=m).astype(float)
    table, second = rng.normal(size=(2, n, 3))
    table[2, 1] = np.nan
    for pair in ((x, z), (ties, others), (x[:6], z), (table, second)):
        for name, methods in (("mannwhitneyu", ("auto", "asymptotic")), ("ks_2samp", ("auto", "asymp"))):
            for method in methods:
                compare(name, *pair, alternative=side, method=method, nan_policy="omit", rtol=1e-7)
        for equal in (True, False):
            compare("ttest_ind", *pair, equal_var=equal, alternative=side, nan_policy="omit")
            compare("f_oneway", *pair, pair[0] + 1, equal_var=equal, nan_policy="omit")
        for name in ("kruskal", "bartlett", "levene"):
            compare(name, *pair, nan_policy="omit")
        compare("levene", *pair, center="trimmed", proportiontocut=0.1, nan_policy="omit")
        compare("fligner", *pair, nan_policy="omit")
        for name in ("ranksums", "brunnermunzel"):
            compare(name, *pair, alternative=side, nan_policy="omit")
    p, q = rng.random((2, n))
    for method in ("fisher", "pearson", "tippett", "stouffer", "mudholkar_george"):
        compare("combine_pvalues", p, method=method, weights=q)
    for method in ("bh", "by"):
        compare("false_discovery_control", p, method=method)
    compare("entropy", p, q, base=3)
    compare("wasserstein_distance", x, z, p)
    compare("pointbiserialr", x > 0, y)
    for d in (x, x[:8], ties, ties[:9]):
        for zero_method in ("wilcox", "pratt", "zsplit"):
            for method in ("auto", "asymptotic"):
                compare("wilcoxon", d, zero_method=zero_method, correction=True, alternative=side, method=method)
    for name in ("linregress", "ttest_rel", "wilcoxon"):
        compare(name, table, second, alternative=side, nan_policy="omit")
    for name in ("pearsonr", "spearmanr", "kendalltau", "linregress"):
        compare(name, x, y, alternative=side)
    compare("kendalltau", ties, y, alternative=side)
    compare("spearmanr", second, alternative=side)
    compare("friedmanchisquare", ties, y, x, ties[::-1])
    compare("ttest_ind_from_stats", np.array([1.0, 2]), 0.5, 10, 1.5, 1.1, np.array([15, 9]), equal_var=bool(seed % 2), alternative=side)
    for law, arguments in (("norm", ()), ("norm", (0.3, 2)), ("gamma", (2,)), (z, ())):
        compare("kstest", x, law, arguments, alternative=side, rtol=3e-6)
    counts = rng.integers(1, 15, size=(2, 2))
    compare("fisher_exact", counts, side)
    for k in (0, int(rng.integers(1, 30)), 30):
        compare("binomtest", k, 30, rng.uniform(), alternative=side)
        for method in ("exact", "wilson", "wilsoncc"):
            ends = [library.binomtest(k, 30, alternative=side).proportion_ci(0.9, method) for library in (ours, theirs)]
            np.testing.assert_allclose(*ends, rtol=1e-9, atol=1e-15)
    for power in (None, "log-likelihood", "cressie-read", "freeman-tukey", "neyman", "mod-log-likelihood", 0.5):
        compare("chi2_contingency", counts, lambda_=power)
        compare("chi2_contingency", rng.integers(1, 9, size=(2, 3, 2)), lambda_=power)
        compare("power_divergence", counts, lambda_=power)


def test_fits():
    cases = {"norm": (), "uniform": (), "laplace": (), "logistic": (), "cauchy": (), "gumbel_r": (), "moyal": (), "gennorm": (1.5,), "expon": ()}
    for name, shapes in cases.items():
        law = getattr(theirs, name)
        x = law.rvs(*shapes, 1, 2, size=200, random_state=1)
        for fixed in ({}, {"floc": 0.5 if name in ("uniform", "expon") else 1}):
            found, expected = getattr(ours, name).fit(x, **fixed), law.fit(x, **fixed)
            assert found == pytest.approx(expected, rel=1e-3) and law.nnlf(found, x) <= law.nnlf(expected, x) + 1e-9
    for name, shapes in (("beta", (2, 3)), ("t", (4,)), ("chi2", (3,)), ("f", (5, 9))):
        law = getattr(theirs, name)
        x = law.rvs(*shapes, size=300, random_state=2)
        assert getattr(ours, name).fit(x, floc=0, fscale=1) == pytest.approx(law.fit(x, floc=0, fscale=1), rel=1e-3)
