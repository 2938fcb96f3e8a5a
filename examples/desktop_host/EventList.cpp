#include "EventList.h"

#include <iterator>
#include <string>

#include <commctrl.h>

#include "Codes.h"

namespace DesktopHost {

namespace {

/// A program that runs for months must not fill the memory with events.
constexpr int MostRows = 1000;

void AddColumn(HWND list, int index, const wchar_t* title)
{
    std::wstring text = title;
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_SUBITEM;
    column.pszText = text.data();
    column.iSubItem = index;
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&column));
}

void SetCell(HWND list, int row, int column, std::wstring text)
{
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

/// In the form that the user has set.
std::wstring TimeOfDay()
{
    wchar_t text[64] = L"";
    GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, nullptr, nullptr, text, static_cast<int>(std::size(text)));
    return text;
}

} // namespace

void PrepareEventList(HWND list)
{
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    AddColumn(list, 0, L"Time");
    AddColumn(list, 1, L"Event");
    AddColumn(list, 2, L"Result");
}

void AddEvent(HWND list, const Event& event)
{
    int count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    if (count >= MostRows)
    {
        SendMessageW(list, LVM_DELETEITEM, 0, 0);
        --count;
    }
    std::wstring time = TimeOfDay();
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = count;
    item.pszText = time.data();
    const int row = static_cast<int>(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    SetCell(list, row, 1, EventName(event.code));
    SetCell(list, row, 2, CodeText(event.status));
    SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

} // namespace DesktopHost
