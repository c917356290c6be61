// The length of the tree after an SPR move, from the sums of the tree before it.
//
// X, held by w between o and v1, goes into the edge (vk, t); h1..hk hang from the way there:
//
//        X                                       X
//        |                                       |
//   o ---w---v1---v2--- ... ---vk---t       o ---v1---v2--- ... ---vk---w---t      with X at w again
//            |    |            |                 |    |            |
//            h1   h2           hk                h1   h2           hk
//
// Only the edges drawn here get another length. Each is had from the four subtrees around it: their sums
// in the tree as it is, with X taken out of the subtree it is in now and put into the one it will be in.
#ifndef ZORVEK_WIDE_CRITERION_OLS_SPR_LENGTH_H
#define ZORVEK_WIDE_CRITERION_OLS_SPR_LENGTH_H

#include "wide/criterion/ols_tree.h"

namespace zorvek::wide {

class OlsSprLength {
 public:
  // Requires: a move of the walk, which has met move.from; all of them outlive this.
  OlsSprLength(const OlsTree& tree, const SprWalk& walk, const SprMove& move)
      : tree_(tree), topology_(tree.Current()), walk_(walk), move_(move) {}

  // By how much the sum of the positive edge lengths grows.
  // Cost: the number of edges on the way, and the smaller of two subtrees for two pairs.
  double Change() const;

 private:
  // A node v of the way and its neighbours.
  struct Stop {
    int node, behind, hanging, ahead;
  };
  struct Parts;

  Stop StopAt(int node, int ahead) const;
  void Describe(Parts& parts, int part, Side side) const;
  Parts AroundEdge(int u, int v, int a, int c) const;
  Parts AroundStop(const Stop& stop) const;
  void Halve(Parts& parts, int end, int at, double to_c, double to_d, double half_to_c) const;

  double Now(int u, int v) const;
  double Hanging(const Stop& stop) const;
  double OnTheWay(const Stop& stop, int beyond) const;
  double Closed(const Stop& first) const;
  double Behind(const Stop& last) const;
  double ToTarget() const;
  double ToMoved() const;

  const OlsTree& tree_;
  const Topology& topology_;
  const SprWalk& walk_;
  const SprMove& move_;
};

}  // namespace zorvek::wide

#endif
