#include "wide/data/labels.h"

#include <algorithm>
#include <map>

#include "wide/data/ascii.h"

namespace zorvek::wide {

namespace {

std::string Quoted(const std::string& label, const char* special) {
  if (!label.empty() && label.find_first_of(special) == label.npos) return WithoutBlanks(label);
  std::string quoted = "'";
  for (const char c : label) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

}  // namespace

std::string WithoutBlanks(std::string label) {
  std::replace_if(label.begin(), label.end(), IsBlank, '_');
  return label;
}

std::string Folded(const std::string& label) {
  std::string folded = WithoutBlanks(label);
  std::transform(folded.begin(), folded.end(), folded.begin(), ToLower);
  return folded;
}

std::vector<std::vector<std::size_t>> Duplicates(const std::vector<std::string>& labels) {
  std::map<std::string, std::vector<std::size_t>> same;
  for (std::size_t i = 0; i < labels.size(); ++i) same[Folded(labels[i])].push_back(i);
  std::vector<std::vector<std::size_t>> groups;
  for (auto& [label, group] : same) {
    if (group.size() > 1) groups.push_back(std::move(group));
  }
  std::sort(groups.begin(), groups.end());
  return groups;
}

std::string QuotedForNewick(const std::string& label) {
  return Quoted(label, "()[]':;,");
}

std::string QuotedForNexus(const std::string& label) {
  return Quoted(label, "()[]{}/\\,;:=*'\"`+-<>");
}

}  // namespace zorvek::wide
