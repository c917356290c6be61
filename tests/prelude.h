// What most tests are made of: parts of the standard library, and Index.
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

#include "core/index.h"

#endif
