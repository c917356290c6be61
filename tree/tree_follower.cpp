#include "tree/tree_follower.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <memory>

#include "driver/run_state.h"

namespace zorvek {

namespace {

int scopes = 0;
std::unique_ptr<TreeFollower> shared;

}  // namespace

FollowerScope::FollowerScope() {
  ++scopes;
}

FollowerScope::~FollowerScope() {
  if (--scopes == 0) shared.reset();
}

TreeFollower& FollowerScope::Follow(TreeTable tree) const {
  if (shared == nullptr) shared = std::make_unique<TreeFollower>(n, DM1);
  temp1.clear();
  shared->Follow(tree);
  return *shared;
}

Quartet AroundEdge(int u, int v, TreeTable tree) {
  const FollowerScope scope;
  const SubtreeSums& sums = scope.Follow(tree).Sums();
  return sums.Around(sums.Parent(u) == v ? u : v);
}

TreeFollower::TreeFollower(int taxa_count, const double* const* distances)
    : sums_(taxa_count, distances),
      children_(static_cast<std::size_t>(taxa_count - 2), {-1, -1}),
      lengths_(2 * children_.size()),
      positive_(static_cast<int>(lengths_.size())),
      gains_(static_cast<int>(lengths_.size())) {
  changed_.reserve(children_.size());
}

void TreeFollower::Follow(TreeTable tree) {
  changed_.clear();
  for (std::size_t row = 0; row < children_.size(); ++row) {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): equal bits are what is asked for.
    if (std::memcmp(&tree[row][kLeft], &children_[row], sizeof children_[row]) != 0) {
      changed_.push_back(static_cast<int>(row));
    }
  }
  if (changed_.empty()) return;
  for (const int row : changed_) {
    children_[static_cast<std::size_t>(row)] = {tree[row][kLeft], tree[row][kRight]};
  }
  if (!FollowInterchange()) {
    for (const int row : changed_) {
      sums_.SetChildren(sums_.Taxa() + row, Id(tree[row], kLeft), Id(tree[row], kRight));
    }
    sums_.Update();
  }
  RefreshEdges();
}

// Whether the changed rows are those of one interchange; if so, makes it.
bool TreeFollower::FollowInterchange() {
  if (changed_.size() != 2) return false;
  const auto children = [this](int node) {
    return children_[static_cast<std::size_t>(node - sums_.Taxa())];
  };
  for (const int row : changed_) {
    const int child = sums_.Taxa() + row;
    const int node = sums_.Taxa() + (row == changed_[0] ? changed_[1] : changed_[0]);
    if (sums_.Left(child) < 0 || sums_.Parent(child) != node) continue;
    const double left = sums_.Left(child);
    const double sibling = sums_.Sibling(child);
    const bool child_is_left = sums_.Left(node) == child;
    const std::array<double, 2> lower = {sibling, static_cast<double>(sums_.Right(child))};
    const std::array<double, 2> upper = {child_is_left ? child : left,
                                         child_is_left ? left : child};
    if (children(child) != lower || children(node) != upper) continue;
    sums_.Interchange(child);
    return true;
  }
  return false;
}

int TreeFollower::Slot(int node) const {
  const int parent = sums_.Parent(node);
  return 2 * (parent - sums_.Taxa()) + (sums_.Right(parent) == node ? 1 : 0);
}

void TreeFollower::RefreshEdges() {
  for (const int node : sums_.ChangedEdges()) {
    if (sums_.Parent(node) == sums_.Root()) {
      central_length_ = InternalLength(sums_.Around(node));
      continue;
    }
    const int slot = Slot(node);
    double length;
    double gain = Tournament::kAbsent;
    if (sums_.IsLeaf(node)) {
      length = sums_.ExternalLength(node);
    } else {
      const Quartet around = sums_.Around(node);
      length = InternalLength(around);
      gain = InterchangeGain(around);
    }
    lengths_[static_cast<std::size_t>(slot)] = length;
    positive_.Set(slot, std::max(length, 0.0));
    gains_.Set(slot, gain);
  }
}

double TreeFollower::Length() {
  const double total = positive_.Total();
  return central_length_ > 0 ? total + central_length_ : total;
}

void TreeFollower::WriteLengths(TreeTable tree) const {
  const double* length = lengths_.data();
  for (std::size_t row = 0; row < children_.size(); ++row, length += 2) {
    tree[row][kLeftLength] = length[0];
    tree[row][kRightLength] = length[1];
  }
  tree[children_.size()][kLeftLength] = central_length_;
}

TreeFollower::Candidate TreeFollower::Best() const {
  const int slot = gains_.Winner();
  const int node = sums_.Taxa() + slot / 2;
  return {slot % 2 == 0 ? sums_.Left(node) : sums_.Right(node), gains_.Value(slot)};
}

bool TreeFollower::Improve(TreeTable tree) {
  if (!CanImprove()) return false;
  const Candidate best = Best();
#ifndef NDEBUG
  const double before = RawLength();
#endif
  Interchange(best.child, tree);
  assert(std::fabs(before - RawLength() - best.gain) <= 1e-9 * (1 + std::fabs(before)));
  return true;
}

void TreeFollower::Interchange(int child, TreeTable tree) {
  const int node = sums_.Parent(child);
  zorvek::Interchange(tree, node, child);
  for (const int row : {node - sums_.Taxa(), child - sums_.Taxa()}) {
    children_[static_cast<std::size_t>(row)] = {tree[row][kLeft], tree[row][kRight]};
  }
  sums_.Interchange(child);
  RefreshEdges();
}

double TreeFollower::RawLength() const {
  double total = central_length_;
  for (const double length : lengths_) total += length;
  return total;
}

}  // namespace zorvek
