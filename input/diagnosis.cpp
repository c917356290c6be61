// MyReader leaves errors to NCL, which keeps them to itself. When a run cannot go on, the file is
// read again by a reader that listens.
#include "input/diagnosis.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <new>

#include "driver/run_state.h"
#include "input/nexus_fence.h"

namespace zorvek {

namespace {

// The message on one line, with blanks for whatever is not printable, and not beyond bounds: it may
// quote the file.
std::string OneLine(const std::string& message) {
  constexpr std::size_t kLongest = 300;
  std::string line;
  for (const char c : message.substr(0, kLongest)) {
    const bool printable = std::isprint(static_cast<unsigned char>(c)) != 0 || (c & 0x80) != 0;
    if (printable && c != ' ') {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  if (message.size() > kLongest) return line + "...";
  return line.substr(0, line.find_last_not_of(" .") + 1);
}

std::string WithPosition(const std::string& message, long line, long column) {
  if (line <= 0) return OneLine(message);
  return OneLine(message) + " (line " + std::to_string(line) + ", column " +
         std::to_string(column) + ")";
}

// Reads in silence and keeps the first message of each kind.
class DiagnosingReader : public NxsReader {
 public:
  bool EnteringBlock(NxsString blockName) override {
    if (blockName == "DATA") sawData = true;
    return true;
  }

  void SkippingBlock(NxsString blockName) override {
    if (blockName == "CHARACTERS") sawCharacters = true;
  }

  void NexusError(NxsString message, file_pos, long line, long column) override {
    if (error.empty()) error = WithPosition(message, line, column);
  }

  void NexusWarn(const std::string& message, NxsWarnLevel level, file_pos position, long line,
                 long column) override {
    if (warning.empty()) warning = WithPosition(message, line, column);
    NxsReader::NexusWarn(message, level, position, line, column);
  }

  bool sawData = false;
  bool sawCharacters = false;
  std::string error;
  std::string warning;
};

// The operating system's complaint about the file, empty if it has none.
std::string SystemError(const char* path) {
  const int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return std::strerror(errno);
  char byte;
  const bool readable = read(file, &byte, 1) >= 0;
  const int code = errno;
  close(file);
  return readable ? "" : std::strerror(code);
}

// Reads the file into the blocks; an exception becomes the reader's error.
void Listen(const char* path, NexusBlocks& blocks, DiagnosingReader& reader) {
  std::ifstream file(path, std::ios::in | std::ios::binary);
  blocks.Register(reader);
  try {
    FencedInput input(file.rdbuf(), path);
    NxsToken token(input);
    reader.Execute(token);
  } catch (const NxsException& exception) {
    reader.NexusError(exception.msg, exception.pos, exception.line, exception.col);
  } catch (const std::bad_alloc&) {
    reader.NexusError("it needs more memory than there is", 0, 0, 0);
  } catch (const std::exception& exception) {
    reader.NexusError(exception.what(), 0, 0, 0);
  } catch (...) {
    reader.NexusError("the NEXUS library gave up", 0, 0, 0);
  }
}

std::string OnlyTaxa(unsigned count) {
  return "only " + std::to_string(count) + (count == 1 ? " taxon was" : " taxa were");
}

}  // namespace

std::string DiagnoseInput(const char* path) {
  const std::string systemError = SystemError(path);
  if (!systemError.empty()) return systemError;
  struct stat status {};
  if (stat(path, &status) != 0 || !S_ISREG(status.st_mode)) {
    if (n > 0) return OnlyTaxa(static_cast<unsigned>(n)) + " read from its DATA block";
    return "it is not a regular file, so it cannot be read again for the cause";
  }
  if (status.st_size == 0) return "it is empty";

  NexusBlocks blocks(path);
  DiagnosingReader reader;
  Listen(path, blocks, reader);
  const unsigned rows = blocks.data->GetNTaxWithData();
  if (rows > blocks.taxa->GetNTax()) {
    return OnlyTaxa(blocks.taxa->GetNTax()) + " left by a TAXA block after its DATA block with " +
           std::to_string(rows);
  }
  if (rows > 0) return OnlyTaxa(rows) + " read from its DATA block";
  if (!reader.sawData && reader.sawCharacters) {
    return "it has a CHARACTERS block but no DATA block; name the block DATA and give NTAX in its "
           "DIMENSIONS command";
  }
  if (!reader.error.empty()) return reader.error;
  if (reader.sawData) return "no taxa were read from its DATA block";
  return reader.warning.empty() ? "it has no DATA block" : reader.warning;
}

}  // namespace zorvek
