#ifndef ORLINDEX_DOCTOR_REPORTFORMS_H
#define ORLINDEX_DOCTOR_REPORTFORMS_H

#include <string>

#include "Console.h"
#include "Report.h"

namespace Orlindex::Doctor {

// The two forms of a report: text for people (TextReport.cpp), JSON for programs (JsonReport.cpp).

/// Writes each step and finding as it comes.
class TextReport final : public ReportListener
{
public:
    TextReport(const Console& console, bool color) : console_(console), color_(color) {}

    void WriteTitle(const std::string& tool, const std::string& question) const;
    void OnStep(StepId id) override;
    void OnFinding(const Finding& finding) override;
    void WriteDiagnosis(const Diagnosis& diagnosis) const;

private:
    std::string Marked(Mark mark, const std::string& text) const;

    const Console& console_;
    bool color_;
};

/// What a JSON report is about.
struct Subject
{
    std::string command; ///< "start", "check" or "provider".
    std::string host;    ///< The host's folder.
    std::string module;  ///< For "check".
    bool load;
};

/// The document that docs/schema/doctor-report.schema.json describes.
std::string JsonReport(const Subject& subject, const Report& report, const Diagnosis& diagnosis);

} // namespace Orlindex::Doctor

#endif
