// Options by name that several functions take.
#pragma once

#include <vexel/data.hpp>
#include <vexel/descriptive.hpp>
#include <vexel/kernel_density.hpp>

#include "arrays.hpp"

namespace vexel::python {

inline constexpr Choice<QuantileMethod> quantileMethods[] = {
    {"linear", QuantileMethod::linear},
    {"inverted_cdf", QuantileMethod::inverted_cdf},
    {"averaged_inverted_cdf", QuantileMethod::averaged_inverted_cdf},
    {"closest_observation", QuantileMethod::closest_observation},
    {"interpolated_inverted_cdf", QuantileMethod::interpolated_inverted_cdf},
    {"hazen", QuantileMethod::hazen},
    {"weibull", QuantileMethod::weibull},
    {"median_unbiased", QuantileMethod::median_unbiased},
    {"normal_unbiased", QuantileMethod::normal_unbiased}};

inline constexpr Choice<Statistic> statistics[] = {
    {"mean", Statistic::mean}, {"median", Statistic::median},     {"std", Statistic::std},
    {"var", Statistic::var},   {"min", Statistic::min},           {"max", Statistic::max},
    {"sum", Statistic::sum},   {"skewness", Statistic::skewness}, {"kurtosis", Statistic::kurtosis},
    {"iqr", Statistic::iqr}};

inline constexpr Choice<DensityKernel> densityKernels[] = {
    {"gaussian", DensityKernel::gaussian},
    {"epanechnikov", DensityKernel::epanechnikov},
    {"rectangular", DensityKernel::rectangular},
    {"triangular", DensityKernel::triangular},
    {"biweight", DensityKernel::biweight}};

}  // namespace vexel::python
