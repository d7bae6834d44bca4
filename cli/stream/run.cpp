#include "stream/run.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>
#include <vexel/interruption.hpp>

#include "stream/bar.hpp"
#include "stream/state_file.hpp"

namespace stream {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kBetweenStates{5};

std::atomic<bool> stopped{false};

// A path within a line.
std::string escaped(const std::string& path) {
  std::string out;
  for (const char c : path) {
    out += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : std::string(1, c);
  }
  return out;
}

// The lines of a state file that say which work it is of: the same files, untouched since.
std::string taskOf(const Job& job, const Request& request) {
  std::string text = job.task() + "\nrows " + std::to_string(request.rows) + '\n';
  for (const std::string& missing : request.columns.missing) {
    text += "na " + escaped(missing) + '\n';
  }
  if (const Columns& c = request.columns; c.separatorUsed() != ',' || c.decimal != '.') {
    text += "separator " + std::to_string(c.separatorUsed()) + " decimal " +
            std::to_string(c.decimal) + '\n';
  }
  for (const std::string& path : request.files) {
    const auto table = openTable(path, request.columns);
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
      throw Unreadable("cannot read " + path);
    }
    const long long modified =
        static_cast<long long>(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    text += "file " + std::to_string(status.st_size) + ' ' + std::to_string(modified) + ' ' +
            std::to_string(table->column) + ' ' +
            (table->weights == Table::npos ? "-" : std::to_string(table->weights)) + ' ' +
            escaped(std::filesystem::absolute(path).lexically_normal().string()) + '\n' +
            (table->isWithoutHeadings ? "no headings\n" : "");
  }
  return text;
}

class Run {
 public:
  Run(Job& job, const Request& request)
      : job_(job), request_(request), bar_(request.title, request.quiet) {
    if (request_.state.empty()) {
      return;
    }
    requireStateFile(request.state);
    task_ = taskOf(job, request);
    if (const auto found = loadProgress(request.state, task_)) {
      try {
        job_.restore(found->pass, found->states);
      } catch (const std::invalid_argument& e) {
        throw std::invalid_argument("--state: " + request.state + ": " + e.what());
      }
      pass_ = found->pass;
      done_ = found->pieces;
    }
  }

  void all() {
    const vexel::Watch watch([](double) { return !stopped.load(); });
    try {
      for (; pass_ <= job_.passes(); ++pass_, done_ = 0) {
        if (done_ > 0) {
          toSkip_ = done_;
        }
        for (file_ = 0; file_ < request_.files.size(); ++file_) {
          readFile(request_.files[file_]);
        }
        if (toSkip_ > 0) {
          refuseState("it has taken in more pieces than there are");
        }
        job_.endPass();
      }
    } catch (const vexel::Interrupted&) {
      end("interrupted");
    }
    if (zeroWeights_ && job_.needsWeight() && job_.weight() == 0) {
      throw std::invalid_argument("weights: their total must be positive, it is 0");
    }
    if (!request_.state.empty()) {
      std::filesystem::remove(request_.state);
    }
  }

 private:
  [[noreturn]] void refuseState(const std::string& why) const {
    throw std::invalid_argument("--state: " + request_.state + ": " + why);
  }

  void readFile(const std::string& path) {
    const auto table = openTable(path, request_.columns);
    if (!table->note.empty() && told_.insert(path).second) {
      bar_.say(table->note);
    }
    std::size_t row = 0;
    for (;;) {
      if (stopped.load()) {
        end("interrupted");
      }
      table->read(request_.rows, piece_);
      if (piece_.values.empty()) {
        return;
      }
      if (toSkip_ > 0) {
        --toSkip_;
        noteZeroWeights();
      } else {
        take(*table, path, row);
        pieceTaken();
      }
      row += piece_.values.size();
      const double files = static_cast<double>(request_.files.size());
      const double share = (static_cast<double>(file_) + table->share()) / files;
      bar_.show((pass_ - 1 + share) / job_.passes(), pass_, job_.passes());
    }
  }

  // row: the rows of the file before the piece.
  void take(const Table& table, const std::string& path, std::size_t row) {
    const bool weighted = isWeighted();
    requireWeights(table, path, row);
    try {
      job_.update(piece_.values, weighted ? vexel::Data(piece_.weights) : vexel::Data());
    } catch (const std::invalid_argument& e) {
      throw std::invalid_argument(path + ", from row " + std::to_string(row + 1) +
                                  " of the data: " + e.what());
    }
    noteZeroWeights();
  }

  void noteZeroWeights() {
    for (std::size_t i = 0; isWeighted() && !zeroWeights_ && i < piece_.values.size(); ++i) {
      zeroWeights_ = piece_.weights[i] == 0 && !std::isnan(piece_.values[i]);
    }
  }

  void requireWeights(const Table& table, const std::string& path, std::size_t row) const {
    const auto& w = piece_.weights;
    const auto bad =
        std::find_if(w.begin(), w.end(), [](double v) { return v < 0 || std::isinf(v); });
    if (!isWeighted() || bad == w.end()) {
      return;
    }
    row += table.headingRows + static_cast<std::size_t>(bad - w.begin()) + 1;
    std::ostringstream text;
    text << path << ", row " << row << ", column " << table.weights + 1
         << ": weights must be finite and not negative, got " << *bad;
    throw std::invalid_argument(text.str());
  }

  bool isWeighted() const { return !request_.columns.weights.empty(); }

  void pieceTaken() {
    ++done_;
    const auto now = Clock::now();
    if (!request_.state.empty() && now - saved_ > kBetweenStates) {
      save();
      saved_ = Clock::now();
    }
    if (request_.seconds >= 0 &&
        std::chrono::duration<double>(now - start_).count() >= request_.seconds) {
      end("stopped");
    }
  }

  void save() const { saveProgress(request_.state, task_, {pass_, done_, job_.states()}); }

  [[noreturn]] void end(const std::string& how) const {
    if (request_.state.empty()) {
      throw Stopped(how);
    }
    save();
    throw Stopped(how + "; the work is in " + request_.state +
                  ", the same command goes on from there");
  }

  Job& job_;
  const Request& request_;
  Bar bar_;
  std::string task_;
  int pass_ = 1;
  std::size_t done_ = 0;    // pieces of this pass
  std::size_t toSkip_ = 0;  // of them, from the work that was resumed
  std::size_t file_ = 0;
  std::set<std::string> told_;  // files of which something was told
  bool zeroWeights_ = false;
  Piece piece_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point saved_ = start_;
};

}  // namespace

void run(Job& job, const Request& request) { Run(job, request).all(); }

void stop() { stopped.store(true); }

}  // namespace stream
