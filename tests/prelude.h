// The parts of the standard library that most tests are made of.
#ifndef ZORVEK_TESTS_PRELUDE_H
#define ZORVEK_TESTS_PRELUDE_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#endif
