// The elements of an SVG picture.
#ifndef ZORVEK_WIDE_DRAWING_CANVAS_H
#define ZORVEK_WIDE_DRAWING_CANVAS_H

#include <string>
#include <vector>

#include "wide/drawing/crowd.h"
#include "wide/drawing/layout.h"

namespace zorvek::wide {

// Sizes in pixels. Angles are in radians, clockwise, as y grows downwards.
class Canvas {
 public:
  static constexpr double kFont = 11;
  static constexpr double kSmallFont = 8;  // of supports
  static constexpr double kRow = 14;       // from one label to the next
  static constexpr double kGap = 4;        // between a tip and its label

  // An edge: straight, or first down or up and then across.
  void Edge(Point from, Point to);
  void Elbow(Point from, Point to);
  // From a tip to its label.
  void Leader(Point from, Point to);

  // Text that begins at a place and runs at an angle, turned over where it would stand on its head.
  void Label(Point at, double angle, const std::string& text);

  // The middle of a text that runs at an angle.
  struct Spot {
    Point middle;
    double angle;
  };
  // Writes a support at the first of the spots where it covers nothing. False: there was none. No
  // edges, leaders or labels may come after it.
  bool Support(const std::string& text, const std::vector<Spot>& spots);
  static double SupportWidth(const std::string& text);
  static constexpr double kSupportHalf = 3.5;  // of the height of a support

  // Below what is drawn so far: a line of a round length with the length and the unit, and a note.
  // Nothing if the scale is 0.
  void ScaleBar(double pixels_per_length, const std::string& unit);
  void Note(const std::string& text);

  // Cost: that of the elements.
  std::string Document() const;

 private:
  void Path(Point from, const std::string& rest, Point to, const char* kind);
  void Text(Point at, double angle, const std::string& text, const std::string& attributes);
  void Cover(Point p);

  Point least_;
  Point most_;
  std::string body_;
  std::vector<Bar> bars_;
  std::vector<Crowd> crowd_;  // of the bars: none before the first support, then one
};

}  // namespace zorvek::wide

#endif
