#include "jobs.hpp"

#include <cmath>
#include <memory>
#include <vexel/distributions.hpp>
#include <vexel/sequences.hpp>
#include <vexel/statistics.hpp>

namespace {

namespace vx = vexel;
using Vector = std::vector<double>;

const Vector kPoints = vx::Gamma(2.5, 2.0).sample(600, *std::make_unique<vx::Random>(1));
const Vector kWeights = vx::Uniform().sample(600, *std::make_unique<vx::Random>(2));
const Vector kLevels = vx::Poisson(20.0).sample(600, *std::make_unique<vx::Random>(3));

template <typename T>
Vector doubles(const std::vector<T>& v) {
  return Vector(v.begin(), v.end());
}

void add(std::vector<Job>& all, const std::string& name, std::function<Vector()> run) {
  all.push_back({name, std::move(run)});
}

void addDescriptive(std::vector<Job>& all) {
  add(all, "means", [] {
    return Vector{
        vx::mean(kPoints), vx::mean(kPoints, {.weights = kWeights, .kind = vx::Mean::geometric}),
        vx::trimmed_mean(kPoints, 0.1), vx::winsorized_mean(kPoints, 0.1, {.weights = kWeights})};
  });
  add(all, "columns", [] {
    constexpr std::size_t count = 5;
    Vector many;  // more rows than a block of sums has
    for (int i = 0; i < 30000; ++i) {
      many.push_back(std::sin(i));
    }
    const vx::Columns columns(vx::Data(many.data(), many.size() / count, count), count);
    const vx::Columns rows(vx::Data(many.data(), count), many.size() / count, count);
    Vector means(count);
    Vector deviations(rows.count());
    vx::mean(columns, means);
    vx::std(rows, deviations);
    Vector medians(rows.count());
    Vector ends(2 * count);
    Vector distances(rows.count());
    vx::median(rows, medians);
    vx::median_absolute_deviation(rows, distances);
    vx::quantile(columns, {0.0, 1.0}, ends);
    Vector ranks(many.size());
    Vector sorted(many.size());
    vx::rank(rows, {ranks.data(), 1, count});
    vx::sort<double>(rows, {sorted.data(), 1, count});
    return Vector{means[0], means[4], deviations[1], medians[2], distances[3],
                  ends[0],  ends[9],  ranks[7],      sorted[9]};
  });
  add(all, "moments", [] {
    return Vector{vx::var(kPoints), vx::std(kPoints, {.weights = kWeights}), vx::skewness(kPoints),
                  vx::kurtosis(kPoints, {.bias = false}), vx::moment(kPoints, {1, 2, 3})[2]};
  });
  add(all, "deviations", [] {
    return Vector{vx::mean_absolute_deviation(kPoints, {.center = vx::Center::median}),
                  vx::median_absolute_deviation(kPoints, {.weights = kWeights})};
  });
  add(all, "quantiles", [] {
    Vector q = vx::quantile(kPoints, {0.1, 0.5, 0.9}, {.weights = kWeights});
    q.push_back(vx::median(kPoints));
    q.push_back(vx::iqr(kPoints));
    q.push_back(vx::five_number(kPoints).upper_hinge);
    q.push_back(vx::order_statistic(kPoints, 5));
    return q;
  });
  add(all, "describe", [] {
    const vx::Description d = vx::describe(kPoints);
    return Vector{d.mean, d.q1, d.kurtosis, static_cast<double>(d.table().size())};
  });
  add(all, "covariance", [] {
    const vx::Data columns[] = {kPoints, kWeights, kLevels};
    Vector c = vx::cov(columns).values;
    c.push_back(vx::corr(kPoints, kLevels, {.method = vx::Correlation::kendall}));
    c.push_back(
        vx::corr(kPoints, kLevels, {.weights = kWeights, .method = vx::Correlation::spearman}));
    return c;
  });
}

void addOrder(std::vector<Job>& all) {
  add(all, "order", [] {
    Vector r = vx::rank(kLevels);
    const Vector s = vx::sort(kPoints);
    const Vector a = doubles(vx::argsort(kLevels));
    r.insert(r.end(), s.begin(), s.end());
    r.insert(r.end(), a.begin(), a.end());
    return r;
  });
  add(all, "counts", [] {
    Vector c = vx::tally(kLevels, {.weights = kWeights}).counts;
    const Vector h = vx::histogram(kPoints, vx::BinRule::automatic).counts;
    c.insert(c.end(), h.begin(), h.end());
    c.push_back(vx::mode(kLevels));
    c.push_back(vx::frequency_table(kPoints, 10).relative[3]);
    return c;
  });
  add(all, "trim", [] {
    Vector t = vx::trim(kPoints, 0.1);
    const Vector w = vx::winsorize(kPoints, {0.1, 0.2}, {.weights = kWeights});
    t.insert(t.end(), w.begin(), w.end());
    return t;
  });
}

void addSeries(std::vector<Job>& all) {
  add(all, "moving", [] {
    Vector m = vx::moving(kPoints, 11, vx::Statistic::median);
    for (const vx::Statistic s :
         {vx::Statistic::mean, vx::Statistic::std, vx::Statistic::max, vx::Statistic::iqr}) {
      const Vector more = vx::moving(kPoints, 12, s, {.edges = vx::Edges::reflect});
      m.insert(m.end(), more.begin(), more.end());
    }
    return m;
  });
  add(all, "filter", [] {
    Vector y = vx::filter(kPoints, {0.5, 0.25, 0.25});
    const Vector c = vx::cumulative(kPoints, {.weights = kWeights});
    const Vector a = vx::autocorrelation(kPoints, 10);
    y.insert(y.end(), c.begin(), c.end());
    y.insert(y.end(), a.begin(), a.end());
    return y;
  });
  add(all, "kde", [] {
    const vx::KernelDensity d = vx::kde(kPoints, {.weights = kWeights, .points = 64});
    Vector y = d.y();
    y.push_back(d(3.0));
    y.push_back(d.cdf(3.0));
    return y;
  });
  add(all, "tests", [] {
    return Vector{vx::shapiro(kPoints).pvalue, vx::ks_test(kPoints, vx::Gamma(2.5, 2.0)).statistic,
                  vx::t_test(kPoints, kLevels).pvalue,
                  vx::chi_square_test(Vector{10, 20, 30}).pvalue};
  });
}

void addLaws(std::vector<Job>& all) {
  add(all, "laws", [] {
    const vx::Gamma gamma(2.5, 2.0);
    const vx::NonCentralStudentT t(5.0, 1.5);
    const vx::Hypergeometric h(1000, 100, 50);
    const Vector x = {0.5, 2.0, 40.0};
    Vector y = gamma.logsf(x);
    for (const Vector& more : {t.cdf(x), h.quantile(Vector{0.1, 0.9}), gamma.isf(Vector{1e-200})}) {
      y.insert(y.end(), more.begin(), more.end());
    }
    return y;
  });
  add(all, "fits", [] {
    return Vector{vx::Gamma::fit(kPoints).parameters().shape,
                  vx::Weibull::fit(kPoints).parameters().scale,
                  vx::Poisson::fit(kLevels).parameters().mean};
  });
  add(all, "empirical", [] {
    vx::Random rng(4);
    const vx::Empirical law(kPoints, kWeights);
    Vector y = law.sample(50, rng);
    y.push_back(law.quantile(0.3));
    return y;
  });
  add(all, "samples", [] {
    vx::Random rng(5);
    Vector y = vx::Beta(2.0, 3.0).sample(50, rng);
    for (const Vector& more :
         {vx::Poisson(900.0).sample(50, rng), vx::Binomial(1000, 0.3).sample(50, rng),
          vx::NonCentralChiSquare(0.5, 3.0).sample(50, rng)}) {
      y.insert(y.end(), more.begin(), more.end());
    }
    return y;
  });
  add(all, "own density", [] {
    vx::Random rng(6);
    const vx::Density law([](double t) { return std::exp(-t * t * t * t); }, {.support = {-5, 5}});
    Vector y = law.sample(20, rng);
    y.push_back(law.quantile(0.9));
    return y;
  });
  add(all, "own distribution", [] {
    vx::Random rng(6);
    const vx::CumulativeDistribution law([](double t) { return -std::expm1(-t); },
                                         {.support = {0.0, INFINITY}});
    return law.sample(20, rng);
  });
}

void addChance(std::vector<Job>& all) {
  add(all, "random", [] {
    vx::Random rng(7);
    Vector y = rng.normal(100);
    const Vector u = doubles(vx::Urn(kWeights).sample(50, rng));
    const Vector c = vx::choice(kPoints, 20, rng, {.weights = kWeights, .replace = false});
    const Vector p = doubles(vx::permutation(30, rng));
    for (const Vector& more : {u, c, p}) {
      y.insert(y.end(), more.begin(), more.end());
    }
    return y;
  });
  add(all, "bootstrap", [] {
    vx::Random rng(8);
    const auto b = vx::bootstrap(kLevels, vx::Statistic::median, rng, {.replicates = 99});
    return Vector{b.estimate, b.standard_error, b.interval.low, b.interval.high};
  });
  add(all, "sequences", [] {
    Vector y = vx::Sobol(5, {.scramble = vx::Scramble::owen, .seed = 9}).points(32);
    vx::Halton halton(3);
    halton.skip(1000);
    const Vector h = halton.points(10);
    const Vector f = vx::Faure(7, {.scramble = vx::Scramble::shift, .seed = 1}).points(10);
    y.insert(y.end(), h.begin(), h.end());
    y.insert(y.end(), f.begin(), f.end());
    return y;
  });
  add(all, "roots", [] {
    return Vector{vx::find_root([](double t) { return std::cos(t) - t; }, {0.0, 1.0}).root};
  });
}

// A state of two halves, sent as bytes and read again.
template <typename S>
S joined(const S& empty) {
  S first = empty;
  S second = empty;
  first.update(vx::Data(kPoints.data(), 300), vx::Data(kWeights.data(), 300));
  second.update(vx::Data(kPoints.data() + 300, 300), vx::Data(kWeights.data() + 300, 300));
  return S::from_bytes(first.merge(second).to_bytes());
}

void addStates(std::vector<Job>& all) {
  add(all, "sums", [] {
    return Vector{joined(vx::Sums()).sum(), joined(vx::Moments()).kurtosis(),
                  joined(vx::Extremes()).max()};
  });
  add(all, "covariance state", [] {
    const vx::Data columns[] = {kPoints, kLevels};
    return vx::Covariance(2).update(columns, kWeights).cov().values;
  });
  add(all, "counting states", [] {
    Vector y = joined(vx::Tally()).counts();
    const Vector h = joined(vx::Histogram(Vector{0, 1, 2, 5, 100})).counts();
    const Vector d = joined(vx::DensityGrid({0.0, 20.0}, 64)).density(1.0);
    y.insert(y.end(), h.begin(), h.end());
    y.insert(y.end(), d.begin(), d.end());
    return y;
  });
  add(all, "ranks", [] {
    vx::Ranks ranks(Vector{0.25, 0.75});
    while (!ranks.done()) {
      ranks.update(kPoints, kWeights).next_pass();
    }
    return ranks.result();
  });
}

}  // namespace

std::vector<Job> jobs() {
  std::vector<Job> all;
  addDescriptive(all);
  addOrder(all);
  addSeries(all);
  addLaws(all);
  addChance(all);
  addStates(all);
  return all;
}
