"""The classes of results, for annotations and for reading a repr back.

Examples
--------
>>> from vexel.results import FiveNumber
>>> eval(repr(vx.five_number([1, 2, 3]))) == FiveNumber(1, 1.5, 2, 2.5, 3)
True
"""

from ._results import (
    BootstrapResult, Description, FiveNumber, FrequencyTable, HistogramResult, Interval, NormalPlot, RootResult,
    TallyResult, TestResult)

__all__ = [
    "BootstrapResult", "Description", "FiveNumber", "FrequencyTable", "HistogramResult", "Interval", "NormalPlot",
    "RootResult", "TallyResult", "TestResult"]
