// The tree table: an unrooted binary tree on n taxa in n-1 rows of seven doubles.
//
// Leaves are the ids 0..n-1 (the taxon indices) and have no row. Internal nodes are the ids
// n..2n-3; node k stands in row k-n. The last row (id 2n-2) is the root row, no node of the
// unrooted tree: it roots the tree on the central edge, between the central pair 2n-4 and 2n-3, for
// output.
//
// Five taxa, the starting tree:            row  parent self left right
//
//   0          central edge          2      0      7    5    0    1     node 5
//    \           (8.left)           /       1      7    6    2    3     node 6, central
//     5---------7--------6---------+        2      6    7    4    5     node 7, central
//    /          |                   \       3     -1    8    6    7     root row
//   1           4                    3
//
// Well formed means: every id 0..2n-3 but the central pair is a child of exactly one node row; the
// root row's children are the central pair; a child's `parent` is the row that names it, and the
// central nodes name each other. The length fields are valid only right after Evaluate.
#ifndef ZORVEK_TREE_TREE_TABLE_H
#define ZORVEK_TREE_TREE_TABLE_H

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

namespace zorvek {

// A table of zeros in one piece of memory behind row pointers, also with no rows or columns. Pages
// that nobody writes are never made: of EM a run touches only the leaf block.
template <typename Value>
Value** NewRows(std::size_t rows, std::size_t columns) {
  auto* cells = static_cast<Value*>(std::calloc(rows * columns + 1, sizeof(Value)));
  if (cells == nullptr) throw std::bad_alloc();
  auto** table = new Value*[rows + 1];
  for (std::size_t row = 0; row <= rows; ++row) table[row] = cells + row * columns;
  return table;
}

// Releases what NewRows made and sets the pointer to null.
template <typename Value>
void DeleteRows(Value**& table) {
  if (table != nullptr) std::free(table[0]);
  delete[] table;
  table = nullptr;
}

using TreeTable = double**;       // n-1 row pointers to rows of kFields doubles
using DistanceMatrix = double**;  // row pointers of a square matrix

// Fields of a row. Ids are whole numbers held as doubles, turned into int by truncation.
enum Field : int {
  kParent,       // neighbour on the way to the central edge; -1 in the root row
  kSelf,         // n + row index
  kLeft,         // first child, leaf or internal
  kRight,        // second child
  kLeftLength,   // length of the edge to `left`; in the root row that of the central edge
  kRightLength,  // length of the edge to `right`; in the root row 0
  kSpare,        // carried along by copies, never read
  kFields
};

// Field `field` of a row as a node id.
inline int Id(const double* row, Field field) {
  return static_cast<int>(row[field]);
}

// Allocates OPT, T1, T2 (all zero) and EM (its leaf block DM1, all else zero) and sorts CL.
// Reads: n, DM1, CL.  Writes: OPT, T1, T2, EM, CL.  Requires: n >= 4.
// Cost: n^2 for EM, n log n per row of CL.
void Init();

// Releases what Init allocated and sets the pointers to null.
void Finalize();

// Appends to temp1 every leaf of the subtree at `node` as seen from `from`: depth first, the parent
// side before left before right. `from` need not be a neighbour; then all three sides are walked.
// Reads: n.  Writes: temp1.  Cost: linear in the leaves found.
void FC(int node, int from, TreeTable tree);

// Copies all seven fields of all n-1 rows.
// Reads: n.  Cost: n.
void CopyTree(TreeTable from, TreeTable to);

// Rebuilds every `parent` field from the child fields and joins the central pair.
// Reads: n.  Cost: n.
void FindAdj(TreeTable tree);

// The interchange across the edge (node, child): the child's left subtree y and its sibling x trade
// places, so that the node's children become {child, y} and the child's {x, its right child}. Only
// id fields change. Requires: `child` internal, `node` its parent.
// Reads: n.
void Interchange(TreeTable tree, int node, int child);

// Sets the first `columns` values of each of the first `rows` rows to 0. Touches nothing, the row
// pointers included, when either is below 1.
void Reset(double** table, int rows, int columns);

// Writes the table to standard output: a tab after each value, a line end after each row, and one
// more line end after the last.
void Print(double** table, unsigned rows, unsigned columns);

// Whether `value` occurs in `list`.
bool IsContained(int value, std::vector<int> list);

}  // namespace zorvek

#endif
