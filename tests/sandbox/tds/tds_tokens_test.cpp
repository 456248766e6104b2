// Tokens of replies: exact bytes where versions differ, and what a client reads back.
#include <gtest/gtest.h>

#include "sandbox/tds/tokens.h"
#include "tests/support/tds_client.h"

namespace sandbox::tds {
namespace {

using Buffer = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

Message message() {
    Message m;
    m.number = 8134;
    m.severity = 16;
    m.state = 1;
    m.text = "Æ";
    m.procedure = "p";
    m.line = 3;
    return m;
}

template <typename Write>
Buffer written(Version version, Write write) {
    Writer out;
    TokenWriter tokens(out, version, "S");
    write(tokens);
    return out.buffer();
}

TEST(TdsTokens, ErrorsLineNumberGrewWith72) {
    const auto error = [](TokenWriter& t) { t.error(message()); };
    const Buffer head = {0xC6, 0x1F, 0, 0, 1, 16, 1, 0, 0xC6, 0, 1, 'S', 0, 1, 'p', 0};
    Buffer v71 = {0xAA, 18, 0};
    v71.insert(v71.end(), head.begin(), head.end());
    Buffer v72 = {0xAA, 20, 0};
    v72.insert(v72.end(), head.begin(), head.end());
    v71.insert(v71.end(), {3, 0});
    v72.insert(v72.end(), {3, 0, 0, 0});
    EXPECT_EQ(written(Version::V71, error), v71);
    EXPECT_EQ(written(Version::V72, error), v72);
}

TEST(TdsTokens, DonesCountGrewWith72) {
    DoneToken d;
    d.token = Token::DoneInProc;
    d.status = kDoneCount | kDoneMore;
    d.command = kCommandSelect;
    d.count = 7;
    const auto done = [&](TokenWriter& t) { t.done(d); };
    EXPECT_EQ(written(Version::V71, done), (Buffer{0xFF, 0x11, 0, 0xC1, 0, 7, 0, 0, 0}));
    EXPECT_EQ(written(Version::V74, done), (Buffer{0xFF, 0x11, 0, 0xC1, 0, 7, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(TdsTokens, ColumnsUserTypeAndTableNameGrewWith72) {
    const auto columns = [](TokenWriter& t) {
        ColumnToken c;
        c.name = "a";
        Type text;
        text.id = TypeId::Image;
        c.type = wireType(text, true, t.version());
        t.columns(std::vector{c});
    };
    EXPECT_EQ(written(Version::V71, columns),
              (Buffer{0x81, 1, 0, 0, 0, 1, 0, 0x22, 0xFF, 0xFF, 0xFF, 0x7F, 0, 0, 1, 'a', 0}));
    EXPECT_EQ(written(Version::V74, columns),
              (Buffer{0x81, 1, 0, 0, 0, 0, 0, 1, 0, 0x22, 0xFF, 0xFF, 0xFF, 0x7F, 0, 1, 'a', 0}));
}

TEST(TdsTokens, ATimestampIsBinaryWithAUserTypeOfItsOwn) {
    const auto columns = [](TokenWriter& t) {
        ColumnToken c;
        c.name = "a";
        c.type = wireType({.id = TypeId::Binary, .length = 8, .rowVersion = true}, false, t.version());
        c.nullable = false;
        t.columns(std::vector{c});
    };
    EXPECT_EQ(written(Version::V71, columns), (Buffer{0x81, 1, 0, 0x50, 0, 0, 0, 0xAD, 8, 0, 1, 'a', 0}));
    EXPECT_EQ(written(Version::V74, columns), (Buffer{0x81, 1, 0, 0x50, 0, 0, 0, 0, 0, 0xAD, 8, 0, 1, 'a', 0}));
}

TEST(TdsTokens, EnvironmentChangesAreReadBack) {
    const Buffer bytes = written(Version::V74, [](TokenWriter& t) {
        t.databaseChange("Butikk", "master");
        t.languageChange("us_english", "");
        t.packetSizeChange(8000, 4096);
        t.collationChange();
        t.transactionBegan(0x1122);
        t.transactionCommitted(0x1122);
        t.transactionRolledBack(1);
        t.connectionReset();
        t.loginAck();
    });
    EXPECT_EQ(showTokens(bytes, Version::V74),
              (Lines{"env 1 'Butikk' 'master'", "env 2 'us_english' ''", "env 4 '8000' '4096'", "env 7 0604D00000 ",
                     "env 8 2211000000000000 ", "env 9  2211000000000000", "env 10  0100000000000000", "env 18  ",
                     "loginack 74000004 Microsoft SQL Server"}));
}

TEST(TdsTokens, TransactionsHaveNoDescriptorsIn71) {
    EXPECT_TRUE(written(Version::V71, [](TokenWriter& t) { t.transactionBegan(1); }).empty());
}

TEST(TdsTokens, RowsAndOutputsAreReadBackInEachVersion) {
    for (const Version version : {Version::V71, Version::V72, Version::V73, Version::V74}) {
        Type i, s, b;
        i.id = TypeId::Int;
        s.id = TypeId::VarChar;
        s.length = 3;
        b.id = TypeId::NText;
        const Buffer bytes = written(version, [&](TokenWriter& t) {
            const std::vector<ColumnToken> columns = {{"a", wireType(i, false, version), false},
                                                      {"", wireType(s, true, version), true},
                                                      {"n", wireType(b, true, version), true}};
            t.columns(columns);
            t.row(columns, std::vector<Value>{std::int64_t{1}, Null{}, std::string("Ø")});
            t.returnStatus(-4);
            t.returnValue(2, "@o", {s, std::string("x")});
        });
        EXPECT_EQ(showTokens(bytes, version), (Lines{"cols a int not null,  varchar(3), n ntext", "row 1|NULL|'Ø'",
                                                     "return -4", "output 2 @o varchar(3) 'x'"}));
    }
}

TEST(TdsTokens, RowOfAnotherWidthIsAnErrorOfTheServer) {
    EXPECT_THROW(written(Version::V74, [](TokenWriter& t) { t.row({}, std::vector<Value>{Null{}}); }),
                 std::logic_error);
}

}  // namespace
}  // namespace sandbox::tds
