// The rules by which T-SQL text falls into tokens: https://learn.microsoft.com/sql/t-sql/language-elements.
#include "sandbox/tsql/syntax/lexer.h"

#include "sandbox/store/values/error_table.h"

#include <array>
#include <utility>

namespace sandbox {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool isNameStart(char c) {
    return isLetter(c) || c == '#';
}
bool isNamePart(char c) {
    return isLetter(c) || isDigit(c) || c == '@' || c == '#' || c == '$';
}

std::string upperCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return out;
}

// Longest first.
constexpr auto kLongOperators = std::to_array<std::string_view>(
    {"<=", ">=", "<>", "!=", "!<", "!>", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "::"});

class Lexer {
public:
    Lexer(std::string_view text, bool quotedIdentifier, int firstLine)
        : text_(text), quotedIdentifier_(quotedIdentifier), line_(firstLine) {}

    Tokens run() {
        while (out_.problem.empty() && skipBlanks() && at_ < text_.size()) token();
        start();
        finish(TokenKind::End, {});
        return std::move(out_);
    }

private:
    [[nodiscard]] char look(std::size_t ahead = 0) const {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
    }
    [[nodiscard]] bool sees(std::string_view what) const { return text_.substr(at_, what.size()) == what; }

    void advance(std::size_t count = 1) {
        for (; count > 0 && at_ < text_.size(); --count) {
            if (text_[at_++] == '\n') ++line_;
        }
    }

    void start() {
        current_ = Token{};
        current_.place = {line_, static_cast<std::uint32_t>(at_)};
    }

    Token& finish(TokenKind kind, std::string text) {
        current_.kind = kind;
        current_.text = std::move(text);
        current_.end = static_cast<std::uint32_t>(at_);
        out_.list.push_back(std::move(current_));
        return out_.list.back();
    }

    void problem(Message message, int line) { out_.problem.push_back(std::move(message).atLine(line)); }

    // False after a comment without end, which has become an Error token.
    bool skipBlanks() {
        while (at_ < text_.size()) {
            if (sees("--")) {
                while (at_ < text_.size() && look() != '\n') advance();
            } else if (sees("/*")) {
                if (!skipComment()) return false;
            } else if (static_cast<unsigned char>(look()) <= ' ' || look() == '\x7f') {
                advance();
            } else if (sees("\xC2\xA0")) {  // no-break space
                advance(2);
            } else if (sees("\xEF\xBB\xBF") || sees("\xE3\x80\x80")) {  // byte order mark, ideographic space
                advance(3);
            } else {
                break;
            }
        }
        return true;
    }

    bool skipComment() {
        start();
        int depth = 0;
        while (at_ < text_.size()) {
            if (sees("/*")) {
                ++depth;
                advance(2);
            } else if (sees("*/")) {
                advance(2);
                if (--depth == 0) return true;
            } else {
                advance();
            }
        }
        problem(errorMessage<113>(), current_.place.line);
        finish(TokenKind::Error, {});
        return false;
    }

    void token() {
        start();
        const char c = look();
        if (c == '\'') return string(TokenKind::String);
        if ((c == 'N' || c == 'n') && look(1) == '\'') {
            advance();
            return string(TokenKind::NString);
        }
        if (c == '[') return quoted(']');
        if (c == '"') return quoted('"');
        if (c == '@') return variable();
        if (isNameStart(c)) return word();
        if (c == '0' && (look(1) == 'x' || look(1) == 'X')) return binary();
        if (isDigit(c) || (c == '.' && isDigit(look(1)))) return number();
        if (c == '$') return money();
        symbol();
    }

    // The content between two marks, of which a doubled one stands for itself. False when the end is missing.
    bool between(char mark, std::string& content) {
        advance();
        while (at_ < text_.size()) {
            if (look() == mark) {
                advance();
                if (look() != mark) return true;
                content += mark;
                advance();
            } else if (mark == '\'' && look() == '\\' && (look(1) == '\n' || (look(1) == '\r' && look(2) == '\n'))) {
                advance(look(1) == '\n' ? 2 : 3);  // a backslash joins the line with the next
            } else {
                content += look();
                advance();
            }
        }
        return false;
    }

    void unclosed(const std::string& content) {
        const int line = current_.place.line;
        problem(errorMessage<105>(content), line);
        problem(errorMessage<102, 1>(content), line);
        finish(TokenKind::Error, content);
    }

    void string(TokenKind kind) {
        std::string content;
        if (!between('\'', content)) return unclosed(content);
        finish(kind, std::move(content));
    }

    void quoted(char endMark) {
        std::string content;
        if (!between(endMark, content)) return unclosed(content);
        current_.doubleQuoted = endMark == '"';
        const bool isText = current_.doubleQuoted && !quotedIdentifier_;
        finish(isText ? TokenKind::String : TokenKind::Quoted, std::move(content));
    }

    std::string nameParts() {
        const std::size_t from = at_;
        while (isNamePart(look()) && !sees("\xC2\xA0") && !sees("\xE3\x80\x80")) advance();
        return std::string(text_.substr(from, at_ - from));
    }

    void variable() {
        const bool global = look(1) == '@';
        finish(global ? TokenKind::Global : TokenKind::Variable, nameParts());
    }

    void word() {
        std::string name = nameParts();
        const std::uint32_t end = static_cast<std::uint32_t>(at_);
        std::string upper = upperCase(name);
        const bool reserved = isReserved(upper);
        if (!reserved && takeColon()) {
            finish(TokenKind::Label, std::move(name));
            return;
        }
        Token& token = finish(TokenKind::Word, std::move(name));
        token.upper = std::move(upper);
        token.reserved = reserved;
        token.end = end;
    }

    // A name followed by a single colon is a label; blanks may stand between.
    bool takeColon() {
        std::size_t ahead = 0;
        while (look(ahead) == ' ' || look(ahead) == '\t') ++ahead;
        if (look(ahead) != ':' || look(ahead + 1) == ':') return false;
        advance(ahead + 1);
        return true;
    }

    void binary() {
        advance(2);
        const std::size_t from = at_;
        while (isHexDigit(look())) advance();
        finish(TokenKind::Binary, std::string(text_.substr(from, at_ - from)));
    }

    void digits() {
        while (isDigit(look())) advance();
    }

    void number() {
        const std::size_t from = at_;
        TokenKind kind = TokenKind::Integer;
        digits();
        if (look() == '.') {
            kind = TokenKind::Decimal;
            advance();
            digits();
        }
        if (look() == 'e' || look() == 'E') {  // "1e" alone is a float as well
            kind = TokenKind::Float;
            advance();
            if (look() == '+' || look() == '-') advance();
            digits();
        }
        finish(kind, std::string(text_.substr(from, at_ - from)));
    }

    // $1.50, or a pseudo column such as $IDENTITY.
    void money() {
        if (isLetter(look(1))) {
            advance();
            std::string name = "$" + nameParts();
            Token& token = finish(TokenKind::Word, name);
            token.upper = upperCase(name);
            return;
        }
        advance();
        const std::size_t from = at_;
        digits();
        if (look() == '.') {
            advance();
            digits();
        }
        finish(TokenKind::Money, std::string(text_.substr(from, at_ - from)));
    }

    void symbol() {
        std::string text(1, look());
        for (const std::string_view longer : kLongOperators) {
            if (sees(longer)) text = longer;
        }
        advance(text.size());
        if (text == "(") {
            open_.push_back(static_cast<int>(out_.list.size()));
        } else if (text == ")" && !open_.empty()) {
            out_.list[static_cast<std::size_t>(open_.back())].match = static_cast<int>(out_.list.size());
            open_.pop_back();
        }
        finish(TokenKind::Operator, std::move(text));
    }

    std::string_view text_;
    bool quotedIdentifier_;
    std::size_t at_ = 0;
    int line_;
    Token current_;
    std::vector<int> open_;  // indexes of "(" not yet closed
    Tokens out_;
};

}  // namespace

Tokens tokenize(std::string_view text, bool quotedIdentifier, int firstLine) {
    return Lexer(text, quotedIdentifier, firstLine).run();
}

}  // namespace sandbox
