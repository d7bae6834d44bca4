// Positions and ranks in sorted order, from the numerical library's words of key and position.
#include "functions/elements.hpp"
#include "numerics/rank_words.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

std::size_t argsort(Data x, std::span<std::int64_t> out, const SortOptions& options) {
  requireSize("out", out.size(), x.size());
  std::size_t kept = x.size();
  onElements(x, [&]<typename T>(std::span<const T> elements) {
    nag2::visitSorted(elements.data(), elements.size(), false,
                      [&](std::size_t first, nag2::TiedPositions tied) {
                        if (isMissing(elements[tied[0]])) {
                          kept = first;
                        }
                        for (std::size_t i = 0; i < tied.size(); ++i) {
                          out[first + i] = static_cast<std::int64_t>(tied[i]);
                        }
                      });
  });
  if (options.missing == Missing::raise && kept < x.size()) {
    throwMissing("x");
  }
  return options.missing == Missing::omit ? kept : x.size();
}

std::vector<std::int64_t> argsort(Data x, const SortOptions& options) {
  std::vector<std::int64_t> out(x.size());
  out.resize(argsort(x, out, options));
  return out;
}

namespace {

// The ranks of the tied elements that follow `before` smaller ones, the group-th run of them.
template <typename Set>
void rankTied(RankMethod method, double before, double group, nag2::TiedPositions tied, Set set) {
  const auto size = static_cast<double>(tied.size());
  double rank = before + (size + 1) / 2;
  switch (method) {
    case RankMethod::ordinal:
      for (std::size_t i = 0; i < tied.size(); ++i) {
        set(tied[i], before + 1 + static_cast<double>(i));
      }
      return;
    case RankMethod::min:
      rank = before + 1;
      break;
    case RankMethod::max:
      rank = before + size;
      break;
    case RankMethod::dense:
      rank = group;
      break;
    case RankMethod::average:
      break;
  }
  for (std::size_t i = 0; i < tied.size(); ++i) {
    set(tied[i], rank);
  }
}

}  // namespace

void rank(Data x, std::span<double> out, const RankOptions& options) {
  requireSize("out", out.size(), x.size());
  onElements(x, [&]<typename T>(std::span<const T> elements) {
    double group = 0;
    nag2::visitSorted(elements.data(), elements.size(), false,
                      [&](std::size_t first, nag2::TiedPositions tied) {
                        if (isMissing(elements[tied[0]])) {
                          if (options.missing == Missing::raise) {
                            throwMissing("x");
                          }
                          for (std::size_t i = 0; i < tied.size(); ++i) {
                            out[tied[i]] = static_cast<double>(elements[tied[i]]);
                          }
                          return;
                        }
                        rankTied(options.method, static_cast<double>(first), ++group, tied,
                                 [&](std::size_t i, double r) { out[i] = r; });
                      });
  });
}

std::vector<double> rank(Data x, const RankOptions& options) {
  std::vector<double> out(x.size());
  rank(x, out, options);
  return out;
}

}  // namespace vexel
