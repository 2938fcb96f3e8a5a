#include "HostLibrary.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "BuildData.h"
#include "ModuleFile.h"
#include "VersionRecord.h"
#include "Words.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

/// What two builds of one version may differ in, as a version record has it.
struct TrustText
{
    std::string pinnedRoot;
    std::string signers; ///< Separated by semicolons, which no name holds.
};

TrustText OwnTrust()
{
    Sha256 digest;
    std::copy(std::begin(Kestrany::BuildData::PinnedRootSha256), std::end(Kestrany::BuildData::PinnedRootSha256),
              digest.begin());
    std::string signers(Kestrany::BuildData::TrustedSigners, sizeof Kestrany::BuildData::TrustedSigners - 1);
    std::replace(signers.begin(), signers.end(), '\0', ';');
    return {DigestWords(digest), signers};
}

std::set<std::string> NamesOf(const std::string& signers)
{
    std::set<std::string> names;
    std::size_t begin = 0;
    for (std::size_t end = signers.find(';'); end != std::string::npos; end = signers.find(';', begin))
    {
        names.insert(signers.substr(begin, end - begin));
        begin = end + 1;
    }
    names.insert(signers.substr(begin));
    return names;
}

Finding TrustLine(const char* name, const std::string& value, const std::string& own, bool same)
{
    Finding line = {Mark::Ok, "trust", name, value, "same", "version record", "this tool's, too"};
    if (value.empty())
    {
        line.mark = Mark::Warning;
        line.result = "not-said";
        line.note = "the version record does not say; what follows is by this tool's, " + own;
    }
    else if (!same)
    {
        line.mark = Mark::Failed;
        line.result = "other";
        line.note = "not this tool's, " + own + ": it cannot tell which signature this library accepts";
    }
    return line;
}

LibraryTrust CompareTrust(const VersionRecord& record, Report& report)
{
    const TrustText own = OwnTrust();
    const bool sameRoot = record.pinnedRoot == own.pinnedRoot;
    const bool sameSigners = NamesOf(record.signers) == NamesOf(own.signers);
    report.Add(TrustLine("pinned root", record.pinnedRoot, own.pinnedRoot, sameRoot));
    report.Add(TrustLine("accepted signers", record.signers, own.signers, sameSigners));
    if ((!record.pinnedRoot.empty() && !sameRoot) || (!record.signers.empty() && !sameSigners))
        return LibraryTrust::Other;
    return sameRoot && sameSigners ? LibraryTrust::Same : LibraryTrust::NotSaid;
}

Finding VersionLine(const std::optional<VersionRecord>& record, const std::wstring& file)
{
    Finding line = {Mark::Ok, "version",    Narrow(ProductModuleName),        record ? record->fileVersion : "",
                    "same",   Narrow(file), record ? record->description : ""};
    if (line.value != ProductVersion)
    {
        line.mark = Mark::Warning;
        line.result = record ? "other" : "no-record";
        line.note = (record ? "another version than this tool's, "
                            : "has no version record that can be read; this tool's version is ") +
                    std::string(ProductVersion) + ": what follows is what this tool's version would do";
    }
    return line;
}

} // namespace

void CheckHostLibrary(const std::wstring& host, Report& report, StartFacts& facts)
{
    report.Begin(StepId::Library);
    const std::wstring file = JoinPath(host, ProductModuleName);
    if (!PathExists(file))
    {
        report.Add({Mark::Warning, "version", Narrow(ProductModuleName), "", "missing", Narrow(file),
                    "not in the host's folder: a host there cannot use it, and this tool answers as version " +
                        std::string(ProductVersion) + " would"});
        return;
    }
    const std::optional<VersionRecord> record = ReadVersionRecord(file);
    report.Add(VersionLine(record, file));
    if (record && !record->specialBuild.empty())
        report.Add({Mark::Warning, "version", "special build", record->specialBuild, "special", "version record",
                    "no build to ship"});
    if (record)
        facts.libraryTrust = CompareTrust(*record, report);
    InspectLibraryFile(file, report, facts.library);
}

} // namespace Orlindex::Doctor
