// Whole runs of the real program, seen as a user sees them: what it prints, the files it leaves and
// its exit status. Searches are interrupted as soon as they have begun, so nothing here waits for
// one.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using std::regex;
using std::string;

const char kStale[] = "left by an earlier run\n";

string Contents(const string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

bool Contains(const string& text, const string& part) {
  return text.find(part) != string::npos;
}

// The first groups of all matches, in order.
std::vector<string> FindAll(const string& text, const string& pattern) {
  const regex expression(pattern);
  std::vector<string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    found.push_back(match->str(1));
  }
  return found;
}

using Sequences = std::vector<std::pair<string, string>>;  // label and sites

string Example() {
  return Contents(ZORVEK_SOURCE_DIR "/examples/primates.nex");
}

Sequences ExampleSequences(std::size_t count = 12) {
  const std::vector<string> labels = FindAll(Example(), "\n *(\\w+) +[ACGT-]{898}");
  const std::vector<string> sites = FindAll(Example(), " ([ACGT-]{898})\n");
  Sequences sequences;
  for (std::size_t i = 0; i < count; ++i) sequences.emplace_back(labels.at(i), sites.at(i));
  return sequences;
}

string DataBlock(const Sequences& sequences, int taxa, int sites, const string& format = "") {
  string text = "#NEXUS\nBEGIN DATA;\nDIMENSIONS NTAX=" + std::to_string(taxa) +
                " NCHAR=" + std::to_string(sites) + ";\nFORMAT DATATYPE=DNA GAP=- " + format +
                ";\nMATRIX\n";
  for (const auto& [label, row] : sequences) text += label + "  " + row + "\n";
  return text + ";\nEND;\n";
}

// A folder of its own for each test, in which one program runs at a time.
class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest() {
    string name = ::testing::TempDir() + "zorvek_XXXXXX";
    folder = mkdtemp(name.data());
  }

  ~ProgramTest() override {
    if (process > 0) {
      kill(process, SIGKILL);
      waitpid(process, nullptr, 0);
    }
    fs::remove_all(folder);
  }

  string Path(const string& name) const { return folder + "/" + name; }

  string Write(const string& name, const string& text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
  }

  // Starts the program with standard error on `terminal`, or in a file when there is none.
  void Start(std::vector<string> arguments, int terminal = -1) {
    arguments.insert(arguments.begin(), ZORVEK_PROGRAM);
    std::vector<char*> argv;
    for (string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const int out = creat(Path("stdout").c_str(), 0600);
    const int err = creat(Path("stderr").c_str(), 0600);
    process = fork();
    if (process == 0) {
      dup2(out, STDOUT_FILENO);
      dup2(terminal >= 0 ? terminal : err, STDERR_FILENO);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(out);
    close(err);
  }

  // Waits until the program has brought something about. False if it ends without; the limit only
  // keeps a broken program from hanging the tests.
  bool Await(const std::function<bool()>& condition) const {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!condition()) {
      siginfo_t ended{};
      waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT);
      if (ended.si_pid != 0 || std::chrono::steady_clock::now() > limit) return condition();
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
  }

  bool AwaitSearch() const {
    return Await([this] {
      return Contains(Contents(Path("stdout")), "\nMinimizing tree length, please wait...\n");
    });
  }

  // The status at the end, as waitpid gives it: 0 for a normal end with status 0.
  int End() {
    int status = -1;
    waitpid(process, &status, 0);
    process = 0;
    EXPECT_EQ(Contents(Path("stderr")), "");
    return status;
  }

  // A whole run whose search, if it comes to one, is ended by SIGINT. Returns the standard output.
  string Run(const string& input) {
    Start({input});
    if (AwaitSearch()) kill(process, SIGINT);
    EXPECT_EQ(End(), 0);
    return Contents(Path("stdout"));
  }

  // The Newick text of a tree file whose frame must be exact.
  static string Newick(const string& input) {
    const string text = Contents(input + ".phylogeny");
    std::smatch match;
    const regex frame("#NEXUS\n\n\nBegin trees;\n\ntree PAUP_1=(\\([^\n]*:0\\));\n\nEnd;\n");
    EXPECT_TRUE(std::regex_match(text, match, frame)) << text;
    return match.str(1);
  }

  static std::vector<string> Labels(const string& newick) {
    std::vector<string> labels = FindAll(newick, "[(,]([^(),:]+):");
    std::sort(labels.begin(), labels.end());
    return labels;
  }

  string folder;
  pid_t process = 0;
};

TEST_F(ProgramTest, WithoutArgumentPrintsTheUsage) {
  Start({});
  EXPECT_EQ(End(), 0);
  EXPECT_EQ(Contents(Path("stdout")), "Usage: zorvek nexus_file\n");
}

TEST_F(ProgramTest, TurnsTheExampleIntoATreeAndThreeFiles) {
  const string input = Write("primates.nex", Example());
  for (const char* suffix : {".log", ".Tavlen.log", ".phylogeny"}) {
    std::ofstream(input + suffix) << string(100000, ' ') << kStale;
  }
  Start({input, "ignored"});
  ASSERT_TRUE(AwaitSearch());
  ASSERT_TRUE(Await([&] { return Contains(Contents(input + ".Tavlen.log"), "\n"); }));
  kill(process, SIGINT);
  EXPECT_EQ(End(), 0);

  const string output = Contents(Path("stdout"));
  const string best = FindAll(output, "Best value found: (.*)\n").at(0);
  EXPECT_EQ(output,
            "Reading \"DATA\" block...\n"
            "Generating starting tree...starting length: 0.256444\n"
            "Minimizing tree length, please wait...\n"
            "Best value found: " +
                best + "\ndone!\n");

  EXPECT_EQ(Contents(input + ".log").rfind("Reading \"DATA\" block...\n", 0), 0u);
  EXPECT_FALSE(Contains(Contents(input + ".log"), kStale));

  std::istringstream run_log(Contents(input + ".Tavlen.log"));
  double bound = 0.256444;
  double seconds = 0;
  string last;
  for (string line; std::getline(run_log, line);) {
    const regex format("(?:FLS|SFT) improved primal bound:([0-9.]+) at:([0-9.e-]+)");
    std::smatch match;
    ASSERT_TRUE(std::regex_match(line, match, format)) << line;
    EXPECT_LE(std::stod(match[1]), bound);  // six digits may hide the difference
    EXPECT_GE(std::stod(match[2]), seconds);
    bound = std::stod(last = match[1]);
    seconds = std::stod(match[2]);
  }
  EXPECT_EQ(last, best);
  EXPECT_GE(bound, 0.21405);  // the shortest that any sequence of the search's moves can reach

  string rest = Newick(input);
  double length = 0;
  for (const string& edge : FindAll(rest, ":(-?[0-9.e-]+)"))
    length += std::max(0., std::stod(edge));
  EXPECT_NEAR(length, bound, 1e-5);
  std::vector<string> labels;
  for (const auto& sequence : ExampleSequences()) labels.push_back(sequence.first);
  std::sort(labels.begin(), labels.end());
  EXPECT_EQ(Labels(rest), labels);
  // Binary: replacing pairs of neighbouring leaves by one leaf, again and again, leaves one.
  for (string before; before != rest;) {
    before = std::exchange(
        rest, std::regex_replace(rest, regex("\\([^(),]+:[^(),]+,[^(),]+:[^(),]+\\)"), "x"));
  }
  EXPECT_EQ(rest, "x");
}

TEST_F(ProgramTest, OneSignalEndsTheSearchAndASecondTheProcess) {
  const string input = Write("primates.nex", Example());
  for (const int number : {SIGTERM, SIGINT}) {
    std::signal(SIGINT, SIG_IGN);  // as a script's background job starts
    Start({input});
    std::signal(SIGINT, SIG_DFL);
    ASSERT_TRUE(AwaitSearch());
    kill(process, number);
    EXPECT_EQ(End(), 0);
    EXPECT_TRUE(Contains(Contents(Path("stdout")), "\ndone!\n"));
  }
  Start({input});
  ASSERT_TRUE(AwaitSearch());
  kill(process, SIGSTOP);  // so that the second signal comes right behind the first
  kill(process, SIGTERM);
  kill(process, SIGINT);
  kill(process, SIGCONT);
  EXPECT_TRUE(WIFSIGNALED(End()));
}

// Every file without 4 taxa gives one line with the true cause, and leaves older results alone.
TEST_F(ProgramTest, TooFewTaxaGiveOneLineWithTheCause) {
  const Sequences five = ExampleSequences(5);
  Sequences twice = five;
  twice[4].first = twice[0].first;
  string noise;
  for (unsigned state = 1; noise.size() < 5000; state = state * 1103515245u + 12345u) {
    noise += static_cast<char>(state >> 16);
  }
  const auto expect_one_line = [this](const string& input, const string& cause) {
    SCOPED_TRACE(input);
    for (const bool older_results : {false, true}) {
      if (older_results) {
        std::ofstream(input + ".Tavlen.log") << kStale;
        std::ofstream(input + ".phylogeny") << kStale;
      }
      const string output = Run(input);
      const regex format(
          "((Reading \".*\" block|Skipping unknown block .*)\\.\\.\\.\n)*"
          "Error: ([^:]*): .*" +
          cause + ".*; at least 4 taxa are needed\\.\n");
      std::smatch match;
      EXPECT_TRUE(std::regex_match(output, match, format) && match[3] == input) << output;
      for (const char* suffix : {".Tavlen.log", ".phylogeny"}) {
        EXPECT_EQ(fs::exists(input + suffix), older_results);
        EXPECT_EQ(Contents(input + suffix), older_results ? kStale : "");
      }
    }
  };
  const std::vector<std::vector<string>> cases{
      {"empty", "", ""},
      {"noise", noise, ""},
      {"open_quote", "#NEXUS\nBEGIN DATA;\nEND;\n'never closed", ""},
      {"open_quote_in_block", "#NEXUS\nBEGIN DATA;\nDIMENSIONS NTAX=4 NCHAR=4;\nMATRIX\n'a A", ""},
      {"no_data_block", "#NEXUS\nBEGIN NOTES;\nEND;\n", ""},
      {"three_taxa", DataBlock(ExampleSequences(3), 3, 898), "3"},
      {"ntax_too_small", DataBlock(five, 4, 898), "line"},
      {"ntax_too_large", DataBlock(five, 6, 898), "line"},
      {"nchar_too_small", DataBlock(five, 5, 897), "line"},
      {"nchar_too_large", DataBlock(five, 5, 899), "line"},
      {"a_label_twice", DataBlock(twice, 5, 898), "line"},
      {"absurd_dimensions", DataBlock(five, 2000000000, 2000000000), ""},
  };
  for (const auto& bad : cases) expect_one_line(Write(bad[0], bad[1]), bad[2]);
  expect_one_line(Path("missing"), "No such file or directory");
  fs::create_directory(Path("folder"));
  expect_one_line(Path("folder"), "Is a directory");
}

TEST_F(ProgramTest, IdenticalSequencesStopTheRunWithAWarning) {
  Sequences sequences = ExampleSequences(5);
  sequences[1].first = "'First twin'";
  sequences[3] = {"'2nd  twin'", sequences[1].second};
  const string input = Write("same.nex", DataBlock(sequences, 5, 898));
  EXPECT_EQ(
      Run(input),
      "Reading \"DATA\" block...\nWarning taxa First_twin and 2nd__twin have unstable spectrum. "
      "Remove them and relaunch the analysis.\n");
  EXPECT_FALSE(fs::exists(input + ".Tavlen.log") || fs::exists(input + ".phylogeny"));
}

// One alignment in the layouts that users have always gives the same length, and its labels.
TEST_F(ProgramTest, LayoutsOfOneAlignmentGiveOneLength) {
  const Sequences plain = ExampleSequences();
  Sequences quoted = plain;
  quoted[0].first = "'Tarsius syrichta'";
  quoted[1].first = "'2nd-lemur'";
  quoted[2].first = "7Homo";
  Sequences wrapped = plain;
  for (auto& [label, sites] : wrapped) sites = std::regex_replace(sites, regex(".{50}"), "$&\n  ");
  Sequences interleaved;
  for (const std::size_t site : {0u, 450u}) {
    for (const auto& [label, sites] : plain)
      interleaved.emplace_back(label, sites.substr(site, 450));
  }
  const string data = DataBlock(plain, 12, 898);
  const std::vector<std::pair<string, string>> layouts{
      {"windows", std::regex_replace(data, regex("\n"), "\r\n")},
      {"mac", std::regex_replace(data, regex("\n"), "\r")},
      {"quoted", DataBlock(quoted, 12, 898)},
      {"wrapped", DataBlock(wrapped, 12, 898)},
      {"interleaved", DataBlock(interleaved, 12, 898, "INTERLEAVE")},
  };
  for (const auto& [name, text] : layouts) {
    const string input = Write(name, text);
    const string output = Run(input);
    EXPECT_TRUE(Contains(output, "starting length: 0.256444\n")) << name << ": " << output;
    std::vector<string> labels;
    for (const auto& sequence : plain) labels.push_back(sequence.first);
    if (name == "quoted") labels[1] = "2nd-lemur", labels[2] = "7Homo";
    std::sort(labels.begin(), labels.end());
    EXPECT_EQ(Labels(Newick(input)), labels) << name;
  }
}

TEST_F(ProgramTest, FilesThatCannotBeWrittenAreDoneWithoutSilently) {
  const string input = Write("primates.nex", Example());
  for (const char* suffix : {".log", ".Tavlen.log", ".phylogeny"}) {
    fs::create_directory(input + suffix);
  }
  EXPECT_TRUE(Contains(Run(input), "\ndone!\n"));
}

// What a terminal's line shows after this text.
string Screen(const string& text) {
  string line;
  std::size_t column = 0;
  for (const char c : text) {
    if (c == '\r') {
      column = 0;
    } else {
      line.resize(std::max(line.size(), column + 1));
      line[column++] = c;
    }
  }
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

TEST_F(ProgramTest, ATerminalShowsAProgressLineUntilTheEnd) {
  int terminal = -1;
  int program_side = -1;
  if (openpty(&terminal, &program_side, nullptr, nullptr, nullptr) != 0) {
    GTEST_SKIP() << "the machine lends no terminal";
  }
  fcntl(terminal, F_SETFL, O_NONBLOCK);
  string shown;
  const auto frames = [&] {
    char buffer[1000];
    for (ssize_t got; (got = read(terminal, buffer, sizeof buffer)) > 0;) {
      shown.append(buffer, static_cast<std::size_t>(got));
    }
    return std::count(shown.begin(), shown.end(), '\r');
  };
  const auto begin = std::chrono::steady_clock::now();
  Start({Write("primates.nex", Example())}, program_side);
  EXPECT_TRUE(Await([&] { return frames() >= 3; }));
  const regex line("[0-9.]+ s, [0-9]+ steps, best length 0\\.2[0-9]+, [0-9.]+ s left");
  EXPECT_TRUE(std::regex_match(Screen(shown), line)) << shown;
  kill(process, SIGINT);
  EXPECT_EQ(End(), 0);
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
  EXPECT_LE(frames(), 4 * passed.count() + 3);  // two of them for clearing
  EXPECT_EQ(Screen(shown), "") << shown;
  EXPECT_EQ(shown.back(), '\r');
  close(program_side);
  close(terminal);
}

}  // namespace
