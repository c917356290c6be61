#include "wide/drawing/canvas.h"

#include <algorithm>
#include <cmath>

#include "wide/drawing/text.h"
#include "wide/formats/numbers.h"

namespace zorvek::wide {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMargin = 16;
constexpr double kLineHalf = 0.6;  // of the thickness of an edge
constexpr double kBar = 120;       // of the scale bar, at most

std::string Number(double value) {
  return Rounded(value, 2);
}

std::string Pair(Point p) {
  return Number(p.x) + " " + Number(p.y);
}

// The longest of 1, 2 or 5 times a power of ten that is no longer than this.
double NiceLength(double most) {
  const double power = std::pow(10, std::floor(std::log10(most)));
  const double times = most / power;
  return power * (times >= 5 ? 5 : times >= 2 ? 2 : 1);
}

Point Along(Point from, double angle, double length) {
  return {from.x + std::cos(angle) * length, from.y + std::sin(angle) * length};
}

}  // namespace

void Canvas::Edge(Point from, Point to) {
  Path(from, "L" + Pair(to), to, "");
  bars_.push_back({from, to, kLineHalf});
}

void Canvas::Elbow(Point from, Point to) {
  Path(from, "V" + Number(to.y) + "H" + Number(to.x), to, "");
  bars_.push_back({from, {from.x, to.y}, kLineHalf});
  bars_.push_back({{from.x, to.y}, to, kLineHalf});
}

void Canvas::Leader(Point from, Point to) {
  Path(from, "L" + Pair(to), to, "class=\"leader\" ");
  bars_.push_back({from, to, 0});
}

void Canvas::Label(Point at, double angle, const std::string& text) {
  const std::string drawable = Drawable(text);
  const Point end = Along(at, angle, TextWidth(drawable) * kFont);
  Cover(at);
  Cover(end);
  bars_.push_back({at, end, kFont / 2});
  const bool over = std::cos(angle) < 0;
  Text(at, over ? angle + kPi : angle, drawable,
       over ? "text-anchor=\"end\" dy=\"0.35em\"" : "dy=\"0.35em\"");
}

double Canvas::SupportWidth(const std::string& text) {
  return TextWidth(text) * kSmallFont;
}

bool Canvas::Support(const std::string& text, const std::vector<Spot>& spots) {
  if (crowd_.empty()) crowd_.emplace_back(bars_);
  const double half = SupportWidth(text) / 2;
  for (const Spot& spot : spots) {
    const bool over = std::cos(spot.angle) < 0;
    const double angle = over ? spot.angle + kPi : spot.angle;
    const Bar bar{Along(spot.middle, angle, -half), Along(spot.middle, angle, half), kSupportHalf};
    if (!crowd_[0].Place(bar)) continue;
    Text(spot.middle, angle, text, "class=\"support\" text-anchor=\"middle\" dy=\"0.36em\"");
    return true;
  }
  return false;
}

void Canvas::ScaleBar(double pixels_per_length, const std::string& unit) {
  if (!(pixels_per_length > 0)) return;
  const double length = NiceLength(kBar / pixels_per_length);
  const Point from{least_.x, most_.y + 2 * kRow};
  const Point to{from.x + length * pixels_per_length, from.y};
  Path(from,
       "L" + Pair(to) + "M" + Pair({from.x, from.y - 3}) + "v6M" + Pair({to.x, to.y - 3}) + "v6",
       to, "class=\"scale\" ");
  Label({to.x + kGap, to.y}, 0, Shortest(length) + (unit.empty() ? "" : " " + unit));
}

void Canvas::Note(const std::string& text) {
  Label({least_.x, most_.y + kRow + kGap}, 0, text);
}

void Canvas::Path(Point from, const std::string& rest, Point to, const char* kind) {
  Cover(from);
  Cover(to);
  body_ += std::string("<path ") + kind + "d=\"M" + Pair(from) + rest + "\"/>\n";
}

void Canvas::Text(Point at, double angle, const std::string& text, const std::string& attributes) {
  const double degrees = std::remainder(angle, 2 * kPi) * 180 / kPi;
  body_ += "<text " + attributes + " transform=\"translate(" + Pair(at) + ")" +
           (std::abs(degrees) < 0.01 ? "" : " rotate(" + Number(degrees) + ")") + "\">" +
           Escaped(text) + "</text>\n";
}

void Canvas::Cover(Point p) {
  least_ = {std::min(least_.x, p.x), std::min(least_.y, p.y)};
  most_ = {std::max(most_.x, p.x), std::max(most_.y, p.y)};
}

std::string Canvas::Document() const {
  const double width = most_.x - least_.x + 2 * kMargin;
  const double height = most_.y - least_.y + 2 * kMargin;
  const std::string size = Number(width) + "\" height=\"" + Number(height) + "\"";
  const Point corner{least_.x - kMargin, least_.y - kMargin};
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
         size + " viewBox=\"" + Pair(corner) + " " + Number(width) + " " + Number(height) +
         "\" font-family=\"sans-serif\" font-size=\"" + Number(kFont) +
         "\">\n<style>path{stroke:#222;fill:none;stroke-linecap:round;stroke-linejoin:round}"
         ".leader{stroke:#bbb;stroke-width:.6;stroke-dasharray:1 2}.support{font-size:" +
         Number(kSmallFont) + "px;fill:#a33}</style>\n<rect x=\"" + Number(corner.x) + "\" y=\"" +
         Number(corner.y) + "\" width=\"" + size + " fill=\"#fff\"/>\n" + body_ + "</svg>\n";
}

}  // namespace zorvek::wide
