#include "LoadProcess.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <windows.h>

#include "Handle.h"
#include "LoadChild.h"
#include "LoadMessages.h"
#include "ModuleFile.h"
#include "PipeReader.h"
#include "Words.h"
#include "base/Paths.h"
#include "base/ProductIdentity.h"
#include "base/TextConversion.h"
#include "locate/PlatformFolders.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

constexpr std::uint64_t millisecondsPerSecond = 1000;

[[noreturn]] void ThrowLastError(const char* what)
{
    throw std::runtime_error(std::string(what) + ": " + ErrorWords(GetLastError()));
}

/// Ends all its processes with its owner: also those that a plugin started.
Handle MakeJob()
{
    Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job || !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits))
        ThrowLastError("cannot make a job object");
    return job;
}

Handle OpenNowhere()
{
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    Handle nowhere(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                               OPEN_EXISTING, 0, nullptr));
    if (nowhere.get() == INVALID_HANDLE_VALUE)
        ThrowLastError("cannot open NUL");
    return nowhere;
}

/// In a command line, a folder's final backslash would take the closing quotation mark for text.
std::wstring Quoted(const std::wstring& text)
{
    std::wstring quoted = L'"' + text;
    for (std::size_t end = text.size(); end > 0 && text[end - 1] == L'\\'; --end)
        quoted += L'\\';
    return quoted + L'"';
}

std::wstring OwnFile()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::wstring CommandLine(const LoadRequest& request, HANDLE pipe)
{
    std::wstring command = Quoted(OwnFile()) + L' ' + LoadChildCommand + L' ' +
                           std::to_wstring(reinterpret_cast<std::uintptr_t>(pipe)) + L' ' + Quoted(request.host);
    if (!request.module.empty())
        command += L' ' + Quoted(request.module);
    return command;
}

/// Libraries beside the host are found in a host because it runs there. Here they are, last, because the path of the
/// new process names that folder.
class HostInPath
{
public:
    explicit HostInPath(const std::wstring& host)
    {
        former_.resize(GetEnvironmentVariableW(L"PATH", nullptr, 0));
        former_.resize(GetEnvironmentVariableW(L"PATH", former_.data(), static_cast<DWORD>(former_.size())));
        SetEnvironmentVariableW(L"PATH", (host + L';' + former_).c_str());
    }
    HostInPath(const HostInPath&) = delete;
    HostInPath& operator=(const HostInPath&) = delete;
    ~HostInPath() { SetEnvironmentVariableW(L"PATH", former_.c_str()); }

private:
    std::wstring former_;
};

Handle StartProcess(const LoadRequest& request, const Pipe& pipe, HANDLE job)
{
    const Handle nowhere = OpenNowhere();
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = startup.hStdOutput = startup.hStdError = nowhere.get();
    PROCESS_INFORMATION started = {};
    std::wstring command = CommandLine(request, pipe.writeEnd.get());
    const HostInPath path(request.host);
    if (!CreateProcessW(OwnFile().c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                        request.host.c_str(), &startup, &started))
        ThrowLastError("cannot start a process to load the plugin in");
    Handle process(started.hProcess);
    const Handle thread(started.hThread);
    if (!AssignProcessToJobObject(job, process.get()))
    {
        TerminateProcess(process.get(), 1);
        ThrowLastError("cannot keep the process that loads the plugin in a job");
    }
    ResumeThread(thread.get());
    return process;
}

/// Turns the messages into findings as they come.
class LoadListener
{
public:
    /// A start fails with a library in the host's folder that cannot be loaded; a check of a module does not.
    LoadListener(const LoadRequest& request, Report& report, LoadOutcome& outcome)
        : libraryMark_(request.module.empty() && PathExists(JoinPath(request.host, ProductModuleName)) ? Mark::Failed
                                                                                                       : Mark::Warning),
          report_(report), outcome_(outcome)
    {
    }

    bool Ended() const { return ended_; }

    void Take(const std::string& line)
    {
        if (const std::optional<LoadMessage> message = ParseLoadMessage(line))
            Take(*message);
    }

private:
    void Take(const LoadMessage& message)
    {
        switch (message.kind)
        {
        case LoadMessage::Kind::Library:
            TakeLibrary(message);
            break;
        case LoadMessage::Kind::Step:
            TakeStep({static_cast<LoadStep>(message.number), message.state, message.error});
            break;
        case LoadMessage::Kind::Object:
            TakeObject(static_cast<PluginObject>(message.number), message.error != 0);
            break;
        case LoadMessage::Kind::Exception:
            outcome_.exception = Widen(message.text);
            Fail("exception", Narrow(*outcome_.exception));
            break;
        case LoadMessage::Kind::End:
            ended_ = true;
            outcome_.loaded = message.number == 1;
            break;
        }
    }

    void TakeLibrary(const LoadMessage& message)
    {
        outcome_.libraryBegun = message.state == LoadState::Begun;
        outcome_.libraryError = message.error;
        if (message.state == LoadState::Failed)
            report_.Add({libraryMark_, "load", "host's library", Narrow(ProductModuleName), "not-loaded", "",
                         "cannot be loaded, and the plugin may need it: " + ErrorWords(message.error)});
    }

    void TakeStep(const LoadFinding& finding)
    {
        if (finding.state == LoadState::Begun)
        {
            outcome_.begun = finding.step;
            return;
        }
        if (finding.state == LoadState::Failed)
        {
            if (!outcome_.failure)
                outcome_.failure = finding;
            Fail(LoadStepName(finding.step),
                 LoadStepWords(finding.step) +
                     (finding.error == ERROR_SUCCESS ? std::string() : ", " + ErrorWords(finding.error)));
            return;
        }
        if (outcome_.begun == finding.step)
            outcome_.begun.reset();
        report_.Add({Mark::Ok, "load", LoadStepName(finding.step), LoadStepWords(finding.step), "done", "", ""});
    }

    void TakeObject(PluginObject object, bool present)
    {
        if (object == PluginObject::ClientModule)
        {
            outcome_.clientModule = present;
            report_.Begin(StepId::Interfaces);
        }
        Finding line = {Mark::Ok, "interface", PluginObjectWords(object), "", "present", "", "present"};
        if (!present)
        {
            line.result = "null";
            line.mark = object == PluginObject::ClientModule ? Mark::Failed : Mark::Warning;
            line.note = NullWords(object);
        }
        report_.Add(std::move(line));
    }

    static std::string NullWords(PluginObject object)
    {
        switch (object)
        {
        case PluginObject::LoggerSource:
        case PluginObject::Logger:
            return "null: the library's messages do not reach the plugin's log";
        case PluginObject::ClientModule:
            return "null: the library cannot start";
        case PluginObject::Client:
            return "null: every call of the user's fails, unless the plugin makes it while it is initialized";
        case PluginObject::ServerManager:
        case PluginObject::ClientPrivate:
            break;
        }
        return "null: the calls that need it answer their fallbacks";
    }

    void Fail(const char* name, const std::string& note)
    {
        report_.Add({Mark::Failed, "load", name, "", "failed", "", note});
    }

    const Mark libraryMark_;
    Report& report_;
    LoadOutcome& outcome_;
    bool ended_ = false;
};

std::string Limits()
{
    return std::to_string(LineSplitter::MostLines) + " messages or " + std::to_string(LineSplitter::MostBytes) +
           " bytes";
}

/// What a load came to that did not say so itself.
void AddEnd(PipeReader::End end, Report& report, LoadOutcome& outcome)
{
    Finding line = {Mark::Failed, "load", outcome.begun ? LoadStepName(*outcome.begun) : "load", "", "", "", ""};
    if (outcome.libraryBegun)
        line.name = "host's library";
    switch (end)
    {
    case PipeReader::End::ProcessEnded:
        outcome.end = LoadOutcome::End::Ended;
        line.result = "ended";
        line.note = "the process ended: " + ErrorWords(outcome.processExitCode);
        break;
    case PipeReader::End::TimedOut:
        outcome.end = LoadOutcome::End::Hung;
        line.result = "hung";
        line.note = "no answer within " + std::to_string(outcome.timeoutSeconds) + " seconds";
        break;
    case PipeReader::End::TooMuch:
        outcome.end = LoadOutcome::End::CutOff;
        line.result = "cut-off";
        line.note = "the process was ended: it wrote more than " + Limits() + ", of which the rest was not read";
        break;
    }
    report.Add(std::move(line));
}

LoadOutcome LoadInOwnProcess(const LoadRequest& request, Report& report)
{
    LoadOutcome outcome;
    outcome.timeoutSeconds = request.timeoutSeconds;
    Pipe pipe = MakePipe();
    const Handle job = MakeJob();
    const Handle process = StartProcess(request, pipe, job.get());
    pipe.writeEnd.reset(); // Or the pipe would never end by itself.

    LoadListener listener(request, report, outcome);
    PipeReader reader(pipe.readEnd.get(), [&listener](const std::string& line) { listener.Take(line); });
    const PipeReader::End end =
        reader.ReadUntilEnd(process.get(), std::uint64_t{request.timeoutSeconds} * millisecondsPerSecond);
    TerminateJobObject(job.get(), 1); // Also what the plugin started.

    if (listener.Ended())
        return outcome;
    DWORD exitCode = 0;
    GetExitCodeProcess(process.get(), &exitCode);
    outcome.processExitCode = exitCode;
    AddEnd(end, report, outcome);
    return outcome;
}

} // namespace

void TryLoad(const LoadRequest& request, Report& report, StartFacts& facts)
{
    report.Begin(StepId::Load);
    for (const std::string& library : FindLibrariesOfTool(facts.modulePath, request.host))
        report.Add({Mark::Warning, "load", "library of the module", library, "beside-tool", "",
                    "lies beside this tool and neither beside the module nor beside the host: a host may lack it"});
    facts.load = LoadInOwnProcess(request, report);
    facts.load->missingLibraries = FindMissingLibraries(facts.modulePath, request.host);
}

} // namespace Orlindex::Doctor
