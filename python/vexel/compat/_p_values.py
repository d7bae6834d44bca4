"""Several p-values together, and distances of discrete laws, by SciPy's names."""

from __future__ import annotations

from math import sqrt
from typing import Any

import numpy as np

import vexel as vx
from vexel.compat._lanes import NORMAL, Found, axes_of, numbers, one_of, over_lanes


class CombinedPValues(Found):
    pass


def combine_pvalues(pvalues: Any, method: str = "fisher", weights: Any = None, *, axis: Any = 0, nan_policy: Any = "propagate",
                    keepdims: bool = False) -> Any:
    """One p-value of several independent ones; `weights` belong to Stouffer's method."""
    one_of("combine_pvalues", "method", method, ("fisher", "pearson", "tippett", "stouffer", "mudholkar_george"))

    def combined(p: Any, w: Any = None) -> tuple[float, float]:
        n = len(p)
        with np.errstate(divide="ignore"):
            low, high = np.sum(np.log(p)), np.sum(np.log1p(-p))
        if method == "fisher":
            return -2 * low, vx.ChiSquare(2 * n).sf(-2 * low)
        if method == "pearson":
            return 2 * high, vx.ChiSquare(2 * n).cdf(-2 * high)
        if method == "mudholkar_george":
            scale = sqrt(3 / n) / np.pi * sqrt((5 * n + 4) / (5 * n + 2))
            return high - low, vx.StudentT(5 * n + 4).sf(float((high - low) * scale))
        if method == "tippett":
            least = float(np.min(p))
            return least, -float(np.expm1(n * np.log1p(-least))) if least < 1 else 1.0
        w = np.ones(n) if w is None else w
        z = float(np.dot(w, NORMAL.isf(p)) / sqrt(np.dot(w, w)))
        return z, NORMAL.sf(z)

    p = numbers("combine_pvalues", pvalues, "pvalues")
    if ((p < 0) | (p > 1)).any():
        raise ValueError(f"combine_pvalues: pvalues must be in [0, 1], got {p[(p < 0) | (p > 1)].flat[0]}")
    samples = (p,) if weights is None or method != "stouffer" else (p, weights)
    return CombinedPValues(*over_lanes("combine_pvalues", combined, samples, axis, nan_policy, keepdims, paired=True))


def false_discovery_control(ps: Any, *, axis: Any = 0, method: str = "bh") -> Any:
    """Adjusted p-values: Y. Benjamini and Y. Hochberg (1995), or with Y. Benjamini and D. Yekutieli (2001) for any dependence."""
    one_of("false_discovery_control", "method", method, ("bh", "by"))
    p = np.array(numbers("false_discovery_control", ps, "ps"), dtype=np.float64)
    if not ((p >= 0) & (p <= 1)).all():
        raise ValueError(f"false_discovery_control: ps must be in [0, 1], got {p[~((p >= 0) & (p <= 1))].flat[0]}")
    shape = p.size if axis is None else p.shape
    p = p.reshape(-1) if axis is None else np.moveaxis(np.atleast_1d(p), axes_of(axis, p.ndim)[0], -1)
    n = p.shape[-1]
    order = np.argsort(p, axis=-1)
    adjusted = np.take_along_axis(p, order, -1) * (n / np.arange(1, n + 1))
    if method == "by":
        adjusted *= np.sum(1 / np.arange(1, n + 1))
    adjusted = np.minimum.accumulate(adjusted[..., ::-1], axis=-1)[..., ::-1]
    found = np.empty_like(p)
    np.put_along_axis(found, order, np.clip(adjusted, 0, 1), -1)
    return (found if axis is None else np.moveaxis(found, -1, axes_of(axis, found.ndim)[0])).reshape(shape)


def entropy(pk: Any, qk: Any = None, base: float | None = None, axis: Any = 0, *, nan_policy: Any = "propagate",
            keepdims: bool = False) -> Any:
    """Of a law with these weights, or its distance from a second one (S. Kullback and R. A. Leibler, 1951)."""
    if base is not None and not base > 0:
        raise ValueError(f"entropy: base must be positive, got {base}")

    def of_weights(p: Any, q: Any = None) -> tuple[float]:
        if (p < 0).any() or q is not None and (q < 0).any():
            return (-np.inf,) if q is None else (np.inf,)
        p = p / vx.Sums().update(p).sum
        there = p > 0
        with np.errstate(divide="ignore"):
            if q is None:
                terms = -p[there] * np.log(p[there])
            else:
                terms = p[there] * np.log(p[there] / (q / vx.Sums().update(q).sum)[there])
        return (float(np.sum(terms)) / (1 if base is None else float(np.log(base))),)

    samples = (pk,) if qk is None else (pk, qk)
    return over_lanes("entropy", of_weights, samples, axis, nan_policy, keepdims, parts=1, paired=True, least=0)[0]


def wasserstein_distance(u_values: Any, v_values: Any, u_weights: Any = None, v_weights: Any = None) -> float:
    """The area between two empirical distribution functions."""
    u, v = (numbers("wasserstein_distance", x, what) for x, what in ((u_values, "u_values"), (v_values, "v_values")))
    for what, x in (("u_values", u), ("v_values", v)):
        if not x.size:
            raise ValueError(f"wasserstein_distance: {what} must not be empty")
    laws = vx.Empirical(u, weights=u_weights), vx.Empirical(v, weights=v_weights)
    places = np.sort(np.concatenate((u, v)))
    below = abs(laws[0].cdf(places[:-1]) - laws[1].cdf(places[:-1]))
    return float(np.sum(below * np.diff(places)))
