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
    Info, ///< Neither good nor bad: a value, a directory that was not needed.
    Warning,
    Failed
};

/// The steps of a start, in their order.
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
    Interfaces
};

/// One thing that a step saw.
struct Finding
{
    Mark mark;
    std::string kind;   ///< What it is about: "file", "directory", "setting", "registry", "entry", ...
    std::string name;   ///< Of the thing.
    std::string value;  ///< What it is.
    std::string result; ///< A word of a fixed set, depending on the kind.
    std::string source; ///< Where the value comes from: file and key, registry key and view, default, ...
    std::string note;   ///< In words.
    /// Where a finding stands for many that are not shown: how many there are, those that are shown included.
    std::optional<std::size_t> total = {};
};

struct Step
{
    StepId id;
    std::vector<Finding> findings;

    /// The gravest of its findings.
    Mark Outcome() const;
};

struct Verdict
{
    ExitCode code;
    std::optional<StepId> step; ///< That fails. Nothing where none does.
    std::string cause;
    std::string remedy;
};

const char* StepName(StepId id);  ///< As in the JSON report.
const char* StepTitle(StepId id); ///< For people.
const char* MarkName(Mark mark);

/// The texts of files are not what they should be at times: what is no UTF-8 in one becomes U+FFFD, and one that is
/// longer than 16 KiB is cut.
std::string Presentable(const std::string& text);
Verdict Presentable(const Verdict& verdict);

/// Is told of each step and finding as it comes.
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

    /// Findings belong to this step from now on.
    void Begin(StepId id);
    /// Its texts become presentable.
    void Add(Finding finding);

    const std::vector<Step>& Steps() const { return steps_; }

private:
    ReportListener* listener_;
    std::vector<Step> steps_;
};

} // namespace Orlindex::Doctor

#endif
