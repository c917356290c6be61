// The order of an exchange sort in n log n.
//
// The exchange sort finds for each position the minimum of what follows it, and on the way moves
// every entry that was the least so far to the place of the next smaller one. So it sorts by
// distance, but a pass also moves the first entry of distance v behind some of its equals: to the
// place of the first entry that is smaller than v, if that comes later. Between the entries of
// distance v the passes thus play a queue: walk the list as it was before the sort; an entry of
// distance v joins the queue at its end, and at a smaller entry the head of the queue goes to the
// end. What the queue holds after the walk is the order in which the sort leaves the entries of
// distance v.
//
//   before  2a 1 2b 2c 1
//   queue   2a | 2a | 2a 2b | 2a 2b 2c | 2b 2c 2a
//   after   1 1 2b 2c 2a
//
// For the walk only the number of smaller entries between neighbouring equals matters, and a
// Fenwick tree [Fenwick1994] over the places gives it.
#include "tree/candidate_lists.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "driver/run_state.h"

namespace zorvek {

namespace {

struct Candidate {
  double distance;
  int place;  // before the sort
  int taxon;
};

// How many of the marked places are before a given one.
class MarkedPlaces {
 public:
  explicit MarkedPlaces(std::size_t places) : sums_(places + 1) {}

  void Mark(int place) {
    for (auto i = static_cast<std::size_t>(place) + 1; i < sums_.size(); i += i & (~i + 1))
      ++sums_[i];
    ++marked_;
  }

  int Before(int place) const {
    int count = 0;
    for (auto i = static_cast<std::size_t>(place); i > 0; i &= i - 1) count += sums_[i];
    return count;
  }

  int All() const { return marked_; }

 private:
  std::vector<int> sums_;
  int marked_ = 0;
};

using Iterator = std::vector<Candidate>::iterator;

// Walks the queue of one group of equals, which is given in the order of their places. `smaller`
// marks the places of all smaller entries.
void OrderEquals(Iterator begin, Iterator end, const MarkedPlaces& smaller) {
  std::vector<Candidate> queue;  // with what has left it in front of `head`
  std::size_t head = 0;
  for (Iterator entry = begin; entry != end; ++entry) {
    queue.push_back(*entry);
    const int until = entry + 1 == end ? smaller.All() : smaller.Before((entry + 1)->place);
    const auto moves = static_cast<std::size_t>(until - smaller.Before(entry->place));
    for (std::size_t left = moves % (queue.size() - head); left > 0; --left) {
      queue.push_back(queue[head++]);
    }
  }
  std::copy(queue.begin() + static_cast<std::ptrdiff_t>(head), queue.end(), begin);
}

void SortRow(std::vector<Candidate>& row) {
  std::sort(row.begin(), row.end(), [](const Candidate& a, const Candidate& b) {
    return a.distance != b.distance ? a.distance < b.distance : a.place < b.place;
  });
  const auto equal = [](const Candidate& a, const Candidate& b) {
    return a.distance == b.distance;
  };
  if (std::adjacent_find(row.begin(), row.end(), equal) == row.end()) return;

  MarkedPlaces smaller(row.size());
  for (Iterator group = row.begin(); group != row.end();) {
    const Iterator end =
        std::find_if(group, row.end(), [&](const Candidate& c) { return !equal(c, *group); });
    std::vector<int> places;
    for (Iterator entry = group; entry != end; ++entry) places.push_back(entry->place);
    if (places.size() > 1) OrderEquals(group, end, smaller);
    for (const int place : places) smaller.Mark(place);
    group = end;
  }
}

}  // namespace

void BuildCL() {
  std::vector<Candidate> row(static_cast<std::size_t>(std::max(n - 1, 0)));
  for (int i = 0; i < n; ++i) {
    for (int place = 0; place < n - 1; ++place) {
      const int taxon = CL[i][place];
      row[static_cast<std::size_t>(place)] = {DM1[i][taxon], place, taxon};
    }
    SortRow(row);
    std::transform(row.begin(), row.end(), CL[i], [](const Candidate& c) { return c.taxon; });
  }
}

}  // namespace zorvek
