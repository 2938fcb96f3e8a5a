#include "window/Checks.h"

#include <algorithm>
#include <cwctype>
#include <map>
#include <memory>
#include <type_traits>

#include <commctrl.h>

namespace WindowTest {

namespace {

bool IsClass(const Control& control, const wchar_t* name)
{
    return lstrcmpiW(control.className.c_str(), name) == 0;
}

std::wstring Label(const Control& control)
{
    return std::to_wstring(control.id) + L" (" + control.className + L" \"" + control.text + L"\")";
}

std::vector<Control> VisibleControls(const Window& window)
{
    std::vector<Control> controls = window.Controls();
    controls.erase(std::remove_if(controls.begin(), controls.end(), [](const Control& c) { return !c.isVisible; }),
                   controls.end());
    if (controls.empty())
        throw Failure{L"the window has no visible control"};
    return controls;
}

/// The letter after the last single "&"; 0 without one.
wchar_t Mnemonic(const std::wstring& text)
{
    wchar_t letter = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
    {
        if (text[i] != L'&')
            continue;
        ++i;
        if (text[i] != L'&')
            letter = static_cast<wchar_t>(std::towlower(text[i]));
    }
    return letter;
}

struct DeleteObjectOfGdi
{
    void operator()(void* object) const { DeleteObject(object); }
};

/// Fonts cannot be shared between processes: this makes the one that the window should use.
class TextMeasure
{
public:
    explicit TextMeasure(UINT dpi) : context_(CreateCompatibleDC(nullptr))
    {
        NONCLIENTMETRICSW metrics{};
        metrics.cbSize = sizeof metrics;
        SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
        font_.reset(CreateFontIndirectW(&metrics.lfMessageFont));
        SelectObject(context_, font_.get());
    }
    TextMeasure(const TextMeasure&) = delete;
    TextMeasure& operator=(const TextMeasure&) = delete;
    ~TextMeasure() { DeleteDC(context_); }

    SIZE Of(const std::wstring& text) const
    {
        RECT area{};
        DrawTextW(context_, text.c_str(), -1, &area, DT_CALCRECT | DT_SINGLELINE);
        return {area.right, area.bottom};
    }

private:
    HDC context_;
    std::unique_ptr<std::remove_pointer_t<HFONT>, DeleteObjectOfGdi> font_;
};

void CheckText(const Control& control, const TextMeasure& measure)
{
    const SIZE size = measure.Of(control.text);
    if (size.cx > control.area.right - control.area.left || size.cy > control.area.bottom - control.area.top)
        throw Failure{L"the text needs " + std::to_wstring(size.cx) + L" x " + std::to_wstring(size.cy) +
                      L" and has less: " + Label(control)};
}

std::wstring Cell(const Window& window, HWND list, int row, int column)
{
    constexpr int Capacity = 256;
    const RemoteMemory memory(window, sizeof(LVITEMW) + Capacity * sizeof(wchar_t));
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = reinterpret_cast<wchar_t*>(memory.Address() + sizeof item);
    item.cchTextMax = Capacity;
    memory.Write(0, &item, sizeof item);
    const LRESULT length =
        window.Send(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(memory.Address()));
    std::wstring text(static_cast<std::size_t>(std::max<LRESULT>(length, 0)), L'\0');
    if (!text.empty())
        memory.Read(sizeof item, text.data(), text.size() * sizeof(wchar_t));
    return text;
}

} // namespace

void CheckNames(const Window& window)
{
    const std::vector<Control> controls = window.Controls();
    int count = 0;
    for (std::size_t i = 0; i < controls.size(); ++i)
    {
        const Control& control = controls[i];
        if (!control.isTabStop)
            continue;
        ++count;
        const bool isNamedByItself = IsClass(control, L"Button") && !control.text.empty();
        const bool isNamedByLabel = i > 0 && IsClass(controls[i - 1], L"Static") && !controls[i - 1].text.empty();
        if (!isNamedByItself && !isNamedByLabel)
            throw Failure{L"no name for screen readers: " + Label(control)};
    }
    if (count == 0)
        throw Failure{L"Tab reaches no control"};
}

void CheckMnemonics(const Window& window)
{
    std::map<wchar_t, std::wstring> owners;
    for (const Control& control : window.Controls())
    {
        // The "&" of another control is a part of its content.
        if (!IsClass(control, L"Button") && !IsClass(control, L"Static"))
            continue;
        const wchar_t letter = Mnemonic(control.text);
        if (letter == 0 && IsClass(control, L"Button"))
            throw Failure{L"no mnemonic: " + Label(control)};
        if (letter != 0 && !owners.emplace(letter, Label(control)).second)
            throw Failure{L"one mnemonic for two: " + owners[letter] + L", " + Label(control)};
    }
}

void CheckLayout(const Window& window, UINT dpi)
{
    const TextMeasure measure(dpi);
    const std::vector<Control> controls = VisibleControls(window);
    RECT client{};
    GetClientRect(window.Handle(), &client);
    for (std::size_t i = 0; i < controls.size(); ++i)
    {
        const RECT& area = controls[i].area;
        if (area.left < 0 || area.top < 0 || area.right > client.right || area.bottom > client.bottom ||
            area.left >= area.right || area.top >= area.bottom)
            throw Failure{L"not inside the window: " + Label(controls[i])};
        for (std::size_t other = 0; other < i; ++other)
        {
            RECT common{};
            if (IntersectRect(&common, &area, &controls[other].area) != FALSE)
                throw Failure{L"overlap: " + Label(controls[other]) + L", " + Label(controls[i])};
        }
        if (IsClass(controls[i], L"Button") || IsClass(controls[i], L"Static"))
            CheckText(controls[i], measure);
    }
}

std::vector<std::wstring> Rows(const Window& window, HWND list)
{
    const auto header = reinterpret_cast<HWND>(window.Send(list, LVM_GETHEADER, 0, 0));
    const auto columns = static_cast<int>(window.Send(header, HDM_GETITEMCOUNT, 0, 0));
    const auto count = static_cast<int>(window.Send(list, LVM_GETITEMCOUNT, 0, 0));
    std::vector<std::wstring> rows;
    for (int row = 0; row < count; ++row)
    {
        std::wstring text = Cell(window, list, row, 0);
        for (int column = 1; column < columns; ++column)
            text += L" | " + Cell(window, list, row, column);
        rows.push_back(text);
    }
    return rows;
}

void ChangeDpi(const Window& window, UINT from, UINT to)
{
    RECT area{};
    GetWindowRect(window.Handle(), &area);
    const auto scale = [from, to](LONG length) {
        return static_cast<LONG>(MulDiv(static_cast<int>(length), static_cast<int>(to), static_cast<int>(from)));
    };
    area.right = area.left + scale(area.right - area.left);
    area.bottom = area.top + scale(area.bottom - area.top);
    const RemoteMemory memory(window, sizeof area);
    memory.Write(0, &area, sizeof area);
    window.Send(window.Handle(), WM_DPICHANGED, MAKEWPARAM(to, to), reinterpret_cast<LPARAM>(memory.Address()));
}

} // namespace WindowTest
