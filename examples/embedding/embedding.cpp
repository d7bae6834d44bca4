// A complete program that uses the statistics library from C++: memory of its own as a sample,
// a C++ function as a host procedure, entry points by name, and an error caught.

#include <cstdio>
#include <vector>
#include <vexel/kernel.hpp>

int main() {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATISTICS_LIBRARY);

  // The array is this vector's memory, not a copy of it.
  std::vector<double> durations = {3.6, 1.8, 3.333, 2.283, 4.533, 2.883, 4.7, 3.6, 1.95, 4.35};
  const vexel::Value data = kernel.wrap(durations);
  const vexel::Value unweighted = kernel.array({});

  const double mean = kernel.call("STATS_VexelMean_HW", data, unweighted, false, 0).number();
  std::printf("mean %.6f\n", mean);

  const auto quantiles = kernel.call("STATS_VexelQuantile_HW", data, kernel.eval("[1/4, 1/2, 3/4]"),
                                     unweighted, false, 7, false);
  for (const double q : quantiles.numbers()) {
    std::printf("quantile %.6f\n", q);
  }

  const vexel::Value square = kernel.function("square", [](double x) { return x * x; });
  const double second =
      kernel.call("STATS_VexelExpectedValue_HW", data, unweighted, square, false).number();
  std::printf("mean of squares %.6f\n", second);

  try {
    kernel.call("STATS_VexelTrimmedMean_HW", data, 60, 40, unweighted, false, 0);
  } catch (const vexel::Error& e) {
    std::printf("refused: %s\n", e.what());
  }
  return 0;
}
