// Pictures of trees.
#ifndef ZORVEK_WIDE_DRAWING_SVG_H
#define ZORVEK_WIDE_DRAWING_SVG_H

#include <string>
#include <vector>

#include "zorvek/tree.h"

namespace zorvek::wide {

enum class Layout {
  kUnrooted,   // edges in all directions, each subtree in its own angle
  kPhylogram,  // edges from left to right, taxa one below the other
};

// The tree as an SVG document with the labels of the taxa, a scale bar, and the supports of half
// and more where there are any. The size of the picture follows from the number of taxa.
std::string DrawSvg(const Tree& tree, const std::vector<std::string>& labels, Layout layout);

}  // namespace zorvek::wide

#endif
