// A page to look into a large tree with a browser.
#ifndef ZORVEK_WIDE_DRAWING_PAGE_H
#define ZORVEK_WIDE_DRAWING_PAGE_H

#include <string>
#include <vector>

#include "wide/drawing/settings.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// One HTML file that needs nothing else: page.html, which holds what the page does, with the tree in
// both layouts.  Cost: that of the layouts.
std::string DrawPage(const Tree& tree, const std::vector<std::string>& labels,
                     const DrawingSettings& settings);

// The text of page.html, in which the tree is to take the place of the word TREE.
extern const char kPageHtml[];

}  // namespace zorvek::wide

#endif
