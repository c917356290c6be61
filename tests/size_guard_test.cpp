#include "wide/program/size_guard.h"

#include <gtest/gtest.h>

#include "tests/data.h"

namespace zorvek::wide {
namespace {

TEST(SizeGuard, RefusesWhatCannotFitAndNamesWhatWould) {
  Options options;
  options.file = "x";
  const auto refusal = [&](double taxa, double memory) {
    return test::FaultOf([&] { Forewarning(options, taxa, 1000, memory); });
  };
  EXPECT_NEAR(NeedsOf(options, 2000, 1000).bytes, 176e6, 20e6);  // as measured
  EXPECT_EQ(refusal(10000, 5e9), "");
  EXPECT_EQ(refusal(20000, 10e9),
            "x: 20000 taxa need 16 GB of memory, and the machine has 10 GB; with --criterion ols "
            "they fit");
  options.search.criterion = Criterion::kOls;
  EXPECT_EQ(refusal(20000, 8e9), "");
  EXPECT_EQ(refusal(20000, 4e9),
            "x: 20000 taxa need 4.8 GB of memory, and the machine has 4.0 GB; with --search none "
            "they fit");
  EXPECT_EQ(refusal(20000, 3e9),
            "x: 20000 taxa need 4.8 GB of memory, and the machine has 3.0 GB; leave out taxa or "
            "take a larger machine");
  EXPECT_EQ(refusal(3900, 3.6e8),
            "x: 3900 taxa need 0.4 GB of memory, and the machine has 0.4 GB; with --search none "
            "they fit");
  options.search.criterion = Criterion::kBalanced;
  options.search.starts = options.search.threads = 8;
  EXPECT_EQ(
      refusal(10000, 8e9),
      "x: 10000 taxa need 30 GB of memory, and the machine has 8.0 GB; with --threads 1 they fit");
  EXPECT_EQ(refusal(10000, 0), "");  // nobody knows
}

TEST(SizeGuard, WarnsOfLongRunsOnly) {
  Options options;
  EXPECT_EQ(Forewarning(options, 2000, 1000, 1e10), "");
  const double seconds = NeedsOf(options, 5000, 1000).seconds;
  options.model.model = Model::kSpectral;
  EXPECT_GT(NeedsOf(options, 5000, 1000).seconds, 1.5 * seconds);
  options.search.threads = 8;
  EXPECT_LT(NeedsOf(options, 5000, 1000).seconds, seconds);
  options = Options();
  options.search.starts = 1000;
  EXPECT_EQ(Forewarning(options, 20000, 1000, 1e11), "20000 taxa: about 30 h and 18 GB of memory");
  options.search.seconds = seconds;
  EXPECT_LT(NeedsOf(options, 5000, 1000).seconds, 2 * seconds);
  options = Options();
  EXPECT_EQ(Forewarning(options, 20000, 1000, 1e11), "20000 taxa: about 2 min and 16 GB of memory");
  options.bootstrap.replicates = 100;
  EXPECT_EQ(Forewarning(options, 2000, 1000, 1e10), "2000 taxa: about 2 min and 0.2 GB of memory");
  options.bootstrap.replicates = 2000;
  EXPECT_EQ(Forewarning(options, 2000, 1000, 1e10), "2000 taxa: about 37 min and 0.2 GB of memory");
  options.bootstrap.replicates = 100;
  options.search.threads = 2;
  EXPECT_EQ(Forewarning(options, 2000, 1000, 1e10), "");
  EXPECT_EQ(Forewarning(options, 2000, 1000, 4.5e8), "2000 taxa: about 56 s and 0.4 GB of memory");
  EXPECT_EQ(Forewarning(options, 2000, 1000, 3e8),
            "2000 taxa: about 2 min and 0.2 GB of memory; bootstrap replicates 1 at a time, as "
            "many as the memory allows");
}

}  // namespace
}  // namespace zorvek::wide
