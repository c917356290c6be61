#include "wide/search/sectors.h"

#include <algorithm>
#include <numeric>

#include "core/index.h"

namespace zorvek::wide {

namespace {

// Up to `most` nodes around the first one that belong to no sector yet, nearest first.
std::vector<int> Region(const Topology& tree, int first, std::size_t most,
                        std::vector<int>& place) {
  std::vector<int> nodes{first};
  place[Index(first)] = 0;
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    for (const int near : tree.At(nodes[k])) {
      if (nodes.size() == most || tree.IsLeaf(near) || place[Index(near)] >= 0) continue;
      place[Index(near)] = static_cast<int>(nodes.size());
      nodes.push_back(near);
    }
  }
  return nodes;
}

}  // namespace

std::pair<int, int> AnyInnerEdge(const Topology& tree) {
  for (int node = tree.taxa; node < tree.Nodes(); ++node) {
    for (const int near : tree.At(node)) {
      if (!tree.IsLeaf(near)) return {node, near};
    }
  }
  return tree.root;
}

std::vector<Sector> CutIntoSectors(const Topology& tree, int taxa, std::mt19937_64& generator) {
  std::vector<int> seeds(Index(tree.taxa - 2));
  std::iota(seeds.begin(), seeds.end(), tree.taxa);
  std::shuffle(seeds.begin(), seeds.end(), generator);
  std::vector<int> place(Index(tree.Nodes()), -1);   // of a node in its sector
  std::vector<int> number(Index(tree.Nodes()), -1);  // of its sector
  std::vector<Sector> sectors;
  int count = 0;
  for (const int seed : seeds) {
    if (place[Index(seed)] >= 0) continue;
    Sector sector;
    sector.nodes = Region(tree, seed, Index(taxa - 2), place);
    for (const int node : sector.nodes) number[Index(node)] = count;
    ++count;
    const int leaves = static_cast<int>(sector.nodes.size()) + 2;
    if (leaves < kLeastTaxa) continue;
    sector.topology = Topology(leaves);
    for (std::size_t k = 0; k < sector.nodes.size(); ++k) {
      const int node = sector.nodes[k];
      for (std::size_t side = 0; side < 3; ++side) {
        const int near = tree.At(node)[side];
        int& link = sector.topology.adjacent[k][side];
        if (number[Index(near)] == number[Index(node)]) {
          link = leaves + place[Index(near)];
        } else {
          link = static_cast<int>(sector.subtrees.size());
          sector.topology.leaf_adjacent[Index(link)] = leaves + static_cast<int>(k);
          sector.subtrees.push_back({near, node});
        }
      }
    }
    sector.topology.root = AnyInnerEdge(sector.topology);
    sectors.push_back(std::move(sector));
  }
  return sectors;
}

// Where two sectors meet, the one may have been put back before the other, and the root of a subtree of
// the other be another node by now: it is looked up where it stands.
void PutBack(const Sector& sector, const Topology& topology, Topology& tree) {
  std::vector<int> roots(sector.subtrees.size());
  for (std::size_t k = 0; k < sector.nodes.size(); ++k) {
    for (std::size_t side = 0; side < 3; ++side) {
      const int link = sector.topology.adjacent[k][side];
      if (topology.IsLeaf(link)) roots[Index(link)] = tree.At(sector.nodes[k])[side];
    }
  }
  const auto whole = [&](int node) {
    return topology.IsLeaf(node) ? roots[Index(node)] : sector.nodes[Index(node - topology.taxa)];
  };
  for (int leaf = 0; leaf < topology.taxa; ++leaf) {
    tree.Replace(whole(leaf), whole(sector.topology.leaf_adjacent[Index(leaf)]),
                 whole(topology.leaf_adjacent[Index(leaf)]));
  }
  for (std::size_t k = 0; k < sector.nodes.size(); ++k) {
    for (std::size_t side = 0; side < 3; ++side) {
      tree.adjacent[Index(sector.nodes[k] - tree.taxa)][side] = whole(topology.adjacent[k][side]);
    }
  }
  tree.root = AnyInnerEdge(tree);
}

void PutTogether(const std::vector<Sector>& sectors, std::vector<SectorGain> gains,
                 Neighbourhood& tree) {
  gains.erase(
      std::remove_if(gains.begin(), gains.end(),
                     [&](const SectorGain& found) { return !(found.gain > tree.Margin()); }),
      gains.end());
  std::stable_sort(gains.begin(), gains.end(),
                   [](const SectorGain& x, const SectorGain& y) { return x.gain > y.gain; });
  const Topology before = tree.Current();
  const double least = tree.Length() - tree.Margin();
  for (std::size_t count = gains.size(); count > 0; count /= 2) {
    Topology after = before;
    for (std::size_t k = 0; k < count; ++k) {
      PutBack(sectors[Index(gains[k].sector)], gains[k].topology, after);
    }
    tree.Set(after);
    if (tree.Length() < least) return;
  }
  if (!gains.empty()) tree.Set(before);
}

}  // namespace zorvek::wide
