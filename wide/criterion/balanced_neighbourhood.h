// Balanced minimum evolution: one tree under change, the balanced average of every two of its subtrees,
// its length, and the moves that shorten it.
//
// The length of a tree is the sum over the pairs of taxa of 2^(1-p) d(i,j), with p the number of edges
// between i and j [Pauplin2000]. For two nodes u and v let D(u,v) be the balanced average between the
// subtree at u away from v and the subtree at v away from u. With a and b the neighbours of u away from v
//
//        a            D(u,v) = (D(a,v) + D(b,v)) / 2                                  (1)
//         \                                                         .
//          u -- ... -- v
//         /
//        b
//
// and between taxa D is the distance [Desper2002]. All that is asked for follows from D:
//
//   length of the tree                      half the sum over the leaves of D(leaf, its neighbour)   (2)
//   edge of leaf i, at a node with a, b     (D(i,a) + D(i,b) - D(a,b)) / 2                           (3)
//   edge of (A,B | C,E)                     (D(A,C) + D(A,E) + D(B,C) + D(B,E)) / 4
//                                             - (D(A,B) + D(C,E)) / 2                                (4)
//   NNI of B and C there                    adds (D(A,C) + D(B,E) - D(A,B) - D(C,E)) / 4             (5)
//   subtree X, put into the edge (u,v) of   (D(X,u) + D(X,v) - D(u,v)) / 2                           (6)
//   the tree without X
#ifndef ZORVEK_WIDE_CRITERION_BALANCED_NEIGHBOURHOOD_H
#define ZORVEK_WIDE_CRITERION_BALANCED_NEIGHBOURHOOD_H

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "core/index.h"
#include "core/large_table.h"
#include "wide/criterion/neighbourhood.h"
#include "wide/criterion/numbering.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

// Memory: 32 n^2 bytes.
class BalancedNeighbourhood final : public Neighbourhood {
 public:
  // The leaves are the taxa of the given numbers in the matrix, or all of them, in its order.
  // Requires: n >= 4, a symmetric matrix of finite numbers that outlives it.  Cost: n^2.
  BalancedNeighbourhood(const Topology& topology, const double* const* distances, int threads = 1,
                        std::vector<int> taxa = {});

  int Threads() const override { return static_cast<int>(reached_.size()); }

  // Makes all averages anew.  Cost: n^2, shared by the threads.
  void Set(const Topology& topology) override;

  const Topology& Current() const override { return topology_; }

  // Sum of all edge lengths, negative ones included.
  double Length() override { return length_ * unit_; }

  // 1e-12 of the largest distance.
  double Margin() override { return margin_ * unit_; }

  void Scan() override;

  // Cost: constant for each edge outside the subtree; it reads two rows of D.
  using Neighbourhood::BestSpr;
  bool BestSpr(int holder, int subtree, SprMove& best, int thread) override;

  bool Resettle(int holder, int subtree, double heat, const double* noise, SprMove& move) override;

  // Cost: constant.
  bool BestNni(int u, int v, SprMove& best) override;

  bool MovesAreDear() const override { return true; }

  // Remakes the averages of the pairs of subtrees that the move changes.
  // Cost: n for each node on the way, and n times the mean depth of the subtrees that hang from it; from
  // some 50 levels down nothing changes any more. Threads share it.
  void Apply(const SprMove& move) override;

  double EdgeLength(int u, int v) const override;

  // The distances of the subtrees are their averages here.
  std::unique_ptr<Neighbourhood> Contracted(
      const Topology& topology, const std::vector<HangingSubtree>& subtrees) const override;

  // D(u,v) of two different nodes.
  double Average(int u, int v) const { return At(RowOf(u), RowOf(v)) * unit_; }

 private:
  // A node in the order of the scans: its parent's place there, the row of its sibling, the place after
  // the last node below it, and D between it and its parent.
  struct Visit {
    int row, parent, beside, end;
    double across;
  };

  // What a scan carries to a node, for the subtree X that is scanned: the average between X and all that
  // is behind, without X, and the weight of X in what is behind as it is.
  struct Reached {
    double near, weight;
  };

  using Target = std::pair<int, int>;

  // The rows of X and of B, the subtree on the other side of its holder from where the scan goes; what
  // it has reached, by place; the least cost so far, twice, and the edge that has it; in a heat bath what
  // the costs are reduced by, twice the heat times the noise by place.
  struct SprScan {
    const double* x;
    const double* b;
    Reached* reached;
    double least;
    Target target;
    double heat;
    const double* noise;
  };

  // A node of a hanging subtree, its parent, its sibling, its depth there, and the place on the path of what
  // it hangs from, which is -1 or the number of places off its ends.
  struct Hanging {
    int node, parent, sibling, depth;
    int place = 0;
  };

  // By depth, the parent and the sibling of each node on the way to one of a hanging subtree.
  struct Way {
    std::vector<int> parents, siblings;
  };

  // One of the nodes whose subtrees a move changes, which are a path in the tree: its neighbours on the
  // path, or off its ends, and the one beside the path.
  struct PathNode {
    int node, left, right, beside;
  };

  BalancedNeighbourhood(const Topology& topology, std::shared_ptr<const DistanceMatrix> own)
      : BalancedNeighbourhood(topology, own->Rows()) {
    own_ = std::move(own);
  }

  int RowOf(int node) const { return row_[Index(node)]; }
  double* Row(int row) { return averages_.get() + Index(row) * row_.size(); }
  const double* Row(int row) const { return averages_.get() + Index(row) * row_.size(); }
  double At(int u, int v) const { return Row(u)[v]; }
  bool IsLeaf(int row) const { return near_[Index(row)][1] < 0; }
  std::pair<int, int> Others(int row, int skipped) const;

  void TakeNumbers();
  int TaxonOf(int row) const { return taxa_[Index(node_[Index(row)])]; }
  void FillLeaf(int u);
  void FillUnrelated(int from, int to);
  void FillAncestors(int from, int to);
  void Mirror(int from, int to);
  void TakeAcross();
  void OrderVisits();
  void SumLength();

  static Reached Cost(const SprScan& scan, const Reached& behind, int next, int side, double across,
                      double& cost);
  template <bool kHot>
  bool ScanPlaces(int holder, int subtree, SprScan& scan, SprMove& best) const;
  template <bool kHot>
  void ScanBelow(int start, SprScan& scan) const;
  template <bool kHot>
  void ScanAbove(int holder, int other, SprScan& scan) const;
  double Here(int holder, int subtree) const;
  SprScan ScanOf(int subtree, int thread);
  void Write(int u, int v, double average);
  void WriteAcross(int u, int v, double average);
  void Link(const SprMove& move);
  int FindEnd(int holder, int from, int a, int b);
  void FindPath(int holder, int from, int to, int a, int b);
  void ListHanging(int root, int place);
  void RefreshHanging(std::size_t from, std::size_t to, Way& way);
  void RefreshFrom(const Hanging& here, const Way& way);
  void RefreshPath();

  Topology topology_;
  const double* const* distances_;
  std::vector<int> taxa_;                      // by leaf, their numbers in the matrix
  std::shared_ptr<const DistanceMatrix> own_;  // of a contracted tree
  double unit_;    // value of 1 here: a power of two, for which the distances are at most 1
  double margin_;  // in that unit, as are all averages
  double length_ = 0;

  std::vector<int> row_, node_;                // the Numbering; what follows is by row
  std::vector<std::array<int, 3>> near_;       // neighbours; a leaf has one, then -1
  std::vector<std::array<double, 3>> across_;  // D to them
  std::vector<int> first_;                     // the lowest row in the subtree, while D is made
  LargeTable<double> averages_;                // D, rows of 2n-2; the diagonal is 0

  std::vector<Visit> visits_;                  // the nodes in the order of the scans
  std::vector<int> place_;                     // there, by row
  bool ordered_ = false;                       // whether the two are those of the present tree
  std::vector<std::vector<Reached>> reached_;  // of each thread, by place
  std::vector<Hanging> open_;
  std::vector<int> behind_;
  std::vector<PathNode> path_;
  std::vector<Hanging> hanging_;  // all nodes off the path, each before those below it
  std::vector<Way> ways_;         // of each thread
};

}  // namespace zorvek::wide

#endif
