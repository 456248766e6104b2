// Tokens towards a client.
#include "sandbox/tds/tokens.h"

#include <stdexcept>

#include "sandbox/tds/login.h"

namespace sandbox::tds {
namespace {

// ENVCHANGE kinds, [MS-TDS] 2.2.7.9.
enum Environment : std::uint8_t {
    kDatabase = 1,
    kLanguage = 2,
    kPacketSize = 4,
    kCollationKind = 7,
    kBegin = 8,
    kCommit = 9,
    kRollback = 10,
    kReset = 18,
};

// Bits of a column's flags.
constexpr std::uint16_t kNullable = 0x0001;
constexpr std::uint16_t kUnknownUpdatable = 0x0008;
constexpr std::uint16_t kIdentity = 0x0010;
constexpr std::uint16_t kHidden = 0x2000;

// The one user type by which clients know a type of their own: a timestamp travels as binary.
constexpr std::uint32_t kTimestamp = 80;

bool hasTableName(std::uint8_t code) {
    return code == wire::kText || code == wire::kNText || code == wire::kImage;
}

}  // namespace

TokenWriter::TokenWriter(Writer& out, Version version, std::string serverName)
    : out_(out), version_(version), serverName_(std::move(serverName)) {}

std::size_t TokenWriter::begin(Token token) {
    out_.u8(static_cast<std::uint8_t>(token));
    const std::size_t at = out_.size();
    out_.u16(0);
    return at;
}

std::size_t TokenWriter::environment(std::uint8_t kind) {
    const std::size_t at = begin(Token::EnvChange);
    out_.u8(kind);
    return at;
}

void TokenWriter::loginAck() {
    constexpr std::uint8_t kTransactSql = 1;
    const std::size_t at = begin(Token::LoginAck);
    out_.u8(kTransactSql);
    const std::uint32_t version = acknowledgedVersion(version_);
    out_.u16be(static_cast<std::uint16_t>(version >> 16));
    out_.u16be(static_cast<std::uint16_t>(version));
    out_.shortText("Microsoft SQL Server");
    out_.bytes(kServerVersion);
    out_.patchLength16(at);
}

void TokenWriter::databaseChange(std::string_view to, std::string_view from) {
    const std::size_t at = environment(kDatabase);
    out_.shortText(to);
    out_.shortText(from);
    out_.patchLength16(at);
}

void TokenWriter::languageChange(std::string_view to, std::string_view from) {
    const std::size_t at = environment(kLanguage);
    out_.shortText(to);
    out_.shortText(from);
    out_.patchLength16(at);
}

void TokenWriter::packetSizeChange(std::size_t to, std::size_t from) {
    const std::size_t at = environment(kPacketSize);
    out_.shortText(std::to_string(to));
    out_.shortText(std::to_string(from));
    out_.patchLength16(at);
}

void TokenWriter::collationChange() {
    const std::size_t at = environment(kCollationKind);
    out_.u8(static_cast<std::uint8_t>(kCollation.size()));
    out_.bytes(kCollation);
    out_.u8(0);
    out_.patchLength16(at);
}

// 7.1 has no descriptors: its clients know a transaction by @@TRANCOUNT.
void TokenWriter::descriptorChange(std::uint8_t kind, std::uint64_t now, std::uint64_t before) {
    if (version_ < Version::V72) return;
    const std::size_t at = environment(kind);
    for (const std::uint64_t descriptor : {now, before}) {
        if (descriptor == 0) {
            out_.u8(0);
        } else {
            out_.u8(8);
            out_.u64(descriptor);
        }
    }
    out_.patchLength16(at);
}

void TokenWriter::transactionBegan(std::uint64_t descriptor) {
    descriptorChange(kBegin, descriptor, 0);
}

void TokenWriter::transactionCommitted(std::uint64_t descriptor) {
    descriptorChange(kCommit, 0, descriptor);
}

void TokenWriter::transactionRolledBack(std::uint64_t descriptor) {
    descriptorChange(kRollback, 0, descriptor);
}

void TokenWriter::connectionReset() {
    const std::size_t at = environment(kReset);
    out_.u16(0);
    out_.patchLength16(at);
}

void TokenWriter::userType(std::uint32_t number) {
    if (version_ >= Version::V72) {
        out_.u32(number);
    } else {
        out_.u16(static_cast<std::uint16_t>(number));
    }
}

void TokenWriter::columns(std::span<const ColumnToken> columns) {
    out_.u8(static_cast<std::uint8_t>(Token::ColMetadata));
    out_.u16(static_cast<std::uint16_t>(columns.size()));
    for (const ColumnToken& c : columns) {
        userType(c.type.type.rowVersion ? kTimestamp : 0);
        out_.u16(static_cast<std::uint16_t>((c.nullable ? kNullable : 0) | (c.updatable ? kUnknownUpdatable : 0) |
                                            (c.identity ? kIdentity : 0) | (c.hidden ? kHidden : 0)));
        writeTypeInfo(out_, c.type);
        if (hasTableName(c.type.code)) {
            // No name: the values' pointers lead nowhere, so no client may write through them.
            if (version_ >= Version::V72) {
                out_.u8(0);
            } else {
                out_.u16(0);
            }
        }
        out_.shortText(c.name);
    }
}

void TokenWriter::columnOrigins(std::span<const ColumnToken> columns) {
    constexpr std::uint8_t kNoTable = 0, kExpression = 0x04, kHiddenColumn = 0x10;
    const std::size_t at = begin(Token::ColInfo);
    for (std::size_t i = 0; i < columns.size() && i < 255; ++i) {
        out_.u8(static_cast<std::uint8_t>(i + 1));
        out_.u8(kNoTable);
        out_.u8(columns[i].hidden ? kExpression | kHiddenColumn : kExpression);
    }
    out_.patchLength16(at);
}

void TokenWriter::row(std::span<const ColumnToken> columns, std::span<const Value> cells) {
    if (columns.size() != cells.size()) throw std::logic_error("a row has more or fewer cells than columns were told");
    out_.u8(static_cast<std::uint8_t>(Token::Row));
    for (std::size_t i = 0; i < cells.size(); ++i) writeValue(out_, columns[i].type, cells[i], Place::Row);
}

void TokenWriter::done(const DoneToken& done) {
    out_.u8(static_cast<std::uint8_t>(done.token));
    out_.u16(done.status);
    out_.u16(done.command);
    out_.number(done.count, version_ >= Version::V72 ? 8 : 4);
}

void TokenWriter::message(Token token, const Message& message) {
    const std::size_t at = begin(token);
    out_.i32(message.number);
    out_.u8(static_cast<std::uint8_t>(message.state));
    out_.u8(static_cast<std::uint8_t>(message.severity));
    out_.longText(message.text);
    out_.shortText(serverName_);
    out_.shortText(message.procedure);
    out_.number(static_cast<std::uint32_t>(message.line), version_ >= Version::V72 ? 4 : 2);
    out_.patchLength16(at);
}

void TokenWriter::returnStatus(std::int32_t status) {
    out_.u8(static_cast<std::uint8_t>(Token::ReturnStatus));
    out_.i32(status);
}

void TokenWriter::returnValue(std::uint16_t ordinal, std::string_view name, const Typed& value) {
    constexpr std::uint8_t kOutputParameter = 1;
    Type type = value.type;
    if (version_ < Version::V72 && type.length == Type::kMax) type.length = isUnicode(type.id) ? 4000 : 8000;
    const WireType wireForm = wireType(type, true, version_);
    out_.u8(static_cast<std::uint8_t>(Token::ReturnValue));
    out_.u16(ordinal);
    out_.shortText(name);
    out_.u8(kOutputParameter);
    userType();
    out_.u16(kNullable);
    writeTypeInfo(out_, wireForm);
    writeValue(out_, wireForm, value.value, Place::Parameter);
}

}  // namespace sandbox::tds
