// The walls of the house: a room includes only what stands below it.

#include "tests/files.h"

namespace zorvek {
namespace {

// Per room the rooms that it may include, besides itself. The public headers are open to all of wide/.
using Walls = std::map<std::string, std::set<std::string>>;

const std::set<std::string> kRun{"core", "driver", "input", "tree", "search", "output"};

const Walls kWalls{
    {"core", {}},
    {"include/zorvek", {"zorvek"}},
    {"python", {"zorvek"}},
    {"driver", kRun},
    {"input", kRun},
    {"tree", kRun},
    {"search", kRun},
    {"output", kRun},
    {"wide/data", {"core", "zorvek"}},
    {"wide/formats", {"core", "zorvek", "wide/data"}},
    {"wide/distance", {"core", "zorvek", "wide/data"}},
    {"wide/criterion", {"core", "zorvek", "wide/data"}},
    {"wide/search", {"core", "zorvek", "wide/data", "wide/criterion"}},
    {"wide/support",
     {"core", "zorvek", "wide/data", "wide/formats", "wide/distance", "wide/criterion",
      "wide/search"}},
    {"wide/drawing", {"core", "zorvek", "wide/data", "wide/formats"}},
    {"wide/program",
     {"core", "zorvek", "wide/data", "wide/formats", "wide/distance", "wide/criterion",
      "wide/search", "wide/support", "wide/drawing"}},
};

TEST(Walls, ARoomIncludesOnlyWhatStandsBelowIt) {
  for (const auto& [room, below] : kWalls) {
    for (const auto& entry :
         test::fs::directory_iterator(test::fs::path(ZORVEK_SOURCE_DIR) / room)) {
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
