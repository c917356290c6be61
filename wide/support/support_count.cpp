#include "wide/support/support_count.h"

#include "core/index.h"

namespace zorvek::wide {

SupportCount::SupportCount(const Tree& reference, SupportMeasure measure)
    : measure_(measure),
      splits_(reference),
      transfer_(reference),
      misses_(reference.nodes.size()) {}

std::vector<int> SupportCount::Misses(const Tree& other) const {
  if (measure_ == SupportMeasure::kTransfer) return transfer_.Distances(other);
  std::vector<int> misses(misses_.size(), 1);
  for (const int node : splits_.Shared(other)) misses[Index(node)] = 0;
  return misses;
}

void SupportCount::Add(const std::vector<int>& misses) {
  for (std::size_t node = 0; node < misses.size(); ++node) misses_[node] += misses[node];
  ++trees_;
}

void SupportCount::SetSupports(Tree& reference) const {
  for (int node = 0; node < static_cast<int>(misses_.size()); ++node) {
    double& support = reference.nodes[Index(node)].support;
    support = Tree::kNoSupport;
    if (trees_ == 0 || !reference.IsGroup(node)) continue;
    const long most =
        trees_ * (measure_ == SupportMeasure::kTransfer ? transfer_.Farthest(node) : 1);
    support = static_cast<double>(most - misses_[Index(node)]) / static_cast<double>(most);
  }
}

void SetSupports(const std::vector<Tree>& trees, SupportMeasure measure, Tree& tree) {
  SupportCount count(tree, measure);
  for (const Tree& other : trees) count.Add(count.Misses(other));
  count.SetSupports(tree);
}

}  // namespace zorvek::wide
