#pragma once
#include <windows.h>

#include <cstdint>
#include <functional>

#include "framework/Control.h"

// A push button that shows one image of the application's shared image list
// instead of its text (owner-drawn). Its text, a "^N" reference already
// translated when the page was made, becomes its tool tip. It draws its
// pushed, disabled and focused states.
class BitmapButton : public Control
{
public:
    BitmapButton(FormDialog& page, int32_t id, int32_t image, std::function<void()> onClick = {});

    int32_t Image() const { return image; }
    void SetImage(int32_t index);
    void OnClick(std::function<void()> handler) { clicked = std::move(handler); }
    // Replaces the tool tip (the page's tool-tip control).
    void SetToolTip(const KelText& text);

    bool OnCommand(int32_t code) override;
    bool OnDrawItem(DRAWITEMSTRUCT& item) override;

private:
    int32_t image;
    std::function<void()> clicked;
};
