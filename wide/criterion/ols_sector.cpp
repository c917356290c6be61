#include "wide/criterion/ols_sector.h"

#include <utility>

#include "core/index.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

namespace {

// The two subtrees that a hanging one consists of, or itself where it is a taxon.
std::vector<HangingSubtree> Halves(const Topology& tree, const HangingSubtree& subtree) {
  if (tree.IsLeaf(subtree.root)) return {subtree};
  const auto [a, b] = tree.Others(subtree.root, subtree.holder);
  return {{a, subtree.root}, {b, subtree.root}};
}

// The number of the part that each taxon is in.
std::vector<int> PartOfTaxa(const Topology& tree, const std::vector<HangingSubtree>& parts) {
  std::vector<int> part(Index(tree.taxa), -1);
  for (std::size_t k = 0; k < parts.size(); ++k) {
    std::vector<HangingSubtree> open{parts[k]};
    while (!open.empty()) {
      const HangingSubtree at = open.back();
      open.pop_back();
      if (tree.IsLeaf(at.root)) {
        part[Index(at.root)] = static_cast<int>(k);
        continue;
      }
      const auto [a, b] = tree.Others(at.root, at.holder);
      open.push_back({a, at.root});
      open.push_back({b, at.root});
    }
  }
  return part;
}

// The sums of distances between the parts, which have all taxa between them. One part at most has the
// root of the sums in it: its row is the columns of the others.
SubtreeSums SumsBetween(const OlsTree& whole, const std::vector<HangingSubtree>& parts) {
  const Topology& tree = whole.Current();
  const std::vector<int> part = PartOfTaxa(tree, parts);
  std::vector<int> leaves;
  for (const auto& [root, holder] : parts) {
    leaves.push_back(static_cast<int>(whole.Leaves(whole.Seen(holder, root))));
  }
  DistanceMatrix sums(static_cast<int>(parts.size()));
  std::vector<double> row(parts.size());
  for (std::size_t k = 0; k < parts.size(); ++k) {
    const auto [root, holder] = parts[k];
    if (whole.Up(holder) == root) continue;
    row.assign(parts.size(), 0);
    for (int taxon = 0; taxon < tree.taxa; ++taxon) {
      row[Index(part[Index(taxon)])] += whole.ToLeaf(root, taxon);
    }
    for (std::size_t j = 0; j < parts.size(); ++j) {
      if (j != k) sums.Set(static_cast<int>(k), static_cast<int>(j), row[j]);
    }
  }
  return SubtreeSums(leaves, sums.Rows());
}

}  // namespace

OlsSector::OlsSector(const Topology& topology, const std::vector<HangingSubtree>& subtrees,
                     const OlsTree& whole, double largest_distance)
    : topology_(topology), in_(Index(topology.Nodes())) {
  std::vector<HangingSubtree> parts;
  for (const HangingSubtree& subtree : subtrees) {
    first_half_.push_back(static_cast<int>(parts.size()));
    for (const HangingSubtree& half : Halves(whole.Current(), subtree)) parts.push_back(half);
  }
  leaves_ = static_cast<int>(parts.size());
  first_half_.push_back(leaves_);
  out_.assign(Index(2 * leaves_ - 2), -1);
  int inner = leaves_;  // nodes within: leaves, the sector's own, and those that hold two halves
  const auto pair = [&](int node, int within) {
    in_[Index(node)] = within;
    out_[Index(within)] = node;
  };
  for (int node = topology.taxa; node < topology.Nodes(); ++node) pair(node, inner++);
  const int closed = inner;
  for (int leaf = 0; leaf < topology.taxa; ++leaf) {
    const int first = first_half_[Index(leaf)];
    pair(leaf, first + 1 == first_half_[Index(leaf + 1)] ? first : inner++);
  }
  within_ = std::make_unique<OlsNeighbourhood>(OlsTree(Expanded(), SumsBetween(whole, parts)),
                                               closed, largest_distance);
}

// The tree within.
Topology OlsSector::Expanded() const {
  Topology tree(leaves_);
  const auto at = [&](int node) -> std::array<int, 3>& {
    return tree.adjacent[Index(node - leaves_)];
  };
  for (int node = topology_.taxa; node < topology_.Nodes(); ++node) {
    for (std::size_t side = 0; side < 3; ++side) at(In(node))[side] = In(topology_.At(node)[side]);
  }
  for (int leaf = 0; leaf < topology_.taxa; ++leaf) {
    const int node = In(leaf), half = first_half_[Index(leaf)];
    const int holder = In(topology_.leaf_adjacent[Index(leaf)]);
    if (tree.IsLeaf(node)) {
      tree.leaf_adjacent[Index(node)] = holder;
      continue;
    }
    at(node) = {half, half + 1, holder};
    tree.leaf_adjacent[Index(half)] = tree.leaf_adjacent[Index(half + 1)] = node;
  }
  tree.root = {In(topology_.root.first), In(topology_.root.second)};
  return tree;
}

void OlsSector::Set(const Topology& topology) {
  topology_ = topology;
  within_->Set(Expanded());
}

SprMove OlsSector::Out(const SprMove& move) const {
  const auto out = [this](int node) { return out_[Index(node)]; };
  return {out(move.holder), out(move.subtree), out(move.from), out(move.to), move.gain};
}

bool OlsSector::BestSpr(int holder, int subtree, SprMove& best, int thread) {
  if (!within_->BestSpr(In(holder), In(subtree), best, thread)) return false;
  best = Out(best);
  return true;
}

bool OlsSector::Resettle(int holder, int subtree, double heat, const double* noise, SprMove& move) {
  if (!within_->Resettle(In(holder), In(subtree), heat, noise, move)) return false;
  move = Out(move);
  return true;
}

bool OlsSector::BestNni(int u, int v, SprMove& best) {
  if (!within_->BestNni(In(u), In(v), best)) return false;
  best = Out(best);
  return true;
}

void OlsSector::Apply(const SprMove& move) {
  topology_.Apply(move);
  within_->Apply({In(move.holder), In(move.subtree), In(move.from), In(move.to)});
}

std::unique_ptr<Neighbourhood> OlsSector::Contracted(
    const Topology& topology, const std::vector<HangingSubtree>& subtrees) const {
  std::vector<HangingSubtree> inside;
  for (const auto& [root, holder] : subtrees) inside.push_back({In(root), In(holder)});
  return within_->Contracted(topology, inside);
}

}  // namespace zorvek::wide
