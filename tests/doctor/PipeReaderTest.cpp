// The thread that listens to the process that loads a plugin.

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/PipeReader.h"
#include "support/Handle.h"

namespace OrlindexTest {

using Orlindex::Doctor::PipeReader;
using testing::ElementsAre;
using testing::SizeIs;

class DoctorPipeReader : public testing::Test
{
protected:
    DoctorPipeReader()
    {
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        if (!CreatePipe(&readEnd, &writeEnd, nullptr, 4096))
            throw std::runtime_error("cannot make a pipe");
        readEnd_.reset(readEnd);
        writeEnd_.reset(writeEnd);
    }

    void Write(const std::string& bytes) const
    {
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(writeEnd_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
        EXPECT_EQ(written, bytes.size());
    }

    Handle readEnd_;
    Handle writeEnd_;
};

TEST_F(DoctorPipeReader, LinesAreTakenAsTheyWereWritten)
{
    std::vector<std::string> lines;
    PipeReader reader(readEnd_.get(), [&lines](const std::string& line) { lines.push_back(line); });
    Write("first\nsec");
    Write("ond\n\nno end");
    writeEnd_.reset();
    reader.Finish();
    EXPECT_THAT(lines, ElementsAre("first", "second", ""));
}

TEST_F(DoctorPipeReader, ALineWithoutEndIsCut)
{
    std::vector<std::string> lines;
    PipeReader reader(readEnd_.get(), [&lines](const std::string& line) { lines.push_back(line); });
    Write(std::string(100000, 'x') + '\n');
    writeEnd_.reset();
    reader.Finish();
    EXPECT_THAT(lines, ElementsAre(SizeIs(64 * 1024)));
}

TEST_F(DoctorPipeReader, AnExceptionReachesTheOneThatWaitsAndTheWriterDoesNotWait)
{
    int taken = 0;
    PipeReader reader(readEnd_.get(), [&taken](const std::string&) {
        ++taken;
        throw std::runtime_error("from the taker");
    });
    Write("first\nsecond\n");
    Write(std::string(100000, 'x')); // Far more than the pipe holds.
    writeEnd_.reset();
    EXPECT_THROW(reader.Finish(), std::runtime_error);
    EXPECT_EQ(taken, 1);
}

} // namespace OrlindexTest
