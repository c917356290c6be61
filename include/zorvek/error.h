// Faults of the input or the output, told to the user.
#ifndef ZORVEK_ERROR_H
#define ZORVEK_ERROR_H

#include <stdexcept>
#include <string>
#include <vector>

namespace zorvek::wide {

// Ends the program with status 1. The text says where, what, and what to do:
// "FILE:LINE:COLUMN: what; what to do". Several faults of a kind stand on a line each.
struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "path:line:column", or as much of it as is known (a line or column below 1 is not).
std::string At(const std::string& path, long line = 0, long column = 0);

// The faults of one kind, gathered while a file is read.
class Faults {
 public:
  void Add(const std::string& fault) { faults_.push_back(fault); }
  bool Any() const { return !faults_.empty(); }

  // Throws an Error with the faults, a line each, the first 20 of them, if there are any.
  void ThrowIfAny() const;

 private:
  std::vector<std::string> faults_;
};

// The first 20 items, a separator between them, and how many more there are.
std::string Listed(const std::vector<std::string>& items, const std::string& separator);

}  // namespace zorvek::wide

#endif
