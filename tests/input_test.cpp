// The way from a NEXUS file to distances and candidate lists.
#include <sys/resource.h>

#include <numeric>

#include "core/nexus_guard.h"
#include "driver/run_state.h"
#include "input/distances.h"
#include "tests/files.h"
#include "tests/reference_input.h"
#include "tree/candidate_lists.h"

namespace zorvek {
namespace {

using reference::NexusFile;
using reference::TemporaryFile;

const std::string kDna = "DATATYPE=DNA GAP=- MISSING=?";
const std::string kMatrix = "a ACGTACGTTA\nb ACGTACGTTC\nc ACGAACGTTG\nd ACCTACGATA\n";
const std::string kFour = NexusFile(4, 10, kDna, kMatrix);

// What a run of the input stage leaves, with the globals released.
struct Input {
  explicit Input(const char* path) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    rlimit before, after;
    getrlimit(RLIMIT_DATA, &before);
    BuildLeavesMatrix(path);
    getrlimit(RLIMIT_DATA, &after);
    EXPECT_EQ(after.rlim_cur, before.rlim_cur);
    error = testing::internal::GetCapturedStderr();
    output = testing::internal::GetCapturedStdout();
    count = n;
    for (int i = 0; i < n; ++i) {
      labels.push_back(taxa->GetTaxonLabel(static_cast<unsigned>(i)));
      distances.emplace_back(DM1[i], DM1[i] + n);
      candidates.emplace_back(CL[i], CL[i] + n - 1);
    }
    ReleaseLeavesMatrix();
  }
  explicit Input(const std::string& content) : Input(TemporaryFile(content).Path()) {}

  int count;
  std::string output, error;
  std::vector<std::string> labels;
  std::vector<std::vector<double>> distances;
  std::vector<std::vector<int>> candidates;
};

TEST(Reading, TellsTheBlocksAndWritesTheLog) {
  const TemporaryFile file(
      "#NEXUS\n[!Look]\n[quiet]\nBEGIN TAXA; DIMENSIONS NTAX=2; TAXLABELS x y; END;\n" +
      kFour.substr(7) +
      "begin Characters; whatever; end;\nBEGIN SETS; CHARSET s=1-3; END;\n"
      "BEGIN ASSUMPTIONS; CHARSET s=1-3; END;\nBEGIN TREES; TREE t=(a,b,(c,d)); END;\n");
  const Input input(file.Path());
  const std::string told =
      "Look\nReading \"TAXA\" block...\nReading \"DATA\" block...\n"
      "Skipping unknown block (CHARACTERS)...\nSkipping unknown block (SETS)...\n"
      "Reading \"ASSUMPTIONS\" block...\nReading \"TREES\" block...\n";
  EXPECT_EQ(input.output, told);
  EXPECT_EQ(input.error, "");
  EXPECT_EQ(input.labels, (std::vector<std::string>{"a", "b", "c", "d"}));

  const std::string log = test::Contents(file.LogPath());
  EXPECT_EQ(log.substr(0, told.size()), told);
  const std::regex reports(
      "TAXA block contains 4 taxa[^]*TREES block contains one tree[^]*ASSUMPTIONS block "
      "contains[^]*DATA block contains 4 taxa and 10 characters[^]*ACCTACGATA\n");
  EXPECT_TRUE(std::regex_search(log, reports)) << log;
}

TEST(Reading, OneMatrixInManyForms) {
  const Input plain(kFour);
  ASSERT_EQ(plain.count, 4);
  EXPECT_EQ(plain.candidates,
            (std::vector<std::vector<int>>{{1, 2, 3}, {0, 2, 3}, {0, 1, 3}, {0, 1, 2}}));
  const std::vector<std::string> forms = {
      std::regex_replace(kFour, std::regex("\n"), "\r\n"),
      std::regex_replace(kFour, std::regex("\n"), "\r"),
      NexusFile(4, 10, kDna + " INTERLEAVE",
                "a ACGTA\nb ACGTA\nc ACGAA\nd ACCTA\n\na CGTTA\nb CGTTC\nc CGTTG\nd CGATA\n"),
      NexusFile(4, 10, kDna + " MATCHCHAR=.",
                "a ACGTACGTTA\nb .........C\nc ...A.....G\nd ..C....A..\n"),
      NexusFile(4, 10, kDna, "a acgta[it's]cg\ntta\n'b' ACGTACGTTC c ACG[]AACGTTG d ACCTACGATA"),
      // An error after the matrix, and comments that NCL would abort at.
      kFour + "BEGIN TREES; TREE t=(a[],b,(c,d)); TREE u+=(a,b,(c,d)); END;\n",
      kFour + "BEGIN TREES; TREE t=(a[x[y]'z],b[],(c,d)); END;\n",
      // Comments across whatever is read at once.
      NexusFile(4, 10, kDna,
                "a ACG" + std::regex_replace(std::string(70000, 'x'), std::regex("x"), "[]") +
                    "TACGTTA" + kMatrix.substr(12)),
      NexusFile(4, 3, kDna, "x ACG\ny ACC\nz AAA\nw TTT\n") + kFour.substr(7),
  };
  for (const std::string& form : forms) {
    const Input input(form);
    EXPECT_EQ(input.labels, plain.labels) << form;
    EXPECT_EQ(input.distances, plain.distances) << form;
    EXPECT_EQ(input.error, "");
  }
  // What is read at once, and nothing beyond it.
  std::stringbuf text(std::string(200000, 'x'));
  CommentFilter filter(&text, 1e9);
  filter.sgetc();
  EXPECT_LE(filter.in_avail(), 1 << 16);
  const std::string quoted =
      "'A bc ' ACGTACGTTA 'O''B' ACGTACGTTC '[]-1' ACGAACGTTG d_e ACCTACGATA";
  const Input labelled(NexusFile(4, 10, kDna, quoted));
  EXPECT_EQ(labelled.labels, (std::vector<std::string>{"A bc ", "O'B", "[]-1", "d e"}));
  EXPECT_EQ(labelled.distances, plain.distances);
}

// Random matrices of every symbol, with lengths around the words of the planes: the counts are
// those of the loop over NCL's cells, and the distances exactly those of the whole eigensystem.
TEST(Distances, AreThoseOfTheCountingLoop) {
  std::mt19937 random(3);
  const std::vector<std::string> dna = {"A", "C", "G", "T", "a", "t",    "-",
                                        "?", "N", "R", "Y", "X", "{CG}", "(TA)"};
  const std::vector<std::string> protein = {"A", "C", "G", "T", "L",   "W",
                                            "*", "-", "?", "X", "{GL}"};
  for (const std::size_t sites : {1u, 63u, 64u, 65u, 127u, 300u, 1000u}) {
    for (const bool isDna : {true, false}) {
      const auto& symbols = isDna ? dna : protein;
      std::vector<std::string> root(sites);
      for (auto& symbol : root) symbol = symbols[random() % 4];
      std::string matrix;
      for (const std::string label : {"a ", "b ", "c ", "d ", "e "}) {
        matrix += label;
        for (const auto& symbol : root) {
          matrix += random() % 4 == 0 ? symbols[random() % symbols.size()] : symbol;
        }
        matrix += "\n";
      }
      const TemporaryFile file(
          NexusFile(5, sites, isDna ? kDna : "DATATYPE=PROTEIN GAP=- MISSING=?", matrix));
      testing::internal::CaptureStdout();
      const NexusBlocks blocks = ReadNexus(file.Path());
      testing::internal::GetCapturedStdout();
      ASSERT_EQ(TaxaRead(blocks), 5U);
      const NucleotidePlanes planes = ReadPlanes(*blocks.data, 5);
      for (unsigned i = 0; i < 5; ++i) {
        for (unsigned j = i + 1; j < 5; ++j) {
          PairTable expected, table;
          float totals[kNucleotides];
          reference::CountPairs(*blocks.data, i, j, expected, totals);
          CountPairs(planes.NucleotidesOnly(i).data(), planes.Planes(j), planes.Words(), table);
          EXPECT_TRUE(std::equal(*table, *table + 16, *expected));
          if (sites < 100) continue;  // too short for a distance
          EXPECT_EQ(PairDistance(table), reference::Distance(expected, totals));
        }
      }
    }
  }
}

// The distance of a table with a on the diagonal and b elsewhere.
double DistanceOf(int a, int b) {
  PairTable table;
  for (auto& row : table) std::fill(row, row + kNucleotides, b);
  for (int r = 0; r < kNucleotides; ++r) table[r][r] = a;
  return PairDistance(table);
}

// The eigenvalues of P are 1 and (a-b)/(a+3b). Rounding may return the 1 as a little less, which
// must not become the distance.
TEST(Distances, KnownTables) {
  for (int a = 20; a < 400; a += 7) {
    for (int b = 1; b < 10; ++b) {
      EXPECT_NEAR(DistanceOf(a, b), -0.25 * std::log((a - b) / (a + 3.0 * b)), 1e-13);
    }
  }
  // Totals stop at 2^24, so a row of P may exceed 1 and the largest eigenvalue with it.
  EXPECT_NEAR(DistanceOf(16777210, 10), -0.25 * std::log(16777200.0 / 16777216), 1e-13);
  // T occurs in neither sequence: the others decide, here 1 and (a-b)/(a+2b).
  PairTable three = {{50, 2, 2, 0}, {2, 50, 2, 0}, {2, 2, 50, 0}, {0, 0, 0, 0}};
  EXPECT_NEAR(PairDistance(three), -0.25 * std::log(48.0 / 54), 1e-14);
  // It occurs in the first only: its total is 0, but its row is not.
  PairTable onlyFirst = {{50, 2, 2, 0}, {2, 50, 2, 0}, {2, 2, 50, 0}, {1, 0, 0, 0}};
  EXPECT_EQ(PairDistance(onlyFirst), 0);
  EXPECT_EQ(DistanceOf(9, 0), 0);
}

// Sorts one taxon's list, from the order given.
std::vector<int> Sorted(std::vector<int> list, std::vector<double> distance) {
  std::vector<double*> distances(distance.size(), distance.data());
  std::vector<std::vector<int>> others(distance.size(), list);
  std::vector<int*> rows;
  for (auto& row : others) rows.push_back(row.data());
  n = static_cast<int>(distance.size());
  DM1 = distances.data();
  CL = rows.data();
  BuildCL();
  n = 0;
  DM1 = nullptr;
  CL = nullptr;
  return others[0];
}

TEST(CandidateLists, TiesComeAsTheExchangeSortLeavesThem) {
  EXPECT_EQ(Sorted({1, 2, 3}, {0, 2, 2, 1}), (std::vector<int>{3, 2, 1}));
  std::mt19937 random(5);
  for (int trial = 0; trial < 4000; ++trial) {
    const std::size_t taxa_count = trial < 3990 ? 2 + random() % 40 : 400;
    const unsigned values = 1 + static_cast<unsigned>(random() % (trial % 2 == 0 ? 4 : 40));
    std::vector<double> distance(taxa_count);
    for (double& d : distance) d = static_cast<double>(random() % values);
    std::vector<int> list(taxa_count - 1);
    std::iota(list.begin(), list.end(), 1);
    if (trial % 3 == 0) std::shuffle(list.begin(), list.end(), random);
    std::vector<int> expected = list;
    reference::ExchangeSort(expected, distance);
    ASSERT_EQ(Sorted(list, distance), expected) << "trial " << trial;
  }
}

}  // namespace
}  // namespace zorvek
