// Neighbour joining by the plain double loop, straight from the definition [Saitou1987, Studier1988].
#ifndef ZORVEK_TESTS_PLAIN_JOINING_H
#define ZORVEK_TESTS_PLAIN_JOINING_H

#include <tuple>
#include <vector>

#include "wide/data/topology.h"

namespace zorvek::test {

// A new node takes the place of the first of the two that it joins, or the last one.  Cost: n^3.
template <typename Number>
wide::Topology JoinPlainly(int n, const Number* const* distances, bool last = false) {
  std::vector<std::vector<Number>> d(Index(n));
  std::vector<int> nodes(d.size());
  for (std::size_t i = 0; i < d.size(); ++i) {
    d[i].assign(distances[i], distances[i] + n);
    d[i][i] = 0;
    nodes[i] = static_cast<int>(i);
  }
  wide::Topology tree(n);
  const auto link = [&tree](int child, int node, std::size_t place) {
    tree.adjacent[Index(node - tree.taxa)][place] = child;
    tree.Replace(child, -1, node);
  };
  for (int id = n; id < 2 * n - 3; ++id) {
    std::vector<Number> share;
    for (const std::vector<Number>& row : d) {
      double sum = 0;
      for (const Number value : row) sum += double{value};
      share.push_back(static_cast<Number>(sum / static_cast<double>(d.size() - 2)));
    }
    std::size_t first = 0, second = 1;
    const auto q = [&](std::size_t i, std::size_t j) { return d[i][j] - (share[i] + share[j]); };
    for (std::size_t i = 0; i < d.size(); ++i) {
      for (std::size_t j = i + 1; j < d.size(); ++j) {
        if (q(i, j) < q(first, second)) std::tie(first, second) = std::make_pair(i, j);
      }
    }
    link(nodes[first], id, 0);
    link(nodes[second], id, 1);
    nodes[first] = id;
    nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(second));
    const Number apart = d[first][second];
    for (std::size_t k = 0; k < d.size(); ++k) {
      if (k == first) continue;
      d[first][k] = d[k][first] = (d[first][k] + d[second][k] - apart) * Number{0.5};
    }
    d.erase(d.begin() + static_cast<std::ptrdiff_t>(second));
    for (std::vector<Number>& row : d) {
      row.erase(row.begin() + static_cast<std::ptrdiff_t>(second));
    }
    if (!last) continue;
    const auto to_the_end = [first](auto& values) {
      const auto at = values.begin() + static_cast<std::ptrdiff_t>(first);
      std::rotate(at, at + 1, values.end());
    };
    to_the_end(d);
    to_the_end(nodes);
    for (std::vector<Number>& row : d) to_the_end(row);
  }
  for (std::size_t i = 0; i < 3; ++i) link(nodes[i], 2 * n - 3, i);
  return tree;
}

}  // namespace zorvek::test

#endif
