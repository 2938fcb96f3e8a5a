// Tells why sign-in starts on this machine, or why not.

#include <exception>
#include <stdexcept>
#include <vector>
#include <windows.h>

#include <shellapi.h>

#include "BuildData.h"
#include "Commands.h"
#include "Console.h"
#include "FullPath.h"
#include "JsonReport.h"
#include "LoadChild.h"
#include "Options.h"
#include "TextReport.h"
#include "Words.h"
#include "base/Log.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "base/Product.h"
#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

using namespace Kestrany::IdentityServices;

std::vector<std::wstring> CommandLineArguments()
{
    int count = 0;
    wchar_t** const texts = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments;
    for (int index = 1; texts && index < count; ++index)
        arguments.emplace_back(texts[index]);
    LocalFree(texts);
    return arguments;
}

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

/// Where no folder holds a client config file, a start takes one from the current directory. That is the host's folder
/// here, as in most hosts, and not the one that the tool happens to be called from.
void EnterHostFolder(const std::wstring& host)
{
    if (!SetCurrentDirectoryW(host.c_str()))
        throw std::runtime_error("cannot enter the host's folder '" + Narrow(host) +
                                 "': " + ErrorWords(GetLastError()));
}

bool UsesColor(const Options& options, Console& console)
{
    return options.color && GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) <= 1 && console.EnableColor();
}

std::string Question(const Subject& subject)
{
    if (subject.command == "check")
        return "Does the plugin module " + subject.module + " keep the contract?";
    return "How would a host in " + subject.host + " start?";
}

ExitCode RunReport(Options options, Console& console)
{
    const bool check = options.command == Command::Check;
    const std::wstring host = HostFolder(options);
    const std::wstring module = check ? AbsolutePath(options.module) : std::wstring();
    if (!options.compatibility.empty())
        options.compatibility = AbsolutePath(options.compatibility);
    EnterHostFolder(host); // No relative path is left.
    const Subject subject = {check ? "check" : "start", Narrow(host), Narrow(module), options.load};

    SetPluginLogger([](const std::wstring&, LogLevel) {}); // What the library's steps log, the report says.
    TextReport text(console, !options.json && UsesColor(options, console));
    if (!options.json)
        text.WriteTitle(Version(), Question(subject));
    Report report(options.json ? nullptr : &text);
    const Verdict verdict =
        Presentable(check ? RunCheck(options, host, module, report) : RunStart(options, host, report));
    if (options.json)
        console.Write(JsonReport(subject, report, verdict));
    else
        text.WriteVerdict(verdict);
    return verdict.code;
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

    const std::vector<std::wstring> arguments = CommandLineArguments();
    if (!arguments.empty() && arguments.front() == LoadChildCommand)
        return RunLoadChild({arguments.begin() + 1, arguments.end()});
    return static_cast<int>(Run(arguments));
}
