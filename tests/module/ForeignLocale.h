#ifndef ORLINDEX_MODULE_FOREIGNLOCALE_H
#define ORLINDEX_MODULE_FOREIGNLOCALE_H

#include <locale>

namespace OrlindexTest {

/// Sets a locale in which no letter has an upper case, while the object lives. Names that are compared by the locale
/// then differ by case. Turkish does this to the letter I.
class ForeignLocale
{
public:
    ForeignLocale() = default;
    ~ForeignLocale() { std::locale::global(before_); }
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;

private:
    struct Letters : std::ctype<wchar_t>
    {
        wchar_t do_toupper(wchar_t character) const override { return character; }
        wchar_t do_tolower(wchar_t character) const override { return character; }
    };

    std::locale before_ = std::locale::global(std::locale(std::locale::classic(), new Letters));
};

} // namespace OrlindexTest

#endif
