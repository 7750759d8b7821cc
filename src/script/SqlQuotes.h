// Single quotes of values that go into SQL literals.
#pragma once

#include <string>
#include <string_view>

class DBBase;

// Every quote doubled: for names and recorded parameters.
std::string quotesDoubled(DBBase& db, std::string_view text);

// The in-place rule of DBBase::fixTheString(char*), for usage texts and placeholder values. It differs from
// plain doubling for a text with three or more quotes (docs/quirks.md), and callers rely on its result. A
// text ends at its first NUL.
std::string quotesDoubledInPlace(DBBase& db, std::string_view text);
