#include "EntryRecorder.h"

#include "Words.h"
#include "base/Product.h"
#include "base/Text.h"
#include "base/Versions.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

constexpr std::size_t mostShown = 100;  ///< Of each kind, as lines.
constexpr std::size_t mostOffered = 10; ///< In the verdict's sentence.

Finding EntryLine(const EntryFinding& finding)
{
    const VersionCompatibilityEntry& entry = finding.entry;
    Finding line = {Mark::Info, "entry", EntryPlace(entry), "", "", "", ""};
    line.value = Narrow(entry.module);
    if (!entry.version.empty())
        line.value += ' ' + JoinVersion(entry.version);
    if (!entry.modulePath.empty())
        line.value += (line.value.empty() ? "" : ", ") + Narrow(entry.modulePath);
    if (finding.defect)
    {
        line.mark = Mark::Warning;
        line.result = DefectName(*finding.defect);
        line.note = std::string("ignored, ") + DefectWords(*finding.defect);
    }
    else if (finding.chosen)
    {
        line.mark = Mark::Ok;
        line.result = "chosen";
        line.note = "chosen, serves " + RangeWords(entry);
    }
    else if (finding.mismatch)
    {
        line.result = MismatchName(*finding.mismatch);
        line.note = std::string("does not serve ") + ProductVersion + ": " + RangeWords(entry);
    }
    else
    {
        line.result = "not-higher";
        line.note = "serves, but its version is not higher than the chosen one's";
    }
    return line;
}

} // namespace

void EntryRecorder::Add(const EntryFinding& finding)
{
    EntryFacts& entries = facts_.entries;
    std::size_t& count = finding.defect ? entries.defective : entries.sound;
    std::size_t& hidden = finding.defect ? hiddenDefective_ : hiddenSound_;
    ++count;
    if (finding.defect && !entries.firstDefective)
        entries.firstDefective = finding;
    if (!finding.defect && entries.firstSound.size() < mostOffered)
        entries.firstSound.push_back(finding);
    if (count > mostShown && !finding.chosen)
    {
        ++hidden;
        return;
    }
    report_.Begin(StepId::CompatibilityEntries);
    Finding line = EntryLine(finding);
    line.source = Narrow(facts_.compatibilityFile);
    report_.Add(std::move(line));
}

void EntryRecorder::Finish()
{
    AddHidden(hiddenDefective_, facts_.entries.defective, Mark::Warning, "more are ignored, for such defects");
    AddHidden(hiddenSound_, facts_.entries.sound, Mark::Info, "more are not chosen");
    hiddenDefective_ = hiddenSound_ = 0;
}

void EntryRecorder::AddHidden(std::size_t count, std::size_t total, Mark mark, const char* note)
{
    if (count == 0)
        return;
    report_.Begin(StepId::CompatibilityEntries);
    report_.Add({mark, "entry", "further entries", std::to_string(count), "not-shown", Narrow(facts_.compatibilityFile),
                 note, total});
}

} // namespace Orlindex::Doctor
