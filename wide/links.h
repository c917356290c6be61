// An unrooted binary tree by its links: what zorvek-wide's search changes.
#ifndef ZORVEK_WIDE_LINKS_H
#define ZORVEK_WIDE_LINKS_H

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace zorvek::wide {

struct Links {
  int taxa = 0;
  std::vector<std::array<int, 3>> at;  // neighbours of the internal nodes taxa..2 taxa - 3
  std::vector<int> leaf_at;            // the neighbour of each leaf 0..taxa-1
  std::pair<int, int> root;            // ends of the internal edge that sums are rooted on

  explicit Links(int taxa_count)
      : taxa(taxa_count),
        at(static_cast<std::size_t>(taxa_count - 2), {-1, -1, -1}),
        leaf_at(static_cast<std::size_t>(taxa_count), -1) {}

  bool IsLeaf(int node) const { return node < taxa; }
  const std::array<int, 3>& At(int node) const { return at[static_cast<std::size_t>(node - taxa)]; }

  // The two neighbours of an internal node other than `skipped`, in their stored order.
  std::pair<int, int> Others(int node, int skipped) const {
    const std::array<int, 3>& near = At(node);
    if (near[0] == skipped) return {near[1], near[2]};
    return {near[0], near[1] == skipped ? near[2] : near[1]};
  }

  // Puts `now` where `before` stood among the neighbours of a node.
  void Replace(int node, int before, int now) {
    if (IsLeaf(node)) {
      leaf_at[static_cast<std::size_t>(node)] = now;
      return;
    }
    std::array<int, 3>& near = at[static_cast<std::size_t>(node - taxa)];
    (near[0] == before ? near[0] : near[1] == before ? near[1] : near[2]) = now;
  }

  // Moves the subtree at `subtree`, together with the node that holds it, into the edge (from, to).
  // Requires: the edge is neither in the subtree nor next to the node.
  void Regraft(int node, int subtree, int from, int to) {
    const auto [a, b] = Others(node, subtree);
    Replace(a, node, b);
    Replace(b, node, a);
    Replace(from, to, node);
    Replace(to, from, node);
    Replace(node, a, from);
    Replace(node, b, to);
    RepairRoot(node);
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

}  // namespace zorvek::wide

#endif
