#ifndef ORLINDEX_SUPPORT_MACHINELOCK_H
#define ORLINDEX_SUPPORT_MACHINELOCK_H

#include "Handle.h"

namespace OrlindexTest {

/// Held by the process that runs a test as a host, over what all tests on a machine (or in a prefix) share. Shared
/// holders run side by side and find no installer's key; an exclusive one runs alone and may change what is shared.
class MachineLock
{
public:
    enum Kind
    {
        Shared,
        Exclusive
    };

    explicit MachineLock(Kind kind);
    ~MachineLock();
    MachineLock(const MachineLock&) = delete;
    MachineLock& operator=(const MachineLock&) = delete;

private:
    void Lock(Kind kind) const;
    void Unlock() const;

    Kind kind_;
    Handle file_;
};

} // namespace OrlindexTest

#endif
