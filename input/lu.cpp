// Crout's method [Crout1941]: with A = L U and 1 on the diagonal of L, column j of both follows
// from the columns before it,
//
//   U[i][j] =  A[i][j] - sum(k < i) L[i][k] U[k][j]              for i <= j
//   L[i][j] = (A[i][j] - sum(k < j) L[i][k] U[k][j]) / U[j][j]   for i > j
//
// each overwriting the entry of A that is read last. Of the candidates for U[j][j] the one is taken
// that is largest in units of its row's largest entry, so that the choice does not depend on row
// scaling.
#include "input/lu.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <utility>

namespace zorvek {

namespace {

constexpr double kTinyPivot = 1e-20;  // stands for a pivot of 0

// Sets scale[i] to 1 / largest |entry| of row i. Returns whether no row is all zero.
bool ScaleRows(double** a, int order, double* scale) {
  for (int i = 0; i < order; ++i) {
    double largest = 0;
    for (int j = 0; j < order; ++j) largest = std::max(largest, std::fabs(a[i][j]));
    if (largest == 0) return false;
    scale[i] = 1 / largest;
  }
  return true;
}

// Takes the first `terms` products of row i and column j off a[i][j].
void Reduce(double** a, int i, int j, int terms) {
  double rest = a[i][j];
  for (int k = 0; k < terms; ++k) rest -= a[i][k] * a[k][j];
  a[i][j] = rest;
}

// The row from j down with the largest scaled entry in column j; the last of equals.
int PivotRow(double** a, int order, const double* scale, int j) {
  int pivot = j;
  double largest = 0;
  for (int i = j; i < order; ++i) {
    const double merit = scale[i] * std::fabs(a[i][j]);
    if (merit >= largest) {
      largest = merit;
      pivot = i;
    }
  }
  return pivot;
}

// L U x = col with the row exchanges of `indx`; x replaces col.
void Solve(double** a, int order, const int* indx, double* col) {
  int first = order;  // first row with a non-zero entry: nothing before it adds to a sum
  for (int i = 0; i < order; ++i) {
    std::swap(col[i], col[indx[i]]);
    for (int k = first; k < i; ++k) col[i] -= a[i][k] * col[k];
    if (first == order && col[i] != 0) first = i;
  }
  for (int i = order - 1; i >= 0; --i) {
    for (int k = i + 1; k < order; ++k) col[i] -= a[i][k] * col[k];
    col[i] /= a[i][i];
  }
}

}  // namespace

int LUDecompose(double** a, int order, double* scale, int* indx, double* d) {
  if (!ScaleRows(a, order, scale)) {
    std::cout << "singular matrix in routine LUDecompose" << std::endl;
    return 1;
  }
  double sign = 1;
  for (int j = 0; j < order; ++j) {
    for (int i = 0; i < order; ++i) Reduce(a, i, j, std::min(i, j));
    indx[j] = PivotRow(a, order, scale, j);
    if (indx[j] != j) {
      std::swap_ranges(a[j], a[j] + order, a[indx[j]]);
      scale[indx[j]] = scale[j];  // row j is done with
      sign = -sign;
    }
    if (a[j][j] == 0) a[j][j] = kTinyPivot;
    const double reciprocal = 1 / a[j][j];
    for (int i = j + 1; i < order; ++i) a[i][j] *= reciprocal;
  }
  if (d != nullptr) *d = sign;
  return 0;
}

int InvertMatrix(double** a, int order, double* col, int* indx, double** y) {
  if (LUDecompose(a, order, col, indx, nullptr) != 0) return 1;
  for (int j = 0; j < order; ++j) {
    std::fill_n(col, order, 0.0);
    col[j] = 1;
    Solve(a, order, indx, col);
    for (int i = 0; i < order; ++i) y[i][j] = col[i];
  }
  return 0;
}

}  // namespace zorvek
