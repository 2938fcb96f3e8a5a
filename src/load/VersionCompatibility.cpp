#include "load/VersionCompatibility.h"

#include <map>
#include <optional>

#include "base/FileContents.h"
#include "base/JsonDocument.h"
#include "base/MessageFormat.h"
#include "base/TextConversion.h"
#include "base/Wow64.h"
#include "load/CompatibilityDocument.h"
#include "load/StartObserver.h"

namespace Kestrany::IdentityServices {
namespace {

std::wstring DefectMessage(EntryDefect defect, const std::wstring& key, const std::wstring& file)
{
    switch (defect)
    {
    case EntryDefect::ModuleBlank:
        return Message(L"Blank or missing key 'module' in %1% in version compatibility file %2%. Object ignored.", key,
                       file);
    case EntryDefect::ModulePathBlank:
        return Message(
            L"Blank or missing key 'modulePath' or 'modulePathWoW64' in %1% in version compatibility file %2%. "
            L"Object ignored.",
            key, file);
    case EntryDefect::VersionBlank:
        return Message(L"Blank or missing key 'version' in %1% in version compatibility file %2%. Object ignored.", key,
                       file);
    case EntryDefect::RangeMissing:
        return Message(
            L"Missing object 'compatibleSsoServicesVersion' in version compatibility file %1%. Object ignored.", file);
    case EntryDefect::RangeInvalid:
        return Message(L"Invalid version range in 'compatibleSsoServicesVersion' object in version compatibility file "
                       L"%1%. Object ignored.",
                       file);
    }
    return {};
}

/// The messages about one file's bad elements: each is built once, as a file can hold millions of them.
class DefectMessages
{
public:
    DefectMessages(const std::wstring& key, const std::wstring& file) : key_(key), file_(file) {}

    const std::wstring& Of(EntryDefect defect)
    {
        std::wstring& message = messages_[defect];
        if (message.empty())
            message = DefectMessage(defect, key_, file_);
        return message;
    }

private:
    const std::wstring& key_;
    const std::wstring& file_;
    std::map<EntryDefect, std::wstring> messages_;
};

std::optional<Json::Value> ReadJsonFile(const std::wstring& file, StartObserver* observer)
{
    DWORD readError = ERROR_SUCCESS;
    JsonError parseError;
    const std::optional<std::string> contents = ReadFileContents(file, &readError);
    std::optional<Json::Value> root = contents ? ParseJson(*contents, observer ? &parseError : nullptr) : std::nullopt;
    if (observer)
        observer->OnDocument({StartFile::VersionCompatibility, file, readError,
                              contents && !root ? std::optional(parseError) : std::nullopt});
    return root;
}

void TellVerdicts(StartObserver& observer, const std::vector<VersionCompatibilityEntry>& entries,
                  const VersionCompatibilityEntry* chosen, const VersionParts& sdkVersion)
{
    for (const VersionCompatibilityEntry& entry : entries)
        observer.OnCompatibilityEntry({entry, std::nullopt, &entry == chosen, RefusalOf(entry, sdkVersion)});
}

} // namespace

bool ReadVersionCompatibility(const std::wstring& file, const std::string& key, const VersionParts& sdkVersion,
                              const VersionCompatibilityContext& context, VersionCompatibilityEntry& chosen)
{
    if (!context.fileExists)
    {
        context.log(Message(L"Version compatibility file %1% not found", file), TALIXLog::Error);
        return false;
    }
    const std::optional<Json::Value> root = ReadJsonFile(file, context.observer);
    if (!root)
    {
        context.log(Message(L"Failed to load file %1%. Possibly json format is not valid.", file), TALIXLog::Error);
        return false;
    }
    const std::wstring wideKey = Widen(key);
    DefectMessages messages(wideKey, file);
    const auto ignored = [&](EntryDefect defect) { context.log(messages.Of(defect), TALIXLog::Error); };
    const auto examined = [&](const VersionCompatibilityEntry& entry, EntryDefect defect) {
        if (context.observer)
            context.observer->OnCompatibilityEntry({entry, defect, false, std::nullopt});
    };
    const std::vector<VersionCompatibilityEntry> entries =
        ReadEntries(*root, key, {IsWow64(), Widen, context.expand, ignored, examined});
    if (entries.empty())
    {
        context.log(Message(L"Version compatibility list is empty under key %1% in version compatibility file %2%",
                            wideKey, file),
                    TALIXLog::Error);
        return false;
    }
    const VersionCompatibilityEntry* entry = ChooseEntry(entries, sdkVersion);
    if (context.observer)
        TellVerdicts(*context.observer, entries, entry, sdkVersion);
    if (!entry)
        return false;
    chosen = *entry;
    return true;
}

} // namespace Kestrany::IdentityServices
