#ifndef ORLINDEX_DOCTOR_STARTUPRECORDER_H
#define ORLINDEX_DOCTOR_STARTUPRECORDER_H

#include <string>
#include <vector>

#include "EntryRecorder.h"
#include "Report.h"
#include "StartUpFacts.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

/// Makes findings of what a start-up notifies, and stores the facts that the diagnosis depends on.
class StartUpRecorder final : public Ids::StartUpObserver
{
public:
    StartUpRecorder(Report& report, StartUpFacts& facts) : report_(report), facts_(facts), entries_(report, facts) {}

    void OnSearch(Ids::StartUpFile file, const Ids::SearchResult& result) override;
    void OnJsonFile(const Ids::JsonFileFinding& finding) override;
    void OnSetting(const Ids::SettingFinding& finding) override;
    void OnRegistryKey(const Ids::RegistryKeyFinding& finding) override;
    void OnRegistryChoice(const std::wstring& key, const std::wstring& location) override;
    void OnCompatibilityEntry(const Ids::EntryFinding& finding) override;
    void OnModulePath(const std::wstring& path, std::optional<Ids::ModulePathDefect> defect) override;
    void OnSignature(const Ids::SignatureFinding& finding) override;
    void OnLoadStep(const Ids::LoadFinding& finding) override;

    /// To be called after the last entry, if no module path follows.
    void FinishEntries();

private:
    void AddDirectories(Ids::StartUpFile file, const Ids::SearchResult& result, Mark notFound);
    void FlushRegistry();
    void TakeFromCurrentDirectory(const std::wstring& name);

    Report& report_;
    StartUpFacts& facts_;
    EntryRecorder entries_;
    /// Findings that wait for the search for the server application, to which they belong. A start-up may repeat that
    /// search; only the first one is reported.
    std::vector<Finding> registry_;
    std::string registryProblem_;
    std::wstring registeredLocation_;
    bool serverApplicationSearched_ = false;
};

/// Adds findings about a plugin module's signature to the report's current step.
void AddSignature(Report& report, const SignatureFacts& signature);

} // namespace Orlindex::Doctor

#endif
