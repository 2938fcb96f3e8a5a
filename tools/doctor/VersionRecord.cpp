#include "VersionRecord.h"

#include "MappedFile.h"
#include "VersionResource.h"
#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

std::string Text(const VersionResource& resource, const char* name)
{
    const std::u16string text = resource.Text(name);
    return Kestrany::IdentityServices::Narrow(std::wstring(text.begin(), text.end()));
}

std::string FileVersion(const VersionResource& resource)
{
    const std::optional<VersionResource::Version> version = resource.FileVersion();
    std::string text;
    if (!version)
        return text;
    for (const std::uint16_t number : *version)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

} // namespace

std::optional<VersionRecord> ReadVersionRecord(const PeFile& module)
{
    const std::optional<std::string_view> bytes = module.VersionResourceBytes();
    const std::optional<VersionResource> resource = bytes ? VersionResource::Read(*bytes) : std::nullopt;
    if (!resource)
        return std::nullopt;
    return VersionRecord{
        FileVersion(*resource),          Text(*resource, "CompanyName"),      Text(*resource, "FileDescription"),
        Text(*resource, "SpecialBuild"), Text(*resource, "PinnedRootSha256"), Text(*resource, "AcceptedSigners")};
}

std::optional<VersionRecord> ReadVersionRecord(const std::wstring& path)
{
    const MappedFile file(path);
    const std::optional<PeFile> module = PeFile::Read(file.Bytes());
    return module ? ReadVersionRecord(*module) : std::nullopt;
}

} // namespace Orlindex::Doctor
