// Factors and inverses against their definitions.
#include "input/lu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "driver/mt_rand.h"

namespace zorvek {
namespace {

using Values = std::vector<std::vector<double>>;

std::vector<double*> Rows(Values& values) {
  std::vector<double*> rows;
  for (auto& row : values) rows.push_back(row.data());
  return rows;
}

Values RandomMatrix(MTRand& random, std::size_t order) {
  Values a(order, std::vector<double>(order));
  for (auto& row : a) {
    const double unit = std::pow(10.0, random.nextAtMost(6));  // rows of very different size
    for (double& entry : row) entry = unit * (random.nextAtMost(2000) - 1000.0);
  }
  return a;
}

// The sum over all permutations.
double Determinant(const Values& a) {
  std::vector<std::size_t> order(a.size());
  std::iota(order.begin(), order.end(), 0u);
  double sum = 0;
  do {
    double product = 1;
    for (std::size_t i = 0; i < order.size(); ++i) {
      product *= a[i][order[i]];
      for (std::size_t k = 0; k < i; ++k) product *= order[k] > order[i] ? -1 : 1;
    }
    sum += product;
  } while (std::next_permutation(order.begin(), order.end()));
  return sum;
}

struct Factors {
  explicit Factors(Values matrix) : a(std::move(matrix)), scale(a.size()), indx(a.size()) {
    result = LUDecompose(Rows(a).data(), static_cast<int>(a.size()), scale.data(), indx.data(), &d);
  }
  Values a;
  std::vector<double> scale;
  std::vector<int> indx;
  double d = 0;
  int result;
};

TEST(LU, FactorsMultiplyToTheExchangedMatrixAndGiveItsDeterminant) {
  MTRand random;
  random.seedWithValue(11);
  for (std::size_t order = 1; order <= 6; ++order) {
    for (int trial = 0; trial < 20; ++trial) {
      Values a = RandomMatrix(random, order);
      const Factors f(a);
      ASSERT_EQ(f.result, 0);
      double determinant = f.d;
      for (std::size_t j = 0; j < order; ++j) determinant *= f.a[j][j];
      EXPECT_NEAR(determinant / Determinant(a), 1, 1e-9);
      for (std::size_t j = 0; j < order; ++j)
        std::swap(a[j], a[static_cast<std::size_t>(f.indx[j])]);
      for (std::size_t i = 0; i < order; ++i) {
        const double unit = *std::max_element(a[i].begin(), a[i].end(), [](double x, double y) {
          return std::fabs(x) < std::fabs(y);
        });
        EXPECT_DOUBLE_EQ(f.scale[i] * std::fabs(unit), 1) << "scales go with their rows";
        for (std::size_t j = 0; j < order; ++j) {
          double product = i <= j ? f.a[i][j] : 0;
          for (std::size_t k = 0; k < std::min(i, j + 1); ++k) product += f.a[i][k] * f.a[k][j];
          EXPECT_NEAR(product, a[i][j], 1e-12 * std::fabs(unit) * static_cast<double>(order));
        }
      }
    }
  }
}

TEST(LU, PivotsAreRelativeToTheirRowAndTiesGoToTheLaterRow) {
  EXPECT_EQ(Factors({{2, 1000}, {1, 1}}).indx[0], 1);
  EXPECT_EQ(Factors({
                        {1, 1},
                        {1, 0},
                    })
                .indx[0],
            1);
  const Factors identity({{1, 0}, {0, 1}});
  EXPECT_EQ(identity.indx, (std::vector<int>{0, 1}));
  EXPECT_EQ(identity.d, 1);
  EXPECT_EQ(Factors({{0, 1}, {1, 0}}).d, -1);
  EXPECT_EQ(Factors(Values{}).d, 1);
}

TEST(LU, InverseTimesMatrixIsIdentity) {
  MTRand random;
  random.seedWithValue(12);
  for (std::size_t order = 0; order <= 8; ++order) {
    Values a = RandomMatrix(random, order);
    Values factors = a;
    Values inverse = a;
    std::vector<double> column(order);
    std::vector<int> indx(order);
    ASSERT_EQ(InvertMatrix(Rows(factors).data(), static_cast<int>(order), column.data(),
                           indx.data(), Rows(inverse).data()),
              0);
    for (std::size_t i = 0; i < order; ++i) {
      for (std::size_t j = 0; j < order; ++j) {
        double product = 0;
        for (std::size_t k = 0; k < order; ++k) product += inverse[i][k] * a[k][j];
        EXPECT_NEAR(product, i == j, 1e-6);
      }
    }
  }
}

TEST(LU, SingularMatrices) {
  std::vector<double> column(2);
  std::vector<int> indx(2);
  Values y{{7, 7}, {7, 7}};
  Values zero_row{{1, 2}, {0, 0}};
  testing::internal::CaptureStdout();
  EXPECT_EQ(InvertMatrix(Rows(zero_row).data(), 2, column.data(), indx.data(), Rows(y).data()), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "singular matrix in routine LUDecompose\n");
  EXPECT_EQ(zero_row, (Values{{1, 2}, {0, 0}}));
  EXPECT_EQ(y, (Values{{7, 7}, {7, 7}}));

  Values dependent{{1, 2}, {2, 4}};
  EXPECT_EQ(InvertMatrix(Rows(dependent).data(), 2, column.data(), indx.data(), Rows(y).data()), 0);
  EXPECT_EQ(dependent[1][1], 1e-20);
  EXPECT_NEAR(y[1][0] / 1e20, 1, 1e-9);
}

}  // namespace
}  // namespace zorvek
