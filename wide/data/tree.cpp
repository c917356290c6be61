#include "wide/data/tree.h"

namespace zorvek::wide {

namespace {

// Every node before the nodes below it.
std::vector<int> FromTheRoot(Tree& tree) {
  std::vector<int> order{tree.root};
  tree.nodes[Index(tree.root)].parent = -1;
  for (std::size_t k = 0; k < order.size(); ++k) {
    for (const int child : tree.At(order[k]).children) {
      tree.nodes[Index(child)].parent = order[k];
      order.push_back(child);
    }
  }
  return order;
}

void SortChildren(const std::vector<int>& order, Tree& tree) {
  std::vector<int> smallest(tree.nodes.size());
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    std::vector<int>& children = tree.nodes[Index(*node)].children;
    std::sort(children.begin(), children.end(),
              [&](int a, int b) { return smallest[Index(a)] < smallest[Index(b)]; });
    smallest[Index(*node)] = children.empty() ? *node : smallest[Index(children[0])];
  }
}

}  // namespace

Tree MakeTree(const Topology& topology, const std::function<double(int, int)>& length) {
  Tree tree;
  tree.taxa = topology.taxa;
  tree.root = topology.leaf_adjacent[0];
  tree.nodes.resize(Index(topology.Nodes()));
  std::vector<int> order{tree.root};
  for (std::size_t k = 0; k < order.size(); ++k) {
    const int node = order[k];
    if (topology.IsLeaf(node)) continue;
    Tree::Node& here = tree.nodes[Index(node)];
    for (const int near : topology.At(node)) {
      if (near == here.parent) continue;
      here.children.push_back(near);
      tree.nodes[Index(near)].parent = node;
      tree.nodes[Index(near)].length = length(node, near);
      order.push_back(near);
    }
  }
  PutInOrder(tree);
  return tree;
}

void PutInOrder(Tree& tree) {
  SortChildren(FromTheRoot(tree), tree);
  tree.preorder.clear();
  std::vector<int> open{tree.root};
  while (!open.empty()) {
    const int node = open.back();
    open.pop_back();
    tree.preorder.push_back(node);
    const std::vector<int>& children = tree.At(node).children;
    open.insert(open.end(), children.rbegin(), children.rend());
  }
}

double TotalLength(const Tree& tree) {
  double sum = 0;
  for (const Tree::Node& node : tree.nodes) sum += node.length;
  return sum;
}

double PositiveLength(const Tree& tree) {
  double sum = 0;
  for (const Tree::Node& node : tree.nodes) sum += std::max(node.length, 0.0);
  return sum;
}

int NegativeEdges(const Tree& tree) {
  return static_cast<int>(std::count_if(tree.nodes.begin(), tree.nodes.end(),
                                        [](const Tree::Node& node) { return node.length < 0; }));
}

}  // namespace zorvek::wide
