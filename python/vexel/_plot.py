"""What drawing shares; imported, and matplotlib with it, when something is drawn."""

from __future__ import annotations

from typing import Any

import numpy as np


def axes(ax: Any = None) -> Any:
    """The axes to draw on: those given, or new ones."""
    if ax is not None:
        return ax
    try:
        import matplotlib.pyplot as plt
    except ImportError:
        raise ImportError("drawing needs matplotlib: pip install matplotlib") from None
    return plt.subplots()[1]


def draw_law(law: Any, ax: Any, style: dict[str, Any]) -> Any:
    """The density between the quantiles 0.001 and 0.999; of a discrete law the probabilities."""
    ax = axes(ax)
    low, high = law.quantile(0.001), law.quantile(0.999)
    if hasattr(law, "pmf"):
        values = law._values() if hasattr(law, "_values") else np.arange(low, min(high, low + 1e5) + 1)
        ax.vlines(values, 0, law.pmf(values), **style)
        ax.set(xlabel="x", ylabel="probability", ylim=(0, None))
        return ax
    ends = law.support()
    margin = 0.05 * (high - low)
    x = np.linspace(max(low - margin, ends[0]), min(high + margin, ends[1]), 513)
    y = law.pdf(x)
    ax.plot(x[np.isfinite(y)], y[np.isfinite(y)], **style)
    ax.set(xlabel="x", ylabel="density", ylim=(0, None))
    return ax
