// Tokens of T-SQL.
#pragma once

#include <cstdint>
#include <vector>

#include "messages/Messages.h"

namespace tsql {

enum class TokenKind : std::uint8_t {
    End,
    Word,          // keyword or plain name
    Bracketed,     // [name]
    DoubleQuoted,  // "name", or a string under QUOTED_IDENTIFIER OFF
    Text,          // '...'
    NationalText,  // N'...'
    Variable,      // @name
    Global,        // @@name
    Number,        // including $1.50
    Binary,        // 0x...
    Symbol,        // operators and punctuation, longest match
};

// A token. Views point into the text of the batch.
struct Token {
    TokenKind kind = TokenKind::End;
    bool reserved = false;  // a reserved word
    int line = 1;           // from 1
    std::string_view raw;   // as written, including quotes
};

// Error at a line of the text. Nothing of the batch runs.
struct SyntaxError : SqlError {
    SyntaxError(const SqlError& error, int errorLine) : SqlError(error), line(errorLine) {}
    int line;
    std::string procedure;  // procedure that the text defines, once its name is parsed
};

inline constexpr std::size_t kLongestName = 128;  // in UTF-16 units

// Returns the tokens of the batch, followed by one of kind End. Throws SyntaxError 105 (unclosed quotation
// mark), 113 (unclosed comment), 102 (a character that begins no token).
std::vector<Token> tokenize(std::string_view text);

// Value of a token: without quotes, doubled quotes halved.
std::string unquoted(const Token& token);

}  // namespace tsql
