#include "wide/drawing/svg.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/index.h"
#include "wide/drawing/layout.h"
#include "wide/formats/numbers.h"

namespace zorvek::wide {

namespace {

// Sizes in pixels.
constexpr double kFont = 11;
constexpr double kSmallFont = 8;  // supports
constexpr double kRow = 14;       // from one label to the next
constexpr double kGap = 4;        // between a tip and its label
constexpr double kMargin = 16;
constexpr double kLetter = 0.6;       // mean width of a letter, in font sizes
constexpr double kTreeWidth = 640;    // of a phylogram, without labels, and no less than
constexpr double kTaxonWidth = 4;     // for each taxon
constexpr double kSmallRadius = 240;  // of an unrooted tree with few taxa
constexpr double kRoom = 1.4;         // of the circle of labels, for each label's share of it
constexpr double kShown = 0.5;        // lower supports only crowd the picture
constexpr double kPi = 3.14159265358979323846;

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      // XML has no place for the others.
      default:
        escaped += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
  }
  return escaped;
}

double TextWidth(const std::string& text, double font) {
  const auto letters =
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
  return kLetter * font * static_cast<double>(letters);
}

std::string Number(double value) {
  return Rounded(value, 2);
}

// The elements of a picture, and the room that they take.
class Canvas {
 public:
  void Line(Point a, Point b, const char* kind = "") {
    Cover(a);
    Cover(b);
    body_ += std::string("<path ") + kind + "d=\"M" + Number(a.x) + " " + Number(a.y) + "L" +
             Number(b.x) + " " + Number(b.y) + "\"/>\n";
  }

  // Text that begins at a place and runs at an angle (radians, clockwise), turned over where it
  // would stand on its head.
  void Label(Point at, double angle, const std::string& text) {
    const Point end{at.x + std::cos(angle) * TextWidth(text, kFont),
                    at.y + std::sin(angle) * TextWidth(text, kFont)};
    Cover(at);
    Cover(end);
    const bool over = std::cos(angle) < 0;
    Text(at, over ? angle + kPi : angle, text,
         over ? "text-anchor=\"end\" dy=\"0.35em\"" : "dy=\"0.35em\"");
  }

  void Text(Point at, double angle, const std::string& text, const std::string& attributes) {
    const double degrees = std::remainder(angle, 2 * kPi) * 180 / kPi;
    body_ += "<text " + attributes + " transform=\"translate(" + Number(at.x) + " " + Number(at.y) +
             ")" + (std::abs(degrees) < 0.01 ? "" : " rotate(" + Number(degrees) + ")") + "\">" +
             Escaped(text) + "</text>\n";
  }

  Point Least() const { return least_; }
  Point Most() const { return most_; }

  std::string Document() const {
    const double width = most_.x - least_.x + 2 * kMargin;
    const double height = most_.y - least_.y + 2 * kMargin;
    const std::string size = Number(width) + "\" height=\"" + Number(height) + "\"";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
           size + " viewBox=\"" + Number(least_.x - kMargin) + " " + Number(least_.y - kMargin) +
           " " + Number(width) + " " + Number(height) +
           "\" font-family=\"sans-serif\" font-size=\"" + Number(kFont) +
           "\">\n<style>path{stroke:#222;fill:none;stroke-linecap:round}"
           ".leader{stroke:#bbb;stroke-width:.6;stroke-dasharray:1 2}"
           ".support{font-size:" +
           Number(kSmallFont) +
           "px;fill:#a33;stroke:#fff;stroke-width:2px;paint-order:stroke}</style>\n"
           "<rect x=\"" +
           Number(least_.x - kMargin) + "\" y=\"" + Number(least_.y - kMargin) + "\" width=\"" +
           size + " fill=\"#fff\"/>\n" + body_ + "</svg>\n";
  }

 private:
  void Cover(Point p) {
    least_ = {std::min(least_.x, p.x), std::min(least_.y, p.y)};
    most_ = {std::max(most_.x, p.x), std::max(most_.y, p.y)};
  }

  Point least_;
  Point most_;
  std::string body_;
};

// The longest of 1, 2 or 5 times a power of ten that is no longer than this.
double NiceLength(double most) {
  const double power = std::pow(10, std::floor(std::log10(most)));
  const double times = most / power;
  return power * (times >= 5 ? 5 : times >= 2 ? 2 : 1);
}

// Below what is drawn so far: a line of a round length, and the length.
void ScaleBar(Canvas& canvas, double pixels_per_length) {
  if (!(pixels_per_length > 0)) return;
  const double length = NiceLength(120 / pixels_per_length);
  const Point from{canvas.Least().x, canvas.Most().y + 2 * kRow};
  const Point to{from.x + length * pixels_per_length, from.y};
  canvas.Line(from, to);
  canvas.Line({from.x, from.y - 3}, {from.x, from.y + 3});
  canvas.Line({to.x, to.y - 3}, {to.x, to.y + 3});
  canvas.Label({to.x + kGap, to.y}, 0, Shortest(length));
}

std::string DrawPhylogram(const Tree& tree, const std::vector<std::string>& labels) {
  std::vector<Point> places = PhylogramLayout(tree);
  double depth = 0;
  for (const Point& place : places) depth = std::max(depth, place.x);
  const double scale = depth > 0 ? std::max(kTreeWidth, kTaxonWidth * tree.taxa) / depth : 0;
  for (Point& place : places) place = {place.x * scale, place.y * kRow};
  Canvas canvas;
  for (const int node : tree.preorder) {
    const Point here = places[Index(node)];
    const std::vector<int>& children = tree.At(node).children;
    if (tree.IsTaxon(node)) canvas.Label({here.x + kGap, here.y}, 0, labels[Index(node)]);
    if (!children.empty()) {
      canvas.Line({here.x, places[Index(children.front())].y},
                  {here.x, places[Index(children.back())].y});
    }
    for (const int child : children) {
      const Point end = places[Index(child)];
      canvas.Line({here.x, end.y}, end);
    }
    if (tree.At(node).support >= kShown) {
      canvas.Text({here.x - 2, here.y - 2}, 0, Rounded(100 * tree.At(node).support, 0),
                  "class=\"support\" text-anchor=\"end\"");
    }
  }
  ScaleBar(canvas, scale);
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
    canvas.Line(places[Index(node)], ring, "class=\"leader\" ");
    canvas.Label({ring.x + kGap * std::cos(*angle), ring.y + kGap * std::sin(*angle)}, *angle,
                 labels[Index(node)]);
    ++angle;
  }
}

// Along the edges, where these are long enough to carry them.
void UnrootedSupports(const Tree& tree, const std::vector<Point>& places, Canvas& canvas) {
  for (const int node : tree.preorder) {
    for (const int child : tree.At(node).children) {
      if (tree.At(child).support < kShown) continue;
      const std::string text = Rounded(100 * tree.At(child).support, 0);
      const Point a = places[Index(node)];
      const Point b = places[Index(child)];
      if (std::hypot(b.x - a.x, b.y - a.y) < TextWidth(text, kSmallFont)) continue;
      const double angle = std::atan2(b.y - a.y, b.x - a.x);
      canvas.Text({(a.x + b.x) / 2, (a.y + b.y) / 2}, std::cos(angle) < 0 ? angle + kPi : angle,
                  text, "class=\"support\" text-anchor=\"middle\" dy=\"-2\"");
    }
  }
}

std::string DrawUnrooted(const Tree& tree, const std::vector<std::string>& labels) {
  std::vector<Point> places = UnrootedLayout(tree);
  const double radius = std::max(kSmallRadius, kRoom * kRow * tree.taxa / (2 * kPi));
  const double scale = Fit(places, radius - 2 * kGap);
  Canvas canvas;
  UnrootedLabels(tree, labels, places, radius, canvas);
  for (const int node : tree.preorder) {
    const Point here = places[Index(node)];
    for (const int child : tree.At(node).children) canvas.Line(here, places[Index(child)]);
  }
  UnrootedSupports(tree, places, canvas);
  ScaleBar(canvas, scale);
  return canvas.Document();
}

}  // namespace

std::string DrawSvg(const Tree& tree, const std::vector<std::string>& labels, Layout layout) {
  return layout == Layout::kPhylogram ? DrawPhylogram(tree, labels) : DrawUnrooted(tree, labels);
}

}  // namespace zorvek::wide
