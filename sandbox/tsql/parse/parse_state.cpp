// The parser's place in the tokens, and the errors it raises.
#include "sandbox/tsql/parse/parse_state.h"

#include <charconv>
#include <utility>

namespace sandbox {
namespace {

constexpr std::size_t kMaxIdentifier = 128;
constexpr std::size_t kMaxNear = 128;

// At most so many characters of UTF-8 text.
std::string shortened(std::string_view text, std::size_t characters) {
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        const bool begins = (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80;
        if (begins && characters-- == 0) break;
    }
    return std::string(text.substr(0, at));
}

bool longerThan(std::string_view text, std::size_t characters) {
    return shortened(text, characters).size() < text.size();
}

}  // namespace

Parser::Parser(std::string_view text, const ParseOptions& options)
    : text_(text), tokens_(tokenize(text, options.quotedIdentifier, options.firstLine)) {}

Parser::Nest::Nest(Parser& parser) : parser_(parser) {
    if (parser_.depth_ >= kMaxNesting) parser_.tooDeep();
    ++parser_.depth_;
}

void Parser::countLink() {
    if (++links_ > kMaxChain) tooDeep();
}

void Parser::tooDeep() const {
    fail(191,
         "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.",
         peek().place);
}

std::string Parser::textOf(const ast::Extent& extent) const {
    return std::string(text_.substr(extent.begin, extent.end - extent.begin));
}

const Token& Parser::peek(int ahead) const {
    const std::size_t index = at_ + static_cast<std::size_t>(ahead);
    return index < tokens_.list.size() ? tokens_.list[index] : tokens_.list.back();
}

const Token& Parser::previous() const {
    return at_ > 0 ? tokens_.list[at_ - 1] : tokens_.list.front();
}

const Token& Parser::take() {
    const Token& token = peek();
    if (token.kind == TokenKind::End || token.kind == TokenKind::Error) unexpected();
    ++at_;
    return token;
}

bool Parser::seesWord(std::string_view upper, int ahead) const {
    const Token& token = peek(ahead);
    return token.kind == TokenKind::Word && token.upper == upper;
}

bool Parser::seesAnyWord(std::initializer_list<std::string_view> words, int ahead) const {
    for (const std::string_view word : words) {
        if (seesWord(word, ahead)) return true;
    }
    return false;
}

bool Parser::seesSymbol(std::string_view symbol, int ahead) const {
    const Token& token = peek(ahead);
    return token.kind == TokenKind::Operator && token.text == symbol;
}

bool Parser::seesIdentifier(int ahead) const {
    const Token& token = peek(ahead);
    return token.kind == TokenKind::Quoted || (token.kind == TokenKind::Word && !token.reserved);
}

bool Parser::acceptWord(std::string_view upper) {
    if (!seesWord(upper)) return false;
    ++at_;
    return true;
}

bool Parser::acceptWords(std::string_view first, std::string_view second) {
    if (!seesWord(first) || !seesWord(second, 1)) return false;
    at_ += 2;
    return true;
}

bool Parser::acceptSymbol(std::string_view symbol) {
    if (!seesSymbol(symbol)) return false;
    ++at_;
    return true;
}

void Parser::expectWord(std::string_view upper) {
    if (!acceptWord(upper)) unexpected();
}

std::string Parser::expectAnyWord(std::initializer_list<std::string_view> words) {
    if (!seesAnyWord(words)) unexpected();
    return take().upper;
}

void Parser::expectSymbol(std::string_view symbol) {
    if (!acceptSymbol(symbol)) unexpected();
}

void Parser::expectEnd() {
    while (acceptSymbol(";")) {
    }
    if (peek().kind != TokenKind::End) unexpected();
}

std::string Parser::identifier() {
    if (!seesIdentifier()) unexpected();
    return identifierOrReserved();
}

std::string Parser::identifierOrReserved() {
    const Token& token = peek();
    if (token.kind != TokenKind::Word && token.kind != TokenKind::Quoted) unexpected();
    if (token.text.empty()) {
        fail(1038,
             "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name. "
             "For other statements, look for empty alias names. Aliases defined as \"\" or [] are not allowed. Change "
             "the alias to a valid name.",
             token.place);
    }
    if (longerThan(token.text, kMaxIdentifier)) {
        fail(103,
             "The identifier that starts with '" + shortened(token.text, kMaxIdentifier) +
                 "' is too long. Maximum length is 128.",
             token.place, 15, 4);
    }
    return take().text;
}

std::string Parser::variableName() {
    if (peek().kind != TokenKind::Variable) unexpected();
    if (longerThan(peek().text, kMaxIdentifier)) {
        fail(103,
             "The identifier that starts with '" + shortened(peek().text, kMaxIdentifier) +
                 "' is too long. Maximum length is 128.",
             peek().place, 15, 4);
    }
    return take().text;
}

std::int64_t Parser::integer() {
    const bool negative = acceptSymbol("-");
    if (!negative) acceptSymbol("+");
    if (peek().kind != TokenKind::Integer) unexpected();
    const std::string digits = (negative ? "-" : "") + peek().text;
    std::int64_t number = 0;
    const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (problem != std::errc{} || end != digits.data() + digits.size()) unexpected();
    take();
    return number;
}

std::vector<std::string> Parser::identifierList() {
    std::vector<std::string> names;
    expectSymbol("(");
    do {
        names.push_back(identifier());
    } while (acceptSymbol(","));
    expectSymbol(")");
    return names;
}

bool Parser::onOff() {
    if (acceptWord("ON")) return true;
    expectWord("OFF");
    return false;
}

const Token& Parser::offending() const {
    return peek().kind == TokenKind::End ? previous() : peek();
}

void Parser::unexpected() const {
    const Token& here = peek();
    if (here.kind == TokenKind::Error) throw SqlError(tokens_.problem, Effect::Batch);
    const Token& near = offending();
    const std::string name = shortened(near.text, kMaxNear);
    if (here.kind == TokenKind::Word && here.upper == "WITH") {
        fail(
            319,
            "Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an xmlnamespaces clause or a change tracking "
            "context clause, the previous statement must be terminated with a semicolon.",
            near.place);
    }
    if (here.kind == TokenKind::Word && here.reserved) {
        fail(156, "Incorrect syntax near the keyword '" + name + "'.", near.place);
    }
    fail(102, "Incorrect syntax near '" + name + "'.", near.place);
}

void Parser::fail(int number, std::string text, const ast::Place& place, int severity, int state) const {
    throw SqlError(Message{number, severity, state, std::move(text), {}, place.line}, Effect::Batch);
}

void Parser::unsupported(const std::string& what) const {
    fail(40517, "Keyword or statement option '" + what + "' is not supported in this version of SQL Server.",
         peek().place, 16);
}

}  // namespace sandbox
