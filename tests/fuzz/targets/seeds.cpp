// Where fuzzing starts.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "sandbox/tds/prelogin.h"
#include "sandbox/tds/values.h"
#include "tests/fuzz/targets/targets.h"
#include "tests/support/tds_client.h"

namespace sandbox::fuzz {

namespace {

std::string asText(tds::ByteSpan bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Type typeOf(TypeId id, int length = 0) {
    Type type;
    type.id = id;
    type.length = length;
    return type;
}

std::vector<tds::RawParameter> everyType() {
    Type decimal = typeOf(TypeId::Decimal);
    decimal.precision = 18;
    decimal.scale = 4;
    return {{"@i", typeOf(TypeId::Int), std::int64_t{7}, true},
            {"@b", typeOf(TypeId::BigInt), std::int64_t{-1}},
            {"@f", typeOf(TypeId::Float), 2.5},
            {"@d", decimal, Decimal{.unscaled = 12345, .scale = 4}},
            {"@v", typeOf(TypeId::VarChar, 20), std::string("blåbær")},
            {"@n", typeOf(TypeId::NVarChar, Type::kMax), std::string("lang")},
            {"@x", typeOf(TypeId::VarBinary, 8), Null{}},
            {"@t", typeOf(TypeId::NText), std::string("text")}};
}

std::string bulkMessage(tds::Version version) {
    tds::Writer out;
    const tds::WireType types[] = {tds::wireType(typeOf(TypeId::Int), true, version),
                                   tds::wireType(typeOf(TypeId::NVarChar, 30), true, version),
                                   tds::wireType(typeOf(TypeId::Text), true, version)};
    const Value cells[] = {std::int64_t{1}, std::string("vare"), std::string("lang tekst")};
    out.u8(static_cast<std::uint8_t>(tds::Token::ColMetadata));
    out.u16(3);
    for (const tds::WireType& type : types) {
        out.number(0, version >= tds::Version::V72 ? 4 : 2);
        out.u16(1);
        tds::writeTypeInfo(out, type);
        if (type.code == tds::wire::kText) out.number(0, version >= tds::Version::V72 ? 1 : 2);
        out.shortText("c");
    }
    for (int row = 0; row < 3; ++row) {
        out.u8(static_cast<std::uint8_t>(tds::Token::Row));
        for (int i = 0; i < 3; ++i)
            tds::writeValue(out, types[i], row == 1 ? Value{Null{}} : cells[i], tds::Place::Row);
    }
    out.u8(static_cast<std::uint8_t>(tds::Token::Done));
    out.fill(0, version >= tds::Version::V72 ? 12 : 8);
    return asText(out.view());
}

// The batches of a file, which lines of "go" part.
void readBatches(const std::filesystem::path& file, std::vector<std::string>& batches) {
    std::ifstream in(file, std::ios::binary);
    std::string text;
    for (std::string line; std::getline(in, line);) {
        if (line == "go" || line == "GO" || line == "----" || line.starts_with("## ")) {
            if (!text.empty()) batches.push_back(std::move(text));
            text.clear();
        } else {
            text += line + "\n";
        }
    }
    if (!text.empty()) batches.push_back(std::move(text));
}

}  // namespace

std::vector<std::string> packetSeeds() {
    const std::string size(1, '\x07');
    return {size + std::string("\x12\x01\x00\x09\x00\x00\x00\x00\xff", 9),
            size + std::string("\x01\x00\x00\x0c\x00\x00\x01\x00"
                               "abcd"
                               "\x01\x01\x00\x0a\x00\x00\x02\x00"
                               "ef",
                               22),
            size + std::string("\x06\x01\x00\x08\x00\x00\x00\x00"
                               "\x0e\x01\x00\x08\x00\x00\x00\x00",
                               16)};
}

std::vector<std::string> loginSeeds() {
    tds::LoginFields all;
    all.language = "Norsk";
    all.database = "shop";
    all.features = {0x01, 0, 0, 0, 0, 0x04, 1, 0, 0, 0, 1, 0xFF};
    tds::LoginFields old;
    old.version = 0x71000001;
    std::vector<std::string> seeds = {asText(tds::loginMessage(all)), asText(tds::loginMessage(old))};
    for (const bool fedAuth : {false, true}) seeds.push_back(asText(tds::writePrelogin(tds::Encryption::On, fedAuth)));
    return seeds;
}

std::vector<std::string> requestSeeds() {
    constexpr int kKinds = 4;
    std::vector<std::string> seeds;
    for (int v = 0; v < kKinds; ++v) {
        const auto version = static_cast<tds::Version>(v);
        const auto add = [&](int kind, const std::string& message) {
            seeds.push_back(std::string(1, static_cast<char>(kind * kKinds + v)) + message);
        };
        tds::Writer batch;
        if (version >= tds::Version::V72) tds::appendHeaders(batch, 1);
        batch.text("SELECT 1 AS å");
        add(0, asText(batch.view()));
        for (const std::uint16_t procedure : {10, 13, 2}) {
            add(1, asText(tds::callMessage(procedure, everyType(), version)));
        }
        tds::Writer begin;
        tds::appendHeaders(begin);
        begin.u16(5), begin.u8(2), begin.u8(2), begin.text("t");
        add(2, asText(begin.view()));
        add(3, bulkMessage(version));
    }
    return seeds;
}

std::vector<std::string> batchSeeds() {
    std::vector<std::string> seeds;
    const std::filesystem::path root = TORVIK_SOURCE_DIR;
    for (const std::filesystem::path& folder : {root / "tests/sandbox/cases", root / "sandbox/chain"}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string kind = entry.path().extension();
            if (kind == ".case" || kind == ".sql") readBatches(entry.path(), seeds);
        }
    }
    return seeds;
}

}  // namespace sandbox::fuzz
