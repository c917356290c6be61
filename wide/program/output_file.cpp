#include "wide/program/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "wide/data/error.h"

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

OutputFile::OutputFile(const std::string& path) : path_(path), target_(path) {
  std::error_code ignored;
  if (fs::is_symlink(path, ignored)) target_ = Followed(path);
  const bool direct = fs::exists(target_, ignored) && !fs::is_regular_file(target_, ignored);
  if (direct) {
    descriptor_ = open(target_.c_str(), O_WRONLY);
  } else {
    temporary_ = target_ + ".tmp" + std::to_string(getpid());
    descriptor_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
  }
  if (descriptor_ >= 0) return;
  temporary_.clear();  // not ours
  Fail();
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::Write(const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = write(descriptor_, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) Fail();
    if (count > 0) done += static_cast<std::size_t>(count);
  }
}

void OutputFile::Commit() {
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (close(descriptor) != 0) Fail();
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail();
  temporary_.clear();
}

void OutputFile::Fail() const {
  throw Error(At(path_) + ": cannot be written: " + std::strerror(errno) +
              "; name a file that can be");
}

}  // namespace zorvek::wide
