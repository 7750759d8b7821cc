// Doubling of single quotes for SQL literals, and the in-place replacement that one of its two forms uses.
#pragma once

#include <string>

// Doubles every single quote.
void doubleQuotes(std::string& text);

// Replaces occurrences of `find` in the NUL-terminated `text` in place; the buffer must have room for the
// result. Callers rely on these rules:
//   - The search does not backtrack: after a mismatch it continues behind the mismatching character. It
//     misses an occurrence that begins inside a partial match.
//   - At most 10 occurrences are replaced.
//   - A longer replacement takes one pass per occurrence. The first pass replaces the first occurrence, every
//     later one the *last* occurrence at that time. With "'" and "''", "'a'b'" becomes "''a'b'''".
void replaceInPlace(char* text, const char* find, const char* replacement);
