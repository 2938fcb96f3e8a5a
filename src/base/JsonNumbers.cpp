#include "base/JsonNumbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace Kestrany::IdentityServices {
namespace {

/// Longer than any useful number. The parser's conversion takes quadratic time.
constexpr std::size_t longestNumber = 1000;

/// A double can represent every number whose first digit has a power of ten from -306 to 306.
constexpr int greatestPower = 306;
constexpr double firstBeyond = 1e307;

/// Replaces numbers out of range. Not longer than any of them, so that all other bytes keep their positions.
constexpr std::string_view numberBeyond = "1e308";
/// Replaces what the parser reads as a number and then rejects.
constexpr std::string_view noNumber = "1e";

constexpr char digits[] = "0123456789";

/// A number token, split as the parser does: any part may be missing.
struct NumberToken
{
    bool hasSign = false;
    std::string_view whole;
    std::string_view fraction;
    std::string_view exponent;
    bool hasExponent = false;
    bool isExponentNegative = false;
    std::size_t length = 0;
};

class TokenReader
{
public:
    explicit TokenReader(std::string_view text) : text_(text) {}

    NumberToken TakeNumber()
    {
        NumberToken number;
        number.hasSign = TakeOneOf("+-") != '\0';
        number.whole = TakeDigits();
        if (TakeOneOf("."))
            number.fraction = TakeDigits();
        if (TakeOneOf("eE"))
        {
            number.hasExponent = true;
            number.isExponentNegative = TakeOneOf("+-") == '-';
            number.exponent = TakeDigits();
        }
        number.length = position_;
        return number;
    }

private:
    /// Zero if the next character is none of them.
    char TakeOneOf(std::string_view characters)
    {
        const bool isNext = position_ < text_.size() && characters.find(text_[position_]) != std::string_view::npos;
        return isNext ? text_[position_++] : '\0';
    }

    std::string_view TakeDigits()
    {
        const std::string_view rest = text_.substr(position_);
        const std::string_view taken = rest.substr(0, rest.find_first_not_of(digits));
        position_ += taken.size();
        return taken;
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

int ExponentOf(const NumberToken& number)
{
    constexpr int beyondAll = 1000 * 1000;
    int exponent = 0;
    const char* const end = number.exponent.data() + number.exponent.size();
    if (std::from_chars(number.exponent.data(), end, exponent).ec == std::errc::result_out_of_range ||
        exponent > beyondAll)
        exponent = beyondAll;
    return number.isExponentNegative ? -exponent : exponent;
}

/// The power of ten of the first non-zero digit; 0 for zero.
int PowerOfTen(const NumberToken& number)
{
    const std::size_t whole = number.whole.find_first_not_of('0');
    if (whole != std::string_view::npos)
        return static_cast<int>(number.whole.size() - whole) - 1 + ExponentOf(number);
    const std::size_t fraction = number.fraction.find_first_not_of('0');
    return fraction == std::string_view::npos ? 0 : -static_cast<int>(fraction) - 1 + ExponentOf(number);
}

/// Whether the parser would accept it, apart from its length and range.
bool IsNumber(const NumberToken& number)
{
    const bool hasDigits = !number.whole.empty() || !number.fraction.empty();
    return hasDigits && (!number.hasExponent || !number.exponent.empty());
}

/// The replacement of a number; empty if the number stays.
std::string_view ReplacementOf(const NumberToken& number)
{
    if (number.length > longestNumber)
        return IsNumber(number) ? numberBeyond : noNumber;
    return IsNumber(number) && std::abs(PowerOfTen(number)) > greatestPower ? numberBeyond : std::string_view();
}

/// The sign stays: without it, the number could join with the token before it.
void Overwrite(char* target, const NumberToken& number, std::string_view replacement)
{
    const std::size_t sign = number.hasSign ? 1 : 0;
    std::fill_n(target + sign, number.length - sign, ' ');
    replacement.copy(target + sign, replacement.size());
}

/// The position after the string that was opened before `position`; beyond the end if the string is not closed.
std::size_t AfterString(const std::string& bytes, std::size_t position)
{
    while (position < bytes.size() && bytes[position] != '"')
        position += bytes[position] == '\\' ? 2 : 1;
    return position + 1;
}

/// The position after the string or comment that begins at `position`, or after the one character if neither begins
/// there.
std::size_t AfterStringOrComment(const std::string& bytes, std::size_t position)
{
    if (bytes[position] == '"')
        return AfterString(bytes, position + 1);
    if (bytes.compare(position, 2, "//") == 0)
        return bytes.find_first_of("\r\n", position);
    if (bytes.compare(position, 2, "/*") == 0)
    {
        const std::size_t end = bytes.find("*/", position + 2);
        return end == std::string::npos ? end : end + 2;
    }
    return position + 1;
}

} // namespace

std::optional<std::string> WithNumbersInRange(const std::string& bytes)
{
    std::optional<std::string> copy;
    std::size_t position = 0;
    while ((position = bytes.find_first_of("\"/+-0123456789", position)) != std::string::npos)
    {
        if (bytes[position] == '"' || bytes[position] == '/')
        {
            position = AfterStringOrComment(bytes, position);
            continue;
        }
        const NumberToken number = TokenReader(std::string_view(bytes).substr(position)).TakeNumber();
        const std::string_view replacement = ReplacementOf(number);
        if (!replacement.empty())
        {
            if (!copy)
                copy = bytes;
            Overwrite(copy->data() + position, number, replacement);
        }
        position += number.length;
    }
    return copy;
}

bool IsNumberOutOfRange(const Json::Value& value)
{
    return value.isDouble() && std::abs(value.asDouble()) > firstBeyond;
}

} // namespace Kestrany::IdentityServices
