"""Continuous laws on the line, on half of it and on intervals."""

from __future__ import annotations

from . import _core
from ._distributions import _set
from ._kinds import Continuous, Fitted


class Normal(Fitted, Continuous):
    """Normal law.

    Density exp(-z²/2) / (sd sqrt(2π)), z = (x - mean)/sd, on the whole line.

    Parameters
    ----------
    mean : float
        Its mean.
    sd : float
        Its standard deviation, > 0.

    Examples
    --------
    >>> vx.Normal().cdf([-1, 0])
    array([0.15865525, 0.5       ])
    >>> vx.Normal(mean=1).sf(41)
    0.0
    >>> vx.Normal(mean=1).logsf(41)
    -804.60844201...
    """

    __slots__ = ()

    def __init__(self, mean: float = 0, sd: float = 1) -> None:
        _set(self, "_law", _core.make_law("Normal", (mean, sd)))


class LogNormal(Fitted, Continuous):
    """Log-normal law: that of exp(Y), Y normal.

    Density exp(-z²/2) / (x sigma sqrt(2π)), z = (log x - mu)/sigma, on x > 0.  The mean is
    exp(mu + sigma²/2), the median exp(mu).

    Parameters
    ----------
    mu : float
        Mean of Y.
    sigma : float
        Standard deviation of Y, > 0.

    Examples
    --------
    >>> vx.LogNormal(mu=0, sigma=1).median()
    1.0
    """

    __slots__ = ()

    def __init__(self, mu: float, sigma: float) -> None:
        _set(self, "_law", _core.make_law("LogNormal", (mu, sigma)))


class Uniform(Fitted, Continuous):
    """Uniform law.

    Density 1/(b - a) on [a, b].

    Parameters
    ----------
    a, b : float
        The ends, a < b.

    Examples
    --------
    >>> vx.Uniform(2, 4).cdf(2.5)
    0.25
    """

    __slots__ = ()

    def __init__(self, a: float = 0, b: float = 1) -> None:
        _set(self, "_law", _core.make_law("Uniform", (a, b)))


class Exponential(Fitted, Continuous):
    """Exponential law.

    Density exp(-x/scale)/scale on x >= 0.  The mean is `scale`: one over the rate.

    Parameters
    ----------
    scale : float
        Mean, > 0.

    Examples
    --------
    >>> vx.Exponential(scale=2).sf(2)
    0.36787944117144233
    """

    __slots__ = ()

    def __init__(self, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Exponential", (scale,)))


class Gamma(Fitted, Continuous):
    """Gamma law.

    Density t^(shape-1) exp(-t) / (scale Γ(shape)), t = x/scale, on x >= 0.  Mean shape × scale,
    variance shape × scale².

    Parameters
    ----------
    shape : float
        > 0; it may be below 1, where the density is infinite at 0.
    scale : float
        > 0; one over the rate.

    Examples
    --------
    >>> d = vx.Gamma(shape=2.5, scale=2)
    >>> d.mean(), d.quantile(d.cdf(3.0))
    (5.0, 2.9999999999999996)
    >>> d
    Gamma(shape=2.5, scale=2.0)
    """

    __slots__ = ()

    def __init__(self, shape: float, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Gamma", (shape, scale)))


class Beta(Fitted, Continuous):
    """Beta law.

    Density x^(a-1) (1-x)^(b-1) / B(a, b) on [0, 1].  Mean a/(a + b).

    Parameters
    ----------
    a, b : float
        > 0.

    Examples
    --------
    >>> vx.Beta(2, 1).pdf([0, 0.5, 1])
    array([0., 1., 2.])
    """

    __slots__ = ()

    def __init__(self, a: float, b: float) -> None:
        _set(self, "_law", _core.make_law("Beta", (a, b)))


class Cauchy(Fitted, Continuous):
    """Cauchy's law.

    Density 1/(π scale (1 + z²)), z = (x - location)/scale, on the whole line.  It has no
    moments: they are NaN.

    Parameters
    ----------
    location : float
        Its median.
    scale : float
        Half the interquartile range, > 0.

    Examples
    --------
    >>> vx.Cauchy().quantile(0.5), vx.Cauchy().mean()
    (0.0, nan)
    """

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Cauchy", (location, scale)))


class Laplace(Fitted, Continuous):
    """Laplace's law.

    Density exp(-|z|)/(2 scale), z = (x - location)/scale, on the whole line.  Variance
    2 scale².

    Parameters
    ----------
    location : float
        Its mean.
    scale : float
        > 0.

    Examples
    --------
    >>> vx.Laplace().pdf(0), vx.Laplace().var()
    (0.5, 2.0)
    """

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Laplace", (location, scale)))


class Logistic(Fitted, Continuous):
    """Logistic law.

    Density exp(-z)/(scale (1 + exp(-z))²), z = (x - location)/scale, on the whole line.
    Variance π² scale²/3.

    Parameters
    ----------
    location : float
        Its mean.
    scale : float
        > 0.

    Examples
    --------
    >>> vx.Logistic().pdf(0)
    0.25
    """

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Logistic", (location, scale)))


class Gumbel(Fitted, Continuous):
    """Gumbel's law of largest values.

    Density exp(-z - exp(-z))/scale, z = (x - location)/scale, on the whole line.  Mean
    location + γ scale, γ = 0.5772... (Euler), variance π² scale²/6.  The law of smallest values is that
    of -X.

    Parameters
    ----------
    location : float
        Where the density is largest.
    scale : float
        > 0.

    Examples
    --------
    >>> vx.Gumbel().cdf(0)
    0.36787944117144233
    """

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Gumbel", (location, scale)))


class Weibull(Fitted, Continuous):
    """Weibull's law.

    Density (shape/scale) t^(shape-1) exp(-t^shape), t = x/scale, on x >= 0.  Mean
    scale Γ(1 + 1/shape).

    Parameters
    ----------
    shape : float
        > 0; 1 is the exponential law.
    scale : float
        > 0.

    Examples
    --------
    >>> vx.Weibull(shape=2).sf(1)
    0.36787944117144233
    """

    __slots__ = ()

    def __init__(self, shape: float, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Weibull", (shape, scale)))


class Pareto(Fitted, Continuous):
    """Pareto's law.

    Density shape minimum^shape / x^(shape+1) on x >= minimum.  The mean is infinite for shape <= 1,
    the variance for shape <= 2.

    Parameters
    ----------
    shape : float
        > 0.
    minimum : float
        The smallest value, > 0.

    Examples
    --------
    >>> vx.Pareto(3).sf([2, 10])
    array([0.125, 0.001])
    >>> vx.Pareto(3).mean(), vx.Pareto(1).mean()
    (1.5, inf)
    """

    __slots__ = ()

    def __init__(self, shape: float, minimum: float = 1) -> None:
        _set(self, "_law", _core.make_law("Pareto", (shape, minimum)))


class Power(Fitted, Continuous):
    """Power law on a bounded interval.

    Density (shape/maximum) (x/maximum)^(shape-1) on [0, maximum].

    Parameters
    ----------
    shape : float
        > 0.
    maximum : float
        The largest value, > 0.

    Examples
    --------
    >>> vx.Power(3).cdf([0.5, 1])
    array([0.125, 1.   ])
    """

    __slots__ = ()

    def __init__(self, shape: float, maximum: float = 1) -> None:
        _set(self, "_law", _core.make_law("Power", (shape, maximum)))


class Rayleigh(Fitted, Continuous):
    """Rayleigh's law: the length of a normal vector in the plane.

    Density t exp(-t²/2)/scale, t = x/scale, on x >= 0.  Mean scale sqrt(π/2).

    Parameters
    ----------
    scale : float
        Standard deviation of the vector's components, > 0.

    Examples
    --------
    >>> vx.Rayleigh().sf(1)
    0.6065306597126334
    """

    __slots__ = ()

    def __init__(self, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Rayleigh", (scale,)))


class Maxwell(Fitted, Continuous):
    """Maxwell's law: the length of a normal vector in space.

    Density sqrt(2/π) t² exp(-t²/2)/scale, t = x/scale, on x >= 0.  Mean 2 scale sqrt(2/π).

    Parameters
    ----------
    scale : float
        Standard deviation of the vector's components, > 0.

    Examples
    --------
    >>> round(vx.Maxwell().mean(), 6)
    1.595769
    """

    __slots__ = ()

    def __init__(self, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Maxwell", (scale,)))


class Triangular(Fitted, Continuous):
    """Triangular law.

    The density rises in a straight line on [a, mode] and falls on [mode, b].  Mean
    (a + b + mode)/3.

    Parameters
    ----------
    a, b : float
        The ends, a < b.
    mode : float
        Where the density is largest, a <= mode <= b.

    Examples
    --------
    >>> vx.Triangular(0, 4, mode=1).pdf([0.5, 1, 4])
    array([0.25, 0.5 , 0.  ])
    """

    __slots__ = ()

    def __init__(self, a: float, b: float, mode: float) -> None:
        _set(self, "_law", _core.make_law("Triangular", (a, b, mode)))


class InverseGaussian(Fitted, Continuous):
    """Inverse Gaussian law: when Brownian motion with drift first reaches a level.

    Density sqrt(shape/(2π x³)) exp(-shape (x-mean)²/(2 mean² x)) on x > 0.  Variance mean³/shape.

    Parameters
    ----------
    mean : float
        > 0.
    shape : float
        > 0.

    Examples
    --------
    >>> vx.InverseGaussian(mean=2, shape=4).var()
    2.0
    """

    __slots__ = ()

    def __init__(self, mean: float, shape: float) -> None:
        _set(self, "_law", _core.make_law("InverseGaussian", (mean, shape)))


class Moyal(Fitted, Continuous):
    """Moyal's law, of energy losses of particles.

    Density exp(-(z + exp(-z))/2)/(scale sqrt(2π)), z = (x - location)/scale, on the whole line.
    Mean location + (γ + log 2) scale, γ = 0.5772... (Euler), variance π² scale²/2.

    Parameters
    ----------
    location : float
        Where the density is largest.
    scale : float
        > 0.

    Examples
    --------
    >>> round(vx.Moyal().mean(), 6)
    1.270363
    """

    __slots__ = ()

    def __init__(self, location: float = 0, scale: float = 1) -> None:
        _set(self, "_law", _core.make_law("Moyal", (location, scale)))


class ExponentialPower(Fitted, Continuous):
    """Exponential power law (generalised normal law).

    Density exp(-|z|^(2/shape)/2) / (scale 2^(shape/2+1) Γ(shape/2+1)), z = (x - location)/scale, on
    the whole line.

    Parameters
    ----------
    location : float
        Its mean.
    scale : float
        > 0.
    shape : float
        > 0; 1 is the normal law, 2 Laplace's with twice the scale.

    Examples
    --------
    >>> vx.ExponentialPower(0, 1, shape=1).cdf([-1, 0])
    array([0.15865525, 0.5       ])
    """

    __slots__ = ()

    def __init__(self, location: float, scale: float, shape: float) -> None:
        _set(self, "_law", _core.make_law("ExponentialPower", (location, scale, shape)))
