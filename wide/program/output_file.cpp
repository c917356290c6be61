#include "wide/program/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "zorvek/error.h"

namespace zorvek::wide {

namespace fs = std::filesystem;

namespace {

constexpr int kMostLinks = 40;  // that lead to each other

// Where a link leads, though nothing may be there yet.
std::string Followed(fs::path path) {
  std::error_code ignored;
  for (int links = 0; links < kMostLinks && fs::is_symlink(path, ignored); ++links) {
    path = path.parent_path() / fs::read_symlink(path, ignored);
  }
  return path.string();
}

}  // namespace

int DescriptorNamed(const std::string& path) {
  if (path == "-" || path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stdin") return STDIN_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (path.compare(0, folder.size(), folder) != 0) continue;
    int descriptor = -1;
    const char* end = path.data() + path.size();
    if (std::from_chars(path.data() + folder.size(), end, descriptor).ptr == end) return descriptor;
  }
  return -1;
}

OutputFile::OutputFile(const std::string& path)
    : path_(path == "-" ? "standard output" : path), target_(path) {
  std::error_code ignored;
  if (const int named = DescriptorNamed(path); named >= 0) {
    descriptor_ = dup(named);
    if (descriptor_ < 0) Fail();
    return;
  }
  if (fs::exists(path, ignored) && !fs::is_regular_file(path, ignored)) {
    descriptor_ = open(path.c_str(), O_WRONLY);
    if (descriptor_ < 0) Fail();
    return;
  }
  target_ = Followed(path);
  const std::string folder = fs::path(target_).parent_path().string();
  const bool there = access(target_.c_str(), F_OK) == 0;
  if (there && access(target_.c_str(), W_OK) != 0) Fail();
  if (access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) != 0) Fail();
  if (access(TemporaryName().c_str(), F_OK) != 0 && errno != ENOENT)
    Fail();  // the name is too long
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string OutputFile::TemporaryName() const {
  return target_ + ".tmp" + std::to_string(getpid());
}

void OutputFile::Put(int descriptor, const std::string& text) const {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno == EPIPE) {
      return;
    } else if (errno != EINTR) {
      Fail();
    }
  }
}

void OutputFile::Write(const std::function<void(const Sink&)>& content, std::mutex& lock) {
  if (IsDirect()) return content([this](const std::string& text) { Put(descriptor_, text); });
  int descriptor = -1;
  {
    const std::lock_guard<std::mutex> locked(lock);
    const std::string name = TemporaryName();
    descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) Fail();
    temporary_ = name;
  }
  struct stat before {};
  if (stat(target_.c_str(), &before) == 0) fchmod(descriptor, before.st_mode & 07777);
  try {
    content([&](const std::string& text) { Put(descriptor, text); });
  } catch (...) {
    close(descriptor);
    throw;
  }
  if (close(descriptor) != 0) Fail();
}

void OutputFile::Commit() {
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail();
  temporary_.clear();
}

void OutputFile::Discard() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
}

void OutputFile::Fail() const {
  throw Error(At(path_) + ": cannot be written: " + std::strerror(errno) +
              "; name another place, or one for all files with --prefix");
}

}  // namespace zorvek::wide
