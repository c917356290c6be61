#include "wide/search/descent.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

#include "core/index.h"
#include "core/parallel.h"

namespace zorvek::wide {

namespace {

// So many taxa to a move make it cheaper to make all averages of the tree anew than to make the moves
// one by one.
constexpr std::size_t kTaxaPerMove = 50;

constexpr int kScanned = 16;  // nodes that a thread looks around at a time

constexpr double kFirstShare = 0.4;  // of subtrees that move when annealing begins
constexpr double kFirstHeat = 0.1;   // in mean edge lengths, until it follows the share
constexpr double kFollow = 0.02;     // by which it does, of its logarithm, with each subtree
constexpr int kUnpolled = 32;        // subtrees settled between two polls

constexpr int kTogether = 64;  // of a long queue, looked around before any of them is moved

// Those of the moves, which are in order of preference, that are far enough from the ones before them not
// to change what these gain, nor where they go: the way of each, from its holder to its new place,
// touches no neighbour of theirs.
std::vector<SprMove> Apart(const std::vector<SprMove>& moves, const Topology& tree) {
  std::vector<int> parent(Index(tree.Nodes()), -1), depth(Index(tree.Nodes()));
  std::vector<int> open{tree.leaf_adjacent[0]};
  parent[Index(open[0])] = 0;
  while (!open.empty()) {
    const int node = open.back();
    open.pop_back();
    if (tree.IsLeaf(node)) continue;
    const auto [a, b] = tree.Others(node, parent[Index(node)]);
    for (const int near : {a, b}) {
      parent[Index(near)] = node;
      depth[Index(near)] = depth[Index(node)] + 1;
      open.push_back(near);
    }
  }
  std::vector<char> taken(Index(tree.Nodes()));
  std::vector<SprMove> apart;
  std::vector<int> way;
  for (const SprMove& move : moves) {
    int u = move.holder, v = move.from;
    way = {u, v};
    while (u != v) {
      int& lower = depth[Index(u)] > depth[Index(v)] ? u : v;
      lower = parent[Index(lower)];
      way.push_back(lower);
    }
    if (std::any_of(way.begin(), way.end(), [&](int node) { return taken[Index(node)] != 0; })) {
      continue;
    }
    apart.push_back(move);
    for (const int node : way) {
      for (const int near : tree.At(node)) taken[Index(near)] = true;
    }
  }
  return apart;
}

void SortByGain(std::vector<SprMove>& moves) {
  std::stable_sort(moves.begin(), moves.end(),
                   [](const SprMove& x, const SprMove& y) { return x.gain > y.gain; });
}

}  // namespace

Descent::Descent(std::unique_ptr<Neighbourhood> neighbourhood)
    : neighbourhood_(std::move(neighbourhood)), queued_(Index(Current().Nodes())) {}

void Descent::ByNni(const Poll& poll, bool to_the_end) {
  const std::size_t many = Index(Current().taxa) / kTaxaPerMove;
  for (double rounds = 1;; ++rounds) {
    const std::vector<SprMove> moves = Apart(NniMoves(), Current());
    if (moves.empty() || poll(1 - 1 / rounds)) return;
    if (!to_the_end && moves.size() <= many && neighbourhood_->MovesAreDear()) return;
    if (!(moves.size() > many ? MakeTogether(moves) : MakeNnisSingly(moves))) return;
  }
}

// The best NNI of each internal edge that has any, by decreasing gain.
std::vector<SprMove> Descent::NniMoves() {
  const Topology& tree = Current();
  std::vector<SprMove> moves;
  for (int node = tree.taxa; node < tree.Nodes(); ++node) {
    for (const int near : tree.At(node)) {
      SprMove move;
      if (near > node && neighbourhood_->BestNni(node, near, move)) moves.push_back(move);
    }
  }
  SortByGain(moves);
  return moves;
}

// Makes the moves, the first half of them where all do not make the tree shorter, and so on.
bool Descent::MakeTogether(const std::vector<SprMove>& moves) {
  const Topology before = Current();
  const double least = neighbourhood_->Length() - neighbourhood_->Margin();
  for (std::size_t count = moves.size(); count > 0; count /= 2) {
    Topology after = before;
    for (std::size_t k = 0; k < count; ++k) after.Apply(moves[k]);
    neighbourhood_->Set(after);
    if (neighbourhood_->Length() < least) return true;
  }
  neighbourhood_->Set(before);
  return false;
}

// Makes the moves one by one, each only if it still shortens the tree.
bool Descent::MakeNnisSingly(const std::vector<SprMove>& moves) {
  bool any = false;
  for (const SprMove& move : moves) {
    SprMove best;
    if (!neighbourhood_->BestNni(move.holder, move.from, best)) continue;
    neighbourhood_->Apply(best);
    any = true;
  }
  return any;
}

void Descent::BySpr(const Poll& poll) {
  if (neighbourhood_->MovesAreDear()) {
    while (SprRound(poll)) {
    }
    return;
  }
  do {
    for (const int node : InnerNodes()) Enqueue(node);
  } while (EmptyQueue(poll));
}

// Looks around all nodes of one fixed tree, which threads can share, then makes the moves that were found:
// if they are many, those that do not meddle with each other, all together. Returns whether there were any
// and the poll lets the descent go on.
bool Descent::SprRound(const Poll& poll) {
  const std::vector<SprMove> moves = SprMoves(poll);
  if (moves.empty()) return false;
  const std::vector<SprMove> apart = Apart(moves, Current());
  if (apart.size() > Index(Current().taxa) / kTaxaPerMove && MakeTogether(apart)) return true;
  for (const SprMove& move : moves) Enqueue(move.holder);
  EmptyQueue(poll);
  return true;
}

// The best SPR move around each node that has any, by decreasing gain; none when the poll says so.
std::vector<SprMove> Descent::SprMoves(const Poll& poll) {
  const std::vector<int> nodes = InnerNodes();
  const auto all = static_cast<double>(nodes.size());
  std::vector<SprMove> moves = LookAround(nodes, [&](int done) { return poll(done / all); });
  moves.erase(std::remove_if(moves.begin(), moves.end(),
                             [](const SprMove& move) { return move.holder < 0; }),
              moves.end());
  SortByGain(moves);
  return moves;
}

// The best SPR move around each of the nodes, with the holder -1 where there is none. The threads share the
// nodes; the poll is told how many are done, and ends it with none when it says so.
std::vector<SprMove> Descent::LookAround(const std::vector<int>& nodes,
                                         const std::function<bool(int)>& poll) {
  const int count = static_cast<int>(nodes.size());
  std::vector<SprMove> moves(nodes.size());
  std::atomic<bool> stopped{false};
  neighbourhood_->Scan();
  ForEach((count + kScanned - 1) / kScanned, neighbourhood_->Threads(), [&](int part, int thread) {
    const int from = part * kScanned;
    if (thread == 0 && poll(from)) stopped = true;
    for (int k = from; k < std::min(from + kScanned, count) && !stopped; ++k) {
      BestAround(nodes[Index(k)], thread, moves[Index(k)]);
    }
  });
  if (stopped) return {};
  return moves;
}

std::vector<double> GumbelNoise() {
  std::mt19937_64 generator(1);
  std::vector<double> numbers(1 << 14);
  for (double& number : numbers) {
    const double uniform = (static_cast<double>(generator() >> 11) + 0.5) * 0x1p-53;
    number = -std::log(-std::log(uniform));
  }
  return numbers;
}

void Descent::Anneal(long settled, const std::vector<double>& noise, std::mt19937_64& generator,
                     const Poll& poll) {
  const auto inner = static_cast<unsigned>(Current().taxa - 2);
  const std::size_t offsets = noise.size() - Index(Current().Nodes()) - 2;
  double heat = kFirstHeat * MeanEdge();
  Topology best = Current();
  double least = neighbourhood_->Length();
  for (long k = 0; k < settled && heat > 0; ++k) {
    if (k % kUnpolled == 0 && poll(0)) break;
    const std::uint64_t random = generator();
    const int node = Current().taxa + static_cast<int>(random % inner);
    const int subtree = Current().At(node)[(random >> 32) % 3];
    SprMove move;
    const bool moves =
        neighbourhood_->Resettle(node, subtree, heat, &noise[generator() % offsets], move);
    const double share =
        kFirstShare * static_cast<double>(settled - k) / static_cast<double>(settled);
    heat *= std::exp(kFollow * (moves ? share - 1 : share));
    if (!moves) continue;
    neighbourhood_->Apply(move);
    if (neighbourhood_->Length() < least - neighbourhood_->Margin()) {
      least = neighbourhood_->Length();
      best = Current();
    }
  }
  if (neighbourhood_->Length() > least) neighbourhood_->Set(best);
  BySpr(poll);
}

double Descent::MeanEdge() const {
  double sum = 0;
  for (int node = Current().taxa; node < Current().Nodes(); ++node) {
    for (const int near : Current().At(node)) {
      if (near < node) sum += std::fabs(neighbourhood_->EdgeLength(node, near));
    }
  }
  return sum / (2 * Current().taxa - 3);
}

void Descent::Enqueue(int node) {
  if (Current().IsLeaf(node) || queued_[Index(node)]) return;
  queued_[Index(node)] = true;
  queue_.push_back(node);
}

// Neighbours one after the other, since they look at the same averages.
std::vector<int> Descent::InnerNodes() const {
  const Topology& tree = Current();
  std::vector<int> nodes;
  std::vector<std::pair<int, int>> open{{tree.leaf_adjacent[0], 0}};  // and where from
  while (!open.empty()) {
    const auto [node, behind] = open.back();
    open.pop_back();
    nodes.push_back(node);
    const auto [a, b] = tree.Others(node, behind);
    for (const int near : {a, b}) {
      if (!tree.IsLeaf(near)) open.emplace_back(near, node);
    }
  }
  return nodes;
}

bool Descent::EmptyQueue(const Poll& poll) {
  bool any = false;
  const auto all = static_cast<double>(Current().taxa - 2);
  const auto stops = [&](int done) {
    return poll(std::max(0.0, 1 - static_cast<double>(queue_.size() - Index(done)) / all));
  };
  while (!queue_.empty()) {
    const bool together = queue_.size() >= kTogether && !neighbourhood_->MovesAreDear();
    const std::ptrdiff_t count = together ? kTogether : 1;
    std::vector<int> nodes(queue_.begin(), queue_.begin() + count);
    if (together ? !KeepMovable(nodes, stops) : stops(0)) {
      for (const int node : queue_) queued_[Index(node)] = false;
      queue_.clear();
      return false;
    }
    for (std::ptrdiff_t k = 0; k < count; ++k, queue_.pop_front()) {
      queued_[Index(queue_.front())] = false;
    }
    for (const int node : nodes) {
      if (!ImproveAt(node)) continue;
      Enqueue(node);
      any = true;
    }
  }
  return any;
}

// Keeps the nodes that have a move in the tree as it is. Returns whether the poll lets it.
bool Descent::KeepMovable(std::vector<int>& nodes, const std::function<bool(int)>& poll) {
  const std::vector<SprMove> moves = LookAround(nodes, poll);
  if (moves.empty()) return false;
  std::size_t kept = 0;
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    if (moves[k].holder >= 0) nodes[kept++] = nodes[k];
  }
  nodes.resize(kept);
  return true;
}

// The best of the moves of the three subtrees around a node.
bool Descent::BestAround(int node, int thread, SprMove& best) {
  bool any = false;
  for (const int subtree : Current().At(node)) {
    SprMove move;
    if (!neighbourhood_->BestSpr(node, subtree, move, thread)) continue;
    if (!any || move.gain > best.gain) best = move;
    any = true;
  }
  return any;
}

bool Descent::ImproveAt(int node) {
  for (const int subtree : Current().At(node)) {
    SprMove best;
    if (!neighbourhood_->BestSpr(node, subtree, best)) continue;
    Make(best);
    return true;
  }
  return false;
}

// Makes a move and queues the nodes whose subtrees may have found a better place by it: those at the
// place it leaves and at the one it takes.
void Descent::Make(const SprMove& move) {
  const auto [a, b] = Current().Others(move.holder, move.subtree);
  neighbourhood_->Apply(move);
  for (const int node : {move.holder, move.subtree, a, b, move.from, move.to}) Enqueue(node);
}

}  // namespace zorvek::wide
