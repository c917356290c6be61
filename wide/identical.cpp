#include "wide/identical.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "wide/links.h"
#include "wide/regrafter.h"

namespace zorvek::wide {

namespace {

// The nodes whose edge has taxa of the group on both sides.
std::vector<int> EdgesWithin(const std::vector<int>& group, const TreeView& view) {
  std::vector<int> members(view.nodes.size());
  for (const int taxon : group) members[static_cast<std::size_t>(taxon)] = 1;
  const int all = static_cast<int>(group.size());
  std::vector<int> edges;
  for (auto node = view.preorder.rbegin(); node != view.preorder.rend(); ++node) {
    int& count = members[static_cast<std::size_t>(*node)];
    for (const int child : view.At(*node).children) {
      count += members[static_cast<std::size_t>(child)];
    }
    if (count > 0 && count < all) edges.push_back(*node);
  }
  return edges;
}

// k taxa that have a part of the tree for themselves have 2k - 2 edges in it.
bool Together(const std::vector<int>& group, const TreeView& view) {
  return EdgesWithin(group, view).size() <= 2 * group.size() - 2;
}

Links LinksOf(const Tree& tree) {
  Links links(tree.taxa);
  const auto link = [&](int node, int near) {
    if (links.IsLeaf(node)) {
      links.leaf_at[static_cast<std::size_t>(node)] = near;
    } else {
      links.Replace(node, -1, near);
    }
  };
  const auto join = [&](int a, int b) {
    link(a, b);
    link(b, a);
  };
  for (int node = tree.taxa; node < 2 * tree.taxa - 2; ++node) {
    for (const int child : tree.children[static_cast<std::size_t>(node - tree.taxa)]) {
      join(node, child);
    }
  }
  links.root = {tree.children.back()[0], tree.children.back()[1]};
  join(links.root.first, links.root.second);
  return links;
}

Links Gathered(const std::vector<int>& group, int anchor, Links links) {
  for (const int taxon : group) {
    const int node = links.leaf_at[static_cast<std::size_t>(taxon)];
    const int place = links.leaf_at[static_cast<std::size_t>(anchor)];
    if (node != place) links.Regraft(node, taxon, anchor, place);
  }
  return links;
}

}  // namespace

Groups IdenticalTaxa(const DistanceMatrix& distances) {
  const int n = distances.Size();
  const auto same = [&](int i, int j) {
    return distances(i, j) == 0 &&
           std::equal(distances.Rows()[i], distances.Rows()[i] + n, distances.Rows()[j]);
  };
  std::vector<bool> grouped(static_cast<std::size_t>(n));
  Groups groups;
  for (int i = 0; i < n; ++i) {
    if (grouped[static_cast<std::size_t>(i)]) continue;
    std::vector<int> group{i};
    for (int j = i + 1; j < n; ++j) {
      if (!same(i, j)) continue;
      group.push_back(j);
      grouped[static_cast<std::size_t>(j)] = true;
    }
    if (group.size() > 1) groups.push_back(std::move(group));
  }
  return groups;
}

void KeepTogether(const Groups& groups, const DistanceMatrix& distances, Tree& tree) {
  for (const std::vector<int>& group : groups) {
    if (Together(group, View(tree))) continue;
    const Links apart = LinksOf(tree);
    tree.positive = std::numeric_limits<double>::infinity();
    for (const int anchor : group) {
      const Tree trial = Regrafter(Gathered(group, anchor, apart), distances.Rows()).Result();
      if (trial.positive < tree.positive) tree = trial;
    }
  }
}

void ClearWithin(const Groups& groups, TreeView& view) {
  for (const std::vector<int>& group : groups) {
    for (const int node : EdgesWithin(group, view)) {
      view.nodes[static_cast<std::size_t>(node)].length = 0;
    }
  }
}

}  // namespace zorvek::wide
