// Drives FormatInto with a pattern and up to eight arguments taken from the
// input, into a small buffer, and checks what it wrote against the same
// formatting into a large one: the small output must be the large output cut
// at capacity - 1 units (one less when that would split a surrogate pair),
// always terminated, and nothing may be written past the capacity.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "text/TextFormat.h"

namespace
{
constexpr int32_t kLargeCapacity = 40000;

// Pattern units: mostly the bytes themselves (so '%', flags, digits and types
// come up), with the top of the byte range standing for the awkward units.
char16_t PatternUnit(uint8_t byte)
{
    static const char16_t special[8] = {0xD83D, 0xDE00, 0xD800, 0xDFFF, 0x20AC, 0x00E9, 0xFFFD, 0};
    return byte >= 0xF8 ? special[byte - 0xF8] : char16_t(byte);
}

bool IsHigh(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLow(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void Check(bool condition)
{
    if (!condition)
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const int32_t capacity = input.ConsumeIntegralInRange<int32_t>(0, 80);

    // Texts the arguments point at; they stay put while the arguments live.
    std::vector<std::u16string> wideTexts;
    std::vector<std::string> narrowTexts;
    wideTexts.reserve(8);
    narrowTexts.reserve(8);
    std::vector<FormatArg> args;
    const int count = input.ConsumeIntegralInRange<int>(0, 8);
    for (int i = 0; i < count; ++i)
    {
        switch (input.ConsumeIntegralInRange<int>(0, 9))
        {
        case 0:
            args.emplace_back(input.ConsumeIntegral<int32_t>());
            break;
        case 1:
            args.emplace_back(input.ConsumeIntegral<int64_t>());
            break;
        case 2:
            args.emplace_back(input.ConsumeIntegral<uint64_t>());
            break;
        case 3:
        {
            // Any bit pattern: infinities, NaNs and subnormals included.
            const uint64_t bits = input.ConsumeIntegral<uint64_t>();
            double value = 0;
            std::memcpy(&value, &bits, sizeof value);
            args.emplace_back(value);
            break;
        }
        case 4:
            args.emplace_back(input.ConsumeFloatingPoint<double>());
            break;
        case 5:
        {
            const std::string bytes = input.ConsumeRandomLengthString(64);
            std::u16string& text = wideTexts.emplace_back();
            for (const char byte : bytes)
                if (const char16_t unit = PatternUnit(uint8_t(byte)))
                    text += unit;
            args.emplace_back(text.c_str());
            break;
        }
        case 6:
            args.emplace_back(
                narrowTexts.emplace_back(input.ConsumeRandomLengthString(64)).c_str());
            break;
        case 7:
            args.emplace_back(input.ConsumeBool() ? static_cast<const char16_t*>(nullptr)
                                                  : u"(text)");
            break;
        case 8:
            args.emplace_back(reinterpret_cast<const void*>(input.ConsumeIntegral<uintptr_t>()));
            break;
        default:
            args.emplace_back(); // a missing argument inside the list
            break;
        }
    }

    std::u16string pattern;
    for (const uint8_t byte : input.ConsumeRemainingBytes<uint8_t>())
        if (const char16_t unit = PatternUnit(byte))
            pattern += unit;

    // The whole output, then the same into `capacity` units on their own
    // allocation, so that AddressSanitizer sees a write past the end.
    static std::vector<char16_t> whole(kLargeCapacity);
    const int32_t wholeLength = FormatInto(whole.data(), kLargeCapacity, pattern.c_str(),
                                           args.data(), int32_t(args.size()));
    Check(wholeLength >= 0 && wholeLength < kLargeCapacity && whole[size_t(wholeLength)] == 0);

    std::unique_ptr<char16_t[]> small(capacity ? new char16_t[size_t(capacity)] : nullptr);
    const int32_t length =
        FormatInto(small.get(), capacity, pattern.c_str(), args.data(), int32_t(args.size()));
    if (capacity == 0)
    {
        Check(length == 0);
        return 0;
    }
    Check(length >= 0 && length < capacity && small[size_t(length)] == 0);
    Check(std::memcmp(small.get(), whole.data(), size_t(length) * sizeof(char16_t)) == 0);
    if (length < wholeLength)
    {
        // Cut: at the capacity, or one short where a pair would have split;
        // never between the two units of a pair.
        Check(!(length > 0 && IsHigh(whole[size_t(length) - 1]) && IsLow(whole[size_t(length)])));
        const bool full = length == capacity - 1;
        const bool pairKept = length == capacity - 2 && IsHigh(whole[size_t(length)]) &&
                              IsLow(whole[size_t(length) + 1]);
        Check(full || pairKept);
    }
    else
        Check(length == wholeLength);
    return 0;
}
