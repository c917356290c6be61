// Trees that are joined or given, with their lengths.
#include <algorithm>
#include <utility>
#include <vector>

#include "core/index.h"
#include "wide/criterion/fitted_tree.h"
#include "wide/data/topology.h"
#include "wide/search/neighbour_joining.h"
#include "zorvek/search.h"

namespace zorvek::wide {

template <typename Number>
SearchResult JoinedTree(int n, Number* const* distances) {
  std::vector<double> lengths;
  Joining joining;
  joining.lengths = &lengths;
  const Topology joined = JoinNeighboursInPlace(n, distances, joining);
  // Of the two ends of an edge the one that was joined has the smaller number.
  Tree tree = MakeTree(joined, [&](int u, int v) { return lengths[Index(std::min(u, v))]; });
  const double length = TotalLength(tree);
  return {std::move(tree), length};
}

template SearchResult JoinedTree(int, double* const*);
template SearchResult JoinedTree(int, float* const*);

SearchResult FitTree(const Tree& tree, const double* const* distances, Criterion criterion) {
  FittedTree fitted = Fit(criterion, TopologyOf(tree), distances);
  return {std::move(fitted.tree), fitted.length};
}

}  // namespace zorvek::wide
