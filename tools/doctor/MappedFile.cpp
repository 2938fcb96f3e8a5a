#include "MappedFile.h"

namespace Orlindex::Doctor {

MappedFile::MappedFile(const std::wstring& path) : file_(path, FILE_SHARE_READ), error_(file_.Error())
{
    LARGE_INTEGER size = {};
    if (!file_.IsOpen())
        return;
    if (!GetFileSizeEx(file_.Get(), &size))
    {
        error_ = GetLastError();
        return;
    }
    if (size.QuadPart == 0)
        return; // Readable, and cannot be mapped.
    // Released here; the view keeps it.
    const Kestrany::IdentityServices::Handle mapping(
        CreateFileMappingW(file_.Get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    view_ = mapping ? MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0) : nullptr;
    error_ = view_ ? ERROR_SUCCESS : GetLastError();
    size_ = view_ ? static_cast<std::size_t>(size.QuadPart) : 0;
}

MappedFile::~MappedFile()
{
    if (view_)
        UnmapViewOfFile(view_);
}

} // namespace Orlindex::Doctor
