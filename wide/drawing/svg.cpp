#include "wide/drawing/svg.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/index.h"
#include "wide/drawing/canvas.h"
#include "wide/drawing/layout.h"
#include "wide/formats/numbers.h"

namespace zorvek::wide {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRow = Canvas::kRow;
constexpr double kGap = Canvas::kGap;
// Sizes in pixels.
constexpr double kTaxonWidth = 4;     // of a phylogram, for each taxon
constexpr double kLeastWidth = 640;   // of a phylogram without its labels
constexpr double kMostWidth = 2400;   // so that lines stay near their labels
constexpr double kSmallRadius = 240;  // of an unrooted tree with few taxa
constexpr double kRoom = 1.4;         // of the circle of labels, for each label's share of it
constexpr double kLift = 5.5;         // of the middle of a support off its edge

// Writes the supports, each at the first free one of spots(node, width), and notes how many had none.
template <typename Spots>
void WriteSupports(const Tree& tree, Canvas& canvas, const Spots& spots) {
  const std::vector<double> supports = DrawnSupports(tree);
  int homeless = 0;
  for (const int node : tree.preorder) {
    const double support = supports[Index(node)];
    if (support < kLeastSupport) continue;
    const std::string text = Rounded(100 * support, 0);
    if (!canvas.Support(text, spots(node, Canvas::SupportWidth(text)))) ++homeless;
  }
  if (homeless > 0) {
    canvas.Note(std::to_string(homeless) + " of the supports of " +
                Rounded(100 * kLeastSupport, 0) + " and more found no room here");
  }
}

std::string DrawPhylogram(const Tree& unrooted, const std::vector<std::string>& labels,
                          const std::string& unit) {
  const Tree tree = RootedForDrawing(unrooted);
  std::vector<Point> places = PhylogramLayout(tree);
  double depth = 0;
  for (const Point& place : places) depth = std::max(depth, place.x);
  const double width = std::clamp(kTaxonWidth * tree.taxa, kLeastWidth, kMostWidth);
  const double scale = depth > 0 ? width / depth : 0;
  for (Point& place : places) place = {place.x * scale, place.y * kRow};
  Canvas canvas;
  for (const int node : tree.preorder) {
    const Point here = places[Index(node)];
    if (tree.IsTaxon(node)) canvas.Label({here.x + kGap, here.y}, 0, labels[Index(node)]);
    for (const int child : tree.At(node).children) canvas.Elbow(here, places[Index(child)]);
  }
  canvas.ScaleBar(scale, unit);
  WriteSupports(tree, canvas, [&](int node, double wide) {
    const Point here = places[Index(node)];
    const double before = here.x - wide / 2 - 2;
    return std::vector<Canvas::Spot>{{{before, here.y - kLift}, 0},
                                     {{here.x + wide / 2 + 3, here.y}, 0},
                                     {{before, here.y + kLift}, 0}};
  });
  return canvas.Document();
}

// Moves the tree's bounding box to the origin and gives it the radius. Returns the scale.
double Fit(std::vector<Point>& places, double radius) {
  Point least = places[0];
  Point most = places[0];
  for (const Point& place : places) {
    least = {std::min(least.x, place.x), std::min(least.y, place.y)};
    most = {std::max(most.x, place.x), std::max(most.y, place.y)};
  }
  double extent = 0;
  for (Point& place : places) {
    place = {place.x - (least.x + most.x) / 2, place.y - (least.y + most.y) / 2};
    extent = std::max(extent, std::hypot(place.x, place.y));
  }
  const double scale = extent > 0 ? radius / extent : 0;
  for (Point& place : places) place = {place.x * scale, place.y * scale};
  return scale;
}

// The labels stand on a circle, where none covers another, each tied to its tip.
void UnrootedLabels(const Tree& tree, const std::vector<std::string>& labels,
                    const std::vector<Point>& places, double radius, Canvas& canvas) {
  const std::vector<double> angles = LabelAngles(tree, places, kRow / radius);
  auto angle = angles.begin();
  for (const int node : tree.preorder) {
    if (!tree.IsTaxon(node)) continue;
    const Point ring{radius * std::cos(*angle), radius * std::sin(*angle)};
    canvas.Leader(places[Index(node)], ring);
    canvas.Label({ring.x + kGap * std::cos(*angle), ring.y + kGap * std::sin(*angle)}, *angle,
                 labels[Index(node)]);
    ++angle;
  }
}

// Along an edge that is long enough to carry a support, on either side.
std::vector<Canvas::Spot> SpotsAlong(Point a, Point b, double wide) {
  const double length = std::hypot(b.x - a.x, b.y - a.y);
  std::vector<Canvas::Spot> spots;
  if (length < wide) return spots;
  const double angle = std::atan2(b.y - a.y, b.x - a.x);
  for (const double share : {.5, .3, .7}) {
    if (std::min(share, 1 - share) * length < wide / 2) continue;
    for (const double lift : {kLift, -kLift}) {
      const double side = std::cos(angle) < 0 ? -lift : lift;  // above it first
      spots.push_back({{a.x + share * (b.x - a.x) + side * std::sin(angle),
                        a.y + share * (b.y - a.y) - side * std::cos(angle)},
                       angle});
    }
  }
  return spots;
}

std::string DrawUnrooted(const Tree& tree, const std::vector<std::string>& labels,
                         const std::string& unit) {
  std::vector<Point> places = UnrootedLayout(tree);
  const double radius = std::max(kSmallRadius, kRoom * kRow * tree.taxa / (2 * kPi));
  const double scale = Fit(places, radius - 2 * kGap);
  Canvas canvas;
  UnrootedLabels(tree, labels, places, radius, canvas);
  for (const int node : tree.preorder) {
    const Point here = places[Index(node)];
    for (const int child : tree.At(node).children) canvas.Edge(here, places[Index(child)]);
  }
  canvas.ScaleBar(scale, unit);
  WriteSupports(tree, canvas, [&](int node, double wide) {
    return SpotsAlong(places[Index(tree.At(node).parent)], places[Index(node)], wide);
  });
  return canvas.Document();
}

}  // namespace

std::string DrawSvg(const Tree& tree, const std::vector<std::string>& labels,
                    const DrawingSettings& settings) {
  switch (settings.layout) {
    case Layout::kPhylogram:
      return DrawPhylogram(tree, labels, settings.unit);
    case Layout::kUnrooted:
      return DrawUnrooted(tree, labels, settings.unit);
  }
  return {};
}

}  // namespace zorvek::wide
