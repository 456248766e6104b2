// A client under Java.
#include "tests/sandbox/clients/clients_fixture.h"

namespace sandbox::test {
namespace {

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

}  // namespace
}  // namespace sandbox::test
