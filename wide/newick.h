// Trees as text for other programs.
#ifndef ZORVEK_WIDE_NEWICK_H
#define ZORVEK_WIDE_NEWICK_H

#include <string>
#include <vector>

#include "wide/tree_view.h"

namespace zorvek::wide {

// The tree in Newick's format, with its semicolon: labels quoted where they must be, edge lengths
// with the digits that read back as the same double, the supports of inner edges as whole percents
// in front of them.
std::string Newick(const TreeView& tree, const std::vector<std::string>& labels);

// A NEXUS file with one TREES block [Maddison1997] that holds one tree, marked as unrooted.
std::string NexusTrees(const std::string& newick);

// A support of 0..1 as it is written, in percent.
std::string Percent(double support);

}  // namespace zorvek::wide

#endif
