// All functions on data: descriptive statistics, order and counts, series, densities, tests, and
// states for data that come in pieces.
#pragma once

#include <vexel/descriptive.hpp>
#include <vexel/hypothesis.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>
#include <vexel/series.hpp>
#include <vexel/states.hpp>
