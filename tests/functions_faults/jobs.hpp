// One small job for each of the functions, for tests of what may happen during any of them.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

struct Job {
  std::string name;
  std::function<std::vector<double>()> run;  // all of its results
};

inline void PrintTo(const Job& job, std::ostream* out) { *out << job.name; }

std::vector<Job> jobs();
