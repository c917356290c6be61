// Whole runs of zorvek-wide with trees given, roots chosen, and supports from several places.

#include "tests/files.h"

namespace zorvek::test {
namespace {

const string kSupport = "\\)([0-9.]+):";

class GivenTreesTest : public WideProgramTest {
 protected:
  // The distances along ((a:1,b:2):3,c:4,(d:5,e:6):7).
  GivenTreesTest() {
    Write("m",
          "5\na 0 3 8 16 17\nb 3 0 9 17 18\nc 8 9 0 16 17\nd 16 17 16 0 11\ne 17 18 17 11 0\n");
  }
};

TEST_F(GivenTreesTest, RootsWhereItIsAsked) {
  EXPECT_EQ(Tree("m --matrix"), "(a:1,b:2,(c:4,(d:5,e:6):7):3);\n");
  EXPECT_EQ(Tree("m --matrix --midpoint"), "((d:5,e:6):3,(c:4,(a:1,b:2):3):4);\n");
  EXPECT_TRUE(Contains(Read("m.wide.nex"), "[&R] ((4:5,5:6):3,(3:4,(1:1,2:2):3):4);"));
  EXPECT_EQ(Tree("m --matrix --outgroup C"), "(c:2,((a:1,b:2):3,(d:5,e:6):7):2);\n");
  EXPECT_EQ(Tree("m --matrix --outgroup 'a, c,b'"), "((d:5,e:6):3.5,(c:4,(a:1,b:2):3):3.5);\n");

  Write("bare", "((a,b),c,(d,e));");
  Tree("m --matrix --midpoint --support-from bare --consensus again");
  EXPECT_EQ(Read("again"), "(a,(b,(c,(d,e)100.0)100.0));\n");  // where no edge has a length

  const Ended loose = Run("m --matrix --quiet --newick tree --outgroup a --outgroup c");
  EXPECT_EQ(loose.status, 0);
  EXPECT_TRUE(Contains(loose.err, "the outgroup is not one group")) << loose.err;
  EXPECT_EQ(Read("tree"), "((d:5,e:6):3.5,(c:4,(a:1,b:2):3):3.5);\n");
  EXPECT_TRUE(Contains(Run("m --matrix --outgroup x,a,y").err, "no taxon y for the outgroup"));
  EXPECT_TRUE(Contains(Run("m --matrix --outgroup a,b,c,d,e").err, "holds all taxa"));
}

TEST_F(GivenTreesTest, StartsFromATreeOrOnlyFitsTrees) {
  Write("two", "((b:9,a)80,c,(d,E));\n((a,c),b,(e,d));");
  Write("other", "#NEXUS begin trees; tree t = [&R] ((c,a),(b,(e,d))); end;");
  Write("star", "(a,b,c,d,e);");
  const Ended table = Run("m --matrix --evaluate two --newick fitted");
  EXPECT_TRUE(Contains(table.out, "\n1\t28\t28\t28\t0\n2\t29.5\t29.5\t31\t1\n"))
      << table.out << table.err;
  EXPECT_TRUE(Contains(table.out, "taxa        5\ntrees       2\n"));
  EXPECT_EQ(Read("fitted").substr(0, 31), "(a:1,b:2,(c:4,(d:5,e:6):7):3);\n");
  EXPECT_EQ(Files(), (std::vector<string>{"fitted", "m", "other", "star", "two"}));

  Run("m --matrix --evaluate two --support-from star other --newick supported");
  EXPECT_EQ(FindAll(Read("supported"), kSupport), (std::vector<string>{"50.0", "0.0", "50.0"}));
  EXPECT_TRUE(Contains(Run("m --matrix --evaluate two --outgroup a,c").err, "1 of the 2 trees;"));

  const string other = Read("fitted").substr(31);
  EXPECT_TRUE(Contains(other, ":0") && !Contains(other, "-")) << "negative edges are written as 0";
  EXPECT_EQ(Tree("m --matrix --tree other --search none"), other);
  EXPECT_EQ(Tree("m --matrix --evaluate other"), other);
  EXPECT_EQ(Tree("m --matrix --tree other"), "(a:1,b:2,(c:4,(d:5,e:6):7):3);\n");
  EXPECT_EQ(Tree("m --matrix --tree star"), "(a:1,b:2,(c:4,(d:5,e:6):7):3);\n");
  // Least squares on the same two trees: of the second the inner edge to {a, c} is negative.
  EXPECT_TRUE(Contains(Run("m --matrix --criterion ols --evaluate two").out,
                       "\n1\t28\t28\t28\t0\n2\t31\t29.5\t31\t1\n"));
  EXPECT_TRUE(
      Contains(Run("m --matrix --evaluate other").out,
               "length      29.5 (balanced, sum of all edges)\n"
               "positive    31 (sum of the positive edges)\nnegative    1 (written as 0)\n"));
  EXPECT_TRUE(Contains(Run("m --matrix --criterion ols --evaluate other").out,
                       "length      31 (least squares, sum of the positive edges)\n"
                       "raw length  29.5 (sum of all edges)\nnegative    1 (written as 0)\n"));

  Write("less", "(a,b,(c,f),d);");
  const Ended refused = Run("m --matrix --tree less");
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err,
            "zorvek-wide: less:1:1: tree 1 has other taxa; not in it: e; only in it: f; give every "
            "tree the same 5 taxa\n");
  EXPECT_TRUE(Contains(Run("m --matrix --tree two").err, "two: 2 trees; give one"));
  EXPECT_TRUE(
      Contains(Run("m --matrix --evaluate two --draw x.svg").err, "two: 2 trees; give one"));
  EXPECT_TRUE(Contains(Run("m --matrix --evaluate two --tree other").err, "makes no search"));
  EXPECT_TRUE(Contains(Run("m --matrix --tree other --newick other").err, "named twice"));
}

TEST_F(GivenTreesTest, RangesOfReplicatesMakeTheSameSupports) {
  WriteExample();
  for (const string measure : {"", " --support tbe"}) {
    const string run = "primates.nex" + measure;
    const string best = Tree(run + " -b 12 --bootstrap-trees all --consensus consensus");
    EXPECT_EQ(FindAll(best, kSupport).size(), 9u);
    Tree(run + " -b 1-5 --bootstrap-trees one");
    Tree(run + " -b 6-12 --bootstrap-trees two");
    EXPECT_EQ(Read("one") + Read("two"), Read("all"));
    EXPECT_EQ(FindAll(Read("all"), "(;)\n").size(), 12u);
    EXPECT_EQ(Tree(run + " --support-from one two --consensus again"), best);
    EXPECT_EQ(Read("again"), Read("consensus"));
    EXPECT_TRUE(
        Contains(Run(run + " --support-from one two").out, "\nsupport     12 given trees\n"));
    Tree(run + " --support-from one two --midpoint --consensus again");
    EXPECT_NE(Read("again"), Read("consensus"));
    Write("best", best);
    // A tree that was read is held another way, so its lengths may differ in their last digits.
    for (const string from : {"--support-from all", "-b 12"}) {
      EXPECT_EQ(FindAll(Tree(run + " --evaluate best " + from), kSupport), FindAll(best, kSupport));
    }
  }
  EXPECT_EQ(Run("primates.nex -b 5-1").status, 2);
  // The transfer distance finds something of a group in trees that have not all of it.
  const std::vector<string> shares = FindAll(Tree("primates.nex -b 12"), kSupport);
  const std::vector<string> transfers = FindAll(Tree("primates.nex -b 12 --support TBE"), kSupport);
  EXPECT_NE(transfers, shares);
  for (std::size_t k = 0; k < shares.size(); ++k) {
    EXPECT_GE(std::stod(transfers.at(k)), std::stod(shares[k]));
  }
}

// A replicate is one descent under the model and the criterion of the tree.
TEST_F(GivenTreesTest, ReplicatesAreSearchedAsTheTreeIsButOnce) {
  WriteExample();
  const auto replicates = [&](const string& options) {
    Tree("primates.nex -b 4 --bootstrap-trees all " + options);
    return Read("all");
  };
  const string plain = replicates("");
  Write("start", FindAll(plain, "(.*)\n").at(0));
  for (const char* search :
       {"--starts 3", "-t 1", "--iterations 20 -t 7", "--tree start", "--time .000001s"}) {
    EXPECT_EQ(replicates(search), plain) << search;
  }
  EXPECT_EQ(replicates("--search none --tree start"), replicates("--search none"));
  for (const char* other : {"-m k80", "--gamma 1", "--criterion ols", "--search none", "--seed 2",
                            "--seed 4294967297"}) {
    EXPECT_NE(replicates(other), plain) << other;
  }
}

TEST_F(GivenTreesTest, TaxaThatAreLeftOutTakeNoSupportsAway) {
  const string even = "ACGTACGTACGTACGTACGTACGTACGTACGTACGTACGT";
  const string odd = "CCGTACGTACGTACGTACGTACGTACGTACGTACGTACGG";
  Write("f", ">a\n" + even + "\n>x\n----" + string(36, 'N') + "\n>b\n" + even + "\n>c\n" + odd +
                 "\n>d\n" + odd + "\n");
  const string tree = Tree("f --drop-undefined -b 50");
  EXPECT_EQ(tree.substr(0, 17), "(a:0,b:0,(c:0,d:0");
  ASSERT_EQ(FindAll(tree, kSupport).size(), 1u);
  EXPECT_GT(std::stod(FindAll(tree, kSupport)[0]), 50);  // 1 - (38/40)^40 is 0.87
  // A sample without the one site of x has no distance of x.
  Write("g", ">x\nA" + string(39, '-') + "\n>b\n" + even + "\n>c\n" + odd + "\n>d\n" + odd + "\n");
  EXPECT_EQ(FindAll(Run("g -b 50").out, "\nsupport     50 replicates, ([0-9]+) samples").size(),
            1u);
}

}  // namespace
}  // namespace zorvek::test
