#include "core/subtree_sums.h"

#include <utility>

namespace zorvek {

SubtreeSums::SubtreeSums(int n, const double* const* distances, Precision precision)
    : SubtreeSums(std::vector<int>(Index(n), 1), distances, precision) {}

SubtreeSums::SubtreeSums(const std::vector<int>& leaves, const double* const* distances,
                         Precision precision)
    : n_(static_cast<int>(leaves.size())),
      nodes_(2 * leaves.size() - 1),
      rows_(n_, distances, precision),
      dirty_(nodes_.size()) {
  for (std::vector<int>* scratch : {&pending_, &order_, &changed_edges_}) {
    scratch->reserve(2 * nodes_.size());
  }
  for (int i = 0; i < n_; ++i) {
    At(i).total = rows_.With(i, [this](const auto& row) {
      Sum total = 0;
      for (int j = 0; j < n_; ++j) total += row(j);
      return total;
    });
    At(i).leaves = leaves[Index(i)];
    all_ += leaves[Index(i)];
  }
  SetChildren(Root(), 2 * n_ - 4, 2 * n_ - 3);
}

void SubtreeSums::SetChildren(int node, int left, int right) {
  At(node).left = left;
  At(node).right = right;
  At(left).parent = At(right).parent = node;
  pending_.push_back(node);
}

void SubtreeSums::Update() {
  CollectDirty();
  for (auto node = order_.rbegin(); node != order_.rend(); ++node) {
    At(*node).between = Gather(Left(*node), Right(*node));
    if (*node != Root()) RemakeLeafSet(*node);
  }
  changed_edges_.clear();
  for (const int node : order_) {
    for (const int child : {Left(node), Right(node)}) {
      RemakeAcross(child);
      changed_edges_.push_back(child);
    }
    dirty_[Index(node)] = false;
  }
  RemakeCentral();
  pending_.clear();
}

// Fills order_ with the pending nodes and all above them, each before its children.
void SubtreeSums::CollectDirty() {
  for (int node : pending_) {
    for (; node >= 0 && !dirty_[Index(node)]; node = Parent(node)) {
      dirty_[Index(node)] = true;
    }
  }
  order_.assign(1, Root());
  for (std::size_t next = 0; next < order_.size(); ++next) {
    for (const int child : {Left(order_[next]), Right(order_[next])}) {
      if (dirty_[Index(child)]) order_.push_back(child);
    }
  }
}

void SubtreeSums::Interchange(int node) {
  const int parent = Parent(node);
  const int left = Left(node);
  const int right = Right(node);
  const int sibling = Sibling(node);
  Node& lower = At(node);
  Node& upper = At(parent);

  const Sum sibling_right = upper.between - lower.across;
  upper.between = lower.across + lower.between;
  lower.between = sibling_right;  // lower.across, between the two that trade places, stands
  lower.left = sibling;
  (upper.left == sibling ? upper.left : upper.right) = left;
  At(sibling).parent = node;
  At(left).parent = parent;
  RemakeLeafSet(node);

  for (const int changed : {left, right, sibling, parent}) RemakeAcross(changed);
  if (upper.parent == Root()) RemakeCentral();
  changed_edges_.assign({left, right, sibling, node, parent});
}

void SubtreeSums::RemakeLeafSet(int node) {
  Node& u = At(node);
  const Node& left = At(u.left);
  const Node& right = At(u.right);
  u.leaves = left.leaves + right.leaves;
  u.total = left.total + right.total;
  u.within = left.within + right.within + u.between;
  rows_.Add(u.left, u.right, node);
}

void SubtreeSums::RemakeAcross(int node) {
  if (!IsLeaf(node)) At(node).across = Gather(Left(node), Sibling(node));
}

void SubtreeSums::RemakeCentral() {
  central_ = Gather(Left(Left(Root())), Left(Right(Root())));
}

SubtreeSums::Sum SubtreeSums::Gather(int x, int y) {
  if (Leaves(x) > Leaves(y)) std::swap(x, y);
  return rows_.With(y, [&](auto row) { return SumBelow(x, row); });
}

// Sum of the entries of a row at the leaves below x.
template <typename Row>
SubtreeSums::Sum SubtreeSums::SumBelow(int x, Row row) {
  Sum sum = 0;
  stack_.clear();
  for (;;) {
    while (!IsLeaf(x)) {
      stack_.push_back(Right(x));
      x = Left(x);
    }
    sum += row(x);
    if (stack_.empty()) return sum;
    x = stack_.back();
    stack_.pop_back();
  }
}

SubtreeSums::Sum SubtreeSums::SumOfRow(int node, LeafRange leaves) const {
  return rows_.With(node, [leaves](auto row) {
    Sum sum = 0;
    for (const int leaf : leaves) sum += row(leaf);
    return sum;
  });
}

// Exact where the sum has at most 53 significant bits; otherwise off by the rounding of its low
// word and of the addition.
double SubtreeSums::ToDouble(Sum sum) {
  const auto low = static_cast<std::uint64_t>(sum);
  const auto high = static_cast<std::int64_t>(sum >> 64);
  return static_cast<double>(high) * 18446744073709551616.0 + static_cast<double>(low);
}

Quartet SubtreeSums::Around(int node) const {
  const int parent = Parent(node);
  if (parent == Root()) return AroundCentralEdge();
  const Node& lower = At(node);
  const Node& upper = At(parent);
  const Node& a = At(lower.left);
  const Node& b = At(lower.right);
  const Node& d = At(Sibling(node));
  Quartet q;
  q.a = a.leaves;
  q.b = b.leaves;
  q.c = all_ - upper.leaves;
  q.d = d.leaves;
  const Sum ad = lower.across;
  const Sum bd = upper.between - ad;
  q.ab = Average(lower.between, q.a, q.b);
  q.ac = Average(Outward(a) - lower.between - ad, q.a, q.c);
  q.ad = Average(ad, q.a, q.d);
  q.bc = Average(Outward(b) - lower.between - bd, q.b, q.c);
  q.bd = Average(bd, q.b, q.d);
  q.cd = Average(Outward(d) - upper.between, q.c, q.d);
  return q;
}

Quartet SubtreeSums::AroundCentralEdge() const {
  const Node& u = At(Left(Root()));
  const Node& v = At(Right(Root()));
  Quartet q;
  q.a = At(u.left).leaves;
  q.b = At(u.right).leaves;
  q.c = At(v.left).leaves;
  q.d = At(v.right).leaves;
  q.ab = Average(u.between, q.a, q.b);
  q.ac = Average(central_, q.a, q.c);
  q.ad = Average(u.across - central_, q.a, q.d);
  q.bc = Average(v.across - central_, q.b, q.c);
  q.bd = Average(At(Root()).between - u.across - v.across + central_, q.b, q.d);
  q.cd = Average(v.between, q.c, q.d);
  return q;
}

double SubtreeSums::ExternalLength(int leaf) const {
  const Node& i = At(leaf);
  const Node& upper = At(i.parent);
  const Node& b = At(Sibling(leaf));
  const double own = i.leaves;
  const double beyond = all_ - upper.leaves;
  const double sibling = b.leaves;
  const double to_beyond = Average(i.total - upper.between, own, beyond);
  const double to_sibling = Average(upper.between, own, sibling);
  const double between = Average(Outward(b) - upper.between, beyond, sibling);
  return (to_beyond + to_sibling - between) * 0.5;
}

}  // namespace zorvek
