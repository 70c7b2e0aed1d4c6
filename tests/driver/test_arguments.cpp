// What the words of the command line mean, and the words of the reports.
#include <bit>

#include "driver/arguments.h"
#include "driver/modes.h"
#include "driver/report.h"
#include "support/test.h"

TEST_CASE("integers: blanks, a sign, digits; the rest is ignored and nothing overflows") {
  CHECK(DecodeInteger("42") == 42);
  CHECK(DecodeInteger(" \t\n\v\f\r-7.9") == -7);
  CHECK(DecodeInteger("+0012abc") == 12);
  for (const char* nothing : {"", "x1", "- 5", "+-5", "--5", ".5"}) CHECK(DecodeInteger(nothing) == 0);
  CHECK(DecodeInteger("2147483647") == 2147483647);
  CHECK(DecodeInteger("-2147483648") == -2147483647 - 1);
  CHECK(DecodeInteger("99999999999999999999999999") == 2147483647);
  CHECK(DecodeInteger("-99999999999999999999999999") == -2147483647 - 1);
}

TEST_CASE("floating numbers are read in double and rounded once") {
  CHECK(DecodeFloat(" -1.5e2x") == -150.0f);
  CHECK(DecodeFloat("0,5") == 0.0f);
  CHECK(DecodeFloat("word") == 0.0f);
  CHECK(std::isinf(DecodeFloat("1e39")));
  // Just above the middle of two floats, where double is not exact either: reading as double lands on the middle.
  CHECK(DecodeFloat("1.00000005960464477540") == 1.0f);
}

TEST_CASE("the restoration's parameters by position") {
  std::vector<std::string> words{"norv", "0"};
  for (int position = 2; position <= 22; ++position) words.push_back(std::to_string(position) + ".75");
  const Arguments arguments(words);
  const RestoreParameters p = DecodeRestoreParameters(arguments);
  const float floats[] = {p.lambdaCross, p.lambda,     p.deltaCross, p.delta,      p.gateCross,
                          p.gate,        p.spareCross, p.spare,      p.shapeCross, p.shapeDot};
  for (int i = 0; i < 10; ++i) CHECK(floats[i] == static_cast<float>(i + 4) + 0.75f);
  const int32_t integers[] = {p.factor, p.kernelCode, p.steps, p.iterations, p.representation, p.type};
  const int32_t positions[] = {2, 3, 14, 15, 18, 19};
  for (int i = 0; i < 6; ++i) CHECK(integers[i] == positions[i]);
  CHECK(p.emphasis == 17.75f);
  CHECK(p.keepMask);
  // On purpose one word for both: the graphical program sends only one.
  CHECK(p.orientationScale == 16.75f);
  CHECK(p.edgeThreshold == 16.75f);
  CHECK(arguments.Integer(kThreadsPosition) == 22);
}

TEST_CASE("the restoration's defaults have the very bits that they are known by") {
  const RestoreParameters p = DefaultRestoreParameters();
  CHECK(std::bit_cast<uint32_t>(p.lambdaCross) == 0x3D75C28F);
  CHECK(std::bit_cast<uint32_t>(p.lambda) == 0x3D0F5C29);
  CHECK(std::bit_cast<uint32_t>(p.gate) == 0x3D4CCCCD);
  CHECK(std::bit_cast<uint32_t>(p.shapeDot) == 0x3F4CCCCD);
  CHECK(std::bit_cast<uint32_t>(p.orientationScale) == 0x3F333333);
  CHECK(std::bit_cast<uint32_t>(p.edgeThreshold) == 0x41C80000);
  CHECK(p.factor * 1000000 + p.steps * 1000 + p.iterations * 10 + p.type == 4017065);
  CHECK(!p.keepMask);
}

TEST_CASE("a mode needs the parameters that its usage line names") {
  CHECK(UsageOf(10) == "norv 10 AVERAGE THREADS SHORTCUT");
  CHECK(NeededParameters(10) == 3);
  CHECK(kEnlargementParameters["THREADS"] == 3);
  CHECK(UsageOf(3) ==
        "norv 3 FACTOR KERNEL LAMBDA_CROSS LAMBDA DELTA_CROSS DELTA GATE_CROSS GATE SPARE_CROSS SPARE SHAPE_CROSS "
        "SHAPE_DOT STEPS ITERATIONS ORIENTATION_SCALE EMPHASIS REPRESENTATION TYPE KEEP_MASK UNREAD THREADS");
  CHECK(NeededParameters(-5) == 21);
  CHECK(UsageOf(16) == "norv 16");
}

TEST_CASE("elapsed time: seconds in single precision, the rest from them in double") {
  CHECK(TimeMessage(90000) == "\n90.00 secs, 1.50 mins., 0.03 hrs., 0.00 days");
  CHECK(TimeMessage(0) == "\n0.00 secs, 0.00 mins., 0.00 hrs., 0.00 days");
  // 0.001 in single precision is 4.7e-11 too large: a day becomes 86400.0041, of which the nearest float is 86400.0078.
  CHECK(TimeMessage(86400000) == "\n86400.01 secs, 1440.00 mins., 24.00 hrs., 1.00 days");
}
