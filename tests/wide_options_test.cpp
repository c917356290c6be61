// The options of zorvek-wide: each changes what it says, and what cannot be meant is refused.
#include <thread>

#include "tests/data.h"
#include "tests/files.h"
#include "wide/distance/models.h"
#include "wide/program/values.h"
#include "zorvek/io.h"
#include "zorvek/version.h"

namespace zorvek::test {
namespace {

class WideOptionsTest : public WideProgramTest {
 protected:
  // A matrix without any tree in it, so that each search ends elsewhere.
  void WriteNoise(int taxa) {
    std::vector<string> labels;
    for (int taxon = 0; taxon < taxa; ++taxon) labels.push_back("t" + std::to_string(taxon));
    Write("noise", wide::FormatSquareMatrix(labels, Matrix(taxa, RandomDistances(3))));
  }

  // The length of the tree that is found for the noise.
  double Length(const string& options) const {
    const Ended ended = Run("--matrix noise " + options);
    EXPECT_EQ(ended.status, 0) << ended.err;
    return std::stod(FindAll(ended.out, "\nlength +([0-9.]+) ").at(0));
  }
};

TEST_F(WideOptionsTest, AreRefusedInWords) {
  const string no_time = " wants a time above 0, such as 90, 90s, 10m or 1.5h, not ";
  const std::vector<std::pair<string, string>> cases{
      {"", "no file; name one with aligned sequences"},
      {"--support-from a.fa", "no file; name one with aligned sequences before --support-from"},
      {"a.fa b.fa", "one file at a time, not a.fa and b.fa"},
      {"a.fa --nonsense", "there is no option --nonsense"},
      {"a.fa --alpha .5",
       "--alpha is no longer an option: the share of greedy joins is --greedy, the shape of the "
       "gamma distribution --gamma"},
      {"a.fa --outgroup ''", "--outgroup wants taxa, commas between them, not ''"},
      {"a.fa --iterations -1",
       "--iterations wants a whole number from 0 to 1000000000000, not '-1'"},
      {"a.fa --seed -1", "--seed wants a whole number of 0 or more, not '-1'"},
      {"a.fa --seed 1 --seed 2", "--seed is given more than once"},
      {"a.fa -t 0", "--threads wants a whole number from 1 to 4096, not '0'"},
      {"a.fa --starts 1.5", "--starts wants a whole number from 1 to 1000000, not '1.5'"},
      {"a.fa --greedy nan", "--greedy wants a number from 0 to 1, not 'nan'"},
      {"a.fa --time 0", "--time" + no_time + "'0'"},
      {"a.fa --time 5d", "--time" + no_time + "'5d'"},
      {"a.fa --patience -3h", "--patience" + no_time + "'-3h'"},
      {"a.fa --criterion me", "--criterion wants balanced or ols, not 'me'"},
      {"a.fa --newick", "--newick wants a value"},
      {"a.fa --newick --quiet", "--newick wants a path, or - for standard output, not '--quiet'"},
      {"a.fa --newick x.svg --draw ./x.svg", "./x.svg is named twice"},
      {"a.fa --draw a.pdf",
       "a.pdf: a picture is an .svg or an .html file; draw a.svg and convert it: rsvg-convert -f "
       "pdf -o a.pdf a.svg"},
      {"a.fa --output a.fa", "a.fa is named twice"},
      {"a.fa --log a.fa.wide.nex", "a.fa.wide.nex is named twice"},
      {"a.fa --matrix -b 3", "--bootstrap does nothing with --matrix, which has no sites to draw"},
      {"a.fa --matrix --format fasta",
       "--format does nothing with --matrix, which has a format of its own"},
      {"a.fa --layout phylogram", "--layout does nothing without --draw"},
      {"a.fa --greedy .3", "--greedy does nothing without --starts of 2 or more"},
      {"a.fa --patience 3 --iterations 0", "--patience does nothing without --iterations"},
      {"a.fa --search nni --rounds 3", "--rounds does nothing without --search spr"},
      {"a.fa --search none --time 3", "--time does nothing with --search none"},
      {"a.fa --matrix -m p", "--model does nothing with --matrix, which has distances"},
      {"a.fa --midpoint --outgroup b", "--midpoint does nothing with --outgroup"},
      {"a.fa -b 3 --support-from t", "--bootstrap does nothing with --support-from"},
      {"a.fa --evaluate t --tree u", "--tree does nothing with --evaluate, which makes no search"},
      {"a.fa --support tbe", "--support does nothing without --bootstrap or --support-from"}};
  for (const auto& [arguments, expected] : cases) {
    const Ended ended = Run(arguments);
    EXPECT_EQ(ended.status, 2) << arguments;
    EXPECT_EQ(ended.out, "") << arguments;
    EXPECT_EQ(ended.err, "zorvek-wide: " + expected + "; see zorvek-wide --help\n") << arguments;
  }
  EXPECT_TRUE(Files().empty());
}

TEST_F(WideOptionsTest, ChangeWhatTheySay) {
  WriteNoise(60);
  const double once = Length("");
  EXPECT_LT(once, Length("--search nni"));
  EXPECT_LT(Length("--search nni"), Length("--search none"));
  for (const string layout : {"phylogram", "unrooted"}) {
    Run("--matrix noise --draw x.svg --layout " + layout);
    EXPECT_EQ(Contains(Read("x.svg"), "<path class=\"leader\""), layout == "unrooted");
  }
  EXPECT_EQ(Length("--search none --starts 6"), Length("--search none"));  // the shortest of them
  const double several = Length("--starts 6");
  EXPECT_LT(several, once);
  EXPECT_NE(Length("--starts 6 --seed 2"), several);
  EXPECT_NE(Length("--starts 6 --greedy 0"), several);
  EXPECT_EQ(Length("--starts 6 --greedy 1"), once);  // neighbour joining again and again
  const double iterated = Length("--iterations 40");
  EXPECT_LT(iterated, once);
  EXPECT_EQ(Length("--rounds 40 -t 3"), iterated);
  EXPECT_LE(Length("--iterations 400"), iterated);
  EXPECT_NE(Length("--iterations 40 --seed 2"), iterated);
}

// A limit that had no effect would let these go on for ever.
TEST_F(WideOptionsTest, LimitTheTime) {
  WriteNoise(12);
  // With fewer threads than that this one is not interrupted.
  const string shared = "--matrix noise --time 20 -t 3 & " + kAwaitSearch + "kill -INT $!; wait $!";
  EXPECT_TRUE(Contains(Run(shared).out, ", interrupted\n"));
  for (const char* options : {"--time .0001m", "--time .01s --starts 1000000",
                              "--time .01 --starts 1000000 --search none", "--patience .02s",
                              "--time .02 --patience 1000h --iterations 999999999999",
                              "--patience .00001h --time 1000m --iterations 999999999999"}) {
    EXPECT_GT(Length(options), 0) << options;
  }
  EXPECT_TRUE(
      Contains(Run("--matrix noise --time 1000h --rounds 8 --seed 7").out, "7, iterations 8\n"));
  EXPECT_TRUE(Contains(Run("--matrix noise --time .02s").out, "1, by the clock\n"));
  // Nor are these told at its end.
  for (const string& fault : {string("--support-from none"), "-o " + string(250, 'x')}) {
    EXPECT_EQ(Run("--matrix noise --time 1000h " + fault).status, 1) << fault;
  }
  const std::map<string, double> times{{"90", 90}, {"90s", 90}, {"10m", 600}, {"1.5h", 5400}};
  for (const auto& [text, seconds] : times) {
    double read = 0;
    EXPECT_TRUE(wide::ReadTime(text, read) && read == seconds) << text;
  }
}

TEST_F(WideOptionsTest, StandBeforeTheFileToo) {
  WriteNoise(12);
  const string given = "--leave-out t3 --outgroup=t1 --outgroup t2,t4 --matrix --newick - --quiet ";
  const Ended ended = Run(given + "noise");
  EXPECT_TRUE(Contains(ended.out, "t11") && !Contains(ended.out, "t3")) << ended.out;
  EXPECT_EQ(Run("noise " + given).out, ended.out);
}

TEST_F(WideOptionsTest, StandInTheManualAndTellTheirDefaults) {
  string manual = Contents(ZORVEK_SOURCE_DIR "/man/zorvek-wide.1");
  manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
  const string help = Run("-h").out;
  EXPECT_EQ(Run("--help && " ZORVEK_WIDE_PROGRAM " --version").out,
            help + "zorvek-wide " + kVersion + "\n");
  std::vector<string> names = FindAll(help, "(-[a-z]|--[a-z-]+)[, =]");
  EXPECT_GT(names.size(), 30u);
  for (const auto& model : wide::Models()) names.push_back(model.name);
  for (const string& format : wide::AlignmentFormats()) names.push_back(format);
  for (const string& name : names) EXPECT_TRUE(Contains(manual, name)) << name;
  const string cores = std::to_string(std::thread::hardware_concurrency());
  const std::vector<string> defaults{"--threads N=" + cores + " ",
                                     "--criterion NAME=balanced ",
                                     "--search NAME=spr ",
                                     "--starts N=1 ",
                                     "--greedy X=0.5 ",
                                     "--seed N=1 ",
                                     "--iterations N=0 "};
  for (const string& line : defaults) EXPECT_TRUE(Contains(help, line)) << line;
}

}  // namespace
}  // namespace zorvek::test
