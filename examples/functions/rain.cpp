// The rain of 70 cities: summaries, weighted quantiles, a fitted law and its far tail, a sample of
// it, an interval for the median, a root, a law of one's own, and two halves of the data joined.
//
//   rain examples/data/precip.csv

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>
#include <vexel/distributions.hpp>
#include <vexel/statistics.hpp>

namespace vx = vexel;

// The first column of a CSV file with a line of headings.
std::vector<double> read(const char* file) {
  std::ifstream in(file);
  std::vector<double> x;
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    x.push_back(std::stod(line));
  }
  return x;
}

int main(int argc, char** argv) {
  const std::vector<double> x = read(argc > 1 ? argv[1] : "examples/data/precip.csv");
  const std::vector<double> w(x.size(), 2.0);
  std::cout << vx::describe(x);

  const double g =
      vx::mean(x, {.weights = w, .kind = vx::Mean::geometric, .missing = vx::Missing::omit});
  const auto q =
      vx::quantile(x, {0.25, 0.5, 0.75}, {.weights = w, .method = vx::QuantileMethod::hazen});
  std::printf("geometric mean %.6g, quartiles %g %g %g\n", g, q[0], q[1], q[2]);

  const vx::Gamma law = vx::Gamma::fit(x);
  std::printf("gamma(%.6g, %.6g): P(X > 60) = %.6g, log P(X > 4000) = %.6g, isf(1e-200) = %.6g\n",
              law.parameters().shape, law.parameters().scale, law.sf(60.0), law.logsf(4000.0),
              law.isf(1e-200));

  vx::Random rng(42);
  std::printf("mean of a sample %.6g\n", vx::mean(law.sample(1'000'000, rng)));
  const vx::Bootstrap b = vx::bootstrap(x, vx::Statistic::median, rng, {.replicates = 9999});
  std::printf("median %g, 95 %% from %g to %g\n", b.estimate, b.interval.low, b.interval.high);

  const auto r = vx::find_root([](double t) { return std::cos(t) - t; }, {0.0, 1.0});
  const auto own =
      vx::Density([](double t) { return std::exp(-t * t * t * t); }, {.support = {-5, 5}});
  std::printf("root %.15g, standard deviation of exp(-t^4) %.6g\n", r.root, own.std());

  vx::Moments first(4);
  vx::Moments second(4);
  first.update(vx::Data(x.data(), 30));
  second.update(vx::Data(x.data() + 30, x.size() - 30));
  std::printf("variance of both parts %.6g\n", first.merge(second).var());
}
