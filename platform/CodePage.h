#pragma once
#include <cstdint>

// Code-page conversion with the semantics of MultiByteToWideChar and
// WideCharToMultiByte (no flags): a source length of -1 means "up to and
// including the terminator"; a destination size of 0 asks for the size needed;
// the answer is the number of units written (or needed), 0 on failure, also
// when the destination is too small.
//
// Code page 0 is the system ANSI code page (the Windows setting on Windows;
// Windows-1252 in native builds) and 65001 is UTF-8, where invalid sequences
// become U+FFFD and unpaired surrogates are written as U+FFFD. Native builds
// follow the grouping of invalid bytes that Wine uses, and write '?' for
// characters that Windows-1252 lacks (Windows may pick a similar letter
// instead, e.g. 'A' for U+0100).
namespace CodePage
{
constexpr uint32_t Ansi = 0;
constexpr uint32_t Utf8 = 65001;

int32_t ToWide(uint32_t codePage, const char* source, int32_t sourceLength, char16_t* target,
               int32_t targetSize);
int32_t FromWide(uint32_t codePage, const char16_t* source, int32_t sourceLength, char* target,
                 int32_t targetSize);
} // namespace CodePage
