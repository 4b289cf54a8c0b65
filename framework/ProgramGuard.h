#pragma once
#include <cstdint>
#include <functional>

// Runs a program's start-up and main routine so that no C++ exception leaves
// the process entry, where it would end the program through std::terminate
// with a crash code. An exception that escapes `body` is reported: through
// the application object when one is installed (a debug warning, then its
// error box), else in a plain system message box. Answers body's result, or 0
// after an exception: the family's programs end with 0 on every path.
int32_t RunGuarded(const std::function<int32_t()>& body) noexcept;
