"""What a typed program writes; mypy --strict reads it."""

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
