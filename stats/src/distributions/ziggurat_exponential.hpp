// The standard exponential ziggurat; callers run Reset before every Next.
//
// Every negative integer is accepted without a test, so the law is not quite exponential: the
// distribution function is off by up to 9.5e-4 (at 0.19), the mean is 1.0020, the variance 1.0129.
// Stored samples depend on it.
#pragma once

#include <cmath>
#include <cstdint>

#include "distributions/ziggurat_tables.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"

class STATS_ZigguratExpGenerator_HW {
 public:
  static constexpr double gD = 7.69711747013105;      // right edge r of the base layer
  static constexpr double gV = 0.003949659822581557;  // area of every layer
  static constexpr double gM = 2147483648.0;          // 2^31

  // Builds the tables unless they were built for at least as many digits; returns the digits.
  static int Reset() {
    const int digits = STATS_GetVexelDigits_HW();
    return digits <= gDigits ? digits : Build();
  }

  static double Next() {
    const std::int32_t h = STATS_VexelRandomStream_HW::NextInteger();
    const int layer = h & 255;
    if (h < gTables.K[layer]) [[likely]] {
      return std::fabs(h * gTables.W[layer]);
    }
    return NextRare(h);
  }

  static const STATS_ZigguratTables_HW& tables() { return gTables; }

 private:
  static int Build();
  static double NextRare(std::int32_t h);

  static int gDigits;
  static STATS_ZigguratTables_HW gTables;
};
