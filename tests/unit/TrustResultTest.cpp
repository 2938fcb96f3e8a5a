#include "load/signature/BinaryTrustResult.h"

#include <string>

#include <gtest/gtest.h>

namespace Kestrany::IdentityServices {
namespace {

struct Row
{
    int result;
    const wchar_t* text;
    int level;
    bool allowed;
};

const Row rows[] = {
    {0, L"Binary file: is valid: %1%", 8, true},
    {1, L"Binary file: unknown error: %1%", 2, false},
    {2, L"Binary file: not found: %1%", 2, false},
    {3, L"Binary file: signature is invalid: %1%", 2, false},
    {4, L"Binary file: signature is missing: %1%", 2, false},
    {5, L"Binary file: signature certificate not trusted: %1%", 2, false},
    {6, L"Binary file: Certificate chain information could not be built: %1%", 8, false},
    {100, L"Binary file: Trust verification is disabled: %1%", 8, true},
    {7, L"Binary file: unknown error: %1%", 2, false},
    {-1, L"Binary file: unknown error: %1%", 2, false},
};

class TrustResult : public testing::TestWithParam<Row>
{
};

TEST_P(TrustResult, HasItsMessageAndItsVerdict)
{
    const auto result = static_cast<BinaryTrustResult>(GetParam().result);
    const TrustMessage& message = TrustMessageFor(result);
    EXPECT_EQ(std::wstring(message.text), GetParam().text);
    EXPECT_EQ(message.level, GetParam().level);
    EXPECT_EQ(LoadingAllowed(result), GetParam().allowed);
}

INSTANTIATE_TEST_SUITE_P(EveryRow, TrustResult, testing::ValuesIn(rows), [](const auto& row) {
    return row.param.result < 0 ? std::string("Negative") : std::to_string(row.param.result);
});

} // namespace
} // namespace Kestrany::IdentityServices
