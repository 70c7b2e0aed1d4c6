// The only room below the vector levels, whose tests therefore run at none.
#define DOCTEST_CONFIG_IMPLEMENT_WITH_MAIN
#include <doctest/doctest.h>
