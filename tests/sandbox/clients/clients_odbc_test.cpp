// FreeTDS' ODBC driver under Python, and under unixODBC's own program.
#include "tests/sandbox/clients/clients_fixture.h"

namespace sandbox::test {
namespace {

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

// unixODBC's own program.
TEST_F(Clients, IsqlShowsRowsErrorsAndTables) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.goods (id int, name nvarchar(20))");
    folder.write("odbc.ini", "[shop]\nDriver = FreeTDS\nServer = 127.0.0.1\nPort = " + port() + "\nDatabase = shop\n");
    const Ran ran = runProgram("env ODBCINI=" + folder.file("odbc.ini") + " isql -b -v -d, shop sa secret",
                               "INSERT INTO goods VALUES (1, N'en')\nSELECT id, name FROM goods\n"
                               "SELECT * FROM missing\nhelp\n\n");
    EXPECT_NE(ran.output.find("1,en"), std::string::npos) << ran.output;
    EXPECT_NE(ran.output.find("Invalid object name 'missing'."), std::string::npos) << ran.output;
    EXPECT_NE(ran.output.find("shop,dbo,goods,TABLE"), std::string::npos) << ran.output;
}

}  // namespace
}  // namespace sandbox::test
