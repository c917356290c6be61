// Trees as text for other programs.
#ifndef ZORVEK_WIDE_FORMATS_NEWICK_H
#define ZORVEK_WIDE_FORMATS_NEWICK_H

#include <string>
#include <vector>

#include "zorvek/tree.h"

namespace zorvek::wide {

// The tree in Newick's format, with its semicolon: labels quoted where they must be, edge lengths
// with the digits that read back as the same double, the supports of inner edges in front of them,
// in percent. A support has a decimal ("93.0"), because a whole number in a NEXUS tree is the
// number of a taxon.
std::string Newick(const Tree& tree, const std::vector<std::string>& labels);

// A NEXUS file with one TREES block [Maddison1997] that holds the trees, each marked as rooted or
// unrooted. A table translates numbers into labels, so that a label may be a number too.
std::string NexusTrees(const std::vector<Tree>& trees, const std::vector<std::string>& labels);

}  // namespace zorvek::wide

#endif
