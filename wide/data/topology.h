// An unrooted binary tree without edge lengths: what the search changes.
//
//   0         2         Leaves are the taxa 0..n-1, internal nodes n..2n-3. Five taxa:
//    \       /
//     5--6--7             adjacent[0] = {0, 1, 6}  of node 5      leaf_adjacent[2] = 7
//    /   |   \            adjacent[1] = {5, 4, 7}  of node 6
//   1    4    3           adjacent[2] = {6, 2, 3}  of node 7
#ifndef ZORVEK_WIDE_DATA_TOPOLOGY_H
#define ZORVEK_WIDE_DATA_TOPOLOGY_H

#include <array>
#include <functional>
#include <utility>
#include <vector>

#include "core/index.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// Subtree pruning and regrafting: the subtree at `subtree`, together with the node `holder` that holds
// it, moves into the edge (from, to), `from` being the end that is nearer to it. An NNI is the SPR to
// an edge next to the one that the holder leaves.
struct SprMove {
  int holder = -1, subtree = -1, from = -1, to = -1;
  double gain = 0;  // by which the criterion's ranking length falls
};

struct Topology {
  int taxa = 0;
  std::vector<std::array<int, 3>> adjacent;  // of the internal nodes taxa..2 taxa - 3
  std::vector<int> leaf_adjacent;            // of each leaf 0..taxa-1
  std::pair<int, int> root;  // ends of an internal edge, from which ordered walks may set out

  Topology() = default;
  explicit Topology(int taxa_count)
      : taxa(taxa_count),
        adjacent(Index(taxa_count - 2), {-1, -1, -1}),
        leaf_adjacent(Index(taxa_count), -1) {}

  int Nodes() const { return 2 * taxa - 2; }
  bool IsLeaf(int node) const { return node < taxa; }
  const std::array<int, 3>& At(int node) const { return adjacent[Index(node - taxa)]; }

  // The two neighbours of an internal node other than `skipped`, in their stored order.
  std::pair<int, int> Others(int node, int skipped) const {
    const std::array<int, 3>& near = At(node);
    if (near[0] == skipped) return {near[1], near[2]};
    return {near[0], near[1] == skipped ? near[2] : near[1]};
  }

  // Puts `now` where `before` stood among the neighbours of a node.
  void Replace(int node, int before, int now) {
    if (IsLeaf(node)) {
      leaf_adjacent[Index(node)] = now;
      return;
    }
    std::array<int, 3>& near = adjacent[Index(node - taxa)];
    (near[0] == before ? near[0] : near[1] == before ? near[1] : near[2]) = now;
  }

  // Makes an SPR move.  Requires: the edge (from, to) is neither in the subtree nor at its holder.
  void Apply(const SprMove& move) {
    const auto [a, b] = Others(move.holder, move.subtree);
    Replace(a, move.holder, b);
    Replace(b, move.holder, a);
    Replace(move.from, move.to, move.holder);
    Replace(move.to, move.from, move.holder);
    Replace(move.holder, a, move.from);
    Replace(move.holder, b, move.to);
    RepairRoot(move.holder);
  }

 private:
  bool Adjacent(int u, int v) const {
    const std::array<int, 3>& near = At(u);
    return near[0] == v || near[1] == v || near[2] == v;
  }

  // If the root edge is gone, takes the first internal edge at an end of it that did not move.
  void RepairRoot(int moved) {
    if (Adjacent(root.first, root.second)) return;
    const int end = root.first == moved ? root.second : root.first;
    for (const int near : At(end)) {
      if (!IsLeaf(near)) {
        root = {end, near};
        return;
      }
    }
  }
};

// The unrooted tree of a topology, length(u, v) being that of the edge between two of its nodes.
// Cost: n log n.
Tree MakeTree(const Topology& topology, const std::function<double(int, int)>& length);

// The topology of an unrooted tree of at least 4 taxa. The subtrees at a node of more than three
// edges are joined in pairs, in their order, until three are left.  Cost: n.
Topology TopologyOf(const Tree& tree);

}  // namespace zorvek::wide

#endif
