#include "stream/job.hpp"

#include <bit>
#include <cstdio>
#include <stdexcept>
#include <vexel/names.hpp>

namespace stream {

namespace {

using vexel::Data;
using vexel::Missing;

constexpr int kPassesOfRanks = 4;

// All 64 bits of each number.
std::string bitsOf(const std::vector<double>& values) {
  std::string text;
  for (const double v : values) {
    char buffer[20];
    std::snprintf(buffer, sizeof buffer, " %016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(v)));
    text += buffer;
  }
  return text;
}

void require(const std::vector<Bytes>& states, std::size_t count) {
  if (states.size() != count) {
    throw std::invalid_argument("it has not the states of this work");
  }
}

void requirePass(const vexel::Ranks& ranks, int pass) {
  const bool overBefore = ranks.done() && ranks.pass() > pass;  // as of nothing
  if (ranks.pass() != pass && !overBefore) {
    throw std::invalid_argument("its states are of another pass");
  }
}

class Describe : public Job {
 public:
  explicit Describe(Missing missing)
      : missing_(missing),
        moments_(4, missing),
        extremes_(missing),
        ranks_({0.25, 0.5, 0.75}, vexel::QuantileMethod::linear, missing) {}

  std::string task() const override { return "describe " + std::string(vexel::nameOf(missing_)); }
  int passes() const override { return kPassesOfRanks; }
  void update(Data x, Data weights) override {
    if (ranks_.pass() > 1) {
      ranks_.update(x, weights);
      return;
    }
    vexel::Moments moments = moments_;
    vexel::Extremes extremes = extremes_;
    moments.update(x, weights);
    extremes.update(x, weights);
    ranks_.update(x, weights);
    moments_ = std::move(moments);
    extremes_ = extremes;
  }
  void endPass() override { ranks_.next_pass(); }
  double weight() const override { return moments_.weight(); }
  std::int64_t missing() const override { return moments_.missing(); }

  std::vector<Bytes> states() const override {
    return {moments_.to_bytes(), extremes_.to_bytes(), ranks_.to_bytes()};
  }
  void restore(int pass, const std::vector<Bytes>& states) override {
    require(states, 3);
    moments_ = vexel::Moments::from_bytes(states[0]);
    extremes_ = vexel::Extremes::from_bytes(states[1]);
    ranks_ = vexel::Ranks::from_bytes(states[2]);
    requirePass(ranks_, pass);
  }

  Report report() const override {
    const std::vector<double> q = ranks_.result();
    return {Report::Layout::record,
            {{"count", {moments_.weight()}},
             {"missing", {static_cast<double>(moments_.missing())}},
             {"mean", {moments_.mean()}},
             {"std", {moments_.std()}},
             {"min", {extremes_.min()}},
             {"q1", {q[0]}},
             {"median", {q[1]}},
             {"q3", {q[2]}},
             {"max", {extremes_.max()}},
             {"skewness", {moments_.skewness()}},
             {"kurtosis", {moments_.kurtosis()}}},
            moments_.missing()};
  }

 private:
  Missing missing_;
  vexel::Moments moments_;
  vexel::Extremes extremes_;
  vexel::Ranks ranks_;
};

class Quantile : public Job {
 public:
  Quantile(std::vector<double> q, vexel::QuantileMethod method, Missing missing)
      : task_("quantile " + std::string(vexel::nameOf(missing)) + ' ' +
              std::string(vexel::nameOf(method)) + bitsOf(q)),
        q_(std::move(q)),
        ranks_(q_, method, missing) {}

  std::string task() const override { return task_; }
  int passes() const override { return kPassesOfRanks; }
  void update(Data x, Data weights) override { ranks_.update(x, weights); }
  void endPass() override { ranks_.next_pass(); }
  double weight() const override { return ranks_.weight(); }
  std::int64_t missing() const override { return ranks_.missing(); }

  std::vector<Bytes> states() const override { return {ranks_.to_bytes()}; }
  void restore(int pass, const std::vector<Bytes>& states) override {
    require(states, 1);
    ranks_ = vexel::Ranks::from_bytes(states[0]);
    requirePass(ranks_, pass);
  }

  Report report() const override {
    return {Report::Layout::rows, {{"q", q_}, {"quantiles", ranks_.result()}}, missing()};
  }

 private:
  std::string task_;
  std::vector<double> q_;
  vexel::Ranks ranks_;
};

class Tally : public Job {
 public:
  explicit Tally(Missing missing) : missing_(missing), tally_(missing) {}

  std::string task() const override { return "tally " + std::string(vexel::nameOf(missing_)); }
  void update(Data x, Data weights) override { tally_.update(x, weights); }
  double weight() const override { return 0; }
  bool needsWeight() const override { return false; }
  std::int64_t missing() const override { return tally_.missing(); }

  std::vector<Bytes> states() const override { return {tally_.to_bytes()}; }
  void restore(int, const std::vector<Bytes>& states) override {
    require(states, 1);
    tally_ = vexel::Tally::from_bytes(states[0]);
  }

  Report report() const override {
    return {Report::Layout::table,
            {{"values", tally_.values()}, {"counts", tally_.counts()}},
            tally_.missing()};
  }

 private:
  Missing missing_;
  vexel::Tally tally_;
};

}  // namespace

std::unique_ptr<Job> describeJob(Missing missing) { return std::make_unique<Describe>(missing); }
std::unique_ptr<Job> quantileJob(std::vector<double> q, vexel::QuantileMethod method,
                                 Missing missing) {
  return std::make_unique<Quantile>(std::move(q), method, missing);
}
std::unique_ptr<Job> tallyJob(Missing missing) { return std::make_unique<Tally>(missing); }

}  // namespace stream
