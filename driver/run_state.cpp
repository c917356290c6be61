#include "driver/run_state.h"

namespace zorvek {

int n = 0;
DistanceMatrix DM1 = nullptr;
int** CL = nullptr;
NxsTaxaBlock* taxa = nullptr;
NxsTreesBlock* trees = nullptr;

TreeTable OPT = nullptr;
TreeTable T1 = nullptr;
TreeTable T2 = nullptr;
DistanceMatrix EM = nullptr;

double opt_val = 100000000.0;
double t1_val = 100000000.0;
double t2_val = 0;

int time_val = 0;
int MAX_TIME = 0;

int horizon = 0;
double alpha = 0;
int n_ants = 0;

std::vector<int> temp1;
std::ofstream outf;
std::ofstream outML;
MTRand* r = nullptr;
Timer* t = nullptr;

}  // namespace zorvek
