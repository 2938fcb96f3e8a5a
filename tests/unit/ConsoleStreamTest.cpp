// Writing a line to a stream that cannot encode every character.

#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "base/ConsoleStream.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::WriteConsoleLine;

namespace {

/// Keeps the characters that it accepts.
class PickyBuffer : public std::wstreambuf
{
public:
    explicit PickyBuffer(std::function<bool(wchar_t)> accepts) : accepts_(std::move(accepts)) {}

    const std::wstring& Kept() const { return kept_; }
    int Syncs() const { return syncs_; }

protected:
    int_type overflow(int_type character) override
    {
        const wchar_t kept = traits_type::to_char_type(character);
        if (!accepts_(kept))
            return traits_type::eof();
        kept_ += kept;
        return character;
    }

    int sync() override
    {
        ++syncs_;
        return 0;
    }

private:
    std::function<bool(wchar_t)> accepts_;
    std::wstring kept_;
    int syncs_ = 0;
};

bool IsAscii(wchar_t character)
{
    return character < 0x80;
}

bool IsAny(wchar_t)
{
    return true;
}

/// A text of UTF-16 units, whatever the size of wchar_t.
std::wstring Units(std::initializer_list<unsigned> units)
{
    std::wstring text;
    for (const unsigned unit : units)
        text += static_cast<wchar_t>(unit);
    return text;
}

/// What a buffer of this kind contains after one line. Expects that the stream stays good.
std::wstring Echoed(const std::wstring& line, bool (*accepts)(wchar_t) = IsAscii)
{
    PickyBuffer buffer(accepts);
    std::wostream stream(&buffer);
    WriteConsoleLine(stream, line);
    EXPECT_TRUE(stream.good());
    return buffer.Kept();
}

const std::wstring face = Units({0xD83D, 0xDE00}); // U+1F600

} // namespace

TEST(ConsoleStream, ALineIsWrittenAndFlushed)
{
    PickyBuffer buffer(IsAscii);
    std::wostream stream(&buffer);
    WriteConsoleLine(stream, L"a line");
    EXPECT_EQ(buffer.Kept(), L"a line\n");
    EXPECT_EQ(buffer.Syncs(), 1);
}

TEST(ConsoleStream, AnEmptyLineIsALine)
{
    EXPECT_EQ(Echoed(L""), L"\n");
}

TEST(ConsoleStream, ACharacterThatTheStreamRefusesAppearsAsItsCodePoint)
{
    EXPECT_EQ(Echoed(L"C:\\\u4E2D\u00E4\\x.dll"), L"C:\\<U+4E2D><U+00E4>\\x.dll\n");
}

TEST(ConsoleStream, TheStreamStaysUsableForItsOwner)
{
    PickyBuffer buffer(IsAscii);
    std::wostream stream(&buffer);
    WriteConsoleLine(stream, L"\u4E2D");
    stream << L"host " << 7 << std::flush;
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(buffer.Kept(), L"<U+4E2D>\nhost 7");
}

TEST(ConsoleStream, ACharacterOfTwoUnitsAppearsAsOneCodePoint)
{
    EXPECT_EQ(Echoed(L"<" + face + L">"), L"<<U+1F600>>\n");
    EXPECT_EQ(Echoed(Units({0xD800, 0xDC00})), L"<U+10000>\n");
    EXPECT_EQ(Echoed(Units({0xDBFF, 0xDFFF})), L"<U+10FFFF>\n");
}

TEST(ConsoleStream, ACharacterOfTwoUnitsThatTheStreamTakesIsWrittenAsItIs)
{
    EXPECT_EQ(Echoed(L"<" + face + L">", IsAny), L"<" + face + L">\n");
}

TEST(ConsoleStream, ACharacterWhoseSecondUnitIsRefusedIsNotLost)
{
    const auto takesFirstUnits = [](wchar_t character) { return character < 0xDC00; };
    EXPECT_EQ(Echoed(face + L"x", takesFirstUnits), face.substr(0, 1) + L"<U+1F600>x\n");
}

TEST(ConsoleStream, UnitsWithoutPartnerAppearAsTheyAre)
{
    EXPECT_EQ(Echoed(Units({0xD83D})), L"<U+D83D>\n") << "at the end";
    EXPECT_EQ(Echoed(Units({0xD83D, 'x'})), L"<U+D83D>x\n");
    EXPECT_EQ(Echoed(Units({0xDE00, 'x'})), L"<U+DE00>x\n");
    EXPECT_EQ(Echoed(Units({0xDE00, 0xD83D})), L"<U+DE00><U+D83D>\n") << "the wrong way round";
    EXPECT_EQ(Echoed(Units({0xD83D, 0xD83D, 0xDE00})), L"<U+D83D><U+1F600>\n");
}

TEST(ConsoleStream, AStreamThatRefusesEverythingStaysGood)
{
    EXPECT_EQ(Echoed(L"lost " + face, [](wchar_t) { return false; }), L"");
}

TEST(ConsoleStream, AStreamThatFailedBeforeGetsTheLineAndStaysFailed)
{
    PickyBuffer buffer(IsAscii);
    std::wostream stream(&buffer);
    stream.setstate(std::ios::failbit);
    WriteConsoleLine(stream, L"still");
    EXPECT_EQ(buffer.Kept(), L"still\n");
    EXPECT_EQ(stream.rdstate(), std::ios::failbit);
}

TEST(ConsoleStream, AStreamThatThrowsOnFailureDoesNotThrow)
{
    PickyBuffer buffer(IsAscii);
    std::wostream stream(&buffer);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    EXPECT_NO_THROW(WriteConsoleLine(stream, L"\u4E2D"));
    EXPECT_EQ(buffer.Kept(), L"<U+4E2D>\n");
}

TEST(ConsoleStream, FormattingOfTheStreamNeitherAppliesNorChanges)
{
    std::wostringstream stream;
    stream.width(20);
    stream.fill(L'*');
    WriteConsoleLine(stream, L"line");
    EXPECT_EQ(stream.str(), L"line\n");
    EXPECT_EQ(stream.width(), 20);
}

TEST(ConsoleStream, AStreamWithoutBufferIsLeftAlone)
{
    std::wostream stream(nullptr);
    const auto state = stream.rdstate();
    WriteConsoleLine(stream, L"nowhere");
    EXPECT_EQ(stream.rdstate(), state);
}

} // namespace OrlindexTest
