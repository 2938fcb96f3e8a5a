#ifndef ORLINDEX_SUPPORT_WOW64IMPORT_H
#define ORLINDEX_SUPPORT_WOW64IMPORT_H

#include "ImportPatch.h"

namespace OrlindexTest {

/// The question whether this is a 32-bit process on 64-bit Windows.
struct IsWow64ProcessImport
{
    static constexpr char Name[] = "IsWow64Process";
    using Type = decltype(IsWow64Process);
};

} // namespace OrlindexTest

#endif
