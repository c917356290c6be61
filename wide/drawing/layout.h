// Where the nodes of a tree stand in a picture.
#ifndef ZORVEK_WIDE_DRAWING_LAYOUT_H
#define ZORVEK_WIDE_DRAWING_LAYOUT_H

#include <vector>

#include "wide/data/tree.h"

namespace zorvek::wide {

struct Point {
  double x = 0;
  double y = 0;
};

// Unrooted, one place for each node, distances along edges as the edge lengths are. Begins with the
// equal-angle layout [Felsenstein2004], in which every subtree has a wedge as wide as it has taxa,
// so that no edges cross, and then turns the subtrees at each node until the gaps between them,
// seen from the node, are equal (equal daylight), which spreads them. Cost: n^2.
std::vector<Point> UnrootedLayout(const Tree& tree);

// Angles for labels on a circle about the origin, in the order in which the tree meets its taxa: at
// least `apart` from each other, and else as near as can be (in the mean square) to the angles at
// which the taxa stand.  Requires: taxa * apart < a full turn.
std::vector<double> LabelAngles(const Tree& tree, const std::vector<Point>& places, double apart);

// Phylogram: x is the distance from the top, y the row, a taxon in each, 0 .. taxa-1, and an inner
// node midway between its outermost children.
std::vector<Point> PhylogramLayout(const Tree& tree);

}  // namespace zorvek::wide

#endif
