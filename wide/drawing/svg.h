// Pictures of trees as SVG.
#ifndef ZORVEK_WIDE_DRAWING_SVG_H
#define ZORVEK_WIDE_DRAWING_SVG_H

#include <string>
#include <vector>

#include "wide/drawing/settings.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// The tree as an SVG document with the labels of the taxa, a scale bar, and the supports of half and
// more where there are any: none of an edge of length 0, and none that would cover a line or another
// text; a note tells how many those are. A phylogram of an unrooted tree is rooted at the midpoint. The size of the picture follows from the number of taxa.
// Cost: that of the layout.
std::string DrawSvg(const Tree& tree, const std::vector<std::string>& labels,
                    const DrawingSettings& settings);

}  // namespace zorvek::wide

#endif
