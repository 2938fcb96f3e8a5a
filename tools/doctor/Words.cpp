#include "Words.h"

#include <cstdio>
#include <iterator>

#include "base/Platform.h"
#include "base/Text.h"
#include "base/Versions.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

struct TrustAnswer
{
    unsigned long answer;
    const char* name;
    const char* words;
};

const TrustAnswer trustAnswers[] = {
    {0, "success", "the signature verifies and its root is trusted by the system"},
    {0x800B0100, "TRUST_E_NOSIGNATURE", "the file has no signature"},
    {0x80096010, "TRUST_E_BAD_DIGEST", "the file was changed after it was signed"},
    {0x800B0109, "CERT_E_UNTRUSTEDROOT", "the signature verifies, but the system does not trust its root"},
    {0x800B0101, "CERT_E_EXPIRED", "a certificate is not valid at this time"},
    {0x800B0110, "CERT_E_WRONG_USAGE", "a certificate is not meant for signing programs"},
    {0x800B010B, "TRUST_E_FAIL", "the verification failed, and the system does not say why"},
    {0x800B010A, "CERT_E_CHAINING", "a certificate of the chain is missing"},
    {0x800B0111, "TRUST_E_EXPLICIT_DISTRUST", "the certificate is distrusted on this machine"},
    {0x800B0004, "TRUST_E_SUBJECT_NOT_TRUSTED", "the system does not trust the file"},
    {0x800B0003, "TRUST_E_SUBJECT_FORM_UNKNOWN", "the file is of no kind that can be signed"},
    {0x80092026, "CRYPT_E_SECURITY_SETTINGS", "the system's settings forbid it"},
};

template <class Row, std::size_t Size, class Key>
const char* NameIn(const Row (&rows)[Size], Key key)
{
    for (const Row& row : rows)
        if (row.key == key)
            return row.name;
    return "";
}

template <class Key>
struct Named
{
    Key key;
    const char* name;
};

std::string Hex(unsigned long number)
{
    char text[16] = {};
    std::snprintf(text, sizeof text, "0x%08lX", number);
    return text;
}

} // namespace

std::string Quoted(const std::wstring& text)
{
    return '"' + Narrow(text) + '"';
}

std::string Joined(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

std::string ErrorWords(unsigned long error)
{
    std::string text = Narrow(GetSystemErrorText(error));
    // The point, too: the words stand within a sentence.
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == ' ' || text.back() == '.'))
        text.pop_back();
    const std::string number = "error " + std::to_string(error);
    return text.empty() ? number : text + " (" + number + ')';
}

std::string TrustAnswerWords(long answer)
{
    const auto code = static_cast<unsigned long>(answer);
    for (const TrustAnswer& row : trustAnswers)
        if (row.answer == code)
            return std::string(row.name) + ", " + row.words;
    return Hex(code) + ", " + ErrorWords(code);
}

std::string FileWords(StartUpFile file)
{
    static const Named<StartUpFile> rows[] = {{StartUpFile::ClientConfig, "client config file"},
                                              {StartUpFile::ServerApplication, "server application"},
                                              {StartUpFile::VersionCompatibility, "version compatibility file"}};
    return NameIn(rows, file);
}

const char* OriginWords(DirectoryOrigin origin)
{
    static const Named<DirectoryOrigin> rows[] = {
        {DirectoryOrigin::Library, "library's folder"}, {DirectoryOrigin::Host, "host's folder"},
        {DirectoryOrigin::Added, "added folder"},       {DirectoryOrigin::ClientConfig, "client config file"},
        {DirectoryOrigin::Registry, "registry"},        {DirectoryOrigin::ServerApplication, "server application"},
    };
    return NameIn(rows, origin);
}

const char* StateName(DirectoryState state)
{
    static const Named<DirectoryState> rows[] = {
        {DirectoryState::Holds, "found"},      {DirectoryState::DoesNotHold, "not-there"},
        {DirectoryState::Empty, "empty"},      {DirectoryState::EmbeddedZero, "embedded-zero"},
        {DirectoryState::NoValue, "no-value"}, {DirectoryState::NotSearched, "not-searched"}};
    return NameIn(rows, state);
}

std::string StateWords(DirectoryState state, const std::string& fileName)
{
    switch (state)
    {
    case DirectoryState::Holds:
        return "holds " + fileName;
    case DirectoryState::DoesNotHold:
        return "does not hold " + fileName;
    case DirectoryState::Empty:
        return "empty, not searched";
    case DirectoryState::EmbeddedZero:
        return "holds a zero character, not searched";
    case DirectoryState::NoValue:
        return "has no value, not searched";
    case DirectoryState::NotSearched:
        return "not searched any more";
    }
    return {};
}

const char* DefectName(EntryDefect defect)
{
    static const Named<EntryDefect> rows[] = {{EntryDefect::ModuleBlank, "module-blank"},
                                              {EntryDefect::ModulePathBlank, "module-path-blank"},
                                              {EntryDefect::VersionBlank, "version-blank"},
                                              {EntryDefect::RangeMissing, "range-missing"},
                                              {EntryDefect::RangeInvalid, "range-invalid"}};
    return NameIn(rows, defect);
}

const char* DefectWords(EntryDefect defect)
{
    static const Named<EntryDefect> rows[] = {
        {EntryDefect::ModuleBlank, "its key \"module\" is blank or missing"},
        {EntryDefect::ModulePathBlank, "its key \"modulePath\" is blank or missing"},
        {EntryDefect::VersionBlank, "its key \"version\" is blank or missing"},
        {EntryDefect::RangeMissing, "its object \"compatibleSsoServicesVersion\" is missing"},
        {EntryDefect::RangeInvalid, "its object \"compatibleSsoServicesVersion\" names no version"}};
    return NameIn(rows, defect);
}

const char* PathDefectWords(ModulePathDefect defect)
{
    static const Named<ModulePathDefect> rows[] = {{ModulePathDefect::Empty, "it is empty"},
                                                   {ModulePathDefect::EmbeddedZero, "it holds a zero character"},
                                                   {ModulePathDefect::StrippedEnd, "it ends with a point or a space"},
                                                   {ModulePathDefect::NoExtension, "its file name has no extension"}};
    return NameIn(rows, defect);
}

const char* BitsWords(Machine machine)
{
    return machine == Machine::X64 ? "64-bit" : "32-bit";
}

std::string RangeWords(const VersionCompatibilityEntry& entry)
{
    constexpr std::size_t mostShown = 20; // A hostile file may list millions.
    std::string words;
    std::size_t count = 0;
    const auto add = [&](const char* name, const VersionParts& version) {
        if (++count <= mostShown)
            words += (words.empty() ? "" : ", ") + std::string(name) + ' ' + JoinVersion(version);
    };
    for (const VersionRange& range : entry.compatibleRanges)
    {
        if (!range.minVersion.empty())
            add("min", range.minVersion);
        if (!range.maxVersion.empty())
            add("max", range.maxVersion);
        for (const VersionParts& version : range.versions)
            add("listed", version);
    }
    return count > mostShown ? words + " and " + std::to_string(count - mostShown) + " more" : words;
}

const char* MismatchName(RangeMatch answer)
{
    static const Named<RangeMatch> rows[] = {{RangeMatch::BelowMinimum, "below-minimum"},
                                             {RangeMatch::AboveMaximum, "above-maximum"},
                                             {RangeMatch::NotListed, "not-listed"},
                                             {RangeMatch::Excluded, "excluded"}};
    return NameIn(rows, answer);
}

const char* TrustResultName(BinaryTrustResult result)
{
    static const Named<BinaryTrustResult> rows[] = {{BinaryTrustResult::Valid, "valid"},
                                                    {BinaryTrustResult::UnknownError, "unknown-error"},
                                                    {BinaryTrustResult::NotFound, "not-found"},
                                                    {BinaryTrustResult::SignatureInvalid, "signature-invalid"},
                                                    {BinaryTrustResult::SignatureMissing, "signature-missing"},
                                                    {BinaryTrustResult::NotTrusted, "not-trusted"}};
    return NameIn(rows, result);
}

const char* LoadStepName(LoadStep step)
{
    static const Named<LoadStep> rows[] = {{LoadStep::FindFile, "find-file"},
                                           {LoadStep::CheckPath, "check-path"},
                                           {LoadStep::LockFile, "hold-file"},
                                           {LoadStep::LoadModule, "load-module"},
                                           {LoadStep::CompareFile, "compare-file"},
                                           {LoadStep::FindSymbol, "find-symbol"},
                                           {LoadStep::CallFactory, "call-factory"},
                                           {LoadStep::ConfigureServer, "configure-server"},
                                           {LoadStep::ConnectLogger, "connect-logger"},
                                           {LoadStep::PassIdentity, "pass-identity"},
                                           {LoadStep::ObtainInterfaces, "obtain-interfaces"}};
    return NameIn(rows, step);
}

const char* LoadStepWords(LoadStep step)
{
    static const Named<LoadStep> rows[] = {
        {LoadStep::FindFile, "the file is looked for"},
        {LoadStep::CheckPath, "its path is checked"},
        {LoadStep::LockFile, "the file is kept from changing"},
        {LoadStep::LoadModule, "the system loads the module"},
        {LoadStep::CompareFile, "the loaded file is the verified one"},
        {LoadStep::FindSymbol, "its factory function is looked up"},
        {LoadStep::CallFactory, "its factory function is called"},
        {LoadStep::ConfigureServer, "its server manager is told where the server application is"},
        {LoadStep::ConnectLogger, "its logger is asked for and given the messages so far"},
        {LoadStep::PassIdentity, "its server manager is told who it is"},
        {LoadStep::ObtainInterfaces, "its interfaces are asked for"}};
    return NameIn(rows, step);
}

const char* PluginObjectWords(PluginObject object)
{
    static const Named<PluginObject> rows[] = {{PluginObject::LoggerSource, "IPluginLoggerSource"},
                                               {PluginObject::Logger, "IPluginLogger"},
                                               {PluginObject::ClientModule, "ISSOClientModule"},
                                               {PluginObject::ServerManager, "ISSOServerManager"},
                                               {PluginObject::Client, "ISSOClient"},
                                               {PluginObject::ClientPrivate, "ISSOClientPrivate"}};
    return NameIn(rows, object);
}

std::string JsonErrorWords(const JsonError& error)
{
    if (error.line == 0)
        return error.text;
    return "line " + std::to_string(error.line) + ", column " + std::to_string(error.column) + ": " + error.text;
}

std::string DigestWords(const Sha256& digest)
{
    std::string words;
    for (const BYTE byte : digest)
    {
        char text[4] = {};
        std::snprintf(text, sizeof text, "%02x", byte);
        words += text;
    }
    return words;
}

std::string TimeWords(const FILETIME& time)
{
    SYSTEMTIME parts = {};
    if (!FileTimeToSystemTime(&time, &parts))
        return "?";
    char text[64] = {};
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02uZ", parts.wYear, parts.wMonth, parts.wDay,
                  parts.wHour, parts.wMinute, parts.wSecond);
    return text;
}

std::string EntryPlace(const VersionCompatibilityEntry& entry)
{
    return "ssoClientPlugin[" + std::to_string(entry.position) + ']';
}

} // namespace Orlindex::Doctor
