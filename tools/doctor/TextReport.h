#ifndef ORLINDEX_DOCTOR_TEXTREPORT_H
#define ORLINDEX_DOCTOR_TEXTREPORT_H

#include <string>

#include "Console.h"
#include "Report.h"

namespace Orlindex::Doctor {

/// Writes each step and finding as it comes, for people.
class TextReport final : public ReportListener
{
public:
    TextReport(const Console& console, bool color) : console_(console), color_(color) {}

    void WriteTitle(const std::string& tool, const std::string& question) const;
    void OnStep(StepId id) override;
    void OnFinding(const Finding& finding) override;
    void WriteVerdict(const Verdict& verdict) const;

private:
    std::string Marked(Mark mark, const std::string& text) const;

    const Console& console_;
    bool color_;
};

} // namespace Orlindex::Doctor

#endif
