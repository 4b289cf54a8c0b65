#include <windows.h>

#include "platform/CodePage.h"

namespace CodePage
{
int32_t ToWide(uint32_t codePage, const char* source, int32_t sourceLength, char16_t* target,
               int32_t targetSize)
{
    if (!source)
        return 0;
    return MultiByteToWideChar(codePage == Utf8 ? CP_UTF8 : CP_ACP, 0, source, sourceLength,
                               reinterpret_cast<wchar_t*>(target), targetSize);
}

int32_t FromWide(uint32_t codePage, const char16_t* source, int32_t sourceLength, char* target,
                 int32_t targetSize)
{
    if (!source)
        return 0;
    return WideCharToMultiByte(codePage == Utf8 ? CP_UTF8 : CP_ACP, 0,
                               reinterpret_cast<const wchar_t*>(source), sourceLength, target,
                               targetSize, nullptr, nullptr);
}
} // namespace CodePage
