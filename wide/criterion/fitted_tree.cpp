#include "wide/criterion/fitted_tree.h"

#include <algorithm>

#include "wide/data/topology.h"

namespace zorvek::wide {

namespace {

constexpr double kRounding = 1e-12;  // of a length, as a share of the largest distance

}  // namespace

FittedTree Fitted(Neighbourhood& neighbourhood, const double* const* distances) {
  FittedTree fitted;
  fitted.tree = MakeTree(neighbourhood.Current(),
                         [&](int u, int v) { return neighbourhood.EdgeLength(u, v); });
  fitted.length = neighbourhood.Length();
  double largest = 0;
  for (int i = 0; i < fitted.tree.taxa; ++i) {
    const double* row = distances[i];
    largest = std::max(largest, *std::max_element(row, row + fitted.tree.taxa));
  }
  ClearRounding(kRounding * largest, fitted.tree);
  return fitted;
}

}  // namespace zorvek::wide
