#include "wide/formats/matrix_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "wide/data/labels.h"
#include "wide/formats/numbers.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

// Matrices are mostly written with 5 or 6 decimals, and each half rounded by itself.
constexpr double kRounding = 1e-5;

bool SameButForRounding(double a, double b) {
  return std::abs(a - b) <= kRounding * std::max({std::abs(a), std::abs(b), 1.0});
}

// Whether the whole word is one number of this type.
template <typename Number>
bool ReadNumber(std::string_view word, Number& number) {
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return error == std::errc() && end == word.data() + word.size();
}

class MatrixParser {
 public:
  MatrixParser(const std::string& path, const std::string& text) : path_(path), words_(text) {}

  LabelledMatrix Parse() {
    const int n = ReadSize();
    values_.resize(static_cast<std::size_t>(n), std::vector<double>(static_cast<std::size_t>(n)));
    places_ = std::vector<std::vector<Word>>(values_.size(), std::vector<Word>(values_.size()));
    for (std::size_t i = 0; i < values_.size(); ++i) ReadRow(i);
    const Word rest = words_.Next();
    if (!rest.text.empty()) {
      Stop(rest, "\"" + std::string(rest.text) +
                     "\" after the last distance; the first line says " + std::to_string(n) +
                     " taxa, fix it or the rows");
    }
    CheckSymmetry();
    faults_.ThrowIfAny();
    return {std::move(labels_), Matrix(n)};
  }

 private:
  [[noreturn]] void Stop(const Word& place, const std::string& fault) {
    faults_.Add(At(path_, place.line, place.column) + ": " + fault);
    faults_.ThrowIfAny();
    throw Error(fault);
  }

  int ReadSize() {
    const Word word = words_.Next();
    int n = 0;
    if (!ReadNumber(word.text, n) || n < 1) {
      Stop(word, "no number of taxa; a square distance matrix begins with it");
    }
    // Each distance takes two characters at least, so a larger number is wrong, and not worth its
    // memory.
    if (static_cast<std::size_t>(n) > words_.TextSize() / static_cast<std::size_t>(n)) {
      Stop(word, "too few distances for a square matrix of " + std::string(word.text) +
                     " taxa; write all of both halves");
    }
    return n;
  }

  void ReadRow(std::size_t i) {
    const Word label = words_.Next();
    if (label.text.empty()) {
      Stop(label, "the file ends after " + std::to_string(i) + " of " +
                      std::to_string(values_.size()) + " taxa; fix the first line or add the rest");
    }
    labels_.emplace_back(label.text);
    for (std::size_t j = 0; j < values_.size(); ++j) ReadDistance(i, j);
  }

  void ReadDistance(std::size_t i, std::size_t j) {
    const Word word = words_.Next();
    double& value = values_[i][j];
    if (!ReadNumber(word.text, value)) {
      Stop(word, (word.text.empty() ? "the file ends" : "\"" + std::string(word.text) + "\"") +
                     " where distance " + std::to_string(j + 1) + " of " +
                     std::to_string(values_.size()) + " of " + labels_[i] +
                     " should stand; write a square matrix, labels without blanks");
    }
    places_[i][j] = word;
    const bool itself = i == j && value != 0;
    if (std::isfinite(value) && value >= 0 && !itself) return;
    faults_.Add(At(path_, word.line, word.column) + ": " +
                (itself ? "distance " + std::string(word.text) + " of " + labels_[i] + " to itself"
                        : "distance " + std::string(word.text)) +
                "; write " + (itself ? "0" : "a number that is 0 or more, or leave out the taxon"));
  }

  void CheckSymmetry() {
    for (std::size_t i = 0; i < values_.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const double a = values_[j][i];
        const double b = values_[i][j];
        if (!std::isfinite(a) || !std::isfinite(b) || SameButForRounding(a, b)) continue;
        faults_.Add(At(path_, places_[i][j].line, places_[i][j].column) + ": distance " +
                    Shortest(b) + " of " + labels_[i] + " to " + labels_[j] + ", but " +
                    Shortest(a) + " the other way; make them the same");
      }
    }
  }

  DistanceMatrix Matrix(int n) const {
    DistanceMatrix distances(n);
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < i; ++j) {
        const auto row = static_cast<std::size_t>(i);
        const auto column = static_cast<std::size_t>(j);
        distances.Set(i, j, (values_[row][column] + values_[column][row]) / 2);
      }
    }
    return distances;
  }

  std::string path_;
  Words words_;
  Faults faults_;
  std::vector<std::string> labels_;
  std::vector<std::vector<double>> values_;
  std::vector<std::vector<Word>> places_;
};

}  // namespace

LabelledMatrix ParseSquareMatrix(const std::string& path, const std::string& text) {
  return MatrixParser(path, text).Parse();
}

std::string FormatSquareMatrix(const std::vector<std::string>& labels,
                               const DistanceMatrix& distances) {
  std::string text = std::to_string(distances.Size()) + "\n";
  for (int i = 0; i < distances.Size(); ++i) {
    text += WithoutBlanks(labels[static_cast<std::size_t>(i)]);
    for (int j = 0; j < distances.Size(); ++j) text += " " + Shortest(distances(i, j));
    text += "\n";
  }
  return text;
}

}  // namespace zorvek::wide
