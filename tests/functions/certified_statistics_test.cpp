// Mean, standard deviation and autocorrelation of data with certified values
// (tests/reference/certified.py).
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>
#include <vexel/descriptive.hpp>
#include <vexel/series.hpp>
#include <vexel/states.hpp>

namespace {

struct Certified {
  double value;      // to fifteen digits, of the decimal data
  double ofDoubles;  // exact but for one rounding, of the doubles nearest to them
};

struct DataSet {
  std::map<std::string, Certified> statistics;
  std::vector<double> x;
};

DataSet read(const std::filesystem::path& path) {
  std::ifstream file(path);
  DataSet set;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line) && line != "# data") {
    const std::size_t colon = line.find(": ");
    const std::size_t second = line.rfind(": ");
    set.statistics[line.substr(0, colon)] = {std::stod(line.substr(colon + 2)),
                                             std::stod(line.substr(second + 2))};
  }
  for (double v = 0; file >> v;) {
    set.x.push_back(v);
  }
  return set;
}

// Right to two units of the last place, and to fifteen digits of the certified value where the
// doubles are the data to as many.
void expectCertified(double value, const Certified& c, const char* where) {
  SCOPED_TRACE(where);
  EXPECT_LE(std::fabs(value - c.ofDoubles), 0x1p-52 * std::fabs(c.ofDoubles));
  const double held = std::fabs(c.ofDoubles - c.value);
  EXPECT_LE(std::fabs(value - c.value), held + 0x1p-52 * std::fabs(c.value));
}

TEST(CertifiedStatistics, AreMetToTheLastPlaces) {
  int sets = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA_DIR "/nist")) {
    SCOPED_TRACE(entry.path().stem());
    const DataSet set = read(entry.path());
    const Certified& mean = set.statistics.at("mean");
    const Certified& std = set.statistics.at("std");
    expectCertified(vexel::mean(set.x), mean, "mean");
    expectCertified(vexel::std(set.x), std, "std");
    expectCertified(vexel::autocorrelation(set.x, 1)[1], set.statistics.at("lag 1"),
                    "autocorrelation");
    const auto description = vexel::describe(set.x);
    expectCertified(description.mean, mean, "describe, mean");
    expectCertified(description.std, std, "describe, std");
    vexel::Moments moments;
    moments.update(set.x);
    expectCertified(moments.mean(), mean, "Moments, mean");
    expectCertified(moments.std(), std, "Moments, std");
    sets += 1;
  }
  EXPECT_EQ(sets, 9);
}

}  // namespace
