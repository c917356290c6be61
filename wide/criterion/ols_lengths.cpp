// With S(X, Y) the sum of the distances between the leaves of two subtrees, and p above u in a tree that
// hangs from taxon 0,
//
//   a     b         outward[u] = S(below u, all else)
//    \   /          between[p] = S(u, s)
//      u     s      across[u]  = S(a, s)
//       \   /
//         p         are enough for the averages around the edge between u and p. A taxon adds to these three
//         |         at the nodes above it, by the sums of its row over the leaves below each node.
#include <tuple>
#include <utility>

#include "core/index.h"
#include "core/subtree_sums.h"
#include "wide/criterion/edge_lengths.h"

namespace zorvek::wide {

namespace {

// The length of the edge of a taxon between the subtrees A and B of so many leaves.
double ExternalLength(double to_a, double to_b, double a_to_b, double a, double b) {
  return (to_a / a + to_b / b - a_to_b / (a * b)) * 0.5;
}

class Lengths {
 public:
  explicit Lengths(const Topology& topology)
      : topology_(topology), nodes_(Index(topology.Nodes())), to_below_(nodes_.size()) {
    std::vector<std::pair<int, int>> open{{topology.leaf_adjacent[0], 0}};  // and the node above
    while (!open.empty()) {
      const auto [u, parent] = open.back();
      open.pop_back();
      order_.push_back(u);
      At(u).parent = parent;
      if (topology.IsLeaf(u)) continue;
      std::tie(At(u).left, At(u).right) = topology.Others(u, parent);
      open.emplace_back(At(u).left, u);
      open.emplace_back(At(u).right, u);
    }
    for (auto u = order_.rbegin(); u != order_.rend(); ++u) {
      At(*u).leaves = topology.IsLeaf(*u) ? 1 : At(At(*u).left).leaves + At(At(*u).right).leaves;
    }
  }

  // Adds what is summed over the other taxa of a row.
  void Add(int taxon, const double* row) {
    for (auto u = order_.rbegin(); u != order_.rend(); ++u) {
      to_below_[Index(*u)] = !topology_.IsLeaf(*u) ? ToBelow(At(*u).left) + ToBelow(At(*u).right)
                             : *u == taxon         ? 0
                                                   : row[*u];
    }
    const double all = ToBelow(Top()) + row[0];
    for (int u = taxon, below = -1; u != 0; below = std::exchange(u, At(u).parent)) {
      At(u).outward += all - ToBelow(u);
      if (u == Top()) continue;
      const double to_sibling = ToBelow(Sibling(u));
      if (below >= 0 && below == At(u).left) At(u).across += to_sibling;
      if (u == At(At(u).parent).left) At(At(u).parent).between += to_sibling;
    }
  }

  // Of the edge above a node.
  double Length(int node) const {
    const Node& u = At(node);
    const double all = topology_.taxa;
    if (node == Top()) {
      const Node &a = At(u.left), &b = At(u.right);
      return ExternalLength(a.outward - u.between, b.outward - u.between, u.between, a.leaves,
                            b.leaves);
    }
    const Node &p = At(u.parent), &s = At(Sibling(node));
    if (topology_.IsLeaf(node)) {
      return ExternalLength(u.outward - p.between, p.between, s.outward - p.between, all - p.leaves,
                            s.leaves);
    }
    const Node &a = At(u.left), &b = At(u.right);
    const double as = u.across, bs = p.between - as;
    Quartet q;
    q.a = a.leaves;
    q.b = b.leaves;
    q.c = all - p.leaves;
    q.d = s.leaves;
    q.ab = u.between / (q.a * q.b);
    q.ac = (a.outward - u.between - as) / (q.a * q.c);
    q.ad = as / (q.a * q.d);
    q.bc = (b.outward - u.between - bs) / (q.b * q.c);
    q.bd = bs / (q.b * q.d);
    q.cd = (s.outward - p.between) / (q.c * q.d);
    return InternalLength(q);
  }

 private:
  struct Node {
    int parent = -1, left = -1, right = -1;
    double leaves = 0, outward = 0, between = 0, across = 0;
  };

  Node& At(int node) { return nodes_[Index(node)]; }
  const Node& At(int node) const { return nodes_[Index(node)]; }
  int Top() const { return order_[0]; }
  double ToBelow(int node) const { return to_below_[Index(node)]; }

  int Sibling(int node) const {
    const Node& parent = At(At(node).parent);
    return parent.left == node ? parent.right : parent.left;
  }

  const Topology& topology_;
  std::vector<Node> nodes_;
  std::vector<int> order_;        // all but taxon 0, those above before those below
  std::vector<double> to_below_;  // of the row that is added, by node
};

}  // namespace

std::vector<double> OlsLengths(const Topology& topology, const double* const* distances) {
  Lengths tree(topology);
  for (int taxon = 1; taxon < topology.taxa; ++taxon) tree.Add(taxon, distances[taxon]);
  std::vector<double> lengths(Index(topology.Nodes()));
  for (int node = 1; node < topology.Nodes(); ++node) lengths[Index(node)] = tree.Length(node);
  return lengths;
}

}  // namespace zorvek::wide
