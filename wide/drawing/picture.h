// A picture as a file, of a kind that its name tells.
#ifndef ZORVEK_WIDE_DRAWING_PICTURE_H
#define ZORVEK_WIDE_DRAWING_PICTURE_H

#include <string>
#include <vector>

#include "wide/drawing/settings.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// What is wrong with the name of a picture, and what to do: it must end in .svg or .html, unless it
// is a stream (- or a device), which gets SVG. Empty if nothing is.
std::string PictureFault(const std::string& path);

// The content of the file.  Requires: no fault.
std::string DrawPicture(const std::string& path, const Tree& tree,
                        const std::vector<std::string>& labels, const DrawingSettings& settings);

}  // namespace zorvek::wide

#endif
