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
using ReadFileDouble = ImportDouble<ReadFileImport>;

} // namespace OrlindexTest

#endif
