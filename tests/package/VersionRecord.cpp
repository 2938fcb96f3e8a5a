// Reads a binary's version record through the platform: VersionRecord FILE VERSION DESCRIPTION SPECIAL-BUILD
//
// Ends with 0 when it says that version, maker, product and description (an empty one is not compared), and bears the
// mark of a special build where one is named, and none otherwise.

#include <windows.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {

class Record
{
public:
    explicit Record(const std::wstring& file)
    {
        DWORD ignored = 0;
        bytes_.resize(GetFileVersionInfoSizeW(file.c_str(), &ignored));
        if (bytes_.empty() || !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(bytes_.size()), bytes_.data()))
            bytes_.clear();
    }

    bool IsThere() const { return !bytes_.empty(); }

    const VS_FIXEDFILEINFO* Numbers() const
    {
        void* value = nullptr;
        UINT size = 0;
        return VerQueryValueW(bytes_.data(), L"\\", &value, &size) && size == sizeof(VS_FIXEDFILEINFO)
                   ? static_cast<const VS_FIXEDFILEINFO*>(value)
                   : nullptr;
    }

    std::optional<std::wstring> Text(const std::wstring& name) const
    {
        void* value = nullptr;
        UINT size = 0;
        const std::wstring path = L"\\StringFileInfo\\040904B0\\" + name;
        if (!VerQueryValueW(bytes_.data(), path.c_str(), &value, &size) || size == 0)
            return std::nullopt;
        return std::wstring(static_cast<const wchar_t*>(value));
    }

private:
    std::vector<unsigned char> bytes_;
};

std::wstring VersionText(DWORD high, DWORD low)
{
    return std::to_wstring(HIWORD(high)) + L"." + std::to_wstring(LOWORD(high)) + L"." + std::to_wstring(HIWORD(low)) +
           L"." + std::to_wstring(LOWORD(low));
}

int differences = 0;

void Expect(const char* what, const std::optional<std::wstring>& found, const std::optional<std::wstring>& expected)
{
    if (found == expected)
        return;
    ++differences;
    std::printf("%s: '%ls', expected '%ls'\n", what, found ? found->c_str() : L"(none)",
                expected ? expected->c_str() : L"(none)");
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count != 5)
    {
        std::puts("usage: VersionRecord FILE VERSION DESCRIPTION SPECIAL-BUILD");
        return 2;
    }
    const std::wstring version = arguments[2];
    const std::wstring special = arguments[4];
    const Record record(arguments[1]);
    const VS_FIXEDFILEINFO* numbers = record.IsThere() ? record.Numbers() : nullptr;
    if (!numbers)
    {
        std::puts("there is no version record");
        return 1;
    }

    Expect("file version", VersionText(numbers->dwFileVersionMS, numbers->dwFileVersionLS), version);
    Expect("product version", VersionText(numbers->dwProductVersionMS, numbers->dwProductVersionLS), version);
    Expect("FileVersion", record.Text(L"FileVersion"), version);
    Expect("ProductVersion", record.Text(L"ProductVersion"), version);
    Expect("ProductName", record.Text(L"ProductName"), L"Orlindex");
    Expect("CompanyName", record.Text(L"CompanyName"), L"Kestrany, Inc.");

    const bool marked = (numbers->dwFileFlags & VS_FF_SPECIALBUILD) != 0;
    Expect("mark", marked ? L"special" : L"ordinary", special.empty() ? L"ordinary" : L"special");
    Expect("SpecialBuild", record.Text(L"SpecialBuild"), special.empty() ? std::nullopt : std::optional(special));
    const std::wstring description = arguments[3];
    if (!description.empty())
        Expect("FileDescription", record.Text(L"FileDescription"),
               special.empty() ? description : description + L" (" + special + L")");
    return differences == 0 ? 0 : 1;
}
