// Ordinary least squares on a sector: a tree whose taxa are subtrees that hang from a connected part of a
// larger tree.
//
// The length of an edge depends on the averages between the four subtrees around it. So rearranging the
// sector changes the length of the edge above a hanging subtree T too, and for that one needs the sums
// from both halves of T:
//
//    c1                        The tree within has c1 and c2 for leaves, with their numbers of taxa and
//      \                       the sums of distances between them; t and all nodes like it stay as they
//       t---[sector]           are, since no move reaches into their subtrees. The edges above c1 and c2
//      /                       and all those behind them have the same subtrees around them whatever
//    c2                        becomes of the sector, and so the same lengths.
#ifndef ZORVEK_WIDE_CRITERION_OLS_SECTOR_H
#define ZORVEK_WIDE_CRITERION_OLS_SECTOR_H

#include <memory>
#include <vector>

#include "wide/criterion/neighbourhood.h"
#include "wide/criterion/ols_neighbourhood.h"
#include "wide/criterion/ols_tree.h"

namespace zorvek::wide {

class OlsSector : public Neighbourhood {
 public:
  // Cost: n for each subtree.
  OlsSector(const Topology& topology, const std::vector<HangingSubtree>& subtrees,
            const OlsTree& whole, double largest_distance);

  void Set(const Topology& topology) override;
  const Topology& Current() const override { return topology_; }
  double Length() override { return within_->Length(); }
  double Margin() override { return within_->Margin(); }
  void Scan() override { within_->Scan(); }
  bool BestSpr(int holder, int subtree, SprMove& best, int thread) override;
  bool Resettle(int holder, int subtree, double heat, const double* noise, SprMove& move) override;
  bool BestNni(int u, int v, SprMove& best) override;
  bool MovesAreDear() const override { return within_->MovesAreDear(); }
  void Apply(const SprMove& move) override;
  double EdgeLength(int u, int v) const override { return within_->EdgeLength(In(u), In(v)); }
  std::unique_ptr<Neighbourhood> Contracted(
      const Topology& topology, const std::vector<HangingSubtree>& subtrees) const override;

 private:
  int In(int node) const { return in_[Index(node)]; }
  SprMove Out(const SprMove& move) const;
  Topology Expanded() const;

  Topology topology_;
  int leaves_ = 0;             // of the tree within
  std::vector<int> in_, out_;  // nodes within by nodes here, and back; -1 for the leaves of halves
  std::vector<int> first_half_;  // of each subtree, a leaf within; the other half, if any, follows
  std::unique_ptr<OlsNeighbourhood> within_;
};

}  // namespace zorvek::wide

#endif
