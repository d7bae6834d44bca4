// The methods of laws of one's own, over their tables.
#include "vexel/own_laws.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include "functions/own_laws/tables.hpp"
#include "functions/pieces.hpp"
#include "functions/text.hpp"

namespace vexel {

namespace {

using detail::OwnLawTables;

void checkProbability(double p, const char* name) {
  if (p < 0 || p > 1) {
    throw std::domain_error(std::string(name) + " must be in [0, 1], not " + number(p));
  }
}

template <typename F>
void mapInto(const Data& x, std::span<double> out, F f) {
  if (out.size() != x.size()) {
    throw std::length_error("out must have the size of the argument, " + std::to_string(x.size()) +
                            ", not " + std::to_string(out.size()));
  }
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i] = f(x[i]);
  }
}

template <typename F>
std::vector<double> mapped(const Data& x, F f) {
  std::vector<double> out(x.size());
  mapInto(x, out, f);
  return out;
}

}  // namespace

OwnLaw::OwnLaw(std::shared_ptr<const OwnLawTables> tables) : tables_(std::move(tables)) {}

Density::Density(FunctionOfSpans f, const DensityOptions& options, int)
    : OwnLaw(std::make_shared<OwnLawTables>(std::move(f), options)) {}

CumulativeDistribution::CumulativeDistribution(FunctionOfSpans f,
                                               const CumulativeDistributionOptions& options, int)
    : OwnLaw(std::make_shared<OwnLawTables>(std::move(f), options)) {}

double OwnLaw::pdf(double x) const { return tables_->pdf(x); }
double OwnLaw::logpdf(double x) const { return tables_->logpdf(x); }
double OwnLaw::cdf(double x) const { return tables_->cdf(x); }
double OwnLaw::sf(double x) const { return tables_->sf(x); }

// Near 1 by the other tail.
double OwnLaw::logcdf(double x) const {
  const double p = cdf(x);
  return p > 0.5 ? std::log1p(-sf(x)) : std::log(p);
}
double OwnLaw::logsf(double x) const {
  const double q = sf(x);
  return q > 0.5 ? std::log1p(-cdf(x)) : std::log(q);
}
double OwnLaw::quantile(double p) const {
  checkProbability(p, "p");
  return tables_->quantile(p);
}
double OwnLaw::isf(double q) const {
  checkProbability(q, "q");
  return tables_->isf(q);
}

#define VEXEL_ARRAY_FORMS(method)                               \
  void OwnLaw::method(Data x, std::span<double> out) const {    \
    mapInto(x, out, [this](double at) { return method(at); });  \
  }                                                             \
  std::vector<double> OwnLaw::method(Data x) const {            \
    return mapped(x, [this](double at) { return method(at); }); \
  }
VEXEL_ARRAY_FORMS(pdf)
VEXEL_ARRAY_FORMS(logpdf)
VEXEL_ARRAY_FORMS(cdf)
VEXEL_ARRAY_FORMS(sf)
VEXEL_ARRAY_FORMS(logcdf)
VEXEL_ARRAY_FORMS(logsf)
VEXEL_ARRAY_FORMS(quantile)
VEXEL_ARRAY_FORMS(isf)
#undef VEXEL_ARRAY_FORMS

Interval OwnLaw::interval(double level) const {
  checkProbability(level, "level");
  const double tail = 0.5 * (1 - level);
  return {quantile(tail), isf(tail)};
}

Interval OwnLaw::support() const { return tables_->support(); }
double OwnLaw::mean() const { return tables_->moment(1, 0); }

double OwnLaw::var() const {
  const double m = mean();
  return std::isfinite(m) ? tables_->moment(2, m) : std::abs(m);  // infinite, or NaN
}

double OwnLaw::std() const { return std::sqrt(var()); }

double OwnLaw::skewness() const {
  const double v = var();
  return std::isfinite(v) ? tables_->moment(3, mean()) / (v * std::sqrt(v))
                          : std::numeric_limits<double>::quiet_NaN();
}

double OwnLaw::kurtosis() const {
  const double v = var();
  return std::isfinite(v) ? tables_->moment(4, mean()) / (v * v) - 3
                          : std::numeric_limits<double>::quiet_NaN();
}

double OwnLaw::log_likelihood(Data x) const {
  double sum = 0;
  double lost = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double y = logpdf(x[i]);
    const double next = sum + y;
    if (std::isfinite(next)) {
      const double part = next - sum;
      lost += (sum - (next - part)) + (y - part);
    }
    sum = next;
  }
  return sum + lost;
}

double OwnLaw::sample(Random& rng) const { return tables_->sample(rng); }

void OwnLaw::sample(std::span<double> out, Random& rng) const {
  const OwnLawTables& tables = *tables_;
  inPieces(out, [&](std::span<double> piece) {
    for (double& x : piece) {
      x = tables.sample(rng);
    }
  });
}

std::vector<double> OwnLaw::sample(std::size_t n, Random& rng) const {
  std::vector<double> out(n);
  sample(out, rng);
  return out;
}

bool OwnLaw::log_concave() const { return tables_->logConcave(); }
double OwnLaw::log_integral() const { return tables_->logIntegral(); }
double OwnLaw::error() const { return tables_->error(); }
std::size_t OwnLaw::evaluations() const { return tables_->evaluations(); }

}  // namespace vexel
