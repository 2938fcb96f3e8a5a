#include "ReportForms.h"

#include <algorithm>

namespace Orlindex::Doctor {
namespace {

constexpr std::size_t markWidth = 9;
constexpr std::size_t nameWidth = 26;

std::string Padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

const char* MarkText(Mark mark)
{
    switch (mark)
    {
    case Mark::Ok:
        return "ok";
    case Mark::Info:
        return "-";
    case Mark::Warning:
        return "warning";
    case Mark::Failed:
        return "FAILED";
    }
    return "";
}

const char* ColorOf(Mark mark)
{
    switch (mark)
    {
    case Mark::Ok:
        return "\x1B[32m";
    case Mark::Warning:
        return "\x1B[33m";
    case Mark::Failed:
        return "\x1B[31m";
    case Mark::Info:
        break;
    }
    return "";
}

/// A text may come from a hostile file, so its control characters must not reach the console: they become spaces. A
/// zero character, at which the system ends a path, is shown as \u0000, as in JSON.
std::string Shown(const std::string& text)
{
    std::string shown;
    for (const char character : text)
    {
        const auto byte = static_cast<unsigned char>(character);
        if (byte == 0)
        {
            shown += "\\u0000";
            continue;
        }
        const bool upper = byte >= 0x80 && byte < 0xA0 && !shown.empty() && shown.back() == '\xC2'; // U+0080 to U+009F
        if (upper)
            shown.pop_back();
        shown += upper || byte < 0x20 || byte == 0x7F ? ' ' : character;
    }
    return shown;
}

} // namespace

std::string TextReport::Marked(Mark mark, const std::string& text) const
{
    return color_ && mark != Mark::Info ? ColorOf(mark) + text + "\x1B[0m" : text;
}

void TextReport::WriteTitle(const std::string& tool, const std::string& question) const
{
    console_.Write(tool + '\n' + Shown(question) + '\n');
}

void TextReport::OnStep(StepId id)
{
    console_.Write(std::string("\n") + StepTitle(id) + '\n');
}

void TextReport::OnFinding(const Finding& finding)
{
    std::string line = "  " + Marked(finding.mark, Padded(MarkText(finding.mark), markWidth));
    line += Padded(Shown(finding.name), nameWidth) + Shown(finding.value);
    if (!finding.note.empty())
        line += (finding.value.empty() ? "" : ": ") + Shown(finding.note);
    if (!finding.source.empty())
        line += "  [" + Shown(finding.source) + ']';
    console_.Write(line + '\n');
}

void TextReport::WriteDiagnosis(const Diagnosis& diagnosis) const
{
    const bool starts = diagnosis.code == ExitCode::Starts;
    std::string text =
        "\n" + Marked(starts ? Mark::Ok : Mark::Failed, starts ? "Result: " : "Cause:  ") + Shown(diagnosis.cause);
    if (!diagnosis.remedy.empty())
        text += "\nRemedy: " + Shown(diagnosis.remedy);
    if (diagnosis.step)
        text += std::string("\nStep:   ") + StepName(*diagnosis.step) + ", exit code " +
                std::to_string(static_cast<int>(diagnosis.code));
    console_.Write(text + '\n');
}

} // namespace Orlindex::Doctor
