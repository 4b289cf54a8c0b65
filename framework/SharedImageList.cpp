#include "framework/SharedImageList.h"

#include "framework/AppEntry.h"
#include "framework/FrameworkResources.h"

namespace
{
// One list per strip size; destroyed when the process ends.
struct SharedList
{
    HIMAGELIST list = nullptr;
    int32_t size = 16;
    bool made = false;
    SharedList() = default;
    SharedList(const SharedList&) = delete;
    SharedList& operator=(const SharedList&) = delete;
    ~SharedList()
    {
        if (list)
            ImageList_Destroy(list);
    }
};

SharedList& Shared(int32_t size)
{
    static SharedList shared[3];
    SharedList& list = shared[size == 32 ? 2 : size == 24 ? 1 : 0];
    list.size = size;
    return list;
}

int32_t ScreenDpi()
{
    HDC screen = GetDC(nullptr);
    int32_t dpi = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 96;
    if (screen)
        ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

HBITMAP LoadStrip(int32_t resourceId)
{
    AppEntry* app = GetAppEntry();
    HINSTANCE candidates[] = {app ? app->ResourceInstance() : nullptr, GetModuleHandleW(nullptr)};
    for (HINSTANCE module : candidates)
    {
        if (!module)
            continue;
        auto* bitmap = static_cast<HBITMAP>(LoadImageW(module, MAKEINTRESOURCEW(resourceId),
                                                       IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
        if (bitmap)
            return bitmap;
    }
    return nullptr;
}
} // namespace

int32_t ImageSizeForDpi(int32_t dpi)
{
    if (dpi <= 120)
        return 16;
    if (dpi <= 168)
        return 24;
    return 32;
}

HIMAGELIST SharedImageList()
{
    return SharedImageListForDpi(ScreenDpi());
}

HIMAGELIST SharedImageListForDpi(int32_t dpi)
{
    SharedList& shared = Shared(ImageSizeForDpi(dpi));
    if (shared.made)
        return shared.list;
    shared.made = true;

    int32_t resourceId = shared.size == 32   ? kImageStrip32
                         : shared.size == 24 ? kImageStrip24
                                             : kImageStrip16;
    HBITMAP strip = LoadStrip(resourceId);
    if (!strip)
        return nullptr;
    BITMAP info = {};
    GetObjectW(strip, sizeof(info), &info);
    int32_t count = info.bmHeight > 0 ? info.bmWidth / info.bmHeight : 0;
    shared.list = ImageList_Create(shared.size, shared.size, ILC_COLOR32 | ILC_MASK, count, 4);
    if (shared.list)
        ImageList_AddMasked(shared.list, strip, kImageMaskColour);
    DeleteObject(strip);
    return shared.list;
}

int32_t SharedImageSize()
{
    return ImageSizeForDpi(ScreenDpi());
}
