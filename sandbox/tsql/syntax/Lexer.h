// T-SQL text to tokens.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "messages/SqlError.h"
#include "types/Text.h"

namespace tsql {

enum class TokenKind : std::uint8_t {
    End,
    Word,          // keyword or plain name
    Bracketed,     // [name]
    DoubleQuoted,  // "name", or a text under QUOTED_IDENTIFIER OFF
    Variable,      // @name
    Global,        // @@name
    Number,        // $1.50, too
    Text,          // '...'
    NationalText,  // N'...'
    Binary,        // 0x...
    Symbol,        // operators and punctuation, the longest that fits
};

// Views into the batch's text.
struct Token {
    TokenKind kind = TokenKind::End;
    bool reserved = false;  // a word that cannot be a name
    char initial = '\0';    // of a word or symbol, in upper case
    int line = 1;           // from 1
    std::string_view raw;   // as written, quotes and all
};

// An error that stands at a place of the text: nothing of the batch runs.
struct SyntaxError : SqlError {
    SyntaxError(int errorNumber, const std::string& text, int errorLine, int errorSeverity = 15)
        : SqlError(errorNumber, text, errorSeverity), line(errorLine) {}
    SyntaxError(const SqlError& error, int errorLine) : SqlError(error), line(errorLine) {}
    int line;
    std::string procedure;  // that the text defines, once its name is read
};

// The whole batch, closed by a token of kind End. Throws SyntaxError 105 (open quotation mark), 113 (open
// comment), 102 (a character that begins no token), 103 (as checkName).
std::vector<Token> tokenize(std::string_view text);

// Throws SyntaxError 103 for a name above 128 characters; "x" is one or a text, as its reader takes it.
void checkName(const Token& token);

// What a token stands for: quotes taken off, doubled quotes made single.
std::string unquoted(const Token& token);

}  // namespace tsql
