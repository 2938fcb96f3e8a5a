// The program: runs a command and prints its report. README.md says which file answers which question.

#include <exception>
#include <stdexcept>
#include <vector>
#include <windows.h>

#include "BuildData.h"
#include "Commands.h"
#include "Console.h"
#include "FileAccess.h"
#include "LoadProcess.h"
#include "ReportForms.h"
#include "Texts.h"
#include "base/Log.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "base/Product.h"
#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

using namespace Kestrany::IdentityServices;

std::string Version()
{
    std::string version = std::string("orlindex-doctor ") + ProductVersion;
    if (Kestrany::BuildData::DevelopmentRoot)
        version += " (development root)";
    return version;
}

std::wstring AbsolutePath(const std::wstring& path)
{
    std::wstring full = FullPath(path);
    if (full.empty())
        throw UsageError("no path: '" + Narrow(path) + "'");
    return full;
}

std::wstring HostFolder(const Options& options)
{
    if (options.host.empty())
        return GetExeDirPath();
    const std::wstring host = AbsolutePath(options.host);
    const DWORD attributes = GetFileAttributesW(host.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        throw UsageError("--host names no folder: '" + Narrow(host) + "'");
    return host;
}

/// If no searched folder holds a client config file, a start-up reads one from the current directory. Most hosts run in
/// their own folder, so the tool does the same, whatever folder it is called from.
void EnterHostFolder(const std::wstring& host)
{
    if (!SetCurrentDirectoryW(host.c_str()))
        throw std::runtime_error("cannot enter the host's folder '" + Narrow(host) + "': " + ErrorText(GetLastError()));
}

bool UsesColor(const Options& options, Console& console)
{
    return options.color && GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) <= 1 && console.EnableColor();
}

std::string Question(const Subject& subject)
{
    if (subject.command == "check")
        return "Does the plugin module " + subject.module + " keep the contract?";
    if (subject.command == "provider")
        return "Can the sign-in agent of a host in " + subject.host + " sign users in with its provider?";
    return "How would a host in " + subject.host + " start?";
}

const char* CommandName(Command command)
{
    switch (command)
    {
    case Command::Check:
        return "check";
    case Command::Provider:
        return "provider";
    default:
        return "start";
    }
}

Diagnosis RunCommand(const Options& options, const std::wstring& host, const std::wstring& module, Report& report)
{
    switch (options.command)
    {
    case Command::Check:
        return RunCheck(options, host, module, report);
    case Command::Provider:
        return RunProvider(options, host, report);
    default:
        return RunStartUp(options, host, report);
    }
}

ExitCode RunReport(Options options, Console& console)
{
    const bool check = options.command == Command::Check;
    const std::wstring host = HostFolder(options);
    const std::wstring module = check ? AbsolutePath(options.module) : std::wstring();
    if (!options.compatibility.empty())
        options.compatibility = AbsolutePath(options.compatibility);
    if (!options.config.empty())
        options.config = AbsolutePath(options.config);
    EnterHostFolder(host); // All paths are absolute by now.
    const Subject subject = {CommandName(options.command), Narrow(host), Narrow(module), options.load};

    SetPluginLogger([](const std::wstring&, LogLevel) {}); // The report says what the library's steps log.
    TextReport text(console, !options.json && UsesColor(options, console));
    if (!options.json)
        text.WriteTitle(Version(), Question(subject));
    Report report(options.json ? nullptr : &text);
    const Diagnosis diagnosis = Presentable(RunCommand(options, host, module, report));
    if (options.json)
        console.Write(JsonReport(subject, report, diagnosis));
    else
        text.WriteDiagnosis(diagnosis);
    return diagnosis.code;
}

ExitCode Run(const std::vector<std::wstring>& arguments)
{
    Console output(STD_OUTPUT_HANDLE);
    const Console errors(STD_ERROR_HANDLE);
    try
    {
        const Options options = ParseOptions(arguments);
        if (options.command == Command::Help)
            output.Write(HelpText());
        else if (options.command == Command::Version)
            output.Write(Version() + '\n');
        else
            return RunReport(options, output);
        return ExitCode::Starts;
    }
    catch (const UsageError& error)
    {
        errors.Write(std::string("error: ") + error.what() + "\n       orlindex-doctor --help shows what there is\n");
        return ExitCode::UsageError;
    }
    catch (const std::exception& error)
    {
        errors.Write(std::string("error: ") + error.what() + '\n');
        return ExitCode::ToolError;
    }
}

} // namespace
} // namespace Orlindex::Doctor

int main()
{
    using namespace Orlindex::Doctor;

    const std::vector<std::wstring> arguments = ProcessArguments();
    if (!arguments.empty() && arguments.front() == LoadChildCommand)
        return RunLoadChild({arguments.begin() + 1, arguments.end()});
    return static_cast<int>(Run(arguments));
}
