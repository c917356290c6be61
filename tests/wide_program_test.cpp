// Whole runs of zorvek-wide, seen as a user sees them.

#include "tests/files.h"

namespace zorvek::test {
namespace {

// Five taxa that fit one tree: ((a,b),c,(d,e)).
const string kA = "ACGTACGTAGGTACGATTGCACGGTCAATGCCGATTACAGCTTAGCAC";
const string kB = "ACGTAGGTAGGTACGATTGCACGGTCAATGCCGATTACAGCTTAGCAC";
const string kC = "ACNTACGTAGTTACGATTGCCCGGTCAATGGCGATTACAGCATAGCAC";
const string kD = "ACGAACGTAGTTAGGATTGCCCGGTCAATGGCGATTACAGCATAG-AC";
const string kE = "ACGAACGTAGTTAGGATTGCCCGTTCAATGGCGAATACAGCATAGCYC";

const std::vector<std::pair<string, string>> kTaxa{
    {"a", kA}, {"b", kB}, {"c", kC}, {"d", kD}, {"e_f", kE}};

string Fasta(const std::vector<std::pair<string, string>>& taxa = kTaxa) {
  string text;
  for (const auto& [label, sites] : taxa) text += ">" + label + "\n" + sites + "\n";
  return text;
}

TEST_F(WideProgramTest, ReadsTheSameAlignmentFromEveryFormat) {
  Write("plain.fa", Fasta());
  const string tree = Tree("plain.fa");
  EXPECT_TRUE(std::regex_search(tree, std::regex("^\\(a:[0-9.e-]+,b:[0-9.e-]+,\\("))) << tree;
  string wrapped, blocks;
  for (const char c : Fasta({{"a more", kA}, {"b", kB}, {"c", kC}, {"d", kD}, {"e_f", kE}})) {
    wrapped += c == '\n' ? "\r\n" : c == 'G' ? "g\r\n" : string(1, c);
  }
  for (const std::size_t begin : {0u, 24u}) {
    for (const auto& [label, sites] : kTaxa) blocks += label + " " + sites.substr(begin, 24) + "\n";
  }
  Write("wrapped.fa", wrapped);
  Write("turn.phy", "\xEF\xBB\xBF 5 48\na " + kA + "\nb\n" + kB.substr(0, 24) + "\n" +
                        kB.substr(24) + "\nc " + kC + "\nd  " + kD + "\ne_f " + kE);
  Write("labels.phy", "5 48\n" + blocks);
  Write("data.nex",
        "#NEXUS\r\nBEGIN TAXA; DIMENSIONS NTAX=6; TAXLABELS a b unused c d 'e f'; END; BEGIN "
        "CHARACTERS; DIMENSIONS NTAX=5 NCHAR=48; FORMAT DATATYPE=DNA GAP=- INTERLEAVE; MATRIX\n" +
            blocks + "; end; begin trees; tree broken; end;");
  // The taxa of a matrix stand in another order in the search, which rounding knows.
  const auto rounded = [](const string& text) {
    return std::regex_replace(text, std::regex("(\\.[0-9]{12})[0-9]+"), "$1");
  };
  Shell("gzip -c plain.fa > plain.fa.gz; gzip -c data.nex > data.nex.gz; mkfifo pipe");
  Shell("(gzip -c plain.fa > pipe &)");
  for (const char* arguments :
       {"wrapped.fa", "turn.phy", "labels.phy", "data.nex", "plain.fa.gz", "data.nex.gz",
        "- < plain.fa.gz", "pipe", "--format=phylip turn.phy --distances m --output o",
        "--matrix m", "- < m --matrix"}) {
    EXPECT_EQ(rounded(Tree(arguments)), rounded(tree)) << arguments;
  }
  Shell("head -c 90 plain.fa.gz > cut.gz");
  EXPECT_TRUE(Contains(Run("cut.gz").err,
                       "cut.gz: its gzip compression is broken or ends too early (unexpected"));
}

TEST_F(WideProgramTest, FindsTheShortestTreeOfTheExampleAndTellsAboutIt) {
  WriteExample();
  const Ended ended = Run("primates.nex --bootstrap 20 --newick n --draw d.svg");
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.err, "");
  const string length = FindAll(ended.out, "\nlength +([0-9.]+) ").at(0);
  EXPECT_NEAR(std::stod(length), 1.36735648362428, 1e-13);
  EXPECT_TRUE(Contains(ended.out, "taxa        12\nsites       898\n"));
  EXPECT_TRUE(Contains(ended.out, "\nnegative    0 (written as 0)\nsupport     20 replicates\n"));
  EXPECT_TRUE(Contains(Read("primates.nex.wide.log"), "\t" + length + "\n"));
  EXPECT_TRUE(Contains(Read("d.svg"), " substitutions per site<"));
  EXPECT_LT(std::stod(FindAll(ended.out, "\nmemory +([0-9.]+) MiB").at(0)), 2000);

  const string nexus = Read("primates.nex.wide.nex");
  EXPECT_TRUE(Contains(nexus, "#NEXUS\n\nBEGIN TREES;\n  TRANSLATE\n    1 Tarsius_syrichta,\n"));
  EXPECT_TRUE(Contains(nexus, "\n  TREE zorvek_wide = [&U] (1:0."));
  double sum = 0;
  const std::vector<string> edges =
      FindAll(Read("n"), "(?:\\)\\d+\\.\\d|[,(][A-Za-z_]+):([0-9.e-]+)");
  for (const string& edge : edges) sum += std::stod(edge);
  EXPECT_EQ(edges.size(), 21u);
  EXPECT_NEAR(sum, std::stod(FindAll(ended.out, "\npositive +([0-9.]+) ").at(0)), 1e-14);

  const Ended ols = Run("primates.nex --criterion ols --iterations 100");
  EXPECT_NEAR(std::stod(FindAll(ols.out, "\nlength +([0-9.]+) ").at(0)), 1.36869389459287, 1e-13);
  const Ended spectral = Run("primates.nex --model spectral");
  EXPECT_NEAR(std::stod(FindAll(spectral.out, "\nlength +([0-9.]+) ").at(0)), 0.18897371341759,
              1e-13);
}

TEST_F(WideProgramTest, TellsWhatIsWrongWhereAndWhatToDo) {
  struct Case {
    string name, text, expected;
  };
  const std::vector<Case> cases{
      {"empty", "\n \n", "empty:1:1: nothing in the file; give one with aligned sequences\n"},
      {"prose", "Call me",
       "prose:1:1: neither NEXUS nor FASTA nor PHYLIP nor Clustal; give --format if it is one\n"},
      {"--format fasta late.fa", "\nA\n>a\nA\n",
       "late.fa:2:1: text before the first >; begin with > and a label\n"},
      {"few.fa", ">a\nAC\n>b\nAC\n>c\nAC\n", "few.fa: 3 taxa; a tree needs at least 4\n"},
      {"--leave-out=A leave.fa", ">a\nAC\n>b\nAC\n>c\nAC\n>d\nAC\n",
       "leave.fa: 3 taxa left; a tree needs at least 4\n"},
      {"twice.fa", ">b\nA\n>a\nA\n>A x\nA\n>b\nA\n",
       "twice.fa:7:1: label b stands in line 1 already; give each taxon its own\n"
       "twice.fa:5:1: label A stands in line 3 already; give each taxon its own, with _ for "
       "blanks: a label ends at the first blank\n"},
      {"ragged.fa", ">a\nACGT\n>b\nAC\nG\n>c\n>d\nACGT\n",
       "ragged.fa:3:1: b has 3 sites, not the 4 of a; align the sequences to one length\n"
       "ragged.fa:6:1: c has 0 sites, not the 4 of a; align the sequences to one length\n"},
      {"odd.fa", ">a\nAC!T\n>b\nA CJU\n",
       "odd.fa:2:3: '!' stands for no nucleotide; write a code, ? or -\n"
       "odd.fa:4:4: 'J' stands for no nucleotide; write a code, ? or -\n"},
      {"short.phy", "5 3\n\na ACG\nb ACG\nc ACG\n",
       "short.phy:5:1: 3 sequences, not the 5 of the first line; fix that line, or sequences that "
       "are not 3 sites long\n"},
      {"hyphen.nex",
       "#NEXUS\nBEGIN DATA;\nDIMENSIONS NTAX=2 NCHAR=4;\nFORMAT DATATYPE=DNA;\nMATRIX\n"
       "a ACGT\nb-1 ACGT\n;\nEND;\n",
       "hyphen.nex:7:3: Error reading character 1 for taxon 2 (name \"b\"): Invalid state "
       "specified \"-\"; fix it, and put single quotes around labels that hold punctuation\n"},
      {"standard.nex",
       "#NEXUS begin data; dimensions ntax=2 nchar=2; format datatype=standard; matrix a 00 b 01; "
       "end;",
       "standard.nex: the matrix does not hold nucleotides; say datatype=dna in its FORMAT command "
       "if it does\n"},
      {"trees.nex", "#NEXUS\nBEGIN TREES;\nTREE x=(a,b,c);\nEND;\n",
       "trees.nex: no DATA or CHARACTERS block; add one\n"},
      {"--matrix m1", "4\na 0 1 2 1x\nb 1 0 1 1\nc 1 1 0 1\n",
       "m1:2:9: \"1x\" where distance 4 of 4 of a should stand; write a number, or NA for none\n"},
      {"--matrix m2", "2000000000\na 0\n",
       "m2:2: the file ends where distance 2 of 2000000000 of a should stand; write a number, or "
       "NA for none\n"},
      {"--matrix m4", "4\na 0 1 1 1\nb 1 0 1 1\nA 1 1 0 1\nd 1 1 1 0\n",
       "m4: label a belongs to 2 taxa; give each taxon its own\n"},
      {"--matrix m5", "4\n          0 1 1 1\nb         1 0 1 1\nc 1 1 0 1\nd 1 1 1 0\n",
       "m5: taxon 1 has no label; write one\n"},
      {"--drop-undefined left.fa", ">a\nAC\n>b\nAC\n>c\nAC\n>d\n--\n",
       "left.fa: 3 taxa left; a tree needs at least 4\n"},
      {"--matrix m3", "4 100\na ACGT\n",
       "m3:1:3: text after the number of taxa; begin each row on a line of its own; leave out "
       "--matrix for an alignment\n"},
  };
  for (const Case& test : cases) {
    Write(test.name.substr(test.name.rfind(' ') + 1), test.text);
    const Ended ended = Run(test.name);
    EXPECT_EQ(ended.status, 1) << test.name;
    EXPECT_EQ(ended.out, "") << test.name;
    const string expected =
        std::regex_replace(test.expected, std::regex("(^|\n)(?=.)"), "$1zorvek-wide: ");
    EXPECT_EQ(ended.err, expected);
  }
  EXPECT_EQ(Files().size(), cases.size());  // nothing was written
  Write("many.fa", ">a\n" + string(22, '!') + "\n>b\nA\xC3\n");
  EXPECT_TRUE(Contains(Run("- < many.fa").err,
                       "standard input:2:20: '!' stands for no nucleotide; write a "
                       "code, ? or -\nzorvek-wide: and 3 more\n"));
  EXPECT_TRUE(Contains(Run("nowhere.fa").err, "nowhere.fa: cannot be read: No such file"));
  EXPECT_TRUE(Contains(Run(".").err, ".: cannot be read: Is a directory"));
}

// b and c share no site with f and g, and h has none at all.
TEST_F(WideProgramTest, NamesPairsWithoutADistanceAndLeavesTaxaOut) {
  const string left = ">a\nACGTACGTACCTACGA\n>b\n--------ACGTACGT\n>c\n--------ACGAACTT\n";
  const string right = ">d\nACGTTCGTACGTATGA\n>e\nACCTACGTTCGTACTA\n>f\nACGTTCGA--------\n";
  Write("x.fa", left + right + ">g, y\nACGTACTA--------\n>h\n????????????????\n");
  const Ended ended = Run("x.fa");
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(
      ended.err,
      "zorvek-wide: x.fa: no distance for 11 pairs of taxa, which have no site in common; give "
      "--drop-undefined or --leave-out 'b,c,h', which leaves out no more taxa than must be\n"
      "  a and h\n  b and f\n  b and g,\n  b and h\n  c and f\n  c and g,\n  c and h\n"
      "  d and h\n  e and h\n  f and h\n  g, and h\n");
  const string tree = Tree("x.fa --leave-out b,c,h");
  EXPECT_EQ(Tree("x.fa --drop-undefined"), tree);
  EXPECT_TRUE(Contains(tree, "'g,':"));
  EXPECT_TRUE(Contains(Run("x.fa --drop-undefined").out, "taxa        5\nleft out    b, c, h\n"));
  EXPECT_TRUE(Contains(Run("--leave-out b,c --leave-out g, x.fa --leave-out h").out,
                       "taxa        4\nleft out    b, c, g,, h\n"));
  EXPECT_TRUE(
      Contains(Run("x.fa --drop-undefined --outgroup b").err, "no taxon b for the outgroup"));
  Write("m", "5\na\nb 3\nc 8 9\nd 16 17 16\ne NA 18 17 NA\n");
  EXPECT_TRUE(Contains(Run("m --matrix --drop-undefined").out, "taxa        4\nleft out    e\n"));
  EXPECT_EQ(Run("x.fa --leave-out b,i --leave-out c,j").err,
            "zorvek-wide: x.fa: no taxon i to leave out; fix the label\n"
            "zorvek-wide: x.fa: no taxon j to leave out; fix the label\n");
}

TEST_F(WideProgramTest, KeepsIdenticalSequencesTogether) {
  Write("same.fa", Fasta() + ">a2\n" + kA + "\n>a3\n" + kA + "\n>d-2\n" + kD + "\n");
  const string tree = Tree("same.fa");
  EXPECT_TRUE(std::regex_search(
      tree,
      std::regex(
          "^\\(a:0,\\(.*,a3:0\\):0,a2:0|^\\(a:0,.*\\(a2:0,a3:0\\):0|^\\(a:0,a3:0,\\(a2:0,.*")))
      << tree;
  EXPECT_TRUE(Contains(tree, "(d:0,d-2:0)")) << tree;
  EXPECT_TRUE(Contains(Read("same.fa.wide.nex"), "'d-2'\n"));
  Write("code.fa", Fasta({{"a", kA}, {"b", kA}, {"c", kB}, {"d", kC}}));
  EXPECT_TRUE(
      Contains(Run("code.fa").out, "\nleft aside  0 gaps and missing sites, 1 ambiguity code\n"));
  Write("all.fa", Fasta({{"a", kA}, {"b", kA}, {"c", kA}, {"d", kA}}));
  for (const char* layout : {"unrooted", "phylogram"}) {
    EXPECT_EQ(Run(string("all.fa --draw all.svg --bootstrap 2 --layout ") + layout).status, 0);
    EXPECT_FALSE(Contains(Read("all.svg"), "nan"));
  }
  EXPECT_EQ(FindAll(Tree("all.fa --midpoint"), "(:0)").size(), 6u);
}

// A caterpillar is the deepest tree: nothing may recurse as deep as that.
TEST_F(WideProgramTest, SearchesTheDeepestTreeWithASmallStack) {
  const int n = 2000;
  string matrix = std::to_string(n);
  for (int i = 0; i < n; ++i) {
    matrix += "\nt" + std::to_string(i);
    for (int j = 0; j < n; ++j) matrix += " " + std::to_string(i == j ? 0 : std::abs(i - j) + 2);
  }
  Write("m", matrix + "\n");
  for (const char* options : {"--criterion balanced --iterations 600", "--criterion ols"}) {
    const Ended ended =
        Shell("ulimit -s 256; " ZORVEK_WIDE_PROGRAM " --matrix m " + string(options));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_NEAR(std::stod(FindAll(ended.out, "length +([0-9.]+) ").at(0)), 2 * n - 1, 1e-6);
  }
}

}  // namespace
}  // namespace zorvek::test
