// What zorvek-wide writes, where, and what stays when it is stopped.

#include "tests/files.h"

namespace zorvek::test {
namespace {

using Names = std::vector<string>;

const string kProgram = ZORVEK_WIDE_PROGRAM;
const string kCannot = " cannot be written: ";

class WideOutputsTest : public WideProgramTest {
 protected:
  WideOutputsTest() {
    Write("x.fa", ">a\nACGTACGTAC\n>b\nACGTACGTAG\n>c\nACGTTCGAAC\n>d\nACCTTCGAAC\n");
    tree_ = Tree("x.fa -o /dev/null --log /dev/null");
    fs::remove(Path("tree"));
  }

  string tree_;  // in Newick's format
};

TEST_F(WideOutputsTest, GoToStandardOutputAndPipes) {
  for (const char* path : {"-", "/dev/stdout", "/dev/fd/1"}) {
    const Ended ended = Run(string("x.fa --newick ") + path + " | cat");
    EXPECT_EQ(ended.out, tree_) << path;
    EXPECT_TRUE(Contains(ended.err, "taxa        4\n")) << path;
  }
  EXPECT_EQ(Shell("bash -c '" + kProgram + " x.fa --newick >(cat) --quiet | cat'").out, tree_);
  EXPECT_EQ(Run("x.fa --newick - --quiet > appended; cat appended").out, tree_);
  EXPECT_TRUE(Contains(Run("x.fa -o - --quiet").out, "#NEXUS\n"));
  EXPECT_EQ(Run("x.fa --newick - -o /dev/stdout").err,
            "zorvek-wide: standard output is named twice; see zorvek-wide --help\n");
  // A reader that leaves early keeps no file from being written.
  EXPECT_EQ(Run("x.fa --newick - --prefix p | true; ls p.*").out, "p.wide.log\np.wide.nex\n");
}

TEST_F(WideOutputsTest, OfAPipeAreTheTreeAloneUnlessNamed) {
  for (const char* input : {"cat x.fa | $P -", "cat x.fa | $P /dev/stdin", "$P - < x.fa",
                            "$P - --log /dev/null < x.fa"}) {
    const Ended ended = Shell("P=" + kProgram + "; " + input);
    EXPECT_EQ(ended.out, tree_) << input;
    EXPECT_TRUE(Contains(ended.err, "tree        standard output\n")) << input;
    EXPECT_EQ(Files(), Names{"x.fa"}) << input;
  }
  Shell("cat x.fa | " + kProgram + " /dev/stdin -o o");
  EXPECT_EQ(Files(), (Names{"o", "x.fa"}));
  Shell("mkdir r; cat x.fa | " + kProgram + " /dev/stdin --prefix r/; mv r/* .; rmdir r; rm o");
  EXPECT_EQ(Files(), (Names{"tree.wide.log", "tree.wide.nex", "x.fa"}));
  Shell("rm tree*; gzip x.fa; " + kProgram + " x.fa.gz --prefix y -o /dev/null --log /dev/null; " +
        kProgram + " x.fa.gz");
  EXPECT_EQ(Files(), (Names{"x.fa.gz", "x.fa.wide.log", "x.fa.wide.nex"}));
}

TEST_F(WideOutputsTest, ReplaceFilesWholeOrNotAtAll) {
  Write("x.fa.wide.nex", "old");
  Write("x.fa.wide.log", "old");
  const std::vector<std::pair<string, string>> faults{
      {"--draw nowhere/x.svg", "nowhere/x.svg:" + kCannot + "No such file or directory;"},
      {"--newick /dev/full", "/dev/full:" + kCannot + "No space left on device;"},
      {"--newick - > /dev/full", "standard output:" + kCannot + "No space left on device;"},
      {"--newick . ", ".:" + kCannot + "Is a directory;"}};
  for (const auto& [options, message] : faults) {
    const Ended ended = Run("x.fa --distances x.dist " + options);
    EXPECT_EQ(ended.status, 1) << options;
    EXPECT_EQ(ended.err.find("zorvek-wide: " + message), 0u) << ended.err;
    EXPECT_EQ(Read("x.fa.wide.nex") + Read("x.fa.wide.log"), "oldold") << options;
    EXPECT_EQ(Files(), (Names{"x.fa", "x.fa.wide.log", "x.fa.wide.nex"})) << options;
  }
  // Before there are distances.
  Write("far.fa", ">a\nAAAA\n>b\nCCCC\n>c\nGGGG\n>d\nTTTT\n");
  EXPECT_TRUE(Contains(Run("far.fa --newick x.fa/n").err, "x.fa/n:" + kCannot));
  // A file size limit strikes at the second file, when the first is complete.
  EXPECT_EQ(Shell("ulimit -f 1; " + kProgram + " x.fa --draw x.svg --bootstrap 1").status, 1);
  EXPECT_EQ(Read("x.fa.wide.nex") + Read("x.fa.wide.log"), "oldold");
  EXPECT_EQ(Run("x.fa > /dev/full").status, 1);
  EXPECT_TRUE(Contains(Read("x.fa.wide.nex"), "#NEXUS"));
}

TEST_F(WideOutputsTest, ReportOnTheRun) {
  Write("y.fa",
        ">a\nACGTNC-TACACGTACGTAC\n>b 1\nACGTACGTAGACGTACGTAC\n>c\nACGTTCGAACACGTACGTAC\n"
        ">d\nACCTTCGAACACGTACGTAC\n>e\nACCTTCGAACACGTACGTAC\n>f\nACGTTCGAACACGTACGTAC\n");
  const Ended ended =
      Run("y.fa --log - -b 3 --leave-out b --rounds 7 --midpoint --newick \"a'n\" -o /dev/null");
  for (const char* part :
       {"program     zorvek-wide 2.",
        "\ncommand     zorvek-wide y.fa --log - -b 3 --leave-out b --rounds 7 --midpoint --newick "
        "'a'\\''n' "
        "-o /dev/null\n",
        " core", " UTC\n", "\nfile        y.fa\ntaxa        5\nleft out    b\nsites       20\n",
        "\nleft aside  1 gap or missing site, 1 ambiguity code\n",
        "\nvariable    2 sites\n"
        "informative 1 sites, under parsimony\nidentical   c = f; d = e\n\ntaxon\tgaps\tambiguous\n"
        "a\t1\t1\nc\t0\t0\nd\t0\t0\ne\t0\t0\nf\t0\t0\n",
        "\n--iterations      7\n", "\n--seed            1\n", "\n--criterion       balanced\n",
        "\n--bootstrap       3\n", "\n--midpoint        yes\n", "\nseconds\tlength\n0.",
        "\nsupport     3 replicates\n"}) {
    EXPECT_TRUE(Contains(ended.out, part)) << part << "\nin\n" << ended.out;
  }
}

TEST_F(WideOutputsTest, FollowLinksAndKeepPermissions) {
  fs::create_directory(Path("d"));
  Write("d/far", "old");
  fs::permissions(Path("d/far"), fs::perms::owner_read | fs::perms::group_write);
  fs::create_symlink("far", Path("d/near"));
  fs::create_symlink("d/near", Path("near"));
  EXPECT_EQ(Run("x.fa --newick near --prefix p").status, 0);
  EXPECT_EQ(fs::status(Path("p.wide.log")).permissions(), fs::status(Path("x.fa")).permissions());
  EXPECT_TRUE(fs::is_symlink(Path("near")) && fs::is_symlink(Path("d/near")));
  EXPECT_EQ(Read("d/far"), tree_);
  EXPECT_EQ(fs::status(Path("d/far")).permissions(),
            fs::perms::owner_read | fs::perms::group_write);
  // Nor may anybody have laid a link under the name of the temporary file.
  EXPECT_EQ(Shell("sh -c 'ln -s d/far n.tmp$$; exec " + kProgram + " x.fa --newick n'").status, 1);
  EXPECT_EQ(Read("d/far"), tree_);
  EXPECT_EQ(Run("x.fa --newick near -o d/far").status, 2);
}

TEST_F(WideOutputsTest, ShowTheirProgressOnATerminal) {
  const Terminal terminal;
  if (terminal.Name().empty()) GTEST_SKIP() << "the machine lends no terminal";
  Run("x.fa --quiet 2>" + terminal.Name());
  EXPECT_EQ(terminal.Shown(), "");
  Run("x.fa -b 3 -t 1 --iterations 10 --time 1000h 2>" + terminal.Name());
  const string shown = terminal.Shown();
  const std::regex lines(
      "\rreading, 100 %\r {14}\r\rdistances, 0 %\r {14}\r\rstarting trees, 0 %, 3(600000|5999..) s "
      "left *"
      "\rdescent, [0-9]+ %, best length 0\\.[0-9]+[^\r]*\riterations, 100 %, best length 0\\.[0-9]+"
      "[^\r]*\rbootstrap, 33 %[^\r]*\r {30,}\r");
  EXPECT_TRUE(std::regex_match(shown, lines)) << shown;
}

// A tree that no pipe holds, so that the program waits for a reader with its files written but not
// in place; `commands` are then run, $! being the program.
string WhileWriting(const string& commands) {
  return "mkfifo p; env --default-signal=QUIT " + kProgram +
         " long.fa --newick p & exec 3<p; while [ ! -e long.fa.wide.log.tmp$! ]; do sleep .01; "
         "done; " +
         commands + "; rm p";
}

TEST_F(WideOutputsTest, LeaveNoTemporaryFileBehind) {
  string text;
  for (int taxon = 0; taxon < 50; ++taxon) {
    text += ">" + string(3000, 'x') + std::to_string(taxon) + "\nACGTACGTAC\n";
  }
  Write("long.fa", text);
  // A first request for the tree is heard, a second one later ends the program.
  for (const string kill :
       {"kill -TERM $!; sleep 1.1; kill -HUP $!; ", "kill -QUIT $!; ", "kill -USR1 $!; "}) {
    Shell("trap - QUIT; " + WhileWriting(kill + "wait $!"));
    EXPECT_EQ(Files(), (Names{"long.fa", "x.fa"})) << kill;
  }
  const Ended taken = Shell(WhileWriting("mkdir long.fa.wide.nex; cat <&3 >tree; wait $!"));
  EXPECT_TRUE(Contains(taken.err, "long.fa.wide.nex:" + kCannot + "Is a directory")) << taken.err;
  EXPECT_EQ(Files(), (Names{"long.fa", "long.fa.wide.nex", "tree", "x.fa"}));
  Shell("rm -r tree long.fa.wide.nex");
  // What is ignored already, as under nohup, stays so.
  const Ended ended = Shell("trap '' USR1 HUP; " +
                            WhileWriting("kill -USR1 $!; kill -HUP $!; cat <&3 >tree; wait $!"));
  EXPECT_FALSE(Contains(ended.out, "interrupted")) << ended.out << ended.err;
  EXPECT_TRUE(Contains(ended.out, "\ntree        long.fa.wide.nex\n"));
}

TEST_F(WideOutputsTest, HoldTheBestTreeAfterAnInterruption) {
  for (const char* signals : {"INT", "TERM", "HUP", "TERM HUP INT"}) {
    const Ended ended =
        Shell("trap '' TERM; mkfifo p; " + kProgram +
              " x.fa --newick p --patience 1000 -t 3 & exec 3<p; " + kAwaitSearch + "for s in " +
              string(signals) + "; do kill -$s $!; done; wait $! && cat <&3; rm p");
    EXPECT_TRUE(Contains(ended.out, ", interrupted\n")) << signals;
    EXPECT_TRUE(Contains(ended.out, tree_)) << signals;
    EXPECT_EQ(Files(), (Names{"x.fa", "x.fa.wide.log", "x.fa.wide.nex"}));
  }
}

}  // namespace
}  // namespace zorvek::test
