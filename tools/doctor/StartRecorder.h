#ifndef ORLINDEX_DOCTOR_STARTRECORDER_H
#define ORLINDEX_DOCTOR_STARTRECORDER_H

#include <string>
#include <vector>

#include "EntryRecorder.h"
#include "Report.h"
#include "StartFacts.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

/// Turns what a start sees into the report's findings, and keeps what the verdict depends on.
class StartRecorder final : public Ids::StartUpObserver
{
public:
    StartRecorder(Report& report, StartFacts& facts) : report_(report), facts_(facts), entries_(report, facts) {}

    void OnSearch(Ids::StartUpFile file, const Ids::SearchResult& result) override;
    void OnDocument(const Ids::DocumentFinding& finding) override;
    void OnSetting(const Ids::SettingFinding& finding) override;
    void OnRegistryKey(const Ids::RegistryKeyFinding& finding) override;
    void OnRegistryChoice(const std::wstring& key, const std::wstring& location) override;
    void OnCompatibilityEntry(const Ids::EntryFinding& finding) override;
    void OnModulePath(const std::wstring& path, std::optional<Ids::ModulePathDefect> defect) override;
    void OnSignature(const Ids::SignatureFinding& finding) override;
    void OnLoadStep(const Ids::LoadFinding& finding) override;

    /// No entry follows.
    void FinishEntries();

private:
    void AddDirectories(Ids::StartUpFile file, const Ids::SearchResult& result, Mark notFound);
    void FlushRegistry();
    void TakeFromCurrentDirectory(const std::wstring& name);

    Report& report_;
    StartFacts& facts_;
    EntryRecorder entries_;
    /// A start looks into the registry whenever it searches for the server application, which it may do several times.
    /// The first search that is a real one counts.
    std::vector<Finding> registry_;
    std::string registryProblem_;
    std::wstring registeredLocation_;
    bool serverApplicationSearched_ = false;
};

/// Findings about a plugin module's signature, at the end of the report's current step.
void AddSignature(Report& report, const SignatureFacts& signature);

} // namespace Orlindex::Doctor

#endif
