// Texts that the platform converts, and system error texts.

#include <gtest/gtest.h>
#include <string>
#include <windows.h>

#include "Imports.h"
#include "base/Platform.h"
#include "base/Text.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

/// A platform without a text for any code. `text` is what it still allocates.
DWORD NoText(LPWSTR buffer, wchar_t* text)
{
    *reinterpret_cast<wchar_t**>(buffer) = text;
    return 0;
}

constexpr wchar_t moduleMissing[] = L"The specified module could not be found.";

} // namespace

TEST(SystemErrorText, IsThePlatformsTextWithItsLineEnd)
{
    wchar_t text[512] = {};
    ASSERT_NE(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, ERROR_ACCESS_DENIED, 1024, text, 512, nullptr), 0u);
    EXPECT_EQ(GetSystemErrorText(ERROR_ACCESS_DENIED), text);
    EXPECT_EQ(GetSystemErrorText(ERROR_ACCESS_DENIED).back(), L'\n');
}

TEST(SystemErrorText, IsAskedForInTheDocumentedWayAndFreed)
{
    wchar_t* allocated = nullptr;
    const FormatMessageDouble messages(
        [&allocated](DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer, DWORD, void*) -> DWORD {
            EXPECT_EQ(flags, 4352u);
            EXPECT_EQ(source, nullptr);
            EXPECT_EQ(code, 1234u);
            EXPECT_EQ(language, 1024u);
            allocated = static_cast<wchar_t*>(LocalAlloc(LPTR, 16));
            allocated[0] = L'x';
            *reinterpret_cast<wchar_t**>(buffer) = allocated;
            return 1;
        },
        Executable());
    void* freed = nullptr;
    const LocalFreeDouble frees(
        [&freed](HLOCAL memory) {
            freed = memory;
            return LocalFreeDouble::Original(memory);
        },
        Executable());
    EXPECT_EQ(GetSystemErrorText(1234), L"x");
    EXPECT_NE(allocated, nullptr);
    EXPECT_EQ(freed, allocated);
}

TEST(SystemErrorText, OfAMissingModuleHasAFallback)
{
    const FormatMessageDouble messages(
        [](DWORD, LPCVOID, DWORD, DWORD, LPWSTR buffer, DWORD, void*) { return NoText(buffer, nullptr); },
        Executable());
    EXPECT_EQ(GetSystemErrorText(126), moduleMissing);
    EXPECT_EQ(GetSystemErrorText(127), L"");
    EXPECT_EQ(GetSystemErrorText(0), L"");
}

TEST(SystemErrorText, AnEmptyTextCountsAsNone)
{
    const FormatMessageDouble messages(
        [](DWORD, LPCVOID, DWORD, DWORD, LPWSTR buffer, DWORD, void*) {
            return NoText(buffer, static_cast<wchar_t*>(LocalAlloc(LPTR, sizeof(wchar_t))));
        },
        Executable());
    EXPECT_EQ(GetSystemErrorText(126), moduleMissing);
    EXPECT_EQ(GetSystemErrorText(5), L"");
}

TEST(SystemErrorText, OfACodeThatThePlatformDoesNotKnowIsEmpty)
{
    EXPECT_EQ(GetSystemErrorText(0x2FFFFFFF), L"");
}

TEST(TextConversion, KeepsEveryScript)
{
    const std::string utf8 = "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80";
    const std::wstring utf16 = L"a\u00E4\u4E2D\xD83D\xDE00";
    EXPECT_EQ(Widen(utf8), utf16);
    EXPECT_EQ(Narrow(utf16), utf8);
    EXPECT_EQ(Widen(""), L"");
    EXPECT_EQ(Narrow(L""), "");
}

TEST(TextConversion, KeepsZeroCharacters)
{
    EXPECT_EQ(Widen(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(Narrow(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
}

TEST(TextConversion, ReplacesWhatIsIllFormed)
{
    EXPECT_EQ(Widen("a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(Narrow(L"a\xD800z"), "a\xEF\xBF\xBDz");
}

TEST(TextConversion, ThatFailsGivesAnEmptyText)
{
    for (const int needed : {0, 3}) // The call for the length, and the conversion.
    {
        std::wstring widened = L"not called";
        std::string narrowed = "not called";
        {
            const MultiByteToWideCharDouble widens(
                [needed](UINT, DWORD, LPCCH, int, LPWSTR, int capacity) { return capacity == 0 ? needed : 0; },
                Executable());
            const WideCharToMultiByteDouble narrows([needed](UINT, DWORD, LPCWCH, int, LPSTR, int capacity, LPCCH,
                                                             LPBOOL) { return capacity == 0 ? needed : 0; },
                                                    Executable());
            widened = Widen("abc");
            narrowed = Narrow(L"abc");
        }
        EXPECT_EQ(widened, L"") << needed;
        EXPECT_EQ(narrowed, "") << needed;
    }
}

TEST(Wow64, IsWhatThePlatformSays)
{
    EXPECT_FALSE(IsWow64()) << "these tests are built for 64 bits";
    {
        const Wow64Process wow64;
        EXPECT_TRUE(IsWow64());
    }
    const FailingWow64Query query;
    EXPECT_FALSE(IsWow64());
}

} // namespace OrlindexTest
