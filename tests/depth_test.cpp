// Trees as deep as they have taxa, on a small stack: nothing may recurse along them.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "core/index.h"
#include "wide/data/topology.h"
#include "wide/drawing/svg.h"
#include "wide/formats/tree_file.h"
#include "zorvek/io.h"
#include "zorvek/support.h"

namespace zorvek::wide {
namespace {

constexpr int kTaxa = 20000;
constexpr std::size_t kStack = 256 * 1024;

// (t0:1,(t1:1,... or, with a step of 7, taxa in another order.
std::string Caterpillar(int step) {
  std::string text;
  std::string end;
  for (int k = 0; k < kTaxa; ++k) {
    const bool last = k + 1 == kTaxa;
    text += (last ? "" : "(") + ("t" + std::to_string(k * step % kTaxa)) + (last ? "" : ":1,");
    if (!last) end += last ? "" : "):1";
  }
  return text + ":1" + end.substr(0, end.size() - 2) + ";";
}

void* ReadWriteSupportAndDraw(void*) {
  const std::string text = Caterpillar(1) + Caterpillar(7);
  TreeReader reader("f", text, {});
  std::vector<Tree> trees(2);
  EXPECT_TRUE(reader.Next(trees[0]) && reader.Next(trees[1]));
  EXPECT_EQ(MakeTree(TopologyOf(trees[0]), [](int, int) { return 1; }).nodes.size(),
            trees[0].nodes.size());
  for (const auto measure : {SupportMeasure::kFrequency, SupportMeasure::kTransfer}) {
    SetSupports(trees, measure, trees[0]);
  }
  EXPECT_EQ(MajorityConsensus({trees[0], trees[0], trees[1]}).nodes.size(), trees[0].nodes.size());
  const Tree rooted = RootedAtMidpoint(trees[0]);
  std::string written = Newick(rooted, reader.Labels());
  TreeReader again("f", written, reader.Labels());
  EXPECT_TRUE(again.Next(trees[1]));
  EXPECT_EQ(Newick(trees[1], reader.Labels()), Newick(trees[0], reader.Labels()));
  for (const Layout layout : {Layout::kPhylogram, Layout::kUnrooted}) {
    EXPECT_GT(DrawSvg(trees[0], reader.Labels(), {layout, ""}).size(), Index(kTaxa));
  }
  return nullptr;
}

TEST(Depth, CaterpillarsNeedNoStack) {
  pthread_attr_t small;
  pthread_attr_init(&small);
  ASSERT_EQ(pthread_attr_setstacksize(&small, kStack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &small, ReadWriteSupportAndDraw, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&small);
}

}  // namespace
}  // namespace zorvek::wide
