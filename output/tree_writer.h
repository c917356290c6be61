// The tree file: the best tree as a NEXUS trees block with one tree in Newick notation.
#ifndef ZORVEK_OUTPUT_TREE_WRITER_H
#define ZORVEK_OUTPUT_TREE_WRITER_H

#include <string>

#include "tree/tree_table.h"

namespace zorvek {

// Writes OPT to the file `path`.phylogeny, which is created or truncated. Edge lengths are written
// as they stand, negative ones with their sign. A file that cannot be opened is passed over
// silently.
// Reads: n, OPT, taxa.  Writes: outf.  Requires: OPT just evaluated.  Cost: n.
void PrintTree(const char* path);

// Writes (left:length,right:length) of the node in row `row` to outf, descending into internal
// children. A leaf is its taxon label with underscores for blanks, otherwise unchanged and never
// quoted.
// Reads: n, taxa.  Writes: outf.
// Cost: linear in the leaves below; as deep a recursion as the tree.
void PrintInNewickFormat(TreeTable tree, int row);

// The decimal text of `value`.
std::string itos(int value);

}  // namespace zorvek

#endif
