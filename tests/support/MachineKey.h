#ifndef ORLINDEX_SUPPORT_MACHINEKEY_H
#define ORLINDEX_SUPPORT_MACHINEKEY_H

#include <string>

#include <windows.h>

namespace OrlindexTest {

/// The installer's registry key, HKEY_LOCAL_MACHINE\SOFTWARE\Kestrany\Pellwick. The whole machine (or prefix) has one,
/// so only test suites whose name starts with `Machine` may write it. MachineLock keeps other tests out meanwhile.
///
/// A key made here has a mark, and only a marked key is removed: a real installation stays.
class MachineKey
{
public:
    /// Makes the key.
    MachineKey();
    /// Removes it.
    ~MachineKey();
    MachineKey(const MachineKey&) = delete;
    MachineKey& operator=(const MachineKey&) = delete;

    /// Sets the key's own "Location".
    void SetLocation(const std::wstring& location) const;
    /// Sets the key's own "Location" to any bytes.
    void SetLocation(DWORD type, const void* data, DWORD size) const;
    /// Makes a versioned subkey with a "Location".
    void AddVersion(const std::wstring& version, const std::wstring& location) const;
    /// Makes a versioned subkey with a "Location" of any bytes.
    void AddVersion(const std::wstring& version, DWORD type, const void* data, DWORD size) const;
    /// Makes a versioned subkey without a "Location".
    void AddVersion(const std::wstring& version) const;

    static bool Exists();
    /// Removes a key that an earlier test left. Throws if the key belongs to a real installation.
    static void RemoveStale();
};

} // namespace OrlindexTest

#endif
