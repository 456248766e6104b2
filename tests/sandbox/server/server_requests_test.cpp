// Requests of a client that is in: calls, prepared statements, cursors, transactions, bulk rows, attention, reset.
#include <future>

#include "sandbox/tds/values.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

using tds::PacketType;
using tds::RawParameter;
using tds::TdsClient;
using tds::Writer;

constexpr std::uint16_t kCursorOpen = 2, kCursorFetch = 7, kCursorClose = 9, kExecuteSql = 10, kPrepare = 11,
                        kExecute = 12, kPrepExec = 13, kUnprepare = 15;

RawParameter text(const std::string& value) {
    Type t;
    t.id = TypeId::NVarChar;
    t.length = 4000;
    return {"", t, value, false};
}

RawParameter number(std::int64_t value, bool output = false) {
    Type t;
    t.id = TypeId::Int;
    return {"", t, value, output};
}

RawParameter nothing(bool output = true) {
    RawParameter p = number(0, output);
    p.value = Null{};
    return p;
}

class ServerRequests : public ::testing::Test {
protected:
    Server server{serverOptions()};
    TdsClient client = loggedIn(server);
};

TEST_F(ServerRequests, EachStatementOfABatchHasItsEnd) {
    EXPECT_EQ(
        client.batch("CREATE TABLE #t (a int NULL)\nINSERT #t VALUES (1)\nINSERT #t VALUES (2)\nSELECT a FROM #t"),
        (Lines{"done more", "done 1 more", "done 1 more", "cols a int", "row 1", "row 2", "done 2"}));
}

TEST_F(ServerRequests, ErrorMarksTheEndOfItsStatement) {
    const Lines reply = client.batch("SELECT 1 / 0 AS a\nSELECT 2 AS b");
    ASSERT_FALSE(reply.empty());
    EXPECT_EQ(reply.back(), "done 1");
    EXPECT_NE(std::find(reply.begin(), reply.end(), "error 8134 16 1 1 Divide by zero error encountered."),
              reply.end());
    EXPECT_NE(std::find(reply.begin(), reply.end(), "done more error"), reply.end());
}

TEST_F(ServerRequests, ExecuteSqlGivesRowsStatusAndOutputs) {
    const Lines reply = client.call(
        kExecuteSql, {text("SELECT @a AS a; SET @b = @a * 2"), text("@a int, @b int OUTPUT"), number(21), nothing()});
    EXPECT_EQ(reply, (Lines{"cols a int", "row 21", "doneinproc 1 more", "return 0", "output 3  int 42", "doneproc"}));
}

// A client of each version calls with a value of each kind and reads it back as an output parameter and a column.
TEST(ServerVersions, EachCallsWithValuesOfEveryKind) {
    Server server(serverOptions());
    const auto typed = [](TypeId id, const Value& value, int length = 0, bool output = false) {
        Type t;
        t.id = id;
        t.length = length;
        return RawParameter{"", t, value, output};
    };
    Type decimal;
    decimal.id = TypeId::Decimal;
    decimal.precision = 9;
    decimal.scale = 2;
    for (const std::uint32_t version : {0x71000001U, 0x72090002U, 0x730B0003U, 0x74000004U}) {
        TdsClient client(server.port());
        tds::LoginFields login;
        login.version = version;
        (void)client.login(login);
        const Lines reply = client.call(
            kExecuteSql,
            {text("SELECT @i AS i, @f AS f, @d AS d, @v AS v, @n AS n, @x AS x, @g AS g, @z AS z, @l AS l SET @i = 8"),
             text("@i int OUTPUT, @f float, @d decimal(9,2), @v varchar(10), @n nvarchar(10), @x varbinary(4), "
                  "@g bigint, @z datetime, @l text"),
             typed(TypeId::Int, std::int64_t{7}, 0, true),
             typed(TypeId::Float, 0.5),
             {"", decimal, Decimal{.unscaled = 125, .scale = 2}, false},
             typed(TypeId::VarChar, std::string("blå"), 10),
             typed(TypeId::NVarChar, std::string("日本"), 10),
             typed(TypeId::VarBinary, Null{}, 4),
             typed(TypeId::BigInt, std::int64_t{-5000000000}),
             typed(TypeId::DateTime, std::int64_t{300}),
             typed(TypeId::Text, std::string("lang"))});
        ASSERT_EQ(reply.size(), 6U) << version << reply.front();
        EXPECT_EQ(reply.at(1), "row 7|0.5|1.25|'blå'|'日本'|NULL|-5000000000|300|'lang'") << version;
        EXPECT_EQ(reply.at(2), "doneinproc 1 more") << version;
        EXPECT_EQ(reply.at(4), "output 2  int 8") << version;
    }
}

TEST_F(ServerRequests, PreparedStatementIsExecutedByItsHandle) {
    const Lines prepared = client.call(kPrepare, {nothing(), text("@a int"), text("SELECT @a + 1 AS b"), number(1)});
    EXPECT_EQ(prepared, (Lines{"cols b int", "doneinproc 0 more", "return 0", "output 0  int 1", "doneproc"}));
    for (const std::int64_t n : {1, 41}) {
        EXPECT_EQ(client.call(kExecute, {number(1), number(n)}),
                  (Lines{"cols b int", "row " + std::to_string(n + 1), "doneinproc 1 more", "return 0", "doneproc"}));
    }
    EXPECT_EQ(client.call(kUnprepare, {number(1)}), (Lines{"return 0", "doneproc"}));
    const Lines gone = client.call(kExecute, {number(1), number(1)});
    EXPECT_EQ(gone.front(), "error 8179 16 4 1 sp_execute Could not find prepared statement with handle 1.");
    EXPECT_EQ(gone.back(), "doneproc error");
}

TEST_F(ServerRequests, PrepareAndExecuteGivesRowsAndHandle) {
    EXPECT_EQ(client.call(kPrepExec, {nothing(), text("@a int"), text("SELECT @a AS a"), number(7)}),
              (Lines{"cols a int", "row 7", "doneinproc 1 more", "return 0", "output 0  int 1", "doneproc"}));
    EXPECT_EQ(client.call(kExecute, {number(1), number(8)}).at(1), "row 8");
}

TEST_F(ServerRequests, StatementThatCannotBePreparedSaysWhy) {
    const Lines reply = client.call(kPrepare, {nothing(), text(""), text("SELECT FROM t"), number(1)});
    ASSERT_GE(reply.size(), 3U);
    EXPECT_TRUE(reply.at(0).starts_with("error 156 15")) << reply.at(0);
    EXPECT_TRUE(reply.at(1).starts_with("error 8180 16")) << reply.at(1);
    EXPECT_EQ(reply.back(), "doneproc error");
}

TEST_F(ServerRequests, CallWithoutItsParametersSaysWhichIsMissing) {
    EXPECT_TRUE(client.call(kExecute, {}).front().ends_with("expects parameter '@handle', which was not supplied."));
    EXPECT_TRUE(client.call(kUnprepare, {text("x")}).front().starts_with("error 214 16"));
}

TEST_F(ServerRequests, SeveralCallsOfOneMessageAreAllAnswered) {
    std::vector<std::uint8_t> message = tds::callMessage(kExecuteSql, {text("SELECT 1 AS a")});
    const std::vector<std::uint8_t> second = tds::callMessage(kExecuteSql, {text("SELECT 2 AS a")});
    message.push_back(0xFF);
    message.insert(message.end(), second.begin() + 22, second.end());
    client.send(PacketType::Rpc, message);
    EXPECT_EQ(client.reply(), (Lines{"cols a int not null", "row 1", "doneinproc 1 more", "return 0", "doneproc more",
                                     "cols a int not null", "row 2", "doneinproc 1 more", "return 0", "doneproc"}));
}

TEST_F(ServerRequests, CursorIsOpenedScrolledAndClosed) {
    Lines reply =
        client.call(kCursorOpen, {nothing(), text("SELECT 1 AS a UNION ALL SELECT 2 UNION ALL SELECT 3 ORDER BY 1"),
                                  number(8, true), number(1, true), number(0, true)});
    EXPECT_EQ(reply.back(), "doneproc");
    EXPECT_EQ(reply[reply.size() - 2], "output 4  int 3");
    const std::string handleLine = reply[reply.size() - 5];
    ASSERT_TRUE(handleLine.starts_with("output 0  int ")) << handleLine;
    const std::int64_t handle = std::stoll(handleLine.substr(14));
    struct {
        int type, row, count;
        Lines rows;
    } cases[] = {
        {2, 0, 2, {"row 1|1", "row 2|1"}}, {2, 0, 2, {"row 3|1"}},     {2, 0, 2, {}},
        {4, 0, 2, {"row 2|1", "row 3|1"}}, {1, 0, 1, {"row 1|1"}},     {8, 0, 2, {"row 2|1", "row 3|1"}},
        {0x10, 2, 1, {"row 2|1"}},         {0x20, -1, 1, {"row 1|1"}},
    };
    for (const auto& c : cases) {
        reply = client.call(kCursorFetch, {number(handle), number(c.type), number(c.row), number(c.count)});
        Lines rows;
        for (const std::string& line : reply) {
            if (line.starts_with("row ")) rows.push_back(line);
        }
        EXPECT_EQ(rows, c.rows) << c.type;
        EXPECT_TRUE(reply.front().ends_with(", ROWSTAT int not null hidden")) << reply.front();
    }
    EXPECT_EQ(client.call(kCursorClose, {number(handle)}), (Lines{"return 0", "doneproc"}));
    EXPECT_TRUE(client.call(kCursorFetch, {number(handle)}).front().starts_with("error 16909 16"));
}

TEST_F(ServerRequests, SeveralRowSetsComeWithoutACursorWhereTheClientAllowsIt) {
    constexpr int kAllowDirect = 0x2000;
    const auto open = [&](int concurrency) {
        return client.call(kCursorOpen, {nothing(), text("SELECT 1 AS a SELECT 2 AS b"), number(8, true),
                                         number(concurrency, true), number(0, true)});
    };
    const Lines reply = open(kAllowDirect | 1);
    EXPECT_TRUE(reply.front().starts_with("info 16954 10 ")) << reply.front();
    EXPECT_EQ(Lines(reply.begin() + 1, reply.begin() + 9),
              (Lines{"cols a int not null", "row 1", "doneinproc 1 more", "cols b int not null", "row 2",
                     "doneinproc 1 more", "return 0", "output 0  int 0"}));
    EXPECT_TRUE(open(1).front().starts_with("error 16937 16"));
}

// What was made comes back in the scroll and concurrency options: static (8) and read only (1), without further bits.
TEST_F(ServerRequests, ACursorThatCannotBeAsAskedIsStaticAndReadOnlyWhereTheClientTakesThat) {
    constexpr int kKeyset = 0x1, kDynamic = 0x2, kCheckAccepted = 0x8000, kKeysetAcceptable = 0x10000,
                  kStaticAcceptable = 0x80000, kOptimistic = 0x4, kReadOnlyAcceptable = 0x10000,
                  kOptimisticAcceptable = 0x40000, kAllowDirect = 0x2000;
    const auto open = [&](int scroll, int concurrency) {
        return client.call(kCursorOpen, {nothing(), text("SELECT DISTINCT 1 AS a"), number(scroll, true),
                                         number(concurrency, true), number(0, true)});
    };
    struct {
        int scroll, concurrency;
    } taken[] = {
        {kKeyset, kOptimistic},
        {kDynamic, 1},
        {kKeyset | kCheckAccepted | kKeysetAcceptable | kStaticAcceptable, 1},
        {8 | kCheckAccepted | kStaticAcceptable, 1 | kCheckAccepted | kReadOnlyAcceptable},
        {8, kOptimistic | kCheckAccepted | kOptimisticAcceptable | kReadOnlyAcceptable},
    };
    for (const auto& c : taken) {
        const Lines reply = open(c.scroll, c.concurrency);
        ASSERT_GE(reply.size(), 5u) << c.scroll;
        EXPECT_NE(reply[reply.size() - 5], "output 0  int 0");
        EXPECT_EQ(Lines(reply.end() - 4, reply.end()),
                  (Lines{"output 2  int 8", "output 3  int 1", "output 4  int 1", "doneproc"}));
    }
    struct {
        int scroll, concurrency;
    } refused[] = {
        {kKeyset | kCheckAccepted | kKeysetAcceptable, 1},
        {8, kOptimistic | kCheckAccepted | kOptimisticAcceptable},
    };
    for (const auto& c : refused) {
        EXPECT_TRUE(open(c.scroll, c.concurrency).front().starts_with("error 16955 16 ")) << c.scroll;
        const Lines direct = open(c.scroll, c.concurrency | kAllowDirect);
        EXPECT_TRUE(direct.front().starts_with("info 16954 10 ")) << direct.front();
        EXPECT_EQ(Lines(direct.begin() + 1, direct.begin() + 6),
                  (Lines{"cols a int not null", "row 1", "doneinproc 1 more", "return 0", "output 0  int 0"}));
    }
}

std::vector<std::uint8_t> transactionMessage(const std::vector<std::uint8_t>& body) {
    Writer out;
    tds::appendHeaders(out);
    out.bytes(body);
    return out.buffer();
}

TEST_F(ServerRequests, TransactionRequestsTellTheirDescriptor) {
    (void)client.batch("CREATE TABLE ##x (a int)");
    client.send(PacketType::TransactionManager, transactionMessage({5, 0, 0, 0}));
    Lines reply = client.reply();
    ASSERT_TRUE(reply.front().starts_with("env 8 ")) << reply.front();
    const std::string descriptor = reply.front().substr(6, 16);
    EXPECT_EQ(client.batch("INSERT ##x VALUES (1) SELECT @@TRANCOUNT AS n").at(2), "row 1");
    client.send(PacketType::TransactionManager, transactionMessage({8, 0, 0, 0}));
    reply = client.reply();
    EXPECT_EQ(reply.front(), "env 10  " + descriptor);
    EXPECT_EQ(reply.back(), "done");
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM ##x").at(1), "row 0");
    client.send(PacketType::TransactionManager, transactionMessage({0, 0}));
    EXPECT_TRUE(client.reply().front().starts_with("error 8501 16"));
}

TEST_F(ServerRequests, ResetLeavesNothingOfTheSession) {
    (void)client.batch("CREATE TABLE #t (a int)\nSET NOCOUNT ON");
    Writer message;
    tds::appendHeaders(message);
    message.text("SELECT CASE WHEN OBJECT_ID('tempdb..#t') IS NULL THEN 'gone' ELSE 'there' END AS t");
    client.send(PacketType::SqlBatch, message.view(), 4096, tds::kEndOfMessage | tds::kResetConnection);
    const Lines reply = client.reply();
    EXPECT_EQ(reply.front(), "env 18  ");
    EXPECT_EQ(reply.at(2), "row 'gone'");
    EXPECT_EQ(reply.back(), "done 1");
}

// Sends a batch and waits until the server has begun with it.
void begin(Server& server, TdsClient& client, const std::string& batch) {
    std::promise<void> begun;
    const int observer = server.faults().observe([&](const RequestInfo&) { begun.set_value(); });
    client.sendBatch(batch);
    begun.get_future().wait();
    server.faults().forget(observer);
}

TEST_F(ServerRequests, AttentionEndsAWaitingBatchAtOnce) {
    begin(server, client, "WAITFOR DELAY '00:05:00'");
    client.send(PacketType::Attention, {});
    EXPECT_EQ(client.reply().back(), "done error");
    EXPECT_EQ(client.reply(), (Lines{"done attention"}));
    EXPECT_EQ(client.batch("SELECT 1 AS a").at(1), "row 1");
}

TEST_F(ServerRequests, AttentionEndsALongResultInItsMiddle) {
    client.sendBatch(
        "SELECT a.n FROM (SELECT 1 AS n UNION ALL SELECT 2) a, (SELECT 1 AS n UNION ALL SELECT 2) b\n"
        "WHILE 1 = 1 SELECT REPLICATE('x', 8000) AS x");
    client.send(PacketType::Attention, {});
    EXPECT_EQ(client.reply().back(), "done error");
    EXPECT_EQ(client.reply(), (Lines{"done attention"}));
    EXPECT_EQ(client.batch("SELECT 1 AS a").at(1), "row 1");
}

TEST_F(ServerRequests, AttentionThatComesTooLateIsAnsweredByItself) {
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
    client.send(PacketType::Attention, {});
    EXPECT_EQ(client.reply(), (Lines{"done attention"}));
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
}

TEST_F(ServerRequests, MessageThatItsClientTakesBackIsNotRun) {
    (void)client.batch("CREATE TABLE ##y (a int)");
    Writer message;
    tds::appendHeaders(message);
    message.text("INSERT ##y VALUES (1)");
    client.send(PacketType::SqlBatch, message.view(), 4096, tds::kEndOfMessage | tds::kIgnoreMessage);
    EXPECT_EQ(client.reply().size(), 1U);
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM ##y").at(1), "row 0");
}

TEST_F(ServerRequests, ClientThatVanishesLeavesNoTransactionOpen) {
    (void)client.batch("CREATE DATABASE shop");
    (void)client.batch("CREATE TABLE shop.dbo.t (a int)");
    TdsClient other = loggedIn(server);
    (void)other.batch("BEGIN TRANSACTION\nINSERT shop.dbo.t VALUES (1)");
    other.close();
    ASSERT_TRUE(eventually([&] { return server.connectionCount() == 1; }));
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM shop.dbo.t").at(1), "row 0");
}

TEST_F(ServerRequests, ClientThatVanishesWithinABatchEndsIt) {
    TdsClient other = loggedIn(server);
    begin(server, other, "WAITFOR DELAY '00:05:00'");
    other.close();
    EXPECT_TRUE(eventually([&] { return server.connectionCount() == 1; }));
}

std::vector<std::uint8_t> bulkRows(TypeId id, std::int64_t count) {
    Type t;
    t.id = id;
    t.length = 10;
    const tds::WireType w = tds::wireType(t, true, tds::Version::V74);
    Writer out;
    out.u8(0x81);
    out.u16(1);
    out.u32(0);
    out.u16(1);
    tds::writeTypeInfo(out, w);
    out.shortText("a");
    for (std::int64_t i = 0; i < count; ++i) {
        out.u8(0xD1);
        tds::writeValue(out, w, id == TypeId::Int ? Value{i} : Value{std::string("x")}, tds::Place::Row);
    }
    out.u8(0xFD);
    out.fill(0, 12);
    return out.buffer();
}

TEST_F(ServerRequests, BulkRowsAreStoredAndCounted) {
    (void)client.batch("CREATE TABLE ##b (a int NULL)");
    EXPECT_EQ(client.batch("INSERT BULK ##b (a int)"), (Lines{"done"}));
    client.send(PacketType::BulkLoad, bulkRows(TypeId::Int, 5000));
    EXPECT_EQ(client.reply(), (Lines{"done 5000"}));
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n, MAX(a) AS m FROM ##b").at(1), "row 5000|4999");
}

TEST_F(ServerRequests, BulkRowsOfAnotherTypeAreRefusedAndNothingIsStored) {
    (void)client.batch("CREATE TABLE ##b (a int NULL)");
    (void)client.batch("INSERT BULK ##b (a int)");
    client.send(PacketType::BulkLoad, bulkRows(TypeId::VarChar, 3));
    const Lines reply = client.reply();
    EXPECT_EQ(reply.front(), "error 4816 16 1 1 Invalid column type from bcp client for colid 1.");
    EXPECT_EQ(reply.back(), "done error");
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM ##b").at(1), "row 0");
}

TEST_F(ServerRequests, BulkThatIsCancelledStoresNothing) {
    (void)client.batch("CREATE TABLE ##b (a int NULL)");
    (void)client.batch("INSERT BULK ##b (a int)");
    const std::vector<std::uint8_t> rows = bulkRows(TypeId::Int, 2000);
    client.send(PacketType::BulkLoad, std::span(rows).first(4000), 512, 0);
    client.send(PacketType::Attention, {});
    (void)client.reply();
    EXPECT_EQ(client.reply(), (Lines{"done attention"}));
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM ##b").at(1), "row 0");
}

TEST_F(ServerRequests, BulkThatAFaultFailsStoresNothingAndTheConnectionGoesOn) {
    (void)client.batch("CREATE TABLE ##b (a int NULL)");
    (void)client.batch("INSERT BULK ##b (a int)");
    FaultRule fail;
    fail.match.kind = RequestKind::Bulk;
    fail.match.textContains = "##b";
    fail.action = FaultAction::Fail;
    fail.message.number = 1204;
    fail.message.text = "No lock resource is available.";
    server.faults().add(fail);
    client.send(PacketType::BulkLoad, bulkRows(TypeId::Int, 5000), 512);
    EXPECT_EQ(client.reply(), (Lines{"error 1204 16 1 1 No lock resource is available.", "done error"}));
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM ##b").at(1), "row 0");
}

TEST_F(ServerRequests, BulkRowsThatNothingAnnouncedEndTheConnection) {
    client.send(PacketType::BulkLoad, bulkRows(TypeId::Int, 1));
    EXPECT_TRUE(client.closes());
}

}  // namespace
}  // namespace sandbox::test
