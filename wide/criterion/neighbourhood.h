// What a search needs of a criterion: one tree under change, its length, and the SPR moves of each of
// its subtrees. Descent and iterated search are written over these few functions; a new criterion
// implements them.
#ifndef ZORVEK_WIDE_CRITERION_NEIGHBOURHOOD_H
#define ZORVEK_WIDE_CRITERION_NEIGHBOURHOOD_H

#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

// One instance serves one thread. What it says depends on the distances and the topology alone.
class Neighbourhood {
 public:
  virtual ~Neighbourhood() = default;

  // Takes another tree.
  virtual void Set(const Topology& topology) = 0;

  virtual const Topology& Current() const = 0;

  // The length of the current tree, which the search makes small.
  virtual double Length() = 0;

  // Appends the SPR moves of the subtree `subtree` held by `holder` that may shorten the tree by more
  // than `margin`, with their gains.
  virtual void SprMoves(int holder, int subtree, double margin, std::vector<SprMove>& found) = 0;

  // What Length() would be after a move of the subtree whose moves were asked for last.
  virtual double LengthAfter(const SprMove& move) = 0;

  // Makes a move.
  virtual void Apply(const SprMove& move) = 0;

  // The length of the edge between two neighbours, which may be negative.
  virtual double EdgeLength(int u, int v) const = 0;
};

}  // namespace zorvek::wide

#endif
