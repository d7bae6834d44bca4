// One small job for each of the functions, for tests of what may happen during any of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct Job {
  std::string name;
  std::function<std::vector<double>()> run;  // all of its results
};

std::vector<Job> jobs();
