// Neighbour joining by the plain double loop, straight from the definition [Saitou1987, Studier1988].
#ifndef ZORVEK_TESTS_PLAIN_JOINING_H
#define ZORVEK_TESTS_PLAIN_JOINING_H

#include <algorithm>
#include <numeric>
#include <tuple>
#include <vector>

#include "wide/data/topology.h"

namespace zorvek::test {

// A new node takes the place of the first of the two that it joins, or the last one.  Cost: n^3.
template <typename Number>
wide::Topology JoinPlainly(int n, const double* const* distances, bool last = false) {
  std::vector<std::size_t> open(Index(n));  // the nodes that are not yet joined
  std::iota(open.begin(), open.end(), 0);
  std::vector<std::vector<Number>> d(Index(2 * n - 3), std::vector<Number>(Index(2 * n - 3)));
  for (const std::size_t i : open) {
    for (const std::size_t k : open) d[i][k] = i == k ? 0 : static_cast<Number>(distances[i][k]);
  }
  wide::Topology tree(n);
  const auto link = [&tree](std::size_t child, int node, std::size_t place) {
    tree.adjacent[Index(node - tree.taxa)][place] = static_cast<int>(child);
    tree.Replace(static_cast<int>(child), -1, node);
  };
  for (int node = n; node < 2 * n - 3; ++node) {
    std::vector<Number> share(d.size());
    for (const std::size_t i : open) {
      double sum = 0;
      for (const std::size_t k : open) sum += double{d[i][k]};
      share[i] = static_cast<Number>(sum / static_cast<double>(open.size() - 2));
    }
    auto first = open.begin(), second = first + 1;
    const auto q = [&](auto i, auto k) { return d[*i][*k] - (share[*i] + share[*k]); };
    for (auto i = open.begin(); i != open.end(); ++i) {
      for (auto k = i + 1; k != open.end(); ++k) {
        if (q(i, k) < q(first, second)) std::tie(first, second) = std::make_pair(i, k);
      }
    }
    const std::size_t a = *first, b = *second, joined = Index(node);
    link(a, node, 0);
    link(b, node, 1);
    for (const std::size_t k : open) {
      d[joined][k] = d[k][joined] = (d[a][k] + d[b][k] - d[a][b]) * Number{0.5};
    }
    *first = joined;
    open.erase(second);
    if (last) std::rotate(first, first + 1, open.end());
  }
  for (std::size_t i = 0; i < 3; ++i) link(open[i], 2 * n - 3, i);
  return tree;
}

}  // namespace zorvek::test

#endif
