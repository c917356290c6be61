// Factors and inverses against their definitions.
#include "input/lu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
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

struct Factors {
  explicit Factors(Values matrix) : a(std::move(matrix)), scale(a.size()), indx(a.size()) {
    const int order = static_cast<int>(a.size());
    y = a;
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

TEST(LU, FactorsAndInverseOfRandomMatrices) {
  MTRand random;
  random.seedWithValue(11);
  for (std::size_t order = 0; order <= 6; ++order) {
    Values a(order, std::vector<double>(order));
    for (auto& row : a) {
      const double unit = std::pow(10.0, random.nextAtMost(4));  // rows of very different size
      for (double& entry : row) entry = unit * (random.nextAtMost(2000) - 1000.0);
    }
    const Factors f(a);
    ASSERT_EQ(f.result + f.inverted, 0);
    Values exchanged = a;
    double parity = 1;
    for (std::size_t j = 0; j < order; ++j) {
      const auto other = static_cast<std::size_t>(f.indx[j]);
      std::swap(exchanged[j], exchanged[other]);
      if (other != j) parity = -parity;
    }
    EXPECT_EQ(f.d, parity);
    for (std::size_t i = 0; i < order; ++i) {
      for (std::size_t j = 0; j < order; ++j) {
        double lower_upper = i <= j ? f.a[i][j] : 0;
        for (std::size_t k = 0; k < std::min(i, j + 1); ++k) lower_upper += f.a[i][k] * f.a[k][j];
        EXPECT_NEAR(lower_upper * f.scale[i], exchanged[i][j] * f.scale[i], 1e-13);
        double identity = 0;
        for (std::size_t k = 0; k < order; ++k) identity += f.y[i][k] * a[k][j];
        EXPECT_NEAR(identity, i == j, 1e-9);
      }
    }
  }
}

TEST(LU, PivotsAreRelativeToTheirRowAndTiesGoToTheLaterRow) {
  const Factors relative({{2, 1000}, {1, 1}});
  EXPECT_EQ(relative.indx[0], 1);
  EXPECT_EQ(relative.scale, (std::vector<double>{1, 0.001}));
  EXPECT_EQ(Factors({{1, 1}, {1, 0}}).indx[0], 1);
  EXPECT_EQ(Factors({{1, 0}, {0, 1}}).indx, (std::vector<int>{0, 1}));
}

TEST(LU, SingularMatrices) {
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

}  // namespace
}  // namespace zorvek
