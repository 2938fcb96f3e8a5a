#include "VersionRecord.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>
#include <windows.h>

#include "base/TextConversion.h"

namespace Orlindex::Doctor {
namespace {

using Kestrany::IdentityServices::Narrow;

/// The platform answers the lengths that the record itself claims. Where they lead beyond its end, they are cut.
class RecordReader
{
public:
    RecordReader(const void* record, std::size_t size) : record_(record), size_(size)
    {
        struct Translation
        {
            WORD language;
            WORD codePage;
        };
        std::size_t length = 0;
        const auto* translation = static_cast<const Translation*>(Query(L"\\VarFileInfo\\Translation", 1, length));
        wchar_t block[] = L"\\StringFileInfo\\040904B0\\";
        if (translation && length >= sizeof *translation)
            swprintf(block, std::size(block), L"\\StringFileInfo\\%04X%04X\\", translation->language,
                     translation->codePage);
        block_ = block;
    }

    std::string Text(const wchar_t* name) const
    {
        std::size_t length = 0;
        const auto* text = static_cast<const wchar_t*>(Query((block_ + name).c_str(), sizeof(wchar_t), length));
        if (!text)
            return {};
        std::wstring wide(text, length);
        return Narrow(wide.substr(0, wide.find(L'\0')));
    }

    std::string FileVersion() const
    {
        std::size_t length = 0;
        const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(Query(L"\\", 1, length));
        if (!fixed || length < sizeof *fixed)
            return {};
        return std::to_string(HIWORD(fixed->dwFileVersionMS)) + '.' + std::to_string(LOWORD(fixed->dwFileVersionMS)) +
               '.' + std::to_string(HIWORD(fixed->dwFileVersionLS)) + '.' +
               std::to_string(LOWORD(fixed->dwFileVersionLS));
    }

private:
    /// `length` counts units of `unit` bytes, all of them within the record.
    const void* Query(const wchar_t* path, std::size_t unit, std::size_t& length) const
    {
        void* value = nullptr;
        UINT claimed = 0;
        if (!VerQueryValueW(record_, path, &value, &claimed))
            return nullptr;
        const std::size_t offset = reinterpret_cast<std::uintptr_t>(value) - reinterpret_cast<std::uintptr_t>(record_);
        if (offset >= size_)
            return nullptr;
        length = std::min<std::size_t>(claimed, (size_ - offset) / unit);
        return value;
    }

    const void* record_;
    std::size_t size_;
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
    return ParseVersionRecord(bytes.data(), bytes.size());
}

std::optional<VersionRecord> ParseVersionRecord(const void* record, std::size_t size)
{
    WORD length = 0; // Of the whole record. The platform walks it without being told where the bytes end.
    if (size < sizeof length)
        return std::nullopt;
    std::memcpy(&length, record, sizeof length);
    if (length > size)
        return std::nullopt;
    const RecordReader reader(record, size);
    return VersionRecord{
        reader.FileVersion(),         reader.Text(L"CompanyName"),      reader.Text(L"FileDescription"),
        reader.Text(L"SpecialBuild"), reader.Text(L"PinnedRootSha256"), reader.Text(L"AcceptedSigners")};
}

} // namespace Orlindex::Doctor
