#include "Installation.h"

#include <cstring>
#include <stdexcept>

#include <windows.h>

#include "Text.h"

namespace OrlindexTest {

namespace fs = std::filesystem;

Installation::Installation() : environment_(Environment())
{
    fs::create_directory(ServerFolder());
}

fs::path Installation::MakeFolder(const fs::path& name) const
{
    fs::create_directories(environment_.root / name);
    return environment_.root / name;
}

void Installation::Install(const std::string& plugin) const
{
    InstallWithoutPlugin();
    CopyPlugin(plugin, PluginFile());
}

void Installation::InstallWithoutPlugin() const
{
    WriteClientConfig(R"({"ssoServer": {"bundleId": "com.kestrany.test", "searchPaths": ")" + JsonPath(ServerFolder()) +
                      R"("}})");
    InstallServerApplication(ServerFolder());
    WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\PellwickClient.dll"}});
}

void Installation::WriteClientConfig(const std::string& json) const
{
    WriteFile(ClientConfigFile(), json);
}

void Installation::WriteCompatibilityFile(const std::string& json) const
{
    WriteFile(CompatibilityFile(), json);
}

void Installation::WriteCompatibilityFile(const std::vector<CompatibilityEntry>& entries) const
{
    std::string elements;
    for (const CompatibilityEntry& entry : entries)
    {
        elements += elements.empty() ? "" : ", ";
        elements += R"({"module": ")" + entry.module + R"(", ")" + entry.pathKey + R"(": ")" +
                    JsonPath(ToWide(entry.modulePath)) + R"(", "version": ")" + entry.version +
                    R"(", "compatibleSsoServicesVersion": )" + entry.range + '}';
    }
    WriteCompatibilityFile(R"({"ssoClientPlugin": [)" + elements + "]}");
}

void Installation::InstallServerApplication(const fs::path& folder) const
{
    WriteFile(folder / "Pellwick.exe", "a file to be found");
}

void Installation::CopyPlugin(const std::string& plugin, const fs::path& file) const
{
    fs::copy_file(environment_.plugins / (plugin + ".dll"), file, fs::copy_options::overwrite_existing);
}

std::string Installation::RootCertificate(const std::string& name) const
{
    return ReadFile(environment_.signing / (name + ".der"));
}

std::string JsonPath(const fs::path& path)
{
    std::string json;
    for (const char character : Utf8(path))
    {
        if (character == '\\' || character == '"')
            json += '\\';
        json += character;
    }
    return json;
}

void Tamper(const fs::path& file)
{
    std::string bytes = ReadFile(file);
    IMAGE_DOS_HEADER dos;
    std::memcpy(&dos, bytes.data(), sizeof dos);
    IMAGE_NT_HEADERS64 headers;
    std::memcpy(&headers, bytes.data() + dos.e_lfanew, sizeof headers);
    IMAGE_SECTION_HEADER code; // The first section is the code.
    std::memcpy(&code, bytes.data() + dos.e_lfanew + sizeof headers, sizeof code);
    if (std::strncmp(reinterpret_cast<const char*>(code.Name), ".text", sizeof code.Name) != 0)
        throw std::runtime_error("no code section where it was expected in " + Utf8(file));
    char& byte = bytes.at(code.PointerToRawData + code.SizeOfRawData / 2);
    byte = static_cast<char>(byte ^ 1);
    WriteFile(file, bytes);
}

void Truncate(const fs::path& file)
{
    fs::resize_file(file, fs::file_size(file) / 2);
}

} // namespace OrlindexTest
