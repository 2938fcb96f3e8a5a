#include "JsonReport.h"

#include <json/value.h>
#include <json/writer.h>

#include "BuildData.h"
#include "base/Product.h"

namespace Orlindex::Doctor {
namespace {

/// Of the document's form. A new field does not change it; a field that goes or changes its meaning does.
constexpr int formatVersion = 1;

void SetUnlessEmpty(Json::Value& object, const char* key, const std::string& text)
{
    if (!text.empty())
        object[key] = text;
}

Json::Value FindingValue(const Finding& finding)
{
    Json::Value value(Json::objectValue);
    value["mark"] = MarkName(finding.mark);
    value["kind"] = finding.kind;
    value["name"] = finding.name;
    SetUnlessEmpty(value, "value", finding.value);
    SetUnlessEmpty(value, "result", finding.result);
    SetUnlessEmpty(value, "source", finding.source);
    SetUnlessEmpty(value, "note", finding.note);
    if (finding.total)
        value["total"] = static_cast<Json::UInt64>(*finding.total);
    return value;
}

Json::Value StepValue(const Step& step)
{
    Json::Value value(Json::objectValue);
    value["step"] = StepName(step.id);
    value["mark"] = MarkName(step.Outcome());
    value["findings"] = Json::Value(Json::arrayValue);
    for (const Finding& finding : step.findings)
        value["findings"].append(FindingValue(finding));
    return value;
}

Json::Value VerdictValue(const Verdict& verdict)
{
    const ExitCodeRow* row = FindExitCode(verdict.code);
    Json::Value value(Json::objectValue);
    value["starts"] = verdict.code == ExitCode::Starts;
    value["exitCode"] = static_cast<int>(verdict.code);
    value["result"] = row ? row->name : "";
    value["step"] = verdict.step ? Json::Value(StepName(*verdict.step)) : Json::Value();
    value["cause"] = verdict.cause;
    SetUnlessEmpty(value, "remedy", verdict.remedy);
    return value;
}

} // namespace

std::string JsonReport(const Subject& subject, const Report& report, const Verdict& verdict)
{
    Json::Value root(Json::objectValue);
    root["format"] = "orlindex-doctor-report";
    root["formatVersion"] = formatVersion;
    root["tool"]["version"] = Kestrany::IdentityServices::ProductVersion;
    root["tool"]["developmentRoot"] = Kestrany::BuildData::DevelopmentRoot;
    root["command"] = subject.command;
    root["host"] = subject.host;
    SetUnlessEmpty(root, "module", subject.module);
    root["load"] = subject.load;
    root["steps"] = Json::Value(Json::arrayValue);
    for (const Step& step : report.Steps())
        root["steps"].append(StepValue(step));
    root["verdict"] = VerdictValue(verdict);

    Json::StreamWriterBuilder settings;
    settings["indentation"] = "  ";
    settings["emitUTF8"] = true;
    return Json::writeString(settings, root) + '\n';
}

} // namespace Orlindex::Doctor
