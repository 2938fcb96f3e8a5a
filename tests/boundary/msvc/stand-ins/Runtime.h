// What LLVM's standard library expects of Microsoft's runtime and mingw-w64's headers give in another form, or not at
// all.
#pragma once

#include <locale.h>
#include <math.h>
#include <stdlib.h>

#undef isfinite
#undef isinf
#undef isnan

inline bool isfinite(double value)
{
    return __builtin_isfinite(value);
}

inline bool isinf(double value)
{
    return __builtin_isinf(value);
}

inline bool isnan(double value)
{
    return __builtin_isnan(value);
}

extern "C" {
float _strtof_l(const char*, char**, _locale_t);
long double _strtold_l(const char*, char**, _locale_t);
}
