// The random source, the stop rule, the restarts of the search, the tree writer, and the promise
// that run_state.h lists every global.
#include <gtest/gtest.h>
#include <ncl/ncl.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "driver/run.h"
#include "driver/run_state.h"
#include "output/tree_writer.h"
#include "tests/data.h"

namespace zorvek {
namespace {

std::string Contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

TEST(MTRandTest, DrawsTheMersenneTwisterSequence) {
  MTRand source;
  for (const std::uint32_t seed : {0u, 5489u, 0xffffffffu}) {
    source.seedWithValue(seed);
    std::mt19937 reference(seed);
    for (int draw = 0; draw < 2000; ++draw) ASSERT_EQ(source.nextWord(), reference()) << draw;
  }
  // The first outputs published with the array initialisation [Matsumoto1998].
  const std::uint32_t key[] = {0x123, 0x234, 0x345, 0x456};
  source.seedWithArray(key, 4);
  for (const std::uint32_t word : {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u}) {
    EXPECT_EQ(source.nextWord(), word);
  }
}

TEST(MTRandTest, DrawsEveryValueUpToTheBoundEquallyOften) {
  MTRand source;
  source.seedWithValue(1);
  for (const std::uint32_t bound : {0u, 1u, 4u, 9u}) {
    std::vector<int> count(bound + 1);
    for (int draw = 0; draw < 100000; ++draw) ++count.at(source.nextAtMost(bound));
    for (const int times : count) EXPECT_NEAR(times * (bound + 1) / 100000.0, 1, 0.05);
  }
}

TEST(MTRandTest, TakesTheFirstMaskedWordWithinTheBound) {
  MTRand source;
  source.seedWithValue(7);
  std::mt19937 words(7);
  for (const auto& [bound, mask] : {std::pair{5u, 7u}, {64u, 127u}, {1000u, 1023u}}) {
    for (int draw = 0; draw < 300; ++draw) {
      auto word = static_cast<std::uint32_t>(words()) & mask;
      while (word > bound) word = static_cast<std::uint32_t>(words()) & mask;
      ASSERT_EQ(source.nextAtMost(bound), word);
    }
  }
}

TEST(MTRandTest, FallbackSeedsFoldTheirBytesAndCountTheCalls) {
  const std::uint32_t calls = MTRand::hash(0, 0);
  EXPECT_EQ(MTRand::hash(1, 0), 257u * 257 * 257 + calls + 1);
  EXPECT_EQ(MTRand::hash(0x05000000, 1), (5 + calls + 2) ^ (257u * 257 * 257));
}

TEST(RunTest, SearchStopsThirtySecondsAfterTheLastImprovement) {
  const test::Workspace workspace(4, test::RandomDistances(1));
  for (const int improved : {0, 12, -29}) {
    time_val = improved;
    EXPECT_TRUE(StopCondition());
    EXPECT_NEAR(SecondsLeft(), 30 + improved, 1);
  }
  time_val = -31;
  EXPECT_FALSE(StopCondition());
}

// A restart shows in the spare field, which copies carry along and no move writes.
TEST(RunTest, SearchRestartsAfterTwentyOneFruitlessSteps) {
  const test::Workspace workspace(6, test::RandomDistances(1));
  Search search;
  const auto steps_until_restart = [&search](int most) {
    OPT[0][kSpare] = T1[0][kSpare] + 1;
    for (int step = 1; step <= most; ++step) {
      search.Step();
      if (T1[0][kSpare] == OPT[0][kSpare]) return step;
    }
    return 0;
  };
  opt_val = 0;  // nothing is shorter, so every step is fruitless
  EXPECT_EQ(steps_until_restart(100), 21);
  EXPECT_EQ(steps_until_restart(100), 21);
  EXPECT_EQ(steps_until_restart(10), 0);
  opt_val = 1e8;  // a step that improves neither counts nor starts the count anew
  search.Step();
  EXPECT_LT(opt_val, 1e8);
  opt_val = 0;
  EXPECT_EQ(steps_until_restart(100), 11);
}

TEST(TreeWriterTest, WritesTheBestTreeWithLabelsAndRawLengths) {
  const test::Workspace workspace(5, test::RandomDistances(1));
  NxsTaxaBlock labels;
  labels.SetNtax(5);
  for (const char* label : {"Homo sapiens", "Pan", "a(b,c):d;", "Pongo  sp ", "5x"}) {
    labels.AddTaxonLabel(label);
  }
  taxa = &labels;
  const double rows[][kFields] = {{7, 5, 3, 0, 0.125, -0.0625},
                                  {7, 6, 2, 1, 1.0 / 3, 1e-7},
                                  {6, 7, 5, 4, 1234567, 0},
                                  {-1, 8, 7, 6, -2, 0}};
  for (int row = 0; row < 4; ++row) std::copy_n(rows[row], +kFields, OPT[row]);
  const std::string path = ::testing::TempDir() + "zorvek_tree_writer_test";
  std::ofstream(path + ".phylogeny") << std::string(1000, 'x');
  PrintTree((path + "/no/such/folder/x").c_str());  // passed over; the stream serves for the next
  PrintTree(path.c_str());
  EXPECT_EQ(Contents(path + ".phylogeny"),
            "#NEXUS\n\n\nBegin trees;\n\n"
            "tree PAUP_1=(((Pongo__sp_:0.125,Homo_sapiens:-0.0625):1.23457e+06,5x:0):-2,"
            "(a(b,c):d;:0.333333,Pan:1e-07):0);\n\nEnd;\n");
  std::filesystem::remove(path + ".phylogeny");
  taxa = nullptr;
}

// The demangled names of the variables in the library's writable sections, as nm gives them.
std::set<std::string> WritableVariables() {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> symbols(
      popen("nm -C -f sysv '" ZORVEK_LIBRARY "'", "r"), pclose);
  const std::regex variable(
      "(?!std::|DW\\.ref\\.)([^|]*?) *\\|.*\\|\\.t?(data(?!\\.rel\\.ro)|bss).*\n");
  std::set<std::string> found;
  char line[4096];
  for (std::cmatch match; std::fgets(line, sizeof line, symbols.get()) != nullptr;) {
    if (std::regex_match(line, match, variable)) found.insert(match.str(1));
  }
  return found;
}

TEST(RunStateTest, ListsEveryGlobalOfTheLibrary) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer adds writable symbols of its own";
#endif
  std::set<std::string> expected{
      "zorvek::MTRand::hash(long, unsigned long)::differ",  // tells seeds of one moment apart
      "zorvek::(anonymous namespace)::interrupted",         // the flag a signal handler sets
      "zorvek::(anonymous namespace)::shared",              // the sums that all lengths come from
      "zorvek::(anonymous namespace)::shared_distances",    // the DM1 they were made from
      "zorvek::(anonymous namespace)::dealt",               // leaves that a shift deals anew
  };
  const std::string header = Contents(ZORVEK_SOURCE_DIR "/driver/run_state.h");
  const std::regex declaration("\nextern\\s[^;]*?(\\w+);");
  for (std::sregex_iterator found(header.begin(), header.end(), declaration), end; found != end;
       ++found) {
    expected.insert("zorvek::" + found->str(1));
  }
  EXPECT_EQ(WritableVariables(), expected);
}

}  // namespace
}  // namespace zorvek
