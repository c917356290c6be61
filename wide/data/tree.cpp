#include "zorvek/tree.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "core/index.h"
#include "wide/data/topology.h"

namespace zorvek::wide {

namespace {

struct Edge {
  int u, v;
  double length;
  double support;
};

// The edges of a tree that may have a root of two children: that becomes one edge.
std::vector<Edge> EdgesOf(const Tree& tree) {
  std::vector<Edge> edges;
  for (int node = 0; node < static_cast<int>(tree.nodes.size()); ++node) {
    const Tree::Node& here = tree.At(node);
    if (node == tree.root || (tree.IsRooted() && here.parent == tree.root)) continue;
    edges.push_back({node, here.parent, here.length, here.support});
  }
  if (tree.IsRooted()) {
    const int a = tree.At(tree.root).children[0];
    const int b = tree.At(tree.root).children[1];
    const bool inner = !tree.IsTaxon(a) && !tree.IsTaxon(b);
    edges.push_back({a, b, tree.At(a).length + tree.At(b).length,
                     inner ? std::max(tree.At(a).support, tree.At(b).support) : Tree::kNoSupport});
  }
  return edges;
}

// The tree of these edges, hung up at a node.
Tree Hung(int taxa, int root, const std::vector<Edge>& edges) {
  Tree tree;
  tree.taxa = taxa;
  tree.root = root;
  tree.nodes.resize(edges.size() + 1);
  std::vector<std::vector<const Edge*>> around(tree.nodes.size());
  for (const Edge& edge : edges) {
    around[Index(edge.u)].push_back(&edge);
    around[Index(edge.v)].push_back(&edge);
  }
  std::vector<int> order{root};
  for (std::size_t k = 0; k < order.size(); ++k) {
    const int node = order[k];
    for (const Edge* edge : around[Index(node)]) {
      const int near = edge->u == node ? edge->v : edge->u;
      if (near == tree.At(node).parent) continue;
      tree.nodes[Index(node)].children.push_back(near);
      tree.nodes[Index(near)] = {node, {}, edge->length, edge->support};
      order.push_back(near);
    }
  }
  Ladderise(tree);
  return tree;
}

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
  std::vector<std::pair<int, int>> rank(tree.nodes.size());  // taxa below, and the smallest of them
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    std::vector<int>& children = tree.nodes[Index(*node)].children;
    std::sort(children.begin(), children.end(),
              [&](int a, int b) { return rank[Index(a)] < rank[Index(b)]; });
    std::pair<int, int>& here = rank[Index(*node)];
    here = tree.IsTaxon(*node) ? std::pair{1, *node} : std::pair{0, tree.taxa};
    for (const int child : children) {
      const auto [below, smallest] = rank[Index(child)];
      here = {here.first + below, std::min(here.second, smallest)};
    }
  }
}

// Of the edge above a node as a root is looked for: one without a length counts as 0.
double PathLength(const Tree& tree, int node) {
  const double length = tree.ShownLength(node);
  return std::isnan(length) ? 0 : length;
}

// For each node the greatest distance to a taxon below it, and the child on the way (-1 for a taxon).
std::vector<std::pair<double, int>> Depths(const Tree& tree) {
  std::vector<std::pair<double, int>> depths(tree.nodes.size(), {0, -1});
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    for (const int child : tree.At(*node).children) {
      const double depth = depths[Index(child)].first + PathLength(tree, child);
      std::pair<double, int>& deepest = depths[Index(*node)];
      if (deepest.second < 0 || depth > deepest.first) deepest = {depth, child};
    }
  }
  return depths;
}

}  // namespace

Tree MakeTree(const Topology& topology, const std::function<double(int, int)>& length) {
  std::vector<Edge> edges;
  for (int node = topology.taxa; node < topology.Nodes(); ++node) {
    for (const int near : topology.At(node)) {
      if (near < node) edges.push_back({near, node, length(node, near), Tree::kNoSupport});
    }
  }
  return Hung(topology.taxa, topology.leaf_adjacent[0], edges);
}

Topology TopologyOf(const Tree& tree) {
  Topology topology(tree.taxa);
  int next = tree.taxa;
  const auto attach = [&](int node, std::size_t place, int other) {
    topology.adjacent[Index(node - tree.taxa)][place] = other;
    if (topology.IsLeaf(other)) {
      topology.leaf_adjacent[Index(other)] = node;
    } else {
      topology.adjacent[Index(other - tree.taxa)][2] = node;
    }
  };
  std::vector<int> top(tree.nodes.size());  // of each subtree, in the topology
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    if (tree.IsTaxon(*node)) {
      top[Index(*node)] = *node;
      continue;
    }
    std::vector<int> parts;
    for (const int child : tree.At(*node).children) parts.push_back(top[Index(child)]);
    const std::size_t left = *node == tree.root ? 3 : 1;
    std::size_t begin = 0;
    for (; parts.size() - begin > left; begin += 2) {
      attach(next, 0, parts[begin]);
      attach(next, 1, parts[begin + 1]);
      parts.push_back(next++);
    }
    top[Index(*node)] = parts.back();
    if (*node != tree.root) continue;
    for (std::size_t k = 0; k < left; ++k) attach(next, k, parts[begin + k]);
  }
  const std::array<int, 3>& last = topology.At(next);
  topology.root = {next, *std::max_element(last.begin(), last.end())};
  return topology;
}

void Ladderise(Tree& tree) {
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

Tree Unrooted(const Tree& tree) {
  std::vector<Edge> edges = EdgesOf(tree);
  const int last = static_cast<int>(tree.nodes.size()) - 1;
  if (tree.IsRooted()) {
    for (Edge& edge : edges) {
      if (edge.u == last) edge.u = tree.root;
      if (edge.v == last) edge.v = tree.root;
    }
  }
  for (const Edge& edge : edges) {
    if (edge.u == 0) return Hung(tree.taxa, edge.v, edges);
    if (edge.v == 0) return Hung(tree.taxa, edge.u, edges);
  }
  return tree;
}

Tree Renumbered(const Tree& tree, const std::vector<int>& number) {
  std::vector<Edge> edges = EdgesOf(tree);
  const auto renumber = [&](int node) { return tree.IsTaxon(node) ? number[Index(node)] : node; };
  for (Edge& edge : edges) {
    edge.u = renumber(edge.u);
    edge.v = renumber(edge.v);
  }
  const auto first = std::find_if(edges.begin(), edges.end(),
                                  [](const Edge& edge) { return edge.u == 0 || edge.v == 0; });
  return Hung(tree.taxa, first->u == 0 ? first->v : first->u, edges);
}

Tree RootedAbove(const Tree& tree, int node, double share) {
  std::vector<Edge> edges = EdgesOf(tree);
  const auto edge = std::find_if(edges.begin(), edges.end(), [&](const Edge& candidate) {
    return candidate.u == node && candidate.v == tree.At(node).parent;
  });
  const int root = static_cast<int>(tree.nodes.size());
  const Edge above{edge->v, root, edge->length * (1 - share), edge->support};
  *edge = {node, root, edge->length * share, edge->support};
  edges.push_back(above);
  return Hung(tree.taxa, root, edges);
}

Tree RootedAtMidpoint(const Tree& tree) {
  const std::vector<std::pair<double, int>> depths = Depths(tree);
  double longest = -1;
  int top = tree.root;  // of the longest path, which goes down from there on two sides
  for (const int node : tree.preorder) {
    double second = 0;
    for (const int child : tree.At(node).children) {
      if (child == depths[Index(node)].second) continue;
      second = std::max(second, depths[Index(child)].first + PathLength(tree, child));
    }
    if (!tree.IsTaxon(node) && depths[Index(node)].first + second > longest) {
      longest = depths[Index(node)].first + second;
      top = node;
    }
  }
  int node = depths[Index(top)].second;
  while (depths[Index(node)].first > longest / 2) node = depths[Index(node)].second;
  const double length = PathLength(tree, node);
  const double share = (longest / 2 - depths[Index(node)].first) / length;
  return RootedAbove(tree, node, length > 0 ? std::clamp(share, 0.0, 1.0) : 0.5);
}

Outgroup FindOutgroup(const Tree& tree, const std::vector<int>& taxa) {
  std::vector<int> below(tree.nodes.size());   // taxa
  std::vector<int> wanted(tree.nodes.size());  // of the given ones
  for (const int taxon : taxa) wanted[Index(taxon)] = 1;
  const int count = static_cast<int>(std::count(wanted.begin(), wanted.end(), 1));
  int smallest = tree.taxa;
  Outgroup found{0, false};
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    if (tree.IsTaxon(*node)) below[Index(*node)] = 1;
    for (const int child : tree.At(*node).children) {
      below[Index(*node)] += below[Index(child)];
      wanted[Index(*node)] += wanted[Index(child)];
    }
    if (*node == tree.root) break;
    int group = tree.taxa;
    if (wanted[Index(*node)] == count) group = below[Index(*node)];
    if (wanted[Index(*node)] == 0) group = tree.taxa - below[Index(*node)];
    if (group >= smallest) continue;
    smallest = group;
    found = {*node, group == count};
  }
  return found;
}

void ClearRounding(double threshold, Tree& tree) {
  for (Tree::Node& node : tree.nodes) {
    if (std::abs(node.length) <= threshold) node.length = 0;
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
