#include "Layout.h"

#include <algorithm>
#include <initializer_list>
#include <string>

#include <commctrl.h>

#include "resource.h"

namespace DesktopHost {

namespace {

constexpr int Margin = 12;
constexpr int Gap = 8;
constexpr int LeastButtonWidth = 88;
constexpr int ProgressHeight = 6;
constexpr int MostMessageLines = 12;

struct Context
{
    HWND window;
    UINT dpi;
    int lineHeight; ///< of a line of text
    RECT client;

    int Pixels(int length) const { return Scale(length, dpi); }
    HWND Control(int id) const { return GetDlgItem(window, id); }
    void Move(int id, int left, int top, int width, int height) const
    {
        SetWindowPos(Control(id), nullptr, left, top, std::max(width, 0), std::max(height, 0),
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }
    bool IsShown(int id) const
    {
        return (static_cast<DWORD>(GetWindowLongPtrW(Control(id), GWL_STYLE)) & WS_VISIBLE) != 0;
    }
    int Bottom() const { return client.bottom - Pixels(Margin); }
    int Right() const { return client.right - Pixels(Margin); }
};

int LineHeight(HWND window, HFONT font)
{
    const HDC device = GetDC(window);
    const HGDIOBJ before = SelectObject(device, font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(device, &metrics);
    SelectObject(device, before);
    ReleaseDC(window, device);
    return metrics.tmHeight;
}

int TextWidth(HWND control, HFONT font)
{
    wchar_t text[128] = L"";
    GetWindowTextW(control, text, static_cast<int>(sizeof text / sizeof *text));
    const HDC device = GetDC(control);
    const HGDIOBJ before = SelectObject(device, font);
    RECT area{};
    DrawTextW(device, text, -1, &area, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(device, before);
    ReleaseDC(control, device);
    return area.right;
}

int ButtonWidth(const Context& context, int id, HFONT font)
{
    return std::max(context.Pixels(LeastButtonWidth), TextWidth(context.Control(id), font) + context.Pixels(24));
}

/// Returns the top of what follows.
int LayOutButtons(const Context& context, HFONT font, int top)
{
    const int height = context.lineHeight + context.Pixels(12);
    int left = context.Pixels(Margin);
    for (const int id : {IDC_SIGN_IN, IDC_SIGN_OUT, IDC_RENEW, IDCANCEL})
    {
        const int width = ButtonWidth(context, id, font);
        context.Move(id, left, top, width, height);
        left += width + context.Pixels(Gap);
    }
    return top + height + context.Pixels(Margin);
}

int LayOutField(const Context& context, int label, int field, int labelWidth, int top)
{
    const int left = context.Pixels(Margin);
    const int fieldLeft = left + labelWidth + context.Pixels(Gap);
    context.Move(label, left, top, labelWidth, context.lineHeight);
    context.Move(field, fieldLeft, top, context.Right() - fieldLeft, context.lineHeight);
    return top + context.lineHeight + context.Pixels(Gap);
}

/// The message and its button have room only while they are shown.
int LayOutMessage(const Context& context, HFONT font, int top)
{
    if (!context.IsShown(IDC_MESSAGE))
        return top;
    const int left = context.Pixels(Margin);
    const int width = context.Right() - left;
    context.Move(IDC_MESSAGE_LABEL, left, top, width, context.lineHeight);
    top += context.lineHeight + context.Pixels(4);
    context.Move(IDC_MESSAGE, left, top, width, context.lineHeight);
    // The lines depend on the width.
    const auto lines = static_cast<int>(SendMessageW(context.Control(IDC_MESSAGE), EM_GETLINECOUNT, 0, 0));
    const int height = context.lineHeight * std::min(lines, MostMessageLines) + context.Pixels(4);
    context.Move(IDC_MESSAGE, left, top, width, height);
    top += height + context.Pixels(Gap);
    if (context.IsShown(IDC_COPY))
    {
        const int buttonHeight = context.lineHeight + context.Pixels(12);
        context.Move(IDC_COPY, left, top, ButtonWidth(context, IDC_COPY, font), buttonHeight);
        top += buttonHeight + context.Pixels(Gap);
    }
    return top;
}

void LayOutEvents(const Context& context, int top)
{
    const int left = context.Pixels(Margin);
    context.Move(IDC_EVENTS_LABEL, left, top, context.Right() - left, context.lineHeight);
    top += context.lineHeight + context.Pixels(4);
    context.Move(IDC_EVENTS, left, top, context.Right() - left, context.Bottom() - top);

    const HWND list = context.Control(IDC_EVENTS);
    RECT inside{};
    GetClientRect(list, &inside);
    const int timeWidth = context.Pixels(90);
    const int eventWidth = context.Pixels(150);
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 0, timeWidth);
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 1, eventWidth);
    // Room for the scroll bar from the beginning: otherwise a horizontal one would appear with it.
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 2,
                 std::max<int>(inside.right - timeWidth - eventWidth, context.Pixels(150)));
}

} // namespace

int Scale(int length, UINT dpi)
{
    return MulDiv(length, static_cast<int>(dpi), USER_DEFAULT_SCREEN_DPI);
}

void LayOut(HWND window, HFONT font, UINT dpi)
{
    Context context{window, dpi, LineHeight(window, font), {}};
    GetClientRect(window, &context.client);
    const int left = context.Pixels(Margin);
    int top = context.Pixels(Margin);
    context.Move(IDC_STATUS, left, top, context.Right() - left, context.lineHeight);
    top += context.lineHeight + context.Pixels(4);
    context.Move(IDC_PROGRESS, left, top, context.Right() - left, context.Pixels(ProgressHeight));
    top += context.Pixels(ProgressHeight + Gap);
    top = LayOutButtons(context, font, top);

    const int labelWidth =
        std::max(TextWidth(context.Control(IDC_USER_LABEL), font), TextWidth(context.Control(IDC_TOKEN_LABEL), font));
    top = LayOutField(context, IDC_USER_LABEL, IDC_USER, labelWidth, top);
    top = LayOutField(context, IDC_TOKEN_LABEL, IDC_TOKEN, labelWidth, top);
    top = LayOutMessage(context, font, top);
    LayOutEvents(context, top);
    InvalidateRect(window, nullptr, TRUE);
}

SIZE InitialSize(UINT dpi)
{
    return {Scale(560, dpi), Scale(440, dpi)};
}

SIZE LeastSize(UINT dpi)
{
    return {Scale(480, dpi), Scale(380, dpi)};
}

} // namespace DesktopHost
