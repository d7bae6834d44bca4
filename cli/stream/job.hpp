// What the command computes of a stream of pieces, in one pass over them or in several.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>
#include <vexel/statistics.hpp>

#include "stream/report.hpp"

namespace stream {

using Bytes = std::vector<std::uint8_t>;

class Job {
 public:
  virtual ~Job() = default;
  // A line that tells this work from other work, for the file of its states.
  virtual std::string task() const = 0;
  virtual int passes() const { return 1; }
  // Takes a piece in; one that is refused or interrupted leaves everything as it was.
  virtual void update(vexel::Data x, vexel::Data weights) = 0;
  virtual void endPass() {}
  virtual double weight() const = 0;  // total
  virtual std::int64_t missing() const = 0;
  virtual bool needsWeight() const { return true; }  // nothing can be said of a total of 0

  virtual std::vector<Bytes> states() const = 0;
  // What states() gave in that pass, from 1; std::invalid_argument for anything else.
  virtual void restore(int pass, const std::vector<Bytes>& states) = 0;

  virtual Report report() const = 0;
};

std::unique_ptr<Job> describeJob(vexel::Missing missing);
std::unique_ptr<Job> quantileJob(std::vector<double> q, vexel::QuantileMethod method,
                                 vexel::Missing missing);
std::unique_ptr<Job> tallyJob(vexel::Missing missing);

}  // namespace stream
