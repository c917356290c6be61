#include "wide/criterion/fitted_tree.h"

#include <algorithm>
#include <vector>

#include "core/index.h"
#include "wide/criterion/balanced_lengths.h"
#include "wide/criterion/criterion.h"
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

FittedTree FitBalanced(const Topology& topology, const double* const* distances) {
  const std::vector<double> lengths = BalancedLengths(topology, distances);
  const Numbering numbering = NumberNodes(topology);
  FittedTree fitted;
  fitted.tree = MakeTree(topology, [&](int u, int v) {
    const bool above = u == 0 || (v != 0 && numbering.row[Index(u)] > numbering.row[Index(v)]);
    return lengths[Index(above ? v : u)];
  });
  for (const double length : lengths) fitted.length += length;
  ClearRounding(distances, fitted.tree);
  return fitted;
}

}  // namespace

FittedTree Fitted(Neighbourhood& neighbourhood, const double* const* distances) {
  FittedTree fitted;
  fitted.tree = MakeTree(neighbourhood.Current(),
                         [&](int u, int v) { return neighbourhood.EdgeLength(u, v); });
  fitted.length = neighbourhood.Length();
  ClearRounding(distances, fitted.tree);
  return fitted;
}

FittedTree Fit(Criterion criterion, const Topology& topology, const double* const* distances) {
  if (criterion == Criterion::kBalanced) return FitBalanced(topology, distances);
  return Fitted(*MakeNeighbourhood(criterion, topology, distances), distances);
}

}  // namespace zorvek::wide
