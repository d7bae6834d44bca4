"""Maximum likelihood by SciPy's names and parameters: loc and scale fitted or fixed, shapes fitted."""

from __future__ import annotations

from collections.abc import Callable
from math import exp, inf, lgamma, log
from typing import Any

import numpy as np

import vexel as vx

Fixed = float | None


def fit(name: str, data: Any, floc: Fixed, fscale: Fixed) -> tuple[float, ...]:
    """(*shapes, loc, scale)"""
    x = np.asarray(data, dtype=np.float64).reshape(-1)
    if not len(x) or not np.isfinite(x).all():
        raise ValueError(f"{name}.fit: data must be finite, got {x[~np.isfinite(x)][0] if len(x) else 'none'}")
    if fscale is not None and not 0 < fscale < inf:
        raise ValueError(f"{name}.fit: fscale must be positive and finite, got {fscale!r}")
    if name in _MOVED:
        return _MOVED[name](x, floc, fscale)
    if name in _OF_SHAPES:
        if floc is None or fscale is None:
            raise NotImplementedError(f"{name}.fit: give floc and fscale, as floc=0, fscale=1; only shapes are fitted, "
                                      "for the likelihood of all parameters has no maximum")
        return (*_OF_SHAPES[name].fit((x - floc) / fscale).parameters.values(), floc, fscale)
    if name not in _OF_SCALE:
        raise NotImplementedError(f"{name}.fit: the fit method of vexel's class is what there is")
    if name == "expon" and floc is None:  # the likelihood rises with the location
        floc = float(x.min())
        if fscale is not None:
            return floc, float(fscale)
        if floc == x.max():
            _no_maximum(name)
    if floc is None:
        raise NotImplementedError(f"{name}.fit: give floc, as floc=0; the location is not fitted")
    law, back = _OF_SCALE[name]
    if fscale is not None:
        if name in ("expon", "rayleigh", "maxwell"):
            _none_left(name)
        raise NotImplementedError(f"{name}.fit: fscale cannot be given")
    *shapes, scale = back(law.fit(x - floc).parameters)
    return (*shapes, floc, scale)


def _none_left(name: str) -> Any:
    raise ValueError(f"{name}.fit: one parameter must be free, got all of them fixed")


def _no_maximum(name: str) -> Any:
    raise ValueError(f"{name}.fit: the likelihood of these data has no maximum")


# Laws on x >= loc: the class fits the shapes and the scale of x - loc.
_OF_SCALE: dict[str, tuple[Any, Callable[[dict[str, Any]], tuple[float, ...]]]] = {
    "lognorm": (vx.LogNormal, lambda p: (p["sigma"], exp(p["mu"]))),
    "expon": (vx.Exponential, lambda p: (p["scale"],)),
    "gamma": (vx.Gamma, lambda p: (p["shape"], p["scale"])),
    "weibull_min": (vx.Weibull, lambda p: (p["shape"], p["scale"])),
    "pareto": (vx.Pareto, lambda p: (p["shape"], p["minimum"])),
    "powerlaw": (vx.Power, lambda p: (p["shape"], p["maximum"])),
    "rayleigh": (vx.Rayleigh, lambda p: (p["scale"],)),
    "maxwell": (vx.Maxwell, lambda p: (p["scale"],)),
    "invgauss": (vx.InverseGaussian, lambda p: (p["mean"] / p["shape"], p["shape"])),
}
# Laws whose class has shapes alone.
_OF_SHAPES: dict[str, Any] = {"beta": vx.Beta, "chi2": vx.ChiSquare, "t": vx.StudentT, "f": vx.FRatio}


# ---- laws of a location and a scale

def _of_location(name: str, law: Any, scale: Callable[[Any], float] | None = None,
                 location: Callable[[Any, float], float] | None = None) -> Callable[..., tuple[float, ...]]:
    """Fits by the law's class, or by `scale` of the deviations from floc, or by `location` of the data and fscale."""
    def fitted(x: Any, floc: Fixed, fscale: Fixed) -> tuple[float, ...]:
        if floc is not None and fscale is not None:
            _none_left(name)
        if floc is not None:
            if scale is None:
                raise NotImplementedError(f"{name}.fit: floc cannot be given")
            return float(floc), scale(x - floc)
        if fscale is not None:
            if location is None:
                raise NotImplementedError(f"{name}.fit: fscale cannot be given")
            return location(x, fscale), float(fscale)
        return tuple(law.fit(x).parameters.values())

    return fitted


def _scale_by(name: str, share: Callable[[Any], Any]) -> Callable[[Any], float]:
    """The scale at which the mean share of the standardised deviations is 1; it falls as the scale rises."""
    def scale(d: Any) -> float:
        # As the scale goes to 0 the shares of Cauchy's law go to 2, the others beyond all bounds.
        if not d.any() or name == "cauchy" and 2 * np.count_nonzero(d) <= len(d):
            _no_maximum(name)

        def excess(log_scale: float) -> float:
            with np.errstate(over="ignore"):
                return vx.mean(np.minimum(share(d * exp(-log_scale)), 1e100)) - 1

        low = high = log(vx.mean(np.abs(d)))
        while excess(low) <= 0:
            low -= 1
        while excess(high) >= 0:
            high += 1
        return exp(vx.find_root(excess, (low, high)).root)

    return scale


def _rising(z: Any) -> Any:
    """z (1 - exp(-z)): what the scores of Gumbel's and Moyal's laws have in common."""
    return -z * np.expm1(-z)


def _log_mean(x: Any, scale: float) -> float:
    """The location of Gumbel's and Moyal's laws for a scale: -s log mean exp(-x/s)."""
    least = float(x.min())
    return least - scale * log(vx.mean(np.exp((least - x) / scale)))


def _logistic_location(x: Any, scale: float) -> float:
    ends = float(x.min()), float(x.max())
    if ends[0] == ends[1]:
        return ends[0]
    return vx.find_root(lambda m: vx.mean(np.tanh((x - m) / (2 * scale))), ends).root


def _uniform(x: Any, floc: Fixed, fscale: Fixed) -> tuple[float, ...]:
    low, high = float(x.min()), float(x.max())
    if floc is not None and fscale is not None:
        _none_left("uniform")
    if floc is not None:
        if low < floc:
            raise ValueError(f"uniform.fit: data must not be below floc={floc}, got {low}")
        return float(floc), high - floc
    if fscale is not None:  # every location from high - fscale to low is as likely: the middle one
        if high - low > fscale:
            raise ValueError(f"uniform.fit: data must not be further apart than fscale={fscale}, got {high - low}")
        return low - (fscale - (high - low)) / 2, float(fscale)
    return low, high - low


def _triangular(x: Any, floc: Fixed, fscale: Fixed) -> tuple[float, ...]:
    if floc is not None or fscale is not None:
        raise NotImplementedError("triang.fit: floc and fscale cannot be given")
    p = vx.Triangular.fit(x).parameters
    a, width = p["a"], p["b"] - p["a"]
    return (p["mode"] - a) / width, a, width


# ---- the generalised normal law

def _gennorm(x: Any, floc: Fixed, fscale: Fixed) -> tuple[float, ...]:
    if fscale is not None:
        raise NotImplementedError("gennorm.fit: fscale cannot be given")
    if floc is None:
        p = vx.ExponentialPower.fit(x).parameters
        return 2 / p["shape"], p["location"], p["scale"] * 2 ** (p["shape"] / 2)
    distances = np.abs(x - floc)
    unit = float(distances.max())
    if unit == 0:
        _no_maximum("gennorm")
    distances /= unit
    there = distances[distances > 0]
    logs, share = np.log(there), len(there) / len(distances)

    def power_mean(b: float) -> float:
        return share * vx.mean(there**b)

    def likelihood(b: float) -> float:  # per value, at the scale that is best for b
        return log(b) - lgamma(1 / b) - (log(b * power_mean(b)) + 1) / b

    def slope(b: float) -> float:
        m = power_mean(b)
        return b + _digamma(1 / b) + log(b * m) - b * share * vx.mean(there**b * logs) / m

    shapes = np.geomspace(0.05, 4.0 * len(distances) + 20, 120).tolist()
    best = int(np.argmax([likelihood(b) for b in shapes]))
    # The likelihood of great shapes rises to that of a uniform law.
    if best in (0, len(shapes) - 1) or likelihood(shapes[best]) <= 0:
        _no_maximum("gennorm")
    b = vx.find_root(slope, (shapes[best - 1], shapes[best + 1])).root
    return b, float(floc), unit * (b * power_mean(b)) ** (1 / b)


def _digamma(x: float) -> float:
    """Of x > 0: raised to 10 and more, where the asymptotic series has all digits."""
    below = 0.0
    while x < 10:
        below += 1 / x
        x += 1
    t = 1 / (x * x)
    series = t * (1 / 12 - t * (1 / 120 - t * (1 / 252 - t * (1 / 240 - t * (1 / 132 - t * (691 / 32760 - t / 12))))))
    return log(x) - 0.5 / x - series - below


_MOVED: dict[str, Callable[[Any, Fixed, Fixed], tuple[float, ...]]] = {
    "norm": _of_location("norm", vx.Normal, lambda d: vx.mean(d, kind="quadratic"), lambda x, s: vx.mean(x)),
    "uniform": _uniform,
    "laplace": _of_location("laplace", vx.Laplace, lambda d: vx.mean(np.abs(d)), lambda x, s: vx.median(x)),
    "logistic": _of_location("logistic", vx.Logistic, _scale_by("logistic", lambda z: z * np.tanh(z / 2)), _logistic_location),
    "cauchy": _of_location("cauchy", vx.Cauchy, _scale_by("cauchy", lambda z: 2 / (1 + 1 / np.square(np.where(z, z, 1e-200))))),
    "gumbel_r": _of_location("gumbel_r", vx.Gumbel, _scale_by("gumbel_r", _rising), _log_mean),
    "moyal": _of_location("moyal", vx.Moyal, _scale_by("moyal", lambda z: _rising(z) / 2), _log_mean),
    "triang": _triangular,
    "gennorm": _gennorm,
}
