# Cross build for 64-bit Windows with Debian's g++-mingw-w64-x86-64-posix (the posix variant brings std::mutex and OpenMP).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)  # of the libraries that tools/windows_libraries builds
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
list(APPEND CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# One executable that needs nothing beside it: the static OpenMP run-time, not its import library.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libgomp.a
  OUTPUT_VARIABLE staticOpenMp OUTPUT_STRIP_TRAILING_WHITESPACE)
set(OpenMP_gomp_LIBRARY ${staticOpenMp} CACHE FILEPATH "")
