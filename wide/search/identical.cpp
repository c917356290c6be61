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

// Moves the taxa of the group to one of them, one after the other. Returns the moves that undo it, the
// last of them to be made first.
template <typename Changing>
std::vector<SprMove> Gather(const std::vector<int>& group, int anchor, const Topology& now,
                            Changing& tree) {
  std::vector<SprMove> undoing;
  for (const int taxon : group) {
    const int holder = now.leaf_adjacent[Index(taxon)];
    const int beside = now.leaf_adjacent[Index(anchor)];
    if (holder == beside) continue;
    SprMove undo{holder, taxon};
    for (const int near : now.At(holder)) {
      if (near != taxon) (undo.from < 0 ? undo.from : undo.to) = near;
    }
    undoing.push_back(undo);
    tree.Apply({holder, taxon, anchor, beside});
  }
  return undoing;
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
    const std::vector<int>& group = groups[k];
    int best = group.front();
    double shortest = std::numeric_limits<double>::infinity();
    for (const int anchor : group) {
      const std::vector<SprMove> undoing = Gather(group, anchor, tree.Current(), tree);
      if (tree.Length() < shortest) {
        shortest = tree.Length();
        best = anchor;
      }
      for (auto undo = undoing.rbegin(); undo != undoing.rend(); ++undo) tree.Apply(*undo);
    }
    Gather(group, best, tree.Current(), tree);
    together = Together(groups, tree.Current());
  }
}

void KeepTogether(const Groups& groups, Topology& tree) {
  const std::vector<bool> together = Together(groups, tree);
  for (std::size_t k = 0; k < groups.size(); ++k) {
    if (!together[k]) Gather(groups[k], groups[k].front(), tree, tree);
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
