#include "Appearance.h"

#include <string>

#include <dwmapi.h>
#include <uxtheme.h>

#include "resource.h"

namespace DesktopHost {

namespace {

constexpr COLORREF Background = RGB(32, 32, 32);
constexpr COLORREF Raised = RGB(51, 51, 51);
constexpr COLORREF Hot = RGB(69, 69, 69);
constexpr COLORREF Pressed = RGB(40, 40, 40);
constexpr COLORREF Edge = RGB(120, 120, 120);
constexpr COLORREF Accent = RGB(118, 185, 237);
constexpr COLORREF Foreground = RGB(255, 255, 255);
constexpr COLORREF Disabled = RGB(150, 150, 150);

/// DWMWA_USE_IMMERSIVE_DARK_MODE, which older SDKs do not name.
constexpr DWORD DarkTitleBar = 20;

bool IsHighContrast()
{
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) != FALSE &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

bool AppsAreDark()
{
    DWORD light = 1;
    DWORD size = sizeof light;
    RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
                 L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
    return light == 0;
}

/// SetWindowTheme fails where themes are off; the control then draws itself in its classic form.
void SetTheme(HWND control, const wchar_t* name)
{
    SetWindowTheme(control, name, name == nullptr || *name != L'\0' ? nullptr : L"");
}

void ApplyToList(HWND list, bool dark)
{
    SendMessageW(list, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(dark ? Background : GetSysColor(COLOR_WINDOW)));
    SendMessageW(list, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(dark ? Background : GetSysColor(COLOR_WINDOW)));
    SendMessageW(list, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(dark ? Foreground : GetSysColor(COLOR_WINDOWTEXT)));
    // Dark scroll bars, on systems that have them; others ignore the name.
    SetTheme(list, dark ? L"DarkMode_Explorer" : nullptr);
}

void ApplyToProgress(HWND progress, bool dark)
{
    // A themed progress bar ignores colours.
    SetTheme(progress, dark ? L"" : nullptr);
    SendMessageW(progress, PBM_SETBKCOLOR, 0, static_cast<LPARAM>(dark ? Raised : CLR_DEFAULT));
    SendMessageW(progress, PBM_SETBARCOLOR, 0, static_cast<LPARAM>(dark ? Accent : CLR_DEFAULT));
}

void Fill(HDC context, const RECT& area, COLORREF color)
{
    const Brush brush(CreateSolidBrush(color));
    FillRect(context, &area, brush.get());
}

void Frame(HDC context, const RECT& area, COLORREF color)
{
    const Brush brush(CreateSolidBrush(color));
    FrameRect(context, &area, brush.get());
}

void DrawLabel(HDC context, const std::wstring& text, RECT area, COLORREF color, UINT format)
{
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, color);
    DrawTextW(context, text.c_str(), -1, &area, format | DT_VCENTER | DT_SINGLELINE);
}

std::wstring TextOf(HWND control)
{
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return text;
}

} // namespace

Font MessageFont(UINT dpi)
{
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
    return Font(CreateFontIndirectW(&metrics.lfMessageFont));
}

void Appearance::Apply(HWND window)
{
    // The colours of high contrast are the user's choice and come before the dark setting.
    dark_ = AppsAreDark() && !IsHighContrast();
    background_.reset(dark_ ? CreateSolidBrush(Background) : nullptr);

    const BOOL dark = dark_ ? TRUE : FALSE;
    DwmSetWindowAttribute(window, DarkTitleBar, &dark, sizeof dark); // fails on systems without dark title bars
    ApplyToList(GetDlgItem(window, IDC_EVENTS), dark_);
    ApplyToProgress(GetDlgItem(window, IDC_PROGRESS), dark_);
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_FRAME);
}

bool Appearance::DrawBackground(HWND window, HDC context) const
{
    if (!dark_)
        return false;
    RECT area{};
    GetClientRect(window, &area);
    FillRect(context, &area, background_.get());
    return true;
}

HBRUSH Appearance::ControlColors(HDC context) const
{
    if (!dark_)
        return nullptr;
    SetTextColor(context, Foreground);
    SetBkColor(context, Background);
    return background_.get();
}

LRESULT Appearance::DrawButton(const NMCUSTOMDRAW& draw) const
{
    // The themed button asks before it erases, the classic one before it paints.
    if (!dark_ || (draw.dwDrawStage != CDDS_PREERASE && draw.dwDrawStage != CDDS_PREPAINT))
        return CDRF_DODEFAULT;
    const bool disabled = (draw.uItemState & CDIS_DISABLED) != 0;
    const bool focused = (draw.uItemState & CDIS_FOCUS) != 0;
    COLORREF color = Raised;
    if ((draw.uItemState & CDIS_SELECTED) != 0)
        color = Pressed;
    else if ((draw.uItemState & CDIS_HOT) != 0 && !disabled)
        color = Hot;
    Fill(draw.hdc, draw.rc, color);
    Frame(draw.hdc, draw.rc, focused ? Accent : Edge);

    const LRESULT hints = SendMessageW(draw.hdr.hwndFrom, WM_QUERYUISTATE, 0, 0);
    DrawLabel(draw.hdc, TextOf(draw.hdr.hwndFrom), draw.rc, disabled ? Disabled : Foreground,
              DT_CENTER | ((hints & UISF_HIDEACCEL) != 0 ? DT_HIDEPREFIX : 0U));
    if (focused && (hints & UISF_HIDEFOCUS) == 0)
    {
        RECT inside = draw.rc;
        InflateRect(&inside, -3, -3);
        SetTextColor(draw.hdc, Foreground);
        SetBkColor(draw.hdc, color);
        DrawFocusRect(draw.hdc, &inside);
    }
    return CDRF_SKIPDEFAULT;
}

LRESULT Appearance::DrawHeader(const NMCUSTOMDRAW& draw) const
{
    if (!dark_)
        return CDRF_DODEFAULT;
    if (draw.dwDrawStage == CDDS_PREPAINT)
        return CDRF_NOTIFYITEMDRAW;
    if (draw.dwDrawStage != CDDS_ITEMPREPAINT)
        return CDRF_DODEFAULT;
    wchar_t text[64] = L"";
    HDITEMW item{};
    item.mask = HDI_TEXT;
    item.pszText = text;
    item.cchTextMax = static_cast<int>(sizeof text / sizeof *text);
    SendMessageW(draw.hdr.hwndFrom, HDM_GETITEMW, draw.dwItemSpec, reinterpret_cast<LPARAM>(&item));

    Fill(draw.hdc, draw.rc, Raised);
    RECT area = draw.rc;
    const int margin = GetSystemMetrics(SM_CXEDGE) * 3; // as the list draws its items
    area.left += margin;
    area.right -= margin;
    DrawLabel(draw.hdc, text, area, Foreground, DT_LEFT | DT_END_ELLIPSIS | DT_NOPREFIX);
    return CDRF_SKIPDEFAULT;
}

} // namespace DesktopHost
