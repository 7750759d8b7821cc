// Single quotes of texts that go into SQL literals, and the in-place replacement behind one of the two forms.
#pragma once

#include <string>

// Every single quote becomes two.
void doubleQuotes(std::string& text);

// Replaces occurrences of `find` in the NUL-terminated `text`, in place; the buffer must have room for the
// result. Callers rely on how it goes about it:
//   - the search never looks back: a mismatch starts it again behind the mismatching character, so that an
//     occurrence that begins within a failed one is missed;
//   - at most 10 occurrences are replaced;
//   - a longer replacement is put in by one pass an occurrence, the first pass at the first occurrence and
//     every later one at the *last* occurrence that the text has by then. With "'" and "''" this doubles the
//     first quote and then works on the last ones: "'a'b'" becomes "''a'b'''".
void replaceInPlace(char* text, const char* find, const char* replacement);
