#include "wide/criterion/numbering.h"

#include <utility>

#include "core/index.h"

namespace zorvek::wide {

Numbering NumberNodes(const Topology& topology) {
  const std::size_t nodes = Index(topology.Nodes());
  Numbering made{std::vector<int>(nodes), std::vector<int>(nodes), std::vector<int>(nodes)};
  const int top = topology.leaf_adjacent[0];
  std::vector<std::pair<int, int>> order{{top, 0}};  // nodes, each after its parent
  for (std::size_t k = 0; k < order.size(); ++k) {
    const auto [node, parent] = order[k];
    if (topology.IsLeaf(node)) continue;
    const auto [a, b] = topology.Others(node, parent);
    order.push_back({a, node});
    order.push_back({b, node});
  }
  std::vector<int> size(nodes, 1);
  for (auto at = order.rbegin(); at != order.rend(); ++at) {
    if (at->first != top) size[Index(at->second)] += size[Index(at->first)];
  }
  made.row[0] = made.node[0] = made.first[0] = 0;
  made.row[Index(top)] = topology.Nodes() - 1;
  for (const auto& [node, parent] : order) {
    const int row = made.row[Index(node)];
    made.node[Index(row)] = node;
    made.first[Index(row)] = row - size[Index(node)] + 1;
    if (topology.IsLeaf(node)) continue;
    auto [large, small] = topology.Others(node, parent);
    if (size[Index(large)] < size[Index(small)]) std::swap(large, small);
    made.row[Index(small)] = row - 1;
    made.row[Index(large)] = row - 1 - size[Index(small)];
  }
  return made;
}

}  // namespace zorvek::wide
