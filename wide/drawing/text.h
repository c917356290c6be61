// Labels as text of a picture.
#ifndef ZORVEK_WIDE_DRAWING_TEXT_H
#define ZORVEK_WIDE_DRAWING_TEXT_H

#include <string>

namespace zorvek::wide {

// The text as CleanLabel has it, without the characters that XML or HTML have no place for.
std::string Drawable(const std::string& text);

// With &, < and > escaped, as XML wants it between tags.
std::string Escaped(const std::string& text);

// No less than the width of drawable text in the usual sans-serif fonts, in units of the font size.
double TextWidth(const std::string& text);

}  // namespace zorvek::wide

#endif
