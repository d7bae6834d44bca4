// Order, counts, series and densities of the language: rows over vexel/ordering.hpp, series.hpp,
// kernel_density.hpp and hypothesis.hpp.

#include <algorithm>
#include <optional>
#include <vexel/hypothesis.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>
#include <vexel/series.hpp>

#include "builtins/builtins.hpp"
#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "builtins/functions/statistics.hpp"
#include "builtins/tables/tables.hpp"
#include "mathematics/elementwise.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"

namespace vexel {

namespace {

// Lists, and arrays of host objects, of exact numbers are sorted exactly.
bool isExactData(Call& call, const char* parameter, Handles& all) {
  const ALGEB x = call.value(parameter);
  if (!isContainer(x) || isMachineArray(x)) {
    return false;
  }
  elementsOf(call.state(), x, all);
  return std::all_of(all.begin(), all.end(), [](ALGEB e) { return isExact(e); });
}

// The places that sort texts, by code point, or dates, with missing ones last or left out; nothing
// for other data.
std::optional<std::vector<std::int64_t>> orderOfTextsOrDates(Call& call, Handles& all) {
  State& state = call.state();
  const ALGEB x = call.value("x");
  if (!isContainer(x) || isMachineArray(x)) {
    return std::nullopt;
  }
  elementsOf(state, x, all);
  const auto first = std::find_if(all.begin(), all.end(), [](ALGEB e) { return !isNull(e); });
  if (first == all.end() || (!is(*first, Tag::string) && !is(*first, Tag::date))) {
    return std::nullopt;
  }
  const bool areDates = isDate(*first);
  std::vector<std::int64_t> places;
  std::vector<std::int64_t> missing;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto at = static_cast<std::int64_t>(i);
    if (isNull(all[i])) {
      missing.push_back(at);
    } else if (is(all[i], areDates ? Tag::date : Tag::string)) {
      places.push_back(at);
    } else {
      return std::nullopt;
    }
  }
  if (!missing.empty() && call.missing() == Missing::raise) {
    raise(state, "missing value at %1", newInteger(state, missing[0] + 1));
  }
  std::stable_sort(places.begin(), places.end(), [&](std::int64_t i, std::int64_t j) {
    const ALGEB a = all[static_cast<std::size_t>(i)];
    const ALGEB b = all[static_cast<std::size_t>(j)];
    return areDates ? daysOf(a) < daysOf(b) : text(a) < text(b);
  });
  if (call.missing() != Missing::omit) {
    places.insert(places.end(), missing.begin(), missing.end());
  }
  return places;
}

ALGEB sort(Call& call) {
  Handles elements(call.state());
  if (const auto places = orderOfTextsOrDates(call, elements)) {
    Handles sorted(call.state());
    for (const std::int64_t at : *places) {
      sorted.push(elements[static_cast<std::size_t>(at)]);
    }
    const ALGEB list = newList(call.state(), sorted.span());
    return isList(call.value("x"))
               ? list
               : columnFrom(call.state(), list, static_cast<std::int64_t>(places->size()));
  }
  Handles exact(call.state());
  const ALGEB like = call.value("x");
  if (isExactData(call, "x", exact)) {
    std::stable_sort(exact.begin(), exact.end(), [&](ALGEB a, ALGEB b) {
      return compare(call.state(), a, b) == std::partial_ordering::less;
    });
    if (isList(like)) {
      return newList(call.state(), exact.span());
    }
  }
  const SortOptions options{.missing = call.missing()};
  const Data x = call.data("x");
  if (x.element() == Element::int64 || x.element() == Element::int32) {
    return call.integers(sorted<std::int64_t>(x, options), like);
  }
  return call.reals(vexel::sort(x, options), like);
}

ALGEB argsort(Call& call) {
  Handles elements(call.state());
  const auto places = orderOfTextsOrDates(call, elements);
  std::vector<std::int64_t> positions =
      places ? *places : vexel::argsort(call.data("x"), {.missing = call.missing()});
  for (std::int64_t& p : positions) {
    ++p;  // the language counts from 1
  }
  return call.integers(positions, call.value("x"));
}

ALGEB rank(Call& call) {
  return call.reals(
      vexel::rank(call.data("x"), {.method = call.choice("method", RankMethod::average),
                                   .missing = call.missing()}),
      call.value("x"));
}

TallyOptions tallyOptions(Call& call) {
  return {.weights = call.data("weights"), .missing = call.missing()};
}

ALGEB count(Call& call, std::size_t n) {
  return newInteger(call.state(), static_cast<std::int64_t>(n));
}

// Of exact numbers: equal ones are one object.
ALGEB exactTally(Call& call, Handles& all) {
  State& state = call.state();
  std::stable_sort(all.begin(), all.end(), [&](ALGEB a, ALGEB b) {
    return compare(state, a, b) == std::partial_ordering::less;
  });
  Handles values(state);
  Handles counts(state);
  for (const ALGEB x : all.span()) {
    if (values.empty() || values.back() != x) {
      values.push(x);
      counts.push(immediate(0));
    }
    counts.back() = immediate(immediateValue(counts.back()) + 1);
  }
  return call.parts({{"values", newList(state, values.span())},
                     {"counts", newList(state, counts.span())},
                     {"missing", immediate(0)}});
}

ALGEB tally(Call& call) {
  if (const ALGEB ofTexts = tallyOfTexts(call)) {
    return ofTexts;
  }
  Handles exact(call.state());
  if (!call.given("weights") && isExactData(call, "x", exact)) {
    return exactTally(call, exact);
  }
  const Data x = call.data("x");
  const ALGEB like = call.value("x");
  if (x.element() == Element::int64 || x.element() == Element::int32) {
    const auto t = tallyOf<std::int64_t>(x, tallyOptions(call));
    return call.parts({{"values", call.integers(t.values, like)},
                       {"counts", call.reals(t.counts, like)},
                       {"missing", count(call, t.missing)}});
  }
  const auto t = tallyOf<double>(x, tallyOptions(call));
  return call.parts({{"values", call.reals(t.values, like)},
                     {"counts", call.reals(t.counts, like)},
                     {"missing", count(call, t.missing)}});
}

ALGEB mode(Call& call) { return call.real(vexel::mode(call.data("x"), tallyOptions(call))); }

Bins binsOf(Call& call) {
  const ALGEB bins = call.value("bins");
  if (bins == nullptr) {
    return BinRule::automatic;
  }
  if (isInteger(bins)) {
    return call.integer("bins");
  }
  if (isContainer(bins)) {
    return call.data("bins");
  }
  return call.choice("bins", BinRule::automatic);
}

HistogramOptions histogramOptions(Call& call) {
  return {.weights = call.data("weights"),
          .range = call.range("range"),
          .density = call.given("density") && call.boolean("density"),
          .missing = call.missing()};
}

ALGEB histogram(Call& call) {
  const HistogramResult h = vexel::histogram(call.data("x"), binsOf(call), histogramOptions(call));
  const ALGEB result = call.parts({{"counts", call.reals(h.counts, nullptr)},
                                   {"edges", call.reals(h.edges, nullptr)},
                                   {"missing", count(call, h.missing)}});
  if (call.boolean("plot")) {
    State& state = call.state();
    apply(state, nameFunction(name(state, "plot")), std::span<const ALGEB>(&result, 1));
  }
  return result;
}

ALGEB frequencyTable(Call& call) {
  const FrequencyTable t = frequency_table(call.data("x"), binsOf(call), histogramOptions(call));
  return call.parts({{"lower", call.reals(t.lower, nullptr)},
                     {"upper", call.reals(t.upper, nullptr)},
                     {"count", call.reals(t.count, nullptr)},
                     {"relative", call.reals(t.relative, nullptr)},
                     {"cumulative", call.reals(t.cumulative, nullptr)}});
}

ALGEB cumulative(Call& call) {
  return call.reals(vexel::cumulative(call.data("x"), {.weights = call.data("weights"),
                                                       .kind = call.choice("kind", Cumulative::sum),
                                                       .missing = call.missing()}),
                    call.value("x"));
}

TrimOptions trimOptions(Call& call) {
  return {.weights = call.data("weights"), .missing = call.missing()};
}

ALGEB trim(Call& call) {
  if (const ALGEB text = trimmedText(call)) {
    return text;
  }
  if (!call.given("cut")) {
    call.refuse("x", "texts, or numbers and what to cut,");
  }
  return call.reals(trimmed<double>(call.data("x"), cutOf(call), trimOptions(call)),
                    call.value("x"));
}

ALGEB winsorize(Call& call) {
  return call.reals(winsorized<double>(call.data("x"), cutOf(call), trimOptions(call)),
                    call.value("x"));
}

// --- series

ALGEB moving(Call& call) {
  const Data x = call.data("x");
  const MovingOptions options{.weights = call.data("weights"),
                              .min_count = call.size("min_count", 1),
                              .edges = call.choice("edges", Edges::shrink),
                              .align = call.choice("align", Align::center),
                              .missing = call.missing()};
  const std::size_t window = call.size("window");
  std::vector<double> out(x.size());
  const std::span<double> to(out);
  const ALGEB statistic = call.value("statistic");
  if (call.given("q")) {
    moving(x, window, Quantile{call.number("q")}, to, options);
  } else if (statistic != nullptr && is(statistic, Tag::procedure)) {
    State& state = call.state();
    moving(x, window, WindowStatistic([&](std::span<const double> values) {
             const ALGEB list = call.reals(values, nullptr);
             return doubleOfValue(state, apply(state, statistic, std::span<const ALGEB>(&list, 1)));
           }),
           to, options);
  } else {
    moving(x, window, statisticOf(call), to, options);
  }
  return call.reals(out, call.value("x"));
}

ALGEB filter(Call& call) {
  if (is(call.value("x"), Tag::table) || is(call.value("taps"), Tag::procedure)) {
    return filterRows(call);
  }
  return call.reals(
      vexel::filter(call.data("x"), call.data("taps"),
                    {.recursive = call.boolean("recursive"), .initial = call.data("initial")}),
      call.value("x"));
}

ALGEB autocorrelation(Call& call) {
  const AutocorrelationOptions options{.missing = call.missing()};
  const ALGEB lags = call.value("lags");
  if (!isContainer(lags)) {
    return call.reals(vexel::autocorrelation(call.data("x"), call.size("lags"), options), nullptr);
  }
  const Data list = call.data("lags");
  std::vector<std::size_t> wanted;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (!(list[i] >= 0 && list[i] < 0x1p53)) {
      call.refuse("lags", "lags from 0");
    }
    wanted.push_back(static_cast<std::size_t>(list[i]));
  }
  return call.reals(
      vexel::autocorrelation(call.data("x"), std::span<const std::size_t>(wanted), options), lags);
}

// --- densities and tests

ALGEB kde(Call& call) {
  const ALGEB b = call.value("bandwidth");
  const Bandwidth bandwidth = b != nullptr && isReal(b)
                                  ? Bandwidth(call.number("bandwidth"))
                                  : Bandwidth(call.choice("bandwidth", BandwidthRule::silverman));
  auto density = vexel::kde(call.data("x"), {.weights = call.data("weights"),
                                             .bandwidth = bandwidth,
                                             .kernel = densityKernelOf(call),
                                             .points = call.size("points", 512),
                                             .bounds = call.range("bounds"),
                                             .missing = call.missing()});
  return newForeign(call.state(), Tag::foreign,
                    std::make_unique<DensityObject>(std::move(density)));
}

ALGEB testResult(Call& call, const TestResult& t) {
  return call.parts({{"statistic", call.real(t.statistic)}, {"pvalue", call.real(t.pvalue)}});
}

ALGEB shapiro(Call& call) {
  return testResult(call, vexel::shapiro(call.data("x"), {.missing = call.missing()}));
}

ALGEB ksTest(Call& call) {
  const LawObject* const law = objectOf<LawObject>(call.value("distribution"));
  const TestOptions options{.missing = call.missing()};
  if (law != nullptr) {
    const auto cdf = [law](double t) { return law->at(LawFunction::cdf, t); };
    return testResult(call, ks_test(call.data("x"), cdf, options));
  }
  if (!isProcedure(call.value("distribution"))) {
    call.refuse("distribution", "a law or a procedure");
  }
  NumericProcedure f(call.state(), call.value("distribution"));
  const auto cdf = [&f](double t) { return f(t); };
  return testResult(call, ks_test(call.data("x"), cdf, options));
}

ALGEB chiSquareTest(Call& call) {
  return testResult(call,
                    chi_square_test(call.data("observed"), call.data("expected"),
                                    {.ddof = call.number("ddof"), .missing = call.missing()}));
}

ALGEB tTest(Call& call) {
  const TTestOptions options{.equal_var = call.boolean("equal_var"), .missing = call.missing()};
  if (call.given("y") && isContainer(call.value("y"))) {
    return testResult(call, t_test(call.data("x"), call.data("y"), options));
  }
  return testResult(call,
                    t_test(call.data("x"), call.number(call.given("y") ? "y" : "mean"), options));
}

constexpr FunctionRow kRows[] = {
    {"sort", "x; missing = propagate",
     "x ascending, missing values last; exact numbers exactly, texts by code point, dates by day",
     "sort([3, 1/2, 2]);", sort},
    {"argsort", "x; missing = propagate",
     "the positions, from 1, that sort x, texts and dates too; stable", "argsort([30, 10, 20]);",
     argsort},
    {"rank", "x; method = average, missing = propagate",
     "ranks from 1: average, min, max, dense or ordinal",
     "rank([3, 1, 3]), rank([3, 1, 3], method = min);", rank},
    {"tally", "x; weights, missing = propagate", "distinct values and their counts",
     "tally([2, 1, 2]);", tally},
    {"mode", "x; weights, missing = propagate", "the most frequent value, the smallest of several",
     "mode([2, 1, 2]);", mode},
    {"histogram",
     "x, bins = auto; range, density = false, plot = false, weights, missing = propagate",
     "counts in bins: a number, edges, or auto, fd, scott, sturges; plot = true draws them",
     "h := histogram([1, 2, 3, 4], 2): h[counts], h[edges];", histogram},
    {"frequency_table", "x, bins = auto; range, weights, missing = propagate",
     "lower, upper, count, relative and cumulative frequency of bins",
     "t := frequency_table([1, 2, 3, 4], [0, 2, 5]): t[count], t[cumulative];", frequencyTable},
    {"cumulative", "x; kind = sum, weights, missing = propagate",
     "running sum, product, min or max",
     "cumulative([1, 2, 3]), cumulative([1, 2, 3], kind = product);", cumulative},
    {"trim", "x, cut = none; weights, missing = propagate",
     "x without the fraction cut at each end; of texts each without the blanks at its ends",
     "trim([5, 1, 100, 2, 3], 1/5);", trim},
    {"winsorize", "x, cut; weights, missing = propagate",
     "x with the fraction cut at each end moved to the nearest value that stays",
     "winsorize([5, 1, 100, 2, 3], 1/5);", winsorize},
    {"moving",
     "x, window, statistic = mean; q, min_count = 1, align = center, edges = shrink, weights, "
     "missing = propagate",
     "a statistic of the window around each element",
     "moving([1, 2, 3, 10], 3), moving([1, 2, 3, 10], 3, median), moving([1, 2, 3, 10], 2, max, "
     "align = right);",
     moving},
    {"filter", "x, taps; recursive = false, initial",
     "a linear filter; with a procedure as taps the elements or rows where it is true",
     "filter([1, 2, 3], [1, -1]), filter([1, 1, 1], [1/2], recursive = true);", filter},
    {"autocorrelation", "x, lags; missing = propagate",
     "autocorrelations of lags 0 to k, or of some", "autocorrelation([1, 2, 3, 4], 1);",
     autocorrelation},
    {"kde",
     "x; bandwidth = silverman, kernel = gaussian, points = 512, bounds, weights, missing = "
     "propagate",
     "a kernel density: d[x], d[y], d[bandwidth], pdf(d, t), cdf(d, t), sample(d, n)",
     "d := kde([1, 2, 3], bandwidth = 1/2, points = 3): d[x], d[y];", kde},
    {"shapiro", "x; missing = propagate", "the Shapiro-Wilk test of normality",
     "shapiro([1, 2, 4, 8])[pvalue];", shapiro},
    {"ks_test", "x, distribution; missing = propagate", "the Kolmogorov-Smirnov test of a law",
     "ks_test([0.1, 0.4, 0.7], Uniform())[statistic];", ksTest},
    {"chi_square_test", "observed, expected = none; ddof = 0, missing = propagate",
     "Pearson's test of counts", "chi_square_test([10, 20, 30])[pvalue];", chiSquareTest},
    {"t_test", "x, y = 0; mean = 0, equal_var = false, missing = propagate",
     "Student's test of a mean, Welch's of two",
     "t_test([1, 2, 3], mean = 1)[statistic], t_test([1, 2, 3], [4, 5, 7])[pvalue];", tTest},
};

}  // namespace

void DensityObject::print(State&, std::string& out) const {
  out += "KernelDensity(" + std::to_string(density.x().size()) + " points)";
}

ALGEB DensityObject::field(State& state, std::string_view part) {
  if (part == "bandwidth") {
    return newFloat(state, density.bandwidth());
  }
  if (part != "x" && part != "y") {
    return nullptr;
  }
  const std::vector<double>& from = part == "x" ? density.x() : density.y();
  const RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(from.size())};
  return newArray(state, settings, from.data(), bounds);
}

Statistic statisticOf(Call& call) { return call.choice("statistic", Statistic::mean); }

DensityKernel densityKernelOf(Call& call) { return call.choice("kernel", DensityKernel::gaussian); }

void defineOrderFunctions(State& state) { defineRows(state, kRows); }

}  // namespace vexel
