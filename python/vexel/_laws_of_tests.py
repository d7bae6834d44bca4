"""The laws of test statistics, central and not."""

from __future__ import annotations

from . import _core
from ._distributions import _set
from ._kinds import Continuous, Fitted


class ChiSquare(Fitted, Continuous):
    """Chi-square law: of the sum of `df` squares of standard normal variables.

    Density that of Gamma(df/2, 2), on x >= 0.  Mean df, variance 2 df.

    Parameters
    ----------
    df : float
        Degrees of freedom, > 0, whole or not.

    Examples
    --------
    >>> vx.ChiSquare(2).sf(2)
    0.36787944117144233
    """

    __slots__ = ()

    def __init__(self, df: float) -> None:
        _set(self, "_law", _core.make_law("ChiSquare", (df,)))


class StudentT(Fitted, Continuous):
    """Student's t.

    Density (1 + x²/df)^(-(df+1)/2) / (sqrt(df) B(df/2, 1/2)) on the whole line.  A moment of order k
    exists where k < df: the mean is NaN for df <= 1, the variance infinite for 1 < df <= 2.

    Parameters
    ----------
    df : float
        Degrees of freedom, > 0, whole or not.

    Examples
    --------
    >>> vx.StudentT(1).cdf([0, 1])
    array([0.5 , 0.75])
    >>> vx.StudentT(1).mean(), vx.StudentT(4).var()
    (nan, 2.0)
    """

    __slots__ = ()

    def __init__(self, df: float) -> None:
        _set(self, "_law", _core.make_law("StudentT", (df,)))


class FRatio(Fitted, Continuous):
    """F: the ratio of two independent chi-square variables, each over its degrees of freedom.

    On x >= 0.  Mean df2/(df2 - 2), infinite for df2 <= 2; the variance is finite where df2 > 4.

    Parameters
    ----------
    df1 : float
        Degrees of freedom above, > 0, whole or not.
    df2 : float
        Degrees of freedom below, > 0, whole or not.

    Examples
    --------
    >>> vx.FRatio(4, 4).mean(), vx.FRatio(4, 2).mean()
    (2.0, inf)
    """

    __slots__ = ()

    def __init__(self, df1: float, df2: float) -> None:
        _set(self, "_law", _core.make_law("FRatio", (df1, df2)))


class NonCentralChiSquare(Continuous):
    """Of a sum of `df` squares of normal variables whose squared means add up to `nc`.

    The mixture of chi-square laws of df + 2j, j of the Poisson law of mean nc/2, on x >= 0.  Mean
    df + nc, variance 2 (df + 2 nc).

    Parameters
    ----------
    df : float
        Degrees of freedom, > 0, whole or not.
    nc : float
        Non-centrality, >= 0.

    Examples
    --------
    >>> vx.NonCentralChiSquare(4, nc=2).mean()
    6.0
    """

    __slots__ = ()

    def __init__(self, df: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralChiSquare", (df, nc)))


class NonCentralBeta(Continuous):
    """Non-central beta law.

    The mixture of beta laws of a + j and b, j of the Poisson law of mean nc/2, on [0, 1].

    Parameters
    ----------
    a, b : float
        > 0.
    nc : float
        Non-centrality, >= 0.

    Examples
    --------
    >>> vx.NonCentralBeta(2, 1, nc=0).cdf(0.5)
    0.25
    """

    __slots__ = ()

    def __init__(self, a: float, b: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralBeta", (a, b, nc)))


class NonCentralFRatio(Continuous):
    """F with a non-central numerator.

    Of (N/df1)/(C/df2), N non-central chi-square of df1 and nc, C chi-square of df2, on x >= 0.  Mean
    df2 (df1 + nc)/(df1 (df2 - 2)), infinite for df2 <= 2.

    Parameters
    ----------
    df1 : float
        Degrees of freedom above, > 0.
    df2 : float
        Degrees of freedom below, > 0.
    nc : float
        Non-centrality of the numerator, >= 0.

    Examples
    --------
    >>> vx.NonCentralFRatio(4, 6, nc=2).mean()
    2.25
    """

    __slots__ = ()

    def __init__(self, df1: float, df2: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralFRatio", (df1, df2, nc)))


class NonCentralStudentT(Continuous):
    """Student's t of a variable whose mean is not 0.

    Of (Z + nc)/sqrt(C/df), Z standard normal, C chi-square of df, on the whole line.  A moment of order
    k exists where k < df.

    Parameters
    ----------
    df : float
        Degrees of freedom, > 0.
    nc : float
        Non-centrality: the mean of the numerator, of either sign.

    Examples
    --------
    >>> vx.NonCentralStudentT(5, nc=0).cdf(0)
    0.5
    """

    __slots__ = ()

    def __init__(self, df: float, nc: float) -> None:
        _set(self, "_law", _core.make_law("NonCentralStudentT", (df, nc)))
