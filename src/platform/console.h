// What people and programs see of a run: messages on standard output, everything else on standard error; key presses.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

namespace norv {

// Standard streams that the parent left closed are opened on the null device, so that no data file gets their numbers;
// standard output passes bytes through unchanged on every platform. Called once, first.
void PrepareConsole();

// The name that stands before warnings and complaints from now on, norv by default; the text has to stay.
void NameProgram(const char* name);

// A message on standard output: exactly these characters, flushed at once. An unwritable standard output is ignored.
[[gnu::format(gnu_printf, 1, 2)]] void Say(const char* format, ...);

// These bytes on standard output; false when they did not get there.
bool SendOutput(const void* bytes, size_t size);

// Sends off what is still on its way to standard output. Empty when all of it has arrived since the start, else the
// system's reason why not; a reader that has gone away needs none and is said by `gone`.
std::string WhyOutputIsLost(bool& gone);

// From now on warnings, what is told and progress are left out; complaints are not.
void KeepQuiet(bool quiet);
bool IsQuiet();

// A line on standard error as it stands: what a run chose, what it has come to.
[[gnu::format(gnu_printf, 1, 2)]] void Tell(const char* format, ...);

// A line on standard error, behind the program's name and "warning: ".
[[gnu::format(gnu_printf, 1, 2)]] void Warn(const char* format, ...);

// A line on standard error, behind the program's name only: the reason why something failed.
[[gnu::format(gnu_printf, 1, 2)]] void Complain(const char* format, ...);

// A line on standard error and nothing else, whole among those of other threads.
void PrintLine(const std::string& line);

// From now on what is said goes there instead, a line of standard error without its end; the value says which of both.
using WordsTaker = void (*)(bool output, const std::string& text);
void HandWordsTo(WordsTaker taker);

// The last of this thread's complaints, without the program's name; empty: none.
std::string LastComplaint();

// The value as it should be printed: a NaN without its sign, which is no part of any result.
double Printable(double value);

// Waits for `count` key presses: from a terminal one unechoed key each (keys typed ahead count), else one byte each;
// end of input counts as a key. The terminal is put back on every way out, signals included.
void WaitForKeys(int count);

bool InputIsTerminal();
bool OutputIsTerminal();

// Whether standard error is a terminal, so that progress may be drawn on it.
bool ProgressIsVisible();

}  // namespace norv
