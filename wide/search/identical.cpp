#include "wide/search/identical.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "core/index.h"
#include "wide/data/topology.h"

namespace zorvek::wide {

namespace {

// The nodes whose edge has taxa of the group on both sides.
std::vector<int> EdgesWithin(const std::vector<int>& group, const Tree& tree) {
  std::vector<int> members(tree.nodes.size());
  for (const int taxon : group) members[Index(taxon)] = 1;
  const int all = static_cast<int>(group.size());
  std::vector<int> edges;
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    int& count = members[Index(*node)];
    for (const int child : tree.At(*node).children) {
      count += members[Index(child)];
    }
    if (count > 0 && count < all) edges.push_back(*node);
  }
  return edges;
}

// k taxa that have a part of the tree for themselves have 2k - 2 edges in it.
bool Together(const std::vector<int>& group, const Tree& tree) {
  return EdgesWithin(group, tree).size() <= 2 * group.size() - 2;
}

Topology Gathered(const std::vector<int>& group, int anchor, Topology topology) {
  for (const int taxon : group) {
    const int holder = topology.leaf_adjacent[Index(taxon)];
    const int beside = topology.leaf_adjacent[Index(anchor)];
    if (holder != beside) topology.Apply({holder, taxon, anchor, beside});
  }
  return topology;
}

}  // namespace

Groups IdenticalTaxa(int n, const double* const* distances) {
  const auto same = [&](int i, int j) {
    return distances[i][j] == 0 && std::equal(distances[i], distances[i] + n, distances[j]);
  };
  std::vector<bool> grouped(Index(n));
  Groups groups;
  for (int i = 0; i < n; ++i) {
    if (grouped[Index(i)]) continue;
    std::vector<int> group{i};
    for (int j = i + 1; j < n; ++j) {
      if (!same(i, j)) continue;
      group.push_back(j);
      grouped[Index(j)] = true;
    }
    if (group.size() > 1) groups.push_back(std::move(group));
  }
  return groups;
}

void KeepTogether(const Groups& groups, Neighbourhood& tree) {
  for (const std::vector<int>& group : groups) {
    const Topology apart = tree.Current();
    if (Together(group, MakeTree(apart, [](int, int) { return 0; }))) continue;
    Topology best;
    double shortest = std::numeric_limits<double>::infinity();
    for (const int anchor : group) {
      tree.Set(Gathered(group, anchor, apart));
      if (tree.Length() >= shortest) continue;
      shortest = tree.Length();
      best = tree.Current();
    }
    tree.Set(best);
  }
}

void ClearWithin(const Groups& groups, Tree& tree) {
  for (const std::vector<int>& group : groups) {
    for (const int node : EdgesWithin(group, tree)) tree.nodes[Index(node)].length = 0;
  }
}

}  // namespace zorvek::wide
