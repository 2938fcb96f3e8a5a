// The messages of the process that loads a plugin, as bytes: how they are split into lines and parsed.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/MessageLines.h"

namespace OrlindexTest {

using Orlindex::Doctor::LineOf;
using Orlindex::Doctor::LineSplitter;
using Orlindex::Doctor::MessageLine;
using Orlindex::Doctor::ParseMessageLine;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

struct Lines
{
    bool Take(const std::string& bytes) { return splitter.Take(bytes.data(), bytes.size()); }

    std::vector<std::string> taken;
    LineSplitter splitter{[this](const std::string& line) { taken.push_back(line); }};
};

} // namespace

TEST(DoctorLineSplitter, ALineIsTakenWhenItsEndComes)
{
    Lines lines;
    EXPECT_TRUE(lines.Take("first\nsec"));
    EXPECT_THAT(lines.taken, ElementsAre("first"));
    EXPECT_TRUE(lines.Take("ond\n\nno end"));
    EXPECT_THAT(lines.taken, ElementsAre("first", "second", ""));
}

TEST(DoctorLineSplitter, ALongLineIsCut)
{
    Lines lines;
    EXPECT_TRUE(lines.Take(std::string(LineSplitter::LongestLine + 1, 'x') + "\nnext\n"));
    EXPECT_THAT(lines.taken, ElementsAre(SizeIs(LineSplitter::LongestLine), "next"));
}

TEST(DoctorLineSplitter, OneLineTooManyIsNotTaken)
{
    Lines lines;
    EXPECT_TRUE(lines.Take(std::string(LineSplitter::MostLines, '\n')));
    EXPECT_FALSE(lines.Take("\n"));
    EXPECT_THAT(lines.taken, SizeIs(LineSplitter::MostLines));
}

TEST(DoctorLineSplitter, OneByteTooManyIsNotTaken)
{
    Lines lines;
    EXPECT_TRUE(lines.Take(std::string(LineSplitter::MostBytes - 1, 'x')));
    EXPECT_TRUE(lines.Take("\n")) << "the last byte";
    EXPECT_FALSE(lines.Take("x"));
    EXPECT_THAT(lines.taken, SizeIs(1));
}

TEST(DoctorMessageLine, EveryNumberIsReadAsItWasWritten)
{
    const auto message =
        ParseMessageLine(LineOf({MessageLine::Kind::Library, 4294967295, 2, 4294967294, " two\tspaces  "}));
    ASSERT_TRUE(message);
    EXPECT_EQ(message->kind, MessageLine::Kind::Library);
    EXPECT_EQ(message->number, 4294967295U);
    EXPECT_EQ(message->state, 2U);
    EXPECT_EQ(message->error, 4294967294U);
    EXPECT_EQ(message->text, " two spaces  ");
}

TEST(DoctorMessageLine, ANumberOutOfItsRangeMakesNoMessage)
{
    for (const char* const line : {"5 0 0 0 ", "0 0 3 0 ", "1 12 0 0 ", "2 6 0 0 ", "4 2 0 0 ", "0 4294967296 0 0 ",
                                   "0 0 0 4294967296 ", "0 -1 0 0 ", "0 0 0 99999999999999999999 "})
        EXPECT_FALSE(ParseMessageLine(line)) << line;
    for (const char* const line : {"4 1 0 0 ", "0 0 2 0 ", "1 11 0 0 ", "2 5 0 0 ", "0 4294967295 0 4294967295 "})
        EXPECT_TRUE(ParseMessageLine(line)) << line;
}

TEST(DoctorMessageLine, AnotherFormMakesNoMessage)
{
    for (const char* const line :
         {"", " ", "1", "1 2 0 0", " 1 2 0 0 ", "1  2 0 0 ", "1\t2 0 0 ", "+1 2 0 0 ", "0x1 2 0 0 ", "1 2 0 0x "})
        EXPECT_FALSE(ParseMessageLine(line)) << line;
    EXPECT_FALSE(ParseMessageLine(std::string("1 2\0 0 0 ", 9)));
}

} // namespace OrlindexTest
