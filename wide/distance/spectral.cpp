// The eigenvalue that a distance comes from, of many pairs at once.
//
// With F the table of a pair, D its column totals and S = (F + F')/2, the run takes the largest eigenvalue
// lambda of P = D^-1 S strictly between 0 and 1. Here delta = 1 - lambda is found, as the smallest root
// above 0 of the characteristic polynomial of E = I - P, whose entries are small where the sequences are
// alike, so that nothing is lost to cancellation. P is similar to the symmetric D^-1/2 S D^-1/2: all roots
// are real, and Laguerre's method, from 0 to the right, comes to the nearest one without passing it
// [Smith1976]. The loops go over the pairs of a stretch, so that they fill the processor's vectors.
//
// Where the outcome could differ from the run's, the pair goes through the run's own routine: a root near 0
// or 1, a nucleotide that one of the two lacks, distances so small that the run's own rounding tells, or
// roots so near each other that the polynomial does not determine them.
#include "wide/distance/spectral.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "core/index.h"
#include "core/pair_table.h"
#include "wide/distance/tiles.h"

namespace zorvek::wide {

namespace {

constexpr std::uint8_t kUnknown = 15;  // counts as each nucleotide in the second taxon of a pair

SiteCodes FirstStateCodes(bool rna) {
  SiteCodes codes{};
  for (unsigned set = 1; set < codes.size(); ++set) {
    const auto first = static_cast<StateSet>(set & (~set + 1));
    codes[set] = rna && first == kT ? kUnknown : first;
  }
  return codes;
}

// The run's routine, in all cases.
double PlainDistance(PairTable& table) {
  double same = 0;
  double different = 0;
  for (int r = 0; r < kNucleotides; ++r) {
    for (int c = 0; c < kNucleotides; ++c) (r == c ? same : different) += table[r][c];
  }
  if (different == 0 && same > 0) return 0;
  const double distance = PairDistance(table);
  return distance == 0 ? std::numeric_limits<double>::quiet_NaN() : distance;
}

constexpr int kIterations = 7;
constexpr double kNearest = 1e-10;   // to 0, of a root whose side is beyond doubt
constexpr double kLeastRoot = 5e-3;  // below, the run's rounding is more than 1e-13 of the distance
constexpr double kMostRoot = 0.98;   // above, it is again, since lambda is small
constexpr double kMostError =
    1.5e-12;  // of the root, relative; the bound is three times the error and more

// Values of the pairs of a stretch.
using Lanes = double[kTileColumns];

struct Stretch {
  Lanes f[kNucleotides][kNucleotides];
  Lanes delta;
  Lanes error;  // of delta; above kMostError: not to be trusted
};

#if defined(__GNUC__)
#define ZORVEK_ALWAYS_INLINE __attribute__((always_inline)) inline
#else
#define ZORVEK_ALWAYS_INLINE inline
#endif

// The characteristic polynomial x^4 - e1 x^3 + e2 x^2 - e3 x + e4 of E from the table of a lane: sums of
// principal minors. a are the diagonal entries, p the products E_ij E_ji, t those around three, q around
// four nucleotides.
struct Polynomial {
  double e1, e2, e3, e4;
  double size;  // of the terms of e4
};

ZORVEK_ALWAYS_INLINE Polynomial CharacteristicPolynomial(const Stretch& lanes, int k) {
  const auto& f = lanes.f;
  double w[4], a[4];
  for (int c = 0; c < 4; ++c) {
    const double total = f[0][c][k] + f[1][c][k] + f[2][c][k] + f[3][c][k];
    w[c] = 1 / total;
    a[c] = (total - f[c][c][k]) * w[c];
  }
  const auto s = [&](int i, int j) { return (f[i][j][k] + f[j][i][k]) * 0.5; };
  const double s01 = s(0, 1), s02 = s(0, 2), s03 = s(0, 3), s12 = s(1, 2), s13 = s(1, 3),
               s23 = s(2, 3);
  const double w01 = w[0] * w[1], w23 = w[2] * w[3];
  const double p01 = s01 * s01 * w01, p23 = s23 * s23 * w23;
  const double p02 = s02 * s02 * w[0] * w[2], p13 = s13 * s13 * w[1] * w[3];
  const double p03 = s03 * s03 * w[0] * w[3], p12 = s12 * s12 * w[1] * w[2];
  const double t012 = s01 * s12 * s02 * w01 * w[2], t013 = s01 * s13 * s03 * w01 * w[3];
  const double t023 = s02 * s23 * s03 * w23 * w[0], t123 = s12 * s23 * s13 * w23 * w[1];
  const double q =
      (s01 * s12 * s23 * s03 + s01 * s13 * s23 * s02 + s02 * s12 * s13 * s03) * w01 * w23;
  const double a01 = a[0] * a[1], a23 = a[2] * a[3];
  Polynomial poly;
  poly.e1 = a[0] + a[1] + a[2] + a[3];
  poly.e2 = a01 + a23 + (a[0] + a[1]) * (a[2] + a[3]) - (p01 + p02 + p03 + p12 + p13 + p23);
  poly.e3 = a01 * (a[2] + a[3]) + a23 * (a[0] + a[1]) - a[0] * (p12 + p13 + p23) -
            a[1] * (p02 + p03 + p23) - a[2] * (p01 + p03 + p13) - a[3] * (p01 + p02 + p12) -
            2 * (t012 + t013 + t023 + t123);
  const double pairs = a01 * p23 + a[0] * a[2] * p13 + a[0] * a[3] * p12 + a[1] * a[2] * p03 +
                       a[1] * a[3] * p02 + a23 * p01;
  const double triples = 2 * (a[0] * t123 + a[1] * t023 + a[2] * t013 + a[3] * t012);
  const double squares = p01 * p23 + p02 * p13 + p03 * p12;
  poly.e4 = a01 * a23 - pairs - triples + squares - 2 * q;
  poly.size = a01 * a23 + pairs + triples + squares + 2 * q;
  return poly;
}

// Fills in delta and error of all lanes.
ZORVEK_ALWAYS_INLINE void FindRootsPlain(Stretch& lanes) {
  for (int k = 0; k < kTileColumns; ++k) {
    const Polynomial p = CharacteristicPolynomial(lanes, k);
    const double sign = p.e4 < 0 ? -1 : 1;
    // No root is nearer to 0 than these steps from there.
    const double square0 = 9 * p.e3 * p.e3 - 24 * p.e4 * p.e2;
    const double root0 = std::sqrt(square0 > 0 ? square0 : 0);
    const double nearest = std::abs(4 * p.e4) / (std::abs(p.e3) + root0);
    // A root a little below 0 would hold the method up; e3/e2 is beyond it and before the next one.
    double x = p.e4 < 0 && p.e3 > 0 && p.e2 > 0 ? p.e3 / p.e2 : 0;
    double step = 0;
    double slope = 0;
    for (int iteration = 0; iteration < kIterations; ++iteration) {
      const double value = (((x - p.e1) * x + p.e2) * x - p.e3) * x + p.e4;
      slope = ((4 * x - 3 * p.e1) * x + 2 * p.e2) * x - p.e3;
      const double bend = (12 * x - 6 * p.e1) * x + 2 * p.e2;
      const double square = 9 * slope * slope - 12 * value * bend;
      step = -4 * value / (slope - sign * std::sqrt(square > 0 ? square : 0));
      x += step;
    }
    // How far the rounding of the polynomial's terms moves the root, and what the next step would.
    const double terms =
        ((x + p.e1) * x + 3 * std::abs(p.e2)) * x * x + 4 * std::abs(p.e3) * x + p.size;
    const double rounding = 4e-16 * terms / std::abs(slope * x);
    const double last = std::abs(step / x);
    const double error = rounding + 100 * last * last * last;
    const bool clear = nearest > kNearest && x > kLeastRoot && x < kMostRoot;
    lanes.delta[k] = x;
    lanes.error[k] = clear ? error : 1;
  }
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void FindRootsAvx2(Stretch& lanes) {
  FindRootsPlain(lanes);
}
__attribute__((target("avx512f,avx512vl,avx512dq"))) void FindRootsAvx512(Stretch& lanes) {
  FindRootsPlain(lanes);
}
#endif

void FindRoots(Stretch& lanes) {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
    return FindRootsAvx512(lanes);
  }
  if (__builtin_cpu_supports("avx2")) return FindRootsAvx2(lanes);
#endif
  FindRootsPlain(lanes);
}

// For each taxon the first that has the same planes.
std::vector<int> FirstOfSame(const NucleotidePlanes& planes, int n) {
  const std::size_t words = kNucleotides * planes.Words();
  std::map<std::vector<PlaneWord>, int> first;
  std::vector<int> firsts;
  for (int i = 0; i < n; ++i) {
    const PlaneWord* const begin = planes.Planes(Index(i));
    firsts.push_back(first.emplace(std::vector(begin, begin + words), i).first->second);
  }
  return firsts;
}

// The distances of taxon i to from..to-1.
void FillStretch(const NucleotidePlanes& planes, const PlaneWord* nucleotides, int i, int from,
                 int to, DistanceMatrix& distances) {
  PairTable tables[kTileColumns];
  Stretch lanes;
  for (int k = 0; k < kTileColumns; ++k) {
    const int j = std::min(from + k, to - 1);
    CountPairs(nucleotides, planes.Planes(Index(j)), planes.Words(), tables[k]);
    for (int r = 0; r < kNucleotides; ++r) {
      for (int c = 0; c < kNucleotides; ++c) lanes.f[r][c][k] = tables[k][r][c];
    }
  }
  FindRoots(lanes);
  for (int j = from; j < to; ++j) {
    const int k = j - from;
    const bool sure = lanes.error[k] <= kMostError;
    distances.Set(i, j, sure ? -0.25 * std::log1p(-lanes.delta[k]) : PlainDistance(tables[k]));
  }
}

}  // namespace

DistanceMatrix SpectralDistances(const Alignment& alignment, const SiteList& sites, int threads,
                                 const TellShare& tell) {
  const NucleotidePlanes planes =
      TablePlanes(alignment, sites, FirstStateCodes(alignment.rna), threads);
  const int n = static_cast<int>(alignment.Taxa());
  DistanceMatrix distances(n);
  ForEach((n + kTileRows - 1) / kTileRows, threads, [&](int band, int thread) {
    TellBand(band, n, thread, tell);
    for (int i = band * kTileRows; i < std::min(n, (band + 1) * kTileRows); ++i) {
      const std::vector<PlaneWord> nucleotides = planes.NucleotidesOnly(Index(i));
      for (int from = i; from < n;
           from += kTileColumns) {  // a sequence without sites shares none with itself
        FillStretch(planes, nucleotides.data(), i, from, std::min(from + kTileColumns, n),
                    distances);
      }
    }
  });
  const std::vector<int> first = FirstOfSame(planes, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) distances.Set(i, j, distances(first[Index(i)], first[Index(j)]));
  }
  for (int i = 0; i < n; ++i) distances.Set(i, i, 0);
  return distances;
}

}  // namespace zorvek::wide
