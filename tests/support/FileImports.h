#ifndef ORLINDEX_SUPPORT_FILEIMPORTS_H
#define ORLINDEX_SUPPORT_FILEIMPORTS_H

#include <windows.h>

#include "support/ImportPatch.h"

namespace OrlindexTest {

struct CreateFileImport
{
    static constexpr char Name[] = "CreateFileW";
    using Type = decltype(CreateFileW);
};

struct FileAttributesImport
{
    static constexpr char Name[] = "GetFileAttributesW";
    using Type = decltype(GetFileAttributesW);
};

struct FileInformationImport
{
    static constexpr char Name[] = "GetFileInformationByHandle";
    using Type = decltype(GetFileInformationByHandle);
};

struct FileSizeImport
{
    static constexpr char Name[] = "GetFileSizeEx";
    using Type = decltype(GetFileSizeEx);
};

struct FinalPathImport
{
    static constexpr char Name[] = "GetFinalPathNameByHandleW";
    using Type = decltype(GetFinalPathNameByHandleW);
};

/// Behind the path of the file that a module was mapped from.
struct QueryMemoryImport
{
    static constexpr char Name[] = "NtQueryVirtualMemory";
    using Type = LONG(HANDLE, const void*, int, void*, SIZE_T, SIZE_T*);
};

struct ReadFileImport
{
    static constexpr char Name[] = "ReadFile";
    using Type = decltype(::ReadFile);
};

using CreateFileDouble = ImportDouble<CreateFileImport>;
using FileAttributesDouble = ImportDouble<FileAttributesImport>;
using FileInformationDouble = ImportDouble<FileInformationImport>;
using FileSizeDouble = ImportDouble<FileSizeImport>;
using FinalPathDouble = ImportDouble<FinalPathImport>;
using QueryMemoryDouble = ImportDouble<QueryMemoryImport>;
using ReadFileDouble = ImportDouble<ReadFileImport>;

} // namespace OrlindexTest

#endif
