// Faults of the input or the output, as data.
#ifndef ZORVEK_ERROR_H
#define ZORVEK_ERROR_H

#include <stdexcept>
#include <string>
#include <vector>

namespace zorvek::wide {

// What a program might offer its user as the way out, in words of its own.
enum class Advice { kNone, kNameTheFormat, kReadAsMatrix, kReadAsAlignment };

struct Fault {
  std::string file;  // empty if it is no file's
  long line = 0;     // lines and columns count from 1; below that they are not known
  long column = 0;   // in bytes
  std::string text;  // what is wrong, and what to do
  Advice advice = Advice::kNone;
};

// "file:line:column: text", or as much of it as is known.
std::string Phrase(const Fault& fault);

// What a function of the library throws when its input or output is at fault. what() is all the
// faults, a line each.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& text) : Error(Fault{{}, 0, 0, text}) {}
  explicit Error(const Fault& fault) : Error(std::vector<Fault>{fault}, 0) {}
  Error(std::vector<Fault> faults, long more);

  const std::vector<Fault>& Faults() const { return faults_; }

  // How many faults there are besides those.
  long More() const { return more_; }

 private:
  std::vector<Fault> faults_;
  long more_;
};

// The faults of one kind, gathered while a file is read. The first 20 are kept, the others counted.
class FaultList {
 public:
  explicit FaultList(const std::string& file) : file_(file) {}

  void Add(long line, long column, const std::string& text);
  bool Any() const { return !faults_.empty(); }

  // Throws an Error with the faults, if there are any.
  void ThrowIfAny() const;

 private:
  std::string file_;
  std::vector<Fault> faults_;
  long more_ = 0;
};

// "path:line:column", or as much of it as is known.
std::string At(const std::string& path, long line = 0, long column = 0);

// The first 20 items, a separator between them, and how many more there are.
std::string Listed(const std::vector<std::string>& items, const std::string& separator);

}  // namespace zorvek::wide

#endif
