"""Distributions, generators, sequences, states, laws of one's own: values that pickle and read back."""

import copy
import ctypes
import math
import pickle

import numpy as np
import pandas as pd
import pytest

import vexel as vx
from vexel.compat import scipy

# One of each law.
LAWS = [
    vx.Normal(1, 2), vx.LogNormal(0.5, 0.7), vx.Uniform(-1, 3), vx.Exponential(2), vx.Gamma(2.5, 2), vx.Beta(2, 3.5),
    vx.ChiSquare(4), vx.StudentT(5), vx.FRatio(4, 9), vx.Cauchy(), vx.Laplace(1, 2), vx.Logistic(), vx.Gumbel(1, 2),
    vx.Weibull(1.5, 2), vx.Pareto(5, 2), vx.Power(2, 3), vx.Rayleigh(2), vx.Maxwell(2), vx.Triangular(0, 4, 1),
    vx.InverseGaussian(1, 2), vx.Moyal(), vx.ExponentialPower(0, 1, 1.5), vx.Bernoulli(0.3), vx.Binomial(10, 0.3),
    vx.Poisson(4), vx.Geometric(0.3), vx.NegativeBinomial(5, 0.4), vx.Hypergeometric(20, 7, 12), vx.DiscreteUniform(2, 8),
    vx.Empirical([1, 1, 4]), vx.Empirical([1, 2.5], [3, 1])]
NON_CENTRAL = [(vx.NonCentralChiSquare, (4, 2)), (vx.NonCentralBeta, (2, 3, 1)), (vx.NonCentralFRatio, (4, 9, 2)),
               (vx.NonCentralStudentT, (5, 1))]
LAWS += [law(*arguments) for law, arguments in NON_CENTRAL]
P = np.array([0.001, 0.3, 0.5, 0.99])


@pytest.mark.parametrize("law", LAWS, ids=lambda law: type(law).__name__)
def test_laws(law):
    assert pickle.loads(pickle.dumps(law)) == law == copy.deepcopy(law) == type(law)(**law.parameters)
    assert hash(law) == hash(copy.copy(law)) and eval(repr(law), vars(vx)) == law
    assert law != vx.Normal(17)
    with pytest.raises(AttributeError):
        law.mean = 3
    density = law.pmf if hasattr(law, "pmf") else law.pdf
    logdensity = law.logpmf if hasattr(law, "pmf") else law.logpdf
    x = law.quantile(P)
    for f in (density, logdensity, law.cdf, law.sf, law.logcdf, law.logsf):
        many = f(np.stack([x, x]))
        assert many.shape == (2, 4) and [f(v) for v in x.tolist()] == many[0].tolist() and type(f(x[0])) is float
        out = np.empty((4, 2)).T
        assert f(np.stack([x, x]), out=out) is out and (out == many).all()
        assert math.isnan(f(math.nan))
    np.testing.assert_allclose(law.cdf(x) + law.sf(x), 1, rtol=1e-14)
    assert (law.cdf(x) >= P * (1 - 1e-11)).all() and (law.quantile(law.cdf(x)) <= x + 1e-11 * (1 + abs(x))).all()
    low, high = law.interval(0.9)
    assert low <= law.median() <= high and law.support().low <= low and law.ppf(0.3) == law.quantile(0.3)
    for bad in (-0.1, 1.1):
        with pytest.raises(ValueError):
            law.quantile(bad)


@pytest.mark.parametrize("law", LAWS, ids=lambda law: type(law).__name__)
def test_samples(law):
    many = law.sample(1000, rng=7)
    rng = vx.Random(7)
    assert [law.sample(rng=rng) for _ in range(1000)] == many.tolist()
    assert (law.rvs(size=(10, 100), random_state=7).ravel() == many).all()
    whole = hasattr(law, "pmf") and type(law) is not vx.Empirical
    assert many.dtype == (np.int64 if whole else np.float64)
    distance, pvalue = vx.ks_test(many, law)
    assert pvalue > 1e-4 or whole or type(law) is vx.Empirical
    assert np.isfinite(law.log_likelihood(many))
    fit = getattr(type(law), "fit", None)
    if fit is None or type(law).__name__.startswith("NonCentral"):
        return
    given = {k: v for k, v in law.parameters.items() if k in ("n", "population", "drawn")}
    if type(law) in (vx.Binomial, vx.Hypergeometric):
        fitted = fit(many, **given)
    else:
        fitted = fit(many)
    assert type(fitted) is type(law) and fitted.log_likelihood(many) >= law.log_likelihood(many) - 1e-6 * many.size


def test_random():
    rng = vx.Random(42)
    assert eval(repr(rng), vars(vx)) == rng and vx.Random(3, 5).block == 5 and 0 <= vx.Random().seed < 2**64
    for draw in ("uniform", "normal", "exponential"):
        a, b = vx.Random(1), vx.Random(1)
        many = getattr(a, draw)(50)
        assert [getattr(b, draw)() for _ in range(50)] == many.tolist()
        out = np.empty((2, 25), order="F")
        assert (getattr(vx.Random(1), draw)(out=out) == many.reshape(2, 25)).all()
        assert a == b == pickle.loads(pickle.dumps(a)) == copy.copy(a)
    assert vx.Random(1).integers(5, 8, 1000).min() == 5 and vx.Random(1).integers(2**62) >= 0
    state = rng.state
    first = rng.uniform(9)
    rng.state = state
    assert (rng.uniform(9) == first).all()
    other = vx.Random(42)
    other.jump()
    assert (other.uniform(9) == vx.Random(42, 1).uniform(9)).all()
    x = list("abcde")
    vx.shuffle(x, rng=1)
    assert sorted(x) == list("abcde")
    for array in (np.arange(6.0), np.arange(6), np.arange(12).reshape(6, 2), np.arange(6)[::-1], np.array(list("abcdef"))):
        before = np.sort(array, axis=0)
        vx.shuffle(array, rng=1)
        assert (np.sort(array, axis=0) == before).all()
    assert sorted(vx.choice(5, 5, replace=False, rng=1)) == list(range(5)) and vx.choice(np.eye(3), 2, rng=1).shape == (2, 3)
    assert set(vx.choice([10, 20], (50, 2), weights=[0, 1], rng=1).ravel()) == {20}
    with pytest.raises(ValueError):
        vx.choice(3, 4, replace=False)
    assert len(set(vx.choice(2**52, 1000, replace=False, rng=1).tolist())) == 1000
    for array in (np.arange(5, 9), range(5, 9), pd.Series(range(5, 9), index=list("abcd")), (5, 6, 7, 8)):
        assert (vx.permutation(array, rng=1) == vx.permutation(4, rng=1) + 5).all()


def test_scipys_names():
    for law in (scipy.norm(1, 2), scipy.gamma(2.5, scale=2), scipy.randint(1, 7), scipy.lognorm(0.5)):
        back = pickle.loads(pickle.dumps(law))
        assert back.cdf(3) == law.cdf(3) and back.dist is law.dist
    x = np.array([1.0, 2, 4, 9])
    density, shares = scipy.gaussian_kde(x, weights=[1, 2, 1, 4]), scipy.gaussian_kde(x, weights=[0.125, 0.25, 0.125, 0.5])
    assert density(3.0) == pytest.approx(shares(3.0), rel=1e-14)
    with pytest.raises(NotImplementedError):
        scipy.gaussian_kde([x, x])
    table = np.array([[1.0, 2], [2, 5], [4, 4]])
    for axis in (0, 1):
        found = scipy.ttest_1samp(table, 1.5, axis=axis)
        for i, lane in enumerate(np.moveaxis(table, axis, -1)):
            assert (found.statistic[i], found.pvalue[i]) == vx.t_test(lane, 1.5)
    low, high = scipy.norm.interval(0.5, loc=[0, 10], scale=[1, 2])
    assert (low + high).tolist() == [0, 20]
    several = scipy.norm([0, 1000], 1)
    assert several.mean().tolist() == [0, 1000] and several.rvs((5, 2), random_state=1).shape == (5, 2)
    assert scipy.norm.rvs(5, 1e-9, 3, random_state=1).shape == (3,) and scipy.poisson.rvs(1e-9, 2, 3).tolist() == [2, 2, 2]
    for wrong, error in ((lambda: scipy.poisson.pmf(1, 3, scale=2), TypeError), (lambda: scipy.beta(2, 3, scale=-1).rvs(3), ValueError)):
        with pytest.raises(error, match="scale"):
            wrong()
    assert np.diff(several.rvs(random_state=np.random.RandomState(1))) > 900
    for text in ("norm", "norm(1, 2)", "gamma(2.5, scale=2)", "norm([1, 2])", "poisson(mu=3)"):
        law = eval(text, vars(scipy).copy())
        assert repr(law) == repr(pickle.loads(pickle.dumps(law))) == text
    assert {"norm", "kendalltau"} < set(dir(scipy)) and not {"np", "vx", "Any", "annotations"} & set(dir(scipy))
    assert scipy.poisson([1, 2]).pmf(0).tolist() == [math.exp(-1), math.exp(-2)]


def test_scipys_ends():
    """Parameters and probabilities out of range are NaN, as SciPy's are; only variates are refused."""
    nan = math.nan
    np.testing.assert_array_equal(scipy.norm.ppf([0.5, 2, -1]), [0, nan, nan])
    np.testing.assert_array_equal(scipy.norm.pdf([0, 0], scale=[-1, math.inf]), [nan, nan])
    bad = scipy.gamma(-1)
    for found in (bad.cdf([1, 2]), bad.stats(), bad.support(), bad.interval(0.5), bad.moment(2), bad.entropy(), bad.expect(abs)):
        assert np.isnan(found).all()
    assert scipy.norm.nnlf((0, -1), [1]) == math.inf
    np.testing.assert_array_equal(scipy.rankdata([[1, nan, 2], [3, 1, 2]], axis=1), [[nan] * 3, [3, 1, 2]])
    np.testing.assert_array_equal(scipy.rankdata([1, nan, 2], nan_policy="omit"), [1, nan, 2])


def test_scipys_means():
    assert [scipy.norm.moment(k, 1) for k in range(7)] == pytest.approx([1, 1, 2, 4, 10, 26, 76], rel=1e-12)
    assert [scipy.poisson(2).moment(k) for k in range(1, 6)] == pytest.approx([2, 6, 22, 94, 454], rel=1e-12)
    assert scipy.pareto(6).moment(5) == pytest.approx(6, rel=1e-12) and scipy.pareto(6).moment(7) == math.inf
    assert scipy.norm(5, 2).entropy() == pytest.approx(math.log(2 * math.sqrt(2 * math.pi * math.e)), rel=1e-12)
    assert scipy.gamma(1, 1, 2).entropy() == pytest.approx(1 + math.log(2), rel=1e-12)
    assert scipy.expon.expect(lambda x: math.exp(-x), scale=2) == pytest.approx(1 / 3, rel=1e-12)
    assert scipy.binom(10, 0.3).expect(lambda k: 2.0**k) == pytest.approx(1.3**10, rel=1e-12)
    assert scipy.norm.nnlf((1, 2), [1, 2]) == pytest.approx(math.log(8 * math.pi) + 0.125, rel=1e-14)
    x = [1, 2, 4]
    assert scipy.norm.fit(x, floc=0) == (0, math.sqrt(7)) and scipy.norm.fit(x, fscale=2) == (7 / 3, 2)


def test_scipys_correlations():
    x, y = [1, 2, 3, 4, 5], [2, 1, 3, 5, 4]
    tau = scipy.kendalltau(x, y)
    assert tau == pytest.approx((0.6, 28 / 120)) and scipy.kendalltau(x, x).pvalue == pytest.approx(2 / 120)
    table = np.array([x, y, [5, 1, 2, 2, 3]]).T
    r, p = scipy.spearmanr(table)
    for i, j in np.ndindex(3, 3):
        assert (r[i, j], p[i, j]) == pytest.approx(tuple(scipy.spearmanr(table[:, i], table[:, j])))
    assert scipy.spearmanr(table[:, :2]) == scipy.spearmanr(x, y)
    both, less, greater = (scipy.ttest_ind(x, [4, 5, 7], alternative=a).pvalue for a in ("two-sided", "less", "greater"))
    assert 2 * less == pytest.approx(both) and less + greater == pytest.approx(1)
    sample = vx.Gamma(2).sample(200, rng=1)
    for law, args in ((scipy.gamma(2, 3), ()), ("gamma", (2, 3)), (scipy.gamma, (2, 3)), (scipy.gamma.cdf, (2, 3))):
        assert scipy.kstest(sample + 3, law, args) == pytest.approx(vx.ks_test(sample, vx.Gamma(2)), rel=1e-9)
    assert scipy.iqr(x, scale="normal") == pytest.approx(2 / 1.3489795003921634) and scipy.iqr(x, rng=(0, 100)) == 4


def test_bit_generator():
    rng = vx.Random(1)
    generator = np.random.Generator(rng.bit_generator)
    assert isinstance(rng.bit_generator, np.random.BitGenerator)
    assert 0 <= generator.random() < 1 and generator.normal(size=1000).std() < 2
    assert (generator.bit_generator.random_raw(5) == vx.Random.from_bytes(rng.to_bytes()).bits(5)).sum() == 0
    again = pickle.loads(pickle.dumps(generator.bit_generator))
    assert np.random.Generator(again).random() == generator.random()
    assert vx.Normal().sample(rng=np.random.default_rng(1)) == vx.Normal().sample(rng=np.random.default_rng(1))


@pytest.mark.parametrize("make", [vx.Sobol, vx.Halton, vx.Faure])
@pytest.mark.parametrize("scramble", [False, True, "shift"])
def test_sequences(make, scramble):
    s = make(3, scramble=scramble, rng=vx.Random(5), start=2)
    first = s.points(10)
    assert first.shape == (10, 3) and s.index == 12 and first.min() >= 0 and first.max() < 1
    again = pickle.loads(pickle.dumps(s))
    assert (again.points(5) == s.points(5)).all() and again.index == s.index == 17
    out = np.empty((3, 20))[:, ::2].T
    assert s.reset().points(10, out=out) is out and (out == first).all()
    assert (make(3, scramble=scramble, rng=5).fast_forward(2).random(10) == first).all()
    with pytest.raises(ValueError):
        make(0)


STATES = [vx.Sums, vx.Moments, vx.Extremes, vx.Tally, lambda **k: vx.Histogram([0, 1, 5], **k),
          lambda **k: vx.DensityGrid((-5, 5), 101, **k), lambda **k: vx.Ranks([0.5], **k)]


@pytest.mark.parametrize("make", STATES)
def test_states(make):
    x = np.random.default_rng(1).normal(size=1000)
    whole = make().update(x)
    parts = [make().update(p) for p in np.array_split(x, 7)]
    merged = parts[0]
    for part in parts[:0:-1]:
        merged = merged.merge(pickle.loads(pickle.dumps(part)))
    assert merged is parts[0] and merged == whole == copy.deepcopy(whole) and merged != make()
    assert type(whole).from_bytes(whole.to_bytes()).to_bytes() == whole.to_bytes()
    with pytest.raises(ValueError):
        type(whole).from_bytes(b"nonsense")
    with pytest.raises(ValueError):
        make(nan_policy="raise").update([1, np.nan])


def test_state_results():
    x = np.random.default_rng(2).normal(size=(500, 2))
    m = vx.Moments().update(x[:, 0], weights=np.ones(500))
    np.testing.assert_allclose([m.mean, m.var, m.std, m.skewness, m.kurtosis, m.moment(3)],
                               [f(x[:, 0]) for f in (vx.mean, vx.var, vx.std, vx.skewness, vx.kurtosis)] + [vx.moment(x[:, 0], 3)],
                               rtol=1e-12)
    c = vx.Covariance(2).update(x[:100]).update(x[100:])
    np.testing.assert_allclose(c.cov, vx.cov(x), rtol=1e-12)
    np.testing.assert_allclose(c.mean, x.mean(axis=0), rtol=1e-12)
    assert pickle.loads(pickle.dumps(c)) == c
    assert vx.Sums().sum == 0 and math.isnan(vx.Extremes().min)


def bell(x):
    return math.exp(-x * x / 2)


def test_own_laws():
    sympy = pytest.importorskip("sympy")
    t = sympy.Symbol("t")
    forms = [bell, "x -> exp(-x^2/2)", sympy.exp(-t**2 / 2), sympy.Lambda(t, sympy.exp(-t**2 / 2))]
    laws = [vx.Density(f, support=(-math.inf, math.inf)) for f in forms]
    laws.append(vx.Density(lambda x: np.exp(-x * x / 2), support=(-math.inf, math.inf), vectorized=True))
    laws.append(vx.Density(lambda x: -x * x / 2, support=(-math.inf, math.inf), log=True))
    x = np.linspace(-3, 3, 7)
    for law in laws:
        np.testing.assert_allclose(law.cdf(x), vx.Normal().cdf(x), atol=1e-9)
        np.testing.assert_allclose(law.quantile(P), vx.Normal().quantile(P), atol=1e-8)
        np.testing.assert_allclose(law.pdf(x), vx.Normal().pdf(x), rtol=1e-8)
        assert law.evaluations <= 2000 and law.error <= 1e-10 and law.log_concave
        assert vx.ks_test(law.sample(2000, rng=1), vx.Normal()).pvalue > 1e-4
    np.testing.assert_array_equal(laws[0].sample(100, rng=1), vx.Density(bell, support=(-math.inf, math.inf)).sample(100, rng=1))
    np.testing.assert_allclose(laws[0].sample(100, rng=1), laws[4].sample(100, rng=1), rtol=1e-4)
    assert pickle.loads(pickle.dumps(laws[0])).mean() == laws[0].mean() and "support" in repr(laws[1])
    distribution = vx.CumulativeDistribution("x -> x^2", support=(0, 1))
    assert distribution.quantile(0.25) == pytest.approx(0.5, abs=1e-9)

    class Mine(Exception):
        pass

    def fails(x):
        raise Mine

    for call in (lambda: vx.Density(fails, support=(0, 1)), lambda: vx.find_root(fails, (0, 1)),
                 lambda: vx.moving([1, 2], 2, fails), lambda: vx.bootstrap([1, 2], fails, rng=1),
                 lambda: vx.ks_test([1, 2], fails), lambda: vx.CumulativeDistribution(fails, support=(0, 1))):
        with pytest.raises(Mine):
            call()
    with pytest.raises(ValueError):
        vx.Density("x -> x + y", support=(0, 1))
    with pytest.raises(ValueError):
        vx.Density(lambda x: -1, support=(0, 1))
    with pytest.raises(TypeError):
        vx.Density(3.5, support=(0, 1))


def test_compiled_functions(monkeypatch):
    """A numba.cfunc is called at its address: nothing of Python runs, however many values are asked for."""
    numba = pytest.importorskip("numba")
    density = numba.cfunc("float64(float64)")(bell)
    slope = numba.cfunc("float64(float64)")(lambda t: -t * math.exp(-t * t / 2))
    cdf = numba.cfunc("float64(float64)")(lambda t: t * t * (3 - 2 * t))
    plain = vx.Density(bell, support=(-math.inf, math.inf))

    def refuse(self, *arguments):
        raise AssertionError("called through Python")

    monkeypatch.setattr(type(density), "__call__", refuse)
    x = np.linspace(-3, 3, 1001)
    for more in ({}, {"derivative": slope}):
        law = vx.Density(density, support=(-math.inf, math.inf), **more)
        np.testing.assert_allclose(law.pdf(x), plain.pdf(x), rtol=1e-12)
        np.testing.assert_allclose(law.cdf(x), vx.Normal().cdf(x), atol=1e-9)
        assert vx.ks_test(law.sample(1000, rng=1), vx.Normal()).pvalue > 1e-4 and law == copy.copy(law)
    assert repr(vx.CumulativeDistribution(cdf, support=(0, 1))).startswith("<CumulativeDistribution(<")
    smooth = vx.CumulativeDistribution(cdf, support=(0, 1), density=numba.cfunc("float64(float64)")(lambda t: 6 * t * (1 - t)))
    assert smooth.quantile(0.5) == pytest.approx(0.5, abs=1e-9) and smooth.pdf(0.25) == pytest.approx(1.125)
    for wrong in ("float64(float64, float64)", "float32(float32)", "float64(int64)"):
        code = (lambda t, u: t) if "," in wrong else (lambda t: t)
        with pytest.raises(TypeError, match=r"^f must be a compiled float64\(float64\), got \("):
            vx.Density(numba.cfunc(wrong)(code), support=(0, 1))


def test_addresses():
    """What has an address is called there, as a function of the C library."""
    class Exponential:
        def __init__(self):
            self.address = ctypes.cast(ctypes.CDLL(None).exp, ctypes.c_void_p).value

        def __call__(self, x):
            raise AssertionError("called through Python")

    law = vx.Density(Exponential(), support=(0, 1))
    assert law.cdf(0.5) == pytest.approx(math.expm1(0.5) / math.expm1(1), abs=1e-9) and law.sample(1000, rng=1).max() < 1


def test_roots():
    with pytest.raises(vx.RootError) as info:
        vx.find_root(lambda x: x * x + 1, (-1, 2))
    assert (info.value.best, info.value.value) == (-1, 2) and isinstance(info.value, ValueError)
    again = pickle.loads(pickle.dumps(info.value))
    assert again.best == -1 and str(again) == str(info.value)
    r = vx.find_root(math.exp, (None, None), target=10, derivative=math.exp)
    assert r.root == pytest.approx(math.log(10)) and r.converged and r.evaluations < 40
    assert vx.find_integer(lambda k: k, None, None, target=-5.5) == -5
    k = vx.find_integer(vx.Binomial(100, 0.3).cdf, 0, 100, target=0.5)
    assert k == vx.Binomial(100, 0.3).quantile(0.5) and type(k) is int


@pytest.mark.parametrize("name", ["_core", "_host"])
def test_stubs_name_what_is_there(name):
    import ast
    import importlib
    import pathlib

    module = importlib.import_module(f"vexel.{name}")
    tree = ast.parse(pathlib.Path(vx.__file__).with_name(f"{name}.pyi").read_text())

    def names(body):
        return {n.name for n in body if isinstance(n, (ast.FunctionDef, ast.ClassDef))} | \
            {n.target.id for n in body if isinstance(n, ast.AnnAssign)}

    plain = {n for n in names(tree.body) if not n.startswith("__")}
    assert plain == {n for n in dir(module) if not n.startswith("__")}
    for found in tree.body:
        if isinstance(found, ast.ClassDef):
            own = {n for n in vars(getattr(module, found.name)) if not n.startswith("__") and n != "_pybind11_conduit_v1_"}
            assert {n for n in names(found.body) if not n.startswith("__")} == own, found.name


# What a repr is read back with: the package, its results' classes, and NumPy's names in arrays.
NAMES = {**{n: getattr(np, n) for n in ("array", "inf", "nan", "float64", "int32", "float32")}, **{n: getattr(vx, n) for n in vx.__all__},
         **{n: getattr(vx.results, n) for n in vx.results.__all__}}
GAP = [3, None, 1, 1, 2.5, 10 / 3]
READ_BACK = [
    *LAWS, vx.Empirical(np.arange(100) / 7), vx.Density("x -> exp(-x^4)", support=(-5, 5), mode=0.0),
    vx.Density("x -> -x^2", support=(None, math.inf), log=True), vx.CumulativeDistribution("x -> x^2", support=(0, 1)),
    vx.Random(3), vx.Random(3, block=2), vx.Urn([1, 0, 1 / 3]),
    vx.Sobol(2), vx.Sobol(2, start=5), vx.Sobol(3, scramble=True, rng=7).fast_forward(9), vx.Faure(3, start=2).fast_forward(1),
    vx.Halton(2, scramble="shift", rng=vx.Random(3, 2)), vx.Sobol(2, bits=10, directions=[[1, 0, [1]], [2, 1, [1, 3]]]),
    vx.kde([1, 2, 4], weights=[1, 2, 1], kernel="biweight", bounds=(0, 5)), vx.kde(np.arange(100) / 7), vx.kde(GAP, nan_policy="omit"),
    vx.Sums(), vx.Sums(nan_policy="omit"), vx.Moments(), vx.Moments(2, nan_policy="raise"), vx.Covariance(3), vx.Extremes(), vx.Tally(),
    vx.Histogram([0, 1 / 3, 2], nan_policy="omit"), vx.DensityGrid((-5, 5), 101), vx.Ranks([0.1, 1 / 3]), vx.Ranks([0.5], "hazen"),
    vx.five_number(GAP, nan_policy="omit"), vx.describe(GAP), vx.describe(np.arange(6).reshape(2, 3) / 7, axis=0), vx.describe([]),
    vx.tally(GAP), vx.histogram(GAP, 3), vx.histogram([1, 2], [0, math.inf]), vx.frequency_table(GAP, 3), vx.normal_plot(GAP),
    vx.t_test([1, 2, 4], mean=1), vx.find_root(math.exp, (0, None), target=2), vx.bootstrap([1, 2, 4], rng=1, replicates=50),
    vx.Normal().support(), vx.Normal().interval([0.5, 1 / 3])]


@pytest.mark.parametrize("x", READ_BACK, ids=lambda x: repr(x)[:50])
def test_reprs_read_back(x):
    again = eval(repr(x), dict(NAMES))
    assert type(again) is type(x) and again == x == pickle.loads(pickle.dumps(x)) and not again != x


def test_reprs_in_short():
    """What cannot read back, or would be too long, says so by its angle brackets."""
    many = np.arange(1000.0)
    rng = vx.Random(3)
    rng.uniform()
    for x, text in (
            (rng, "<Random(3) after draws>"), (vx.Sobol(2, scramble=True, rng=rng), "<Sobol(2) at index 0>"),
            (vx.Empirical(many), "<Empirical law of 1000 values>"), (vx.Urn(many), "<Urn of 1000 cells>"),
            (vx.kde(many, bandwidth=2), "<KernelDensity of 1000 values, bandwidth 2, gaussian, 512 points>"),
            (vx.Tally().update([1, 1, 2]), "<Tally of 2 distinct values, weight 3>"), (vx.Sums().update([math.nan]), "<Sums of 0 values>"),
            (vx.Covariance(2).update([[1, 2]]), "<Covariance of 1 rows of 2>"), (vx.Ranks([0.5]).update([1]), "<Ranks of weight 1, in pass 1>"),
            (vx.Density(bell, support=(-1, 1)), "<Density(<bell>, support=(-1, 1))>"),
            (vx.tally(many), "<TallyResult of 1000 values>"), (vx.histogram(many, 200), "<HistogramResult of 200 bins>"),
            (vx.describe(np.ones((2, 300)), axis=0), "<Description of 300 lanes>"), (vx.Random(1).bit_generator, "Random(1).bit_generator")):
        assert repr(x) == text
    lanes = vx.describe([[1, 20], [3, 40]], axis=0)
    assert str(lanes).split("\n")[:4] == ["                0        1", "count           2        2", "missing         0        0", "mean            2       30"]
    assert "<th>1</th>" in lanes._repr_html_() and "<td>30</td>" in lanes._repr_html_()
    assert repr(vx.bootstrap([1, 2, 4], rng=1)).startswith("<BootstrapResult: estimate 2.33333, standard error ")
    assert "best=1.0, value=2.0" in repr(vx.RootError("text", 1.0, 2.0))
    for a, b in ((vx.tally([1, 2]), vx.tally([1, 2, None])), (vx.kde([1, 2]), vx.kde([1, 3])), (vx.Urn([1]), vx.Urn([2])),
                 (vx.Sobol(2), vx.Sobol(2).fast_forward(1)), (vx.histogram([1, 2], 2), vx.histogram([1, 2, 2], 2))):
        assert a != b and a == copy.deepcopy(a)
    data, weights = np.array([1.0, 2, 4]), [1, 2, 1]
    for x in (data, pd.Series(data, dtype="Float64")):
        density = vx.kde(x, weights=weights)
        before = density(1.0)
        data[0] = weights[0] = 99
        assert pickle.loads(pickle.dumps(density))(1.0) == before and eval(repr(density), dict(NAMES))(1.0) == before
