#pragma once
// The fuzz targets' checks: a property that fails names itself on standard
// error and stops the run, so that libFuzzer keeps the input that broke it.
#include <cstdio>
#include <cstdlib>

inline void CheckThat(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "check failed: %s\n", what);
    std::abort();
}

#define Check(condition) CheckThat(condition, #condition)
