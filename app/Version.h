#pragma once
// The editor's version and release, in one place. The resource script (the
// version resource), program main (the window title), the build (the project
// version, the installer) and the tests all take them from here, so this file
// holds nothing but preprocessor definitions that windres, the compilers and
// CMake can all read.

#define KEL_VERSION_MAJOR 23
#define KEL_VERSION_MINOR 0
#define KEL_VERSION_PATCH 1
#define KEL_VERSION_BUILD 1019
// The release the application registers ("Brindlecove 2023").
#define KEL_RELEASE "2023"
// The version text shown in the title: "23.0.1.1019 2023".
#define KEL_VERSION_TEXT "23.0.1.1019 " KEL_RELEASE

#define KEL_WIDEN_(text) u##text
#define KEL_WIDEN(text) KEL_WIDEN_(text)
