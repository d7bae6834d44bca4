"""vexel.compat.scipy without SciPy: laws counted in whole numbers, values of textbooks, and what ties results to each other."""

import importlib
import itertools
import math
import pickle
from fractions import Fraction

import numpy as np
import pandas as pd
import pytest

import vexel as vx
from vexel.compat import scipy as stats

nan = math.nan
SIDES = ("two-sided", "less", "greater")
RNG = np.random.default_rng(11)
X, Y, Z = RNG.normal(size=12), RNG.normal(0.5, 2, size=9), RNG.normal(size=(3, 15))


def share(values, found, alternative, key=lambda v: v):
    """The p-value of `found` by the list of all equally likely values."""
    n = len(values)
    less, greater = (Fraction(sum(c), n) for c in zip(*((v <= found, v >= found) for v in values)))
    return {"less": less, "greater": greater, "two-sided": min(Fraction(1), 2 * min(less, greater))}[alternative]


def orders(m, n):
    """All ways in which the values of two samples can follow each other, as masks of the first one."""
    for chosen in itertools.combinations(range(m + n), m):
        mask = np.zeros(m + n, dtype=bool)
        mask[list(chosen)] = True
        yield mask


@pytest.mark.parametrize("m, n", [(4, 6), (5, 5), (1, 7)])
def test_two_samples_counted(m, n):
    masks = list(orders(m, n))
    steps = [np.cumsum(np.where(k, n, -m)) for k in masks]
    wins = [sum(int(k[i] and not k[j]) for i in range(m + n) for j in range(i)) for k in masks]
    distances = {"greater": [max(0, s.max()) for s in steps], "less": [max(0, -s.min()) for s in steps],
                 "two-sided": [np.abs(s).max() for s in steps]}
    for which in range(0, len(masks), 7):
        values = np.arange(m + n, dtype=float)
        x, y = values[masks[which]], values[~masks[which]]
        for side in SIDES:
            d = distances[side]
            found = stats.ks_2samp(x, y, alternative=side)
            assert found == pytest.approx((d[which] / (m * n), sum(v >= d[which] for v in d) / len(d)), rel=1e-13)
            at = found.statistic_location
            assert found.statistic_sign * (np.mean(x <= at) - np.mean(y <= at)) == pytest.approx(found.statistic, rel=1e-14)
            assert stats.mannwhitneyu(x, y, alternative=side) == pytest.approx((wins[which], float(share(wins, wins[which], side))), rel=1e-14)


@pytest.mark.parametrize("d", [[1, -2, 3, 4, -5, 6.5], [1, 1, -1, 2, 2, 3], [0, 0, 1, -2, 2, 3, 4], [5, 5, 5, 5]])
def test_signs_counted(d):
    d = np.array(d, dtype=float)
    for zero_method in ("wilcox", "pratt"):
        kept = d[d != 0] if zero_method == "wilcox" else d
        ranks = vx.rank(np.abs(kept))[kept != 0]
        sums = [float(np.dot(ranks, s)) for s in itertools.product((0, 1), repeat=len(ranks))]
        above = float(ranks[kept[kept != 0] > 0].sum())
        for side in SIDES:
            found = stats.wilcoxon(d, zero_method=zero_method, alternative=side)
            assert found.pvalue == float(share(sums, above, side))
            assert found.statistic == (min(above, ranks.sum() - above) if side == "two-sided" else above)
    assert stats.wilcoxon(d + 3, np.full(len(d), 3.0)) == stats.wilcoxon(d)


def test_orders_counted():
    x = [1, 2, 3, 4, 5]
    scores = {p: sum(np.sign(p[j] - p[i]) for i in range(5) for j in range(i + 1, 5)) for p in itertools.permutations(x)}
    for y in ([1, 3, 2, 5, 4], [5, 4, 2, 3, 1], [2, 5, 1, 4, 3]):
        for side in SIDES:
            assert stats.kendalltau(x, y, alternative=side).pvalue == pytest.approx(float(share(list(scores.values()), scores[tuple(y)], side)))


def test_counts_of_tables():
    assert stats.fisher_exact([[3, 1], [1, 3]], "greater") == pytest.approx((9, 17 / 70))  # the lady tasting tea
    for table in ([[3, 1], [1, 3]], [[8, 2], [1, 5]], [[0, 7], [4, 2]], [[30, 12], [11, 25]], [[2, 3], [6, 4]]):
        (a, b), (c, d) = table
        ways = {k: math.comb(a + b, k) * math.comb(c + d, a + c - k) for k in range(max(0, a - d), min(a + b, a + c) + 1)}
        total = math.comb(a + b + c + d, a + c)
        assert stats.fisher_exact(table).pvalue == pytest.approx(sum(w for w in ways.values() if w <= ways[a]) / total, rel=1e-12)
        assert stats.fisher_exact(table, "less").pvalue == pytest.approx(sum(w for k, w in ways.items() if k <= a) / total, rel=1e-12)
    assert np.isinf(stats.fisher_exact([[3, 0], [1, 3]]).statistic) and stats.fisher_exact([[0, 0], [1, 3]]).pvalue == 1
    for k, n, p in ((3, 15, Fraction(1, 10)), (682, 925, Fraction(3, 4)), (0, 4, Fraction(1, 2)), (13, 25, Fraction(1, 2)), (5, 5, Fraction(1))):
        weights = [math.comb(n, j) * p**j * (1 - p) ** (n - j) for j in range(n + 1)]
        test = stats.binomtest(k, n, float(p))
        assert test.pvalue == pytest.approx(float(sum(w for w in weights if w <= weights[k])), rel=1e-9) and test.statistic == k / n
    low, high = stats.binomtest(7, 50).proportion_ci(0.9)
    assert (stats.binom.sf(6, 50, low), stats.binom.cdf(7, 50, high)) == pytest.approx((0.05, 0.05), rel=1e-10)
    # R. G. Newcombe (1998), table I: 81 of 263, 15 of 148, 0 of 20, 1 of 29
    for k, n, exact, wilson, continuous in ((81, 263, (0.2527, 0.3676), (0.2553, 0.3662), (0.2535, 0.3682)), (15, 148, (0.0578, 0.1617), (0.0624, 0.1605), (0.0598, 0.1644)),
                                            (0, 20, (0, 0.1684), (0, 0.1611), (0, 0.2005)), (1, 29, (0.0009, 0.1776), (0.0061, 0.1718), (0.0018, 0.1963))):
        test = stats.binomtest(k, n)
        for method, ends in (("exact", exact), ("wilson", wilson), ("wilsoncc", continuous)):
            assert test.proportion_ci(method=method) == pytest.approx(ends, abs=6e-5)
    assert stats.binomtest(7, 50, alternative="greater").proportion_ci().high == 1


def test_contingency():
    found = stats.chi2_contingency([[10, 20], [30, 40]], correction=False)
    assert found.dof == 1 and found.expected_freq.tolist() == [[12, 18], [28, 42]]
    assert (found.statistic, found.pvalue) == pytest.approx((50 / 63, math.erfc(math.sqrt(25 / 63))), rel=1e-13)
    assert stats.chi2_contingency([[10, 20], [30, 40]]).statistic == pytest.approx(2.25 * (1 / 12 + 1 / 18 + 1 / 28 + 1 / 42), rel=1e-13)
    assert stats.chi2_contingency([[1, 2, 3]]).dof == 0 and stats.chi2_contingency(np.ones((2, 3, 4))).dof == 17
    g = 2 * (10 * math.log(10 / 12) + 20 * math.log(20 / 18) + 30 * math.log(30 / 28) + 40 * math.log(40 / 42))
    assert stats.chi2_contingency([[10, 20], [30, 40]], False, "log-likelihood")[0] == pytest.approx(g, rel=1e-12)
    assert stats.power_divergence([3, 0, 5], lambda_=0).statistic == pytest.approx(2 * (3 * math.log(9 / 8) + 5 * math.log(15 / 8)), rel=1e-13)
    assert stats.power_divergence([3, 1, 5]) == pytest.approx(stats.chisquare([3, 1, 5]), rel=1e-14)
    with pytest.raises(ValueError, match="f_exp must have the sum of f_obs, 9.0, got 10.0"):
        stats.chisquare([3, 1, 5], [3, 3, 4])


def test_far_tails():
    n = np.arange(30.0)
    separate = Fraction(1, math.comb(60, 30))
    assert stats.ks_2samp(n, n + 100).pvalue == pytest.approx(float(2 * separate), rel=1e-13)
    assert stats.mannwhitneyu(n, n + 100, method="exact", alternative="less").pvalue == float(separate)
    assert stats.wilcoxon(n + 1, alternative="greater").pvalue == 2.0**-30 and stats.wilcoxon(n + 1, alternative="less").pvalue == 1
    for d in (Fraction(1, 16), Fraction(3, 8), Fraction(15, 16)):  # Birnbaum and Tingey's sum
        for size in (1, 9, 40, 120):
            exact = d * sum(math.comb(size, j) * (d + Fraction(j, size)) ** (j - 1) * (1 - d - Fraction(j, size)) ** (size - j)
                            for j in range(size + 1) if Fraction(j, size) <= 1 - d)
            sample = np.clip(np.arange(1, size + 1) / size - float(d), 0, 1)
            assert stats.kstest(sample, "uniform", alternative="greater") == pytest.approx((float(d), float(exact)), rel=1e-10)
            assert stats.kstest(1 - sample, "uniform", alternative="less") == pytest.approx((float(d), float(exact)), rel=1e-10)
    assert stats.ks_2samp(n, n + 3.5, method="asymp").pvalue == pytest.approx(stats.ks_2samp(n, n + 3.5).pvalue, rel=0.1)
    assert stats.f_oneway(X, X + 1e6).pvalue == pytest.approx(stats.ttest_ind(X, X + 1e6).pvalue, rel=1e-10) and stats.f_oneway(X, X + 1e6)[1] < 1e-100


def test_what_tests_have_in_common():
    for equal in (True, False):
        t, f = stats.ttest_ind(X, Y, equal_var=equal), stats.f_oneway(X, Y, equal_var=equal)
        assert (t.statistic**2, t.pvalue) == pytest.approx(f, rel=1e-12)
        assert stats.ttest_ind_from_stats(X.mean(), X.std(ddof=1), 12, Y.mean(), Y.std(ddof=1), 9, equal) == pytest.approx(t, rel=1e-12)
        low, high = t.confidence_interval(0.9)
        for end in (low, high):
            assert stats.ttest_ind(X - end, Y, equal_var=equal).pvalue == pytest.approx(0.1, rel=1e-10)
    for side, end in (("greater", 0), ("less", 1)):
        interval = stats.ttest_1samp(X, 0, alternative=side).confidence_interval(0.99)
        assert np.isinf(interval[1 - end]) and stats.ttest_1samp(X, interval[end], alternative=side).pvalue == pytest.approx(0.01, rel=1e-10)
    assert stats.ttest_1samp(X, 0).df == 11 and stats.ttest_rel(Z, Z[::-1], axis=1).df.tolist() == [14] * 3
    low, high = stats.pearsonr(X[:9], Y).confidence_interval()
    middle = math.atanh(stats.pearsonr(X[:9], Y).statistic)
    assert (math.atanh(low), math.atanh(high)) == pytest.approx((middle - 1.959963984540054 / 6**0.5, middle + 1.959963984540054 / 6**0.5))
    assert stats.levene(X, Y, center="mean") == pytest.approx(stats.f_oneway(abs(X - X.mean()), abs(Y - Y.mean())), rel=1e-12)
    assert stats.bartlett([1, 2, 3], [7, 8, 9], [0, 1, 2]) == pytest.approx((0, 1), abs=1e-12)
    for test in (stats.pearsonr, stats.spearmanr, stats.linregress, stats.kendalltau, stats.ttest_ind, stats.mannwhitneyu, stats.wilcoxon):
        p = [test(X[:9], Y, alternative=side).pvalue for side in SIDES]
        assert p[0] == pytest.approx(2 * min(p[1:]), rel=1e-9), test
        with pytest.raises(ValueError, match=f'{test.__name__}: alternative must be "two-sided", "less" or "greater", got \'both\''):
            test(X[:9], Y, alternative="both")


def test_several_samples_and_shapes():
    assert stats.kruskal([1, 2], [3, 4], [5, 6]) == pytest.approx((32 / 7, math.exp(-16 / 7)), rel=1e-13)
    assert stats.kruskal([1, 1], [1, 1]) == (nan, nan)
    # The ranks that three judges give to four: sums 4, 6, 8 and 12.
    assert stats.friedmanchisquare([1, 1, 2], [2, 3, 1], [3, 2, 3], [4, 4, 4]).statistic == pytest.approx(12 / 60 * (16 + 36 + 64 + 144) - 45)
    assert stats.jarque_bera([0, 0, 0, 1]) == pytest.approx((26 / 27, math.exp(-13 / 27)), rel=1e-12)
    symmetrical = np.array([-9, -3, -2, -1, 0, 1, 2, 3, 9.0])
    assert stats.skewtest(symmetrical) == (0, 1)
    assert stats.normaltest(X).statistic == pytest.approx(stats.skewtest(X).statistic ** 2 + stats.kurtosistest(X).statistic ** 2)
    assert stats.kurtosistest(symmetrical).statistic > 1 > -1 > stats.kurtosistest(np.sign(symmetrical)).statistic
    assert math.isnan(stats.skewtest([1, 2, 9]).pvalue) and stats.skewtest(X, alternative="less").pvalue == pytest.approx(
        stats.skewtest(-X, alternative="greater").pvalue)


def test_regression():
    line = stats.linregress([1, 2, 3], [1, 2, 4])
    slope, intercept, r, p, error = line
    assert (slope, intercept, r, error, line.intercept_stderr) == pytest.approx((1.5, -2 / 3, math.sqrt(27 / 28), 12**-0.5, (7 / 18) ** 0.5))
    assert p == pytest.approx(1 - 2 / math.pi * math.atan(1.5 * 12**0.5), rel=1e-12)
    noise = 1e-9 * np.array([1, -1, -1, 1])
    assert stats.linregress([1, 2, 3, 4], [1, 2, 3, 4] + noise).stderr == pytest.approx(1e-9 * (2 / 5) ** 0.5, rel=1e-5)
    assert stats.linregress([1, 2, 3, 4], [2, 4, 6, 8]).pvalue == 0
    with pytest.raises(ValueError, match="linregress: x must have different values"):
        stats.linregress([1, 1], [1, 2])
    assert stats.linregress(Z.T, -Z.T).slope.tolist() == [-1, -1, -1]


def test_summaries():
    a = np.array([[1, 2, 2, 5], [3, 3, nan, 1]])
    found = stats.mode(a, axis=1)
    assert found.mode.tolist() == [2, 3] and found.count.tolist() == [2, 2] and stats.mode([3, 1]).mode == 1
    assert stats.mode([nan, nan, 1]).count == 2 and stats.mode([nan, nan, 1], nan_policy="omit") == (1, 1)
    assert stats.mode(np.array([[7, 7], [8, 7]], np.int8), keepdims=True).mode.dtype == np.int8
    np.testing.assert_allclose(stats.zscore([1, 2, 3]), [-1.5**0.5, 0, 1.5**0.5])
    np.testing.assert_array_equal(stats.zscore([[1, 3], [nan, 3]], axis=1), [[-1, 1], [nan, nan]])
    np.testing.assert_array_equal(stats.zmap([5, nan], [1, 3, nan], nan_policy="omit"), [3, nan])
    assert stats.gstd([1, math.e**2]) == pytest.approx(math.exp(2**0.5)) and math.isnan(stats.gstd([1, -1]))
    assert stats.variation([1, 3]) == 0.5 and stats.variation([1, 3], ddof=1) == pytest.approx(0.5**0.5)
    assert stats.tmean(range(10), (2, 6), (False, True)) == 4.5 and stats.tvar([1, 2, 3, 99], (None, 3)) == 1
    assert stats.tmin([1, 2, 3], 1, inclusive=False) == 2 and stats.tmax([[1, 9], [2, 8]], 8, axis=0).tolist() == [2, 8]
    assert stats.tsem([1, 2, 3, 99], (0, 50)) == pytest.approx(3**-0.5) and stats.tstd([0, 2], keepdims=True).shape == (1,)
    with pytest.raises(ValueError, match=r"tmean: limits must leave values, got \(5, 6\)"):
        stats.tmean([1, 2], (5, 6))
    for kind, percent in (("rank", 62.5), ("strict", 25), ("weak", 75), ("mean", 50)):
        assert stats.percentileofscore([1, 2, 2, 3], 2, kind) == percent
    assert stats.scoreatpercentile([0, 10, 20], [25, 50]).tolist() == [5, 10]
    assert stats.scoreatpercentile([0, 10, 20], 30, interpolation_method="higher") == 10
    assert stats.sigmaclip([1, 2, 3, 2, 1, 2, 3, 2, 500], 2, 2).clipped.max() == 3
    assert stats.cumfreq([1, 2, 3, 4], 2).cumcount.tolist() == [2, 4] and stats.relfreq([1, 2, 3, 9], 2, (0, 4)).extrapoints == 1
    binned = stats.binned_statistic([0, 1, 2, 3, 4], [1, 2, 3, 4, 50], "median", bins=[0, 2, 4, 5])
    assert binned.binnumber.tolist() == [1, 1, 2, 2, 3] and binned.statistic.tolist() == [1.5, 3.5, 50]


def test_lanes():
    holes = Z.copy()
    holes[1, 3] = nan
    for test in (lambda x, **o: stats.ttest_1samp(x, 0.1, **o), stats.skewtest, stats.wilcoxon, lambda x, **o: stats.ks_2samp(x, Y[None], **o)):
        for axis in (1, -1):
            found, whole = test(holes, axis=axis), test(Z, axis=axis)
            assert math.isnan(found.pvalue[1]) and found.pvalue[0] == whole.pvalue[0] == pytest.approx(test(Z[:1], axis=axis).pvalue[0])
            assert test(holes, axis=1, nan_policy="omit").pvalue[1] == pytest.approx(test(np.delete(Z, 3, axis=1), axis=1).pvalue[1])
        assert test(Z, axis=1, keepdims=True).pvalue.shape == (3, 1)
        with pytest.raises(ValueError, match="element 3 is missing"):
            test(holes, axis=1, nan_policy="raise")
    assert stats.f_oneway(Z, Z + 1, axis=None).pvalue == pytest.approx(stats.f_oneway(Z.ravel(), Z.ravel() + 1).pvalue)
    assert stats.tmean(Z.reshape(3, 3, 5), axis=(0, 2)).shape == (3,)
    assert stats.linregress([1, 2, nan, 4], [2, 4, 1, 8], nan_policy="omit").slope == pytest.approx(2)
    with pytest.raises(TypeError, match="levene: samples must be numbers"):
        stats.levene(["a"], ["b"])
    with pytest.raises(ValueError, match="linregress: samples must be of one length, got 2, 3"):
        stats.linregress([1, 2], [1, 2, 3])


def test_what_is_taken():
    expected = stats.ttest_1samp([1, 2, 4], 0)
    for data in ([1, None, 2, 4], pd.Series([1, None, 2, 4], dtype="Int64"), np.ma.masked_greater([1, 2, 99, 4], 50)):
        assert stats.ttest_1samp(data, 0, nan_policy="omit") == expected and math.isnan(stats.ttest_1samp(data, 0).pvalue)
        assert stats.zscore(data, nan_policy="omit")[-1] == stats.zscore([1, 2, 4])[-1] and stats.tmean(data, nan_policy="omit") == 7 / 3
    x, y = X.astype(np.float32)[:9], np.arange(9, dtype=np.int8)
    assert stats.linregress(x, y) == stats.linregress(x.astype(float), y.tolist())
    assert stats.levene(x, y) == stats.levene(x.astype(float), y.astype(float))
    table = pd.crosstab([1, 1, 2, 2, 2], [1, 2, 1, 2, 2])
    assert stats.chi2_contingency(table)[1] == stats.chi2_contingency([[1, 1], [1, 2]])[1]
    for cdf in (lambda v: 0.0 if v < 0 else min(v, 1.0), lambda v: min(max(float(v), 0), 1), stats.uniform, vx.Uniform(), "uniform", stats.uniform.cdf):
        assert stats.kstest([0.2, 0.6, 0.7], cdf) == pytest.approx(vx.ks_test([0.2, 0.6, 0.7], vx.Uniform()))
    assert stats.kstest("norm", stats.norm, N=40).pvalue > 1e-6 and stats.kstest(X, Y) == stats.ks_2samp(X, Y)
    with pytest.raises(ValueError, match="kstest: cdf must be the name of a distribution .* got 'foo'"):
        stats.kstest(X, "foo")
    assert stats.t.interval(confidence=0.9, df=4, loc=1, scale=2) == stats.t.interval(0.9, 4, 1, 2)
    assert stats.norm.ppf(q=0.9, loc=1) == stats.norm(1).ppf(q=0.9) and stats.binom.pmf(k=1, n=2, p=0.5) == 0.5
    with pytest.raises(TypeError, match="norm.moment: order must be given"):
        stats.norm.moment()


def test_axes_that_a_sample_lacks_are_its_first():
    means = Z.mean(axis=0)
    found = stats.ttest_1samp(Z, means)
    assert found.statistic == pytest.approx([0] * 15, abs=1e-12) and found.confidence_interval().low.shape == (15,)
    assert stats.ttest_1samp(Z, [0.5], axis=1, keepdims=True).pvalue.shape == (3, 1)
    observed, expected = [16, 18, 16, 14, 12, 12], [[16, 16, 16, 16, 16, 8], [8, 20, 20, 16, 12, 12]]
    both = stats.chisquare(observed, expected, axis=1)
    assert both.pvalue.tolist() == [stats.chisquare(observed, e).pvalue for e in expected]
    assert stats.mannwhitneyu(Z, X, axis=-1).statistic.tolist() == [stats.mannwhitneyu(z, X).statistic for z in Z]
    for test in (stats.ttest_rel, stats.wilcoxon, stats.pearsonr, stats.linregress):
        assert test(Z[0], Z, axis=1).pvalue[1:].tolist() == pytest.approx([test(Z[0], z).pvalue for z in Z[1:]], rel=1e-12)
        with pytest.raises(ValueError):
            test(Z[0, 1:], Z, axis=1)
    none = np.empty((0, 3))
    assert stats.tmean(none, axis=1).shape == stats.mode(none, axis=1).count.shape == (0,)


def test_forms_of_arguments_and_results():
    assert stats.chisquare([4, 5], [5, 5], sum_check=False) == pytest.approx((0.2, math.erfc(math.sqrt(0.1))), rel=1e-13)
    values = np.array([30.0, 10, 20, 10])
    for method, ranks in (("ordinal", [4, 1, 3, 2]), ("min", [4, 1, 3, 1]), ("dense", [3, 1, 2, 1])):
        found = stats.rankdata(values, method)
        assert found.tolist() == ranks and np.arange(5)[found].tolist() == ranks
    assert stats.rankdata(values).dtype == float and np.isnan(stats.rankdata([1, nan], "min")).all()
    assert (stats.norm.shapes, stats.beta.shapes, stats.beta.numargs) == (None, "a, b", 2)
    assert stats.wilcoxon(X, method="approx") == stats.wilcoxon(X, method="asymptotic")
    assert stats.describe([[1, 2], [3, 4]], nan_policy="omit").nobs == 2
    for empty in ([], np.empty((0, 3))):
        with pytest.raises(ValueError, match="describe: a must not be empty"):
            stats.describe(empty, axis=None)
    with pytest.raises(ValueError, match="pearsonr: there must be at least 2 pairs, got 1"):
        stats.pearsonr([1], [2])
    x, v, edges = [1, 2, 2, 7], [1.0, 2, 4, 8], [0, 3, 5, 9]
    assert stats.binned_statistic(x, v, np.sum, edges).statistic.tolist() == [7, 0, 8]
    assert np.isnan(stats.binned_statistic(x, v, max, edges).statistic).tolist() == [False, True, False]
    assert stats.binned_statistic(x, v, "count", bins=2, range=[(0, 8)]).statistic.tolist() == [3, 1]


def test_bandwidths_of_a_density():
    kde = stats.gaussian_kde([1, 2, 4])
    t = np.linspace(-3, 8, 7)
    assert kde.logpdf(t) == pytest.approx(np.log(kde(t)), rel=1e-12)
    h = math.sqrt(kde.covariance[0, 0])
    assert kde.logpdf(1000) == pytest.approx([vx.Normal(4, h).logpdf(1000) - math.log(3)], rel=1e-12)
    assert kde.factor == kde.scotts_factor() == kde.covariance_factor() == 3**-0.2 and kde.inv_cov * kde.covariance == 1
    for method in ("silverman", 0.7, lambda k: k.n / 10):
        kde.set_bandwidth(method)
        assert kde(t).tolist() == stats.gaussian_kde([1, 2, 4], method)(t).tolist()
    kde.set_bandwidth()
    assert kde.factor == 0.3 and stats.gaussian_kde(np.arange(49)).resample().shape == (1, 49)
    with pytest.raises(ValueError, match='bw_method must be "scott" or "silverman", got \'foo\''):
        stats.gaussian_kde([1, 2], "foo")


def test_bootstrap_takes_functions_of_lanes():
    plain = stats.bootstrap((X,), np.mean, n_resamples=400, rng=3, confidence_level=0.9)
    for statistic, vectorized in ((lambda x, axis: np.mean(x, axis=axis), None), (lambda x, axis=0: np.mean(x, axis=axis), True), (lambda x: np.mean(x), False)):
        assert stats.bootstrap((X,), statistic, vectorized=vectorized, n_resamples=400, rng=3, batch=10).standard_error == plain.standard_error
    low, high = plain.confidence_interval
    for side, ends in (("less", (-math.inf, high)), ("greater", (low, math.inf))):
        found = stats.bootstrap((X,), np.mean, n_resamples=400, rng=3, confidence_level=0.95, alternative=side)
        assert found.confidence_interval == pytest.approx(ends, rel=1e-9)
    with pytest.raises(NotImplementedError, match="bootstrap: axis must be 0 or -1, got 1"):
        stats.bootstrap((Z,), np.mean, axis=1)


class Axes:
    """What probplot draws on."""

    def __init__(self):
        self.calls = []

    def __getattr__(self, name):
        return lambda *a: self.calls.append((name, a))


def test_empirical():
    e = stats.ecdf([4, 1, 2, 2])
    assert e.cdf.quantiles.tolist() == [1, 2, 4] and e.cdf.probabilities.tolist() == [0.25, 0.75, 1] and e.sf.probabilities.tolist() == [0.75, 0.25, 0]
    np.testing.assert_array_equal(e.cdf.evaluate([0, 1, 3, 9, nan]), [0, 0.25, 0.75, 1, nan])
    np.testing.assert_array_equal(e.sf.evaluate([-9, 2]), [1, 0.25])
    low, high = e.cdf.confidence_interval()
    assert high.probabilities[1] == 1 and low.probabilities[1] == pytest.approx(0.75 - 1.959963984540054 * (3 / 64) ** 0.5)
    medians = stats.uniform.ppf((np.arange(1, 6) - 0.3175) / 5.365)
    medians[[0, -1]] = 1 - 0.5**0.2, 0.5**0.2
    axes = Axes()
    (quantiles, ordered), (slope, intercept, r) = stats.probplot(3 + 2 * stats.norm.ppf(medians)[::-1], plot=axes)
    assert (slope, intercept, r) == pytest.approx((2, 3, 1)) and stats.norm.cdf(quantiles) == pytest.approx(medians)
    assert [name for name, _ in axes.calls] == ["plot", "plot", "set_title", "set_xlabel", "set_ylabel"]
    assert stats.probplot([1, 2, 3], sparams=(4,), dist="t", fit=False)[0][1] == 0


FREE = {"norm": (), "uniform": (), "laplace": (), "logistic": (), "cauchy": (), "gumbel_r": (), "moyal": (), "gennorm": (1.5,), "expon": ()}


@pytest.mark.parametrize("name", FREE)
def test_fits_with_a_location(name):
    law = getattr(stats, name)
    x = law.rvs(*FREE[name], 1, 2, size=150, random_state=3)
    for fixed in ({}, {"floc": 0.5 if name in ("uniform", "expon") else 1.1}):
        best = law.fit(x, **fixed)
        assert best[-2] == fixed.get("floc", best[-2])
        for i, step in itertools.product(range(len(best)), (-1e-3, 1e-3)):
            if i != len(best) - 2 or not fixed:
                near = [v + step * best[-1] * (j == i) for j, v in enumerate(best)]
                assert law.nnlf(near, x) >= law.nnlf(best, x) - 1e-9, near
        # As the data are moved and stretched, so are loc and scale.
        moved = law.fit(10 * x - 3, **{k: 10 * v - 3 for k, v in fixed.items()})
        assert moved == pytest.approx((*best[:-2], 10 * best[-2] - 3, 10 * best[-1]), rel=1e-6)


def test_fits_of_shapes():
    for name, shapes in (("beta", (2, 3)), ("t", (4,)), ("chi2", (3,)), ("f", (5, 9))):
        law = getattr(stats, name)
        x = law.rvs(*shapes, size=200, random_state=5)
        best = law.fit(3 + 2 * x, floc=3, fscale=2)
        assert best[-2:] == (3, 2) and all(law.nnlf((*np.multiply(best[:-2], s), 3, 2), 3 + 2 * x) > law.nnlf(best, 3 + 2 * x) for s in (0.99, 1.01))
        with pytest.raises(NotImplementedError, match=f"{name}.fit: give floc and fscale"):
            law.fit(x)
    c, loc, scale = stats.triang.fit(stats.triang.rvs(0.3, 1, 2, size=500, random_state=1))
    assert (c, loc, scale) == pytest.approx((0.3, 1, 2), abs=0.15)
    assert stats.uniform.fit([1, 2], fscale=3) == (0, 3) and stats.laplace.fit([1, 2, 9], fscale=3) == (2, 3)
    assert stats.gamma.fit([1, 2, 6], 1.5, floc=0, loc=3, scale=2) == stats.gamma.fit([1, 2, 6], floc=0)
    for call, error, text in (
            (lambda: stats.gamma.fit([1, 2]), NotImplementedError, "gamma.fit: give floc, as floc=0"),
            (lambda: stats.gamma.fit([1, 2], fa=2, floc=0), NotImplementedError, "gamma.fit: fa cannot be given"),
            (lambda: stats.beta.fit([0.1, 0.2], f1=2), NotImplementedError, "beta.fit: f1 cannot be given"),
            (lambda: stats.gamma.fit([1, 2], foo=2), TypeError, "gamma.fit: unknown argument foo"),
            (lambda: stats.norm.fit([1, 2], floc=0, fscale=1), ValueError, "norm.fit: one parameter must be free"),
            (lambda: stats.norm.fit([1, nan]), ValueError, "norm.fit: data must be finite, got nan"),
            (lambda: stats.uniform.fit([1, 2], floc=1.5), ValueError, "uniform.fit: data must not be below floc=1.5, got 1"),
            (lambda: stats.cauchy.fit([1, 1, 2, 3], floc=1), ValueError, "cauchy.fit: the likelihood of these data has no maximum"),
            (lambda: stats.gennorm.fit([0.9, 0.95, 1, 1], floc=0), ValueError, "gennorm.fit: the likelihood of these data has no maximum"),
            (lambda: stats.gumbel_r.fit([2, 2], floc=2), ValueError, "gumbel_r.fit: the likelihood of these data has no maximum")):
        with pytest.raises(error, match="^" + text):
            call()


def test_names_that_are_elsewhere():
    with pytest.raises(AttributeError, match="^vexel.compat.scipy has no tukey_hsd: take it from scipy.stats$"):
        stats.tukey_hsd
    with pytest.raises(AttributeError, match=r"^vexel.compat.scipy has no qmc.LatinHypercube: take it from scipy.stats.qmc$"):
        stats.qmc.LatinHypercube
    assert not hasattr(stats, "tukey_hsd") and set(stats.__all__) == set(dir(stats)) and all(hasattr(stats, n) for n in dir(stats))
    with pytest.raises(ImportError):
        importlib.import_module("vexel.compat.scipy.special")
    for found in (stats.ttest_1samp(X, 0), stats.pearsonr(X, -X), stats.ks_2samp(X, Y), stats.linregress(X, X), stats.binomtest(3, 5), stats.mode([1, 1])):
        assert pickle.loads(pickle.dumps(found)) == found and type(found).__name__ in repr(found)


@pytest.mark.parametrize("family, shapes", [(stats.norm, ()), (stats.gamma, (2.5,)), (stats.lognorm, (0.7,)), (stats.beta, (2, 3)), (stats.expon, ())])
def test_arrays_of_places_and_scales_are_laws_each(family, shapes):
    x, p = np.array([0.3, 1.0, -2.0, 0.7]), np.array([0.1, 0.5, 1.5, 0.9])
    places, scales = np.array([0.0, -1.0, -3.0, np.nan]), np.array([1.0, 2.0, 0.5, 1.0])
    for method, first in (("pdf", x), ("logpdf", x), ("cdf", x), ("logsf", x), ("ppf", p), ("isf", p)):
        each = [getattr(family(*shapes, loc=a, scale=b), method)(v) for v, a, b in zip(first, places, scales)]
        np.testing.assert_allclose(getattr(family, method)(first, *shapes, loc=places, scale=scales), each, rtol=1e-13)
    assert np.isnan(family.cdf(1.0, *shapes, loc=0, scale=[-1, 0, np.inf])).all()


def test_several_p_values():
    p = [0.01, 0.02, 0.3, 0.5]
    # Fisher's for four: the chi-square tail of eight degrees is a finite sum.
    half = -math.log(math.prod(p))
    assert stats.combine_pvalues(p) == pytest.approx((2 * half, math.prod(p) * sum(half**k / math.factorial(k) for k in range(4))), rel=1e-13)
    assert stats.combine_pvalues([1e-200] * 2, method="stouffer").pvalue == pytest.approx(vx.Normal().sf(math.sqrt(2) * vx.Normal().isf(1e-200)))
    assert stats.combine_pvalues([1e-30, 0.5], method="tippett").pvalue == pytest.approx(2e-30, rel=1e-14)
    assert stats.false_discovery_control([0.04, 0.01, 0.03, 0.5]).tolist() == pytest.approx([4 / 75, 0.04, 4 / 75, 0.5])
    assert stats.false_discovery_control(np.reshape([0.04, 0.01, 0.03, 0.5], (2, 2)), axis=None).shape == (4,)
    for refused in (lambda: stats.combine_pvalues([0.5, 1.5]), lambda: stats.false_discovery_control([-0.1])):
        with pytest.raises(ValueError, match=r"must be in \[0, 1\], got"):
            refused()


def test_distances_of_laws():
    assert stats.entropy([1, 1, 2], base=2) == 1.5 and stats.entropy([1, 0], [1, 1], base=2) == 1 and stats.entropy([1, 1], [1, 0]) == math.inf
    assert stats.wasserstein_distance([0, 1, 3], [5, 6, 8]) == 5 and stats.wasserstein_distance([0, 2], [1], [1, 3]) == 1
    with pytest.raises(ValueError, match="wasserstein_distance: v_values must not be empty"):
        stats.wasserstein_distance([1], [])
