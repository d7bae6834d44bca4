// Trimming and winsorizing: by weight, so that a weight of 3 counts as three equal elements.
#include <algorithm>
#include <cmath>

#include "functions/data/elements.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/rank_words.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

void requireCut(const char* function, Cut cut) {
  if (!(cut.lower >= 0 && cut.upper >= 0 && cut.lower + cut.upper <= 1)) {
    throw std::domain_error(std::string(function) + ": " +
                            mustBe("cut", "fractions of at least 0, together at most 1",
                                   number(cut.lower) + " and " + number(cut.upper)));
  }
}

enum class Fate : std::uint8_t { missing, absent, below, kept, above };

// What becomes of each element, and the outermost ones that stay.
struct Cutting {
  std::vector<Fate> fates;
  std::size_t smallestKept = 0;
  std::size_t largestKept = 0;
  bool keepsAny = false;
};

template <typename T>
Cutting cutting(const char* function, std::span<const T> x, Cut cut, const TrimOptions& options) {
  requireCut(function, cut);
  const Data w = options.weights;
  requireWeights(w, x.size());
  requireSomeWeight(function, x, w);
  Cutting result{std::vector<Fate>(x.size(), Fate::kept)};
  double total = 0;
  kernels::forEach(x.size(), [&](std::size_t i) {
    const double weight = w.given() ? w[i] : 1;
    if (weight == 0) {
      result.fates[i] = Fate::absent;
    } else if (isMissing(x[i]) || isMissing(weight)) {
      result.fates[i] = Fate::missing;
      if (options.missing == Missing::raise) {
        refuseMissing(function, i);
      }
    } else {
      total += weight;
    }
  });
  const double below = std::floor(cut.lower * total);
  const double above = std::floor(cut.upper * total);
  double sum = 0;
  nag2::visitSorted(x.data(), x.size(), false, [&](std::size_t, nag2::TiedPositions tied) {
    for (std::size_t k = 0; k < tied.size(); ++k) {
      const std::size_t i = tied[k];
      if (result.fates[i] != Fate::kept) {
        continue;
      }
      const double before = sum;
      sum += w.given() ? w[i] : 1;
      if (sum <= below) {
        result.fates[i] = Fate::below;
      } else if (total - before <= above) {
        result.fates[i] = Fate::above;
      } else {
        (result.keepsAny ? result.largestKept : result.smallestKept) = i;
        result.largestKept = i;
        result.keepsAny = true;
      }
    }
  });
  return result;
}

// f(elements) with elements of type T.
template <typename T, typename F>
std::vector<T> onElementsAs(Data x, F f) {
  requireElement<T>(x);
  return onElements(x, [&]<typename E>(std::span<const E> elements) {
    if constexpr (std::is_same_v<E, T>) {
      return f(elements);
    } else {
      const std::vector<T> converted(elements.begin(), elements.end());
      return f(std::span<const T>(converted));
    }
  });
}

template <typename T>
std::vector<T> keptOf(std::span<const T> x, const Cutting& cuts, bool missingToo) {
  std::vector<T> kept;
  kernels::forEach(x.size(), [&](std::size_t i) {
    const Fate fate = cuts.fates[i];
    if (fate == Fate::kept || (fate == Fate::missing && missingToo)) {
      kept.push_back(x[i]);
    }
  });
  return kept;
}

template <typename T>
void replaceCut(std::span<const T> x, const Cutting& cuts, std::span<T> out) {
  kernels::forEach(out.size(), [&](std::size_t i) {
    if (cuts.fates[i] == Fate::below) {
      out[i] = x[cuts.smallestKept];
    } else if (cuts.fates[i] == Fate::above) {
      out[i] = x[cuts.largestKept];
    }
  });
}

}  // namespace

template <DataElement T>
std::vector<T> trimmed(Data x, Cut cut, const TrimOptions& options) {
  return onElementsAs<T>(x, [&](std::span<const T> elements) {
    const Cutting cuts = cutting("trim", elements, cut, options);
    return keptOf(elements, cuts, options.missing == Missing::propagate);
  });
}

template <DataElement T>
std::vector<T> winsorized(Data x, Cut cut, const TrimOptions& options) {
  return onElementsAs<T>(x, [&](std::span<const T> elements) {
    const Cutting cuts = cutting("winsorize", elements, cut, options);
    std::vector<T> out = copyOf(elements);
    if (!cuts.keepsAny) {
      const auto cutOff = [](Fate fate) { return fate == Fate::below || fate == Fate::above; };
      if (std::any_of(cuts.fates.begin(), cuts.fates.end(), cutOff)) {
        throw std::domain_error("winsorize: the cut leaves no element to set the others to");
      }
      return out;
    }
    replaceCut(elements, cuts, std::span<T>(out));
    return out;
  });
}

#define TRIM_OF(T)                                                \
  template std::vector<T> trimmed(Data, Cut, const TrimOptions&); \
  template std::vector<T> winsorized(Data, Cut, const TrimOptions&);
TRIM_OF(double)
TRIM_OF(float)
TRIM_OF(std::int32_t)
TRIM_OF(std::int64_t)
#undef TRIM_OF

}  // namespace vexel
