#include "wide/distance/models.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace zorvek::wide {

namespace {

// The purines' and the pyrimidines' share.
double R(const Frequencies& f) {
  return f.a + f.g;
}
double Y(const Frequencies& f) {
  return f.c + f.t;
}

// value / part, 0 without a part
double Over(double value, double part) {
  return part > 0 ? value / part : 0;
}

Formula P(const Frequencies&, RateTerm) {
  return [](const PairCounts& n) { return (n.ag + n.ct + n.transversions) / n.compared; };
}

// -b ln(1 - p/b)
Formula EqualRates(double b, RateTerm term) {
  return [=](const PairCounts& n) {
    return term(b, (n.ag + n.ct + n.transversions) / n.compared / b);
  };
}

Formula Jc69(const Frequencies&, RateTerm term) {
  return EqualRates(0.75, term);
}

Formula F81(const Frequencies& f, RateTerm term) {
  return EqualRates(1 - (f.a * f.a + f.c * f.c + f.g * f.g + f.t * f.t), term);
}

// -ln(1 - 2P - Q) / 2 - ln(1 - 2Q) / 4
Formula K80(const Frequencies&, RateTerm term) {
  return [=](const PairCounts& n) {
    const double p = (n.ag + n.ct) / n.compared;
    const double q = n.transversions / n.compared;
    return term(0.5, 2 * p + q) + term(0.25, 2 * q);
  };
}

// -2A ln(1 - P/2A - (A-B)Q/2AC) + 2(A-B-C) ln(1 - Q/2C),
// A = ct/y + ag/r, B = ct + ag, C = ry
Formula F84(const Frequencies& f, RateTerm term) {
  const double a = Over(f.c * f.t, Y(f)) + Over(f.a * f.g, R(f));
  const double b = f.c * f.t + f.a * f.g;
  const double c = R(f) * Y(f);
  const double per_q = Over(a - b, 2 * a * c);
  return [=](const PairCounts& n) {
    const double p = (n.ag + n.ct) / n.compared;
    const double q = n.transversions / n.compared;
    return term(2 * a, p / (2 * a) + per_q * q) + term(c > 0 ? 2 * (b + c - a) : 0, q / (2 * c));
  };
}

// -k1 ln(1 - P1/k1 - Q/2r) - k2 ln(1 - P2/k2 - Q/2y) - k3 ln(1 - Q/2ry),
// k1 = 2ag/r, k2 = 2ct/y, k3 = 2(ry - agy/r - ctr/y)
Formula Tn93(const Frequencies& f, RateTerm term) {
  const double r = R(f);
  const double y = Y(f);
  const double k1 = Over(2 * f.a * f.g, r);
  const double k2 = Over(2 * f.c * f.t, y);
  const double k3 = r > 0 && y > 0 ? 2 * r * y - k1 * y - k2 * r : 0;
  return [=](const PairCounts& n) {
    const double q = n.transversions / n.compared;
    return term(k1, n.ag / n.compared / k1 + q / (2 * r)) +
           term(k2, n.ct / n.compared / k2 + q / (2 * y)) + term(k3, q / (2 * r * y));
  };
}

// (-ln det F + (ln det Dx + ln det Dy)/2) / 4, F the shares of the 16 pairs, Dx and Dy its row and
// column sums [Lake1994, Lockhart1994]; without the nucleotides that neither sequence has.  Counts serve as well as shares: what
// they are divided by cancels out. The determinant is exact, so that it is the same for F transposed.
double ParalinearDistance(const PairTable& table) {
  __extension__ using Wide = __int128;
  std::int64_t f[kNucleotides][kNucleotides];
  double sums = 1;
  double different = 0;
  for (int i = 0; i < kNucleotides; ++i) {
    double row = 0;
    double column = 0;
    for (int j = 0; j < kNucleotides; ++j) {
      f[i][j] = static_cast<std::int64_t>(table[i][j]);
      row += table[i][j];
      column += table[j][i];
    }
    different += row - table[i][i];
    if (row == 0 && column == 0) f[i][i] = 1;
    sums *= row == 0 && column == 0 ? 1 : row * column;
  }
  if (different == 0) return 0;
  // 2 x 2 minors of rows 0, 1 and of rows 2, 3
  const auto minor = [&f](int row, int j, int k) {
    return Wide{f[row][j]} * f[row + 1][k] - Wide{f[row][k]} * f[row + 1][j];
  };
  const Wide determinant = minor(0, 0, 1) * minor(2, 2, 3) - minor(0, 0, 2) * minor(2, 1, 3) +
                           minor(0, 0, 3) * minor(2, 1, 2) + minor(0, 1, 2) * minor(2, 0, 3) -
                           minor(0, 1, 3) * minor(2, 0, 2) + minor(0, 2, 3) * minor(2, 0, 1);
  if (determinant <= 0) return std::numeric_limits<double>::infinity();
  const double ratio = static_cast<double>(determinant) / std::sqrt(sums);
  return ratio < 1 ? -std::log(ratio) / 4 : 0;
}

Formula Logdet(const Frequencies&, RateTerm) {
  return [](const PairCounts& n) { return ParalinearDistance(n.table); };
}

const char kSubstitutions[] = "substitutions per site";

// name, paper, unit, gamma form, table, formula
constexpr std::array<ModelRow, kModels> kRows{{
    {"p", "Nei2000", "differences per site", false, false, P},
    {"jc69", "Jukes1969", kSubstitutions, true, false, Jc69},
    {"k80", "Kimura1980", kSubstitutions, true, false, K80},
    {"f81", "Felsenstein1981", kSubstitutions, true, false, F81},
    {"f84", "Felsenstein1996", kSubstitutions, false, false, F84},
    {"tn93", "Tamura1993", kSubstitutions, true, false, Tn93},
    {"logdet", "Lake1994", kSubstitutions, false, true, Logdet},
    {"spectral", "", "", false, true, nullptr},
}};

}  // namespace

double RateTerm::operator()(double weight, double x) const {
  if (!(weight > 0)) return 0;
  if (!(x < 1)) return std::numeric_limits<double>::infinity();
  const double plain = -std::log1p(-x);
  return weight * (gamma_ > 0 ? gamma_ * std::expm1(plain / gamma_) : plain);
}

const std::array<ModelRow, kModels>& Models() {
  return kRows;
}

Names<Model> ModelNames() {
  Names<Model> names;
  for (const ModelRow& row : kRows) {
    names.emplace_back(row.name, static_cast<Model>(names.size()));
  }
  return names;
}

bool HasGamma(Model model) {
  return RowOf(model).has_gamma;
}

std::string GammaModels() {
  std::string names;
  for (const ModelRow& row : kRows) {
    if (row.has_gamma) names += (names.empty() ? "" : " ") + std::string(row.name);
  }
  return names;
}

}  // namespace zorvek::wide
