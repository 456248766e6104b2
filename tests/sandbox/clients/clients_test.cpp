// Clients over DB-Library, Client-Library and a protocol of their own: FreeTDS' programs, Python's and Perl's modules.
#include "tests/sandbox/clients/clients_fixture.h"

namespace sandbox::test {
namespace {

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

// python3-tds, an implementation of the protocol of its own.
TEST_F(Clients, PythonTdsQueriesCallsCopiesAndReadsErrors) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.t (a int NOT NULL PRIMARY KEY, b nvarchar(20) NULL)");
    tds::TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch("CREATE PROCEDURE twice @b int OUTPUT AS SELECT @b AS b SET @b = @b * 2 RETURN 3");
    python(R"py(
import datetime, decimal, io, pytds
def connect(**options):
    return pytds.connect('127.0.0.1', options.pop('database', 'shop'), 'sa', options.pop('password', 'secret'), port=port, **options)
for version in (pytds.tds_base.TDS71, pytds.tds_base.TDS72, pytds.tds_base.TDS73, pytds.tds_base.TDS74):
    with connect(tds_version=version) as c, c.cursor() as k:
        k.execute("SELECT N'日本', REPLICATE(CAST('x' AS varchar(max)), 9000), CAST(1.50 AS decimal(9,2)), NULL")
        assert k.fetchall() == [('日本', 'x' * 9000, decimal.Decimal('1.50'), None)], version
c = connect()
k = c.cursor()
for value in (1, 2**40, 1.5, decimal.Decimal('123.456'), 'blåbær', '日本' * 3000, datetime.datetime(2024, 2, 29, 1, 2, 3), datetime.date(2024, 2, 29), None):
    k.execute('SELECT %s AS v', (value,))
    assert k.fetchone()[0] == value, value
k.executemany('INSERT t VALUES (%s, %s)', [(i, 'rad %d' % i) for i in range(100)])
c.commit()
k.execute('DELETE t')
assert k.rowcount == 100
c.rollback()
k.copy_to(io.StringIO('100\tæ\n101\tø\n'), 't', schema='dbo')
k.execute("SELECT COUNT(*), MAX(a) FROM t; PRINT 'hei'; SELECT 2")
assert k.fetchall() == [(102, 101)] and k.nextset() and k.fetchall() == [(2,)]
k.callproc('twice', (pytds.output(param_type='int', value=21),))
assert k.fetchall() == [(21,)] and not k.nextset() and k.get_proc_return_status() == 3 and k.get_proc_outputs() == [42]
for text, number in (('SELECT * FROM missing', 208), ('SELECT 1/0', 8134), ("RAISERROR('x%d', 14, 2, 7)", 50000), ('INSERT t VALUES (7, NULL)', 2627)):
    try:
        k.execute(text); k.fetchall(); assert False, text
    except pytds.Error as e:
        assert e.number == number, (text, e)
try:
    connect(password='wrong'); assert False
except pytds.Error as e:
    assert e.number == 18456, e
)py");
}

// DBD::Sybase over Client-Library.
TEST_F(Clients, PerlQueriesPreparesAndReadsErrors) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.t (a int NOT NULL PRIMARY KEY, b nvarchar(20) NULL, c money NULL)");
    tds::TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch("CREATE PROCEDURE p @a int AS SELECT @a AS a RETURN 3");
    folder.write("freetds.conf",
                 "[shop]\nhost = 127.0.0.1\nport = " + port() + "\ntds version = 7.4\nclient charset = UTF-8\n");
    folder.write("client.pl", R"pl(
use DBI; use strict;
sub check { my ($wanted, $found) = @_; die "$wanted is not $found" unless $wanted eq $found }
my $login = 'dbi:Sybase:server=shop;database=shop';
my $d = DBI->connect($login, 'sa', 'secret', {RaiseError => 1, PrintError => 0});
check("1|Ærlig|1.50|", join('|', map { $_ // '' } $d->selectrow_array("SELECT 1, N'Ærlig', CAST(1.5 AS decimal(9,2)), NULL")));
my $s = $d->prepare('INSERT INTO t VALUES (?, ?, ?)');
$s->execute($_, "rad $_", 1.5) for 1 .. 20;
$s->execute(21, undef, undef);
check('21|20|30.0000', join('|', $d->selectrow_array('SELECT COUNT(*), COUNT(b), SUM(c) FROM t')));
check(2, $d->do('UPDATE t SET c = 2 WHERE a IN (1, 2)'));
$d->do('BEGIN TRAN'); $d->do('DELETE t'); $d->do('ROLLBACK TRAN');
check(21, $d->selectrow_array('SELECT COUNT(*) FROM t'));
$s = $d->prepare('EXEC p 5'); $s->execute; my @seen;
do { while (my @r = $s->fetchrow_array) { push @seen, "@r" } } while ($s->{syb_more_results});
check('5 3', "@seen");
for (['SELECT * FROM missing', 208], ['SELECT 1/0', 8134], ["RAISERROR('no', 14, 2)", 50000], ['INSERT t (a) VALUES (1)', 2627]) {
    eval { my $q = $d->prepare($_->[0]); $q->execute; while ($q->fetchrow_array) { } };
    check($_->[1], $d->err);
}
check('a b c', join ' ', map { $_->{COLUMN_NAME} } @{$d->column_info(undef, undef, 't', '%')->fetchall_arrayref({})});
check('a', join ' ', $d->primary_key(undef, undef, 't'));
eval { DBI->connect($login, 'sa', 'wrong', {RaiseError => 1, PrintError => 0}) };
check(1, $DBI::errstr =~ /18456/);
print "passed\n";
)pl");
    const Ran ran = runProgram("env FREETDSCONF=" + folder.file("freetds.conf") + " perl " + folder.file("client.pl"));
    EXPECT_TRUE(ran.output.ends_with("passed\n")) << ran.output;
}

// FreeTDS' bulk copy of text and image columns, which name their table in the rows' description.
TEST_F(Clients, FreebcpLoadsLongColumns) {
    prepare("CREATE DATABASE shop");
    prepare("CREATE TABLE shop.dbo.notes (id int NOT NULL, t text NULL, n ntext NULL, v varchar(max) NULL)");
    folder.write("in.txt", "1\tlang\tnæ\tmax\n2\t\t\t\n");
    const Ran ran = runProgram("freebcp shop.dbo.notes in " + folder.file("in.txt") + " -S 127.0.0.1:" + port() +
                               " -U sa -P secret -c");
    EXPECT_NE(ran.output.find("2 rows copied"), std::string::npos) << ran.output;
    const Lines rows = loggedIn(server).batch("SELECT id, t, v FROM shop.dbo.notes ORDER BY id");
    EXPECT_EQ(rows.at(1), "row 1|'lang'|'max'");
    EXPECT_EQ(rows.at(2), "row 2|NULL|NULL");
}

}  // namespace
}  // namespace sandbox::test
