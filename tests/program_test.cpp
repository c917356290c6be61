// Whole runs of the real program, seen as a user sees them: what it prints, the files it leaves and
// its exit status. Searches are interrupted as soon as they have begun, so nothing here waits for
// one.
#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <sstream>

#include "tests/files.h"
#include "tests/reference_input.h"

namespace zorvek::test {
namespace {

namespace fs = std::filesystem;
using reference::NexusFile;
using std::regex;
using std::string;

const string kStale = "left by an earlier run\n";
const string kDna = "DATATYPE=DNA GAP=-";
const string kMatrix = "a ACGTACGTTA\nb ACGTACGTTC\nc ACGAACGTTG\nd ACCTACGATA\n";

class ProgramTest : public FolderTest {
 protected:
  Ended Run(const string& arguments) const {
    return Shell(string(ZORVEK_PROGRAM) + " " + arguments);
  }

  // A run that the shell commands `signals` put an end to once the search has begun. As a script's
  // background job it starts with SIGINT ignored.
  Ended Interrupted(const string& arguments, const string& signals) const {
    return Run(arguments +
               " & while kill -0 $! && ! grep -q ^Minimizing .out; do sleep .01; done; " + signals +
               "; wait $!");
  }
};

TEST_F(ProgramTest, WithoutArgumentPrintsTheUsage) {
  const Ended ended = Run("");
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.out + ended.err, "Usage: zorvek nexus_file\n");
}

TEST_F(ProgramTest, TurnsTheExampleIntoATreeAndThreeFiles) {
  WriteExample();
  for (const char* suffix : {".log", ".Tavlen.log", ".phylogeny"}) {
    Write(string("primates.nex") + suffix, string(100000, ' ') + kStale);
  }
  const Ended ended = Interrupted(
      "primates.nex ignored",
      "while kill -0 $! && [ ! -s primates.nex.Tavlen.log ]; do sleep .01; done; kill -INT $!");
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.err, "");
  const string best = FindAll(ended.out, "Best value found: (.*)\n").at(0);
  EXPECT_EQ(ended.out,
            "Reading \"DATA\" block...\n"
            "Generating starting tree...starting length: 0.256444\n"
            "Minimizing tree length, please wait...\n"
            "Best value found: " +
                best + "\ndone!\n");

  const string log = Read("primates.nex.log");
  EXPECT_EQ(log.rfind("Reading \"DATA\" block...\n", 0), 0u);
  EXPECT_FALSE(Contains(log, kStale));

  std::istringstream run_log(Read("primates.nex.Tavlen.log"));
  double bound = 0.256444;
  string last;
  const regex format("(?:FLS|SFT) improved primal bound:([0-9.]+) at:[0-9.e-]+");
  std::smatch match;
  for (string line; std::getline(run_log, line);) {
    ASSERT_TRUE(std::regex_match(line, match, format)) << line;
    EXPECT_LE(std::stod(match[1]), bound);  // six digits may hide the difference
    bound = std::stod(last = match[1]);
  }
  EXPECT_EQ(last, best);
  EXPECT_GE(bound, 0.21405);  // the shortest that any sequence of the search's moves can reach

  const string tree_file = Read("primates.nex.phylogeny");
  const regex frame("#NEXUS\n\n\nBegin trees;\n\ntree PAUP_1=(\\([^\n]*:0\\));\n\nEnd;\n");
  ASSERT_TRUE(std::regex_match(tree_file, match, frame)) << tree_file;
  string rest = match.str(1);
  double length = 0;
  for (const string& edge : FindAll(rest, ":(-?[0-9.e-]+)"))
    length += std::max(0., std::stod(edge));
  EXPECT_NEAR(length, bound, 1e-5);
  std::vector<string> expected = FindAll(Read("primates.nex"), "\n *(\\w+) +[ACGT-]{898}");
  std::vector<string> labels = FindAll(rest, "[(,]([^(),:]+):");
  std::sort(expected.begin(), expected.end());
  std::sort(labels.begin(), labels.end());
  EXPECT_EQ(labels, expected);
  // Binary: replacing pairs of neighbouring leaves by one leaf, again and again, leaves one.
  for (string before; before != rest;) {
    before = std::exchange(
        rest, std::regex_replace(rest, regex("\\([^(),]+:[^(),]+,[^(),]+:[^(),]+\\)"), "x"));
  }
  EXPECT_EQ(rest, "x");
}

// A tree file that is a pipe keeps the process from its end until somebody reads.
TEST_F(ProgramTest, OneSignalEndsTheSearchAndALaterOneTheProcess) {
  WriteExample();
  ASSERT_EQ(mkfifo(Path("primates.nex.phylogeny").c_str(), 0600), 0);
  const string both = "kill -TERM $!; kill -INT $!; sleep .1; kill -TERM $!; ";
  const Ended ended =
      Interrupted("primates.nex", both + "timeout 9 cat primates.nex.phylogeny >tree");
  EXPECT_EQ(ended.status, 0);
  EXPECT_TRUE(Contains(ended.out, "\ndone!\n"));
  EXPECT_TRUE(Contains(Read("tree"), "End;\n"));
  EXPECT_GT(Interrupted("primates.nex", both + "sleep 1; kill -INT $!").status, 128);
}

// Every file without 4 taxa gives one line with the true cause, and leaves older results alone.
TEST_F(ProgramTest, TooFewTaxaGiveOneLineWithTheCause) {
  Write("empty", "");
  Write("three", NexusFile(3, 10, kDna, kMatrix.substr(0, 39)));
  Write("wide", NexusFile(4, 11, kDna, kMatrix));
  Write("twice", NexusFile(4, 10, kDna, std::regex_replace(kMatrix, regex("d "), "a ")));
  fs::create_directory(Path("folder"));
  const std::vector<std::pair<string, string>> causes{{"empty", "empty"},
                                                      {"three", "only 3 taxa"},
                                                      {"wide", "line 10"},
                                                      {"twice", "line 9"},
                                                      {"missing", "No such file or directory"},
                                                      {"folder", "Is a directory"}};
  for (const auto& [input, cause] : causes) {
    for (const char* suffix : {".Tavlen.log", ".phylogeny"}) Write(input + suffix, kStale);
    const Ended ended = Run(input);
    const regex format("(Reading \"DATA\" block...\n)?Error: " + input + ": .*" + cause +
                       ".*; at least 4 taxa are needed\\.\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_TRUE(std::regex_match(ended.out + ended.err, format)) << ended.out << ended.err;
    EXPECT_EQ(Read(input + ".Tavlen.log") + Read(input + ".phylogeny"), kStale + kStale);
  }
}

TEST_F(ProgramTest, FourTaxaAreEnough) {
  Write("four", NexusFile(4, 10, kDna, kMatrix));
  Interrupted("four", "kill -INT $!");
  EXPECT_EQ(FindAll(Read("four.phylogeny"), "([a-d]):").size(), 4u);
}

// The first such pair stops the process, and the reading log is complete by then.
TEST_F(ProgramTest, IdenticalSequencesStopTheRunWithAWarning) {
  const string twins = "'First twin' ACGTACGTTC\n'2nd  twin' ACGTACGTTC\n'Third' ACGTACGTTC\n";
  Write("same", NexusFile(5, 10, kDna, "a ACGTACGTTA\nb ACGAACGTTG\n" + twins));
  const Ended ended = Run("same");
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.out + ended.err,
            "Reading \"DATA\" block...\nWarning taxa First_twin and 2nd__twin have unstable "
            "spectrum. Remove them and relaunch the analysis.\n");
  EXPECT_TRUE(Contains(Read("same.log"), "ACGTACGTTC\n"));
  EXPECT_EQ(Files(), (std::vector<string>{"same", "same.log"}));

  Write("two", NexusFile(2, 10, kDna, twins.substr(0, 47)));  // the pair comes before the count
  EXPECT_EQ(Run("two").out, ended.out);
  Write("numbers", NexusFile(4, 1, "DATATYPE=CONTINUOUS", "a .1\nb .2\nc .3\nd .4\n"));
  EXPECT_TRUE(Contains(Run("numbers").out, "Warning taxa a and b have"));
  Write("ends", NexusFile(4, 10, kDna, kMatrix.substr(0, 39) + "d ACGTACGTTA\n"));
  EXPECT_TRUE(Contains(Run("ends").out, "Warning taxa a and d have"));
}

TEST_F(ProgramTest, FilesThatCannotBeWrittenAreDoneWithoutSilently) {
  WriteExample();
  for (const char* suffix : {".log", ".Tavlen.log", ".phylogeny"}) {
    fs::create_directory(Path(string("primates.nex") + suffix));
  }
  const Ended ended = Interrupted("primates.nex", "kill -INT $!");
  EXPECT_TRUE(Contains(ended.out, "\ndone!\n"));
  EXPECT_EQ(ended.err, "");
}

TEST_F(ProgramTest, AReaderOfItsOutputMayLeave) {
  WriteExample();
  const Ended ended =
      Shell("mkfifo f; true <f & " ZORVEK_PROGRAM
            " primates.nex >f & while kill -0 $! && [ ! -s primates.nex.Tavlen.log ]; do sleep "
            ".01; done; kill -INT $!; wait $! && cat primates.nex.phylogeny");
  EXPECT_TRUE(Contains(ended.out, "End;\n")) << ended.err;
}

TEST_F(ProgramTest, ATerminalShowsAProgressLineUntilTheEnd) {
  const Terminal terminal;
  if (terminal.Name().empty()) GTEST_SKIP() << "the machine lends no terminal";
  WriteExample();
  EXPECT_EQ(Interrupted("primates.nex 2>" + terminal.Name(), "sleep 1; kill -INT $!").status, 0);
  const string shown = terminal.Shown();
  const regex lines(
      "(\r[0-9.]+ s, [0-9]+ steps, best length 0\\.2[0-9]+, [0-9.]+ s left *){2,20}\r {50,}\r");
  EXPECT_TRUE(std::regex_match(shown, lines)) << shown;
  double best = 1;
  for (const string& length : FindAll(shown, "best length ([0-9.]+)")) {
    EXPECT_LE(std::stod(length), best);
    best = std::stod(length);
  }
}

}  // namespace
}  // namespace zorvek::test
