"""`progress=`: a callable, or True for a bar of tqdm."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from ._core import short_text

if TYPE_CHECKING:
    from ._types import Progress


def reporter(progress: Progress) -> Any:
    """What the library calls with the share done, or None."""
    if progress is None or progress is False:
        return None
    if progress is not True:
        if not callable(progress):
            raise TypeError(f"progress must be a callable or True, got {short_text(progress)}")
        return progress
    try:
        from tqdm.auto import tqdm
    except ImportError:
        return None
    bar = tqdm(total=1.0, bar_format="{l_bar}{bar}| {elapsed}<{remaining}", leave=False)

    def show(done: float) -> None:
        bar.update(done - bar.n)

    return show
