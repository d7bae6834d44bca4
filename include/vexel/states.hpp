// States: statistics of data that come in pieces or from many machines.
//
//   vexel::Moments a(4), b(4);
//   a.update(first);
//   b.update(second);
//   a.merge(b);                       // what one state over all data would be, to the last bit
//   auto bytes = a.to_bytes();
//   auto c = vexel::Moments::from_bytes(bytes);
//
// Sums are kept exactly, so results have one rounding and the same bits for every split into pieces
// and every order of merging; so have the bytes.  A state over nothing has the sum 0, the rest is
// NaN.  from_bytes takes what to_bytes of this or an older version wrote and refuses anything else
// with std::invalid_argument.
#pragma once

#include <vexel/states/covariance.hpp>
#include <vexel/states/density_grid.hpp>
#include <vexel/states/extremes.hpp>
#include <vexel/states/histogram.hpp>
#include <vexel/states/moments.hpp>
#include <vexel/states/ranks.hpp>
#include <vexel/states/sums.hpp>
#include <vexel/states/tally.hpp>
