// The parser's errors: number, severity, line and text as SQL Server gives them, and the bounds that keep it safe.
#include <gtest/gtest.h>

#include <string>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/parse/parser.h"
#include "tests/sandbox/support/parsing.h"

namespace sandbox {
namespace {

struct Case {
    const char* text;
    const char* error;
};

// clang-format off
constexpr Case kErrors[] = {
    {"SELECT",
     "102 15 line 1: Incorrect syntax near 'SELECT'."},
    {"SELECT * FROM",
     "102 15 line 1: Incorrect syntax near 'FROM'."},
    {"SELECT a FROM t WHERE",
     "102 15 line 1: Incorrect syntax near 'WHERE'."},
    {"SELECT a b c FROM t",
     "102 15 line 1: Incorrect syntax near 'c'."},
    {"SELECT a, FROM t",
     "156 15 line 1: Incorrect syntax near the keyword 'FROM'."},
    {"INSERT t VALUES (1) GO",
     "102 15 line 1: Incorrect syntax near 'GO'."},
    {"SELECT 1 WHERE 1",
     "4145 15 line 1: An expression of non-boolean type specified in a context where a condition is expected, near '1'."},
    {"IF 1 SELECT 2",
     "4145 15 line 1: An expression of non-boolean type specified in a context where a condition is expected, near 'SELECT'."},
    {"SELECT (a = b)",
     "102 15 line 1: Incorrect syntax near '='."},
    {"SELECT a FROM t WHERE a = b = c",
     "102 15 line 1: Incorrect syntax near '='."},
    {"SELECT a = 1 WITH x AS (SELECT 1) SELECT * FROM x",
     "319 15 line 1: Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an xmlnamespaces clause or a change tracking context clause, the previous statement must be terminated with a semicolon."},
    {"UPDATE t SET WHERE a = 1",
     "156 15 line 1: Incorrect syntax near the keyword 'WHERE'."},
    {"UPDATE t SET a WHERE b = 1",
     "156 15 line 1: Incorrect syntax near the keyword 'WHERE'."},
    {"DELETE FROM WHERE a = 1",
     "156 15 line 1: Incorrect syntax near the keyword 'WHERE'."},
    {"SELECT [abc",
     "105 15 line 1: Unclosed quotation mark after the character string 'abc'.\n102 15 line 1: Incorrect syntax near 'abc'."},
    {"SELECT \"abc",
     "105 15 line 1: Unclosed quotation mark after the character string 'abc'.\n102 15 line 1: Incorrect syntax near 'abc'."},
    {"SELECT 'abc",
     "105 15 line 1: Unclosed quotation mark after the character string 'abc'.\n102 15 line 1: Incorrect syntax near 'abc'."},
    {"SELECT 1 /* never ended",
     "113 15 line 1: Missing end comment mark '*/'."},
    {"SELECT [] FROM t",
     "1038 15 line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name. For other statements, look for empty alias names. Aliases defined as \"\" or [] are not allowed. Change the alias to a valid name."},
    {"SELECT 12345678901234567890123456789012345678901234",
     "1007 15 line 1: The number '12345678901234567890123456789012345678901234' is out of the range for numeric representation (maximum precision 38)."},
    {"SELECT 1e999",
     "168 15 line 1: The floating point value '1e999' is out of the range of computer representation (8 bytes)."},
    {"SELECT CAST(1 AS varchar(0)), 2",
     "1001 15 line 1: Line 1: Length or precision specification 0 is invalid."},
    {"SELECT CAST(1 AS varchar(9000))",
     "131 15 line 1: The size (9000) given to the type 'varchar' exceeds the maximum allowed for any data type (8000)."},
    {"SELECT CAST(1 AS decimal(40,2))",
     "2750 16 line 1: Column or parameter #1: Specified column precision 40 is greater than the maximum precision of 38."},
    {"SELECT CAST(1 AS decimal(5,6))",
     "192 15 line 1: The scale must be less than or equal to the precision."},
    {"SELECT CAST(1 AS int(4))",
     "2716 16 line 1: Column, parameter, or variable #1: Cannot specify a column width on data type int."},
    {"SELECT 1 CREATE VIEW v AS SELECT 1",
     "111 15 line 1: 'CREATE VIEW' must be the first statement in a query batch."},
    {"CREATE VIEW v AS SELECT 1 SELECT 2",
     "156 15 line 1: Incorrect syntax near the keyword 'SELECT'."},
    {"CREATE VIEW v AS SELECT a FROM t ORDER BY a",
     "1033 15 line 1: The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table expressions, unless TOP, OFFSET or FOR XML is also specified."},
    {"SELECT * FROM (SELECT a FROM t ORDER BY a) x",
     "1033 15 line 1: The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table expressions, unless TOP, OFFSET or FOR XML is also specified."},
    {"SELECT * FROM (SELECT a FROM t)",
     "102 15 line 1: Incorrect syntax near ')'."},
    {"SELECT @v = 1, 2",
     "141 15 line 1: A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations."},
    {"SELECT @v = 1 UNION SELECT 2",
     "10734 15 line 1: Variable assignment is not allowed in a statement containing a top level UNION, INTERSECT or EXCEPT operator."},
    {"SELECT a FROM (SELECT @v = 1) x",
     "102 15 line 1: Incorrect syntax near '='."},
    {"SELECT a FROM srv.db.dbo.t",
     "7202 11 line 1: Could not find server 'srv' in sys.servers. Verify that the correct server name was specified. If necessary, execute the stored procedure sp_addlinkedserver to add the server to sys.servers."},
    {"SELECT a FROM t WITH (FOO)",
     "321 15 line 1: \"FOO\" is not a recognized table hints option. If it is intended as a parameter to a table-valued function or to the CHANGETABLE function, ensure that your database compatibility mode is set to 90."},
    {"EXEC p @a = 1, 2",
     "119 15 line 1: Must pass parameter number 2 and subsequent parameters as '@name = value'. After the form '@name = value' has been used, all subsequent parameters must be passed in the form '@name = value'."},
    {"EXEC p 1 OUTPUT",
     "179 15 line 1: Cannot use the OUTPUT option when passing a constant to a stored procedure."},
    {"BREAK",
     "135 15 line 1: Cannot use a BREAK statement outside the scope of a WHILE statement."},
    {"CONTINUE",
     "136 15 line 1: Cannot use a CONTINUE statement outside the scope of a WHILE statement."},
    {"BEGIN END",
     "156 15 line 1: Incorrect syntax near the keyword 'END'."},
    {"END",
     "156 15 line 1: Incorrect syntax near the keyword 'END'."},
    {"BEGIN SELECT 1",
     "102 15 line 1: Incorrect syntax near '1'."},
    {"BEGIN TRY SELECT 1 END TRY SELECT 2",
     "156 15 line 1: Incorrect syntax near the keyword 'SELECT'."},
    {"SET FOO ON",
     "195 15 line 1: 'FOO' is not a recognized SET option."},
    {"SET SELECT ON",
     "156 15 line 1: Incorrect syntax near the keyword 'SELECT'."},
    {"SELECT 1 THROW 50000, 'x', 1",
     "102 15 line 1: Incorrect syntax near '50000'."},
    {"MERGE t USING s ON 1 = 1 WHEN MATCHED THEN DELETE",
     "10713 15 line 1: A MERGE statement must be terminated by a semi-colon (;)."},
    {"INSERT t VALUES (1), (2, 3)",
     "10709 16 line 1: The number of columns for each row in a table value constructor must be the same."},
    {"DROP INDEX ix",
     "159 15 line 1: Must specify the table name and index name for the DROP INDEX statement."},
    {"SELECT DATEADD(1, 2, 3)",
     "1023 15 line 1: Invalid parameter 1 specified for dateadd."},
    {"CREATE PROCEDURE p AS USE master",
     "154 15 line 1: a USE database statement is not allowed in a procedure, function or trigger."},
    {"CREATE PROCEDURE p",
     "102 15 line 1: Incorrect syntax near 'p'."},
    {"SELECT TOP x a FROM t",
     "102 15 line 1: Incorrect syntax near 'x'."},
    {"SELECT a FROM t GROUP BY ALL a",
     "40517 16 line 1: Keyword or statement option 'GROUP BY ALL' is not supported in this version of SQL Server."},
    {"SELECT a FROM t WHERE a *= b",
     "102 15 line 1: Incorrect syntax near '*='."},
    {"SELECT ? FROM t",
     "102 15 line 1: Incorrect syntax near '?'."},
    {"SELECT a..b FROM t )",
     "102 15 line 1: Incorrect syntax near ')'."},
    {"SELECT 1 foo bar",
     "102 15 line 1: Incorrect syntax near 'bar'."},
    {"DECLARE @a",
     "102 15 line 1: Incorrect syntax near '@a'."},
    {"DECLARE @a int DEFAULT 1",
     "156 15 line 1: Incorrect syntax near the keyword 'DEFAULT'."},
    {"CREATE TABLE t (a int b int)",
     "102 15 line 1: Incorrect syntax near 'b'."},
    {"CREATE TABLE t ()",
     "102 15 line 1: Incorrect syntax near ')'."},
    {"ALTER TABLE t ADD",
     "102 15 line 1: Incorrect syntax near 'ADD'."},
    {"SELECT * FROM t PIVOT (x)",
     "40517 16 line 1: Keyword or statement option 'PIVOT' is not supported in this version of SQL Server."},
    {"SELECT a.b.c.d.e.f FROM t",
     "117 15 line 1: The object name 'a.b.c.d.e' contains more than the maximum number of prefixes. The maximum is 3."},
    {"SELECT t.key FROM t",
     "156 15 line 1: Incorrect syntax near the keyword 'key'."},
    {"SELECT a INTO b FROM (SELECT 1 INTO x) y",
     "156 15 line 1: Incorrect syntax near the keyword 'INTO'."},
    {"SELECT NOT 1",
     "156 15 line 1: Incorrect syntax near the keyword 'NOT'."},
    {"SELECT a FROM t ORDER a",
     "102 15 line 1: Incorrect syntax near 'a'."},
    {"SELECT a FROM t WHERE a IN ()",
     "102 15 line 1: Incorrect syntax near ')'."},
    {"SELECT a FROM t WHERE a LIKE",
     "102 15 line 1: Incorrect syntax near 'LIKE'."},
    {"SELECT a FROM t WHERE EXISTS (1)",
     "102 15 line 1: Incorrect syntax near '1'."},
    {"CASE",
     "156 15 line 1: Incorrect syntax near the keyword 'CASE'."},
    {"WITH x AS (SELECT 1)",
     "102 15 line 1: Incorrect syntax near ')'."},
    {"INSERT t VALUES (1)\nSELECT FROM t",
     "156 15 line 2: Incorrect syntax near the keyword 'FROM'."},
    {"SELECT 1\nSELECT (1 + 2\n\n",
     "102 15 line 2: Incorrect syntax near '2'."},
    {"SELECT 'a' FROM t WHERE x = 'b",
     "105 15 line 1: Unclosed quotation mark after the character string 'b'.\n102 15 line 1: Incorrect syntax near 'b'."},
    {"SELECT 1 SELECT 2 FROM [t u] [v w] x",
     "102 15 line 1: Incorrect syntax near 'x'."},
    {"CREATE TABLE t (a int)\nSELECT @@x y z",
     "102 15 line 2: Incorrect syntax near 'z'."},
    {"SELECT a FROM t GROUP BY a WITH ROLLUP",
     "40517 16 line 1: Keyword or statement option 'WITH ROLLUP' is not supported in this version of SQL Server."},
    {"SELECT CURSOR",
     "156 15 line 1: Incorrect syntax near the keyword 'CURSOR'."},
    {"DECLARE c CURSOR FOR SELECT @a = 1",
     "102 15 line 1: Incorrect syntax near '='."},
};
// clang-format on

TEST(ParserErrors, AreToldAsSqlServerTellsThem) {
    for (const Case& c : kErrors) EXPECT_EQ(parsed(c.text), c.error) << c.text;
}

TEST(ParserErrors, EndTheBatch) {
    try {
        (void)parseBatch("SELECT FROM");
        FAIL() << "parsed";
    } catch (const SqlError& error) {
        EXPECT_EQ(error.effect, Effect::Batch);
        EXPECT_EQ(error.messages.front().state, 1);
    }
}

TEST(ParserErrors, LongNamesAreRefused) {
    EXPECT_EQ(parsed("SELECT " + std::string(128, 'a')), "(select " + std::string(128, 'a') + ")");
    EXPECT_EQ(parsed("SELECT " + std::string(129, 'a')), "103 15 line 1: The identifier that starts with '" +
                                                             std::string(128, 'a') +
                                                             "' is too long. Maximum length is 128.");
}

std::string repeated(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) out += text;
    return out;
}

TEST(ParserErrors, DeepNestingIsRefusedAndNotFollowed) {
    const std::string texts[] = {
        "SELECT " + repeated("(", 50000) + "1" + repeated(")", 50000),
        "SELECT " + repeated("- ", 50000) + "1",
        "SELECT " + repeated("~", 50000) + "1",
        "SELECT 1" + repeated("+1", 50000),
        "SELECT a" + repeated(" COLLATE b", 50000),
        "SELECT " + repeated("f(", 50000),
        "SELECT " + repeated("CASE WHEN 1=1 THEN ", 50000),
        "SELECT 1 WHERE " + repeated("NOT ", 50000) + "1=1",
        "SELECT 1 WHERE " + repeated("EXISTS (SELECT 1 WHERE ", 50000),
        "SELECT * FROM " + repeated("(SELECT * FROM ", 50000),
        "SELECT * FROM t" + repeated(" CROSS JOIN t", 50000),
        "SELECT * FROM t" + repeated(" JOIN t", 50000),
        "SELECT 1" + repeated(" UNION ALL SELECT 1", 50000),
        "SELECT 1 UNION " + repeated("(", 50000) + "SELECT 1" + repeated(")", 50000),
        repeated("BEGIN ", 50000),
        repeated("IF 1=1 ", 50000) + "SELECT 1",
        repeated("IF 1=1 SELECT 1 ELSE ", 50000) + "SELECT 1",
    };
    for (const std::string& text : texts) EXPECT_EQ(parsed(text).substr(0, 3), "191") << text.substr(0, 40);
}

TEST(ParserErrors, WideTextsAreNotDeep) {
    EXPECT_EQ(parsed("SELECT 1 WHERE 1=1" + repeated(" OR 1=1", 5000)).substr(0, 7), "(select");
    EXPECT_EQ(parsed("SELECT 1 WHERE 1 IN (1" + repeated(", 1", 5000) + ")").substr(0, 7), "(select");
    EXPECT_EQ(parsed("SELECT 1" + repeated(" UNION ALL SELECT 1", 900)).substr(0, 6), "(union");
    EXPECT_EQ(parsed(repeated("SELECT 1 ", 5000)).substr(0, 7), "(select");
}

}  // namespace
}  // namespace sandbox
