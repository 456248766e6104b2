// Cuts T-SQL text into tokens. Used by the parser alone. Nothing is thrown here: what cannot be read becomes an Error
// token, so that a syntax error before it is told first, as SQL Server does.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/syntax/ast_expression.h"

namespace sandbox {

enum class TokenKind {
    End,
    Word,      // a plain identifier or keyword; upper holds it in upper case
    Quoted,    // [name] or "name", without its marks
    Label,     // name: (without the colon)
    Variable,  // @name
    Global,    // @@name
    String,    // 'text'
    NString,   // N'text'
    Integer,
    Decimal,
    Float,
    Money,     // without the currency sign
    Binary,    // the digits after 0x
    Operator,  // also parentheses, comma, semicolon, and a stray character
    Error,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;           // decoded: the name, the text's content, the number as written
    std::string upper;          // Word only
    bool reserved = false;      // Word only: a reserved keyword
    bool doubleQuoted = false;  // Quoted or String that was written "so"
    ast::Place place;
    std::uint32_t end = 0;  // offset behind it
    int match = -1;         // of "(": index of its ")", or -1
};

struct Tokens {
    std::vector<Token> list;       // ends with End, or with Error and End
    std::vector<Message> problem;  // what the Error token stands for
};

// quotedIdentifier false: "double quotes" make String instead of Quoted.
[[nodiscard]] Tokens tokenize(std::string_view text, bool quotedIdentifier, int firstLine);

// Whether a word (in upper case) is reserved by T-SQL, so that it names nothing unless quoted.
[[nodiscard]] bool isReserved(std::string_view upper);

}  // namespace sandbox
