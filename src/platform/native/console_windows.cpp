#include <conio.h>
#include <cstdio>
#include <fcntl.h>
#include <initializer_list>
#include <io.h>
#include <windows.h>

#include "platform/console.h"
#include "platform/native/text.h"

namespace norv {

void PrepareConsole() {
  for (FILE* stream : {stdin, stdout, stderr})
    if (_fileno(stream) < 0) std::freopen("NUL", stream == stdin ? "rb" : "wb", stream);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

bool ShowInConsole(const std::string& utf8, FILE* stream) {
  const HANDLE console = GetStdHandle(stream == stdout ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  DWORD mode, written;
  if (!GetConsoleMode(console, &mode)) return false;
  const std::wstring text = Wide(utf8);
  return WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

bool InputIsTerminal() { return GetFileType(GetStdHandle(STD_INPUT_HANDLE)) == FILE_TYPE_CHAR; }
bool OutputIsTerminal() { return GetFileType(GetStdHandle(STD_OUTPUT_HANDLE)) == FILE_TYPE_CHAR; }

bool ProgressIsVisible() {
  // The line is wiped by a control sequence, which a console obeys only when it is told to.
  const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode;
  return GetConsoleMode(console, &mode) && SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

void WaitForKeys(int count) {
  const bool terminal = _isatty(_fileno(stdin));
  for (int key = 0; key < count; ++key) {
    char byte;
    if (terminal)
      _getch();
    else if (_read(_fileno(stdin), &byte, 1) <= 0)
      return;
  }
}

}  // namespace norv
