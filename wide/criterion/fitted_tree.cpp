#include "wide/criterion/fitted_tree.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "core/index.h"
#include "wide/criterion/edge_lengths.h"
#include "wide/criterion/numbering.h"
#include "wide/data/topology.h"

namespace zorvek::wide {

namespace {

constexpr double kRounding = 1e-12;  // of a length, as a share of the largest distance

void ClearRounding(const double* const* distances, Tree& tree) {
  double largest = 0;
  for (int i = 0; i < tree.taxa; ++i) {
    largest = std::max(largest, *std::max_element(distances[i], distances[i] + tree.taxa));
  }
  ClearRounding(kRounding * largest, tree);
}

// By node, the length of the edge on the way to taxon 0.
std::vector<double> Lengths(Criterion criterion, const Topology& topology,
                            const double* const* distances) {
  switch (criterion) {
    case Criterion::kBalanced:
      return BalancedLengths(topology, distances);
    case Criterion::kOls:
      return OlsLengths(topology, distances);
  }
  throw std::logic_error("no such criterion");
}

}  // namespace

FittedTree Fit(Criterion criterion, const Topology& topology, const double* const* distances) {
  const std::vector<double> lengths = Lengths(criterion, topology, distances);
  const Numbering numbering = NumberNodes(topology);
  FittedTree fitted;
  fitted.tree = MakeTree(topology, [&](int u, int v) {
    const bool above = u == 0 || (v != 0 && numbering.row[Index(u)] > numbering.row[Index(v)]);
    return lengths[Index(above ? v : u)];
  });
  for (const double length : lengths) {
    fitted.length += criterion == Criterion::kOls ? std::max(length, 0.0) : length;
  }
  ClearRounding(distances, fitted.tree);
  return fitted;
}

}  // namespace zorvek::wide
