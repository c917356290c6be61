#include "tests/trees.h"

#include <limits>

#include "core/index.h"
#include "tests/data.h"
#include "wide/criterion/ols_neighbourhood.h"
#include "wide/data/topology.h"
#include "wide/search/neighbour_joining.h"

namespace zorvek::wide::test {

DistanceMatrix RandomMatrix(int n, std::mt19937& generator) {
  return zorvek::test::Matrix(
      n, zorvek::test::RandomDistances(static_cast<std::uint32_t>(generator())));
}

Tree Result(const Neighbourhood& found) {
  return MakeTree(found.Current(), [&](int u, int v) { return found.EdgeLength(u, v); });
}

Tree RandomTree(int n, std::mt19937& generator) {
  const DistanceMatrix matrix = RandomMatrix(n, generator);
  return Result(OlsNeighbourhood(JoinNeighbours(n, matrix.Rows()), matrix.Rows()));
}

double LeastOfAll(int n, const std::function<double(const Topology&)>& length,
                  const std::function<bool(const Topology&, int)>& hopeless) {
  double least = std::numeric_limits<double>::infinity();
  Topology three(n);
  three.adjacent[0] = {0, 1, 2};
  three.leaf_adjacent[0] = three.leaf_adjacent[1] = three.leaf_adjacent[2] = n;
  std::vector<std::pair<Topology, int>> open{{three, 3}};  // trees, and the next taxon
  while (!open.empty()) {
    const auto [tree, next] = open.back();
    open.pop_back();
    const int node = n + next - 2;
    for (int u = n; u < node; ++u) {
      for (const int v : tree.At(u)) {
        if (v > u) continue;  // each edge once
        Topology more = tree;
        more.Replace(u, v, node);
        more.Replace(v, u, node);
        more.leaf_adjacent[Index(next)] = node;
        more.adjacent[Index(node - n)] = {u, v, next};
        if (next + 1 < n) {
          if (hopeless && hopeless(more, next + 1)) continue;
          open.emplace_back(more, next + 1);
          continue;
        }
        more.root = {node, u};
        least = std::min(least, length(more));
      }
    }
  }
  return least;
}

std::set<int> WithoutFirst(const std::set<int>& side, int n) {
  if (side.count(0) == 0) return side;
  std::set<int> others;
  for (int taxon = 0; taxon < n; ++taxon) {
    if (side.count(taxon) == 0) others.insert(taxon);
  }
  return others;
}

namespace {

std::vector<std::set<int>> Below(const Tree& tree) {
  std::vector<std::set<int>> below(tree.nodes.size());
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    std::set<int>& taxa = below[Index(*node)];
    if (tree.IsTaxon(*node)) taxa.insert(*node);
    for (const int child : tree.At(*node).children) {
      taxa.insert(below[Index(child)].begin(), below[Index(child)].end());
    }
  }
  return below;
}

}  // namespace

std::vector<std::set<int>> Splits(const Tree& view) {
  std::vector<std::set<int>> splits = Below(view);
  for (int node = 0; node < static_cast<int>(splits.size()); ++node) {
    std::set<int>& taxa = splits[Index(node)];
    taxa =
        view.IsTaxon(node) || node == view.root ? std::set<int>() : WithoutFirst(taxa, view.taxa);
  }
  return splits;
}

std::map<std::set<int>, std::pair<double, double>> Edges(const Tree& tree) {
  std::map<std::set<int>, std::pair<double, double>> edges;
  const std::vector<std::set<int>> below = Below(tree);
  for (const int node : tree.preorder) {
    if (node == tree.root) continue;
    const Tree::Node& here = tree.At(node);
    const auto [edge, added] =
        edges.insert({WithoutFirst(below[Index(node)], tree.taxa), {here.length, here.support}});
    if (added) continue;
    edge->second.first += here.length;
    if (edge->second.second != here.support) edge->second.second = -9;
  }
  return edges;
}

double PathLength(const Tree& tree, int a, int b) {
  double sum = 0;
  for (const auto& [split, edge] : Edges(tree)) {
    if (split.count(a) != split.count(b)) sum += std::max(edge.first, 0.0);
  }
  return sum;
}

Tree Contracted(const Tree& tree, const std::vector<bool>& gone) {
  Tree result;
  result.taxa = tree.taxa;
  result.nodes.resize(Index(tree.taxa));
  std::vector<int> place(tree.nodes.size());  // the node in the result
  for (const int node : tree.preorder) {
    const int parent = node == tree.root ? -1 : place[Index(tree.At(node).parent)];
    if (node != tree.root && !tree.IsTaxon(node) && gone[Index(node)]) {
      place[Index(node)] = parent;
      continue;
    }
    place[Index(node)] = tree.IsTaxon(node) ? node : static_cast<int>(result.nodes.size());
    if (!tree.IsTaxon(node)) result.nodes.emplace_back();
    result.nodes[Index(place[Index(node)])] = {
        parent, {}, tree.At(node).length, tree.At(node).support};
    if (parent >= 0) result.nodes[Index(parent)].children.push_back(place[Index(node)]);
  }
  result.root = place[Index(tree.root)];
  Ladderise(result);
  return result;
}

}  // namespace zorvek::wide::test
