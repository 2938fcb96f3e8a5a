// The signer's name against the list of trusted ones, with certificates and with a platform that misbehaves.

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

#include <wincrypt.h>

#include "BuildData.h"
#include "Imports.h"
#include "load/signature/SignatureVerification.h"
#include "support/HostProcess.h"
#include "support/Text.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::SignerNameMatches;

namespace {

struct CertificateFreer
{
    void operator()(const CERT_CONTEXT* certificate) const { CertFreeCertificateContext(certificate); }
};

using Certificate = std::unique_ptr<const CERT_CONTEXT, CertificateFreer>;

/// The first certificate of a PEM text.
Certificate FromPem(const std::string& pem)
{
    std::vector<BYTE> der(pem.size());
    auto size = static_cast<DWORD>(der.size());
    if (!CryptStringToBinaryA(pem.data(), static_cast<DWORD>(pem.size()), CRYPT_STRING_BASE64HEADER, der.data(), &size,
                              nullptr, nullptr))
        throw std::runtime_error("not PEM");
    Certificate certificate(CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), size));
    if (!certificate)
        throw std::runtime_error("not a certificate");
    return certificate;
}

/// A signer's certificate of this build.
Certificate SignerCertificate(const std::string& signer)
{
    return FromPem(ReadFile(Environment().signing / (signer + ".pem")));
}

/// The list that the library is built with.
constexpr std::string_view trusted(Kestrany::BuildData::TrustedSigners, sizeof Kestrany::BuildData::TrustedSigners);

bool IsTrusted(const std::string& signer)
{
    return SignerNameMatches(SignerCertificate(signer).get(), trusted);
}

/// Makes the platform return chosen names: the results of the call for the length and of the call for the text.
class NamedCertificate
{
public:
    NamedCertificate(DWORD neededLength, DWORD secondResult, const std::string& text)
        : NamedCertificate(neededLength, secondResult, text, std::wstring(text.begin(), text.end()))
    {
    }

    NamedCertificate(DWORD neededLength, DWORD secondResult, const std::string& text, const std::wstring& wide)
        : names_(
              [this, neededLength, secondResult, text](PCCERT_CONTEXT certificate, DWORD type, DWORD flags,
                                                       void* parameter, char* name, DWORD size) {
                  EXPECT_EQ(certificate, &context_);
                  EXPECT_EQ(type, 4u);
                  EXPECT_EQ(flags, 0u);
                  EXPECT_EQ(parameter, nullptr);
                  ++calls_;
                  if (!name)
                  {
                      EXPECT_EQ(size, 0u);
                      return neededLength;
                  }
                  EXPECT_EQ(size, neededLength) << "a buffer of the length that was asked for";
                  std::fill_n(name, size, '\0');
                  std::copy_n(text.data(), std::min<std::size_t>(text.size(), size), name);
                  return secondResult;
              },
              Executable()),
          wideNames_(
              [this, wide](PCCERT_CONTEXT certificate, DWORD type, DWORD flags, void* parameter, wchar_t* name,
                           DWORD size) {
                  EXPECT_EQ(certificate, &context_);
                  EXPECT_EQ(type, 4u);
                  EXPECT_EQ(flags, 0u);
                  EXPECT_EQ(parameter, nullptr);
                  // As the platform does: truncated to the buffer, always with a terminating zero.
                  const std::size_t length = std::min<std::size_t>(wide.size(), size - 1);
                  std::copy_n(wide.data(), length, name);
                  name[length] = L'\0';
                  return static_cast<DWORD>(length + 1);
              },
              Executable())
    {
    }

    /// A platform that works: both results include the terminating zero.
    explicit NamedCertificate(const std::string& text)
        : NamedCertificate(static_cast<DWORD>(text.size() + 1), static_cast<DWORD>(text.size() + 1), text)
    {
    }

    /// The name is `wide` in UTF-16 and `text` in the other encoding.
    NamedCertificate(const std::string& text, const std::wstring& wide)
        : NamedCertificate(static_cast<DWORD>(text.size() + 1), static_cast<DWORD>(text.size() + 1), text, wide)
    {
    }

    bool Matches(std::string_view signers) const { return SignerNameMatches(&context_, signers); }
    int Calls() const { return calls_; }

private:
    CERT_CONTEXT context_ = {};
    int calls_ = 0;
    CertGetNameStringADouble names_;
    CertGetNameStringWDouble wideNames_;
};

constexpr std::string_view List(const char* text, std::size_t size)
{
    return {text, size};
}

constexpr std::string_view twoNames = List("One\0Two\0", 8);

} // namespace

TEST(SignerName, TheTrustedListHoldsEachNameWithItsZero)
{
    EXPECT_EQ(trusted, List("Kestrany, Inc.\0Kestrany Asia Pte\0", 33));
}

TEST(SignerName, BothTrustedNamesMatch)
{
    EXPECT_TRUE(IsTrusted("good"));
    EXPECT_TRUE(IsTrusted("asia"));
}

TEST(SignerName, AnotherCaseDoesNotMatch)
{
    EXPECT_FALSE(IsTrusted("wrong-case"));
}

TEST(SignerName, ATrailingSpaceDoesNotMatch)
{
    EXPECT_FALSE(IsTrusted("trailing-space"));
}

TEST(SignerName, AMissingOrAnAddedPointDoesNotMatch)
{
    EXPECT_FALSE(IsTrusted("no-point"));
    EXPECT_FALSE(IsTrusted("asia-point"));
}

TEST(SignerName, AStrangerDoesNotMatch)
{
    EXPECT_FALSE(IsTrusted("stranger"));
}

TEST(SignerName, ALookAlikeDoesNotMatch)
{
    EXPECT_FALSE(IsTrusted("look-alike"));
    EXPECT_TRUE(NamedCertificate("One", L"One").Matches(twoNames));
    for (const wchar_t* wide : {L"\uFF2Fne", L"On\u0113", L"On", L"Onee", L"One ", L"", L"\u014Ene", L"one"})
        EXPECT_FALSE(NamedCertificate("One", wide).Matches(twoNames)) << ToUtf8(wide);
}

TEST(SignerName, OnlyAMatchTakesAQuestionForTheWideName)
{
    const CertGetNameStringWDouble none(
        [](PCCERT_CONTEXT, DWORD, DWORD, void*, wchar_t*, DWORD) {
            ADD_FAILURE();
            return DWORD{0};
        },
        Executable());
    EXPECT_FALSE(IsTrusted("stranger"));
}

TEST(SignerName, AnUnknownWideNameDoesNotMatch)
{
    const CertGetNameStringWDouble none([](PCCERT_CONTEXT, DWORD, DWORD, void*, wchar_t*, DWORD) { return DWORD{0}; },
                                        Executable());
    EXPECT_FALSE(IsTrusted("good"));
}

TEST(SignerName, EveryNameOfAListIsCompared)
{
    EXPECT_TRUE(NamedCertificate("One").Matches(twoNames));
    EXPECT_TRUE(NamedCertificate("Two").Matches(twoNames));
    EXPECT_FALSE(NamedCertificate("Three").Matches(twoNames));
}

TEST(SignerName, APartOfANameDoesNotMatch)
{
    for (const char* name : {"On", "ne", "One Two", "OneTwo", "wo", "O"})
        EXPECT_FALSE(NamedCertificate(name).Matches(twoNames)) << name;
}

TEST(SignerName, ANameThatHoldsTheWholeListDoesNotMatch)
{
    EXPECT_FALSE(NamedCertificate(std::string("One\0Two", 7)).Matches(twoNames));
    EXPECT_FALSE(NamedCertificate(std::string("One\0", 4)).Matches(twoNames));
    EXPECT_FALSE(NamedCertificate(std::string("Two\0x", 5)).Matches(twoNames));
}

TEST(SignerName, TextAfterTheLastZeroIsNeverCompared)
{
    const std::string_view unfinished = List("One\0Two", 7);
    EXPECT_TRUE(NamedCertificate("One").Matches(unfinished));
    EXPECT_FALSE(NamedCertificate("Two").Matches(unfinished));
    EXPECT_FALSE(NamedCertificate("Two").Matches(List("Two", 3)));
    EXPECT_FALSE(NamedCertificate("Two").Matches(twoNames.substr(0, 7)));
}

TEST(SignerName, AnEmptyListMatchesNothing)
{
    EXPECT_FALSE(NamedCertificate("One").Matches({}));
    EXPECT_FALSE(NamedCertificate(0, 0, "").Matches({}));
}

TEST(SignerName, ACertificateWithoutNameMatchesNothing)
{
    for (const DWORD length : {0, 1})
    {
        const NamedCertificate certificate(length, 4, "One");
        EXPECT_FALSE(certificate.Matches(twoNames)) << length;
        EXPECT_EQ(certificate.Calls(), 1) << "there is nothing to fetch";
    }
}

TEST(SignerName, ANameThatVanishesBetweenTheQuestionsMatchesNothing)
{
    for (const DWORD result : {0, 1})
        EXPECT_FALSE(NamedCertificate(4, result, "One").Matches(twoNames)) << result;
}

TEST(SignerName, ANameThatShrinksBetweenTheQuestionsIsTakenAtItsSecondLength)
{
    EXPECT_TRUE(NamedCertificate(20, 4, "One").Matches(twoNames));
    EXPECT_FALSE(NamedCertificate(4, 3, "One").Matches(twoNames)) << "the second length says \"On\"";
}

TEST(SignerName, ANameThatGrowsBetweenTheQuestionsMatchesNothing)
{
    EXPECT_FALSE(NamedCertificate(4, 5, "One").Matches(twoNames));
    EXPECT_FALSE(NamedCertificate(4, 100000, "One").Matches(twoNames));
    EXPECT_FALSE(NamedCertificate(4, 0xFFFFFFFF, "One").Matches(twoNames));
}

TEST(SignerName, ALongNameIsReadWhole)
{
    const std::string name(10000, 'n');
    EXPECT_TRUE(NamedCertificate(name).Matches(name + '\0'));
    EXPECT_FALSE(NamedCertificate(name).Matches(name + "n" + '\0'));
}

} // namespace OrlindexTest
