// The laws: parameters of any kind, and what holds for every distribution.

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>
#include <vexel/distributions.hpp>

#include "choices.hpp"

namespace fuzz {
namespace {

namespace vx = vexel;

template <typename L>
std::string text(const L& law) {
  std::string all = L::name;
  if constexpr (requires { L::fields; }) {
    std::apply(
        [&](const auto&... field) {
          const auto add = [&](const auto& f) {
            if constexpr (!std::is_same_v<std::remove_cvref_t<decltype(law.parameters().*f.member)>,
                                          vx::Data>) {
              char buffer[64];
              std::snprintf(buffer, sizeof buffer, " %.17g",
                            static_cast<double>(law.parameters().*f.member));
              all += buffer;
            } else {
              const vx::Data data = law.parameters().*f.member;
              for (std::size_t i = 0; i < data.size(); ++i) {
                all += (i == 0 ? " [" : " ") + std::to_string(data[i]);
              }
              all += "]";
            }
          };
          (add(field), ...);
        },
        L::fields);
  }
  return all;
}

// Laws whose methods give NaN where no number can be had.
template <typename L>
constexpr bool mayFail = std::string_view(L::name).starts_with("NonCentral");

// Laws whose sums and steps grow with their parameters: not taken beyond moderate ones yet.
template <typename L>
constexpr bool takesLong = mayFail<L> || std::is_same_v<L, vx::NegativeBinomial>;

// Parameters of a size at which every method has a number; beyond it a law must end, no more.
bool isModerate(double x) { return x == 0 || (std::abs(x) > 1e-60 && std::abs(x) < 1e60); }

template <typename L>
bool isModerate(const L& law) {
  bool all = true;
  if constexpr (std::is_same_v<L, vx::Empirical>) {
    const vx::Data weights = law.parameters().weights;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      all = all && isModerate(weights[i]) && isModerate(law.parameters().x[i]);
    }
  } else if constexpr (requires { L::fields; }) {
    std::apply(
        [&](const auto&... field) {
          ((all = all && isModerate(static_cast<double>(law.parameters().*field.member))), ...);
        },
        L::fields);
  }
  return all;
}

template <typename L>
void require(bool holds, const L& law, const char* what, double x, double y = 0, double z = 0) {
  if (!holds && isModerate(law)) {
    char numbers[120];
    std::snprintf(numbers, sizeof numbers, "%.17g %.17g %.17g", x, y, z);
    fail(text(law) + ": " + what + ": " + numbers);
  }
}

template <typename L>
void checkProbabilities(const L& law, double x, double y) {
  const double cdf = law.cdf(x);
  const double sf = law.sf(x);
  if (std::isnan(x) || std::isnan(cdf) || std::isnan(sf)) {
    require(std::isnan(x) ? std::isnan(cdf) && std::isnan(sf) : mayFail<L>, law, "cdf, sf are NaN",
            x, cdf, sf);
    return;
  }
  require(cdf >= 0 && cdf <= 1 && sf >= 0 && sf <= 1, law, "cdf, sf in [0, 1]", x, cdf, sf);
  require(std::abs(cdf + sf - 1) <= 1e-11, law, "cdf + sf = 1", x, cdf, sf);
  const double logcdf = law.logcdf(x);
  const double logsf = law.logsf(x);
  require(atMost(logcdf, 0) && atMost(logsf, 0), law, "logcdf, logsf <= 0", x, logcdf, logsf);
  const auto density = [&](double t) {
    if constexpr (L::discrete) {
      return law.pmf(t);
    } else {
      return law.pdf(t);
    }
  };
  const double condition = std::isfinite(density(x)) ? std::abs(x) * density(x) / cdf : INFINITY;
  if (cdf > 1e-290 && cdf < 0.9 && !mayFail<L> && (L::discrete || condition < 1e6)) {
    require(std::abs(std::exp(logcdf) / cdf - 1) < 1e-9, law, "exp(logcdf) = cdf", x, logcdf, cdf);
  }
  if (x < y) {
    const double slack = std::isfinite(condition) ? 1e-11 + 1e-14 * condition : 1e-11;
    require(atMost(cdf, law.cdf(y), slack), law, "cdf ascends", x, y, cdf - law.cdf(y));
    require(atMost(law.sf(y), sf, slack), law, "sf descends", x, y, law.sf(y) - sf);
  }
  require(density(x) >= 0 || (mayFail<L> && std::isnan(density(x))), law, "density >= 0", x,
          density(x));
  const vx::Interval support = law.support();
  if (x < support.low || x > support.high) {
    require(density(x) == 0 && cdf == (x < support.low ? 0 : 1), law, "nothing outside", x,
            density(x), cdf);
  }
}

template <typename L>
void checkQuantiles(const L& law, double p, double q) {
  const double x = law.quantile(p);
  const double y = law.isf(p);
  const vx::Interval support = law.support();
  if (std::isnan(p) || std::isnan(x) || std::isnan(y)) {
    require(std::isnan(p) ? std::isnan(x) && std::isnan(y) : mayFail<L>, law, "quantiles are NaN",
            p, x, y);
    return;
  }
  require(x >= support.low && x <= support.high && y >= support.low && y <= support.high, law,
          "quantiles in the support", p, x, y);
  if (q >= p && q <= 1) {
    require(atMost(x, law.quantile(q), 1e-9), law, "quantile ascends", p, q, x - law.quantile(q));
    require(atMost(law.isf(q), y, 1e-9), law, "isf descends", p, q, law.isf(q) - y);
  }
  if (L::discrete && x == support.low) {
    return;
  }
  if constexpr (L::discrete) {
    require(atMost(p, law.cdf(x), 1e-9) || mayFail<L>, law, "cdf(quantile(p)) >= p", p, x,
            law.cdf(x));
  }
}

template <typename L>
void checkMoments(const L& law) {
  const double var = law.var();
  require(!(var < 0), law, "var >= 0", var);
  require(same(law.std(), std::sqrt(var)) || !std::isfinite(var) || std::isfinite(law.std()), law,
          "std is var's root", law.std(), var);
  const vx::Interval support = law.support();
  const double mean = law.mean();
  require(!(support.low > support.high), law, "support", support.low, support.high);
  require(atMost(support.low, mean) && atMost(mean, support.high), law, "mean in the support", mean,
          support.low, support.high);
  const double skewness = law.skewness();
  const double kurtosis = law.kurtosis();
  // Kurtosis is at least skewness^2 - 2.
  require(!std::isfinite(skewness) || !std::isfinite(kurtosis) ||
              atMost(skewness * skewness - 2, kurtosis, 1e-6) || mayFail<L> ||
              std::is_same_v<L, vx::Empirical>,  // of weights of all sizes
          law, "skewness, kurtosis", skewness, kurtosis);
}

// Arrays of any form give what scalars give.
template <typename L>
void checkArrays(Choices& choices, const L& law) {
  const Elements x(choices, 24);
  const std::vector<double> all = x.doubles();
  const auto compare = [&](const std::vector<double>& got, auto one) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      require(same(got[i], one(all[i])), law, "array as scalars", all[i], got[i], one(all[i]));
    }
  };
  switch (choices.below(5)) {
    case 0:
      compare(law.cdf(x), [&](double t) { return law.cdf(t); });
      break;
    case 1:
      compare(law.logsf(x), [&](double t) { return law.logsf(t); });
      break;
    case 2:
      if constexpr (L::discrete) {
        compare(law.logpmf(x), [&](double t) { return law.logpmf(t); });
      } else {
        compare(law.logpdf(x), [&](double t) { return law.logpdf(t); });
      }
      break;
    case 3:
      compare(law.quantile(x), [&](double t) { return law.quantile(t); });
      break;
    default: {
      const Elements weights(choices, x.size(), choices.flag());
      law.log_likelihood(x, {.weights = weights, .missing = choices.missing()});
    }
  }
}

template <typename L>
void checkSample(Choices& choices, const L& law) {
  vx::Random rng(choices.byte());
  vx::Random again(rng.state());
  const std::vector<double> sample = law.sample(1 + choices.below(20), rng);
  const vx::Interval support = law.support();
  for (const double x : sample) {
    require(x >= support.low && x <= support.high, law, "sample in the support", x, support.low,
            support.high);
    require(same(x, law.sample(again)), law, "samples one by one", x);
  }
}

template <typename L>
void check(Choices& choices, const L& law) {
  if (talkative()) {
    std::fprintf(stderr, "%s\n", text(law).c_str());
  }
  if (!isModerate(law) && takesLong<L>) {
    return;
  }
  do {
    switch (choices.below(8)) {
      case 0:
      case 1: {
        const double x = choices.number();
        checkProbabilities(law, x, choices.flag() ? choices.number() : x * 1.5);
        break;
      }
      case 2: {
        // Near the middle, where the numbers are.
        const double x = law.quantile(0.5) + choices.ordinary() * std::min(law.std(), 1e6);
        checkProbabilities(law, x, std::nextafter(x, INFINITY));
        break;
      }
      case 3:
      case 4:
        checkQuantiles(law, choices.probability(), choices.probability());
        break;
      case 5:
        checkMoments(law);
        law.interval(choices.probability());
        break;
      case 6:
        checkArrays(choices, law);
        break;
      default:
        checkSample(choices, law);
    }
  } while (!choices.empty() && choices.below(4) != 0);
}

template <typename T>
T parameter(Choices& choices) {
  if constexpr (std::is_same_v<T, double>) {
    return choices.below(4) == 3 ? choices.probability() : choices.number();
  } else {
    return static_cast<T>(choices.whole());
  }
}

template <typename L>
void callFit(Choices& choices) {
  if constexpr (vx::Fittable<L>) {
    const Elements x(choices, 64);
    const Elements weights(choices, x.size(), choices.below(4) == 0);
    if constexpr (std::is_same_v<L, vx::Binomial>) {
      check(choices,
            L::fit(x, {.n = choices.whole(), .weights = weights, .missing = choices.missing()}));
    } else if constexpr (std::is_same_v<L, vx::Hypergeometric>) {
      check(choices, L::fit(x, {.population = choices.whole(),
                                .drawn = choices.whole(),
                                .weights = weights,
                                .missing = choices.missing()}));
    } else {
      check(choices, L::fit(x, {.weights = weights, .missing = choices.missing()}));
    }
  }
}

template <typename L>
void call(Choices& choices) {
  if (choices.below(8) == 7) {
    callFit<L>(choices);
  } else if constexpr (std::is_same_v<L, vx::Empirical>) {
    const Elements x(choices, 64);
    const Elements weights(choices, x.size(), choices.flag());
    check(choices, L(x.view(), weights));
  } else {
    typename L::Parameters parameters{};
    std::apply(
        [&](const auto&... field) {
          ((parameters.*field.member =
                parameter<std::remove_cvref_t<decltype(parameters.*field.member)>>(choices)),
           ...);
        },
        L::fields);
    check(choices, L(parameters));
  }
}

}  // namespace

void callLaw(Choices& choices) {
  using Call = void (*)(Choices&);
  static const std::vector<Call> calls = [] {
    std::vector<Call> all;
    vx::Laws::forEach([&]<typename L>() { all.push_back(&call<L>); });
    return all;
  }();
  calls[choices.below(calls.size())](choices);
}

// A function with a few parameters: a proper density, a steep one, one with a pole, one that is
// none.
void callOwnLaw(Choices& choices) {
  const double a = choices.flag() ? choices.ordinary() : choices.number();
  const double b = choices.flag() ? choices.ordinary() : choices.number();
  const std::size_t kind = choices.below(6);
  const auto f = [=](double t) {
    switch (kind) {
      case 0:
        return std::exp(-(t - a) * (t - a) * b);
      case 1:
        return a + b * t;
      case 2:
        return std::pow(std::abs(t), a);
      case 3:
        return 1 / (1 + b * b * (t - a) * (t - a));
      case 4:
        return t > a ? 1.0 : b;
      default:
        return -std::abs(t - a);
    }
  };
  const vx::Interval support{choices.number(), choices.number()};
  if (choices.below(3) == 0) {
    const double s = std::abs(b);
    const vx::CumulativeDistribution law(
        [=](double t) { return kind < 3 ? 0.5 + 0.5 * std::tanh((t - a) / s) : f(t); },
        {.support = choices.flag() ? support : vx::Interval{-INFINITY, INFINITY}});
    law.quantile(choices.probability());
    return;
  }
  const vx::Density law(f, {.support = support, .log = choices.below(3) == 0});
  vx::Random rng(1);
  for (const double x : law.sample(10, rng)) {
    require(x >= support.low && x <= support.high, law, "sample in the support", x);
  }
  const double x = law.quantile(0.3);
  require(x >= support.low && x <= support.high, law, "quantile in the support", x);
  require(law.cdf(x) >= 0 && law.cdf(x) <= 1, law, "cdf in [0, 1]", law.cdf(x));
}

}  // namespace fuzz
