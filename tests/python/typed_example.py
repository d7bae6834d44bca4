"""What a typed program writes; mypy --strict reads it."""

from typing import assert_type

import numpy as np

import vexel as vx

x = np.arange(10.0)
m: float = vx.mean(x)
law = vx.Gamma(shape=2.5, scale=2)
p: float = law.sf(40)
fitted: vx.Gamma = vx.Gamma.fit(x + 1)
name: str = repr(fitted)
low, high = law.interval(0.9)
width: float = high - low
values, counts = vx.tally(x)
b = vx.bootstrap(x, "median", rng=vx.Random(1))
end: float = b.interval.low
state = vx.Moments().update(x).merge(vx.Moments())
bits: bytes = state.to_bytes()
root: float = vx.find_root(lambda t: t * t, (0, 2), target=2).root
points = vx.Sobol(2, scramble=True, rng=1).points(8)
assert_type(vx.Sums().update(x).sum, float)
assert_type(state.moment(3), float)
assert_type(vx.Ranks([0.5]).next_pass().done, bool)
assert_type(vx.Tally().missing, int)
law2: vx.Normal = vx.Normal(sd=2)
moved = vx.moving(x, 3, "median", progress=True)
median: float = vx.quantile(x, 0.5, method="hazen", nan_policy="omit", progress=print)
