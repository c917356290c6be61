// Eigenvalues and eigenvectors of a real general matrix.
#ifndef ZORVEK_CORE_EIGEN_RG_H
#define ZORVEK_CORE_EIGEN_RG_H

namespace zorvek {

// All eigenvalues and eigenvectors of the n x n matrix `a`, given as row pointers, all storage the
// caller's. `a` is destroyed: it ends as the quasi-triangular form with the solved vectors above
// it.
//   wr, wi  n each: real and imaginary parts, in the order in which the iteration finds them. wi is
//           exactly 0 for a real eigenvalue; of a complex pair, in neighbouring positions, the one
//           with the positive imaginary part comes first.
//   z       n x n: column j is the eigenvector of eigenvalue j, not normalised; for a complex pair
//           (j, j+1) column j is the real and column j+1 the imaginary part of the vector of j.
//   iv, fv  n each: work arrays.
// Returns 0 in every case. When the iteration spends its 30n steps, the eigenvalues it has not
// reached keep what the caller had in wr and wi, and z holds no eigenvectors. Requires: no infinite
// entry (the balancing would not end); NaN spreads.  Cost: about 25 n^3.
int EigenRG(int n, double** a, double* wr, double* wi, double** z, int* iv, double* fv);

// The same under its other name.
int EigenRealGeneral(int n, double** a, double* wr, double* wi, double** z, int* iv, double* fv);

// The eigenvalues alone, bit for bit those of EigenRG. `a` is destroyed.
void Eigenvalues(int n, double** a, double* wr, double* wi, int* iv, double* fv);

}  // namespace zorvek

#endif
