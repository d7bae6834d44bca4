// All functions on data: descriptive statistics, order and counts, series, densities, tests,
// states for data that come in pieces, random numbers, resampling and roots.
#pragma once

#include <vexel/columns.hpp>
#include <vexel/descriptive.hpp>
#include <vexel/hypothesis.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>
#include <vexel/random.hpp>
#include <vexel/roots.hpp>
#include <vexel/sampling.hpp>
#include <vexel/series.hpp>
#include <vexel/states.hpp>
