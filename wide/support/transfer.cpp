// The taxa below an edge of the reference are red, the others blue. A blue taxon counts 1, a red one
// -1. If S is the sum below an edge of the other tree, p + S taxa must change sides to make its split
// of the reference's with p red ones, or n - p - S if the sides are named the other way round. So the
// least and the greatest sum of all edges are wanted while taxa change colour.
//
//   other tree, heavy paths       A taxon that changes colour changes the sums of all edges on its way
//         r                       to the root. These are the beginnings of log n heavy paths at most,
//        / \\                     which lead on to the child with the most taxa; a path is a range of
//       1   a                     places in a segment tree that adds to ranges and knows the least and
//          / \\                   the greatest of all.
//         2   b
//            / \\                 places: r a b 4 | 1 | 2 | 3
//           3   4
//
// The edges of the reference are taken along its heavy paths too, from below: each step up colours the
// taxa of the lighter children only, n log n of them in all.
#include "wide/support/transfer.h"

#include <algorithm>

#include "core/index.h"

namespace zorvek::wide {

namespace {

constexpr int kFar = 1 << 29;  // beyond any sum

// Numbers at places, all 0 at first: adds to ranges of them, and knows the least and the greatest.
class Extremes {
 public:
  explicit Extremes(int places) {
    while (size_ < Index(places)) size_ *= 2;
    added_.resize(size_);
    least_.resize(2 * size_, kFar);
    most_.resize(2 * size_, -kFar);
  }

  // To be called for each place that counts, and then Prepare.
  void Set(int place, int value) {
    least_[size_ + Index(place)] = most_[size_ + Index(place)] = value;
  }
  void Prepare() {
    for (std::size_t k = size_ - 1; k > 0; --k) Gather(k);
  }

  void Add(int begin, int end, int change) {
    const std::size_t first = Index(begin) + size_;
    const std::size_t last = Index(end) + size_ - 1;
    for (std::size_t a = first, b = last + 1; a < b; a /= 2, b /= 2) {
      if (a % 2 == 1) AddBelow(a++, change);
      if (b % 2 == 1) AddBelow(--b, change);
    }
    for (std::size_t k = first / 2; k > 0; k /= 2) Gather(k);
    for (std::size_t k = last / 2; k > 0; k /= 2) Gather(k);
  }

  int Least() const { return least_[1]; }
  int Most() const { return most_[1]; }

 private:
  void AddBelow(std::size_t k, int change) {
    least_[k] += change;
    most_[k] += change;
    if (k < size_) added_[k] += change;
  }
  void Gather(std::size_t k) {
    least_[k] = std::min(least_[2 * k], least_[2 * k + 1]) + added_[k];
    most_[k] = std::max(most_[2 * k], most_[2 * k + 1]) + added_[k];
  }

  std::size_t size_ = 2;
  std::vector<int> added_, least_, most_;  // of the ranges that halve each other; the whole is 1
};

// The sums of the edges of one tree. In a ladderised tree a heavy path leads on to the last child.
class Colours {
 public:
  explicit Colours(const Tree& tree)
      : tree_(tree),
        head_(tree.nodes.size()),
        place_(tree.nodes.size()),
        sums_(static_cast<int>(tree.nodes.size())) {
    int next = 0;
    for (const int head : tree.preorder) {
      const int parent = tree.At(head).parent;
      if (parent >= 0 && tree.At(parent).children.back() == head) continue;
      for (int node = head;; node = tree.At(node).children.back()) {
        head_[Index(node)] = head;
        place_[Index(node)] = next++;
        if (tree.At(node).children.empty()) break;
      }
    }
    std::vector<int> below(tree.nodes.size());
    for (auto node = tree.preorder.rbegin(); node != tree.preorder.rend(); ++node) {
      int& taxa = below[Index(*node)];
      if (tree.IsTaxon(*node)) taxa = 1;
      for (const int child : tree.At(*node).children) taxa += below[Index(child)];
      if (tree.IsTaxon(*node) || tree.IsGroup(*node)) sums_.Set(place_[Index(*node)], taxa);
    }
    sums_.Prepare();
  }

  // A taxon becomes red (-2) or blue again (2).
  void Change(int taxon, int change) {
    for (int node = taxon; node >= 0;) {
      const int head = head_[Index(node)];
      sums_.Add(place_[Index(head)], place_[Index(node)] + 1, change);
      node = tree_.At(head).parent;
    }
  }

  // The fewest taxa to change sides, `red` being red.
  int Distance(int red) const {
    return std::min(red + sums_.Least(), tree_.taxa - red - sums_.Most());
  }

 private:
  const Tree& tree_;
  std::vector<int> head_;   // of the path of each node
  std::vector<int> place_;  // of each node
  Extremes sums_;
};

}  // namespace

TransferIndex::TransferIndex(const Tree& reference)
    : reference_(reference), begin_(reference.nodes.size()), end_(reference.nodes.size()) {
  for (const int node : reference.preorder) {
    begin_[Index(node)] = static_cast<int>(order_.size());
    if (reference.IsTaxon(node)) order_.push_back(node);
  }
  for (auto node = reference.preorder.rbegin(); node != reference.preorder.rend(); ++node) {
    const std::vector<int>& children = reference.At(*node).children;
    end_[Index(*node)] = children.empty() ? begin_[Index(*node)] + 1 : end_[Index(children.back())];
  }
}

int TransferIndex::Farthest(int node) const {
  return std::min(Size(node), reference_.taxa - Size(node)) - 1;
}

std::vector<int> TransferIndex::Distances(const Tree& other) const {
  std::vector<int> distances(reference_.nodes.size());
  Colours colours(other);
  const auto change = [&](int begin, int end, int by) {
    for (int k = begin; k < end; ++k) colours.Change(order_[Index(k)], by);
  };
  for (const int head : reference_.preorder) {
    const int parent = reference_.At(head).parent;
    if (reference_.IsTaxon(head) || parent < 0) continue;
    if (parent != reference_.root && reference_.At(parent).children.back() == head) continue;
    int node = head;
    while (!reference_.IsTaxon(node)) node = reference_.At(node).children.back();
    int begin = end_[Index(head)];  // of the red taxa, which end with the path's last one
    for (;; node = reference_.At(node).parent) {
      change(begin_[Index(node)], begin, -2);
      begin = begin_[Index(node)];
      if (reference_.IsGroup(node)) distances[Index(node)] = colours.Distance(Size(node));
      if (node == head) break;
    }
    change(begin, end_[Index(head)], 2);
  }
  return distances;
}

}  // namespace zorvek::wide
