#include "wide/support/splits.h"

#include <algorithm>
#include <cstddef>

namespace zorvek::wide {

SplitIndex::SplitIndex(const Tree& reference) : rank_(static_cast<std::size_t>(reference.taxa)) {
  int next = 0;
  for (const int node : reference.preorder) {
    if (reference.IsTaxon(node)) rank_[static_cast<std::size_t>(node)] = next++;
  }
  const std::vector<Run> runs = Runs(reference);
  for (int node = reference.taxa; node < static_cast<int>(runs.size()); ++node) {
    const Run& run = runs[static_cast<std::size_t>(node)];
    if (reference.IsGroup(node)) splits_[{run.first, run.last}] = node;
  }
}

std::vector<int> SplitIndex::Shared(const Tree& other) const {
  std::vector<int> nodes;
  const std::vector<Run> runs = Runs(other);
  for (int node = other.taxa; node < static_cast<int>(runs.size()); ++node) {
    const Run& run = runs[static_cast<std::size_t>(node)];
    if (!other.IsGroup(node) || run.last - run.first + 1 != run.size) continue;
    const auto split = splits_.find({run.first, run.last});
    if (split != splits_.end()) nodes.push_back(split->second);
  }
  return nodes;
}

// Unrooted trees hang at the first taxon, so no run holds it, and equal splits have equal runs.
std::vector<SplitIndex::Run> SplitIndex::Runs(const Tree& tree) const {
  std::vector<Run> runs(tree.nodes.size(), Run{tree.taxa, -1, 0});
  for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
    Run& run = runs[static_cast<std::size_t>(*node)];
    if (tree.IsTaxon(*node)) {
      const int rank = rank_[static_cast<std::size_t>(*node)];
      run = {rank, rank, 1};
    }
    for (const int child : tree.At(*node).children) {
      const Run& below = runs[static_cast<std::size_t>(child)];
      run.first = std::min(run.first, below.first);
      run.last = std::max(run.last, below.last);
      run.size += below.size;
    }
  }
  return runs;
}

}  // namespace zorvek::wide
