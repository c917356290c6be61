// A large tree cut into sectors: connected parts that are small trees of their own, whose taxa are the
// subtrees that hang from them. A search within a sector costs what it costs on so few taxa.
//
//   s1       s2  |               Of this tree of six internal nodes, a sector has u, v and w; its taxa
//     \     /    |               are the subtrees at s1, s2, s3, s4 and x. Whatever the search does with
//      u---v-----w---x---...     u, v and w, the subtrees stay as they are.
//     /          |    \                                           .
//   s3          s4     ...
#ifndef ZORVEK_WIDE_SEARCH_SECTORS_H
#define ZORVEK_WIDE_SEARCH_SECTORS_H

#include <random>
#include <utility>
#include <vector>

#include "wide/criterion/neighbourhood.h"
#include "wide/data/topology.h"

namespace zorvek::wide {

struct Sector {
  std::vector<int> nodes;  // the internal nodes; node k of the sector's tree is `taxa + k` there
  std::vector<HangingSubtree> subtrees;  // by their number there
  Topology topology;
};

// Disjoint sectors of `taxa` subtrees at most, from random seeds, that together are almost all of the
// tree: a rest of fewer than kLeastTaxa subtrees is left out.  Cost: n.
constexpr int kLeastTaxa = 8;
std::vector<Sector> CutIntoSectors(const Topology& tree, int taxa, std::mt19937_64& generator);

// An internal edge of a tree of at least 4 leaves.
std::pair<int, int> AnyInnerEdge(const Topology& tree);

// Puts another topology of a sector into the tree that it was cut from.
void PutBack(const Sector& sector, const Topology& topology, Topology& tree);

// What was found in a sector, by its number.
struct SectorGain {
  int sector;
  double gain;
  Topology topology;
};

// Puts the sectors that became shorter into the tree of which they were cut, the better half of them if
// all together do not make it shorter, and so on.
void PutTogether(const std::vector<Sector>& sectors, std::vector<SectorGain> gains,
                 Neighbourhood& tree);

}  // namespace zorvek::wide

#endif
