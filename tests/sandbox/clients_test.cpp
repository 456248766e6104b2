// Public clients that nobody here wrote, against a running server: FreeTDS' tsql, bsqldb and freebcp, its ODBC driver
// and DB-Library under Python, and jTDS under Java.
#include "tests/sandbox/run_program.h"
#include "tests/sandbox/server_fixture.h"

namespace sandbox::test {
namespace {

class Clients : public ::testing::Test {
protected:
    Server server{serverOptions()};
    TemporaryFolder folder;

    [[nodiscard]] std::string port() const { return std::to_string(server.port()); }

    // A batch that only prepares.
    void prepare(const std::string& batch) {
        tds::TdsClient client = loggedIn(server);
        for (const std::string& line : client.batch(batch)) EXPECT_FALSE(line.starts_with("error")) << line;
    }

    Ran tsql(const std::string& batch, const std::string& version = "auto", const std::string& password = "secret") {
        return runProgram("env TDSVER=" + version + " tsql -o q -H 127.0.0.1 -p " + port() + " -U sa -P " + password,
                          batch + "\ngo\nexit\n");
    }

    // The script has `port` at hand, and shows by "passed" that it came to its end.
    void python(const std::string& script) {
        folder.write("client.py", "port = " + port() + "\n" + script + "\nprint('passed')\n");
        const Ran ran = runProgram("/usr/bin/python3 " + folder.file("client.py"));
        EXPECT_EQ(ran.status, 0) << ran.output;
        EXPECT_TRUE(ran.output.ends_with("passed\n")) << ran.output;
    }
    void odbc(const std::string& script) {
        python(R"py(
import pyodbc, datetime, decimal
pyodbc.pooling = False
def connect(extra='', **options):
    return pyodbc.connect('DRIVER=FreeTDS;Server=127.0.0.1;Port=%d;UID=sa;PWD=secret;%s' % (port, extra), timeout=20, **options)
)py" + script);
    }
};

TEST_F(Clients, TsqlReadsRowsInEveryVersion) {
    for (const char* version : {"7.1", "7.2", "7.3", "7.4"}) {
        const Ran ran =
            tsql("SELECT 1 AS a, 'æøå' AS b, N'Ærlig' AS c, CAST(12.5 AS decimal(5,2)) AS d, NULL AS e", version);
        EXPECT_EQ(ran.status, 0);
        EXPECT_NE(ran.output.find("1\tæøå\tÆrlig\t12.50\tNULL"), std::string::npos) << version << ran.output;
    }
}

TEST_F(Clients, TsqlShowsErrorsAndMessages) {
    const Ran ran = tsql("SELECT * FROM missing\nPRINT 'never'");
    EXPECT_NE(ran.output.find("Msg 208 (severity 16, state 1) from TORVIKSANDBOX Line 1:"), std::string::npos)
        << ran.output;
    EXPECT_NE(ran.output.find("\"Invalid object name 'missing'.\""), std::string::npos);
    EXPECT_EQ(ran.output.find("never"), std::string::npos);
    EXPECT_NE(tsql("PRINT 'hallo'").output.find("hallo"), std::string::npos);
}

TEST_F(Clients, TsqlIsRefusedWithTheWrongPassword) {
    const Ran ran = tsql("SELECT 1", "auto", "wrong");
    EXPECT_NE(ran.output.find("Login failed for user 'sa'."), std::string::npos) << ran.output;
    EXPECT_NE(ran.status, 0);
}

TEST_F(Clients, BsqldbRunsAScript) {
    const Ran ran = runProgram("bsqldb -q -S 127.0.0.1:" + port() + " -U sa -P secret",
                               "CREATE TABLE #t (a int, b varchar(10))\ngo\n"
                               "INSERT #t VALUES (1, 'one')\nINSERT #t VALUES (2, 'two')\ngo\n"
                               "SELECT a, b FROM #t ORDER BY a DESC\ngo\n");
    EXPECT_EQ(ran.status, 0) << ran.output;
    const std::size_t two = ran.output.find("two");
    EXPECT_NE(two, std::string::npos) << ran.output;
    EXPECT_NE(ran.output.find("one", two), std::string::npos) << ran.output;
}

TEST_F(Clients, FreebcpLoadsAndUnloadsTheSameRows) {
    prepare("CREATE DATABASE shop");
    prepare(
        "CREATE TABLE shop.dbo.goods (id int NOT NULL PRIMARY KEY, name varchar(30) NULL, price money NULL, "
        "weight decimal(10,3) NULL, sold datetime NULL, note nvarchar(40) NULL, rate float NULL, active bit NOT NULL)");
    std::string rows;
    for (int i = 1; i <= 2500; ++i) {
        rows += std::to_string(i) + "\tvare " + std::to_string(i) + "\t" + std::to_string(i) + ".5000\t" +
                std::to_string(i) + ".125\t2024-02-29 12:30:" + (i % 60 < 10 ? "0" : "") + std::to_string(i % 60) +
                ".000\t" + (i % 3 == 0 ? "" : "note") + "\t0.5\t" + std::to_string(i % 2) + "\n";
    }
    folder.write("in.txt", rows);
    const std::string access = " -S 127.0.0.1:" + port() + " -U sa -P secret -c ";
    const Ran in = runProgram("freebcp shop.dbo.goods in " + folder.file("in.txt") + access + "-b 1000");
    EXPECT_EQ(in.status, 0) << in.output;
    EXPECT_NE(in.output.find("2500 rows copied"), std::string::npos) << in.output;
    const Lines sums = loggedIn(server).batch(
        "SELECT COUNT(*) AS n, SUM(price) AS p, SUM(weight) AS w, COUNT(note) AS c, SUM(CAST(active AS int)) AS a, "
        "MAX(name) AS m FROM shop.dbo.goods");
    EXPECT_EQ(sums.at(1), "row 2500|31275000000|3126562.500|1667|1250|'vare 999'");
    const Ran out = runProgram("freebcp shop.dbo.goods out " + folder.file("out.txt") + access);
    EXPECT_EQ(out.status, 0) << out.output;
    const Ran again = runProgram("sh -c \"wc -l < " + folder.file("out.txt") + "\"");
    EXPECT_EQ(again.output, "2500\n");
}

TEST_F(Clients, FreebcpTellsOfRowsThatTheTableRefuses) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.k (id int NOT NULL PRIMARY KEY)");
    folder.write("in.txt", "1\n2\n2\n");
    const Ran ran = runProgram("freebcp shop.dbo.k in " + folder.file("in.txt") + " -S 127.0.0.1:" + port() +
                               " -U sa -P secret -c");
    EXPECT_NE(ran.output.find("Violation of PRIMARY KEY"), std::string::npos) << ran.output;
    EXPECT_EQ(loggedIn(server).batch("SELECT COUNT(*) AS n FROM shop.dbo.k").at(1), "row 0");
}

TEST_F(Clients, OdbcReadsEveryType) {
    odbc(R"py(
row = connect().execute("""SELECT CAST(1 AS bit), CAST(255 AS tinyint), CAST(-32768 AS smallint), -2147483647, CAST(9007199254740993 AS bigint),
    CAST(1.5 AS real), CAST(2.25 AS float), CAST(-12345678901234567890.123 AS decimal(38,3)), CAST(12.34567 AS money), CAST(-1.5 AS smallmoney),
    CAST('ab' AS char(4)), CAST('æøå' AS varchar(10)), CAST(N'Ж' AS nchar(2)), CAST(N'日本' AS nvarchar(10)), CAST('t' AS text), CAST(N'n' AS ntext),
    CAST(0x0102 AS varbinary(4)), CAST('20240229 23:59:59.997' AS datetime), CAST('20240229 12:31' AS smalldatetime), CAST('2024-02-29' AS date),
    CAST('2024-02-29 12:00:00.1234567' AS datetime2), CAST('0E984725-C51C-4BF4-9960-E1C80E27ABA0' AS uniqueidentifier), NULL,
    REPLICATE(CAST('x' AS varchar(max)), 70000)""").fetchone()
assert list(row)[:19] == [True, 255, -32768, -2147483647, 9007199254740993, 1.5, 2.25, decimal.Decimal('-12345678901234567890.123'),
    decimal.Decimal('12.3457'), decimal.Decimal('-1.5'), 'ab  ', 'æøå', 'Ж ', '日本', 't', 'n', b'\x01\x02',
    datetime.datetime(2024, 2, 29, 23, 59, 59, 997000), datetime.datetime(2024, 2, 29, 12, 31)], row
assert row[19] == datetime.date(2024, 2, 29), row[19]
assert row[20] == datetime.datetime(2024, 2, 29, 12, 0, 0, 123456) or row[20] == datetime.datetime(2024, 2, 29, 12, 0, 0, 123457), row[20]
assert row[21] == '0E984725-C51C-4BF4-9960-E1C80E27ABA0' and row[22] is None and len(row[23]) == 70000
)py");
}

TEST_F(Clients, OdbcPassesParametersOfEveryType) {
    odbc(R"py(
c = connect()
c.execute('CREATE TABLE #p (i int, b bigint, f float, d decimal(18,4), v varchar(20), n nvarchar(20), t datetime, x varbinary(10), m nvarchar(max), o text)')
values = (7, 2**40, 0.1, decimal.Decimal('1234.5678'), 'blåbær', '日本', datetime.datetime(2024, 2, 29, 1, 2, 3), b'\x00\xff', 'm' * 9000, 't' * 9000)
c.execute('INSERT INTO #p VALUES (?,?,?,?,?,?,?,?,?,?)', values)
row = tuple(c.execute('SELECT * FROM #p WHERE i = ? AND v = ?', 7, 'BLÅBÆR').fetchone())
assert row == values, row
# The driver sends a null as varchar, which no server takes for varbinary.
c.execute('INSERT INTO #p VALUES (?,?,?,?,?,?,?,NULL,?,?)', (None,) * 9)
assert c.execute('SELECT COUNT(*) FROM #p WHERE i IS NULL AND o IS NULL').fetchone()[0] == 1
)py");
}

TEST_F(Clients, OdbcPreparedStatementIsExecutedManyTimes) {
    odbc(R"py(
c = connect()
c.execute('CREATE TABLE #m (i int NOT NULL PRIMARY KEY, v varchar(20))')
k = c.cursor()
k.executemany('INSERT INTO #m VALUES (?, ?)', [(i, 'row %d' % i) for i in range(300)])
assert tuple(k.execute('SELECT COUNT(*), SUM(i) FROM #m').fetchone()) == (300, 44850)
for i in (3, 5, 299):
    assert k.execute('SELECT v FROM #m WHERE i = ?', i).fetchone()[0] == 'row %d' % i
assert k.execute('UPDATE #m SET v = ? WHERE i < ?', 'x', 10).rowcount == 10
)py");
}

TEST_F(Clients, OdbcTransactionsCommitAndRollBack) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.t (a int NOT NULL PRIMARY KEY)");
    odbc(R"py(
c = connect('Database=shop')
c.execute('INSERT t VALUES (1)'); c.commit()
c.execute('INSERT t VALUES (2)'); c.rollback()
assert [r[0] for r in c.execute('SELECT a FROM t')] == [1]
try:
    c.execute('INSERT t VALUES (1)'); assert False
except pyodbc.IntegrityError as e:
    assert e.args[0] == '23000' and 'PRIMARY KEY' in e.args[1] and '(2627)' in e.args[1], e.args
c.close()
c = connect('Database=shop')
assert tuple(c.execute('SELECT COUNT(*), DB_NAME() FROM t').fetchone()) == (1, 'shop')
)py");
}

TEST_F(Clients, OdbcTimeoutCancelsAndTheConnectionGoesOn) {
    odbc(R"py(
c = connect(autocommit=True)
c.timeout = 1
try:
    c.execute("WAITFOR DELAY '00:05:00'"); assert False
except pyodbc.OperationalError as e:
    assert e.args[0] == 'HYT00', e.args
c.timeout = 0
assert c.execute('SELECT 1').fetchone()[0] == 1
)py");
}

TEST_F(Clients, OdbcCallsProceduresAndReadsSeveralResults) {
    prepare("CREATE DATABASE shop");
    prepare("USE shop");
    tds::TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch(
        "CREATE PROCEDURE p @a int, @b varchar(20) AS SELECT @a + 1 AS n PRINT 'said' SELECT @b AS b RETURN 5");
    odbc(R"py(
c = connect('Database=shop')
k = c.execute('{call p (?, ?)}', 41, 'text')
assert k.fetchall()[0][0] == 42
assert k.nextset() and k.fetchall()[0][0] == 'text'
k = c.execute('DECLARE @r int EXEC @r = p ?, ? SELECT @r', 1, 'x')
while k.description is None or k.description[0][0] != '': assert k.nextset()
assert k.fetchone()[0] == 5
)py");
}

TEST_F(Clients, OdbcSpeaksWithAndWithoutEncryption) {
    odbc(R"py(
for extra in ('Encryption=off', 'Encryption=request', 'Encryption=require', 'TDS_Version=7.1', 'TDS_Version=7.2;Encryption=require'):
    assert connect(extra).execute("SELECT 'ok', REPLICATE('x', 8000)").fetchone()[0] == 'ok', extra
)py");
}

TEST_F(Clients, OdbcLargeValuesPass) {
    odbc(R"py(
c = connect()
c.execute('CREATE TABLE #b (i int, v varbinary(max), n nvarchar(max), g image)')
blob = bytes(range(256)) * 8000
c.execute('INSERT INTO #b VALUES (?,?,?,?)', 1, blob, 'ø' * 500000, blob)
row = c.execute('SELECT DATALENGTH(v), LEN(n), DATALENGTH(g), v, g FROM #b').fetchone()
assert tuple(row)[:3] == (len(blob), 500000, len(blob)), tuple(row)[:3]
assert row[3] == blob and row[4] == blob
)py");
}

TEST_F(Clients, OdbcScrollsInServerCursors) {
    python(R"py(
import ctypes
odbc, pointer = ctypes.CDLL('libodbc.so.2'), ctypes.c_void_p
for name in ('SQLDriverConnect', 'SQLSetStmtAttr', 'SQLExecDirect', 'SQLFetchScroll', 'SQLGetData'):
    getattr(odbc, name).restype = ctypes.c_short
environment, connection = pointer(), pointer()
odbc.SQLAllocHandle(1, None, ctypes.byref(environment))
odbc.SQLSetEnvAttr(environment, 200, pointer(3), 0)
odbc.SQLAllocHandle(2, environment, ctypes.byref(connection))
text = b'DRIVER=FreeTDS;Server=127.0.0.1;Port=%d;UID=sa;PWD=secret' % port
assert odbc.SQLDriverConnect(connection, None, text, len(text), None, 0, None, 0) in (0, 1)
NEXT, FIRST, LAST, PRIOR, ABSOLUTE, RELATIVE = 1, 2, 3, 4, 5, 6
for cursor_type in (1, 2, 3):  # keyset, dynamic, static
    statement = pointer()
    odbc.SQLAllocHandle(3, connection, ctypes.byref(statement))
    assert odbc.SQLSetStmtAttr(statement, 6, pointer(cursor_type), 0) in (0, 1)
    query = b'SELECT 1 AS a UNION ALL SELECT 2 UNION ALL SELECT 3 ORDER BY 1'
    assert odbc.SQLExecDirect(statement, query, len(query)) in (0, 1)
    seen = []
    for how, where in ((NEXT, 0), (NEXT, 0), (LAST, 0), (PRIOR, 0), (FIRST, 0), (RELATIVE, 2), (NEXT, 0), (PRIOR, 0), (ABSOLUTE, 2)):
        result = odbc.SQLFetchScroll(statement, ctypes.c_short(how), ctypes.c_long(where))
        if result == 100:
            seen.append(None)
            continue
        assert result in (0, 1), result
        buffer, length = ctypes.create_string_buffer(20), ctypes.c_long()
        assert odbc.SQLGetData(statement, 1, 1, buffer, 20, ctypes.byref(length)) in (0, 1)
        seen.append(int(buffer.value))
    assert seen == [1, 2, 3, 2, 1, 3, None, 3, 2], (cursor_type, seen)
    odbc.SQLFreeHandle(3, statement)
)py");
}

TEST_F(Clients, DbLibraryQueriesCallsAndCopies) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.t (a int NOT NULL, b varchar(20) NULL)");
    tds::TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch("CREATE PROCEDURE twice @a int, @b int OUTPUT AS SET @b = @a * 2 RETURN 3");
    python(R"py(
import pymssql
c = pymssql.connect('127.0.0.1', 'sa', 'secret', 'shop', port=port)
k = c.cursor()
k.executemany('INSERT t VALUES (%d, %s)', [(1, 'en'), (2, 'to'), (3, None)])
c.commit()
k.execute('SELECT a, b FROM t ORDER BY a')
assert k.fetchall() == [(1, 'en'), (2, 'to'), (3, None)]
assert k.callproc('twice', (21, pymssql.output(int))) == (21, 42)
try:
    k.execute('SELECT * FROM missing'); assert False
except pymssql.ProgrammingError as e:
    assert e.args[0] == 208, e.args
c.rollback()
c.bulk_copy('t', [(i, 'row') for i in range(10, 1010)])
c.commit()
k.execute('SELECT COUNT(*) FROM t')
assert k.fetchone()[0] == 1003
)py");
}

// jTDS, an implementation of the protocol of its own, driven by a script of BeanShell.
TEST_F(Clients, JdbcQueriesPreparesLoadsAndReadsErrors) {
    prepare("CREATE DATABASE shop");
    prepare(
        "CREATE TABLE shop.dbo.goods (id int NOT NULL PRIMARY KEY, name nvarchar(50) NULL, price money NULL, "
        "CONSTRAINT unique_name UNIQUE (name))");
    tds::TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch("CREATE PROCEDURE twice @a int, @b int OUTPUT AS SET @b = @a * 2 RETURN 3");
    folder.write("client.bsh", "port = " + port() + ";" + R"bsh(
import java.sql.*;
Class.forName("net.sourceforge.jtds.jdbc.Driver");
url = "jdbc:jtds:sqlserver://127.0.0.1:" + port + "/";
check(wanted, found) { if (!String.valueOf(wanted).equals(String.valueOf(found))) throw new Exception(wanted + " is not " + found); }
for (String options : new String[] {"", ";prepareSQL=2", ";prepareSQL=0", ";ssl=require"}) {
    c = DriverManager.getConnection(url + "shop" + options, "sa", "secret");
    s = c.createStatement();
    r = s.executeQuery("SELECT DB_NAME(), N'Ærlig', CAST(1.5 AS decimal(9,2)), REPLICATE(CAST('x' AS varchar(max)), 9000), CAST('2024-02-29 12:30' AS datetime)");
    r.next();
    check("shop Ærlig 1.50 9000 2024-02-29 12:30:00.0", r.getString(1) + " " + r.getString(2) + " " + r.getBigDecimal(3) + " " + r.getString(4).length() + " " + r.getTimestamp(5));
    s.executeUpdate("DELETE goods");
    p = c.prepareStatement("INSERT INTO goods VALUES (?, ?, ?)");
    for (i = 0; i < 200; i++) { p.setInt(1, i); p.setString(2, "navn " + i); p.setBigDecimal(3, new java.math.BigDecimal("1.25")); p.addBatch(); }
    check(200, p.executeBatch().length);
    p = c.prepareStatement("SELECT name FROM goods WHERE id = ?");
    for (i = 0; i < 3; i++) { p.setInt(1, i); r = p.executeQuery(); r.next(); check("navn " + i, r.getString(1)); }
    try { s.executeUpdate("INSERT INTO goods VALUES (7, 'x', 0)"); throw new Exception("stored twice"); }
    catch (SQLException e) { check("2627 23000", e.getErrorCode() + " " + e.getSQLState()); }
    try { s.executeQuery("SELECT * FROM nowhere"); throw new Exception("found"); }
    catch (SQLException e) { check("208 Invalid object name 'nowhere'.", e.getErrorCode() + " " + e.getMessage()); }
    c.setAutoCommit(false);
    s.executeUpdate("DELETE goods");
    c.rollback();
    c.setAutoCommit(true);
    q = c.createStatement(ResultSet.TYPE_SCROLL_INSENSITIVE, ResultSet.CONCUR_READ_ONLY);
    r = q.executeQuery("SELECT id FROM goods ORDER BY id");
    r.last(); check("199 200", r.getInt(1) + " " + r.getRow());
    r.absolute(3); check(2, r.getInt(1));
    r.previous(); check(1, r.getInt(1));
    k = c.prepareCall("{? = call twice(?, ?)}");
    k.registerOutParameter(1, Types.INTEGER); k.setInt(2, 21); k.registerOutParameter(3, Types.INTEGER);
    k.execute();
    check("3 42", k.getInt(1) + " " + k.getInt(3));
    s.setQueryTimeout(1);
    try { s.execute("WAITFOR DELAY '00:05:00'"); throw new Exception("waited"); } catch (SQLException e) { check("HYT00", e.getSQLState()); }
    s.setQueryTimeout(0);
    m = c.getMetaData();
    names(r, column) { t = ""; while (r.next()) t += r.getString(column) + " "; return t.trim(); }
    check("goods", names(m.getTables(null, null, "go%", null), "TABLE_NAME"));
    check("id name price", names(m.getColumns(null, null, "goods", null), "COLUMN_NAME"));
    check("id", names(m.getPrimaryKeys(null, null, "goods"), "COLUMN_NAME"));
    check("id name", names(m.getIndexInfo(null, null, "goods", true, false), "COLUMN_NAME").replace("null ", ""));
    check("id", names(m.getBestRowIdentifier(null, null, "goods", DatabaseMetaData.bestRowSession, true), "COLUMN_NAME"));
    check("twice", names(m.getProcedures(null, null, "tw%"), "PROCEDURE_NAME"));
    check("@RETURN_VALUE @a @b", names(m.getProcedureColumns(null, null, "twice", null), "COLUMN_NAME"));
    c.close();
}
refused(database, password) { try { DriverManager.getConnection(url + database, "sa", password); } catch (SQLException e) { return e.getErrorCode(); } return 0; }
check(18456, refused("shop", "wrong"));
check(4060, refused("nowhere", "secret"));
print("passed");
)bsh");
    const Ran ran = runProgram("java -cp /usr/share/java/jtds.jar:/usr/share/java/bsh.jar bsh.Interpreter " +
                               folder.file("client.bsh"));
    EXPECT_TRUE(ran.output.ends_with("passed\n")) << ran.output;
}

// The sandbox's own program stands beside the test's.
class Program : public ::testing::Test {
protected:
    std::string program = (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "torvik-sandbox").string();
};

TEST_F(Program, SaysWhereItListensAndEndsCleanlyWhenAsked) {
    TemporaryFolder folder;
    folder.write(
        "run.sh",
        program + " --port 0 --sa-password secret --data " + folder.file("data") + " >" + folder.file("out") +
            " & pid=$!\n"
            "until grep -qs listening " +
            folder.file("out") +
            "; do kill -0 $pid || exit 9; done\n"
            "port=$(sed -n '1s/.*://p' " +
            folder.file("out") +
            ")\n"
            "printf 'SELECT @@SERVERNAME AS s\\ngo\\nexit\\n' | tsql -o q -H 127.0.0.1 -p $port -U sa -P secret\n"
            "kill -TERM $pid; wait $pid; echo ended $?\n");
    const Ran ran = runProgram("sh " + folder.file("run.sh"));
    EXPECT_NE(ran.output.find("TORVIKSANDBOX"), std::string::npos) << ran.output;
    EXPECT_TRUE(ran.output.ends_with("ended 0\n")) << ran.output;
    EXPECT_TRUE(folder.read("out").starts_with("listening on 127.0.0.1:"));
}

TEST_F(Program, DemoChainListensOnItsPortsAndTellsThem) {
    TemporaryFolder folder;
    folder.write(
        "run.sh",
        program + " --chain departments=1,tills=2,days=1 --sa-password secret >" + folder.file("out") +
            " & pid=$!\n"
            "until grep -qs 'data link' " +
            folder.file("out") +
            "; do kill -0 $pid || exit 9; done\n"
            "for port in $(sed -n 's/.* on 127.0.0.1[:,]\\([0-9]*\\).*/\\1/p' " +
            folder.file("out") +
            ")\n"
            "do printf 'SELECT @@SERVERNAME AS s\\ngo\\nexit\\n' | tsql -o q -H 127.0.0.1 -p $port -U sa -P secret | tail -1; done\n"
            "kill -INT $pid; wait $pid; echo ended $?\n");
    const Ran ran = runProgram("sh " + folder.file("run.sh"));
    EXPECT_TRUE(ran.output.ends_with("ended 0\n")) << ran.output;
    EXPECT_EQ(std::count(ran.output.begin(), ran.output.end(), '\n'), 4) << ran.output;
    EXPECT_NE(folder.read("out").find("Initial Catalog=TorvikBackOffice"), std::string::npos);
}

TEST_F(Program, BadArgumentsAreExplained) {
    struct {
        const char* arguments;
        const char* text;
    } cases[] = {{"--port 70000", "--port takes a number from 0 to 65535, not '70000'"},
                 {"--port", "--port needs a value"},
                 {"--encryption maybe", "--encryption takes off, offered or required"},
                 {"--login x", "--login takes NAME=PASSWORD"},
                 {"--chain shops=3", "--chain: "},
                 {"--nonsense", "unknown option --nonsense"},
                 {"--chain tills=1 --server-name X", "--server-name does not go with --chain"}};
    for (const auto& c : cases) {
        const Ran ran = runProgram(program + " " + c.arguments);
        EXPECT_EQ(ran.status, 2) << c.arguments << ran.output;
        EXPECT_NE(ran.output.find(c.text), std::string::npos) << ran.output;
    }
    EXPECT_EQ(runProgram(program + " --help").status, 0);
}

TEST_F(Program, PortThatIsTakenIsAnError) {
    Server server(serverOptions());
    const Ran ran = runProgram(program + " --port " + std::to_string(server.port()));
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.output.find("cannot have 127.0.0.1:"), std::string::npos) << ran.output;
}

}  // namespace
}  // namespace sandbox::test
