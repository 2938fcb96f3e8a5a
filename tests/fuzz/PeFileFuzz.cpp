// Module files of any bytes: everything that is read is inside the file, and no more than requested.

#include <cstdint>
#include <string>
#include <string_view>

#include "Require.h"
#include "doctor/PeFile.h"
#include "doctor/VersionResource.h"

using Orlindex::Doctor::PeFile;
using Orlindex::Doctor::VersionResource;
using OrlindexTest::Require;

namespace {

constexpr std::size_t Limit = 100;
constexpr std::size_t LongestText = 4096;

void RequireTexts(const std::vector<std::string>& texts)
{
    Require(texts.size() <= Limit, "no more names than were asked for");
    for (const std::string& text : texts)
    {
        Require(text.size() < LongestText, "no name is longer than its limit");
        Require(text.find('\0') == std::string::npos, "a name ends at its zero");
    }
}

void RequireVersion(const PeFile& file, std::string_view bytes)
{
    const auto version = file.VersionResourceBytes();
    if (!version)
        return;
    Require(version->data() >= bytes.data() && version->data() + version->size() <= bytes.data() + bytes.size(),
            "the version resource lies within the file");
    if (const auto resource = VersionResource::Read(*version))
    {
        resource->FileVersion();
        Require(resource->Text("FileDescription").size() * 2 <= version->size(), "a text lies within the resource");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto file = PeFile::Read(bytes);
    if (!file)
        return 0;
    file->Machine();
    const std::vector<std::string> names = file->ExportedNames(Limit);
    RequireTexts(names);
    for (const std::string& name : names)
        Require(file->Exports(name), "a name that is listed is exported");
    file->Exports("no such name");
    RequireTexts(file->ImportedLibraries(Limit));
    RequireVersion(*file, bytes);
    return 0;
}
