// The dense eigenvalue path of EISPACK [Smith1976] in plain steps:
//
//   Balance             rows and columns that isolate an eigenvalue go to the borders, the block
//                       between them is scaled by powers of 2 [Parlett1969]
//   ReduceToHessenberg  stabilised elementary transformations [Martin1968]
//   Accumulate          their product, into z
//   QRIteration         double-shift steps until every eigenvalue has split off [Martin1970]
//   BackSubstitution    the vectors of the quasi-triangular form [Peters1970]
//   MultiplyVectors     z times these
//   UndoBalance         the vectors of the matrix as it was given
//
//        low      high                     x  isolated eigenvalues on the diagonal
//     x  *  *  *  *  *                     h  the balanced block [low, high], which the
//        h  h  h  h  *                        reduction and the iteration work on
//           h  h  h  *
//              h  h  *
//                    x
//
// Without vectors the same arithmetic is done in the same order, but the entries on which no
// eigenvalue depends are left alone.
#include "core/eigen_rg.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvek {

namespace {

constexpr double kComplexBelow = -1e-12;  // a discriminant below this means a complex pair

struct Block {
  int low;   // first position of the balanced block
  int high;  // last position; low - 1 when every eigenvalue was isolated
};

// |x| with the sign of `sign`; 0 of either sign counts as positive.
inline double WithSign(double x, double sign) {
  return sign >= 0 ? std::fabs(x) : -std::fabs(x);
}

// Whether adding `small` to `large` changes nothing.
inline bool Negligible(double small, double large) {
  return large + small == large;
}

struct Complex {
  double re, im;
};

// x / y, both first divided by |re y| + |im y| so that no square overflows.
Complex Divide(Complex x, Complex y) {
  const double scale = std::fabs(y.re) + std::fabs(y.im);
  const Complex u{x.re / scale, x.im / scale};
  const Complex v{y.re / scale, y.im / scale};
  const double norm = v.re * v.re + v.im * v.im;
  return {(u.re * v.re + u.im * v.im) / norm, (u.im * v.re - u.re * v.im) / norm};
}

bool RowIsolates(double** a, int j, Block block) {
  for (int i = block.low; i <= block.high; ++i) {
    if (i != j && a[j][i] != 0) return false;
  }
  return true;
}

bool ColumnIsolates(double** a, int j, Block block) {
  for (int i = block.low; i <= block.high; ++i) {
    if (i != j && a[i][j] != 0) return false;
  }
  return true;
}

// Exchanges position j with the border position of the block, and notes it there.
void MoveToBorder(int n, double** a, double* fv, int j, int border, Block block) {
  fv[border] = j;
  if (j == border) return;
  for (int i = 0; i <= block.high; ++i) std::swap(a[i][j], a[i][border]);
  for (int i = block.low; i < n; ++i) std::swap(a[j][i], a[border][i]);
}

// Scales row and column i by the power of 2 that brings their norms together. Returns whether that
// gained 5% or more.
bool ScaleRow(int n, double** a, double* fv, int i, Block block) {
  double c = 0;
  double r = 0;
  for (int j = block.low; j <= block.high; ++j) {
    if (j == i) continue;
    c += std::fabs(a[j][i]);
    r += std::fabs(a[i][j]);
  }
  if (c == 0 || r == 0) return false;
  const double s = c + r;
  double f = 1;
  for (const double g = r / 2; c < g; c *= 4) f *= 2;
  for (const double g = r * 2; c >= g; c /= 4) f /= 2;
  if (!((c + r) / f < 0.95 * s)) return false;  // NaN is no gain
  fv[i] *= f;
  for (int j = block.low; j < n; ++j) a[i][j] *= 1 / f;
  for (int j = 0; j <= block.high; ++j) a[j][i] *= f;
  return true;
}

// Each scan meets a row once: it goes on from where it stands and does not start again.
Block Balance(int n, double** a, double* fv) {
  Block block{0, n - 1};
  for (int j = n - 1; j >= 0; --j) {
    if (!RowIsolates(a, j, block)) continue;
    MoveToBorder(n, a, fv, j, block.high, block);
    --block.high;
  }
  if (block.high < 0) return block;
  for (int j = 0; j <= block.high; ++j) {
    if (!ColumnIsolates(a, j, block)) continue;
    MoveToBorder(n, a, fv, j, block.low, block);
    ++block.low;
  }
  for (int i = block.low; i <= block.high; ++i) fv[i] = 1;
  for (bool changed = true; changed;) {
    changed = false;
    for (int i = block.low; i <= block.high; ++i) {
      if (ScaleRow(n, a, fv, i, block)) changed = true;
    }
  }
  return block;
}

// Eliminates below the subdiagonal, with the largest entry of each column as pivot. The multipliers
// stay where the zeros would be; iv[m] is the row exchanged with row m.
void ReduceToHessenberg(int n, double** a, int* iv, Block block) {
  for (int m = block.low + 1; m < block.high; ++m) {
    int pivot = m;
    for (int i = m + 1; i <= block.high; ++i) {
      if (std::fabs(a[i][m - 1]) > std::fabs(a[pivot][m - 1])) pivot = i;
    }
    iv[m] = pivot;
    const double x = a[pivot][m - 1];
    if (pivot != m) {
      for (int j = m - 1; j < n; ++j) std::swap(a[pivot][j], a[m][j]);
      for (int j = 0; j <= block.high; ++j) std::swap(a[j][pivot], a[j][m]);
    }
    if (x == 0) continue;
    for (int i = m + 1; i <= block.high; ++i) {
      if (a[i][m - 1] == 0) continue;
      const double y = a[i][m - 1] / x;
      a[i][m - 1] = y;
      for (int j = m; j < n; ++j) a[i][j] -= y * a[m][j];
      for (int j = 0; j <= block.high; ++j) a[j][m] += y * a[j][i];
    }
  }
}

void Accumulate(int n, double** a, double** z, const int* iv, Block block) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) z[i][j] = i == j ? 1 : 0;
  }
  for (int m = block.high - 1; m > block.low; --m) {
    for (int i = m + 1; i <= block.high; ++i) z[i][m] = a[i][m - 1];
    const int pivot = iv[m];
    if (pivot == m) continue;
    for (int j = m; j <= block.high; ++j) {
      z[m][j] = z[pivot][j];
      z[pivot][j] = 0;
    }
    z[pivot][m] = 1;
  }
}

// The QR iteration. `kVectors` says whether the whole quasi-triangular form and z are wanted or the
// eigenvalues only, for which it suffices to transform the rows and columns from low to en. (Those
// above l too: l may move up again before en does.)
template <bool kVectors>
class QRIteration {
 public:
  QRIteration(int order, double** matrix, double* real, double* imaginary, double** vectors,
              Block balanced)
      : n(order), a(matrix), wr(real), wi(imaginary), z(vectors), block(balanced) {}

  // Returns whether every eigenvalue was found before the budget was spent.
  bool Run() {
    for (int i = 0; i < n; ++i) {
      for (int j = std::max(i - 1, 0); j < n; ++j) norm += std::fabs(a[i][j]);
      if (i < block.low || i > block.high) SetRoot(i, a[i][i], 0);
    }
    int budget = 30 * n;
    int steps = 0;
    for (en = block.high; en >= block.low;) {
      l = StartOfActiveBlock();
      if (en - l >= 2) {
        if (steps == budget) return false;
        if (steps == 10 || steps == 20) {
          ShiftExceptionally();
        } else {
          x = a[en][en];
          y = a[en - 1][en - 1];
          w = a[en][en - 1] * a[en - 1][en];
        }
        ++steps;
        Step(StartOfStep());
        continue;
      }
      if (l == en) {
        OneRoot();
      } else {
        TwoRoots();
      }
      en = l - 1;
      budget -= steps;
      steps = 0;
    }
    return true;
  }

  // Sum of the absolute entries of the Hessenberg form.
  double Norm() const { return norm; }

 private:
  void SetRoot(int i, double real, double imaginary) {
    wr[i] = real;
    wi[i] = imaginary;
  }

  // The row after the last negligible subdiagonal entry above en.
  int StartOfActiveBlock() const {
    for (int i = en; i > block.low; --i) {
      double s = std::fabs(a[i - 1][i - 1]) + std::fabs(a[i][i]);
      if (s == 0) s = norm;
      if (Negligible(std::fabs(a[i][i - 1]), s)) return i;
    }
    return block.low;
  }

  void OneRoot() {
    a[en][en] += t;
    SetRoot(en, a[en][en], 0);
  }

  // The two eigenvalues of the trailing 2 x 2 block. Real ones make it triangular.
  void TwoRoots() {
    const int na = en - 1;
    const double half = (a[na][na] - a[en][en]) / 2;
    const double product = a[en][na] * a[na][en];
    const double discriminant = half * half + product;
    const double root = std::sqrt(std::fabs(discriminant));
    a[en][en] += t;
    a[na][na] += t;
    const double corner = a[en][en];
    if (discriminant < kComplexBelow) {
      SetRoot(na, corner + half, root);
      SetRoot(en, corner + half, -root);
      return;
    }
    const double zz = half + WithSign(root, half);
    SetRoot(na, corner + zz, 0);
    SetRoot(en, zz != 0 ? corner - product / zz : corner + zz, 0);
    if constexpr (kVectors) RotatePair(zz);
  }

  void RotatePair(double zz) {
    const int na = en - 1;
    const double s = std::fabs(a[en][na]) + std::fabs(zz);
    double sine = a[en][na] / s;
    double cosine = zz / s;
    const double radius = std::sqrt(sine * sine + cosine * cosine);
    sine /= radius;
    cosine /= radius;
    const auto rotate = [&](double& first, double& second) {
      const double old = first;
      first = cosine * old + sine * second;
      second = cosine * second - sine * old;
    };
    for (int j = na; j < n; ++j) rotate(a[na][j], a[en][j]);
    for (int i = 0; i <= en; ++i) rotate(a[i][na], a[i][en]);
    for (int i = block.low; i <= block.high; ++i) rotate(z[i][na], z[i][en]);
  }

  void ShiftExceptionally() {
    const double shift = a[en][en];
    t += shift;
    for (int i = block.low; i <= en; ++i) a[i][i] -= shift;
    const double s = std::fabs(a[en][en - 1]) + std::fabs(a[en - 1][en - 2]);
    x = y = 0.75 * s;
    w = -0.4375 * s * s;
  }

  // The row at which the step may start because two consecutive subdiagonal entries are small.
  // Leaves the first column of the step in (p, q, r) and clears what an earlier step left below it.
  int StartOfStep() {
    int m = en - 2;
    for (;; --m) {
      const double zz = a[m][m];
      const double toX = x - zz;
      const double toY = y - zz;
      p = (toX * toY - w) / a[m + 1][m] + a[m][m + 1];
      q = a[m + 1][m + 1] - zz - toX - toY;
      r = a[m + 2][m + 1];
      const double s = std::fabs(p) + std::fabs(q) + std::fabs(r);
      p /= s;
      q /= s;
      r /= s;
      if (m == l) break;
      const double around = std::fabs(a[m - 1][m - 1]) + std::fabs(zz) + std::fabs(a[m + 1][m + 1]);
      if (Negligible(std::fabs(a[m][m - 1]) * (std::fabs(q) + std::fabs(r)),
                     std::fabs(p) * around)) {
        break;
      }
    }
    for (int i = m + 2; i <= en; ++i) {
      a[i][i - 2] = 0;
      if (i > m + 2) a[i][i - 3] = 0;
    }
    return m;
  }

  // One double QR step on the active block, from row m on.
  void Step(int m) {
    for (int k = m; k < en; ++k) {
      const bool three = k != en - 1;
      double scale = 0;
      if (k != m) {
        p = a[k][k - 1];
        q = a[k + 1][k - 1];
        r = three ? a[k + 2][k - 1] : 0;
        scale = std::fabs(p) + std::fabs(q) + std::fabs(r);
        if (scale == 0) continue;
        p /= scale;
        q /= scale;
        r /= scale;
      }
      const double s = WithSign(std::sqrt(p * p + q * q + r * r), p);
      if (k != m) {
        a[k][k - 1] = -s * scale;
      } else if (l != m) {
        a[k][k - 1] = -a[k][k - 1];
      }
      p += s;
      if (three) {
        Reflect<3>(k, {p / s, q / s, r / s}, {1, q / p, r / p});
      } else {
        Reflect<2>(k, {p / s, q / s, 0}, {1, q / p, 0});
      }
    }
  }

  struct Triple {
    double e[3];
  };

  // Multiplies by the reflection 1 - u v' from the left (rows k, k+1, ...) and from the right.
  template <int kSize>
  void Reflect(int k, Triple u, Triple v) {
    const int lastColumn = kVectors ? n - 1 : en;
    for (int j = k; j <= lastColumn; ++j) {
      double sum = a[k][j] + v.e[1] * a[k + 1][j];
      if constexpr (kSize == 3) sum += v.e[2] * a[k + 2][j];
      for (int i = 0; i < kSize; ++i) a[k + i][j] -= sum * u.e[i];
    }
    for (int i = kVectors ? 0 : block.low; i <= std::min(en, k + 3); ++i) {
      ReflectRow<kSize>(a[i], k, u, v);
    }
    if constexpr (kVectors) {
      for (int i = block.low; i <= block.high; ++i) ReflectRow<kSize>(z[i], k, u, v);
    }
  }

  template <int kSize>
  static void ReflectRow(double* row, int k, Triple u, Triple v) {
    double sum = u.e[0] * row[k] + u.e[1] * row[k + 1];
    if constexpr (kSize == 3) sum += u.e[2] * row[k + 2];
    row[k] -= sum;
    for (int i = 1; i < kSize; ++i) row[k + i] -= sum * v.e[i];
  }

  const int n;
  double** const a;
  double* const wr;
  double* const wi;
  double** const z;
  const Block block;
  double norm = 0;
  double t = 0;                // sum of the exceptional shifts
  int l = 0, en = 0;           // the active block
  double x = 0, y = 0, w = 0;  // the shifts: corner entries and product of the off-diagonal ones
  double p = 0, q = 0, r = 0;  // the vector that the next reflection maps onto the first axis
};

// Solves the quasi-triangular system for the vector of each eigenvalue in turn, from its last
// component upward, into the column (or for a complex pair the two columns) of the eigenvalue.
class BackSubstitution {
 public:
  BackSubstitution(int order, double** form, const double* real, const double* imaginary,
                   double size)
      : n(order), a(form), wr(real), wi(imaginary), norm(size) {}

  void Run() {
    for (int en = n - 1; en >= 0; --en) {
      if (wi[en] == 0) SolveReal(en);
      if (wi[en] < kComplexBelow) SolveComplex(en);
    }
  }

 private:
  // A pair's first row waits for its second: `waiting` holds what the first one's equation gave.
  void SolveReal(int en) {
    a[en][en] = 1;
    double waitingPivot = 0;
    double waitingSum = 0;
    for (int i = en - 1, m = en; i >= 0; --i) {
      const double w = a[i][i] - wr[en];
      double sum = 0;
      for (int j = m; j <= en; ++j) sum += a[i][j] * a[j][en];
      if (wi[i] < 0) {
        waitingPivot = w;
        waitingSum = sum;
        continue;
      }
      m = i;
      if (wi[i] == 0) {
        a[i][en] = -sum / (w != 0 ? w : Tiny(norm));
      } else {
        const double x = a[i][i + 1];
        const double y = a[i + 1][i];
        const double shift = wr[i] - wr[en];
        const double solved =
            (x * waitingSum - waitingPivot * sum) / (shift * shift + wi[i] * wi[i]);
        a[i][en] = solved;
        a[i + 1][en] = std::fabs(x) > std::fabs(waitingPivot)
                           ? (-sum - w * solved) / x
                           : (-waitingSum - y * solved) / waitingPivot;
      }
      const double size = std::fabs(a[i][en]);
      if (!Overflows(size)) continue;
      for (int j = i; j <= en; ++j) a[j][en] /= size;
    }
  }

  // `en` is the second position of the pair; na and en hold the real and the imaginary part.
  void SolveComplex(int en) {
    const int na = en - 1;
    const Complex root{wr[en], wi[en]};
    StartPair(en, root);
    double waitingPivot = 0;
    Complex waitingSum{0, 0};
    for (int i = na - 1, m = na; i >= 0; --i) {
      const double w = a[i][i] - root.re;
      Complex sum{0, 0};
      for (int j = m; j <= en; ++j) {
        sum.re += a[i][j] * a[j][na];
        sum.im += a[i][j] * a[j][en];
      }
      if (wi[i] < 0) {
        waitingPivot = w;
        waitingSum = sum;
        continue;
      }
      m = i;
      if (wi[i] == 0) {
        Store(i, en, Divide({-sum.re, -sum.im}, {w, root.im}));
      } else {
        SolvePairRows(i, en, root, w, sum, waitingPivot, waitingSum);
      }
      const double size = std::max(std::fabs(a[i][na]), std::fabs(a[i][en]));
      if (!Overflows(size)) continue;
      for (int j = i; j <= en; ++j) {
        a[j][na] /= size;
        a[j][en] /= size;
      }
    }
  }

  // The last component is chosen imaginary, so that the vectors stay triangular.
  void StartPair(int en, Complex root) {
    const int na = en - 1;
    if (std::fabs(a[en][na]) > std::fabs(a[na][en])) {
      a[na][na] = root.im / a[en][na];
      a[na][en] = -(a[en][en] - root.re) / a[en][na];
    } else {
      Store(na, en, Divide({0, -a[na][en]}, {a[na][na] - root.re, root.im}));
    }
    a[en][na] = 0;
    a[en][en] = 1;
  }

  // The components i and i+1 at a pair of another eigenvalue: two complex equations at once.
  void SolvePairRows(int i, int en, Complex root, double w, Complex sum, double waitingPivot,
                     Complex waitingSum) {
    const int na = en - 1;
    const double x = a[i][i + 1];
    const double y = a[i + 1][i];
    const double shift = wr[i] - root.re;
    Complex determinant{shift * shift + wi[i] * wi[i] - root.im * root.im, shift * 2 * root.im};
    if (determinant.re == 0 && determinant.im == 0) {
      determinant.re = Tiny(norm * (std::fabs(w) + std::fabs(root.im) + std::fabs(x) +
                                    std::fabs(y) + std::fabs(waitingPivot)));
    }
    Store(i, en,
          Divide({x * waitingSum.re - waitingPivot * sum.re + root.im * sum.im,
                  x * waitingSum.im - waitingPivot * sum.im - root.im * sum.re},
                 determinant));
    if (std::fabs(x) > std::fabs(waitingPivot) + std::fabs(root.im)) {
      a[i + 1][na] = (-sum.re - w * a[i][na] + root.im * a[i][en]) / x;
      a[i + 1][en] = (-sum.im - w * a[i][en] - root.im * a[i][na]) / x;
    } else {
      Store(i + 1, en,
            Divide({-waitingSum.re - y * a[i][na], -waitingSum.im - y * a[i][en]},
                   {waitingPivot, root.im}));
    }
  }

  void Store(int i, int en, Complex component) {
    a[i][en - 1] = component.re;
    a[i][en] = component.im;
  }

  // The largest size * 0.01^k that size does not feel: it stands in for a divisor of 0.
  static double Tiny(double size) {
    double t = size;
    do {
      t *= 0.01;
    } while (size + t > size);
    return t;
  }

  // Whether a component is so large that its reciprocal vanishes beside it.
  static bool Overflows(double size) { return size != 0 && Negligible(1 / size, size); }

  const int n;
  double** const a;
  const double* const wr;
  const double* const wi;
  const double norm;
};

// z times the solved vectors; those of isolated eigenvalues are taken over as they are.
void MultiplyVectors(int n, double** a, double** z, Block block) {
  for (int i = 0; i < n; ++i) {
    if (i >= block.low && i <= block.high) continue;
    for (int j = i; j < n; ++j) z[i][j] = a[i][j];
  }
  for (int j = n - 1; j >= block.low; --j) {
    for (int i = block.low; i <= block.high; ++i) {
      double sum = 0;
      for (int k = block.low; k <= std::min(j, block.high); ++k) sum += z[i][k] * a[k][j];
      z[i][j] = sum;
    }
  }
}

void UndoBalance(int n, double** z, const double* fv, Block block) {
  if (block.low != block.high) {
    for (int i = block.low; i <= block.high; ++i) {
      for (int j = 0; j < n; ++j) z[i][j] *= fv[i];
    }
  }
  const auto exchange = [&](int i) {
    const int k = static_cast<int>(fv[i]);
    if (k != i) std::swap_ranges(z[i], z[i] + n, z[k]);
  };
  for (int i = block.low - 1; i >= 0; --i) exchange(i);
  for (int i = block.high + 1; i < n; ++i) exchange(i);
}

}  // namespace

int EigenRG(int n, double** a, double* wr, double* wi, double** z, int* iv, double* fv) {
  const Block block = Balance(n, a, fv);
  ReduceToHessenberg(n, a, iv, block);
  Accumulate(n, a, z, iv, block);
  QRIteration<true> iteration(n, a, wr, wi, z, block);
  if (iteration.Run() && iteration.Norm() != 0) {
    BackSubstitution(n, a, wr, wi, iteration.Norm()).Run();
    MultiplyVectors(n, a, z, block);
  }
  UndoBalance(n, z, fv, block);
  return 0;
}

int EigenRealGeneral(int n, double** a, double* wr, double* wi, double** z, int* iv, double* fv) {
  return EigenRG(n, a, wr, wi, z, iv, fv);
}

void Eigenvalues(int n, double** a, double* wr, double* wi, int* iv, double* fv) {
  const Block block = Balance(n, a, fv);
  ReduceToHessenberg(n, a, iv, block);
  QRIteration<false>(n, a, wr, wi, nullptr, block).Run();
}

}  // namespace zorvek
