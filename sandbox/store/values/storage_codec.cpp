// Values to SQLite and back.
#include "sandbox/store/values/storage_codec.h"

#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/text.h"

namespace sandbox {
namespace {

constexpr int kNarrowPrecision = 18;
// Where in the wire form of a uniqueidentifier the bytes stand that count first in a comparison.
constexpr std::array<std::uint8_t, 16> kGuidOrder = {10, 11, 12, 13, 14, 15, 8, 9, 6, 7, 4, 5, 0, 1, 2, 3};

Int128 unscaledFor(const Type& type, const Value& value) {
    const Decimal& d = std::get<Decimal>(value);
    return d.scale == type.scale ? d.unscaled : shiftDigits(d.unscaled, type.scale - d.scale).value_or(d.unscaled);
}

enum class Storage { Null, Integer, Real, Text, Blob, NarrowDecimal, WideDecimal, Guid };

Storage storageOf(const Type& type) {
    if (isCharacter(type.id)) return Storage::Text;
    if (isBinary(type.id)) return Storage::Blob;
    switch (type.id) {
        case TypeId::Null: return Storage::Null;
        case TypeId::UniqueIdentifier: return Storage::Guid;
        case TypeId::Real:
        case TypeId::Float: return Storage::Real;
        case TypeId::Decimal: return type.precision <= kNarrowPrecision ? Storage::NarrowDecimal : Storage::WideDecimal;
        default: return Storage::Integer;
    }
}

}  // namespace

void bindValue(sqlite3_stmt* statement, int index, const Type& type, const Value& value) {
    if (isNull(value)) {
        sqlite3_bind_null(statement, index);
        return;
    }
    switch (storageOf(type)) {
        case Storage::Null: sqlite3_bind_null(statement, index); break;
        case Storage::Integer: sqlite3_bind_int64(statement, index, std::get<std::int64_t>(value)); break;
        case Storage::Real: sqlite3_bind_double(statement, index, std::get<double>(value)); break;
        case Storage::Text: {
            const auto& text = std::get<std::string>(value);
            sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
            break;
        }
        case Storage::Blob: {
            const auto& bytes = std::get<Bytes>(value);
            if (bytes.empty()) {
                sqlite3_bind_zeroblob(statement, index, 0);
            } else {
                sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
            }
            break;
        }
        case Storage::NarrowDecimal:
            sqlite3_bind_int64(statement, index, static_cast<std::int64_t>(unscaledFor(type, value)));
            break;
        case Storage::WideDecimal: {
            const auto bytes = encodeWideDecimal(unscaledFor(type, value));
            sqlite3_bind_blob(statement, index, bytes.data(), 16, SQLITE_TRANSIENT);
            break;
        }
        case Storage::Guid: {
            const auto bytes = encodeGuid(std::get<Guid>(value));
            sqlite3_bind_blob(statement, index, bytes.data(), 16, SQLITE_TRANSIENT);
            break;
        }
    }
}

Value readArgument(sqlite3_value* argument, const Type& type) {
    if (sqlite3_value_type(argument) == SQLITE_NULL) return Null{};
    const auto blob16 = [&] {
        std::array<std::uint8_t, 16> bytes{};
        const auto* data = static_cast<const std::uint8_t*>(sqlite3_value_blob(argument));
        std::copy_n(data, std::min(16, sqlite3_value_bytes(argument)), bytes.begin());
        return bytes;
    };
    switch (storageOf(type)) {
        case Storage::Null: return Null{};
        case Storage::Integer: return static_cast<std::int64_t>(sqlite3_value_int64(argument));
        case Storage::Real: return sqlite3_value_double(argument);
        case Storage::Text: {
            const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(argument));
            return std::string(text, static_cast<std::size_t>(sqlite3_value_bytes(argument)));
        }
        case Storage::Blob: {
            const auto* data = static_cast<const std::uint8_t*>(sqlite3_value_blob(argument));
            return data ? Bytes(data, data + sqlite3_value_bytes(argument)) : Bytes{};
        }
        case Storage::NarrowDecimal: return Decimal{sqlite3_value_int64(argument), type.scale};
        case Storage::WideDecimal: return Decimal{decodeWideDecimal(blob16()), type.scale};
        case Storage::Guid: return decodeGuid(blob16());
    }
    return Null{};
}

Value readColumn(sqlite3_stmt* statement, int column, const Type& type) {
    return readArgument(sqlite3_column_value(statement, column), type);
}

void setResult(sqlite3_context* context, const Type& type, const Value& value) {
    if (isNull(value)) {
        sqlite3_result_null(context);
        return;
    }
    switch (storageOf(type)) {
        case Storage::Null: sqlite3_result_null(context); break;
        case Storage::Integer: sqlite3_result_int64(context, std::get<std::int64_t>(value)); break;
        case Storage::Real: sqlite3_result_double(context, std::get<double>(value)); break;
        case Storage::Text: {
            const auto& text = std::get<std::string>(value);
            sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
            break;
        }
        case Storage::Blob: {
            const auto& bytes = std::get<Bytes>(value);
            if (bytes.empty()) {
                sqlite3_result_zeroblob(context, 0);
            } else {
                sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
            }
            break;
        }
        case Storage::NarrowDecimal:
            sqlite3_result_int64(context, static_cast<std::int64_t>(unscaledFor(type, value)));
            break;
        case Storage::WideDecimal:
            sqlite3_result_blob(context, encodeWideDecimal(unscaledFor(type, value)).data(), 16, SQLITE_TRANSIENT);
            break;
        case Storage::Guid:
            sqlite3_result_blob(context, encodeGuid(std::get<Guid>(value)).data(), 16, SQLITE_TRANSIENT);
            break;
    }
}

std::string sqliteDeclaration(const Type& type, std::string_view collation) {
    switch (storageOf(type)) {
        case Storage::Null:
        case Storage::Integer:
        case Storage::NarrowDecimal: return "INTEGER";
        case Storage::Real: return "REAL";
        case Storage::Text: return "TEXT COLLATE " + sqliteCollation(collation);
        default: return "BLOB";
    }
}

std::int64_t encodeType(const Type& type) {
    return static_cast<std::int64_t>(type.id) | (std::int64_t{type.precision} << 8) | (std::int64_t{type.scale} << 16) |
           (std::int64_t{type.numericName} << 24) | (std::int64_t{type.rowVersion} << 25) |
           (static_cast<std::int64_t>(type.length) * (std::int64_t{1} << 32));
}

Type decodeType(std::int64_t code) {
    Type type;
    type.id = static_cast<TypeId>(code & 0xFF);
    type.precision = static_cast<std::uint8_t>(code >> 8);
    type.scale = static_cast<std::uint8_t>(code >> 16);
    type.numericName = (code >> 24) & 1;
    type.rowVersion = (code >> 25) & 1;
    type.length = static_cast<int>(code >> 32);
    return type;
}

bool sameStorage(const Type& a, const Type& b) {
    if (a.id == TypeId::Null || b.id == TypeId::Null) return true;
    if (isInteger(a.id) && isInteger(b.id)) return true;
    if (isCharacter(a.id) && isCharacter(b.id)) return true;
    if (isBinary(a.id) && isBinary(b.id)) return true;
    const auto within = [&](TypeId x, TypeId y) { return (a.id == x || a.id == y) && (b.id == x || b.id == y); };
    if (within(TypeId::SmallMoney, TypeId::Money) || within(TypeId::Real, TypeId::Float) ||
        within(TypeId::SmallDateTime, TypeId::DateTime)) {
        return true;
    }
    if (a.id != b.id) return false;
    return a.id != TypeId::Decimal || (a.scale == b.scale && storageOf(a) == storageOf(b));
}

std::array<std::uint8_t, 16> encodeWideDecimal(Int128 unscaled) {
    const UInt128 bits = static_cast<UInt128>(unscaled) ^ (UInt128{1} << 127);
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < 16; ++i) bytes[i] = static_cast<std::uint8_t>(bits >> (8 * (15 - i)));
    return bytes;
}

Int128 decodeWideDecimal(std::span<const std::uint8_t, 16> bytes) {
    UInt128 bits = 0;
    for (const std::uint8_t b : bytes) bits = (bits << 8) | b;
    return static_cast<Int128>(bits ^ (UInt128{1} << 127));
}

std::array<std::uint8_t, 8> encodeRowVersion(std::int64_t value) {
    std::array<std::uint8_t, 8> bytes{};
    for (std::size_t i = 0; i < 8; ++i) bytes[i] = static_cast<std::uint8_t>(value >> (8 * (7 - i)));
    return bytes;
}

std::array<std::uint8_t, 16> encodeGuid(const Guid& guid) {
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < 16; ++i) bytes[i] = guid[kGuidOrder[i]];
    return bytes;
}

Guid decodeGuid(std::span<const std::uint8_t, 16> bytes) {
    Guid guid{};
    for (std::size_t i = 0; i < 16; ++i) guid[kGuidOrder[i]] = bytes[i];
    return guid;
}

std::string comparableSql(std::string_view sql, const Type& type) {
    std::string out(sql);
    if (!isBinary(type.id)) return out;
    return "iif(" + out + " IS NULL, NULL, rtrim(hex(" + out + "), '0'))";
}

}  // namespace sandbox
