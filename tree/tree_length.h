// The minimum-evolution length of a tree: its edge lengths by ordinary least squares, and the sum
// of those that are positive [Rzhetsky1993].
#ifndef ZORVEK_TREE_TREE_LENGTH_H
#define ZORVEK_TREE_TREE_LENGTH_H

#include "tree/tree_table.h"

namespace zorvek {

// All three are pure functions of DM1 and the `left` and `right` fields of the table: the same
// table gives the same bits, whatever was evaluated before. Requires: a well-formed table; within a
// FollowerScope, DM1 as it was at the first use. Leave temp1 empty. Cost: n^2; within a
// FollowerScope n after one interchange and for the tree last seen.

// Computes all 2n-3 edge lengths, writes them into `leftLength` and `rightLength` of the node rows
// and `leftLength` of the root row (negative ones as they are), and returns the tree length, in
// which a negative edge counts as 0. Added row by row, left before right, the central edge last.
double Evaluate(TreeTable tree);

// Length of the edge between `leaf` and the internal node `node` that holds it as a child.
// Formula: (D(i,A) + D(i,B) - D(A,B)) / 2, A the leaves beyond the node's parent, B the sibling's.
double ComputeExternalLength(int leaf, int node, TreeTable tree);

// Length of the edge between the adjacent internal nodes u and v, A and B the other subtrees at u, C
// and D those at v.
// Formula: InternalLength in subtree_sums.h.
double ComputeInternalLength(int u, int v, TreeTable tree);

}  // namespace zorvek

#endif
