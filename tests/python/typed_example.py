"""What a typed program writes; mypy --strict reads it."""

from typing import Any, assert_type

import numpy as np
from numpy.typing import NDArray

import vexel as vx
from vexel.results import BootstrapResult, Description, FiveNumber, Interval

Doubles = NDArray[np.float64]
x = np.arange(10.0)
table = x.reshape(2, 5)

# Reductions: everything is a float; an axis, keepdims or out gives an array.
assert_type(vx.mean(x), float)
assert_type(vx.std([1, 2, 3], ddof=0, weights=[1, 1, 2], nan_policy="omit"), float)
assert_type(vx.median(table, axis=0), Doubles)
assert_type(vx.var(table, axis=(0, 1), keepdims=True), Doubles)
assert_type(vx.skewness(table, keepdims=True), Doubles)
assert_type(vx.mean(table, axis=1, out=np.empty(2)), Doubles)
assert_type(vx.mode(x), float)
assert_type(vx.mode(table, axis=1), Doubles)
# Several results.
assert_type(vx.quantile(x, 0.5, method="hazen", progress=print), float)
assert_type(vx.quantile(x, [0.25, 0.75]), Doubles)
assert_type(vx.quantile(table, 0.5, axis=1), Doubles)
assert_type(vx.moment(x, 3), float)
assert_type(vx.moment(x, [1, 2]), Doubles)
assert_type(vx.order_statistic(x, 2), float)
assert_type(vx.describe(x), Description[float])
assert_type(vx.five_number(table, axis=0), FiveNumber[Doubles])
assert_type(vx.cov(x, x), float)
assert_type(vx.corr(table, method="spearman"), Doubles)

# Laws: a number gives a float, an array an array.
law = vx.Gamma(shape=2.5, scale=2)
assert_type(law.sf(40), float)
assert_type(law.pdf(np.float64(0.5)), float)
assert_type(law.cdf(x), Doubles)
assert_type(law.quantile([0.1, 0.9]), Doubles)
assert_type(law.logsf(x, out=x), Doubles)
assert_type(law.interval(0.9), Interval[float])
assert_type(vx.Poisson(3).pmf(2), float)
assert_type(law.sample(rng=1), float)
assert_type(vx.Poisson(3).sample(rng=np.random.default_rng(1)), int)
assert_type(law.sample((2, 3), vx.Random(1)), NDArray[Any])
assert_type(law.rvs(size=3, random_state=1), NDArray[Any])
assert_type(vx.Gamma.fit(x + 1), vx.Gamma)
assert_type(vx.kde(x)(0.5), float)
assert_type(vx.kde(x).cdf(x), Doubles)
low, high = law.interval(0.9)
width: float = high - low
own: vx.Density = vx.Density("x -> exp(-x^4)", support=(-5, 5))

# Streams, states, results.
rng = vx.Random(1)
assert_type(rng.uniform(), float)
assert_type(rng.normal((2, 2)), Doubles)
assert_type(rng.integers(1, 7), int)
assert_type(rng.integers(1, 7, 3), NDArray[Any])
assert_type(vx.Urn([1, 2]).sample(), int)
assert_type(vx.Sobol(2, scramble=True, rng=1).fast_forward(4).points(8), Doubles)
assert_type(vx.Sums().update(x).sum, float)
assert_type(vx.Moments().update(x).merge(vx.Moments()).moment(3), float)
assert_type(vx.Ranks([0.5]).next_pass().done, bool)
assert_type(vx.Moments().to_bytes(), bytes)
values, counts = vx.tally(x)
assert_type(vx.bootstrap(x, "median", rng=rng), BootstrapResult)
end: float = vx.bootstrap(x, "median", rng=rng).interval.low
root: float = vx.find_root(lambda t: t * t, (0, 2), target=2).root
moved = vx.moving(x, 3, "median", progress=True)
vx.mean(x, axs=0)  # type: ignore[call-overload]
vx.quantile(x, 0.5, method="hasen")  # type: ignore[call-overload]
law.mean = 3  # type: ignore[method-assign, assignment]
