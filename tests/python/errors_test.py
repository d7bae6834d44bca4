"""What is refused: every parameter of every function and class, given things of the wrong kind.

An error is a ValueError or a TypeError that names the parameter, and prints no long array.
"""

import inspect

import numpy as np
import pytest

import vexel as vx

X = [3.0, 1.0, 2.0, 5.0, 4.0, 6.0]

# What makes a good call of each; parameters that are not there have their defaults.
GOOD = {
    **dict.fromkeys(("mean", "var", "std", "skewness", "kurtosis", "median", "iqr", "five_number", "describe",
                     "mean_absolute_deviation", "median_absolute_deviation", "mode", "sort", "argsort", "rank",
                     "tally", "histogram", "frequency_table", "cumulative", "kde", "shapiro", "normal_plot",
                     "t_test", "chi_square_test"), {"x": X}),
    **dict.fromkeys(("trimmed_mean", "winsorized_mean", "trim", "winsorize"), {"x": X, "cut": 0.2}),
    **dict.fromkeys(("cov", "corr"), {"x": X, "y": X[::-1]}),
    "chi_square_test": {"observed": X},
    "moment": {"x": X, "order": 2},
    "quantile": {"x": X, "q": 0.5},
    "order_statistic": {"x": X, "k": 2},
    "moving": {"x": X, "window": 3, "statistic": "quantile"},
    "filter": {"x": X, "taps": [0.5, 0.5]},
    "autocorrelation": {"x": X, "lags": 2},
    "ks_test": {"x": X, "distribution": vx.Normal()},
    "bootstrap": {"x": X, "replicates": 9, "rng": 1},
    "choice": {"x": X, "n": 2, "rng": 1},
    "permutation": {"n": 4, "rng": 1},
    "shuffle": {"x": X[:], "rng": 1},
    "find_root": {"f": lambda t: t - 0.5, "bracket": (0, 1)},
    "find_integer": {"f": lambda k: k, "low": 0, "high": 9, "target": 4},
    "Density": {"f": lambda t: 1.0, "support": (0, 1)},
    "CumulativeDistribution": {"F": lambda t: t, "support": (0, 1)},
    "Random": {"seed": 1},
    "Urn": {"weights": [1, 2]},
    **dict.fromkeys(("Sobol", "Halton", "Faure"), {"d": 2}),
    **dict.fromkeys(("Sums", "Moments", "Extremes", "Tally"), {}),
    "Covariance": {"k": 2},
    "Histogram": {"edges": [0, 1, 2]},
    "DensityGrid": {"bounds": (0, 1), "points": 9},
    "Ranks": {"q": [0.5]},
    "Random.uniform": {"self": vx.Random(1)},
    "Random.normal": {"self": vx.Random(1)},
    "Random.exponential": {"self": vx.Random(1)},
    "Random.integers": {"self": vx.Random(1), "low": 9},
    "Sobol.points": {"self": vx.Sobol(2), "n": 2},
    "Sobol.skip": {"self": vx.Sobol(2), "n": 2},
    "Urn.sample": {"self": vx.Urn([1, 2]), "rng": 1},
    "Sums.update": {"self": vx.Sums(), "x": X},
    "Sums.merge": {"self": vx.Sums(), "other": vx.Sums()},
    "Sums.from_bytes": {"data": vx.Sums().to_bytes()},
    "DensityGrid.density": {"self": vx.DensityGrid((0, 1), 9).update([0.5]), "bandwidth": 1.0},
    "KernelDensity.cdf": {"self": vx.kde(X), "t": 1.0},
    "KernelDensity.sample": {"self": vx.kde(X), "n": 2, "rng": 1},
    "Normal.interval": {"self": vx.Normal(), "level": 0.9},
    "Normal.sample": {"self": vx.Normal(), "size": 2, "rng": 1},
    "Normal.log_likelihood": {"self": vx.Normal(), "x": X},
    **{f"Normal.{f}": {"self": vx.Normal(), "x": 0.5} for f in ("pdf", "logpdf", "cdf", "sf", "logcdf", "logsf")},
    "Normal.quantile": {"self": vx.Normal(), "p": 0.5},
    "Normal.isf": {"self": vx.Normal(), "q": 0.5},
    "Normal.fit": {"x": X},
    "Binomial.fit": {"x": [1, 2], "n": 3},
    **{law: {} for law in ("Normal", "Uniform", "Exponential", "Cauchy", "Laplace", "Logistic", "Gumbel", "Rayleigh",
                           "Maxwell", "Moyal")},
    **{law: dict.fromkeys(p, 2) for law, p in {
        "Gamma": ["shape"], "Beta": ["a", "b"], "ChiSquare": ["df"], "StudentT": ["df"], "FRatio": ["df1", "df2"],
        "LogNormal": ["mu", "sigma"], "Weibull": ["shape"], "Pareto": ["shape"], "Power": ["shape"],
        "InverseGaussian": ["mean", "shape"], "ExponentialPower": ["location", "scale", "shape"],
        "NonCentralChiSquare": ["df", "nc"], "NonCentralBeta": ["a", "b", "nc"], "Poisson": ["mean"],
        "NonCentralFRatio": ["df1", "df2", "nc"], "NonCentralStudentT": ["df", "nc"],
        "DiscreteUniform": ["a", "b"]}.items()},
    "Triangular": {"a": 0, "b": 2, "mode": 1},
    "Bernoulli": {"p": 0.5},
    "Geometric": {"p": 0.5},
    "Binomial": {"n": 3, "p": 0.5},
    "NegativeBinomial": {"n": 3, "p": 0.5},
    "Hypergeometric": {"population": 9, "marked": 4, "drawn": 3},
    "Empirical": {"x": X},
}

WRONG = [object(), "no such thing", 1.5, -1, True, None, 10**30, 10**400, 1j, float("nan"), b"abc", {}, {"a": 1}, [], [1, "a"],
         [0.1, 0.9], (1, 2, 3), np.arange(100.0), np.array(["a"] * 100), np.zeros((2, 0)), lambda *a: "a", lambda *a: None,
         lambda *a: [1, 2], range(3)]

PARAMETERS = [(f, p) for f, good in GOOD.items() for p in inspect.signature(eval(f"vx.{f}")).parameters
              if p not in ("self", "progress")]


@pytest.mark.parametrize("function, parameter", PARAMETERS)
def test_errors_name_the_parameter(function, parameter):
    f = eval(f"vx.{function}")
    for wrong in WRONG:
        arguments = {**GOOD[function], parameter: wrong}
        subject = [arguments.pop("self")] if "self" in arguments else []
        if function == "shuffle" and isinstance(wrong, (list, np.ndarray)):
            arguments["x"] = wrong.copy()
        try:
            f(*subject, **arguments)
        except (ValueError, TypeError) as e:
            text = str(e)
            # Data of a shape that does not go with another parameter may name that one.
            subjects = [*inspect.signature(f).parameters, *function.split(".")]
            assert any(s in text for s in subjects), text
            assert len(text) < 350 and "array([" not in text and "incompatible" not in text, text


@pytest.mark.parametrize("call, error, text", [
    (lambda: vx.moment(X, 1.5), ValueError, "order must be a whole number, got 1.5"),
    (lambda: vx.mean(X, axis=1.0), TypeError, "axis must be a whole number, got 1.0"),
    (lambda: vx.mean(X, axis=True), TypeError, "axis must be a whole number, got True"),
    (lambda: vx.find_root(lambda t: "a", (0, 1)), TypeError, "f must be a function whose values are numbers, got 'a'"),
    (lambda: vx.bootstrap(X, lambda x: [1, 2]), TypeError, "statistic must be a function whose values are numbers"),
    (lambda: vx.moving(np.arange(20000.0), 3, lambda w: None), TypeError, "statistic must be .* got None"),
    (lambda: vx.Density(lambda t: "a", support=(0, 1)), TypeError, "f must be a function whose values are numbers"),
    (lambda: vx.Density("t -> ", support=(0, 1)), ValueError, "f: syntax error"),
    (lambda: vx.Density("t^2", support=(0, 1)), ValueError, "f: must be a procedure as .* got 't.2'"),
    (lambda: vx.ks_test(X, vx.Normal), TypeError, "distribution must be an object with cdf or a callable, got <class"),
    (lambda: vx.Histogram(10), ValueError, "edges must be "),
    (lambda: vx.Sobol(2, directions=[[1], [1, 3]]), ValueError, r"directions must be \(degree, coefficients, integers\)"),
    (lambda: setattr(vx.Random(1), "state", {}), ValueError, "state must be .* without seed"),
    (lambda: vx.Normal().sample(3, rng=True), TypeError, "rng must be .* got True"),
    (lambda: vx.Normal.fit([2, 2]), ValueError, "^Normal.fit: x must be of more than one value, all are 2"),
    (lambda: vx.Random.__new__(vx.Random).uniform(), TypeError, "__init__ has run"),
    (lambda: vx.Sums.__new__(vx.Sums).sum, TypeError, "__init__ has run"),
    (lambda: vx.mean([10**400, 1]), ValueError, "^x must be of magnitudes below"),
    (lambda: vx.Ranks([0.5]).result, ValueError, "result: passes are to come"),
    (lambda: vx.Uniform(2, 1), ValueError, "Uniform: b must be greater than a, 2,"),
    (lambda: vx.moving(X, 3, "foo"), ValueError, 'statistic must be .* "quantile" or a callable'),
    (lambda: vx.Random(1).integers(0, 2**63 + 1), ValueError, r"high must be -2\^63 to 2\^63, got"),
    (lambda: vx.sort(np.array([10**30, 1], object), out=np.zeros(2)), ValueError, "out must be an array of object"),
    (lambda: vx.shuffle((1, 2)), TypeError, "x must be a list or an array"),
    (lambda: vx.Sobol(2, scramble="foo"), ValueError, "scramble must be False, True, \"owen\" or \"shift\", got 'foo'"),
    (lambda: vx.Halton(2, scramble=None), TypeError, "scramble must be .* got None"),
    (lambda: vx.Kernel().eval(None), TypeError, "text must be a str, got None"),
    (lambda: vx.Kernel().call(None), TypeError, "name must be a str, got None"),
    (lambda: vx.Kernel().eval("1 +\n2*  # twice"), vx.KernelError, "syntax error at line 2, column 12: .* found the end of the text"),
    (lambda: vx.Kernel().eval("1 +;"), vx.KernelError, "syntax error at line 1, column 4: .* found ';'"),
])
def test_texts(call, error, text):
    with pytest.raises(error, match="^" + text if text[0] != "_" else text):
        call()


def test_every_function_is_tried():
    missing = [n for n in vx.__all__ if n not in GOOD and callable(getattr(vx, n))]
    assert set(missing) <= {"Kernel", "KernelError", "KernelDensity", "RootError"}, missing
