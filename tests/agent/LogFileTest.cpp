#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <thread>
#include <vector>

#include "Environment.h"
#include "platform/Folders.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent {

namespace {

class LogFileTest : public testing::Test
{
protected:
    static std::vector<std::string> Lines(const std::wstring& path)
    {
        std::ifstream file(path.c_str());
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

    const std::wstring path = SettingsFolder() + L"\\Log\\Test.log";
    const std::wstring old = LogFile::OldFile(path);
};

TEST_F(LogFileTest, TheOldFileHasAnotherName)
{
    EXPECT_EQ(LogFile::OldFile(L"C:\\a.b\\Name.log"), L"C:\\a.b\\Name.old.log");
    EXPECT_EQ(LogFile::OldFile(L"C:\\a.b\\Name"), L"C:\\a.b\\Name.old");
}

TEST_F(LogFileTest, AFullFileReplacesTheOldFile)
{
    const LogFile log(path, 1000);
    ASSERT_TRUE(log.IsOpen());
    const std::string message(300, 'm');
    for (int line = 0; line < 10; ++line)
        log.Write("Tests", TALIXLog::Info, std::to_string(line) + message);
    const std::vector<std::string> recent = Lines(path);
    const std::vector<std::string> older = Lines(old);
    ASSERT_FALSE(recent.empty());
    EXPECT_LE(recent.size(), 2u);
    EXPECT_EQ(older.size(), 2u);
    EXPECT_NE(recent.back().find(": 9m"), std::string::npos);
}

TEST_F(LogFileTest, ALineLongerThanTheLimitIsWrittenCompletely)
{
    const LogFile log(path, 100);
    log.Write("Tests", TALIXLog::Info, std::string(500, 'm'));
    log.Write("Tests", TALIXLog::Info, "next");
    EXPECT_EQ(Lines(path).size(), 1u);
    EXPECT_GT(Lines(old).front().size(), 500u);
}

TEST_F(LogFileTest, SimultaneousWritersLoseNoLine)
{
    constexpr int Writers = 4;
    constexpr int Count = 60;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < Writers; ++writer)
    {
        threads.emplace_back([this, writer] {
            // One object for each, as in separate processes: they share only the name of the mutex.
            const LogFile log(path, 12'000);
            for (int line = 0; line < Count; ++line)
                log.Write("Tests", TALIXLog::Info, std::to_string(writer) + "-" + std::to_string(line) + ".");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::set<std::string> found;
    for (const std::wstring& file : {path, old})
    {
        for (const std::string& line : Lines(file))
        {
            EXPECT_EQ(line.find(" simulator["), 24u) << line;
            found.insert(line.substr(line.rfind(": ") + 2));
        }
    }
    EXPECT_EQ(found.size(), static_cast<std::size_t>(Writers * Count)) << "one change of files fits";
}

} // namespace

} // namespace Kestrany::Agent
