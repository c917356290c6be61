// Pictures of trees: what stands where, told by value.

#include "tests/data.h"
#include "tests/files.h"
#include "wide/drawing/canvas.h"
#include "wide/drawing/layout.h"
#include "wide/drawing/picture.h"
#include "wide/drawing/text.h"
#include "wide/search/neighbour_joining.h"

namespace zorvek::wide {
namespace {

// Joined at random, or a comb. Every fifth edge has length -`least`, the others `least` to 1.
Tree GrownTree(int taxa, bool comb, unsigned seed, double least = 0) {
  std::mt19937 generator(seed);
  const auto steps = [](int i, int j) { return j - i + 2.0; };
  const DistanceMatrix distances =
      comb ? test::Matrix(taxa, steps) : test::Matrix(taxa, test::RandomDistances(seed));
  return MakeTree(JoinNeighbours(taxa, distances.Rows()), [&](int, int) {
    const double length = std::ldexp(static_cast<double>(generator()), -32);
    return generator() % 5 == 0 ? -least : least + (1 - least) * length * length;
  });
}

double Distance(Point a, Point b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

Point Along(Point from, double angle, double length) {
  return {from.x + length * std::cos(angle), from.y + length * std::sin(angle)};
}

// Positive where a, b, c turn to the left.
double Side(Point a, Point b, Point c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Pairs of edges that cross or touch, other than at a node that both have.
int Crossings(const Tree& tree, const std::vector<Point>& places) {
  std::vector<std::pair<Point, Point>> edges;
  for (const int node : tree.preorder) {
    if (node == tree.root) continue;
    const std::pair<Point, Point> edge{places[Index(tree.At(node).parent)], places[Index(node)]};
    if (Distance(edge.first, edge.second) > 0) edges.push_back(edge);
  }
  int crossings = 0;
  for (const auto& [i, k] : test::Pairs(static_cast<int>(edges.size()))) {
    const auto& [a, b] = edges[Index(i)];
    const auto& [c, d] = edges[Index(k)];
    const double ends = std::min({Distance(a, c), Distance(a, d), Distance(b, c), Distance(b, d)});
    if (ends < 1e-12) continue;
    crossings += Side(a, b, c) * Side(a, b, d) <= 0 && Side(c, d, a) * Side(c, d, b) <= 0;
  }
  return crossings;
}

TEST(UnrootedLayout, KeepsLengthsAndLetsNoEdgesCross) {
  for (const int taxa : {4, 12, 60, -60, 289, 700, -300}) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      const Tree tree = GrownTree(std::abs(taxa), taxa < 0, seed);
      const std::vector<Point> places = UnrootedLayout(tree);
      for (const int node : tree.preorder) {
        if (node == tree.root) continue;
        const Point above = places[Index(tree.At(node).parent)];
        ASSERT_NEAR(Distance(above, places[Index(node)]), tree.At(node).length, 1e-9);
      }
      EXPECT_EQ(Crossings(tree, places), 0) << taxa << " taxa, seed " << seed;
    }
  }
}

// With edges of 1 the gaps are g, and two taxa are seen from the other end under g / 2: 3.5 g is a turn.
TEST(UnrootedLayout, LeavesEqualDaylight) {
  Tree tree = GrownTree(4, false, 1);
  for (Tree::Node& node : tree.nodes) node.length = 1;
  const std::vector<Point> places = UnrootedLayout(tree);
  for (const auto& [one, other] : test::Pairs(4)) {
    if (tree.At(one).parent != tree.At(other).parent) continue;
    const double gap = 2 * std::acos(-1) / 3.5;
    EXPECT_NEAR(Distance(places[Index(one)], places[Index(other)]), 2 * std::sin(gap / 2), 2e-3);
  }
}

// What an SVG picture shows, as read from its text.
struct Shown {
  struct Text {
    Point at;
    double angle = 0;  // in which it is read
    bool backwards = false;
    std::string text;
  };
  using Key = std::pair<double, double>;

  explicit Shown(const std::string& svg) {
    for (const std::smatch& m : All(svg, "<path d=\"M# #(?:L# |V#H)#\"/>")) {
      elbows = m[4].matched;
      const Point from{Value(m, 1), Value(m, 2)};
      const Point to = elbows ? Point{Value(m, 5), Value(m, 4)} : Point{Value(m, 3), Value(m, 5)};
      if (edges.empty()) root = {from.x, from.y};
      edges.emplace_back(from, to);
      if (Distance(from, to) > 0) above[{to.x, to.y}] = {from.x, from.y};
    }
    for (const std::smatch& m : All(svg, "\"leader\" d=\"M# #L# #")) {
      leaders.push_back({{Value(m, 1), Value(m, 2)}, {Value(m, 3), Value(m, 4)}});
    }
    for (const std::smatch& m : All(svg,
                                    "<text (class=\"support\")?([^>]*)translate\\(# #\\)"
                                    "(?: rotate\\(#\\))?\">([^<]*)<")) {
      const double degrees = m[5].matched ? Value(m, 5) : 0;
      const bool end = test::Contains(m.str(2), "\"end\"");
      (m[1].matched ? supports : labels)
          .push_back({{Value(m, 3), Value(m, 4)}, degrees * std::acos(-1) / 180, end, m.str(6)});
    }
    const std::smatch box = All(svg, "viewBox=\"# # # #").at(0);
    least = {Value(box, 1), Value(box, 2)};
    most = {least.x + Value(box, 3), least.y + Value(box, 4)};
    const std::smatch bar = All(svg, "\"scale\" d=\"M# [^L]*L#").at(0);
    bar_pixels = Value(bar, 2) - Value(bar, 1);
  }

  // All matches; # stands for a number.
  static std::vector<std::smatch> All(const std::string& text, const std::string& pattern) {
    const std::regex full(std::regex_replace(pattern, std::regex("#"), "(-?[0-9.]+)"));
    return {std::sregex_iterator(text.begin(), text.end(), full), std::sregex_iterator()};
  }
  static double Value(const std::smatch& match, std::size_t group) {
    return std::stod(match[group]);
  }

  // The tip that a label belongs to: at its left, or where the leader begins that ends before it.
  Point Tip(const Text& label) const {
    const Point before = Along(label.at, label.angle, label.backwards ? 4 : -4);
    for (const auto& [tip, ring] : leaders) {
      if (Distance(ring, before) < 0.02) return tip;
    }
    return before;
  }
  // From the root, in pixels along the edges; `passed` gets the far ends of these.
  double Depth(Point tip, std::set<Key>* passed = nullptr) const {
    double depth = 0;
    for (Key key{tip.x, tip.y}; key != root; key = above.at(key)) {
      if (passed != nullptr) passed->insert(key);
      const Key next = above.at(key);
      depth += elbows ? std::abs(key.first - next.first)
                      : std::hypot(key.first - next.first, key.second - next.second);
    }
    return depth;
  }

  bool elbows = false;
  Key root;
  std::map<Key, Key> above;
  std::vector<std::pair<Point, Point>> edges;
  std::vector<std::pair<Point, Point>> leaders;
  std::vector<Text> labels;
  std::vector<Text> supports;
  Point least, most;  // the corners of the picture
  double bar_pixels = 0;
};

// How far the point is from the part of an edge that carries its length.
double FromEdge(Point p, Point a, Point b, bool elbows) {
  if (elbows) a.y = b.y;
  const Point along{b.x - a.x, b.y - a.y};
  const double square = along.x * along.x + along.y * along.y;
  if (square == 0) return 1e9;
  const double share = ((p.x - a.x) * along.x + (p.y - a.y) * along.y) / square;
  const double on = std::clamp(share, 0.0, 1.0);
  return Distance(p, {a.x + on * along.x, a.y + on * along.y});
}

std::set<std::string> NamesBelow(const Tree& tree, int node) {
  if (tree.IsTaxon(node)) return {"t" + std::to_string(node)};
  std::set<std::string> names;
  for (const int child : tree.At(node).children) names.merge(NamesBelow(tree, child));
  return names;
}

std::vector<std::string> Names(int taxa) {
  std::vector<std::string> names;
  for (int taxon = 0; taxon < taxa; ++taxon) names.push_back("t" + std::to_string(taxon));
  return names;
}

TEST(Picture, ShowsLengthsAndSupportsWhereTheyBelong) {
  for (const auto& [layout, unit] : {std::pair{Layout::kPhylogram, 1.0},
                                     {Layout::kPhylogram, 2.0},
                                     {Layout::kPhylogram, 5.0},
                                     {Layout::kUnrooted, 1.0}}) {
    Tree given = GrownTree(14, false, 3, 0.5);
    for (Tree::Node& node : given.nodes) node.length *= unit;
    for (const int node : given.preorder) {
      if (!given.IsTaxon(node)) given.nodes[Index(node)].support = 0.01 * node + 0.45;
    }
    const Tree tree = layout == Layout::kPhylogram ? RootedForDrawing(given) : given;
    const Shown shown(DrawPicture("x.svg", given, Names(14), {layout, "changes"}));
    ASSERT_EQ(shown.labels.size(), 15u);
    std::size_t read = 0;
    const double bar = std::stod(shown.labels[14].text, &read);
    EXPECT_EQ(shown.labels[14].text.substr(read), " changes");
    const long digit = std::lround(bar / std::pow(10, std::floor(std::log10(bar))));
    EXPECT_TRUE(digit == 1 || digit == 2 || digit == 5) << bar;
    EXPECT_TRUE(shown.bar_pixels > 45 && shown.bar_pixels < 121);
    std::map<Shown::Key, std::set<std::string>> below;
    for (std::size_t k = 0; k < 14; ++k) {
      const Shown::Text& label = shown.labels[k];
      std::set<Shown::Key> passed;
      double length = 0;
      for (int node = std::stoi(label.text.substr(1)); node >= 0; node = tree.At(node).parent) {
        length += tree.ShownLength(node);
      }
      EXPECT_NEAR(shown.Depth(shown.Tip(label), &passed) * bar / shown.bar_pixels, length,
                  2e-3 * unit);
      EXPECT_LE(std::abs(label.angle), std::acos(-1) / 2 + 1e-4) << "upside down";
      const double wide = TextWidth(label.text) * Canvas::kFont * (label.backwards ? -1 : 1);
      for (const double along : {0.0, wide}) {
        const Point p = Along(label.at, label.angle, along);
        EXPECT_TRUE(p.x > shown.least.x && p.x < shown.most.x) << label.text;
        EXPECT_TRUE(p.y > shown.least.y && p.y < shown.most.y) << label.text;
      }
      for (const Shown::Key& key : passed) below[key].insert(label.text);
    }
    std::map<std::string, std::set<std::string>> expected, found;
    for (const int node : tree.preorder) {
      const double support = DrawnSupports(tree)[Index(node)];
      if (support < 0.5 || !(tree.At(node).length > 0)) continue;
      expected[std::to_string(std::lround(100 * support))] = NamesBelow(tree, node);
    }
    for (const Shown::Text& support : shown.supports) {
      const auto nearest = std::min_element(
          shown.edges.begin(), shown.edges.end(), [&](const auto& a, const auto& b) {
            return FromEdge(support.at, a.first, a.second, shown.elbows) <
                   FromEdge(support.at, b.first, b.second, shown.elbows);
          });
      found[support.text] = below[{nearest->second.x, nearest->second.y}];
    }
    EXPECT_EQ(found, expected);
    EXPECT_GT(found.size(), 4u);
  }
}

// The numbers of a list in a page, null as -1.
std::vector<double> ListIn(const std::string& page, const std::string& name) {
  std::vector<double> numbers;
  const std::string list = test::FindAll(page, "\"" + name + "\":\\[([^\\]]*)\\]").at(0);
  for (const std::string& entry : test::FindAll(list, "([^,]+)")) {
    numbers.push_back(entry == "null" ? -1 : std::stod(entry));
  }
  return numbers;
}

TEST(Picture, APageHoldsTheTree) {
  Tree given = GrownTree(14, false, 3);
  for (Tree::Node& node : given.nodes) node.support = std::ceil(8 * node.length) / 8;
  const Tree tree = RootedForDrawing(given);
  const std::vector<std::string> labels = Names(14);
  const std::string page = DrawPicture("x.html", given, labels, {Layout::kPhylogram, "u"});
  std::vector<std::string> shown;
  for (const int node : tree.preorder) {
    if (tree.IsTaxon(node)) shown.push_back(labels[Index(node)]);
  }
  EXPECT_EQ(test::FindAll(page, "\"(t\\d+)\""), shown);
  EXPECT_TRUE(test::Contains(page, "\"layout\":\"phylogram\",\n\"unit\":\"u\""));
  EXPECT_FALSE(test::Contains(page, ",-1,")) << "should be null";
  const auto parents = ListIn(page, "parent"), depths = ListIn(page, "depth");
  const auto xs = ListIn(page, "x"), ys = ListIn(page, "y"), supports = ListIn(page, "support");
  ASSERT_EQ(parents.size(), tree.nodes.size());
  EXPECT_EQ(parents[0], -1);
  for (std::size_t k = 1; k < parents.size(); ++k) {
    const int node = tree.preorder[k];
    const auto above = static_cast<std::size_t>(parents[k]);
    EXPECT_EQ(tree.preorder[above], tree.At(node).parent);
    EXPECT_NEAR(depths[k] - depths[above], tree.ShownLength(node), 1e-5);
    EXPECT_NEAR(std::hypot(xs[k] - xs[above], ys[k] - ys[above]), tree.ShownLength(node), 1e-5);
    EXPECT_EQ(supports[k], DrawnSupports(tree)[Index(node)]);
  }
  const Tree rooted = RootedAbove(given, 0, 0.5);
  EXPECT_NE(rooted.preorder, tree.preorder);
  EXPECT_EQ(RootedForDrawing(rooted).preorder, rooted.preorder);  // it has its root
  // Of the two halves of the root's edge the longer one has the support.
  int longer = tree.At(tree.root).children[0], shorter = tree.At(tree.root).children[1];
  if (tree.At(longer).length < tree.At(shorter).length) std::swap(longer, shorter);
  EXPECT_EQ(DrawnSupports(tree)[Index(shorter)], Tree::kNoSupport);
  EXPECT_EQ(DrawnSupports(tree)[Index(longer)],
            tree.IsTaxon(longer) ? Tree::kNoSupport : tree.At(longer).support);
}

TEST(Picture, LetsSupportsCoverNothing) {
  for (const Layout layout : {Layout::kPhylogram, Layout::kUnrooted}) {
    Tree tree = GrownTree(80, false, 4);
    for (const int node : tree.preorder) tree.nodes[Index(node)].support = 0.99;
    const Shown shown(
        DrawPicture("x.svg", tree, std::vector<std::string>(80, "taxon"), {layout, ""}));
    EXPECT_GT(shown.supports.size(), 20u);
    for (const auto& [i, k] : test::Pairs(80)) {
      EXPECT_GT(Distance(shown.labels[Index(i)].at, shown.labels[Index(k)].at), 0.9 * Canvas::kRow);
    }
    EXPECT_LT(shown.most.x - shown.least.x, 1500);
    const auto wanted = DrawnSupports(layout == Layout::kPhylogram ? RootedForDrawing(tree) : tree);
    EXPECT_EQ(shown.supports.size() + std::stoul(shown.labels.back().text),  // found no room
              static_cast<std::size_t>(std::count(wanted.begin(), wanted.end(), 0.99)));
    for (const Shown::Text& support : shown.supports) {
      // Digits of 8 pixels are 10 wide and 6 high.
      const auto covers = [&](Point p) {
        const Point arm{p.x - support.at.x, p.y - support.at.y};
        const double c = std::cos(support.angle);
        const double s = std::sin(support.angle);
        return std::abs(arm.x * c + arm.y * s) < 5 && std::abs(arm.y * c - arm.x * s) < 3;
      };
      for (const auto& [from, to] : shown.edges) {
        const Point corner = shown.elbows ? Point{from.x, to.y} : from;
        for (double share = 0; share <= 1; share += 1.0 / 512) {
          const double rest = 1 - share;
          ASSERT_FALSE(covers({corner.x * rest + to.x * share, corner.y * rest + to.y * share}));
          ASSERT_FALSE(covers({corner.x, from.y * rest + corner.y * share}));
        }
      }
      for (const Shown::Text& other : shown.supports) {
        EXPECT_TRUE(&other == &support || Distance(other.at, support.at) > 6);
      }
    }
  }
}

TEST(Picture, TakesLabelsOfAnyBytes) {
  EXPECT_EQ(TextWidth("caf\xC3\xA9"), TextWidth("cafe"));
  EXPECT_EQ(Drawable("a\tb\x01\x7F"), "a b  ");
  EXPECT_EQ(Drawable("caf\xC3\xA9 \xF0\x9F\xA6\x8E"), "caf\xC3\xA9 \xF0\x9F\xA6\x8E");
  EXPECT_EQ(Drawable("caf\xE9"), "caf\xC3\xA9");
  EXPECT_EQ(Drawable("\xEF\xBF\xBF\xC2\x85z"), "z");
  for (const char* bad : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"}) {
    const std::string drawable = Drawable(bad);
    EXPECT_EQ(Drawable(drawable), drawable);
    EXPECT_EQ(drawable.find(bad), drawable.npos);
  }
  const Tree tree = GrownTree(4, false, 1, 0.5);
  EXPECT_TRUE(
      test::Contains(DrawPicture("x.svg", tree, {"a&b<c>", "", "", ""}, {Layout::kUnrooted, ""}),
                     ">a&amp;b&lt;c&gt;<"));
  const std::string page = DrawPicture("x.HTML", tree, {"</script>", "a\"b\\c", "caf\xE9", "d"},
                                       {Layout::kUnrooted, "u"});
  EXPECT_EQ(test::FindAll(page, "(</script>)").size(), 2u);
  for (const char* part :
       {"\"\\u003c/script>\"", "\"a\\\"b\\\\c\"", "\"caf\xC3\xA9\"", "\"layout\":\"unrooted\""}) {
    EXPECT_TRUE(test::Contains(page, part)) << part;
  }
}

}  // namespace
}  // namespace zorvek::wide
