// Reading secrets from, and writing output to, the standard streams.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "console/Secret.h"

// One line of at most `maximum` bytes: asked for without echo on a terminal, else the first line of standard
// input. Throws Failure for a longer line, a NUL byte in it, or no line at all.
Secret readSecret(const std::string& prompt, std::size_t maximum);

// Leaves standard output to results: what the library prints there, when a log cannot be written, goes to
// standard error from here on.
void separateResults();
std::FILE* resultStream();

// A result, on standard output, with a line break at its end. What scripts and databases hold must not give a
// terminal orders: there it is cleaned, but for line breaks and tabs.
void writeResult(std::string_view text);
// The same for a text whose colours are ours.
void writePainted(std::string_view text);
// A text about the work, on standard error, without the line breaks around it.
void writeNote(const std::string& text);
