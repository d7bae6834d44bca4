// The names of options' values, for doors that take them as text: quantile(x, q, method = hazen).
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vexel/descriptive.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>
#include <vexel/sampling.hpp>
#include <vexel/sequences.hpp>
#include <vexel/series.hpp>

namespace vexel {

template <typename E>
struct NameOf {
  std::string_view name;
  E value;
};

// All values of E, in the order in which an error lists them: the default first.
template <typename E>
inline constexpr std::array<NameOf<E>, 0> namesOf{};

template <>
inline constexpr auto namesOf<Missing> = std::to_array<NameOf<Missing>>(
    {{"propagate", Missing::propagate}, {"omit", Missing::omit}, {"raise", Missing::raise}});
template <>
inline constexpr auto namesOf<Statistic> =
    std::to_array<NameOf<Statistic>>({{"mean", Statistic::mean},
                                      {"median", Statistic::median},
                                      {"std", Statistic::std},
                                      {"var", Statistic::var},
                                      {"min", Statistic::min},
                                      {"max", Statistic::max},
                                      {"sum", Statistic::sum},
                                      {"skewness", Statistic::skewness},
                                      {"kurtosis", Statistic::kurtosis},
                                      {"iqr", Statistic::iqr}});
template <>
inline constexpr auto namesOf<Mean> = std::to_array<NameOf<Mean>>({{"arithmetic", Mean::arithmetic},
                                                                   {"geometric", Mean::geometric},
                                                                   {"harmonic", Mean::harmonic},
                                                                   {"quadratic", Mean::quadratic}});
template <>
inline constexpr auto namesOf<Center> = std::to_array<NameOf<Center>>({{"mean", Center::mean},
                                                                       {"median", Center::median}});
template <>
inline constexpr auto namesOf<QuantileMethod> = std::to_array<NameOf<QuantileMethod>>(
    {{"linear", QuantileMethod::linear},
     {"inverted_cdf", QuantileMethod::inverted_cdf},
     {"averaged_inverted_cdf", QuantileMethod::averaged_inverted_cdf},
     {"closest_observation", QuantileMethod::closest_observation},
     {"interpolated_inverted_cdf", QuantileMethod::interpolated_inverted_cdf},
     {"hazen", QuantileMethod::hazen},
     {"weibull", QuantileMethod::weibull},
     {"median_unbiased", QuantileMethod::median_unbiased},
     {"normal_unbiased", QuantileMethod::normal_unbiased}});
template <>
inline constexpr auto namesOf<Correlation> =
    std::to_array<NameOf<Correlation>>({{"pearson", Correlation::pearson},
                                        {"spearman", Correlation::spearman},
                                        {"kendall", Correlation::kendall}});
template <>
inline constexpr auto namesOf<RankMethod> =
    std::to_array<NameOf<RankMethod>>({{"average", RankMethod::average},
                                       {"min", RankMethod::min},
                                       {"max", RankMethod::max},
                                       {"dense", RankMethod::dense},
                                       {"ordinal", RankMethod::ordinal}});
template <>
inline constexpr auto namesOf<BinRule> =
    std::to_array<NameOf<BinRule>>({{"auto", BinRule::automatic},
                                    {"fd", BinRule::fd},
                                    {"scott", BinRule::scott},
                                    {"sturges", BinRule::sturges}});
template <>
inline constexpr auto namesOf<Cumulative> =
    std::to_array<NameOf<Cumulative>>({{"sum", Cumulative::sum},
                                       {"product", Cumulative::product},
                                       {"min", Cumulative::min},
                                       {"max", Cumulative::max}});
template <>
inline constexpr auto namesOf<Align> = std::to_array<NameOf<Align>>({{"center", Align::center},
                                                                     {"right", Align::right},
                                                                     {"left", Align::left}});
template <>
inline constexpr auto namesOf<Edges> = std::to_array<NameOf<Edges>>({{"shrink", Edges::shrink},
                                                                     {"nan", Edges::nan},
                                                                     {"reflect", Edges::reflect},
                                                                     {"nearest", Edges::nearest}});
template <>
inline constexpr auto namesOf<DensityKernel> =
    std::to_array<NameOf<DensityKernel>>({{"gaussian", DensityKernel::gaussian},
                                          {"epanechnikov", DensityKernel::epanechnikov},
                                          {"rectangular", DensityKernel::rectangular},
                                          {"triangular", DensityKernel::triangular},
                                          {"biweight", DensityKernel::biweight}});
template <>
inline constexpr auto namesOf<BandwidthRule> = std::to_array<NameOf<BandwidthRule>>(
    {{"silverman", BandwidthRule::silverman}, {"scott", BandwidthRule::scott}});
template <>
inline constexpr auto namesOf<BootstrapMethod> =
    std::to_array<NameOf<BootstrapMethod>>({{"BCa", BootstrapMethod::BCa},
                                            {"percentile", BootstrapMethod::percentile},
                                            {"basic", BootstrapMethod::basic}});
template <>
inline constexpr auto namesOf<Scramble> = std::to_array<NameOf<Scramble>>(
    {{"none", Scramble::none}, {"owen", Scramble::owen}, {"shift", Scramble::shift}});

// The value that is so named; nothing for a text that is no name.
template <typename E>
constexpr std::optional<E> valueNamed(std::string_view name) {
  for (const NameOf<E>& one : namesOf<E>) {
    if (one.name == name) {
      return one.value;
    }
  }
  return std::nullopt;
}

// The name of a value; empty for a number that is none of its type's values.
template <typename E>
constexpr std::string_view nameOf(E value) {
  for (const NameOf<E>& one : namesOf<E>) {
    if (one.value == value) {
      return one.name;
    }
  }
  return {};
}

// "propagate, omit, raise", each with a quote round it, and that before the last.
template <typename E>
std::string namesListed(std::string_view quote = "", std::string_view last = ", ") {
  std::string all;
  for (const NameOf<E>& one : namesOf<E>) {
    all += all.empty() ? "" : &one == &namesOf<E>.back() ? last : ", ";
    all.append(quote).append(one.name).append(quote);
  }
  return all;
}

}  // namespace vexel
