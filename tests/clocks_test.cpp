// What depends on the time, under clocks that the tests set.
#include "tests/clocks.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "driver/progress.h"
#include "driver/run_state.h"
#include "tests/files.h"
#include "tests/trees.h"
#include "wide/program/progress_line.h"
#include "wide/program/report.h"

namespace zorvek::wide {
namespace {

// Batches take ten seconds each, and a later one than the first improves.
TEST(Clocks, LimitTheSearchFromItsBeginningOrItsLastImprovement) {
  const DistanceMatrix distances = test::RandomMatrix(60, 3);
  for (const bool patience : {true, false}) {
    test::Clocks clocks;
    SearchSettings settings = test::Settings(Criterion::kBalanced, SearchSettings::kUnlimited);
    (patience ? settings.patience : settings.seconds) = 25;
    std::atomic<bool> stop{false};  // for a search that would go on
    settings.stop = &stop;
    int batches = 0, improved = 0;
    settings.on_progress = [&](const Progress& progress) {
      if (progress.phase != Progress::kIterations) return;
      clocks.wall += 10;
      stop = ++batches == 100;
      if (progress.improved) improved = batches;
    };
    test::Find(distances, settings);
    EXPECT_GT(improved, 1);
    EXPECT_EQ(batches, patience ? improved + 2 : 3);
  }
}

TEST(Clocks, SayInTheProgressLinesWhatIsLeft) {
  const test::Terminal terminal;
  if (terminal.Name().empty()) GTEST_SKIP() << "the machine lends no terminal";
  test::Clocks clocks;
  const int before = dup(STDERR_FILENO);
  const int shown = open(terminal.Name().c_str(), O_WRONLY | O_NOCTTY);
  dup2(shown, STDERR_FILENO);
  {
    ProgressLine line(true);
    line.Show("a", 0, "");
    clocks.wall += 30;
    line.Show("a", 0.25, ", more");
    clocks.wall += 0.2;
    line.Show("a", 1, "too soon");
    clocks.wall += 9.8;
    line.Show("a", 0.5, "", 15);
    line.Show("b", 0.5, "", 12);
    clocks.wall += 3;
    line.Show("b", 0.5, "");
  }
  const test::Workspace workspace(4, test::RandomDistances(1));
  opt_val = 0.5;
  time_val = 7;
  clocks.user += 12.5;
  zorvek::Progress().Show(3);
  dup2(before, STDERR_FILENO);
  close(before);
  close(shown);
  const std::string run = "12.5 s, 3 steps, best length 0.5, 24.5 s left";
  const auto blanks = [](std::size_t count) { return std::string(count, ' '); };
  EXPECT_EQ(terminal.Shown(), "\ra, 0 %\ra, 25 %, more, 90 s left\ra, 50 %, 15 s left" + blanks(6) +
                                  "\rb, 50 %" + blanks(17) + "\rb, 50 %, 3 s left" + blanks(7) +
                                  "\r" + blanks(24) + "\r\r" + run + "\r" + blanks(45) + "\r");
}

TEST(Clocks, AreToldInTheReport) {
  setenv("TZ", "EAST-9", 1);
  tzset();
  Options options;
  options.paths.resize(7);
  options.bootstrap.replicates = 5;
  Results results{options, 86400};
  const DistanceMatrix distances = test::RandomMatrix(4, 1);
  results.input.matrix_labels = {"a", "b", "c", "d"};
  results.found.push_back(test::Find(distances, options.search));
  results.improvements = {{1.5, 3}, {62.25, 2}};
  results.seconds = 12.25;
  results.support = {3, 207, 2, {}};
  std::string report;
  {
    const test::Clocks clocks;
    report = Report(results);
  }
  for (const char* part :
       {"\nbegan       1970-01-02 00:00:00 UTC\n", "\n1.500000\t3\n62.250000\t2\n",
        "\nsupport     3 replicates, 207 samples without all distances drawn again, 2 given up\n",
        "\ntime        12.25 s, processor 5071.25 s\n"}) {
    EXPECT_TRUE(test::Contains(report, part)) << part << report;
  }
}

}  // namespace
}  // namespace zorvek::wide
