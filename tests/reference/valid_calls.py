#!/usr/bin/env python3
"""Writes tests/reference/data/valid_calls.txt: at least one call that succeeds of every exported entry point.

The sweeps (failed allocations, raising callbacks, fuzzing) start from these calls.  A line that starts
with '!' is preparation, run before each call; one that starts with '?' is of an entry point all of whose
calls end in an error.
"""

PREPARATION = """
A := Array([3.0, 1.0, 4.0, 1.5, 5.0, 9.0, 2.0, 6.0], datatype = float[8])
B := Array([2.0, 7.0, 1.0, 8.0, 2.5, 8.5, 1.0, 3.0], datatype = float[8])
W := Array([1.0, 2.0, 1.0, 0.5, 1.0, 3.0, 1.0, 2.0], datatype = float[8])
N := Array([3.0, undefined, 4.0, 1.5, undefined, 9.0], datatype = float[8])
E := Array(1..0, datatype = float[8])
J := Array([3, 1, 2, 3, 2], datatype = integer[4])
S := Array([3, 1, 2, 3, 2], datatype = integer[1])
G := Array([3, 1/2, 2.5, 3, sqrt(2)])
R := Array(1..5, [3, 0, 2, 0, 2], datatype = float[8], storage = sparse)
Z := Array([Complex(2, 0), Complex(1, 1)], datatype = complex[8])
M := Array(1..2, 1..3, [[1, 2, 3], [4, 5, 6]], datatype = float[8])
O := Array(1..8, datatype = float[8])
D := Array([0.1, 0.4, 0.8, 0.4, 0.1], datatype = float[8])
cdf := x -> 1 - exp(-x)
pdf := x -> exp(-x)
bell := x -> exp(-x^2/2)
slope := x -> 0 - x*exp(-x^2/2)
first := w -> w[1]
"""

# name: parameters (text), x, p
DISTRIBUTIONS = {
    "Bernoulli": ("0.3", "1", "0.5", "PDVS"),
    "Beta": ("2.0, 3.5", "0.3", "0.5", "PDVS"),
    "Binomial": ("20, 0.3", "5", "0.5", "PDVS"),
    "Cauchy": ("1.0, 2.0", "0.3", "0.7", "PDVS"),
    "ChiSquare": ("3.5", "2.0", "0.7", "PDVS"),
    "DiscreteUniform": ("2, 9", "4", "0.7", "PDVS"),
    "Exponential": ("2.0", "1.5", "0.7", "PDVS"),
    "FRatio": ("3.0, 7.0", "1.5", "0.7", "PDVS"),
    "Gamma": ("2.0, 0.7", "1.5", "0.7", "PDVS"),
    "Geometric": ("0.3", "4", "0.7", "PDVS"),
    "Gumbel": ("1.0, 2.0", "1.5", "0.7", "PDVS"),
    "Hypergeometric": ("30, 10, 12", "4", "0.7", "PDVS"),
    "InverseGaussian": ("1.0, 2.0", None, None, "VS"),
    "Laplace": ("1.0, 2.0", "1.5", "0.7", "PDVS"),
    "Logistic": ("1.0, 2.0", "1.5", "0.7", "PDVS"),
    "LogNormal": ("0.5, 1.5", "1.5", "0.7", "PDVS"),
    "Maxwell": ("2.0", None, None, "VS"),
    "Moyal": ("1.0, 2.0", None, None, "VS"),
    "NegativeBinomial": ("3, 0.4", "4", "0.7", "PDVS"),
    "NonCentralBeta": ("2.0, 3.0, 1.5", "0.4", "0.7", "PDVS"),
    "NonCentralChiSquare": ("3.0, 1.5", "4.0", "0.7", "PD"),
    "NonCentralFRatio": ("3.0, 6.0, 1.5", "2.0", "0.7", "PDVS"),
    "NonCentralStudentT": ("5.0, 1.5", "2.0", None, "PVS"),
    "Normal": ("1.0, 2.0", "1.5", "0.7", "PDVS"),
    "Pareto": ("1.0, 2.5", "1.5", "0.7", "PDVS"),
    "Poisson": ("4.2", "3", "0.7", "PDVS"),
    "Power": ("2.0, 3.0", "1.5", "0.7", "PDVS"),
    "Rayleigh": ("2.0", "1.5", "0.7", "PDVS"),
    "StudentT": ("4.0", "1.5", "0.7", "PDVS"),
    "Triangular": ("0.0, 4.0, 1.0", "1.5", "0.7", "PDVS"),
    "Uniform": ("0.0, 4.0", "1.5", "0.7", "PDVS"),
    "Weibull": ("2.0, 1.5", "1.5", "0.7", "PDVS"),
}

OTHERS = """
VexelMean(A, W, true, 1)
VexelMean(N, E, true, 0)
VexelMean(G, E, false, 3)
VexelTrimmedMean(A, 10, 90, W, true, 0)
VexelTrimmedMean(J, 10, 60, E, false, 0)
VexelWinsorizedMean(A, 10, 90, W, true, 0)
VexelWinsorizedMean(S, 10, 60, E, false, 0)
VexelMoment(A, W, [1, 2, 3], 2.0, true)
VexelMoment(R, E, 2, 0, false)
VexelAbsoluteDeviation(A, W, 3.0, true)
VexelExpectedValue(A, W, x -> x^2, true)
VexelQuantile(A, [0.25, 0.5, 0.75], W, true, 7, false)
VexelQuantile(G, 0.3, E, false, 2, true)
VexelOrderStatistic(A, [1, 3, 3, 8, 2], E, true)
VexelMedian(A, W, true, false)
VexelMedian(J, E, false, true)
VexelMedianDeviation(A, W, true)
VexelFivePointSummary(A, true)
VexelStatisticSummary(A, W, true)
VexelCovariance(A, B, W, 1)
VexelEmpiricalDeviate(0.4, A, W, true)
VexelEmpiricalRandomVariate(A, E, false)
VexelEmpiricalRandomSample(5, A, W, true)
VexelErrorDeviate(0.6, cdf, pdf, 0.5, 1.0, 2.0)
VexelErrorRandomVariate(0.0, 1.0, 1.5)
VexelErrorRandomSample(5, 1.0, 1.0, 1.5)
VexelNonCentralChiSquareRandomVariate(3.0, 1.5, true)
VexelNonCentralChiSquareRandomSample(5, 3.0, 1.5, false)
VexelNonCentralChiSquareRandomSample(5, 3.0, 1.5, x -> x*exp(-x/2), x -> (1 - x/2)*exp(-x/2), x -> (x/4 - 1)*exp(-x/2))
VexelNormalRandomSample(O, 0.0, 1.0)
VexelNormalDeviateApprox(0.3)
VexelRandomSample(O, NULL, [[0, [24, [0.0, 1.0]]]], true)
VexelRandomSample(O, (x, y) -> x + y, [[0, [24, [0.0, 1.0]]], [0, [9, [2.0]]]], true)
VexelRandomSample(O, NULL, [[1, [bell, slope, [-3.0, -0.5, 0.5, 3.0], 20, true]]], true)
VexelNewtonRaphson(0, x -> x^2 - 2, x -> 2*x, 1.5, false, 0, false, 0, 10, 50)
VexelNewtonRaphsonSafe(0, x -> x^2 - 2, x -> 2*x, 1.5, 0.0, 2.0, 10, 50)
VexelNewtonRaphsonHybrid(0.5, cdf, pdf, 1.0, 0.0, 1.0, true, 0.0, false, 0, 10, 50)
VexelBrentMethod(0, x -> x^2 - 2, 0.0, 2.0, 10, 100)
VexelBrentMethodHybridLeft(0.5, cdf, 0.0, 1.0, 0.0, 0.1, 10, 100)
VexelBrentMethodHybridRight(0.5, cdf, 0.0, 1.0, 1.0, 2.0, 10, 100)
VexelBrentMethodHybridUnbound(0.5, cdf, 0.0, 1.0, 0.1, 0.2, 10, 100)
VexelDiscreteInterpolation(0.5, x -> x/10, 0, 10, 100)
VexelDiscreteInterpolationHybridLeft(0.5, x -> 1 - 2^(-x), 0.0, 1.0, 0, 1, 100)
VexelDiscreteInterpolationHybridRight(0.9, x -> 1 - 2^(-x), 0.0, 1.0, 1, 9, 100)
VexelDiscreteInterpolationHybridUnbound(0.9, x -> 1 - 2^(-x), 0.0, 1.0, 1, 2, 100)
VexelInverseDistributionSampleId(5, cdf, pdf, 0.0, 5.0, 1e-6, true)
VexelAliasUrnSample(10, W)
VexelBootstrapSample(J, 2, 3, E)
VexelBootstrapStatistic(A, E, x -> STATS_VexelMean_HW(x, E, false, 0), 8, 3)
VexelBootstrapStatistic(A, W, x -> STATS_VexelMedian_HW(x, E, false, true), 8, 3)
VexelBootstrapStatisticRV(n -> STATS_VexelNormalRandomSample_HW(n, 0.0, 1.0), x -> STATS_VexelMean_HW(x, E, false, 0), 6, 3)
VexelKernelDensitySample(D, 0.0, 4.0, 6)
InitializeQRStream(3, 1)
InitializeQRStream(3, 2)
InitializeQRStream(2, 0, Array([0, 1], datatype = integer[4]), Array([0, 0], datatype = integer[4]), Array(1..2, 1..8, [[1, 1, 1, 1, 1, 1, 1, 1], [1, 0, 0, 0, 0, 0, 0, 0]], datatype = integer[8], order = row), 8)
QRStreamNext(STATS_InitializeQRStream_HW(2, 1), 4, O)
QRStreamSkip(STATS_InitializeQRStream_HW(2, 2), 3)
ResetQRStream(STATS_InitializeQRStream_HW(2, 1))
TerminateQRStream(STATS_InitializeQRStream_HW(2, 1))
QRStreamGetDimension(STATS_InitializeQRStream_HW(2, 1))
QRStreamGetOptions(STATS_InitializeQRStream_HW(2, 1))
QRStreamGetMaxSobolPrecision()
QRStreamGenBinaryMatrix(Array(1..2, 1..4, [[1, 1, 1, 1], [1, 3, 5, 15]], datatype = integer[8], order = row), 2, 4, Array(1..4, datatype = integer[4]), Array([0, 1], datatype = integer[4]), Array([0, 2], datatype = integer[4]))
QRStreamGenBinaryMatrixRow(Array(1..2, 1..4, [[1, 1, 1, 1], [1, 3, 5, 15]], datatype = integer[8], order = row), 2, 2, 4, Array(1..4, datatype = integer[4]), Array([0, 1], datatype = integer[4]), Array([0, 2], datatype = integer[4]))
VexelSort(A, true, false)
VexelSort(G, false, true)
VexelRankSort(J, 1, true)
VexelRankSort(Array([3, 1/2, 2.5, 3]), 0, false)
VexelOrder(A, A, true, false, Array([8, 7, 6, 5, 4, 3, 2, 1], datatype = integer[4]))
VexelOrder(M, M, true, false, Array([2, 1], datatype = integer[4]))
VexelSelectRemove(A, x -> x > 2, 1)
VexelSelectRemove(G, (x, y) -> evalf(x) > y, 3, 2)
VexelSelectRemoveInRange(A, 1, 4, 1)
VexelSelectRemoveInRange(Z, 1, 4, 0)
VexelSelectRemoveNonNumeric(N, true, true, false)
VexelRemoveNULL(G)
VexelTrim(A, 10, 90)
VexelTrim(S, 10, 60)
VexelWinsorize(A, 10, 90)
VexelShuffle(A)
VexelShuffle(Z)
VexelTally(J, E)
VexelTally(A, W)
VexelTallyInto(A, W, true, [0 .. 4, 4 .. 9], 2)
VexelFrequencyData(A, E, false, 0 .. 10, 5)
VexelDiscretize(A, 16, 0.0, 10.0, 0, true, W)
VexelCumulative(A, W, E, 0)
VexelCumulative(A, E, O, 1)
VexelCount(N, E, 1)
VexelCountMissing(N, E)
VexelEvaluateToFloat(G)
VexelLinearFilter(A, Array([0.5, 0.25], datatype = float[8]), E, true, true)
VexelMovingMean(A, 3, 1, E, false, 0, true)
VexelMovingMedian(A, 3, 1, E, true, true)
VexelMoving(A, 3, first)
VexelKernelDensity(A, W, 0, 0.8, 16, true, 0.0, 10.0)
VexelKernelBounds(N)
VexelShapiroWilk(A, E, true)
"""

with open("tests/reference/data/valid_calls.txt", "w", encoding="ascii") as out:
    for line in PREPARATION.strip().splitlines():
        out.write(f"! {line}:\n")
    for name, (parameters, x, p, operations) in sorted(DISTRIBUTIONS.items()):
        for operation, suffix, first in (("P", "Probability", x), ("D", "Deviate", p),
                                         ("V", "RandomVariate", None), ("S", "RandomSample", "7")):
            if operation in operations:
                arguments = parameters if first is None else f"{first}, {parameters}"
                out.write(f"STATS_Vexel{name}{suffix}_HW({arguments})\n")
    for line in OTHERS.strip().splitlines():
        name, arguments = line.split("(", 1)
        out.write(f"STATS_{name}_HW({arguments}\n")
    out.write("? STATS_VexelNormalWApprox_HW(0.3)\n")
    out.write("? STATS_VexelInverseDistributionSample_HW(5, first, [[1, cdf, pdf]], 5.0, 1e-6)\n")
    out.write("STATS_StatsInitialize_HW()\n")
    out.write("VexelTallySorted(Array([1, 1, 2]), E)\n")
