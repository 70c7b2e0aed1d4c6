// What the tests of every room begin with. Tests run on Linux alone: tools/wine_test compares with Windows.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <doctest/doctest.h>
#include <filesystem>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "support/captured_output.h"
#include "support/scratch.h"

namespace norv::test {}

namespace fs = std::filesystem;
using namespace norv;
using namespace norv::test;
