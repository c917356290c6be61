// The walls of the house: a room includes only what stands below it.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/files.h"

namespace zorvek {
namespace {

namespace fs = std::filesystem;

// Per room the rooms that it may include, besides itself.
using Walls = std::map<std::string, std::set<std::string>>;

const std::set<std::string> kRun{"core", "driver", "input", "tree", "search", "output"};

const Walls kWalls{
    {"core", {}},
    {"driver", kRun},
    {"input", kRun},
    {"tree", kRun},
    {"search", kRun},
    {"output", kRun},
    {"wide/data", {"core"}},
    {"wide/formats", {"core", "wide/data"}},
    {"wide/distance", {"core", "wide/data"}},
    {"wide/criterion", {"core", "wide/data"}},
    {"wide/search", {"core", "wide/data", "wide/criterion"}},
    {"wide/support",
     {"core", "wide/data", "wide/formats", "wide/distance", "wide/criterion", "wide/search"}},
    {"wide/drawing", {"core", "wide/data", "wide/formats"}},
    {"wide/program",
     {"core", "wide/data", "wide/formats", "wide/distance", "wide/criterion", "wide/search",
      "wide/support", "wide/drawing"}},
};

TEST(Walls, ARoomIncludesOnlyWhatStandsBelowIt) {
  for (const auto& [room, below] : kWalls) {
    for (const auto& entry : fs::directory_iterator(fs::path(ZORVEK_SOURCE_DIR) / room)) {
      const std::string file = entry.path().string();
      for (const std::string& included :
           test::FindAll(test::Contents(file), "#include \"([^\"]+)/[^/\"]+\"")) {
        EXPECT_TRUE(included == room || below.count(included) > 0)
            << file << " includes something of " << included;
      }
    }
  }
}

}  // namespace
}  // namespace zorvek
