#ifndef ORLINDEX_SUPPORT_MACHINELOCK_H
#define ORLINDEX_SUPPORT_MACHINELOCK_H

#include "Handle.h"

namespace OrlindexTest {

/// The lock over what all tests on a machine (or in a prefix) share. Each process that runs a test as a host owns it.
/// Shared owners run side by side, without the installer's key; an exclusive owner runs alone and may change the
/// machine.
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
