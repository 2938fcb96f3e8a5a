#ifndef ORLINDEX_DOCTOR_MAPPEDFILE_H
#define ORLINDEX_DOCTOR_MAPPEDFILE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "base/Files.h"

namespace Orlindex::Doctor {

/// A file's bytes, mapped as data. It cannot be written meanwhile: bytes that are gone would end this process.
class MappedFile
{
public:
    explicit MappedFile(const std::wstring& path);
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    /// Why it cannot be read; ERROR_SUCCESS if it can.
    DWORD Error() const { return error_; }
    std::string_view Bytes() const { return {static_cast<const char*>(view_), size_}; }

private:
    Kestrany::IdentityServices::File file_;
    DWORD error_;
    const void* view_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace Orlindex::Doctor

#endif
