// Where the nodes of a tree stand in a picture.
#ifndef ZORVEK_WIDE_DRAWING_LAYOUT_H
#define ZORVEK_WIDE_DRAWING_LAYOUT_H

#include <vector>

#include "zorvek/tree.h"

namespace zorvek::wide {

struct Point {
  double x = 0;
  double y = 0;
};

// Shorter edges than this share of the longest have length 0 in a picture: nobody can see them, and
// rounding would decide which way they point. So have all that are too short for pixels per length.
constexpr double kLeastDrawn = 1e-9;
constexpr double kLeastDrawnLength = 1e-300;

// The lengths of the edges above the nodes as they are drawn, none of them negative; 0 at the root.
std::vector<double> DrawnLengths(const Tree& tree);

// The supports of the edges above the nodes as they are drawn: none of an edge of length 0, and only
// one at a root of two children, whose edges are one edge of the unrooted tree.
std::vector<double> DrawnSupports(const Tree& tree);

// Rooted at the midpoint, unless it is rooted.
Tree RootedForDrawing(const Tree& tree);

// Unrooted, one place for each node, distances along edges as the edge lengths are; no edges cross.
// Begins with the equal-angle layout [Felsenstein2004], in which every subtree has a wedge as wide as
// it has taxa, and then turns the branches at each node until the gaps between them, seen from the
// node, are equal (equal daylight), which spreads them.
// Cost: n^2 up to 3,000 taxa; no more after that, when only the nodes between large branches are
// looked at.
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
