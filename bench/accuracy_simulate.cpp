// accuracy_simulate TAXA SITES HEIGHT SEED PREFIX: sequences with a known tree. Writes PREFIX.fa and PREFIX.nwk.
//
// The tree is that of the living lineages of a birth-death process, stopped at so many of them, and HEIGHT
// expected substitutions per site high; the rate of each edge then differs by a lognormal factor. Sites
// evolve under a general time-reversible model with unequal frequencies, at gamma-distributed rates.
// Stretches are lost along the edges, ends are missing, and some nucleotides are not told.
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kDeathRate = 0.5;      // of lineages, where births have rate 1
constexpr double kRateDeviation = 0.4;  // of the logarithm of an edge's rate
constexpr double kShape = 0.6;          // of the rates among sites
constexpr std::array<double, 4> kShares{0.33, 0.18, 0.17, 0.32};
constexpr double kLossesPerHeight = 8;  // stretches lost on a path from the root to a leaf
constexpr double kMeanLoss = 12;        // sites
constexpr double kMostMissing = 0.04;   // share of the sites, at each end of a sequence
constexpr double kUntold = 0.003;       // share of the nucleotides

using Random = std::mt19937_64;

struct Node {
  int parent = -1;
  double time = 0;    // at the node, from the root
  double length = 0;  // of the edge above, in substitutions per site
  std::vector<int> children;
};

double Uniform(Random& random) {
  return std::uniform_real_distribution<double>(0, 1)(random);
}

// All lineages that ever lived, parents before children, and the nodes of those that live in the end.
// Begins anew when all die.
std::pair<std::vector<Node>, std::vector<int>> GrowTree(std::size_t taxa, Random& random) {
  std::vector<Node> nodes(1);
  std::vector<int> living{0};
  double time = 0;
  while (living.size() < taxa) {
    if (living.empty()) return GrowTree(taxa, random);
    time += std::exponential_distribution<double>(static_cast<double>(living.size()))(random);
    const std::size_t chosen = random() % living.size();
    const int node = living[chosen];
    nodes[static_cast<std::size_t>(node)].time = time;
    living[chosen] = living.back();
    living.pop_back();
    if (Uniform(random) < kDeathRate / (1 + kDeathRate)) continue;
    for (int child = 0; child < 2; ++child) {
      living.push_back(static_cast<int>(nodes.size()));
      nodes.push_back({node, 0, 0, {}});
    }
  }
  time += 1 / static_cast<double>(taxa);
  for (const int node : living) nodes[static_cast<std::size_t>(node)].time = time;
  return {std::move(nodes), std::move(living)};
}

// Keeps what leads to the living, and gives the edges their lengths. Returns the root.
int Prune(double height, const std::vector<int>& living, std::vector<Node>& nodes, Random& random) {
  std::vector<bool> kept(nodes.size());
  for (const int leaf : living) {
    for (int node = leaf; node >= 0 && !kept[static_cast<std::size_t>(node)];
         node = nodes[static_cast<std::size_t>(node)].parent) {
      kept[static_cast<std::size_t>(node)] = true;
    }
  }
  for (std::size_t k = 1; k < nodes.size(); ++k) {
    if (kept[k]) {
      nodes[static_cast<std::size_t>(nodes[k].parent)].children.push_back(static_cast<int>(k));
    }
  }
  int root = 0;  // the last common ancestor
  while (nodes[static_cast<std::size_t>(root)].children.size() == 1) {
    root = nodes[static_cast<std::size_t>(root)].children[0];
  }
  const double begin = nodes[static_cast<std::size_t>(root)].time;
  const double scale = height / (nodes[static_cast<std::size_t>(living[0])].time - begin);
  for (Node& node : nodes) {
    if (node.parent < 0) continue;
    const double before = nodes[static_cast<std::size_t>(node.parent)].time;
    const double rate = std::lognormal_distribution<double>(-kRateDeviation * kRateDeviation / 2,
                                                            kRateDeviation)(random);
    node.length = (node.time - before) * scale * rate;
  }
  return root;
}

// Substitution by events at a constant rate, some of which change nothing: row x tells, cumulated, what x
// becomes at an event.
struct Process {
  double events = 0;  // per expected substitution
  std::array<std::array<double, 4>, 4> becomes{};
};

Process RandomProcess(Random& random) {
  std::array<std::array<double, 4>, 4> rate{};
  double mean = 0;
  double most = 0;
  for (std::size_t x = 0; x < 4; ++x) {
    for (std::size_t y = 0; y < x; ++y) {
      const bool transition = (x ^ y) == 2;  // A 0, C 1, G 2, T 3
      rate[x][y] = rate[y][x] = (transition ? 4 : 1) * (0.5 + Uniform(random));
    }
  }
  for (std::size_t x = 0; x < 4; ++x) {
    double leaves = 0;
    for (std::size_t y = 0; y < 4; ++y) leaves += rate[x][y] *= kShares[y];
    mean += kShares[x] * leaves;
    most = std::max(most, leaves);
  }
  Process process;
  process.events = most / mean;
  for (std::size_t x = 0; x < 4; ++x) {
    double others = 0;
    for (std::size_t y = 0; y < 4; ++y) others += rate[x][y];
    rate[x][x] = most - others;
    std::partial_sum(rate[x].begin(), rate[x].end(), process.becomes[x].begin());
    for (double& sum : process.becomes[x]) sum /= most;
  }
  return process;
}

std::size_t Draw(const std::array<double, 4>& cumulated, Random& random) {
  const double x = Uniform(random);
  std::size_t y = 0;
  while (y < 3 && x > cumulated[y]) ++y;
  return y;
}

constexpr std::size_t kLost = 4;

void Evolve(const Process& process, const std::vector<double>& rates, double length, double height,
            std::vector<std::size_t>& sites, Random& random) {
  for (std::size_t k = 0; k < sites.size(); ++k) {
    if (sites[k] == kLost) continue;
    std::poisson_distribution<int> events(process.events * rates[k] * length);
    for (int event = events(random); event > 0; --event) {
      sites[k] = Draw(process.becomes[sites[k]], random);
    }
  }
  std::poisson_distribution<int> losses(kLossesPerHeight * length / height);
  for (int loss = losses(random); loss > 0; --loss) {
    const std::size_t begin = random() % sites.size();
    const auto count = std::geometric_distribution<std::size_t>(1 / kMeanLoss)(random);
    std::fill(sites.begin() + static_cast<std::ptrdiff_t>(begin),
              sites.begin() + static_cast<std::ptrdiff_t>(std::min(begin + count, sites.size())),
              kLost);
  }
}

std::string Letters(const std::vector<std::size_t>& sites, Random& random) {
  std::string letters;
  for (const std::size_t site : sites) {
    letters += site != kLost && Uniform(random) < kUntold ? 'N' : "ACGT-"[site];
  }
  for (const bool at_end : {false, true}) {
    const auto missing = static_cast<std::size_t>(Uniform(random) * kMostMissing *
                                                  static_cast<double>(letters.size()));
    letters.replace(at_end ? letters.size() - missing : 0, missing, missing, '?');
  }
  return letters;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::cerr << "usage: accuracy_simulate TAXA SITES HEIGHT SEED PREFIX\n";
    return 2;
  }
  const auto taxa = static_cast<std::size_t>(std::atol(argv[1]));
  const auto count = static_cast<std::size_t>(std::atol(argv[2]));
  const double height = std::atof(argv[3]);
  Random random(static_cast<std::uint64_t>(std::atol(argv[4])));
  auto [nodes, living] = GrowTree(taxa, random);
  const int root = Prune(height, living, nodes, random);

  const Process process = RandomProcess(random);
  std::vector<double> rates(count);
  for (double& rate : rates) rate = std::gamma_distribution<double>(kShape, 1 / kShape)(random);
  std::array<double, 4> cumulated{};
  std::partial_sum(kShares.begin(), kShares.end(), cumulated.begin());
  std::vector<std::vector<std::size_t>> sites(nodes.size());
  std::vector<std::string> text(nodes.size());
  std::ofstream fasta(std::string(argv[5]) + ".fa");
  for (std::size_t k = static_cast<std::size_t>(root); k < nodes.size(); ++k) {
    const int parent = nodes[k].parent;
    if (static_cast<int>(k) == root) {
      for (std::size_t site = 0; site < count; ++site) sites[k].push_back(Draw(cumulated, random));
    } else if (parent >= 0 && !sites[static_cast<std::size_t>(parent)].empty()) {
      sites[k] = sites[static_cast<std::size_t>(parent)];
      Evolve(process, rates, nodes[k].length, height, sites[k], random);
    }
  }
  for (const int leaf : living) {
    fasta << ">t" << leaf << "\n" << Letters(sites[static_cast<std::size_t>(leaf)], random) << "\n";
    text[static_cast<std::size_t>(leaf)] = "t" + std::to_string(leaf);
  }
  // A node with one child stands for no more than its part of the edge.
  std::vector<double> below(nodes.size());
  for (std::size_t k = nodes.size(); k-- > static_cast<std::size_t>(root);) {
    for (const int child : nodes[k].children) {
      const auto index = static_cast<std::size_t>(child);
      const double length = nodes[index].length + below[index];
      if (nodes[k].children.size() == 1) {
        text[k] = text[index];
        below[k] = length;
      } else {
        text[k] += (text[k].empty() ? "(" : ",") + text[index] + ":" + std::to_string(length);
      }
    }
    if (nodes[k].children.size() == 2) text[k] += ")";
  }
  std::ofstream(std::string(argv[5]) + ".nwk") << text[static_cast<std::size_t>(root)] << ";\n";
}
