#ifndef ORLINDEX_MODULE_USERKEY_H
#define ORLINDEX_MODULE_USERKEY_H

#include <string>
#include <windows.h>

namespace OrlindexTest {

/// A registry key of this process alone, below the current user's. It is volatile: the key of a crashed test only lasts
/// until the user signs out.
class UserKey
{
public:
    UserKey();
    ~UserKey();
    UserKey(const UserKey&) = delete;
    UserKey& operator=(const UserKey&) = delete;

    /// The whole name, "HKEY_CURRENT_USER\...".
    std::wstring Text() const;

    /// Makes a subkey with a "Location".
    void AddVersion(const std::wstring& version, const std::wstring& location) const;
    /// Makes a subkey with a "Location" of any bytes.
    void AddVersion(const std::wstring& version, DWORD type, const void* data, DWORD size) const;
    /// Makes a subkey without a "Location".
    void AddVersion(const std::wstring& version) const;

private:
    std::wstring path_;
};

} // namespace OrlindexTest

#endif
