// Doubling of single quotes in values for SQL literals.
#pragma once

#include <string>
#include <string_view>

class DBBase;

// Doubles every quote; for names and recorded parameters.
std::string quotesDoubled(DBBase& db, std::string_view text);

// Applies DBBase::fixTheString(char*); for usage texts and placeholder values. The result differs from plain
// doubling for three or more quotes (docs/quirks.md); callers rely on it. The text ends at its first NUL.
std::string quotesDoubledInPlace(DBBase& db, std::string_view text);
