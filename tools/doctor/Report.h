#ifndef ORLINDEX_DOCTOR_REPORT_H
#define ORLINDEX_DOCTOR_REPORT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"

namespace Orlindex::Doctor {

// All texts are UTF-8.

enum class Mark
{
    Ok,
    Info, ///< Neither good nor bad, such as a directory that does not contain the file.
    Warning,
    Failed
};

/// The steps of a start-up, in their order; then those of `provider`.
enum class StepId
{
    Account,
    Library,
    ClientConfig,
    Registry,
    ServerApplication,
    CompatibilityFile,
    CompatibilityEntries,
    ModuleFile,
    Signature,
    Load,
    Interfaces,

    ProviderConfig,
    NameResolution,
    Tls,
    Discovery,
    Issuer,
    Endpoints,
    Pkce,
    Algorithms,
    Keys,
    RedirectPorts,
    Clock
};

/// One thing that a step found.
struct Finding
{
    Mark mark;
    std::string kind;   ///< "file", "directory", "setting", "registry", "entry", ...
    std::string name;   ///< The name of the thing.
    std::string value;  ///< The value of the thing.
    std::string result; ///< For programs: a word of a fixed set, which depends on the kind.
    std::string source; ///< Where the value comes from: file and key, registry key and view, default, ...
    std::string note;   ///< For people.
    /// If the finding counts others that are not shown: the number of all, including those that are shown.
    std::optional<std::size_t> total = {};
};

struct Step
{
    StepId id;
    std::vector<Finding> findings;

    /// The worst mark of its findings; Info counts as Ok.
    Mark Outcome() const;
};

/// The result of the tool.
struct Diagnosis
{
    ExitCode code;
    std::optional<StepId> step; ///< The step that fails; nullopt if none does.
    std::string cause;
    std::string remedy; ///< Empty if no step fails.
};

const char* StepName(StepId id);  ///< As in the JSON report.
const char* StepTitle(StepId id); ///< For people.
const char* MarkName(Mark mark);

/// Makes a text from a file presentable: what is not UTF-8 becomes U+FFFD, and a text of more than 16 KiB is cut.
std::string Presentable(const std::string& text);
Diagnosis Presentable(const Diagnosis& diagnosis);

/// Is notified of each step and finding as it comes.
class ReportListener
{
public:
    virtual void OnStep(StepId /*id*/) {}
    virtual void OnFinding(const Finding& /*finding*/) {}

protected:
    ~ReportListener() = default;
};

/// What the tool found, in order.
class Report
{
public:
    explicit Report(ReportListener* listener) : listener_(listener) {}

    /// Begins a step; the findings that follow belong to it.
    void Begin(StepId id);
    /// Adds a finding to the current step, with its texts made presentable.
    void Add(Finding finding);

    const std::vector<Step>& Steps() const { return steps_; }

private:
    ReportListener* listener_;
    std::vector<Step> steps_;
};

} // namespace Orlindex::Doctor

#endif
