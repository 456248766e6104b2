// Literals: which type a number or text has by the way it is written.
#include <charconv>
#include <cmath>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

constexpr int kMaxPrecision = 38;
constexpr int kMaxBytes = 8000;

int utf16Length(std::string_view text) {
    int units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) != 0x80) ++units;
        if (byte >= 0xF0) ++units;
    }
    return units;
}

ast::Literal textLiteral(std::string text, TypeId id) {
    const int limit = id == TypeId::NVarChar ? kMaxBytes / 2 : kMaxBytes;
    Type type{.id = id, .length = utf16Length(text)};
    if (type.length > limit) type.length = Type::kMax;
    return ast::Literal{{type, std::move(text)}};
}

std::uint8_t hexDigit(char c) {
    if (c <= '9') return static_cast<std::uint8_t>(c - '0');
    return static_cast<std::uint8_t>((c | 0x20) - 'a' + 10);
}

ast::Literal binaryLiteral(std::string digits) {
    if (digits.size() % 2 != 0) digits.insert(digits.begin(), '0');
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(hexDigit(digits[i]) << 4 | hexDigit(digits[i + 1])));
    }
    Type type{.id = TypeId::VarBinary, .length = Type::kMax};
    if (bytes.size() <= kMaxBytes) type.length = static_cast<int>(bytes.size());
    return ast::Literal{{type, std::move(bytes)}};
}

}  // namespace

bool Parser::seesLiteral() const {
    switch (peek().kind) {
        case TokenKind::String:
        case TokenKind::NString:
        case TokenKind::Integer:
        case TokenKind::Decimal:
        case TokenKind::Float:
        case TokenKind::Money:
        case TokenKind::Binary: return true;
        default: return seesWord("NULL");
    }
}

ast::Literal Parser::literal(const Token& token) const {
    switch (token.kind) {
        case TokenKind::String: return textLiteral(token.text, TypeId::VarChar);
        case TokenKind::NString: return textLiteral(token.text, TypeId::NVarChar);
        case TokenKind::Integer: return integerLiteral(token);
        case TokenKind::Decimal: return decimalLiteral(token);
        case TokenKind::Float: return floatLiteral(token);
        case TokenKind::Money: return moneyLiteral(token);
        case TokenKind::Binary: return binaryLiteral(token.text);
        default: return {};
    }
}

// A whole number beyond int is numeric, not bigint.
ast::Literal Parser::integerLiteral(const Token& token) const {
    std::int64_t number = 0;
    const char* end = token.text.data() + token.text.size();
    const auto read = std::from_chars(token.text.data(), end, number);
    if (read.ec == std::errc{} && number <= 2147483647) return ast::Literal{{Type{.id = TypeId::Int}, number}};
    return decimalLiteral(token);
}

// numeric of as many digits as are written; zeros in front do not count.
ast::Literal Parser::decimalLiteral(const Token& token) const {
    Decimal number;
    int digits = 0;
    int scale = 0;
    bool behindPoint = false;
    for (const char c : token.text) {
        if (c == '.') {
            behindPoint = true;
            continue;
        }
        if (behindPoint) ++scale;
        if (digits > 0 || c != '0') ++digits;
        if (digits > kMaxPrecision || scale > kMaxPrecision) {
            fail(errorMessage<1007>(token.text), token.place);
        }
        number.unscaled = number.unscaled * 10 + (c - '0');
    }
    number.scale = static_cast<std::uint8_t>(scale);
    const int precision = std::max({digits, scale, 1});
    const Type type{.id = TypeId::Decimal,
                    .precision = static_cast<std::uint8_t>(precision),
                    .scale = number.scale,
                    .numericName = true};
    return ast::Literal{{type, number}};
}

ast::Literal Parser::floatLiteral(const Token& token) const {
    double number = 0;
    const auto read = std::from_chars(token.text.data(), token.text.data() + token.text.size(), number);
    if (read.ec == std::errc::result_out_of_range && token.text.find('-') == std::string::npos) {
        fail(errorMessage<168>(token.text), token.place);
    }
    return ast::Literal{{Type{.id = TypeId::Float}, number}};
}

// Four decimals, the fifth rounded.
ast::Literal Parser::moneyLiteral(const Token& token) const {
    const std::size_t point = token.text.find('.');
    std::string digits = token.text.substr(0, point);
    std::string decimals = point == std::string::npos ? "" : token.text.substr(point + 1);
    const bool roundUp = decimals.size() > 4 && decimals[4] >= '5';
    decimals.resize(4, '0');
    digits += decimals;
    std::int64_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec != std::errc{} || number > INT64_MAX - 1) {
        fail(errorMessage<293>(), token.place);
    }
    return ast::Literal{{Type{.id = TypeId::Money}, number + (roundUp ? 1 : 0)}};
}

// [+|-] literal | @variable | @@global | word
ast::ExprPtr Parser::bareValue() {
    const ast::Place place = peek().place;
    if (seesSymbol("-") || seesSymbol("+")) {
        const bool minus = take().text == "-";
        if (!seesLiteral() || seesWord("NULL")) unexpected();
        const Token& number = take();
        if (number.kind == TokenKind::String || number.kind == TokenKind::NString) {
            --at_;
            unexpected();
        }
        return make(place,
                    ast::Unary{minus ? ast::UnaryOp::Minus : ast::UnaryOp::Plus, make(number.place, literal(number))});
    }
    if (seesLiteral()) {
        const Token& token = take();
        return make(place, literal(token));
    }
    if (peek().kind == TokenKind::Variable) return make(place, ast::Variable{variableName()});
    if (peek().kind == TokenKind::Global) return make(place, ast::GlobalVariable{take().text});
    std::string word = identifier();
    return make(place, textLiteral(std::move(word), TypeId::VarChar));
}

}  // namespace sandbox
