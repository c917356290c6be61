#include "wide/search/descent.h"

#include <algorithm>

namespace zorvek::wide {

namespace {

constexpr std::size_t kJudged = 16;  // moves of one subtree that are judged, by decreasing gain

}  // namespace

Descent::Descent(std::unique_ptr<Neighbourhood> neighbourhood)
    : neighbourhood_(std::move(neighbourhood)), queued_(Index(Current().Nodes())) {}

void Descent::Everywhere(const Poll& poll) {
  for (int node = Current().taxa; node < Current().Nodes(); ++node) Enqueue(node);
  EmptyQueue(poll);
}

void Descent::Perturbed(std::mt19937_64& generator, const Poll& poll) {
  const int taxa = Current().taxa;
  int centre = taxa + static_cast<int>(generator() % static_cast<unsigned>(taxa - 2));
  const int moves = 3 + static_cast<int>(generator() % 4);
  for (int move = 0; move < moves; ++move) {
    centre = Wander(centre, generator);
    PerturbAt(centre, generator);
  }
  EmptyQueue(poll);
}

void Descent::Enqueue(int node) {
  if (Current().IsLeaf(node) || queued_[Index(node)]) return;
  queued_[Index(node)] = true;
  queue_.push_back(node);
}

void Descent::EmptyQueue(const Poll& poll) {
  while (!queue_.empty()) {
    const int node = queue_.front();
    queue_.pop_front();
    queued_[Index(node)] = false;
    if (!poll(queue_.size()) && ImproveAt(node)) Enqueue(node);
  }
}

bool Descent::ImproveAt(int node) {
  const std::array<int, 3> subtrees = Current().At(node);
  return std::any_of(subtrees.begin(), subtrees.end(),
                     [&](int subtree) { return Improve(node, subtree); });
}

// Judges the most promising moves of a subtree by the length they give, and makes the best one if that
// is shorter.
bool Descent::Improve(int holder, int subtree) {
  const double before = neighbourhood_->Length();
  const double margin = before * kShorter;
  found_.clear();
  neighbourhood_->SprMoves(holder, subtree, margin, found_);
  const std::size_t judged = std::min(kJudged, found_.size());
  std::partial_sort(found_.begin(), found_.begin() + static_cast<std::ptrdiff_t>(judged),
                    found_.end(),
                    [](const SprMove& x, const SprMove& y) { return x.gain > y.gain; });
  const SprMove* best = nullptr;
  double shortest = before - margin;
  for (std::size_t i = 0; i < judged; ++i) {
    const double length = neighbourhood_->LengthAfter(found_[i]);
    if (length < shortest) {
      shortest = length;
      best = &found_[i];
    }
  }
  if (best == nullptr) return false;
  Make(*best);
  return true;
}

// Makes a move and queues the nodes whose subtrees may have found a better place by it: those at the
// place it leaves and at the one it takes.
void Descent::Make(const SprMove& move) {
  const auto [a, b] = Current().Others(move.holder, move.subtree);
  neighbourhood_->Apply(move);
  for (const int node : {move.holder, move.subtree, a, b, move.from, move.to}) Enqueue(node);
}

// A node a few random steps away.
int Descent::Wander(int node, std::mt19937_64& generator) const {
  for (int step = 0; step < 3; ++step) {
    const int near = Current().At(node)[generator() % 3];
    if (!Current().IsLeaf(near)) node = near;
  }
  return node;
}

// Moves a random subtree at the node to a random place some steps away.
void Descent::PerturbAt(int node, std::mt19937_64& generator) {
  const Topology& tree = Current();
  SprMove move;
  move.holder = node;
  move.subtree = tree.At(node)[generator() % 3];
  const auto [a, b] = tree.Others(node, move.subtree);
  int behind = node;
  int at = generator() % 2 == 0 ? a : b;
  if (tree.IsLeaf(at)) at = at == a ? b : a;
  for (int steps = 1 + static_cast<int>(generator() % 8); steps > 0 && !tree.IsLeaf(at); --steps) {
    const auto [f, g] = tree.Others(at, behind);
    behind = at;
    at = generator() % 2 == 0 ? f : g;
  }
  if (behind == node) return;  // both neighbours are leaves: nowhere to go
  move.from = behind;
  move.to = at;
  Make(move);
}

}  // namespace zorvek::wide
