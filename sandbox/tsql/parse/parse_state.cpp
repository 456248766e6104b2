// The parser's place in the tokens, and the errors it raises.
#include "sandbox/tsql/parse/parse_state.h"

#include "sandbox/store/values/error_table.h"

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
    fail(errorMessage<191>(), peek().place);
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
        fail(errorMessage<1038, 1>(), token.place);
    }
    if (longerThan(token.text, kMaxIdentifier)) {
        fail(errorMessage<103>(shortened(token.text, kMaxIdentifier)), token.place);
    }
    return take().text;
}

std::string Parser::variableName() {
    if (peek().kind != TokenKind::Variable) unexpected();
    if (longerThan(peek().text, kMaxIdentifier)) {
        fail(errorMessage<103>(shortened(peek().text, kMaxIdentifier)), peek().place);
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
        fail(errorMessage<319>(), near.place);
    }
    if (here.kind == TokenKind::Word && here.reserved) {
        fail(errorMessage<156>(name), near.place);
    }
    fail(errorMessage<102, 1>(name), near.place);
}

void Parser::fail(Message message, const ast::Place& place) const {
    throw SqlError(std::move(message).atLine(place.line), Effect::Batch);
}

void Parser::unsupported(const std::string& what) const {
    fail(errorMessage<40517>(what), peek().place);
}

}  // namespace sandbox
