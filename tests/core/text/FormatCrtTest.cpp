// Windows only: our formatter against the platform's own, for the integer,
// text and character conversions whose meanings agree. The runtime's printf
// is not type-safe, so every argument below has exactly the type its
// conversion reads.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <string>

#include "tests/core/text/TextTestSupport.h"
#include "text/KelText.h"
#include "text/WideText.h"

namespace
{
// The Universal C Runtime's common entry point (ucrtbase.dll), with the
// Microsoft meaning of %s in wide functions.
using CommonFormat = int(__cdecl*)(unsigned long long options, wchar_t* buffer, size_t count,
                                   const wchar_t* format, void* locale, va_list args);
constexpr unsigned long long kLegacyWideSpecifiers = 0x4;

CommonFormat UniversalRuntime()
{
    static const CommonFormat function = []
    {
        HMODULE module = LoadLibraryExW(L"ucrtbase.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        return module ? reinterpret_cast<CommonFormat>(reinterpret_cast<void*>(
                            GetProcAddress(module, "__stdio_common_vswprintf")))
                      : nullptr;
    }();
    return function;
}

std::u16string WithUniversalRuntime(const wchar_t* pattern, ...)
{
    wchar_t buffer[512] = {};
    va_list args;
    va_start(args, pattern);
    UniversalRuntime()(kLegacyWideSpecifiers, buffer, 511, pattern, nullptr, args);
    va_end(args);
    return std::u16string(reinterpret_cast<const char16_t*>(buffer));
}

// msvcrt.dll's _snwprintf, which MinGW links by default.
std::u16string WithClassicRuntime(const wchar_t* pattern, ...)
{
    wchar_t buffer[512] = {};
    va_list args;
    va_start(args, pattern);
    _vsnwprintf(buffer, 511, pattern, args);
    va_end(args);
    return std::u16string(reinterpret_cast<const char16_t*>(buffer));
}

template <typename... Args>
void ExpectSameAsRuntime(const wchar_t* pattern, Args... args)
{
    const KelText ours = KelText::Formatted(reinterpret_cast<const char16_t*>(pattern), args...);
    EXPECT_EQ(Show(ours), Show(WithClassicRuntime(pattern, args...))) << "msvcrt, " << Show(ours);
    if (UniversalRuntime())
    {
        EXPECT_EQ(Show(ours), Show(WithUniversalRuntime(pattern, args...))) << "ucrtbase";
    }
}
} // namespace

TEST(FormatAgainstRuntime, Integers)
{
    ExpectSameAsRuntime(L"%d|%i|%u|%u", 42, -42, 42u, -1);
    ExpectSameAsRuntime(L"[%5d][%-5d][%05d][%+d][% d][%+ d][%-05d]", 42, 42, -42, 42, 42, 42, 7);
    // Not compared: %08.3d, where Wine's runtimes pad with zeros although a
    // precision makes the Microsoft runtime ignore the 0 flag.
    ExpectSameAsRuntime(L"[%.3d][%8.3d][%-8.3d][%.0d][%5.0d][%+.0d]", 7, -7, 7, 0, 0, 0);
    ExpectSameAsRuntime(L"%x %X %o %#x %#X %#o %#o %#x %#.0o %#08x %#5o", 255, 255, 8, 255, 255, 8,
                        0, 0, 0, 255, 8);
    ExpectSameAsRuntime(L"[%+u][% x][%+o][%.20d]", 5u, 255u, 8u, 1);
    ExpectSameAsRuntime(L"%hd %hu %hx %ld %lu", 70000, -1, 0x12345, 5L, 5UL);
    ExpectSameAsRuntime(L"%I64d %I64u %I64x %I32d %Id", INT64_MIN, UINT64_MAX, -1LL, 5,
                        4294967301LL);
    ExpectSameAsRuntime(L"[%*d][%-*d][%*d][%.*d][%.*d][%*.*d]", 5, 1, 5, 1, -5, 1, 3, 1, -1, 1, 6,
                        3, 1);
    ExpectSameAsRuntime(L"[%p][%p][%20p][%-18p]", reinterpret_cast<void*>(0x1234ABCD),
                        static_cast<void*>(nullptr), reinterpret_cast<void*>(1),
                        reinterpret_cast<void*>(1));
    ExpectSameAsRuntime(L"100%% %d%%", 5);
}

TEST(FormatAgainstRuntime, TextAndCharacters)
{
    const wchar_t* noText = nullptr;
    ExpectSameAsRuntime(L"[%s][%5s][%-5s][%.2s][%5.1s][%ls][%ws]", L"ab", L"ab", L"ab", L"abc",
                        L"abc", L"l", L"w");
    ExpectSameAsRuntime(L"[%s][%8s][%hs][%S]", noText, noText, static_cast<const char*>(nullptr),
                        static_cast<const char*>(nullptr));
    // Narrow text: the runtime converts in its "C" locale (byte value = code
    // point), ours through the system code page; they agree below 0x80 and
    // from 0xA0 up.
    ExpectSameAsRuntime(L"[%hs][%S][%.2hs][%-6hs][%hS][%05s]", "caf\xE9", "\xA0\xFF", "abc", "ab",
                        "x", L"ab");
    ExpectSameAsRuntime(L"[%c][%c][%3c][%-3c][%03c]", L'Z', wchar_t(0x20AC), L'x', L'x', L'x');
    ExpectSameAsRuntime(L"[%hc][%C][%lc][%wc]", 'A', char(0xE9), L'\u00E9', L'w');
    ExpectSameAsRuntime(L"[%s]", L"\xD83D\xDE00");
}
