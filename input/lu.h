// Triangular factors and the inverse of a square matrix, for users of the library; no run needs
// them.
#ifndef ZORVEK_INPUT_LU_H
#define ZORVEK_INPUT_LU_H

namespace zorvek {

// Factors the matrix `a` of `order` rows in place, by Crout's method with pivots chosen relative to
// the largest entry of their row: below the diagonal the multipliers of L, whose own diagonal is 1,
// above it and on it U, both for the matrix with its rows exchanged.
//   scale  `order` doubles of the caller: 1 / largest |entry| of each row; an exchange writes over
//          that of the row which became the pivot with that of the row which made way
//   indx   indx[j] is the row that was exchanged with row j in step j, j itself for none
//   d      unless null, +1 or -1 for an even or odd number of exchanges; d times the product of
//          the diagonal of U is the determinant
// Returns 0; or 1, with a message on standard output and `a` unchanged, when a row is all zero. A
// pivot that turns out 0 becomes 1e-20. Cost: order^3 / 3 multiplications.
int LUDecompose(double** a, int order, double* scale, int* indx, double* d);

// Leaves the inverse of `a` in `y` and the factors in `a`. `col` and `indx` are working storage of
// `order` entries. Returns what LUDecompose does; when that is not 0, `y` is untouched.
// Cost: about order^3 multiplications.
int InvertMatrix(double** a, int order, double* col, int* indx, double** y);

}  // namespace zorvek

#endif
