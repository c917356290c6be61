// The random source, the stop rule, the tree writer, and the promise that run_state.h lists every global.
#include <ncl/ncl.h>

#include <csignal>

#include "driver/run.h"
#include "driver/run_state.h"
#include "input/distances.h"
#include "output/tree_writer.h"
#include "search/iterated_local_search.h"
#include "tests/clocks.h"
#include "tests/data.h"
#include "tests/files.h"

namespace zorvek {
namespace {

TEST(MTRandTest, DrawsTheMersenneTwisterSequenceAndTheFirstMaskedWordsWithinABound) {
  MTRand source;
  for (const std::uint32_t seed : {0u, 5489u, 0xffffffffu}) {
    source.seedWithValue(seed);
    std::mt19937 reference(seed);
    for (int draw = 0; draw < 2000; ++draw) ASSERT_EQ(source.nextWord(), reference()) << draw;
  }
  EXPECT_NE(MTRand().nextWord(), MTRand().nextWord());
  EXPECT_NE(MTRand::hash(1, 2), MTRand::hash(1, 2));
  // The first outputs published with the array initialisation [Matsumoto1998].
  const std::uint32_t key[] = {0x123, 0x234, 0x345, 0x456};
  source.seedWithArray(key, 4);
  for (const std::uint32_t word : {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u}) {
    EXPECT_EQ(source.nextWord(), word);
  }
  source.seedWithValue(7);
  std::mt19937 words(7);
  for (const auto& [bound, mask] : {std::pair{5u, 7u}, {64u, 127u}, {1000u, 1023u}}) {
    for (int draw = 0; draw < 300; ++draw) {
      std::uint_fast32_t word = mask;
      while (word > bound) word = words() & mask;
      ASSERT_EQ(source.nextAtMost(bound), word);
    }
  }
}

TEST(RunTest, AnImprovementGivesTheSearchThirtySecondsOfTheProcessor) {
  test::Clocks clocks;
  const test::Workspace workspace(5, test::RandomDistances(1));
  clocks.user += 20.5;
  clocks.system += 9.25;
  clocks.wall += 1000.5;
  EXPECT_DOUBLE_EQ(t->elapsedTime(Timer::CPU), 29.75);
  EXPECT_DOUBLE_EQ(t->elapsedTime(Timer::WALL), 1000.5);
  clocks.system += 0.25;
  EXPECT_TRUE(StopCondition());
  for (const int limit : {0, 30, 31}) {
    MAX_TIME = limit;
    EXPECT_EQ(WithinInnerLimit(), limit == 31);
  }
  clocks.user += 0.75;
  EXPECT_FALSE(StopCondition());
  time_val = 12;
  EXPECT_DOUBLE_EQ(SecondsLeft(), 11.25);
  MAX_TIME = 20;
  EXPECT_FALSE(WithinInnerLimit());
  MAX_TIME = 0;
  ILS(0);  // improves
  EXPECT_EQ(time_val, 30);
  EXPECT_DOUBLE_EQ(SecondsLeft(), 29.25);
}

class WholeRunTest : public test::FolderTest {
 protected:
  WholeRunTest() { CreateSources(); }
  ~WholeRunTest() override {
    ReleaseLeavesMatrix();
    delete std::exchange(r, nullptr);
    delete std::exchange(t, nullptr);
    outML.close();
    time_val = 0;
    opt_val = t1_val = 1e8;
    for (const int number : {SIGINT, SIGTERM, SIGPIPE}) std::signal(number, SIG_DFL);
  }
};

TEST_F(WholeRunTest, LastsThirtySecondsFromItsLastImprovementWhateverReadingTook) {
  WriteExample();
  test::Clocks clocks;
  clocks.step = 0.1234567;  // never near a whole second
  clocks.user += 100;       // as if the file were large
  testing::internal::CaptureStdout();
  zorvek::Run(Path("primates.nex").c_str());
  EXPECT_TRUE(test::Contains(testing::internal::GetCapturedStdout(), "\ndone!\n"));
  const std::vector<std::string> improved =
      test::FindAll(Read("primates.nex.Tavlen.log"), "at:(.*)\n");
  EXPECT_LT(std::stod(improved.at(0)), 1);
  const double last = std::floor(std::stod(improved.back()) + clocks.step);  // looks once more
  const double left = last + 30 - t->elapsedTime(Timer::CPU);
  EXPECT_NEAR(left, -1.5 * clocks.step, 0.51 * clocks.step);
  EXPECT_EQ(OPT, nullptr);
}

using TreeWriterTest = test::FolderTest;

TEST_F(TreeWriterTest, WritesTheBestTreeWithLabelsAndRawLengths) {
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
  Write("tree.phylogeny", std::string(1000, 'x'));
  PrintTree(Path("first").c_str());
  PrintTree(Path("no/folder").c_str());  // passed over; the stream serves for the next
  PrintTree(Path("tree").c_str());
  EXPECT_EQ(Read("tree.phylogeny"),
            "#NEXUS\n\n\nBegin trees;\n\n"
            "tree "
            "PAUP_1=(((Pongo__sp_:0.125,Homo_sapiens:-0.0625):1.23457e+06,5x:0):-2,(a(b,c):d;:0."
            "333333,Pan:1e-07):0);\n\nEnd;\n");
  taxa = nullptr;
}

using RunStateTest = test::FolderTest;

TEST_F(RunStateTest, ListsEveryGlobalOfTheLibraries) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer adds writable symbols of its own";
#endif
  std::set<std::string> expected{
      "zorvek::MTRand::hash(long, unsigned long)::differ",  // tells seeds of one moment apart
      "zorvek::(anonymous namespace)::interrupted",         // the flag a signal handler sets
      "zorvek::(anonymous namespace)::first_signal",        // when it did
      "zorvek::(anonymous namespace)::scopes",              // how many share the sums
      "zorvek::(anonymous namespace)::shared",              // the sums that all lengths come from
      "zorvek::(anonymous namespace)::dealt",               // leaves that a shift deals anew
  };
  const std::string header = test::Contents(ZORVEK_SOURCE_DIR "/driver/run_state.h");
  for (const std::string& name : test::FindAll(header, "\nextern\\s[^;]*?(\\w+);")) {
    expected.insert("zorvek::" + name);
  }
  // Writable symbols by name | ... | section.
  const std::vector<std::string> found = test::FindAll(
      "\n" + Shell("nm -C -f sysv " ZORVEK_LIBRARIES " | grep -E '\\.(data|bss)'").out,
      "\n(?!std::|DW\\.ref\\.)([^|\n]*?) *\\|[^\n]*\\|\\.t?(?:data(?!\\.rel\\.ro)|bss)");
  EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected);
}

}  // namespace
}  // namespace zorvek
