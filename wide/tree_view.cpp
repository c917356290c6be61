#include "wide/tree_view.h"

#include <algorithm>
#include <cstddef>

namespace zorvek::wide {

namespace {

struct Branch {
  int node;
  double length;
};

// The three branches of each internal node, the one of each taxon; the root of the search is gone.
std::vector<std::vector<Branch>> Branches(const Tree& tree) {
  const int root = 2 * tree.taxa - 2;
  std::vector<std::vector<Branch>> branches(static_cast<std::size_t>(root));
  const auto join = [&](int a, int b) {
    const double length = std::max(tree.length[static_cast<std::size_t>(b)], 0.0);
    branches[static_cast<std::size_t>(a)].push_back({b, length});
    branches[static_cast<std::size_t>(b)].push_back({a, length});
  };
  for (int node = tree.taxa; node < root; ++node) {
    for (const int child : tree.children[static_cast<std::size_t>(node - tree.taxa)]) {
      join(node, child);
    }
  }
  join(tree.children.back()[0], tree.children.back()[1]);
  return branches;
}

// Every node before the nodes below it, and the children of each.
std::vector<int> Hang(const std::vector<std::vector<Branch>>& branches, TreeView& view) {
  std::vector<int> order{view.top};
  std::vector<int> above(branches.size(), -1);
  for (std::size_t k = 0; k < order.size(); ++k) {
    const auto node = static_cast<std::size_t>(order[k]);
    for (const Branch& branch : branches[node]) {
      if (branch.node == above[node]) continue;
      const auto child = static_cast<std::size_t>(branch.node);
      above[child] = order[k];
      view.nodes[child].length = branch.length;
      view.nodes[node].children.push_back(branch.node);
      order.push_back(branch.node);
    }
  }
  return order;
}

void SortChildren(const std::vector<int>& order, TreeView& view) {
  std::vector<int> smallest(view.nodes.size());
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    std::vector<int>& children = view.nodes[static_cast<std::size_t>(*node)].children;
    const auto key = [&](int child) { return smallest[static_cast<std::size_t>(child)]; };
    std::sort(children.begin(), children.end(), [&](int a, int b) { return key(a) < key(b); });
    smallest[static_cast<std::size_t>(*node)] = children.empty() ? *node : key(children[0]);
  }
}

}  // namespace

TreeView View(const Tree& tree) {
  const std::vector<std::vector<Branch>> branches = Branches(tree);
  TreeView view;
  view.taxa = tree.taxa;
  view.top = branches[0][0].node;
  view.nodes.resize(branches.size());
  SortChildren(Hang(branches, view), view);

  std::vector<int> open{view.top};
  while (!open.empty()) {
    const int node = open.back();
    open.pop_back();
    view.preorder.push_back(node);
    const std::vector<int>& children = view.At(node).children;
    open.insert(open.end(), children.rbegin(), children.rend());
  }
  return view;
}

}  // namespace zorvek::wide
