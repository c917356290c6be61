#include "wide/program/messages.h"

namespace zorvek::wide {

namespace {

std::string Option(Advice advice) {
  switch (advice) {
    case Advice::kNone:
      return "";
    case Advice::kNameTheFormat:
      return "; give --format if it is one";
    case Advice::kReadAsMatrix:
      return ", and give --matrix for a distance matrix";
    case Advice::kReadAsAlignment:
      return "; leave out --matrix for an alignment";
  }
  return "";
}

}  // namespace

std::string Message(const Error& error) {
  std::string text;
  for (const Fault& fault : error.Faults()) {
    text += (text.empty() ? "" : "\n") + Phrase(fault) + Option(fault.advice);
  }
  return error.More() == 0 ? text : text + "\nand " + std::to_string(error.More()) + " more";
}

}  // namespace zorvek::wide
