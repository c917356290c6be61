// The distances of zorvek-wide against their definitions, against the run's, and through the program.

#include <array>

#include "tests/data.h"
#include "tests/files.h"
#include "wide/distance/pair_distances.h"

namespace zorvek::wide {
namespace {

// Sequences that differ more or less, with gaps and ambiguity codes; none has a T if `three`.
Alignment RandomAlignment(std::size_t sites, bool three, std::mt19937& random) {
  Alignment alignment;
  std::vector<StateSet> root(sites);
  const std::array<StateSet, 8> draws{kA, kA, kA, kC, kG, kG, kT, kT};
  for (StateSet& cell : root) cell = draws[random() % (three ? 6 : 8)];
  for (unsigned taxon = 0; taxon < 7; ++taxon) {
    alignment.labels.push_back("t" + std::to_string(taxon));
    alignment.cells.push_back(root);
    for (StateSet& cell : alignment.cells.back()) {
      if (random() % 40 < 3 * taxon) cell = draws[random() % (three ? 6 : 8)];
      if (random() % 12 == 0) cell = static_cast<StateSet>(random() % 16);
    }
  }
  return alignment;
}

// The sum over all permutations.
double Determinant(const double (&m)[5][5]) {
  double sum = 0;
  std::array<std::size_t, 4> to{0, 1, 2, 3};
  do {
    double product = 1;
    for (std::size_t i = 0; i < 4; ++i) {
      product *= m[i][to[i]];
      for (std::size_t k = 0; k < i; ++k) product *= to[k] > to[i] ? -1 : 1;
    }
    sum += product;
  } while (std::next_permutation(to.begin(), to.end()));
  return sum;
}

// From the shares of the pairings alone, with logarithms as they are printed; NaN without a number.
double Defined(const Alignment& alignment, int i, int j, const ModelSettings& settings) {
  const auto place = [](StateSet s) {
    return s == kA ? 0 : s == kC ? 1 : s == kG ? 2 : s == kT ? 3 : 4;
  };
  double all[5] = {}, f[5][5] = {}, compared = 0;
  for (const auto& row : alignment.cells) {
    for (const StateSet s : row) ++all[place(s)];
  }
  for (std::size_t k = 0; k < alignment.Sites(); ++k) {
    ++f[place(alignment.cells[Index(i)][k])][place(alignment.cells[Index(j)][k])];
  }
  for (auto& row : f) row[4] = 0;
  for (double& count : f[4]) count = 0;
  for (auto& row : f) compared += row[0] + row[1] + row[2] + row[3];
  for (auto& row : f) {
    for (double& share : row) share /= compared;
  }
  const double n = all[0] + all[1] + all[2] + all[3];
  const double a = all[0] / n, c = all[1] / n, g = all[2] / n, t = all[3] / n, r = a + g, y = c + t;
  const double p1 = f[0][2] + f[2][0], p2 = f[1][3] + f[3][1], s = settings.gamma;
  const double q = f[0][1] + f[0][3] + f[2][1] + f[2][3] + f[1][0] + f[3][0] + f[1][2] + f[3][2];
  const double p = p1 + p2 + q, b = 1 - a * a - c * c - g * g - t * t;
  const auto ln = [s](double w) {
    return s > 0 ? -s * (std::pow(w > 0 ? w : NAN, -1 / s) - 1) : std::log(w);
  };
  switch (settings.model) {
    case Model::kP:
      return p;
    case Model::kJc69:
      return -0.75 * ln(1 - p / 0.75);
    case Model::kK80:
      return -ln(1 - 2 * (p1 + p2) - q) / 2 - ln(1 - 2 * q) / 4;
    case Model::kF81:
      return -b * ln(1 - p / b);
    case Model::kF84: {
      const double A = c * t / y + a * g / r, B = c * t + a * g, C = r * y;
      return -2 * A * ln(1 - (p1 + p2) / (2 * A) - (A - B) * q / (2 * A * C)) +
             2 * (A - B - C) * ln(1 - q / (2 * C));
    }
    case Model::kTn93: {
      const double k1 = 2 * a * g / r, k2 = 2 * c * t / y;
      const double k3 = 2 * (r * y - a * g * y / r - c * t * r / y);
      return -k1 * ln(1 - p1 / k1 - q / (2 * r)) - k3 * ln(1 - q / (2 * r * y)) -
             (k2 > 0 ? k2 * ln(1 - p2 / k2 - q / (2 * y)) : 0);
    }
    case Model::kLogdet: {
      double sums = 0;
      for (std::size_t x = 0; x < 4; ++x) {
        const double row = f[x][0] + f[x][1] + f[x][2] + f[x][3];
        const double column = f[0][x] + f[1][x] + f[2][x] + f[3][x];
        if (row + column == 0) {
          f[x][x] = 1;  // as if it were not there
          continue;
        }
        sums += std::log(row) + std::log(column);
      }
      return (sums / 2 - std::log(Determinant(f))) / 4;
    }
    case Model::kSpectral:
      break;
  }
  return NAN;
}

TEST(DistanceModels, AreThoseOfTheirFormulas) {
  std::mt19937 random(8);
  for (const std::size_t sites : {63u, 64u, 65u, 130u, 700u}) {
    for (const bool three : {false, true}) {
      const Alignment alignment = RandomAlignment(sites, three, random);
      for (std::size_t model = 0; model + 1 < kModels; ++model) {
        for (const double gamma : {0.0, 0.5, 3.0}) {
          if (gamma > 0 && !Models()[model].has_gamma) continue;
          SCOPED_TRACE(Models()[model].name + (" " + std::to_string(gamma)));
          const ModelSettings settings{static_cast<Model>(model), gamma};
          const EstimatedDistances found =
              PairDistances(alignment, AllSites(alignment), settings, 2);
          long saturated = 0;
          double largest = 0;
          for (const auto& [i, j] : test::Pairs(7)) {
            double expected = Defined(alignment, i, j, settings);
            if (!std::isfinite(expected)) {
              ++saturated;
              expected = found.kinds.stand_in;
            } else {
              largest = std::max(largest, expected);
            }
            EXPECT_EQ(found.matrix(i, j), found.matrix(j, i));
            EXPECT_NEAR(found.matrix(i, j), expected, 1e-12 * (1 + expected));
          }
          EXPECT_EQ(found.kinds.saturated, saturated);
          EXPECT_NEAR(found.kinds.largest, largest, 1e-12 * largest);
          EXPECT_EQ(found.kinds.finite, 21 - saturated);
        }
      }
    }
  }
}

// From alike to unlike: where the fast way decides, and where the run's routine does.
TEST(DistanceModels, SpectralIsTheRuns) {
  std::mt19937 random(9);
  int undefined = 0;
  for (const std::size_t sites : {25u, 90u, 400u, 5000u}) {
    for (int trial = 0; trial < 40; ++trial) {
      Alignment alignment = RandomAlignment(sites, trial % 8 == 7, random);
      alignment.cells[6] = alignment.cells[5];
      alignment.rna = trial % 4 == 1;  // then U is any symbol but a nucleotide
      const auto found =
          PairDistances(alignment, AllSites(alignment), {Model::kSpectral, 0}, 1).matrix;
      SiteCodes codes{};
      for (unsigned set = 1; set < 16; ++set) {
        const auto first = static_cast<std::uint8_t>(set & (~set + 1));
        codes[set] = alignment.rna && first == kT ? 15 : first;
      }
      const NucleotidePlanes planes = TablePlanes(alignment, AllSites(alignment), codes, 1);
      EXPECT_TRUE(alignment.rna || found(5, 6) == 0);
      for (const auto& [i, j] : test::Pairs(7)) {
        PairTable table;
        CountPairs(planes.NucleotidesOnly(Index(i)).data(), planes.Planes(Index(j)), planes.Words(),
                   table);
        const double expected = PairDistance(table);
        if (found(i, j) == 0) continue;  // no difference
        undefined += expected == 0 ? 1 : 0;
        EXPECT_NEAR(std::isnan(found(i, j)) ? 0 : found(i, j), expected, 1e-12 * expected);
      }
    }
  }
  EXPECT_GT(undefined, 10);
}

class DistanceProgramTest : public test::WideProgramTest {
 protected:
  std::vector<std::string> Lengths(const std::string& arguments) const {
    auto lengths = test::FindAll(Tree(arguments + " --bootstrap 5"), "(\\d*\\.?\\d*:[0-9.e-]+)");
    std::sort(lengths.begin(), lengths.end());
    return lengths;
  }
};

TEST_F(DistanceProgramTest, OneTreeFromAnyOrderOfTheTaxaFromRnaAndWithAnyUnknown) {
  std::mt19937 random(10);
  const Alignment alignment = RandomAlignment(150, false, random);
  std::string forward, backward;
  for (std::size_t taxon = 0; taxon < 7; ++taxon) {
    std::string record = ">" + alignment.labels[taxon] + "\n";
    for (const StateSet states : alignment.cells[taxon]) record += "-ACMGRSVTWYHKDBN"[states];
    forward += record + "\n";
    backward.insert(0, record + "\n");
  }
  const auto without = [&](char symbol, const char* other) {
    return std::regex_replace(forward, std::regex(std::string(1, symbol)), other);
  };
  Write("forward.fa", forward);
  Write("backward.fa", backward);
  Write("rna.fa", without('T', "U"));
  Write("any.fa", without('N', "?"));
  Write("unknown.fa", without('K', "X"));
  for (const ModelRow& row : Models()) {
    if (row.formula == nullptr) continue;
    const std::string model = std::string(" --model ") + row.name;
    const std::vector<std::string> lengths = Lengths("forward.fa" + model);
    EXPECT_EQ(lengths.size(), 11u);
    for (const char* file : {"backward.fa", "rna.fa", "any.fa", "unknown.fa"}) {
      EXPECT_EQ(Lengths(file + model), lengths) << file << model;
    }
  }
  EXPECT_TRUE(test::Contains(Run("rna.fa --model spectral").err,
                             "rna.fa: warning: under --model spectral U counts as an unknown"));
}

TEST_F(DistanceProgramTest, GivesSaturatedPairsAStandInAndTellsSo) {
  const std::string x = "AAAACCCCGGGGTTTTACGT", far = "CGTAGTACTACGACGTGTAC",
                    near = "AAAACCCCGGGGTTTTACGA";
  Write("x.fa", ">a\n" + x + "\n>b\n" + near + "\n>c\n" + far + "\n>d\n" + x + "\n");
  const test::Ended ended = Run("x.fa --model jc69 --distances d --log l");
  EXPECT_EQ(ended.status, 0) << ended.err;
  const std::string line =
      "\nsaturated   3 of 6 pairs, set to 0.05174465361521359; the largest finite distance is "
      "0.05174465361521359; logdet would have 1\n";
  EXPECT_TRUE(test::Contains(ended.out, line)) << ended.out;
  EXPECT_TRUE(test::Contains(Read("l"), line));
  EXPECT_EQ(Run("x.fa --model JC69 --gamma 0.5 --distances e --log l").status, 0);
  EXPECT_EQ(test::FindAll(Read("e"), "\nb +(0\\.05548469\\d*) 0 ").size(), 1u) << Read("e");
  EXPECT_TRUE(test::Contains(Read("l"), "\nmodel       jc69, gamma 0.5, substitutions per site\n"));
  EXPECT_EQ(test::FindAll(Read("d"), "\nc +(0\\.0517\\S*) 0\\.0517\\S* 0 0\\.0517").size(), 1u)
      << Read("d");
  Write("z.fa", ">a\n" + x + "\n>b\n" + near + "\n>c\nGGGGTTTTAAAGTTTTACGT\n>d\n" + x + "\n");
  EXPECT_TRUE(test::Contains(Run("z.fa -m k80").out, "jc69 would have 0; f81 would have 0\n"));
  Write("y.fa", ">a\nAAAA\n>b\nCCCC\n>c\nGGGG\n>d\nTTTT\n");
  EXPECT_EQ(Run("y.fa --model jc69").err,
            "zorvek-wide: y.fa: all pairs of taxa are too far apart for jc69; check that the "
            "sequences are aligned\n");
  EXPECT_EQ(Run("x.fa --model logdet --gamma 1").err,
            "zorvek-wide: --gamma does nothing without one of the models jc69 k80 f81 tn93; see "
            "zorvek-wide --help\n");
  EXPECT_EQ(Run("x.fa --gamma 0").status, 2);
}

}  // namespace
}  // namespace zorvek::wide
