// The methods of laws of one's own, over their tables.
#include "vexel/own_laws.hpp"

#include <cmath>
#include <utility>

#include "functions/distributions/frame.hpp"
#include "functions/own_laws/tables.hpp"
#include "functions/samples/frame.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<OwnLaw> {
  explicit Formulas(const OwnLaw& law) : tables(*law.tables_) {}
  const OwnLawTables& tables;

  Interval support() const { return tables.support(); }
  double mean() const { return tables.moment(1, 0); }
  double var() const {
    const double m = mean();
    return std::isfinite(m) ? tables.moment(2, m) : std::abs(m);  // infinite, or NaN
  }
  double skewness() const {
    const double v = var();
    return std::isfinite(v) ? tables.moment(3, mean()) / (v * std::sqrt(v)) : nan;
  }
  double kurtosis() const {
    const double v = var();
    return std::isfinite(v) ? tables.moment(4, mean()) / (v * v) - 3 : nan;
  }

  double pdf(double x) const { return tables.pdf(x); }
  double logpdf(double x) const { return tables.logpdf(x); }
  double cdf(double x) const { return tables.cdf(x); }
  double sf(double x) const { return tables.sf(x); }
  // Near 1 by the other tail.
  double logcdf(double x) const {
    const double p = cdf(x);
    return p > 0.5 ? std::log1p(-sf(x)) : std::log(p);
  }
  double logsf(double x) const {
    const double q = sf(x);
    return q > 0.5 ? std::log1p(-cdf(x)) : std::log(q);
  }
  double quantile(double p) const { return tables.quantile(p); }
  double isf(double q) const { return tables.isf(q); }
};

template <>
class Variates<OwnLaw> {
 public:
  explicit Variates(const OwnLaw& law) : tables_(*law.tables_) {}
  double operator()(Random& rng) const { return tables_.sample(rng); }

 private:
  const OwnLawTables& tables_;
};

}  // namespace detail

using detail::OwnLawTables;

OwnLaw::OwnLaw(std::shared_ptr<const OwnLawTables> tables) : tables_(std::move(tables)) {}

Density::Density(FunctionOfSpans f, const DensityOptions& options, int)
    : OwnLaw(std::make_shared<OwnLawTables>(std::move(f), options)) {}

CumulativeDistribution::CumulativeDistribution(FunctionOfSpans f,
                                               const CumulativeDistributionOptions& options, int)
    : OwnLaw(std::make_shared<OwnLawTables>(std::move(f), options)) {}

bool OwnLaw::log_concave() const { return tables_->logConcave(); }
double OwnLaw::log_integral() const { return tables_->logIntegral(); }
double OwnLaw::error() const { return tables_->error(); }
std::size_t OwnLaw::evaluations() const { return tables_->evaluations(); }

VEXEL_CONTINUOUS_LAW(OwnLaw)

}  // namespace vexel
