// Rows a second through the protocol's bulk load, into a table of twenty columns with one index. The client's bytes are
// made beforehand, so that the server alone is measured; client and server share one core.
#include <iostream>
#include <string>
#include <vector>

#include "bench/figure.h"
#include "bench/one_core.h"
#include "sandbox/server/server.h"
#include "sandbox/tds/values.h"
#include "tests/support/tds_client.h"

namespace {

using namespace sandbox;

constexpr int kRows = 300000;
constexpr double kWanted = 150000;
constexpr std::size_t kPacket = 32767;

struct Column {
    std::string declaration;
    Type type;
    Value value;
};

Type typeOf(TypeId id, int length = 0) {
    Type type;
    type.id = id;
    type.length = length;
    return type;
}

// As the sales of a till look: keys, amounts, texts, times.
std::vector<Column> columns() {
    Type decimal = typeOf(TypeId::Decimal);
    decimal.precision = 10;
    decimal.scale = 3;
    const Column kinds[] = {
        {"int NULL", typeOf(TypeId::Int), std::int64_t{70123}},
        {"varchar(30) NULL", typeOf(TypeId::VarChar, 30), std::string("Kaffe, filtermalt")},
        {"money NULL", typeOf(TypeId::Money), std::int64_t{1299000}},
        {"decimal(10,3) NULL", decimal, Decimal{.unscaled = 1250, .scale = 3}},
        {"datetime NULL", typeOf(TypeId::DateTime), std::int64_t{0}},
        {"float NULL", typeOf(TypeId::Float), 0.25},
        {"nvarchar(20) NULL", typeOf(TypeId::NVarChar, 20), std::string("pose")},
        {"smallint NULL", typeOf(TypeId::SmallInt), std::int64_t{7}},
        {"bit NULL", typeOf(TypeId::Bit), std::int64_t{1}},
        {"varchar(30) NULL", typeOf(TypeId::VarChar, 30), Null{}},
    };
    std::vector<Column> all = {{"int NOT NULL PRIMARY KEY", typeOf(TypeId::Int), std::int64_t{0}}};
    for (std::size_t i = 0; all.size() < 20; ++i) all.push_back(kinds[i % std::size(kinds)]);
    return all;
}

std::vector<std::uint8_t> message(const std::vector<Column>& list) {
    std::vector<tds::WireType> types;
    tds::Writer out;
    out.u8(static_cast<std::uint8_t>(tds::Token::ColMetadata));
    out.u16(static_cast<std::uint16_t>(list.size()));
    for (std::size_t i = 0; i < list.size(); ++i) {
        types.push_back(tds::wireType(list[i].type, true, tds::Version::V74));
        out.u32(0);
        out.u16(1);
        tds::writeTypeInfo(out, types.back());
        out.shortText("c" + std::to_string(i));
    }
    for (int row = 1; row <= kRows; ++row) {
        out.u8(static_cast<std::uint8_t>(tds::Token::Row));
        tds::writeValue(out, types[0], std::int64_t{row}, tds::Place::Row);
        for (std::size_t i = 1; i < list.size(); ++i) tds::writeValue(out, types[i], list[i].value, tds::Place::Row);
    }
    out.u8(static_cast<std::uint8_t>(tds::Token::Done));
    out.fill(0, 12);
    return out.buffer();
}

}  // namespace

int main() {
    torvik::bench::holdToOneCore();
    ServerOptions options;
    options.saPassword = "secret";
    Server server(options);
    const std::vector<Column> list = columns();
    std::string table, announced;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string name = "c" + std::to_string(i);
        table += (i == 0 ? "" : ", ") + name + " " + list[i].declaration;
        announced += (i == 0 ? "" : ", ") + name + " " + list[i].declaration.substr(0, list[i].declaration.find(' '));
    }
    tds::TdsClient client(server.port());
    tds::LoginFields login;
    login.packetSize = kPacket;
    (void)client.login(login);
    (void)client.batch("CREATE DATABASE shop");
    (void)client.batch("USE shop");
    (void)client.batch("CREATE TABLE sales (" + table + ")");
    const std::vector<std::uint8_t> rows = message(list);
    if (const auto reply = client.batch("INSERT BULK sales (" + announced + ")"); reply.back() != "done") {
        std::cerr << reply.front() << '\n';
        return 1;
    }
    std::vector<std::string> reply;
    const double before = torvik::bench::processorSeconds(RUSAGE_SELF);
    const double passed = torvik::bench::seconds([&] {
        client.send(tds::PacketType::BulkLoad, rows, kPacket);
        reply = client.reply();
    });
    const double used = torvik::bench::processorSeconds(RUSAGE_SELF) - before;
    if (reply.back() != "done " + std::to_string(kRows)) {
        std::cerr << reply.front() << '\n';
        return 1;
    }
    torvik::bench::tell("bulk load, 20 columns, one index", kRows / passed, "rows/s", "150000 rows/s at least",
                        kWanted);
    torvik::bench::tell("bulk load, 20 columns, one index, by processor time", kRows / used, "rows/s",
                        "150000 rows/s at least", kWanted);
    torvik::bench::tell(
        {"bulk load, bytes of the rows", static_cast<double>(rows.size()) / 1e6 / passed, "MB/s", "", {}});
}
