"""The distributions, by SciPy's names."""

from __future__ import annotations

import numpy as np

import vexel as vx
from vexel.compat._families import Family

norm = Family("norm", "", vx.Normal, located=True)
lognorm = Family("lognorm", "s", lambda s, scale: vx.LogNormal(np.log(scale), s), scaled=True)
uniform = Family("uniform", "", lambda loc, scale: vx.Uniform(loc, loc + scale), located=True)
expon = Family("expon", "", vx.Exponential, scaled=True)
gamma = Family("gamma", "a", vx.Gamma, scaled=True)
beta = Family("beta", "a b", vx.Beta)
chi2 = Family("chi2", "df", vx.ChiSquare)
t = Family("t", "df", vx.StudentT)
f = Family("f", "dfn dfd", vx.FRatio)
cauchy = Family("cauchy", "", vx.Cauchy, located=True)
laplace = Family("laplace", "", vx.Laplace, located=True)
logistic = Family("logistic", "", vx.Logistic, located=True)
gumbel_r = Family("gumbel_r", "", vx.Gumbel, located=True)
weibull_min = Family("weibull_min", "c", vx.Weibull, scaled=True)
pareto = Family("pareto", "b", vx.Pareto, scaled=True)
powerlaw = Family("powerlaw", "a", vx.Power, scaled=True)
rayleigh = Family("rayleigh", "", vx.Rayleigh, scaled=True)
maxwell = Family("maxwell", "", vx.Maxwell, scaled=True)
triang = Family("triang", "c", lambda c, loc, scale: vx.Triangular(loc, loc + scale, loc + c * scale),
                 located=True)
invgauss = Family("invgauss", "mu", lambda mu, scale: vx.InverseGaussian(mu * scale, scale), scaled=True)
moyal = Family("moyal", "", vx.Moyal, located=True)
gennorm = Family("gennorm", "beta", lambda b, loc, scale:
                  vx.ExponentialPower(loc, scale * 2 ** (-1 / b), 2 / b), located=True)
ncx2 = Family("ncx2", "df nc", vx.NonCentralChiSquare)
ncf = Family("ncf", "dfn dfd nc", vx.NonCentralFRatio)
nct = Family("nct", "df nc", vx.NonCentralStudentT)
bernoulli = Family("bernoulli", "p", vx.Bernoulli)
binom = Family("binom", "n p", vx.Binomial)
poisson = Family("poisson", "mu", vx.Poisson)
geom = Family("geom", "p", vx.Geometric, shift=1)
nbinom = Family("nbinom", "n p", vx.NegativeBinomial)
hypergeom = Family("hypergeom", "M n N", vx.Hypergeometric)
randint = Family("randint", "low high", lambda low, high: vx.DiscreteUniform(low, high - 1))

NAMES = tuple(name for name, value in globals().items() if isinstance(value, Family))


def named(what: str, name: str) -> Family:
    """The distribution of that name; `what` is the parameter that has it."""
    if name not in NAMES:
        raise ValueError(f"{what} must be the name of a distribution of vexel.compat.scipy, or one of scipy.stats itself, got {name!r}")
    found = globals()[name]
    assert isinstance(found, Family)
    return found
