// What a picture shows beside the tree.
#ifndef ZORVEK_WIDE_DRAWING_SETTINGS_H
#define ZORVEK_WIDE_DRAWING_SETTINGS_H

#include <string>

namespace zorvek::wide {

enum class Layout {
  kPhylogram,  // edges from left to right, taxa one below the other
  kUnrooted,   // edges in all directions, each subtree in its own angle
};

struct DrawingSettings {
  Layout layout = Layout::kPhylogram;
  std::string unit;  // of the edge lengths, at the scale bar; empty where it is unknown
};

// Lower supports only crowd a picture.
constexpr double kLeastSupport = 0.5;

}  // namespace zorvek::wide

#endif
