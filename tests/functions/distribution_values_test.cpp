// Every method of every law against references of 40 digits.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "vexel/distributions.hpp"

namespace {

using namespace vexel;

// From a line of tests/reference/data/distribution_functions.txt: value and
// condition number of each method at x, NaN where no double holds the value.
struct Row {
  std::vector<double> parameters;
  double x;
  double value[6];
  double condition[6];
  double quantile;
  double isf;
};

double number(const std::string &word) { return word == "-" ? NAN : std::stod(word); }

std::map<std::string, std::vector<Row>> readRows() {
  std::map<std::string, std::vector<Row>> rows;
  std::ifstream file(std::string(SOURCE_DIR) + "/tests/reference/data/distribution_functions.txt");
  std::string line;
  while (std::getline(file, line)) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    std::vector<double> numbers;
    for (std::string word; name != "#" && words >> word;) {
      numbers.push_back(number(word));
    }
    if (numbers.size() < 16) {
      continue;
    }
    Row row;
    const std::size_t count = numbers.size() - 15;
    row.parameters.assign(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(count));
    row.x = numbers[count];
    for (std::size_t i = 0; i < 6; ++i) {
      row.value[i] = numbers[count + 1 + 2 * i];
      row.condition[i] = numbers[count + 2 + 2 * i];
    }
    row.quantile = numbers[count + 13];
    row.isf = numbers[count + 14];
    rows[name].push_back(row);
  }
  return rows;
}

template <typename L>
L make(const std::vector<double> &values) {
  typename L::Parameters parameters{};
  std::apply(
      [&](const auto &...field) {
        std::size_t i = 0;
        ((parameters.*field.member =
              static_cast<typename std::decay_t<decltype(field)>::Type>(values[i++])),
         ...);
      },
      L::fields);
  return L(parameters);
}

// In units of 1e-14 max(1, condition).
double scaledError(double got, double exact, double condition) {
  return std::fabs(got - exact) / std::fabs(exact) / (1e-14 * std::fmax(1.0, condition));
}

class Worst {
 public:
  explicit Worst(const char *law) : law_(law) {}

  void note(const char *method, double error, const Row &row, double got, double exact) {
    auto &[most, where] = found_[method];
    if (!(error <= most)) {
      most = error;
      std::ostringstream text;
      text.precision(17);
      text << law_ << "." << method << " at";
      for (const double p : row.parameters) {
        text << " " << p;
      }
      text << ", " << row.x << ": " << got << ", not " << exact;
      where = text.str();
    }
  }
  void expectGoal() const {
    for (const auto &[method, worst] : found_) {
      EXPECT_LE(worst.first, 1.0) << worst.second;
    }
  }

 private:
  const char *law_;
  std::map<std::string, std::pair<double, std::string>> found_;
};

template <typename L>
void compare(const std::vector<Row> &rows) {
  Worst worst(L::name);
  constexpr const char *names[] = {"density", "log density", "cdf", "sf", "logcdf", "logsf"};
  for (const Row &row : rows) {
    const L law = make<L>(row.parameters);
    double got[6] = {0.0, 0.0, law.cdf(row.x), law.sf(row.x), law.logcdf(row.x), law.logsf(row.x)};
    if constexpr (L::discrete) {
      got[0] = law.pmf(row.x);
      got[1] = law.logpmf(row.x);
    } else {
      got[0] = law.pdf(row.x);
      got[1] = law.logpdf(row.x);
    }
    for (int i = 0; i < 6; ++i) {
      if (std::isnan(row.value[i]) || std::fabs(row.value[i]) < 1e-300) {
        continue;
      }
      worst.note(names[i], scaledError(got[i], row.value[i], row.condition[i]), row, got[i],
                 row.value[i]);
    }
    if constexpr (L::discrete) {
      for (const double p : {law.cdf(row.x), std::nextafter(law.cdf(row.x), 1.0)}) {
        if (p > 0.0 && p < 1.0) {
          const double k = law.quantile(p);
          EXPECT_TRUE(law.cdf(k) >= p && !(law.cdf(k - 1.0) >= p))
              << L::name << ".quantile(" << p << ") = " << k;
        }
      }
      for (const double q : {law.sf(row.x), std::nextafter(law.sf(row.x), 0.0)}) {
        if (q > 0.0 && q < 1.0) {
          const double k = law.isf(q);
          EXPECT_TRUE(law.sf(k) <= q && !(law.sf(k - 1.0) <= q))
              << L::name << ".isf(" << q << ") = " << k;
        }
      }
    } else {
      const double p = row.value[2];
      const double q = row.value[3];
      if (p > 0.0 && p < 1.0) {
        const double x = law.quantile(p);
        worst.note("quantile", scaledError(x, row.x, row.quantile), row, x, row.x);
      }
      if (q > 0.0 && q < 1.0) {
        const double x = law.isf(q);
        worst.note("isf", scaledError(x, row.x, row.isf), row, x, row.x);
      }
    }
  }
  worst.expectGoal();
}

TEST(DistributionValues, LieWithinTheGoal) {
  const auto rows = readRows();
  Laws::forEach([&]<typename L>() {
    if constexpr (!std::is_same_v<L, Empirical>) {
      ASSERT_TRUE(rows.contains(L::name)) << L::name;
      compare<L>(rows.at(L::name));
    }
  });
}

}  // namespace
