// The parser: statements of every kind against the trees they become.
#include "sandbox/tsql/parse/parser.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "sandbox/store/values/error.h"
#include "tests/sandbox/support/parsing.h"

namespace sandbox {
namespace {

struct Case {
    const char* text;
    const char* tree;
};

// clang-format off
constexpr Case kQueries[] = {
    {R"(SELECT 1)",
     R"((select 1))"},
    {R"(SELECT a, t.b, dbo.t.c, db..t.d FROM db..t AS x WITH (NOLOCK), s (NOLOCK), u v)",
     R"((select a t.b dbo.t.c db..t.d (from (db..t x [NOLOCK]) (s [NOLOCK]) (u v))))"},
    {R"(SELECT DISTINCT TOP 5 PERCENT WITH TIES * , x.*, dbo.x.*, n = a + 1, b AS [Odd Name], c 'text', d "quoted" FROM x)",
     R"((select distinct (top 5 percent ties) * x.* dbo.x.* (as n (+ a 1)) (as Odd Name b) (as text c) (as quoted d) (from (x))))"},
    {R"(SELECT -a * b / -c * d + ~e & 1 | 2 ^ 3 % 4)",
     R"((select (^ (| (& (+ (- (/ (* a b) (- (* c d)))) (~ e)) 1) 2) (% 3 4))))"},
    {R"(SELECT TOP (@n) a FROM t ORDER BY a)",
     R"((query (select (top @n) a (from (t))) (order a)))"},
    {R"(SELECT a FROM t ORDER BY a DESC, 2, b COLLATE Danish_Norwegian_CI_AS ASC OFFSET 5 ROWS FETCH NEXT 10 ROWS ONLY)",
     R"((query (select a (from (t))) (order (desc a) 2 (collate b Danish_Norwegian_CI_AS)) (offset 5) (fetch 10)))"},
    {R"(SELECT 1, 2147483647, 2147483648, 0.50, 1.5, .5, 1e0, 1E+18, $1.5, 'it''s', N'Ærlig', 0x1F, 0x, 0xABC, NULL, '')",
     R"((select 1 2147483647 2147483648 0.50 1.5 0.5 1e 1e+18e $1.5000 'it''s' N'Ærlig' 0x1f 0x 0x0abc null ''))"},
    {R"(SELECT @v = a, @w += 2 FROM t)",
     R"((select (= @v a) (+= @w 2) (from (t))))"},
    {R"(SELECT CASE WHEN a = 1 AND b <> 2 OR NOT (c IS NULL) THEN 1 ELSE 2 END, CASE a WHEN 1 THEN 'x' WHEN 2 THEN 'y' END)",
     R"((select (case ((or (and (= a 1) (<> b 2)) (not (null c))) 1) (else 2)) (case a (1 'x') (2 'y'))))"},
    {R"(SELECT a FROM t WHERE a BETWEEN 1 AND 2 AND b NOT BETWEEN 3 AND 4 OR c LIKE 'x%' ESCAPE '\' AND d NOT LIKE N'y' AND e IN (1, 2) AND f NOT IN (SELECT g FROM h))",
     R"((select a (from (t)) (where (or (and (between a 1 2) (not-between b 3 4)) (and (like c 'x%' '\') (not-like d N'y') (in e 1 2) (not-in f (select g (from (h)))))))))"},
    {R"(SELECT a FROM t WHERE (a + b) * 2 > ((c)) AND ((a = 1) OR (b = 2)) AND EXISTS (SELECT * FROM s WHERE s.a = t.a) AND a >= ALL (SELECT b FROM s) AND a = SOME (SELECT 1))",
     R"((select a (from (t)) (where (and (> (* (+ a b) 2) c) (or (= a 1) (= b 2)) (exists (select * (from (s)) (where (= s.a t.a)))) (>=all a (select b (from (s)))) (=any a (select 1))))))"},
    {R"(SELECT a FROM t WHERE a ! = 1 AND b < > 2 AND c !> 3 AND d !< 4 AND e > = 5)",
     R"((select a (from (t)) (where (and (<> a 1) (<> b 2) (<= c 3) (>= d 4) (>= e 5)))))"},
    {R"(SELECT COUNT(*), COUNT(DISTINCT a), SUM(ALL b), GETDATE(), dbo.f(1, 'x'), LEFT(a, 2), RIGHT(b, 3), COALESCE(a, b), NULLIF(a, b), IIF(a = 1, 2, 3), CURRENT_TIMESTAMP, USER, @@ROWCOUNT)",
     R"((select (COUNT *) (COUNT distinct a) (SUM b) (GETDATE) (dbo.f 1 'x') (LEFT a 2) (RIGHT b 3) (COALESCE a b) (NULLIF a b) (IIF (= a 1) 2 3) (CURRENT_TIMESTAMP) (USER) @@ROWCOUNT))"},
    {R"(SELECT DATEADD(day, 1, d), DATEDIFF(mi, a, b), DATEPART(dw, c), DATENAME(month, d))",
     R"((select (DATEADD :day 1 d) (DATEDIFF :mi a b) (DATEPART :dw c) (DATENAME :month d)))"},
    {R"(SELECT CAST(a AS varchar), CONVERT(varchar(10), b, 112), TRY_CAST(c AS int), TRY_CONVERT(decimal(9,3), d), CAST(e AS double precision), CAST(f AS national character varying(5)), CAST(g AS [int]), CAST(h AS varchar(max)), CAST(i AS dec), CAST(j AS float(24)), CAST(k AS character varying(3)), CAST(l AS dbo.mytype))",
     R"((select (cast a varchar(30)) (convert b varchar(10) 112) (try-cast c int) (try-convert d decimal(9,3)) (cast e float) (cast f nvarchar(5)) (cast g int) (cast h varchar(max)) (cast i dec(18,0)) (cast j float) (cast k varchar(3)) (cast l ?dbo.mytype)))"},
    {R"(SELECT a FROM b INNER JOIN c ON b.x = c.x LEFT OUTER JOIN d ON d.y = c.y RIGHT JOIN e ON 1 = 1 FULL JOIN f ON 1 = 1 CROSS JOIN g CROSS APPLY fn(g.a) h OUTER APPLY (SELECT 1 AS z) i)",
     R"((select a (from ((outer-apply ((cross-apply ((cross-join ((full-join ((right-join ((left-join ((join (b) (c) (= b.x c.x))) (d) (= d.y c.y))) (e) (= 1 1))) (f) (= 1 1))) (g))) ((fn g.a) h))) ((select (as z 1)) i))))))"},
    {R"(SELECT a FROM b JOIN c JOIN d ON d.x = c.x ON c.y = b.y INNER HASH JOIN (e LEFT JOIN f ON e.a = f.a) ON 1 = 1)",
     R"((select a (from ((join ((join (b) ((join (c) (d) (= d.x c.x))) (= c.y b.y))) ((left-join (e) (f) (= e.a f.a))) (= 1 1))))))"},
    {R"(SELECT x.n FROM (SELECT 1 UNION ALL SELECT 2) AS x (n), (VALUES (1, 'a'), (2, 'b')) v (a, b), @t AS tv)",
     R"((select x.n (from ((union-all (select 1) (select 2)) x(n)) ((values (1 'a') (2 'b')) v(a b)) (@t tv))))"},
    {R"(SELECT a FROM t UNION SELECT b FROM s UNION ALL (SELECT c FROM u EXCEPT SELECT d FROM v INTERSECT SELECT e FROM w) ORDER BY 1)",
     R"((query (union-all (union (select a (from (t))) (select b (from (s)))) (except (select c (from (u))) (intersect (select d (from (v))) (select e (from (w)))))) (order 1)))"},
    {R"((SELECT 1) UNION (SELECT 2))",
     R"((union (select 1) (select 2)))"},
    {R"(SELECT ((SELECT 1)), (SELECT 2) + 3, ((SELECT 4) UNION (SELECT 5)))",
     R"((select (select 1) (+ (select 2) 3) (union (select 4) (select 5))))"},
    {R"(SELECT a, COUNT(*) FROM t WHERE b = 1 GROUP BY a HAVING COUNT(*) > 1 OPTION (MAXDOP 1, FORCE ORDER))",
     R"((query (select a (COUNT *) (from (t)) (where (= b 1)) (group a) (having (> (COUNT *) 1))) (option MAXDOP 1 FORCE ORDER)))"},
    {R"(SELECT a INTO #x FROM t (INDEX(1) NOLOCK) WHERE 1 = 0 FOR BROWSE)",
     R"((select a (into #x) (from (t [INDEX NOLOCK])) (where (= 1 0))))"},
    {R"(SELECT a FROM t FOR XML AUTO, ELEMENTS, ROOT('x'))",
     R"((query (select a (from (t))) for-xml))"},
    {R"(SELECT ROW_NUMBER() OVER (PARTITION BY a ORDER BY b DESC) AS r, SUM(a) OVER () FROM t)",
     R"((select (as r (ROW_NUMBER (over (by a) (order (desc b))))) (SUM a (over)) (from (t))))"},
    {R"(WITH a (x) AS (SELECT 1), b AS (SELECT x FROM a) SELECT * FROM b)",
     R"((query (select * (from (b))) (with a(x) (select 1)) (with b (select x (from (a))))))"},
    {R"(SELECT {ts '2024-01-02 03:04:05'}, {d '2024-01-02'}, {fn UCASE('a')}, {fn NOW()} FROM {oj a LEFT OUTER JOIN b ON a.x = b.x})",
     R"((select (cast '2024-01-02 03:04:05' datetime) (cast '2024-01-02' datetime) (UPPER 'a') (GETDATE) (from ((left-join (a) (b) (= a.x b.x))))))"},
    {R"(SELECT ServerProperty('x') AS a -- comment /* not)",
     R"((select (as a (ServerProperty 'x'))))"},
    {R"(SELECT/* nested /* comment */ */1)",
     R"((select 1))"},
};

constexpr Case kChanges[] = {
    {R"(;WITH a AS (SELECT 1 AS x) UPDATE t SET c = a.x FROM t, a)",
     R"((update (with a (select (as x 1))) t (set (= c a.x)) (from (t) (a))))"},
    {R"(INSERT t VALUES (1, DEFAULT, NULL), (2, 'x', -3))",
     R"((insert t (values (1 default null) (2 'x' (- 3)))))"},
    {R"(INSERT INTO dbo.[Odd Name] WITH (TABLOCK) (a, [b c], t.d) OUTPUT inserted.a, $action INTO @o (x, y) SELECT 1, 2, 3 ORDER BY 1)",
     R"((insert dbo.Odd Name [TABLOCK] (a b c d) (output inserted.a $action (into @o(x y))) (query (select 1 2 3) (order 1))))"},
    {R"(INSERT t DEFAULT VALUES)",
     R"((insert t default-values))"},
    {R"(INSERT INTO t (a) EXEC p 1, @x OUTPUT)",
     R"((insert t (a) (exec p 1 @x!)))"},
    {R"(INSERT t (SELECT 1))",
     R"((insert t (select 1)))"},
    {R"(INSERT TOP (5) t EXECUTE ('SELECT 1'))",
     R"((insert (top 5) t (exec text 'SELECT 1')))"},
    {R"(INSERT @t (a) VALUES (1))",
     R"((insert @t (a) (values (1))))"},
    {R"(UPDATE t SET a = 1)",
     R"((update t (set (= a 1))))"},
    {R"(UPDATE TOP (1) x SET x.a = s.b, b += 1, @v = c = d + 1, @w = 2, e = DEFAULT OUTPUT deleted.a FROM t x WITH (ROWLOCK) JOIN s ON s.i = x.i WHERE x.a = 1 OPTION (RECOMPILE))",
     R"((update (top 1) x (set (= x.a s.b) (+= b 1) (= @v c (+ d 1)) (= @w 2) (= e default)) (output deleted.a) (from ((join (t x [ROWLOCK]) (s) (= s.i x.i)))) (where (= x.a 1)) (option RECOMPILE)))"},
    {R"(UPDATE @t SET a = @v, @v = a)",
     R"((update @t (set (= a @v) (= @v a))))"},
    {R"(DELETE t)",
     R"((delete t))"},
    {R"(DELETE FROM t WHERE a = 1)",
     R"((delete t (where (= a 1))))"},
    {R"(DELETE t FROM t, s WHERE t.id = s.id)",
     R"((delete t (from (t) (s)) (where (= t.id s.id))))"},
    {R"(DELETE FROM t FROM t INNER JOIN s ON t.id = s.id)",
     R"((delete t (from ((join (t) (s) (= t.id s.id))))))"},
    {R"(DELETE TOP (10) x OUTPUT deleted.* FROM t AS x)",
     R"((delete (top 10) x (output deleted.*) (from (t x))))"},
    {R"(DELETE FROM t WITH (TABLOCK) WHERE a IN (SELECT b FROM s))",
     R"((delete t [TABLOCK] (where (in a (select b (from (s)))))))"},
    {R"(MERGE INTO t WITH (HOLDLOCK) AS d USING (SELECT 1 AS a) AS s ON d.a = s.a WHEN MATCHED AND d.b = 1 THEN UPDATE SET b = s.a WHEN NOT MATCHED THEN INSERT (a) VALUES (s.a) WHEN NOT MATCHED BY SOURCE THEN DELETE OUTPUT $action, inserted.a;)",
     R"((merge t [HOLDLOCK] d ((select (as a 1)) s) (= d.a s.a) (matched (and (= d.b 1)) (set (= b s.a))) (not-matched (insert (a) s.a)) (not-matched-by-source delete) (output $action inserted.a)))"},
    {R"(TRUNCATE TABLE dbo.t)",
     R"((truncate dbo.t))"},
    {R"(INSERT BULK dbo.t ([a] int, [b c] varchar(10) COLLATE Latin1_General_CI_AS NOT NULL) WITH (TABLOCK, ROWS_PER_BATCH = 1000))",
     R"((insert-bulk dbo.t (a int) (b c varchar(10) not-null Latin1_General_CI_AS) (with TABLOCK ROWS_PER_BATCH = 1000)))"},
    {R"(UPDATE STATISTICS t DROP USER x)",
     R"((unsupported 'UPDATE STATISTICS' t) (unsupported 'DROP USER' x))"},
    {R"(INSERT t (a) SELECT a FROM s WITH (NOLOCK) LEFT JOIN u (NOLOCK) ON u.a = s.a WHERE u.a IS NULL)",
     R"((insert t (a) (select a (from ((left-join (s [NOLOCK]) (u [NOLOCK]) (= u.a s.a)))) (where (null u.a)))))"},
};

constexpr Case kDefinitions[] = {
    {R"(CREATE TABLE dbo.t (id int IDENTITY(1, 1) NOT NULL CONSTRAINT pk_t PRIMARY KEY CLUSTERED, a varchar(10) COLLATE Latin1_General_CI_AS NULL DEFAULT 'x', b decimal(9, 3) NOT NULL CONSTRAINT df_b DEFAULT (0), c AS (a + 'z') PERSISTED, d uniqueidentifier ROWGUIDCOL DEFAULT NEWID(), e int REFERENCES s (id) ON DELETE CASCADE ON UPDATE SET NULL, f money CHECK (f > 0), CONSTRAINT uq UNIQUE NONCLUSTERED (a DESC, b) WITH (FILLFACTOR = 80) ON [PRIMARY], CONSTRAINT fk FOREIGN KEY (e, f) REFERENCES dbo.u (x, y), CHECK (a <> b)) ON [PRIMARY] TEXTIMAGE_ON [PRIMARY])",
     R"((table dbo.t (id int not-null identity(1,1) (primary pk_t clustered)) (a varchar(10) null collate Latin1_General_CI_AS (default 'x')) (b decimal(9,3) not-null (default df_b 0)) (c as (+ a 'z') persisted) (d uniqueidentifier rowguid (default (NEWID))) (e int (foreign s(id) delete-cascade update-set-null)) (f money (check (> f 0))) (unique uq nonclustered (a- b)) (foreign fk (e f) dbo.u(x y)) (check (<> a b))))"},
    {R"(CREATE TABLE #x (a int identity, b nvarchar(max), c sysname, d hierarchyid, e numeric(5), f time(3), g datetime2, INDEX ix (a), PRIMARY KEY (a, b)))",
     R"((table #x (a int identity(1,1)) (b nvarchar(max)) (c sysname(128)) (d ?hierarchyid) (e numeric(5,0)) (f time) (g datetime2) (primary (a b)) (index ix (a))))"},
    {R"(ALTER TABLE t ADD b varchar(5) NULL, c int NOT NULL CONSTRAINT df_c DEFAULT (3) WITH VALUES)",
     R"((alter-table t add (b varchar(5) null) (c int not-null (default df_c 3 with-values))))"},
    {R"(ALTER TABLE t WITH NOCHECK ADD CONSTRAINT fk FOREIGN KEY (a) REFERENCES s (a), CONSTRAINT df DEFAULT 0 FOR a)",
     R"((alter-table t add-nocheck (foreign fk (a) s(a)) (default df 0 for a)))"},
    {R"(ALTER TABLE t ALTER COLUMN a varchar(10) NOT NULL)",
     R"((alter-table t alter (a varchar(10) not-null)))"},
    {R"(ALTER TABLE t DROP COLUMN a, b, CONSTRAINT c)",
     R"((alter-table t drop (column a) (column b) (constraint c)))"},
    {R"(ALTER TABLE t DROP CONSTRAINT IF EXISTS x)",
     R"((alter-table t drop (constraint x if-exists)))"},
    {R"(ALTER TABLE t WITH CHECK CHECK CONSTRAINT ALL)",
     R"((alter-table t with-check check all))"},
    {R"(ALTER TABLE t NOCHECK CONSTRAINT a, b)",
     R"((alter-table t nocheck a b))"},
    {R"(ALTER TABLE t DISABLE TRIGGER ALL)",
     R"((alter-table t disable-trigger))"},
    {R"(CREATE UNIQUE CLUSTERED INDEX ix ON dbo.t (a, b DESC) INCLUDE (c) WHERE a > 1 WITH (IGNORE_DUP_KEY = ON, FILLFACTOR = 80) ON [PRIMARY])",
     R"((index ix unique clustered dbo.t (a b-) (include c) (where (> a 1)) ignore-dup))"},
    {R"(CREATE INDEX ix ON t (a) WITH DROP_EXISTING, FILLFACTOR = 90)",
     R"((index ix t (a) drop-existing))"},
    {R"(DROP INDEX t.ix, dbo.s.iy)",
     R"((drop-index (t ix) (dbo.s iy)))"},
    {R"(DROP INDEX IF EXISTS ix ON t)",
     R"((drop-index if-exists (t ix)))"},
    {R"(DROP TABLE IF EXISTS a, #b, dbo.c)",
     R"((drop-table if-exists a #b dbo.c))"},
    {R"(DROP PROC p)",
     R"((drop-procedure p))"},
    {R"(DROP VIEW v)",
     R"((drop-view v))"},
    {R"(CREATE VIEW dbo.v (a, b) WITH SCHEMABINDING AS WITH c AS (SELECT 1 AS x) SELECT x, 2 FROM c WITH CHECK OPTION)",
     R"((create-view dbo.v(a b) (query (select x 2 (from (c))) (with c (select (as x 1)))) check-option))"},
    {R"(CREATE PROCEDURE dbo.p;1 @a int, @b varchar(10) = 'none', @c decimal(9,2) = -1.5 OUTPUT, @d sysname = abc WITH RECOMPILE, EXECUTE AS OWNER AS SET NOCOUNT ON BEGIN SELECT @a END RETURN 0)",
     R"((create-procedure dbo.p (@a int) (@b varchar(10) 'none') (@c decimal(9,2) (- 1.5) output) (@d sysname(128) 'abc') recompile (set NOCOUNT on) (block (select @a)) (return 0)))"},
    {R"(CREATE OR ALTER PROC p (@a AS int OUT) AS SELECT 1; SELECT 2)",
     R"((create-or-alter-procedure p (@a int output) (select 1) (select 2)))"},
    {R"(ALTER PROCEDURE p AS EXEC q)",
     R"((alter-procedure p (exec q)))"},
    {R"(CREATE FUNCTION dbo.f (@a int) RETURNS int AS BEGIN RETURN @a END)",
     R"((unsupported 'CREATE FUNCTION' f))"},
    {R"(CREATE TRIGGER tr ON t FOR INSERT AS SELECT 1; SELECT 2)",
     R"((unsupported 'CREATE TRIGGER' tr))"},
    {R"(CREATE LOGIN x WITH PASSWORD = 'secret' SELECT 1)",
     R"((unsupported 'CREATE LOGIN' x) (select 1))"},
    {R"(CREATE DATABASE d ON PRIMARY (NAME = a, FILENAME = 'b') LOG ON (NAME = c) COLLATE Latin1_General_CI_AS)",
     R"((database d Latin1_General_CI_AS))"},
    {R"(ALTER DATABASE d SET RECOVERY SIMPLE, READ_COMMITTED_SNAPSHOT ON WITH ROLLBACK IMMEDIATE SELECT 1)",
     R"((alter-database d RECOVERY SIMPLE READ_COMMITTED_SNAPSHOT ON) (select 1))"},
    {R"(DROP DATABASE IF EXISTS a, b)",
     R"((drop-database if-exists a b))"},
    {R"(USE [master] SELECT 1)",
     R"((use master) (select 1))"},
    {R"(GRANT SELECT, INSERT ON dbo.t TO PUBLIC, x WITH GRANT OPTION)",
     R"((GRANT SELECT INSERT on dbo.t to PUBLIC x))"},
    {R"(DENY EXECUTE ON OBJECT::dbo.p TO y)",
     R"((DENY EXECUTE on dbo.p to y))"},
    {R"(BACKUP DATABASE x TO DISK = 'y' WITH INIT SELECT 1)",
     R"((unsupported 'BACKUP DATABASE' x) (select 1))"},
};

constexpr Case kFlow[] = {
    {R"(DECLARE @a int, @b AS varchar = 'x', @t TABLE (a int PRIMARY KEY, b int NULL), @c CURSOR)",
     R"((declare (@a int) (@b varchar(1) 'x') (@t table (a int (primary)) (b int null)) (@c cursor)))"},
    {R"(SET @a = (SELECT MAX(a) FROM t) SET @b += 1 SET @c ^= 2)",
     R"((set @a = (select (MAX a) (from (t)))) (set @b += 1) (set @c ^= 2))"},
    {R"(SET NOCOUNT ON SET ANSI_NULLS, ANSI_WARNINGS OFF SET STATISTICS IO ON)",
     R"((set NOCOUNT on) (set ANSI_NULLS ANSI_WARNINGS off) (set STATISTICS IO on))"},
    {R"(SET DATEFORMAT dmy SET LOCK_TIMEOUT -1 SET LANGUAGE Norsk SET ROWCOUNT @n SET DATEFIRST 1 SET TEXTSIZE 2147483647 SET CONTEXT_INFO 0x01)",
     R"((set DATEFORMAT 'dmy') (set LOCK_TIMEOUT (- 1)) (set LANGUAGE 'Norsk') (set ROWCOUNT @n) (set DATEFIRST 1) (set TEXTSIZE 2147483647) (set CONTEXT_INFO 0x01))"},
    {R"(SET IDENTITY_INSERT dbo.t ON SET TRANSACTION ISOLATION LEVEL READ UNCOMMITTED)",
     R"((set IDENTITY_INSERT dbo.t on) (isolation read-uncommitted))"},
    {R"(SET QUOTED_IDENTIFIER OFF SELECT "text" SET QUOTED_IDENTIFIER ON SELECT "name")",
     R"((set QUOTED_IDENTIFIER off) (select 'text') (set QUOTED_IDENTIFIER on) (select name))"},
    {R"(IF 1 = 1 SELECT 1 ELSE IF 2 = 2 BEGIN SELECT 2 END ELSE PRINT 'x')",
     R"((if (= 1 1) (select 1) (if (= 2 2) (block (select 2)) (print 'x'))))"},
    {R"(IF 1 = 1 SELECT 1; ELSE SELECT 2; SELECT 3)",
     R"((if (= 1 1) (select 1) (select 2)) (select 3))"},
    {R"(WHILE @i < 10 BEGIN IF @i = 2 CONTINUE BREAK END)",
     R"((while (< @i 10) (block (if (= @i 2) (continue)) (break))))"},
    {R"(GOTO ende PRINT 'never' ende: PRINT 'end' RETURN)",
     R"((goto ende) (print 'never') (label ende) (print 'end') (return))"},
    {R"(RETURN -1 RETURN (SELECT 1) RETURN @a + 1)",
     R"((return (- 1)) (return (select 1)) (return (+ @a 1)))"},
    {R"(BEGIN TRY SELECT 1 END TRY BEGIN CATCH THROW END CATCH)",
     R"((try (select 1) (catch (throw))))"},
    {R"(BEGIN TRY END TRY BEGIN CATCH END CATCH; THROW 50001, 'x', 1)",
     R"((try (catch)) (throw 50001 'x' 1))"},
    {R"(WAITFOR DELAY '00:00:01' WAITFOR TIME @t)",
     R"((delay '00:00:01') (time @t))"},
    {R"(PRINT 'a' + CAST(@b AS varchar(5)))",
     R"((print (+ 'a' (cast @b varchar(5)))))"},
    {R"(RAISERROR ('till %d: %s', 16, 3, 7, 'closed') WITH NOWAIT, SETERROR RAISERROR (50001, 10, 1) RAISERROR 50001 'old')",
     R"((raiserror 'till %d: %s' 16 3 7 'closed' nowait seterror) (raiserror 50001 10 1) (raiserror 50001 'old' old))"},
    {R"(EXEC p EXEC @r = dbo.p 1, 'x', @v OUTPUT, DEFAULT, NULL, -2, abc EXECUTE p @a = 1, @b = @c OUT, @d = DEFAULT)",
     R"((exec p) (exec @r= dbo.p 1 'x' @v! default null (- 2) 'abc') (exec p @a=1 @b=@c! @d=default))"},
    {R"(EXEC ('SELECT ' + @x + N'y') EXEC @p 1 EXEC p;1 2 WITH RECOMPILE EXEC db..p)",
     R"((exec text 'SELECT ' @x N'y') (exec @p 1) (exec p 2) (exec db..p))"},
    {R"(sp_helptext 'x', y)",
     R"((exec sp_helptext 'x' 'y'))"},
    {R"(sp_who)",
     R"((exec sp_who))"},
    {R"(BEGIN TRAN BEGIN TRANSACTION x WITH MARK 'y' SAVE TRAN sp COMMIT COMMIT WORK COMMIT TRAN x ROLLBACK TRANSACTION @n ROLLBACK WORK ROLLBACK)",
     R"((begin) (begin x) (save sp) (commit) (commit) (commit x) (rollback @n) (rollback) (rollback))"},
    {R"(DECLARE c CURSOR LOCAL FAST_FORWARD FOR SELECT a FROM t ORDER BY a FOR READ ONLY OPEN c FETCH NEXT FROM c INTO @a, @b WHILE @@FETCH_STATUS = 0 FETCH c INTO @a CLOSE c DEALLOCATE c)",
     R"((cursor c LOCAL FAST_FORWARD READ_ONLY (query (select a (from (t))) (order a))) (open c) (fetch NEXT c (into @a @b)) (while (= @@FETCH_STATUS 0) (fetch NEXT c (into @a))) (close c) (deallocate c))"},
    {R"(DBCC CHECKIDENT ('t', RESEED, 100) WITH NO_INFOMSGS DBCC TRACEON(1, -1) KILL 53 CHECKPOINT)",
     R"((dbcc CHECKIDENT 't' 'RESEED' 100 NO_INFOMSGS) (dbcc TRACEON 1 (- 1)) (kill 53) (checkpoint))"},
    {R"(BEGIN SELECT 1; SELECT 2; END;)",
     R"((block (select 1) (select 2)))"},
};

// clang-format on

template <std::size_t N>
void expectTrees(const Case (&cases)[N]) {
    for (const Case& c : cases) EXPECT_EQ(parsed(c.text), c.tree) << c.text;
}

TEST(Parser, Queries) {
    expectTrees(kQueries);
}
TEST(Parser, Changes) {
    expectTrees(kChanges);
}
TEST(Parser, Definitions) {
    expectTrees(kDefinitions);
}
TEST(Parser, FlowAndSettings) {
    expectTrees(kFlow);
}

TEST(Parser, TextWithoutStatementsIsAnEmptyBatch) {
    EXPECT_EQ(parsed(""), "");
    EXPECT_EQ(parsed(" ; -- nothing\n/* here */ ;"), "");
}

TEST(Parser, KeywordsAndNamesInAnyCase) {
    EXPECT_EQ(parsed("sElEcT Top 1 A fRoM [dbo].T As X wHeRe x.b iS nOt NuLl"),
              "(select (top 1) A (from (dbo.T X)) (where (not-null x.b)))");
}

TEST(Parser, SignBindsWeakerThanMultiplication) {
    EXPECT_EQ(parsed("SELECT 6 / -3 * 2"), "(select (/ 6 (- (* 3 2))))");
}

TEST(Parser, LiteralsHaveTheTypesTheyAreWrittenIn) {
    const std::array<std::pair<const char*, const char*>, 13> cases{{
        {"1", "int"},
        {"2147483647", "int"},
        {"2147483648", "numeric(10,0)"},
        {"1.50", "numeric(3,2)"},
        {"0.5", "numeric(1,1)"},
        {"00012.", "numeric(2,0)"},
        {"0.00", "numeric(2,2)"},
        {"1e3", "float"},
        {"$2.5", "money"},
        {"'abc'", "varchar(3)"},
        {"N'\u00c6\U0001F600'", "nvarchar(3)"},
        {"0x0102", "varbinary(2)"},
        {"'a''b'", "varchar(3)"},
    }};
    for (const auto& [text, type] : cases) {
        const ast::ExprPtr expr = parseExpression(text);
        const auto* literal = ast::as<ast::Literal>(*expr);
        ASSERT_NE(literal, nullptr) << text;
        EXPECT_EQ(typeDeclaration(literal->value.type), type) << text;
    }
}

TEST(Parser, LongTextIsOfTypeMax) {
    const ast::ExprPtr expr = parseExpression("'" + std::string(8001, 'x') + "'");
    EXPECT_EQ(ast::as<ast::Literal>(*expr)->value.type.length, Type::kMax);
}

TEST(Parser, BackslashAtLineEndJoinsTheLinesOfAText) {
    EXPECT_EQ(parsed("SELECT 'ab\\\r\ncd', 'ef\\\ngh', 'i\\j'"), "(select 'abcd' 'efgh' 'i\\j')");
}

TEST(Parser, DoubleQuotesAreTextWhenTheOptionIsOff) {
    const ast::Batch batch = parseBatch(R"(SELECT "it's" "x", [y])", {.quotedIdentifier = false});
    EXPECT_EQ(ast::dump(batch), "(select (as x 'it''s') y)");
}

TEST(Parser, PlacesAndExtentsPointIntoTheText) {
    const std::string text = "SELECT 1\n\n  UPDATE t SET a = (1 + b) WHERE c = 2 ;";
    const ast::Batch batch = parseBatch(text, {.firstLine = 10});
    ASSERT_EQ(batch.statements.size(), 2U);
    const ast::Statement& update = *batch.statements[1];
    EXPECT_EQ(update.place.line, 12);
    EXPECT_EQ(text.substr(update.text.begin, update.text.end - update.text.begin),
              "UPDATE t SET a = (1 + b) WHERE c = 2");
    const ast::Extent value = ast::as<ast::Update>(update)->assignments[0].expr->text;
    EXPECT_EQ(text.substr(value.begin, value.end - value.begin), "(1 + b)");
}

TEST(Parser, VerbOfAModuleCanBeReplacedInItsText) {
    const std::string text = "-- first\nCREATE  OR ALTER PROCEDURE p AS SELECT 1";
    const ast::Batch batch = parseBatch(text);
    const ast::Extent verb = ast::as<ast::CreateProcedure>(*batch.statements[0])->verbText;
    EXPECT_EQ(text.substr(verb.begin, verb.end - verb.begin), "CREATE  OR ALTER");
}

TEST(Parser, TextOfDefaultsChecksAndComputedColumnsIsKept) {
    const ast::Batch batch =
        parseBatch("CREATE TABLE t (a int DEFAULT ( 1+2 ), b int DEFAULT getdate() NULL, c AS a*2, CHECK ( a>b ))");
    const ast::TableDefinition& table = ast::as<ast::CreateTable>(*batch.statements[0])->definition;
    EXPECT_EQ(table.columns[0].constraints[0].exprText, "( 1+2 )");
    EXPECT_EQ(table.columns[1].constraints[0].exprText, "getdate()");
    EXPECT_EQ(table.columns[2].computedText, "a*2");
    EXPECT_EQ(table.constraints[0].exprText, "( a>b )");
}

TEST(Parser, ExpressionsConditionsAndDeclarationsAlone) {
    EXPECT_EQ(ast::dump(*parseExpression("(getdate())")), "(getdate)");
    EXPECT_EQ(ast::dump(*parseCondition("([a]>(0) AND [b] IS NULL)")), "(and (> a 0) (null b))");
    const auto parameters = parseDeclarations("@a int, @b varchar(10) = 'x' OUTPUT, @c decimal(9,2) out");
    ASSERT_EQ(parameters.size(), 3U);
    EXPECT_EQ(parameters[1].name, "@b");
    EXPECT_EQ(typeDeclaration(parameters[1].type.type), "varchar(10)");
    EXPECT_FALSE(parameters[0].output);
    EXPECT_TRUE(parameters[2].output);
    EXPECT_TRUE(parseDeclarations(" ").empty());
}

TEST(Parser, InsertBulkAlone) {
    const ast::InsertBulk bulk = parseInsertBulk("insert bulk t (a int, b nvarchar(max) not null) with (TABLOCK)");
    ASSERT_EQ(bulk.columns.size(), 2U);
    EXPECT_EQ(bulk.columns[1].nullable, false);
    EXPECT_EQ(bulk.columns[1].type.type.length, Type::kMax);
    EXPECT_THROW((void)parseInsertBulk("insert bulk t (a int) select 1"), SqlError);
}

TEST(Parser, StatementsAreWalkedOuterBeforeInner) {
    const ast::Batch batch = parseBatch(
        "IF 1 = 1 BEGIN PRINT 'a' WHILE 1 = 1 BREAK END ELSE BEGIN TRY PRINT 'b' END TRY BEGIN CATCH PRINT 'c' END CATCH");
    int count = 0;
    ast::forEachStatement(batch.statements, [&](const ast::Statement&) { ++count; });
    EXPECT_EQ(count, 8);
}

}  // namespace
}  // namespace sandbox
