#include "vexel/states/histogram.hpp"

#include "functions/ordering/binning.hpp"
#include "functions/states/totals_bytes.hpp"

namespace vexel {

struct Histogram::Cells {
  Missing policy;
  std::int64_t missing = 0;
  std::vector<double> edges;
  bool equal;
  kernels::ExactTotals totals;

  Cells(Data given, Missing missingPolicy)
      : policy(missingPolicy),
        edges(checkedEdges(given, "edges")),
        equal(edges == equalEdges({edges.front(), edges.back()}, edges.size() - 1)),
        totals(edges.size() - 1) {}
};

Histogram::Histogram(Data edges, Missing missing)
    : cells_(std::make_shared<Cells>(edges, missing)) {}
Histogram::Histogram(const Histogram& other) : cells_(std::make_shared<Cells>(*other.cells_)) {}
Histogram& Histogram::operator=(const Histogram& other) {
  cells_ = std::make_shared<Cells>(*other.cells_);
  return *this;
}

Histogram& Histogram::update(Data x, Data weights) {
  if (weights.given()) {
    changeAll(cells_, [&](Cells& c) {
      const Binning binning(c.edges, c.equal);
      c.missing += takePairs(x, weights, c.policy, [&](double value, double w) {
        const std::size_t bin = binning(value);
        if (bin != Binning::outside) {
          c.totals.add(bin, w);
        }
      });
    });
    return *this;
  }
  Cells& c = *cells_;
  const Binning binning(c.edges, c.equal);
  onElements(x, [&]<typename T>(std::span<const T> points) {
    std::vector<std::uint64_t> counts(binning.bins());
    const std::size_t missing = binning.count(points, counts);
    if (missing > 0 && c.policy == Missing::raise) {
      throwMissing("update", "x");
    }
    for (std::size_t b = 0; b < counts.size(); ++b) {
      c.totals.add(b, static_cast<double>(counts[b]));
    }
    c.missing += static_cast<std::int64_t>(missing);
  });
  return *this;
}

Histogram& Histogram::merge(const Histogram& other) {
  if (cells_->edges != other.cells_->edges) {
    throw std::invalid_argument("Histogram: the edges differ");
  }
  const Cells theirs = *other.cells_;
  cells_->totals.merge(theirs.totals);
  cells_->missing += theirs.missing;
  return *this;
}

std::vector<double> Histogram::counts() const {
  std::vector<double> out(cells_->totals.size());
  for (std::size_t b = 0; b < out.size(); ++b) {
    out[b] = cells_->totals.total(b);
  }
  return out;
}
const std::vector<double>& Histogram::edges() const { return cells_->edges; }
std::int64_t Histogram::missing() const { return cells_->missing; }

std::vector<std::uint8_t> Histogram::to_bytes() const {
  ByteWriter out("hist", totalsVersion);
  out.put(static_cast<std::uint8_t>(cells_->policy)).put(cells_->missing).put(cells_->edges);
  putTotals(out, cells_->totals);
  return out.finish();
}

Histogram Histogram::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader in(bytes, "hist", totalsVersion, "Histogram");
  const Missing policy = getMissing(in);
  const std::int64_t missing = getCount(in);
  Histogram h(in.getVector<double>(), policy);
  h.cells_->missing = missing;
  h.cells_->totals = getTotals(in, h.cells_->totals.size());
  in.finish();
  return h;
}

}  // namespace vexel
