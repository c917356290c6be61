// What a search needs of a criterion: one tree under change, its length, and the moves that make it
// shorter. Descent and iterated search are written over these few functions; a new criterion implements
// them.
#ifndef ZORVEK_WIDE_CRITERION_NEIGHBOURHOOD_H
#define ZORVEK_WIDE_CRITERION_NEIGHBOURHOOD_H

#include <memory>
#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

// A subtree, by its root and the node outside it that it hangs from.
struct HangingSubtree {
  int root, holder;
};

// What it says depends on the distances and the topology alone, but for rounding. One instance serves one
// thread; it may share its own work with others.
class Neighbourhood {
 public:
  virtual ~Neighbourhood() = default;

  // By how many threads work on the whole tree is shared. A criterion that cannot share it stays at 1.
  virtual int Threads() const { return 1; }

  // Takes another tree.
  virtual void Set(const Topology& topology) = 0;

  virtual const Topology& Current() const = 0;

  // The length of the current tree, which the search makes small. It may be 0 or negative.
  virtual double Length() = 0;

  // A tree is shorter than the current one when it is by more than this, which is above all rounding.
  virtual double Margin() = 0;

  // The SPR move of the subtree `subtree` held by `holder` that shortens the tree most, and by more than
  // the margin, the first of equal ones. Returns whether there is one. Once Scan() was called, and until
  // the tree changes, threads with the numbers 0..Threads()-1 may ask at a time.
  virtual void Scan() = 0;
  virtual bool BestSpr(int holder, int subtree, SprMove& best, int thread) = 0;
  bool BestSpr(int holder, int subtree, SprMove& best) {
    Scan();
    return BestSpr(holder, subtree, best, 0);
  }

  // Takes the subtree out and chooses a place for it at random, each with a probability in proportion to
  // exp(-length of the tree / heat), as a heat bath does [Geman1984]. Returns whether it is another place
  // than the one it has, and the move there, which is not made. `noise` are Nodes() + 2 random numbers of
  // the Gumbel distribution, heat > 0.  Cost: as BestSpr.
  virtual bool Resettle(int holder, int subtree, double heat, const double* noise,
                        SprMove& move) = 0;

  // Like BestSpr, of the two NNIs across the edge between internal nodes u and v.
  virtual bool BestNni(int u, int v, SprMove& best) = 0;

  // Whether a move takes far longer to make than to find, so that whoever descends had better look around
  // the whole tree for the best ones, and make many of them together.
  virtual bool MovesAreDear() const = 0;

  // Makes a move; the ends of its new place may stand in either order.
  virtual void Apply(const SprMove& move) = 0;

  // The length of the edge between two neighbours, which may be negative.
  virtual double EdgeLength(int u, int v) const = 0;

  // A tree of its own whose taxa are the given subtrees, which are disjoint, hang from one connected part
  // of the current tree and have all other taxa between them: its length differs from that of the whole
  // by a constant, whatever its topology. May be called from any thread.
  virtual std::unique_ptr<Neighbourhood> Contracted(
      const Topology& topology, const std::vector<HangingSubtree>& subtrees) const = 0;
};

}  // namespace zorvek::wide

#endif
