// For compilers whose lambdas cannot name structured bindings: failures are reported without the values around them.
#pragma once

#include <doctest/doctest.h>

#undef CAPTURE
#define CAPTURE(x) static_cast<void>(x)
