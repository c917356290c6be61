#include "tests/trees.h"

#include <limits>

#include "wide/criterion/ols_neighbourhood.h"
#include "wide/search/neighbour_joining.h"

namespace zorvek::test {

using wide::DistanceMatrix;
using wide::Topology;
using WideTree = wide::Tree;

DistanceMatrix RandomMatrix(int n, std::uint32_t seed) {
  return Matrix(n, RandomDistances(seed));
}

DistanceMatrix TreeLikeMatrix(int n, double noise, std::uint32_t seed) {
  return Matrix(n, TreeLikeDistances(n, noise, seed));
}

wide::SearchSettings Settings(wide::Criterion criterion, long iterations) {
  wide::SearchSettings settings;
  settings.criterion = criterion;
  settings.iterations = iterations;
  return settings;
}

wide::SearchResult Find(const DistanceMatrix& distances, const wide::SearchSettings& settings) {
  return FindShortestTree(distances.Size(), distances.Rows(), settings);
}

WideTree Result(const wide::Neighbourhood& found) {
  return MakeTree(found.Current(), [&](int u, int v) { return found.EdgeLength(u, v); });
}

WideTree RandomTree(int n, std::mt19937& generator) {
  const DistanceMatrix matrix = RandomMatrix(n, static_cast<std::uint32_t>(generator()));
  return Result(wide::OlsNeighbourhood(wide::JoinNeighbours(n, matrix.Rows()), matrix.Rows()));
}

Topology RandomTopology(const DistanceMatrix& distances, std::mt19937_64& generator) {
  return wide::JoinNeighbours(distances.Size(), distances.Rows(), {0, &generator});
}

double LeastOfAll(int n, const std::function<double(const Topology&)>& length) {
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
        more.root = {node, u};
        if (next + 1 < n) {
          open.emplace_back(more, next + 1);
        } else {
          least = std::min(least, length(more));
        }
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

std::map<std::set<int>, std::pair<double, double>> Edges(const WideTree& tree) {
  std::map<std::set<int>, std::pair<double, double>> edges;
  std::vector<std::set<int>> below(tree.nodes.size());
  for (auto at = tree.preorder.rbegin(); *at != tree.root; ++at) {
    const WideTree::Node& here = tree.At(*at);
    std::set<int>& taxa = below[Index(*at)];
    if (tree.IsTaxon(*at)) taxa.insert(*at);
    below[Index(here.parent)].insert(taxa.begin(), taxa.end());
    const auto [edge, added] =
        edges.insert({WithoutFirst(taxa, tree.taxa), {here.length, here.support}});
    if (added) continue;
    edge->second.first += here.length;
    if (edge->second.second != here.support) edge->second.second = -9;
  }
  return edges;
}

double PathLength(const WideTree& tree, int a, int b) {
  double sum = 0;
  for (const auto& [split, edge] : Edges(tree)) {
    if (split.count(a) != split.count(b)) sum += std::max(edge.first, 0.0);
  }
  return sum;
}

WideTree Contracted(const WideTree& tree, const std::function<bool(int)>& gone) {
  WideTree result;
  result.taxa = tree.taxa;
  result.nodes.resize(Index(tree.taxa));
  std::vector<int> place(tree.nodes.size());  // the node in the result
  for (const int node : tree.preorder) {
    const int parent = node == tree.root ? -1 : place[Index(tree.At(node).parent)];
    int& now = place[Index(node)] = node;
    if (!tree.IsTaxon(node)) {
      now = node != tree.root && gone(node) ? parent : static_cast<int>(result.nodes.size());
      if (now == parent) continue;
      result.nodes.emplace_back();
    }
    result.nodes[Index(now)] = {parent, {}, tree.At(node).length, tree.At(node).support};
    if (parent >= 0) result.nodes[Index(parent)].children.push_back(now);
  }
  result.root = place[Index(tree.root)];
  Ladderise(result);
  return result;
}

}  // namespace zorvek::test
