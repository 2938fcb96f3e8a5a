// The lines that the tool gets from the process that loads a plugin, whatever that process does with the pipe.

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/PipeReader.h"

namespace OrlindexTest {

using Orlindex::Doctor::Handle;
using Orlindex::Doctor::LineSplitter;
using Orlindex::Doctor::MakePipe;
using Orlindex::Doctor::Pipe;
using Orlindex::Doctor::PipeReader;
using End = PipeReader::End;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

constexpr std::uint64_t Minutes = 10 * 60'000; ///< Milliseconds, for a read that ends by itself.

} // namespace

/// An event replaces the process: the process has ended when the event is set.
class DoctorPipeReader : public testing::Test
{
protected:
    /// Returns false if nobody reads any more.
    bool Write(const std::string& bytes) const
    {
        DWORD written = 0;
        return WriteFile(pipe_.writeEnd.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
               written == bytes.size();
    }

    void EndProcess() const { SetEvent(process_.get()); }
    End Read(std::uint64_t milliseconds = Minutes) { return reader_.ReadUntilEnd(process_.get(), milliseconds); }

    /// Reads while `write` runs in a thread of its own.
    template <class Action>
    End ReadWhile(const Action& write)
    {
        std::thread writer(write);
        const End end = Read();
        pipe_.readEnd.reset(); // Wakes a writer that waits.
        writer.join();
        return end;
    }

    std::vector<std::string> lines_;
    Pipe pipe_ = MakePipe();
    Handle process_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    PipeReader reader_{pipe_.readEnd.get(), [this](const std::string& line) { lines_.push_back(line); }};
};

TEST_F(DoctorPipeReader, LinesAreTakenAsTheyWereWritten)
{
    EXPECT_TRUE(Write("first\nsec"));
    EXPECT_TRUE(Write("ond\n\nno end"));
    pipe_.writeEnd.reset();
    EndProcess();
    EXPECT_EQ(Read(), End::ProcessEnded);
    EXPECT_THAT(lines_, ElementsAre("first", "second", ""));
}

TEST_F(DoctorPipeReader, AWriteEndThatSomebodyElseHasDoesNotKeepIt)
{
    EXPECT_TRUE(Write("first\nsecond\n"));
    EndProcess();
    EXPECT_EQ(Read(), End::ProcessEnded);
    EXPECT_THAT(lines_, ElementsAre("first", "second"));
}

TEST_F(DoctorPipeReader, TheTimeIsKeptWhileNothingComes)
{
    EXPECT_EQ(Read(1), End::TimedOut);
    EXPECT_TRUE(Write("first\n"));
    EXPECT_EQ(Read(1), End::TimedOut) << "and while something does";
}

TEST_F(DoctorPipeReader, AProcessThatClosesItsEndIsStillWaitedFor)
{
    EXPECT_TRUE(Write("first\n"));
    pipe_.writeEnd.reset();
    EXPECT_EQ(Read(1), End::TimedOut);
    EndProcess();
    EXPECT_EQ(Read(), End::ProcessEnded);
    EXPECT_THAT(lines_, ElementsAre("first"));
}

TEST_F(DoctorPipeReader, SomebodyElseWhoWritesForEverDoesNotKeepIt)
{
    EndProcess();
    ReadWhile([this] {
        while (Write("more\n"))
            ;
    });
    EXPECT_LE(lines_.size(), LineSplitter::MostLines);
}

TEST_F(DoctorPipeReader, ALineWithoutEndIsCut)
{
    const End end = ReadWhile([this] {
        EXPECT_TRUE(Write(std::string(100000, 'x') + '\n'));
        EndProcess();
    });
    EXPECT_EQ(end, End::ProcessEnded);
    EXPECT_THAT(lines_, ElementsAre(SizeIs(LineSplitter::LongestLine)));
}

TEST_F(DoctorPipeReader, OfLinesWithoutNumberTheFirstAreTaken)
{
    const End end = ReadWhile([this] {
        while (Write("1\n"))
            ;
    });
    EXPECT_EQ(end, End::TooMuch);
    EXPECT_THAT(lines_, SizeIs(LineSplitter::MostLines));
    EXPECT_THAT(lines_, Each("1"));
}

TEST_F(DoctorPipeReader, AsManyLinesAsAreTakenAreNotTooMany)
{
    std::string bytes;
    for (std::size_t line = 0; line < LineSplitter::MostLines; ++line)
        bytes += "1\n";
    EXPECT_TRUE(Write(bytes));
    EndProcess();
    EXPECT_EQ(Read(), End::ProcessEnded);
    EXPECT_THAT(lines_, SizeIs(LineSplitter::MostLines));
}

TEST_F(DoctorPipeReader, OfBytesWithoutNumberTheFirstAreTaken)
{
    const End end = ReadWhile([this] {
        while (Write(std::string(16000, 'x') + '\n'))
            ;
    });
    EXPECT_EQ(end, End::TooMuch);
    EXPECT_THAT(lines_, SizeIs(LineSplitter::MostBytes / 16001));
}

TEST_F(DoctorPipeReader, ALineThatNeverEndsIsTooMuch)
{
    const End end = ReadWhile([this] {
        while (Write(std::string(16000, 'x')))
            ;
    });
    EXPECT_EQ(end, End::TooMuch);
    EXPECT_THAT(lines_, SizeIs(0));
}

TEST(DoctorPipe, AnExceptionReachesTheOneThatReads)
{
    const Pipe pipe = MakePipe();
    const Handle process(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    int taken = 0;
    PipeReader reader(pipe.readEnd.get(), [&taken](const std::string&) {
        ++taken;
        throw std::runtime_error("from the taker");
    });
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(pipe.writeEnd.get(), "first\nsecond\n", 13, &written, nullptr));
    EXPECT_THROW(reader.ReadUntilEnd(process.get(), Minutes), std::runtime_error);
    EXPECT_EQ(taken, 1);
}

} // namespace OrlindexTest
