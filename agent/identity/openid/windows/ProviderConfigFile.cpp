#include "identity/openid/windows/ProviderConfigFile.h"

#include <windows.h>

#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Folders.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr wchar_t FileName[] = L"Pellwick.config.json";
constexpr std::size_t MaxFile = 1024 * 1024;

} // namespace

ProviderConfigChoice ReadProviderConfigFile()
{
    ProviderConfigChoice choice;
    choice.file = FileBesideExecutable(FileName);
    const FileContents contents = ReadFileContents(choice.file, MaxFile);
    choice.exists = contents.IsRead() || !IsMissingFile(contents.error);
    if (contents.IsRead())
        choice.configs = ReadProviderConfigs(contents.bytes, Narrow(choice.file), choice.problem);
    else if (contents.error == ERROR_FILE_TOO_LARGE)
        choice.problem = Narrow(choice.file) + ": larger than 1 MiB, which is the most that a configuration may have";
    else
        choice.problem = Narrow(choice.file) + ": cannot be read: " + SystemMessage(contents.error);
    return choice;
}

} // namespace Kestrany::Agent::OpenId
