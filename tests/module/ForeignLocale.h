#ifndef ORLINDEX_MODULE_FOREIGNLOCALE_H
#define ORLINDEX_MODULE_FOREIGNLOCALE_H

#include <locale>

namespace OrlindexTest {

/// The process's locale while the object lives is one in which no letter has an upper case, so that names compared by
/// it are compared with regard to case. Turkish changes the letter I in this way.
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
