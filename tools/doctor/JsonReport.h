#ifndef ORLINDEX_DOCTOR_JSONREPORT_H
#define ORLINDEX_DOCTOR_JSONREPORT_H

#include <string>

#include "Report.h"

namespace Orlindex::Doctor {

/// What the report is about.
struct Subject
{
    std::string command; ///< "start" or "check".
    std::string host;    ///< The host's folder.
    std::string module;  ///< Of "check".
    bool load;
};

/// The document that docs/schema/doctor-report.schema.json describes.
std::string JsonReport(const Subject& subject, const Report& report, const Verdict& verdict);

} // namespace Orlindex::Doctor

#endif
