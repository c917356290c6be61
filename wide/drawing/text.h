// Labels as text of a picture.
#ifndef ZORVEK_WIDE_DRAWING_TEXT_H
#define ZORVEK_WIDE_DRAWING_TEXT_H

#include <string>

namespace zorvek::wide {

// Valid UTF-8 of characters that XML and HTML have a place for: bytes that are no UTF-8 are taken for
// Latin-1, control characters are dropped.
std::string Drawable(const std::string& text);

// With &, < and > escaped, as XML wants it between tags.
std::string Escaped(const std::string& text);

// No less than the width of drawable text in the usual sans-serif fonts, in units of the font size.
double TextWidth(const std::string& text);

}  // namespace zorvek::wide

#endif
