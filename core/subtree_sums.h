// Exact sums of leaf distances between the subtrees of one tree, kept through its changes.
//
// Every edge length and every gain is made of averages D(X,Y) = S(X,Y) / (|X||Y|), where S(X,Y)
// sums the distances between the leaves of two disjoint subtrees. Here the distances are fixed-point
// numbers, scaled by a power of two such that a row of n of them cannot overflow (SumRows).
// Integer sums are exact: they do not depend on the order of addition, so a sum kept through a
// thousand changes is the same as one made anew, and every S(X,Y) may be had by subtraction where
// that is cheaper.
//
// The tree is rooted on an internal edge; the root is node 2n-2 with that edge's ends as its children.
// A tree table has its central pair there. Five taxa:
//
//              8               Per node u, over the leaves below it (leaves: their own row):
//            /   \               row[u][y]  sum of the distances from leaf y to the leaves below u;
//           6     7                         row[u] = row[left] + row[right], one vector addition
//          / \   / \             total      S(u, all leaves)
//         2   3 4   5            within     sum over the pairs of leaves below u
//                  / \           between    S(left(u), right(u))
//                 0   1          across     S(left(u), sibling(u))
//
// With U the leaves that are not below the parent p of c, s the sibling of c, and a, b the children
// of c, everything the edge (p, c) needs follows:
//
//   S(a,b) = between(c)              S(a,U) = total(a) - 2 within(a) - S(a,b) - S(a,s)
//   S(a,s) = across(c)               S(b,U) likewise
//   S(b,s) = between(p) - S(a,s)     S(s,U) = total(s) - 2 within(s) - between(p)
//
// An interchange across (p, c) trades a for s: only c gets another set of leaves, so one row is
// remade, and only `across` of a, b, s and p must be summed anew, over the smaller subtree of each
// pair.
#ifndef ZORVEK_CORE_SUBTREE_SUMS_H
#define ZORVEK_CORE_SUBTREE_SUMS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/index.h"
#include "core/sum_rows.h"

namespace zorvek {

// The four subtrees around an internal edge (A and B at one end, C and D at the other): their
// numbers of leaves, and the average distances between them.
struct Quartet {
  double a, b, c, d;
  double ab, ac, ad, bc, bd, cd;
};

// Least-squares length of the edge between AB and CD.
// Formula: ((1-w) (D(A,D) + D(B,C)) + w (D(A,C) + D(B,D)) - (D(A,B) + D(C,D))) / 2
//          with w = (|A||D| + |B||C|) / ((|A|+|B|) (|C|+|D|))   [Rzhetsky1993]
inline double InternalLength(const Quartet& q) {
  const double w = (q.a * q.d + q.b * q.c) / ((q.a + q.b) * (q.c + q.d));
  return ((1 - w) * (q.ad + q.bc) + w * (q.ac + q.bd) - (q.ab + q.cd)) * 0.5;
}

// Decrease of the least-squares tree length when AB|CD becomes AC|BD.
// Formula: ((w-1) (D(A,C) + D(B,D)) - (w'-1) (D(A,B) + D(C,D)) - (w-w') (D(A,D) + D(B,C))) / 2
//          with w' = (|A||D| + |B||C|) / ((|A|+|C|) (|B|+|D|))   [Desper2002]
inline double InterchangeGain(const Quartet& q) {
  const double shared = q.a * q.d + q.b * q.c;
  const double w = shared / ((q.a + q.b) * (q.c + q.d));
  const double w2 = shared / ((q.a + q.c) * (q.b + q.d));
  return (((w - 1) * (q.ac + q.bd) - (w2 - 1) * (q.ab + q.cd)) - (w - w2) * (q.ad + q.bc)) * 0.5;
}

// Leaves that stand one after the other somewhere.
struct LeafRange {
  const int* first;
  const int* last;
  const int* begin() const { return first; }
  const int* end() const { return last; }
};

// While nothing changes it, any number of threads may ask. Memory: SumRows and O(n).
class SubtreeSums {
 public:
  // Takes the distances of n taxa; no tree is set yet.
  // Requires: what SumRows does.  Cost: n^2.
  SubtreeSums(int count, const double* const* distances, Precision precision = Precision::kDouble);

  // The same of a tree whose leaves stand for so many taxa each, from the sums of distances between them.
  SubtreeSums(const std::vector<int>& leaves, const double* const* sums,
              Precision precision = Precision::kDouble);

  int Taxa() const { return n_; }
  int AllLeaves() const { return all_; }
  int Root() const { return 2 * n_ - 2; }
  bool IsLeaf(int node) const { return node < n_; }
  int Parent(int node) const { return At(node).parent; }
  int Left(int node) const { return At(node).left; }
  int Right(int node) const { return At(node).right; }
  int Leaves(int node) const { return At(node).leaves; }
  int Sibling(int node) const {
    const Node& parent = At(Parent(node));
    return parent.left == node ? parent.right : parent.left;
  }

  // Declares the children of a node row; the sums follow with the next Update.
  void SetChildren(int node, int left, int right);

  // Remakes the sums of the nodes whose children were set and of all nodes above them.
  // Requires: a binary tree on all taxa below Root().
  // Cost: n per remade node, and the smaller of two subtrees for each pair of subtrees below them.
  void Update();

  // The interchange across the edge above `node`: its left child and its sibling trade places.
  // Requires: `node` internal and not a child of the root.
  // Cost: n for one row, and the smaller of two subtrees for four or five pairs.
  void Interchange(int node);

  // The nodes whose edge above was given other subtrees around it by the last Update or Interchange.
  // Both children of the root stand for the edge between them.
  const std::vector<int>& ChangedEdges() const { return changed_edges_; }

  // The subtrees around the internal edge above `node`: A left(node), B right(node), C all that is
  // not below its parent, D its sibling. A child of the root stands for the edge between the two: A
  // and B are the children of the root's left child, C and D those of its right child.
  // Requires: `node` internal.  Cost: constant.
  Quartet Around(int node) const;

  // Sums as plain numbers, for searches that rank: S(below node, all else), S(left(node), right(node))
  // and S(left(node), sibling(node)); the latter for internal nodes only.
  double Outward(int node) const { return ToDouble(Outward(At(node))) * rows_.Unit(); }
  double Between(int node) const { return ToDouble(At(node).between) * rows_.Unit(); }
  double Across(int node) const { return ToDouble(At(node).across) * rows_.Unit(); }

  // S(left(u), left(v)) of the root's children u and v.
  double Central() const { return ToDouble(central_) * rows_.Unit(); }

  // Sum of the distances from some leaves to all below `node`.  Cost: their number.
  double ToLeaves(int node, LeafRange leaves) const {
    return ToDouble(SumOfRow(node, leaves)) * rows_.Unit();
  }

  // S(below x, all that is not below y), with x below y.  Cost: the leaves below x, which are named.
  double Beyond(int x, LeafRange below_x, int y) const {
    return ToDouble(At(x).total - SumOfRow(y, below_x)) * rows_.Unit();
  }

  // Sum of the distances from a leaf to all leaves below `node`.
  double ToLeaf(int node, int leaf) const {
    return static_cast<double>(rows_.At(node, leaf)) * rows_.Unit();
  }

  // Least-squares length of the edge above a leaf, with A all that is not below its parent and B
  // its sibling: (D(i,A) + D(i,B) - D(A,B)) / 2.  Cost: constant.
  double ExternalLength(int leaf) const;

 private:
  __extension__ using Sum = __int128;

  struct Node {
    int parent = -1, left = -1, right = -1, leaves = 1;
    Sum total = 0, within = 0, between = 0, across = 0;
  };

  Node& At(int node) { return nodes_[Index(node)]; }
  const Node& At(int node) const { return nodes_[Index(node)]; }

  // The mean distance of a sum over x times y pairs.
  double Average(Sum sum, double x, double y) const {
    return ToDouble(sum) * rows_.Unit() / (x * y);
  }
  static double ToDouble(Sum sum);

  // S(x, everything that is not below x).
  Sum Outward(const Node& x) const { return x.total - 2 * x.within; }
  Sum Gather(int x, int y);  // S(x, y) from the rows
  template <typename Row>
  Sum SumBelow(int x, Row row);
  Sum SumOfRow(int node, LeafRange leaves) const;
  void RemakeLeafSet(int node);  // row, leaves, total and within, from the children and `between`
  void RemakeAcross(int node);
  void RemakeCentral();
  void CollectDirty();
  Quartet AroundCentralEdge() const;

  int n_;
  int all_ = 0;               // leaves of the whole tree
  std::vector<Node> nodes_;   // by id 0..2n-2
  SumRows rows_;              // by id 0..2n-3
  Sum central_ = 0;           // S(left(left(root)), left(right(root)))
  std::vector<int> pending_;  // nodes given children since the last Update
  std::vector<char> dirty_;   // by id: on the way from a pending node to the root
  std::vector<int> order_;    // dirty nodes, parents first
  std::vector<int> changed_edges_;
  std::vector<int> stack_;  // of the leaf walk
};

}  // namespace zorvek

#endif
