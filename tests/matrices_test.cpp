// The routines for small matrices: factors, inverses and eigensystems against their definitions.
#include <gtest/gtest.h>

#include <complex>

#include "core/eigen_rg.h"
#include "driver/mt_rand.h"
#include "input/lu.h"
#include "tests/prelude.h"

namespace zorvek {
namespace {

using Values = std::vector<std::vector<double>>;

std::vector<double*> Rows(Values& values) {
  std::vector<double*> rows;
  for (auto& row : values) rows.push_back(row.data());
  return rows;
}

struct Factors {
  explicit Factors(const Values& matrix) : a(matrix), y(matrix), scale(a.size()), indx(a.size()) {
    const int order = static_cast<int>(a.size());
    Values copy = a;
    inverted = InvertMatrix(Rows(copy).data(), order, scale.data(), indx.data(), Rows(y).data());
    result = LUDecompose(Rows(a).data(), order, scale.data(), indx.data(), &d);
  }
  Values a, y;
  std::vector<double> scale;
  std::vector<int> indx;
  double d = 0;
  int result, inverted;
};

TEST(LU, InvertsRandomMatricesOfRowsOfVeryDifferentSize) {
  MTRand random;
  random.seedWithValue(11);
  for (std::size_t order = 0; order <= 6; ++order) {
    Values a(order, std::vector<double>(order));
    for (auto& row : a) {
      const double unit = std::pow(10.0, 3 + random.nextAtMost(4));
      for (double& entry : row) entry = unit * (random.nextAtMost(2000) / 1000.0 - 1);
    }
    const Factors f(a);
    ASSERT_EQ(f.result + f.inverted, 0);
    for (std::size_t i = 0; i < order; ++i) {
      for (std::size_t j = 0; j < order; ++j) {
        double identity = 0;
        for (std::size_t k = 0; k < order; ++k) identity += f.y[i][k] * a[k][j];
        EXPECT_NEAR(identity, i == j, 1e-9);
      }
    }
  }
}

TEST(LU, KnownPivotsAndSingularMatrices) {
  const Factors relative({{2, 1000}, {1, 1}});
  EXPECT_EQ(relative.indx[0], 1);
  EXPECT_EQ(relative.d, -1);
  EXPECT_EQ(relative.a, (Values{{1, 1}, {2, 998}}));
  EXPECT_EQ(Factors({{3, 1}, {1, 2}}).d, 1);
  EXPECT_EQ(relative.scale, (std::vector<double>{0.001, 0.001}));  // the pivot's is written over
  EXPECT_EQ(Factors({{1, 1}, {1, 0}}).indx[0], 1) << "ties go to the later row";
  const Values zero_row{{1, 2}, {0, 0}};
  const std::string message = "singular matrix in routine LUDecompose\n";
  testing::internal::CaptureStdout();
  const Factors refused(zero_row);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), message + message);
  EXPECT_EQ(refused.result, 1);
  EXPECT_EQ(refused.inverted, 1);
  EXPECT_EQ(refused.a, zero_row);
  EXPECT_EQ(refused.y, zero_row) << "untouched";

  const Factors dependent({{1, 2}, {2, 4}});
  EXPECT_EQ(dependent.result + dependent.inverted, 0);
  EXPECT_EQ(dependent.a[1][1], 1e-20);
  EXPECT_NEAR(dependent.y[1][0] / 1e20, 1, 1e-9);
}

using Root = std::complex<double>;

// A matrix with its eigensystem, computed on construction from a copy.
struct Eigensystem {
  explicit Eigensystem(Values m)
      : matrix(std::move(m)), a(matrix), z(matrix), wr(matrix.size(), 7), wi(matrix.size(), 7) {
    std::vector<int> iv(matrix.size());
    std::vector<double> fv(matrix.size());
    const int order = static_cast<int>(matrix.size());
    EXPECT_EQ(EigenRealGeneral(order, Rows(a).data(), wr.data(), wi.data(), Rows(z).data(),
                               iv.data(), fv.data()),
              0);

    auto b = matrix;
    std::vector<double> real(matrix.size(), 7);
    std::vector<double> imaginary(matrix.size(), 7);
    Eigenvalues(order, Rows(b).data(), real.data(), imaginary.data(), iv.data(), fv.data());
    EXPECT_EQ(real, wr);
    EXPECT_EQ(imaginary, wi);
  }

  Root Component(std::size_t i, std::size_t j) const {
    return {z[i][j], wi[j] > 0 ? z[i][j + 1] : 0};
  }

  Values matrix, a, z;
  std::vector<double> wr, wi;
};

// Checks A v = lambda v for all eigenvectors, relative to |A| |v|, and the sum of the roots, the trace.
// Returns the number of complex pairs.
int ExpectSolved(const Eigensystem& system, double tolerance) {
  int pairs = 0;
  double scale = 1e-300, trace = 0;
  for (const auto& row : system.matrix) {
    for (const double x : row) scale = std::max(scale, std::fabs(x));
  }
  for (std::size_t j = 0; j < system.wr.size(); ++j) {
    trace += system.matrix[j][j] - system.wr[j];
    if (system.wi[j] < 0) continue;  // the conjugate of the one before
    double residual = 0, size = 0;
    for (std::size_t i = 0; i < system.wr.size(); ++i) {
      Root sum = -Root(system.wr[j], system.wi[j]) * system.Component(i, j);
      for (std::size_t k = 0; k < system.wr.size(); ++k) {
        sum += system.matrix[i][k] * system.Component(k, j);
      }
      residual = std::max(residual, std::abs(sum));
      size = std::max(size, std::abs(system.Component(i, j)));
    }
    EXPECT_GT(size, 0);
    EXPECT_LE(residual, tolerance * size * scale);
    if (system.wi[j] == 0) continue;
    ++pairs;
    EXPECT_EQ(system.wi[j + 1], -system.wi[j]);
  }
  EXPECT_NEAR(trace, 0, 1e-12);
  return pairs;
}

TEST(Eigen, SpecialMatrices) {
  // 2 x 2 blocks (c, -e; 1, c) with discriminant -e. Each is tried in a matrix that nothing scales.
  const Eigensystem complex_pair({{0.5, -4e-4}, {1, 0.5}});
  EXPECT_EQ(complex_pair.wr, (std::vector<double>{0.5, 0.5}));
  EXPECT_NEAR(complex_pair.wi[0], 0.02, 1e-15);
  const Eigensystem almost_double({{0.5, -1e-13}, {1, 0.5}});
  EXPECT_EQ(almost_double.wi, (std::vector<double>{0, 0}));
  EXPECT_NEAR(almost_double.wr[0], 0.5 + std::sqrt(1e-13), 1e-15);
  const std::vector<Values> matrices{
      {{0, 0}, {0, 0}},
      // The companion matrix of (x-1)(x-2)(x-3)(x-4).
      {{10, -35, 50, -24}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}},
      // A cyclic permutation: the QR step alone never gets off it, it takes the exceptional shift.
      {{0, 0, 0, 1}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}},
      {{2, 1, 0, 0}, {0, 2, 1, 0}, {0, 0, 2, 0}, {0, 0, 0, -1}},
      // Row 2 and column 0 isolate; the exchanges must be undone in the vectors.
      {{1, 2, 3, 4}, {0, 5, 1, 2}, {0, 0, 7, 0}, {0, 3, 4, 6}}};
  for (const auto& matrix : matrices) ExpectSolved(Eigensystem(matrix), 1e-14);
  const Eigensystem diagonal({{3, 0, 0}, {0, -1, 0}, {0, 0, 2}});
  EXPECT_EQ(diagonal.wr, (std::vector<double>{3, -1, 2})) << "isolated, they stand in their rows";
}

// Random matrices of every kind: dense, sparse, badly scaled, of small whole numbers (defective
// ones and complex pairs among them). In every other one the entries are of all magnitudes, so that the
// active block grows again before its end has split off; of these the values alone are looked at.
TEST(Eigen, VectorsSolveTheirEquation) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  int pairs = 0;
  for (int trial = 0; trial < 8000; ++trial) {
    const bool wild = trial % 2 == 1;
    const int kind = wild ? 4 : trial / 2 % 4;
    const std::size_t order = Index(wild ? 8 : 1 + trial / 2 % 9);
    Values m(order, std::vector<double>(order));
    for (std::size_t i = 0; i < order; ++i) {
      for (std::size_t j = 0; j < order; ++j) {
        m[i][j] = kind == 0 ? static_cast<double>(random() % 5) - 2 : normal(random);
        if (kind == 1 && random() % 2 == 0) m[i][j] = 0;
        if (kind == 2) m[i][j] *= std::pow(10.0, double(i) - double(j));
        if (wild) m[i][j] *= std::pow(10.0, static_cast<int>(random() % 17) - 8);
      }
    }
    SCOPED_TRACE(trial);
    const Eigensystem system(m);
    if (!wild) pairs += ExpectSolved(system, kind == 0 ? 1e-6 : 1e-11);
  }
  EXPECT_GT(pairs, 1000);
}

// It must come to an end, in the balancing, the iteration (30 steps for each eigenvalue) and the
// back-substitution, which a norm that is no number does not prevent.
TEST(Eigen, NotANumberOffTheDiagonal) {
  const double nan = std::nan("");
  for (const std::size_t order : {2u, 3u}) {
    Values a{{1, nan, 2}, {2, 3, nan}, {nan, 1, 4}};
    Values z = a;
    std::vector<double> wr(3, 7), wi(3, 7), fv(3);
    std::vector<int> iv(3);
    EXPECT_EQ(EigenRG(static_cast<int>(order), Rows(a).data(), wr.data(), wi.data(), Rows(z).data(),
                      iv.data(), fv.data()),
              0);
    EXPECT_EQ(fv[0], 1) << "scaled for no gain";
    EXPECT_EQ(std::isnan(wr[0]), order == 2);
    EXPECT_EQ(wr[2], 7) << "not reached";
    EXPECT_EQ(a[1][1] == 1, order == 2) << "back-substitution";
  }
}

}  // namespace
}  // namespace zorvek
