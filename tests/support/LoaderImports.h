#ifndef ORLINDEX_SUPPORT_LOADERIMPORTS_H
#define ORLINDEX_SUPPORT_LOADERIMPORTS_H

#include <windows.h>

#include "support/ImportPatch.h"

namespace OrlindexTest {

// The platform's library loader, and the directory that it searches.

struct LoadLibraryImport
{
    static constexpr char Name[] = "LoadLibraryW";
    using Type = decltype(LoadLibraryW);
};

struct LoadLibraryExImport
{
    static constexpr char Name[] = "LoadLibraryExW";
    using Type = decltype(LoadLibraryExW);
};

struct GetDllDirectoryImport
{
    static constexpr char Name[] = "GetDllDirectoryW";
    using Type = decltype(GetDllDirectoryW);
};

struct SetDllDirectoryImport
{
    static constexpr char Name[] = "SetDllDirectoryW";
    using Type = decltype(SetDllDirectoryW);
};

using LoadLibraryDouble = ImportDouble<LoadLibraryImport>;
using LoadLibraryExDouble = ImportDouble<LoadLibraryExImport>;
using GetDllDirectoryDouble = ImportDouble<GetDllDirectoryImport>;
using SetDllDirectoryDouble = ImportDouble<SetDllDirectoryImport>;

} // namespace OrlindexTest

#endif
