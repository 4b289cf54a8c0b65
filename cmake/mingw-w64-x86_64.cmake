# Cross build for 64-bit Windows with MinGW-w64 (posix thread model).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(KEL_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${KEL_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KEL_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${KEL_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KEL_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# No runtime DLLs to ship: everything is linked into the executables.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Windows programs built here run under Wine. The project replaces this with
# its harness wrapper (build/wine-run), which adds the private prefix and display.
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
