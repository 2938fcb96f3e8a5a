#include "VersionRecord.h"

#include <vector>
#include <windows.h>

#include "base/SystemText.h"

namespace Orlindex::Doctor {
namespace {

using Kestrany::IdentityServices::Narrow;

class RecordReader
{
public:
    explicit RecordReader(const std::vector<BYTE>& record) : record_(record)
    {
        struct Translation
        {
            WORD language;
            WORD codePage;
        };
        UINT size = 0;
        const auto* translation = static_cast<const Translation*>(Query(L"\\VarFileInfo\\Translation", size));
        wchar_t block[] = L"\\StringFileInfo\\040904B0\\";
        if (translation && size >= sizeof *translation)
            swprintf(block, std::size(block), L"\\StringFileInfo\\%04X%04X\\", translation->language,
                     translation->codePage);
        block_ = block;
    }

    std::string Text(const wchar_t* name) const
    {
        UINT length = 0;
        const auto* text = static_cast<const wchar_t*>(Query((block_ + name).c_str(), length));
        if (!text)
            return {};
        std::wstring wide(text, length);
        return Narrow(wide.substr(0, wide.find(L'\0')));
    }

    std::string FileVersion() const
    {
        UINT size = 0;
        const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(Query(L"\\", size));
        if (!fixed || size < sizeof *fixed)
            return {};
        return std::to_string(HIWORD(fixed->dwFileVersionMS)) + '.' + std::to_string(LOWORD(fixed->dwFileVersionMS)) +
               '.' + std::to_string(HIWORD(fixed->dwFileVersionLS)) + '.' +
               std::to_string(LOWORD(fixed->dwFileVersionLS));
    }

private:
    const void* Query(const wchar_t* path, UINT& size) const
    {
        void* value = nullptr;
        return VerQueryValueW(record_.data(), path, &value, &size) ? value : nullptr;
    }

    const std::vector<BYTE>& record_;
    std::wstring block_;
};

} // namespace

std::optional<VersionRecord> ReadVersionRecord(const std::wstring& path)
{
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    std::vector<BYTE> bytes(size);
    if (size == 0 || !GetFileVersionInfoW(path.c_str(), 0, size, bytes.data()))
        return std::nullopt;
    const RecordReader reader(bytes);
    return VersionRecord{reader.FileVersion(), reader.Text(L"CompanyName"), reader.Text(L"FileDescription"),
                         reader.Text(L"SpecialBuild")};
}

} // namespace Orlindex::Doctor
