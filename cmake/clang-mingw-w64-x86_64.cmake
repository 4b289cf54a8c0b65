# Cross build for 64-bit Windows with clang, against the same MinGW-w64
# headers and libraries as the gcc build (cmake/mingw-w64-x86_64.cmake). It
# proves the code compiles with a second compiler, and its compile commands
# are what clang-tidy parses the Windows code with.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-x86_64.cmake)

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_COMPILER_TARGET ${KEL_MINGW_PREFIX})
set(CMAKE_CXX_COMPILER_TARGET ${KEL_MINGW_PREFIX})

# clang does not recognise Debian's gcc folder name "12-posix" as a gcc
# version, so it finds neither libstdc++ nor libgcc by itself: name them, and
# take the C headers and libraries from the MinGW-w64 folder only.
file(GLOB KEL_MINGW_GCC_DIR LIST_DIRECTORIES true /usr/lib/gcc/${KEL_MINGW_PREFIX}/*-posix)
list(GET KEL_MINGW_GCC_DIR -1 KEL_MINGW_GCC_DIR)
set(KEL_MINGW_CXX_INCLUDE ${KEL_MINGW_GCC_DIR}/include/c++)
set(CMAKE_SYSROOT /usr/${KEL_MINGW_PREFIX})
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${KEL_MINGW_CXX_INCLUDE} -isystem ${KEL_MINGW_CXX_INCLUDE}/${KEL_MINGW_PREFIX} -isystem ${KEL_MINGW_CXX_INCLUDE}/backward")
# The posix thread model's libstdc++ and libgcc need winpthreads, which the
# gcc driver links by itself and clang with -pthread.
set(CMAKE_EXE_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT} -L${KEL_MINGW_GCC_DIR} -pthread -Wno-unused-command-line-argument")
# Include folders in the compile commands themselves, not in response files,
# so that clang-tidy reads them from compile_commands.json.
set(CMAKE_C_USE_RESPONSE_FILE_FOR_INCLUDES OFF)
set(CMAKE_CXX_USE_RESPONSE_FILE_FOR_INCLUDES OFF)
