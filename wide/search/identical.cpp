#include "wide/search/identical.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <set>
#include <utility>

#include "core/index.h"
#include "wide/search/sectors.h"

namespace zorvek::wide {

namespace {

// Edges from each node to the root.
std::vector<int> Depths(const Tree& tree) {
  std::vector<int> depths(tree.nodes.size());
  for (const int node : tree.preorder) {
    for (const int child : tree.At(node).children) depths[Index(child)] = depths[Index(node)] + 1;
  }
  return depths;
}

// The nodes whose edge has taxa of the group on both sides, or the first of them, one more than `most`.
// They are met by climbing from the taxa, the deepest first, to where all come together.
std::vector<int> EdgesWithin(const std::vector<int>& group, const Tree& tree,
                             const std::vector<int>& depths, std::size_t most) {
  std::set<std::pair<int, int>> climbing;
  for (const int taxon : group) climbing.emplace(-depths[Index(taxon)], taxon);
  std::vector<int> edges;
  while (climbing.size() > 1 && edges.size() <= most) {
    const auto [minus_depth, node] = *climbing.begin();
    climbing.erase(climbing.begin());
    edges.push_back(node);
    climbing.emplace(minus_depth + 1, tree.At(node).parent);
  }
  return edges;
}

// Whether each group has a part of the tree for itself: 2k - 2 edges for k taxa.
std::vector<bool> Together(const Groups& groups, const Topology& topology) {
  const Tree tree = MakeTree(topology, [](int, int) { return 0; });
  const std::vector<int> depths = Depths(tree);
  std::vector<bool> together;
  for (const std::vector<int>& group : groups) {
    const std::size_t own = 2 * group.size() - 2;
    together.push_back(EdgesWithin(group, tree, depths, own).size() <= own);
  }
  return together;
}

// The largest subtrees without a taxon of another group.
// Requires: there is such a taxon.
std::vector<HangingSubtree> Parts(const std::vector<int>& group, const Topology& tree) {
  std::vector<bool> own(Index(tree.Nodes()));
  for (const int taxon : group) own[Index(taxon)] = true;
  const int other = static_cast<int>(std::find(own.begin(), own.end(), false) - own.begin());
  std::vector<HangingSubtree> order{{tree.leaf_adjacent[Index(other)], other}};
  for (std::size_t k = 0; k < order.size(); ++k) {
    const auto [root, holder] = order[k];
    if (tree.IsLeaf(root)) continue;
    const auto [a, b] = tree.Others(root, holder);
    order.push_back({a, root});
    order.push_back({b, root});
  }
  for (auto at = order.rbegin(); at != order.rend(); ++at) {
    if (tree.IsLeaf(at->root)) continue;
    const auto [a, b] = tree.Others(at->root, at->holder);
    own[Index(at->root)] = own[Index(a)] && own[Index(b)];
  }
  std::vector<HangingSubtree> parts;
  for (const HangingSubtree& part : order) {
    if (own[Index(part.root)] && !own[Index(part.holder)]) parts.push_back(part);
  }
  return parts;
}

// The tree with all parts of a group at the place of one of them.
Topology Gathered(const std::vector<HangingSubtree>& parts, const HangingSubtree& anchor,
                  Topology tree) {
  int beside = anchor.holder;
  for (const auto& [root, holder] : parts) {
    if (root == anchor.root) continue;
    tree.Apply({holder, root, anchor.root, beside});
    beside = holder;
  }
  return tree;
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

std::vector<int> DistinctTaxa(int n, const Groups& groups) {
  std::vector<bool> follows(Index(n));
  for (const std::vector<int>& group : groups) {
    for (std::size_t k = 1; k < group.size(); ++k) follows[Index(group[k])] = true;
  }
  std::vector<int> distinct;
  for (int taxon = 0; taxon < n; ++taxon) {
    if (!follows[Index(taxon)]) distinct.push_back(taxon);
  }
  return distinct;
}

Topology WithoutOthers(const std::vector<int>& kept, Topology tree) {
  std::vector<int> number(Index(tree.Nodes()), -1);
  for (std::size_t k = 0; k < kept.size(); ++k) number[Index(kept[k])] = static_cast<int>(k);
  std::vector<bool> gone(number.size());
  for (int taxon = 0; taxon < tree.taxa; ++taxon) {
    if (number[Index(taxon)] >= 0) continue;
    const int holder = tree.leaf_adjacent[Index(taxon)];
    const auto [a, b] = tree.Others(holder, taxon);
    tree.Replace(a, holder, b);
    tree.Replace(b, holder, a);
    gone[Index(holder)] = true;
  }
  Topology left(static_cast<int>(kept.size()));
  int next = left.taxa;
  for (int node = tree.taxa; node < tree.Nodes(); ++node) {
    if (!gone[Index(node)]) number[Index(node)] = next++;
  }
  for (int node = tree.taxa; node < tree.Nodes(); ++node) {
    if (gone[Index(node)]) continue;
    for (std::size_t side = 0; side < 3; ++side) {
      const int near = number[Index(tree.At(node)[side])];
      left.adjacent[Index(number[Index(node)] - left.taxa)][side] = near;
      if (left.IsLeaf(near)) left.leaf_adjacent[Index(near)] = number[Index(node)];
    }
  }
  left.root = AnyInnerEdge(left);
  return left;
}

Topology WithGroups(const Groups& groups, const std::vector<int>& kept, int n,
                    const Topology& tree) {
  const auto now = [&](int node) {
    return tree.IsLeaf(node) ? kept[Index(node)] : node - tree.taxa + n;
  };
  Topology all(n);
  for (int leaf = 0; leaf < tree.taxa; ++leaf) {
    all.leaf_adjacent[Index(now(leaf))] = now(tree.leaf_adjacent[Index(leaf)]);
  }
  for (int node = tree.taxa; node < tree.Nodes(); ++node) {
    for (std::size_t side = 0; side < 3; ++side) {
      all.adjacent[Index(now(node) - n)][side] = now(tree.At(node)[side]);
    }
  }
  int holder = n + tree.taxa - 2;
  for (const std::vector<int>& group : groups) {
    const int first = group.front();
    for (std::size_t k = 1; k < group.size(); ++k, ++holder) {
      const int beyond = all.leaf_adjacent[Index(first)];
      all.adjacent[Index(holder - n)] = {first, group[k], beyond};
      all.Replace(beyond, first, holder);
      all.leaf_adjacent[Index(first)] = all.leaf_adjacent[Index(group[k])] = holder;
    }
  }
  all.root = {now(tree.root.first), now(tree.root.second)};
  return all;
}

void KeepTogether(const Groups& groups, Neighbourhood& tree) {
  if (groups.empty()) return;
  std::vector<bool> together = Together(groups, tree.Current());
  for (std::size_t k = 0; k < groups.size(); ++k) {
    if (together[k]) continue;
    const Topology apart = tree.Current();
    const std::vector<HangingSubtree> parts = Parts(groups[k], apart);
    Topology best;
    double shortest = std::numeric_limits<double>::infinity();
    for (const HangingSubtree& anchor : parts) {
      tree.Set(Gathered(parts, anchor, apart));
      if (!(tree.Length() < shortest)) continue;
      shortest = tree.Length();
      best = tree.Current();
    }
    tree.Set(best);
    together = Together(groups, best);
  }
}

void KeepTogether(const Groups& groups, Topology& tree) {
  const std::vector<bool> together = Together(groups, tree);
  for (std::size_t k = 0; k < groups.size(); ++k) {
    if (together[k]) continue;
    const std::vector<HangingSubtree> parts = Parts(groups[k], tree);
    tree = Gathered(parts, parts[0], std::move(tree));
  }
}

void ClearWithin(const Groups& groups, Tree& tree) {
  const std::vector<int> depths = Depths(tree);
  for (const std::vector<int>& group : groups) {
    for (const int node : EdgesWithin(group, tree, depths, tree.nodes.size())) {
      tree.nodes[Index(node)].length = 0;
    }
  }
}

}  // namespace zorvek::wide
