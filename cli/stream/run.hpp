// A job over files, piece by piece and pass by pass.
#pragma once

#include <string>
#include <vector>

#include "stream/job.hpp"
#include "stream/table.hpp"

namespace stream {

struct Request {
  std::string title;
  std::vector<std::string> files;
  Columns columns;
  std::size_t rows = std::size_t{1} << 20;  // in a piece
  std::string state;                        // file of the work; empty: none is kept
  double seconds = -1;                      // the work ends after these, if it is kept
  bool quiet = false;
};

// The work has ended before it was done.
class Stopped : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws what the table and the job do, and Stopped.
void run(Job& job, const Request& request);

// For a signal handler: the run ends with Stopped within a tenth of a second.
void stop();

}  // namespace stream
