#include "process/CommandLine.h"

#include <memory>

#include <windows.h>

#include <shellapi.h>

#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

/// Within quotes a run of backslashes counts double before a quote, and as it stands elsewhere.
std::wstring Quoted(const std::wstring& text)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : text)
    {
        if (character == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L"\"";
}

struct LocalFreer
{
    void operator()(wchar_t** texts) const { LocalFree(texts); }
};

} // namespace

std::wstring JoinCommandLine(const std::vector<std::wstring>& texts)
{
    std::wstring line;
    for (const std::wstring& text : texts)
        line += (line.empty() ? L"" : L" ") + Quoted(text);
    return line;
}

std::vector<std::string> ProcessArguments()
{
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalFreer> texts(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int index = 1; texts && index < count; ++index)
        arguments.push_back(ToDisplay(texts.get()[index]));
    return arguments;
}

} // namespace Kestrany::Agent
