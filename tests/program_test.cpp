// Whole runs of the real program, seen as a user sees them: what it prints, the files it leaves and
// its exit status. Searches are interrupted as soon as they have begun.
#include <sys/stat.h>

#include <sstream>

#include "tests/files.h"
#include "tests/reference_input.h"

namespace zorvek::test {
namespace {

using reference::NexusFile;
using std::regex;

const string kStale = "left by an earlier run\n";
const string kDna = "DATATYPE=DNA GAP=- MISSING=?";
const string kMatrix = "a ACGTACGTTA\nb ACGTACGTTC\nc ACGAACGTTG\nd ACCTACGATA\n";
const string kGood = NexusFile(4, 10, kDna, kMatrix);

string With(const string& old, const string& replacement) {
  return string(kGood).replace(kGood.find(old), old.size(), replacement);
}

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
  const string rest = match.str(1);
  double length = 0;
  for (const string& edge : FindAll(rest, ":(-?[0-9.e-]+)"))
    length += std::max(0., std::stod(edge));
  EXPECT_NEAR(length, bound, 1e-5);
  const std::vector<string> labels = FindAll(rest, "[(,]([^(),:]+):");
  EXPECT_EQ(std::set<string>(labels.begin(), labels.end()).size(), 12u);
  EXPECT_EQ(FindAll(rest, "([(,])").size(), 22u);
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

// Without 4 taxa there is one line with the true cause, and older results and the log stay as they are.
TEST_F(ProgramTest, TooFewTaxaGiveOneLineWithTheCause) {
  const string three = kMatrix.substr(0, 39);
  const string taxa = "BEGIN TAXA; DIMENSIONS NTAX=3; TAXLABELS x y z; END;\n";
  const string no_nexus = "Expecting #NEXUS to be the first token in the file, but found ";
  struct Case {
    string name, text, cause;
  };
  const std::vector<Case> cases{
      {"empty", "", "it is empty"},
      {"prose", string(400, 'x'), no_nexus + string(238, 'x') + "... (line 1, column 401)"},
      {"fasta", ">a\nACGT\n", no_nexus + "> instead (line 1, column 2)"},
      {"characters", With("DATA;", "CHARACTERS;"),
       "it has a CHARACTERS block but no DATA block; name the block DATA and give NTAX in its "
       "DIMENSIONS command"},
      {"one", NexusFile(1, 4, kDna, "a ACGT"), "only 1 taxon was read from its DATA block"},
      {"three", NexusFile(3, 10, kDna, three), "only 3 taxa were read from its DATA block"},
      {"left", kGood + taxa, "only 3 taxa were left by a TAXA block after its DATA block with 4"},
      {"twice", NexusFile(4, 10, kDna, std::regex_replace(kMatrix, regex("d "), "a ")),
       "Data for this taxon (a) has already been saved (line 9, column 3)"},
      {"missing", "", "No such file or directory"},
      {"folder", "", "Is a directory"}};
  fs::create_directory(Path("folder"));
  for (const auto& [input, text, cause] : cases) {
    if (input != "missing") Write(input, text);
    for (const char* suffix : {".Tavlen.log", ".phylogeny"}) Write(input + suffix, kStale);
    const Ended ended = Run(input);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
    const std::size_t told = ended.out.find("Error");
    EXPECT_EQ(ended.out.substr(told),
              "Error: " + input + ": " + cause + "; at least 4 taxa are needed.\n");
    const string log = Read(input + ".log");
    EXPECT_EQ(log.rfind(ended.out.substr(0, told) + "\nTAXA block", 0), 0u);
    EXPECT_EQ(FindAll(log, "Data matrix:\n(?:    \\w +\\w+\n)*$").size(), 1u) << log;
    EXPECT_LT(log.size(), 5000u);
    EXPECT_EQ(Read(input + ".Tavlen.log") + Read(input + ".phylogeny"), kStale + kStale);
  }
}

// Files that lead the library astray, through both programs: each names the cause with its place, and
// neither ends by a signal or takes the memory that the file announces.
struct BadFile {
  string text;
  int line, column;  // 0 where the library knows no place
  string cause;
};

const std::vector<BadFile> kBadFiles{
    {With("NTAX=4", "NTAX=5"), 10, 2,
     "Unexpected ; after only 4 taxa were read (expecting characters for 5 taxa)"},
    {With(";\nEND", "; DIMENSIONS NTAX=4 NCHAR=30; END"), 10, 35, "matrix does not fit DIMENSIONS"},
    {With(";\nEND", "; DIMENSIONS NTAX=3 NCHAR=10; END"), 10, 35, "matrix does not fit DIMENSIONS"},
    {With(";\nEND", "; FORMAT DATATYPE=PROTEIN; END"), 10, 10, "FORMAT command after the matrix"},
    {With("NCHAR=10", "NCHAR=100000000"), 6, 1,
     "DIMENSIONS announces 4 taxa x 100000000 characters, more than the file can hold"},
    {With("NTAX=4 NCHAR=10", "NTAX=16000000 NCHAR=1"), 0, 0,
     "NTAX is 16000000, more than the file can hold"},
#ifndef __SANITIZE_ADDRESS__  // whose allocator ends the process where another one throws
    {"#NEXUS\nBEGIN TAXA; DIMENSIONS NTAX=2000000000; END;\n", 0, 0,
     "NTAX is 2000000000, more than the file can hold"},
#endif
    {With("DIM", "ELIMINATE 1-20; DIM"), 0, 0,
     "internal assertion failed: eliminated.size() <= nChar"},
    {With("DIM", "ELIMINATE ALL; DIM"), 0, 0,
     "internal assertion failed: eliminated.size() <= nChar"},
    {With("CGAACGTTG", "CGAA[]CG(A[])TG"), 8, 19,
     "Error reading character 8 for taxon 3 (name \"c\"): Invalid state specified \"[\""},
    {"#NEXUS\n'open", 2, 6,
     "Unexpected end-of-file (end-of-file inside ' quoted token that started on line 2, column 2)"},
};

TEST_F(ProgramTest, BadFilesEndWithTheirCauseAsInTheOther) {
#ifdef __SANITIZE_ADDRESS__
  const string limit;  // the sanitizer takes more
#else
  const string limit = "ulimit -v 300000; ";
#endif
  for (const BadFile& bad : kBadFiles) {
    SCOPED_TRACE(bad.text);
    Write("bad", bad.text);
    const string line = std::to_string(bad.line);
    const string column = std::to_string(bad.column);
    const string zorvek = "Error: bad: " + bad.cause +
                          (bad.line > 0 ? " (line " + line + ", column " + column + ")" : "") +
                          "; at least 4 taxa are needed.\n";
    const Ended run = Shell(limit + ZORVEK_PROGRAM " bad");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.substr(std::min(run.out.find("Error"), run.out.size())), zorvek);

    const string wide = "zorvek-wide: bad" + (bad.line > 0 ? ":" + line + ":" + column : "") + ": ";
    const Ended other = Shell(limit + ZORVEK_WIDE_PROGRAM " bad");
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(other.out, "");
    EXPECT_EQ(other.err.substr(0, (wide + bad.cause).size()), wide + bad.cause);
  }
}

TEST_F(ProgramTest, FourTaxaAreEnough) {
  Write("four", kGood);
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
}

}  // namespace
}  // namespace zorvek::test
