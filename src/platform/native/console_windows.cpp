#include <conio.h>
#include <cstdio>
#include <fcntl.h>
#include <initializer_list>
#include <io.h>

#include "platform/console.h"

namespace norv {

void PrepareConsole() {
  for (FILE* stream : {stdin, stdout, stderr})
    if (_fileno(stream) < 0) std::freopen("NUL", stream == stdin ? "rb" : "wb", stream);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

bool ProgressIsVisible() { return _isatty(_fileno(stderr)); }

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
