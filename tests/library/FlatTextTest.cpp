// Texts that flat functions write into buffers of their callers, and texts that they pass to the plugin.

#include <algorithm>
#include <ostream>

#include "FlatTest.h"
#include "GuardedBuffer.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

namespace {

/// A flat function that writes a text of the plugin.
struct TextFunction
{
    const char* name;
    talix_status_code (*call)(talix_buffer*);
    PluginOperation operation;
    std::size_t bufferArgument;
    std::size_t units; ///< Capacity of the buffer that the plugin gets.
};

void PrintTo(const TextFunction& function, std::ostream* stream)
{
    *stream << function.name;
}

const TextFunction textFunctions[] = {
    {"AccessToken", [](talix_buffer* b) { return talix_get_token(b); }, Client::GetOAuth2AccessToken, 0, 4096},
    {"AccessTokenBlocking", [](talix_buffer* b) { return talix_get_token_blocking(b); }, Client::GetOAuth2AccessToken,
     0, 4096},
    {"IdToken", [](talix_buffer* b) { return talix_get_id_token(b); }, Client::GetOAuth2IdToken, 0, 4096},
    {"SessionAddress", [](talix_buffer* b) { return talix_get_session_uri("https://a.example", 0, b); },
     Client::GetSessionUri, 2, 2048},
};

std::string NameOf(const testing::TestParamInfo<TextFunction>& info)
{
    return info.param.name;
}

std::wstring Repeated(const std::wstring& text, std::size_t count)
{
    std::wstring all;
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

const std::wstring smile = L"\xD83D\xDE00"; // U+1F600, beyond the basic multilingual plane.
const std::string smileUtf8 = "\xF0\x9F\x98\x80";
const std::string replacement = "\xEF\xBF\xBD"; // U+FFFD

} // namespace

class FlatText : public FlatTest, public testing::WithParamInterface<TextFunction>
{
protected:
    /// Makes the plugin write these units, without a terminating zero.
    void PluginWrites(const std::wstring& text)
    {
        Plugin().OnCall(GetParam().operation, [text](const CallArguments& call) {
            std::copy(text.begin(), text.end(), call.Pointer<wchar_t>(GetParam().bufferArgument));
        });
    }

    talix_status_code CallWith(const GuardedBuffer& buffer) { return CallWith(buffer, buffer.Size()); }

    talix_status_code CallWith(const GuardedBuffer& buffer, std::int32_t size)
    {
        talix_buffer record{buffer.Data(), size};
        const talix_status_code result = GetParam().call(&record);
        EXPECT_EQ(record.buffer, buffer.Data());
        EXPECT_EQ(record.size, size) << "no needed size is reported back";
        EXPECT_TRUE(buffer.IsUntouchedBefore());
        return result;
    }

    /// Expects this text in a buffer that is just large enough, and IdBufferTooSmall with one byte less.
    void ExpectText(const std::string& expected)
    {
        const GuardedBuffer tooSmall(expected.size());
        if (tooSmall.Size() != 0)
        {
            EXPECT_EQ(CallWith(tooSmall), IdBufferTooSmall);
            EXPECT_TRUE(tooSmall.IsUntouched());
        }
        const GuardedBuffer buffer(expected.size() + 1);
        EXPECT_EQ(CallWith(buffer), IdSuccess);
        EXPECT_TRUE(buffer.Bytes() == expected + '\0') << "length of what arrived: " << std::strlen(buffer.Data());
    }
};

INSTANTIATE_TEST_SUITE_P(All, FlatText, testing::ValuesIn(textFunctions), NameOf);

TEST_P(FlatText, ThePluginGetsAZeroFilledBuffer)
{
    bool zero = false;
    Plugin().OnCall(GetParam().operation, [&](const CallArguments& call) {
        const wchar_t* const buffer = call.Pointer<wchar_t>(GetParam().bufferArgument);
        zero = std::all_of(buffer, buffer + GetParam().units, [](wchar_t unit) { return unit == L'\0'; });
    });
    CallWith(GuardedBuffer(8));
    EXPECT_TRUE(zero);
}

TEST_P(FlatText, ATextOf10BytesInto10IsTooSmallAndInto11Fits)
{
    PluginWrites(L"0123456789");
    const GuardedBuffer ten(10);
    EXPECT_EQ(CallWith(ten), IdBufferTooSmall);
    EXPECT_TRUE(ten.IsUntouched());
    const GuardedBuffer eleven(11);
    EXPECT_EQ(CallWith(eleven), IdSuccess);
    EXPECT_EQ(eleven.Bytes(), std::string("0123456789\0", 11));
    const GuardedBuffer twelve(12);
    EXPECT_EQ(CallWith(twelve), IdSuccess);
    EXPECT_EQ(twelve.Bytes(), std::string("0123456789\0#", 12)) << "no byte behind the terminating zero";
}

TEST_P(FlatText, AnEmptyTextNeedsOneByte)
{
    const GuardedBuffer one(1);
    EXPECT_EQ(CallWith(one), IdSuccess);
    EXPECT_EQ(one.Bytes(), std::string(1, '\0'));
}

TEST_P(FlatText, ANegativeSizeCountsAsVeryLarge)
{
    PluginWrites(L"0123456789");
    for (const std::int32_t size : {-1, -2147483647 - 1})
    {
        const GuardedBuffer buffer(11);
        EXPECT_EQ(CallWith(buffer, size), IdSuccess) << size;
        EXPECT_STREQ(buffer.Data(), "0123456789");
    }
}

TEST_P(FlatText, TheSizeCountsBytesAndNotCharacters)
{
    PluginWrites(L"a\x00FC\x20AC" + smile);
    ExpectText("a\xC3\xBC\xE2\x82\xAC" + smileUtf8);
}

TEST_P(FlatText, ATextEndsAtItsFirstZero)
{
    PluginWrites(std::wstring(L"before\0after", 12));
    ExpectText("before");
}

TEST_P(FlatText, LoneSurrogatesBecomeReplacementCharacters)
{
    PluginWrites(L"a\xD83Dz");
    ExpectText('a' + replacement + 'z');
    PluginWrites(L"\xDE00z");
    ExpectText(replacement + 'z');
    PluginWrites(L"\xDE00\xD83D");
    ExpectText(replacement + replacement);
}

TEST_P(FlatText, ATextThatFillsThePluginsBufferButForTheZeroArrivesWhole)
{
    const std::size_t units = GetParam().units;
    for (const std::size_t length : {units - 2, units - 1})
    {
        PluginWrites(Repeated(L"x", length));
        ExpectText(std::string(length, 'x'));
    }
}

TEST_P(FlatText, ATextWithoutAZeroEndsWithThePluginsBuffer)
{
    PluginWrites(Repeated(L"x", GetParam().units));
    ExpectText(std::string(GetParam().units, 'x'));
}

TEST_P(FlatText, TheLongestTextMayTakeThreeBytesAUnit)
{
    PluginWrites(Repeated(L"\x20AC", GetParam().units));
    std::string expected;
    for (std::size_t i = 0; i < GetParam().units; ++i)
        expected += "\xE2\x82\xAC";
    ExpectText(expected);
}

TEST_P(FlatText, APairThatThePluginsBufferCutsInHalfBecomesAReplacementCharacter)
{
    PluginWrites(Repeated(L"x", GetParam().units - 1) + L'\xD83D');
    ExpectText(std::string(GetParam().units - 1, 'x') + replacement);
}

TEST_P(FlatText, ATextThatCannotBeConvertedBecomesEmpty)
{
    PluginWrites(L"text");
    const WideCharToMultiByteDouble fails([](UINT, DWORD, LPCWCH, int, LPSTR, int, LPCCH, LPBOOL) { return 0; });
    const GuardedBuffer buffer(8);
    EXPECT_EQ(CallWith(buffer), IdSuccess);
    EXPECT_STREQ(buffer.Data(), "");
}

TEST_P(FlatText, TheConversionIsTheSystemsForUtf8WithoutFlags)
{
    PluginWrites(L"text");
    using Double = WideCharToMultiByteDouble;
    int conversions = 0;
    const Double recorded(
        [&](UINT page, DWORD flags, LPCWCH from, int length, LPSTR to, int size, LPCCH standard, LPBOOL used) {
            ++conversions;
            EXPECT_EQ(page, 65001U);
            EXPECT_EQ(flags, 0U);
            EXPECT_EQ(standard, nullptr);
            EXPECT_EQ(used, nullptr);
            return Double::Original(page, flags, from, length, to, size, standard, used);
        });
    CallWith(GuardedBuffer(8));
    EXPECT_GT(conversions, 0);
}

class FlatTokens : public FlatText
{
};

INSTANTIATE_TEST_SUITE_P(All, FlatTokens, testing::Values(textFunctions[0], textFunctions[1], textFunctions[2]),
                         NameOf);

TEST_P(FlatTokens, WhenThePluginReturns500TheBufferReceivesAnEmptyTextAndTheResultIsFailed)
{
    Plugin().Return(GetParam().operation, 500);
    const GuardedBuffer buffer(16);
    EXPECT_EQ(CallWith(buffer), IdFailed);
    EXPECT_EQ(buffer.Bytes(), '\0' + std::string(15, GuardedBuffer::Fill));
}

TEST_P(FlatTokens, WhenThePluginThrowsTheBufferReceivesAnEmptyText)
{
    Plugin().OnCall(GetParam().operation, [](const CallArguments&) { throw 1; });
    const GuardedBuffer buffer(16);
    EXPECT_EQ(CallWith(buffer), IdFailed);
    EXPECT_STREQ(buffer.Data(), "");
}

TEST_P(FlatTokens, WhatThePluginWroteIsCopiedOutWhateverItReturns)
{
    PluginWrites(L"text");
    Plugin().Return(GetParam().operation, 3030);
    const GuardedBuffer buffer(5);
    EXPECT_EQ(CallWith(buffer), 3030);
    EXPECT_STREQ(buffer.Data(), "text");
}

TEST_P(FlatTokens, ABufferThatIsTooSmallReplacesThePluginsFailure)
{
    Plugin().Return(GetParam().operation, 3030);
    const GuardedBuffer buffer(4);
    EXPECT_EQ(CallWith(buffer, 0), IdBufferTooSmall);
    EXPECT_TRUE(buffer.IsUntouched());
    PluginWrites(L"text");
    EXPECT_EQ(CallWith(buffer), IdBufferTooSmall);
    EXPECT_TRUE(buffer.IsUntouched());
}

TEST_P(FlatTokens, ASizeOfZeroIsTooSmallForAnyText)
{
    const GuardedBuffer buffer(4);
    EXPECT_EQ(CallWith(buffer, 0), IdBufferTooSmall);
    EXPECT_TRUE(buffer.IsUntouched());
    talix_buffer nothing{nullptr, 0};
    EXPECT_EQ(GetParam().call(&nothing), IdBufferTooSmall);
}

using FlatSessionAddress = FlatTest;

TEST_F(FlatSessionAddress, WhenThePluginReturns3030TheBufferStaysUntouched)
{
    Plugin().OnCall(Client::GetSessionUri,
                    [](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(2), L"text"); });
    for (const int result : {3030, 1001, 999})
    {
        Plugin().Return(Client::GetSessionUri, result);
        const GuardedBuffer buffer(16);
        talix_buffer record{buffer.Data(), buffer.Size()};
        EXPECT_EQ(talix_get_session_uri("uri", 0, &record), result < IdSuccess ? int{IdFailed} : result);
        EXPECT_TRUE(buffer.IsUntouched());
    }
}

class FlatTextIn : public FlatTest
{
protected:
    /// The address that the plugin receives.
    std::wstring Seen(const std::string& uri)
    {
        std::wstring seen = L"nothing";
        Plugin().OnCall(Client::GetSessionUri,
                        [&seen](const CallArguments& call) { seen = call.Pointer<const wchar_t>(0); });
        char text[8];
        talix_buffer record{text, sizeof text};
        EXPECT_EQ(talix_get_session_uri(uri.c_str(), 0, &record), IdSuccess);
        return seen;
    }
};

TEST_F(FlatTextIn, AnAddressArrivesAsUtf16)
{
    EXPECT_EQ(Seen("https://shop.example/?q=\xC3\xBC\xE2\x82\xAC" + smileUtf8),
              L"https://shop.example/?q=\x00FC\x20AC" + smile);
}

TEST_F(FlatTextIn, AnEmptyAddressIsPassedOn)
{
    EXPECT_EQ(Seen(""), L"");
}

TEST_F(FlatTextIn, ALongAddressArrivesWhole)
{
    EXPECT_TRUE(Seen(std::string(100000, 'x')) == std::wstring(100000, L'x'));
}

TEST_F(FlatTextIn, IllFormedPartsOfAnAddressBecomeReplacementCharacters)
{
    // A stray byte, a truncated sequence, an overlong form, an encoded surrogate: the system decides how many
    // replacement characters each becomes.
    for (const std::string part : {"\xFF", "\xE2\x82", "\xC0\xAF", "\xED\xA0\xBD"})
    {
        std::wstring seen = Seen("a" + part + "z");
        EXPECT_EQ(seen.front(), L'a');
        EXPECT_EQ(seen.back(), L'z');
        ASSERT_GT(seen.size(), 2U);
        EXPECT_EQ(seen.find_first_not_of(L'\xFFFD', 1), seen.size() - 1) << ToUtf8(seen);
    }
}

TEST_F(FlatTextIn, AnAddressThatCannotBeConvertedBecomesEmpty)
{
    const MultiByteToWideCharDouble fails([](UINT page, DWORD flags, LPCCH, int, LPWSTR, int) {
        EXPECT_EQ(page, 65001U);
        EXPECT_EQ(flags, 0U);
        return 0;
    });
    EXPECT_EQ(Seen("https://shop.example"), L"");
}

} // namespace OrlindexTest
