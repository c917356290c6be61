#include "wide/drawing/picture.h"

#include <cctype>
#include <filesystem>

#include "wide/drawing/page.h"
#include "wide/drawing/svg.h"

namespace zorvek::wide {

namespace {

// With its point, in lower case.
std::string Ending(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ending;
}

}  // namespace

std::string PictureFault(const std::string& path) {
  const std::string ending = Ending(path);
  const bool nameless = path.empty() || path == "-" || path.rfind("/dev/", 0) == 0;
  if (nameless || ending == ".svg" || ending == ".html") return "";
  const std::string fault = path + ": a picture is an .svg or an .html file";
  if (ending != ".pdf" && ending != ".png" && ending != ".ps" && ending != ".eps") return fault;
  const std::string svg = std::filesystem::path(path).replace_extension(".svg").string();
  return fault + "; draw " + svg + " and convert it: rsvg-convert -f " + ending.substr(1) + " -o " +
         path + " " + svg;
}

std::string DrawPicture(const std::string& path, const Tree& tree,
                        const std::vector<std::string>& labels, const DrawingSettings& settings) {
  return Ending(path) == ".html" ? DrawPage(tree, labels, settings)
                                 : DrawSvg(tree, labels, settings);
}

}  // namespace zorvek::wide
