// The bodies of the procedures that drivers and their tools call: T-SQL over the catalogue views, columns as SQL Server
// documents them or as its drivers read them.
#pragma once

#include <string_view>

namespace sandbox::texts {

inline constexpr std::string_view kServerInfoParameters = "@attribute_id int = NULL";
inline constexpr std::string_view kServerInfo = R"(
SELECT attribute_id = i.id, attribute_name = CAST(i.name AS varchar(60)), attribute_value = CAST(i.value AS varchar(255))
FROM (VALUES
    (1, 'DBMS_NAME', 'Microsoft SQL Server'),
    (2, 'DBMS_VER', @@VERSION),
    (10, 'OWNER_TERM', 'owner'),
    (11, 'TABLE_TERM', 'table'),
    (12, 'MAX_OWNER_NAME_LENGTH', '128'),
    (13, 'TABLE_LENGTH', '128'),
    (14, 'MAX_QUAL_LENGTH', '128'),
    (15, 'COLUMN_LENGTH', '128'),
    (16, 'IDENTIFIER_CASE', 'MIXED'),
    (17, 'TX_ISOLATION', '2'),
    (18, 'COLLATION_SEQ', 'charset=iso_1 collation=' + CAST(SERVERPROPERTY('Collation') AS varchar(128))),
    (19, 'SAVEPOINT_SUPPORT', 'Y'),
    (20, 'MULTI_RESULT_SETS', 'Y'),
    (22, 'ACCESSIBLE_TABLES', 'Y'),
    (100, 'USERID_LENGTH', '128'),
    (101, 'QUALIFIER_TERM', 'database'),
    (102, 'NAMED_TRANSACTIONS', 'Y'),
    (103, 'SPROC_AS_LANGUAGE', 'Y'),
    (104, 'ACCESSIBLE_SPROC', 'Y'),
    (105, 'MAX_INDEX_COLS', '16'),
    (106, 'RENAME_TABLE', 'Y'),
    (107, 'RENAME_COLUMN', 'Y'),
    (108, 'DROP_COLUMN', 'Y'),
    (109, 'INCREASE_COLUMN_LENGTH', 'Y'),
    (110, 'DDL_IN_TRANSACTION', 'Y'),
    (111, 'DESCENDING_INDEXES', 'Y'),
    (112, 'SP_RENAME', 'Y'),
    (113, 'REMOTE_SPROC', 'Y'),
    (500, 'SYS_SPROC_VERSION', CAST(SERVERPROPERTY('ProductVersion') AS varchar(30)))
) AS i (id, name, value)
WHERE @attribute_id IS NULL OR i.id = @attribute_id
ORDER BY 1)";

// Every login owns every table.
inline constexpr std::string_view kTablePrivilegesParameters =
    "@table_name nvarchar(384), @table_owner nvarchar(384) = NULL, @table_qualifier nvarchar(128) = NULL, "
    "@fUsePattern bit = 1";
inline constexpr std::string_view kTablePrivileges = R"(
SELECT TABLE_QUALIFIER = CAST(t.TABLE_CATALOG AS nvarchar(128)), TABLE_OWNER = CAST(t.TABLE_SCHEMA AS nvarchar(128)),
       TABLE_NAME = CAST(t.TABLE_NAME AS nvarchar(128)), GRANTOR = CAST('dbo' AS nvarchar(128)),
       GRANTEE = CAST('dbo' AS nvarchar(128)), PRIVILEGE = CAST(p.name AS varchar(32)),
       IS_GRANTABLE = CAST('YES' AS varchar(3))
FROM INFORMATION_SCHEMA.TABLES t
CROSS JOIN (VALUES ('DELETE'), ('INSERT'), ('REFERENCES'), ('SELECT'), ('UPDATE')) AS p (name)
WHERE t.TABLE_NAME LIKE @table_name AND (@table_owner IS NULL OR t.TABLE_SCHEMA LIKE @table_owner)
ORDER BY 1, 2, 3, 6)";

inline constexpr std::string_view kColumnPrivilegesParameters =
    "@table_name nvarchar(128), @table_owner nvarchar(128) = NULL, @table_qualifier nvarchar(128) = NULL, "
    "@column_name nvarchar(384) = NULL";
inline constexpr std::string_view kColumnPrivileges = R"(
SELECT TABLE_QUALIFIER = CAST(c.TABLE_CATALOG AS nvarchar(128)), TABLE_OWNER = CAST(c.TABLE_SCHEMA AS nvarchar(128)),
       TABLE_NAME = CAST(c.TABLE_NAME AS nvarchar(128)), COLUMN_NAME = CAST(c.COLUMN_NAME AS nvarchar(128)),
       GRANTOR = CAST('dbo' AS nvarchar(128)), GRANTEE = CAST('dbo' AS nvarchar(128)),
       PRIVILEGE = CAST(p.name AS varchar(32)), IS_GRANTABLE = CAST('YES' AS varchar(3))
FROM INFORMATION_SCHEMA.COLUMNS c
CROSS JOIN (VALUES ('INSERT'), ('REFERENCES'), ('SELECT'), ('UPDATE')) AS p (name)
WHERE c.TABLE_NAME = @table_name AND (@table_owner IS NULL OR c.TABLE_SCHEMA = @table_owner)
  AND (@column_name IS NULL OR c.COLUMN_NAME LIKE @column_name)
ORDER BY 1, 2, 3, 4, 7)";

// One row a line, each with its own end of line.
inline constexpr std::string_view kHelpTextParameters = "@objname nvarchar(776), @columnname nvarchar(128) = NULL";
inline constexpr std::string_view kHelpText = R"(
SET NOCOUNT ON
DECLARE @text nvarchar(max), @end int, @database nvarchar(128)
DECLARE @lines TABLE (number int IDENTITY, line nvarchar(255))
SELECT @text = definition, @database = DB_NAME() FROM (SELECT 1 AS one) AS o
LEFT JOIN sys.sql_modules ON object_id = OBJECT_ID(@objname)
IF OBJECT_ID(@objname) IS NULL
BEGIN
    SET @text = 'The object ''' + @objname + ''' does not exist in database ''' + @database +
                ''' or is invalid for this operation.'
    RAISERROR 15009 @text
END
ELSE IF @text IS NULL
BEGIN
    SET @text = 'There is no text for object ''' + @objname + '''.'
    RAISERROR 15197 @text
END
ELSE
BEGIN
    WHILE LEN(@text + '.') > 1
    BEGIN
        SET @end = CHARINDEX(CHAR(10), @text)
        IF @end = 0 OR @end > 255 SET @end = 255
        INSERT INTO @lines (line) VALUES (SUBSTRING(@text, 1, @end))
        SET @text = SUBSTRING(@text, @end + 1, 2147483647)
    END
    SET NOCOUNT OFF
    SELECT Text = line FROM @lines ORDER BY number
END)";

// What a bulk copy asks for: the collations of a table's columns, named as in "db.[schema].[table]".
inline constexpr std::string_view kTableCollationsParameters = "@object nvarchar(4000)";
inline constexpr std::string_view kTableCollations = R"(
SELECT colid = CAST(c.column_id AS int), name = CAST(c.name AS nvarchar(128)),
       tds_collation = CAST(CASE WHEN c.collation_name IS NULL THEN NULL ELSE 0x0604D00000 END AS binary(5)),
       collation = CAST(c.collation_name AS nvarchar(128))
FROM sys.columns c
WHERE c.object_id = OBJECT_ID(CASE WHEN @object LIKE '.%' THEN SUBSTRING(@object, 2, 4000) ELSE @object END)
ORDER BY c.column_id)";

// A procedure's parameters, their types numbered as .NET numbers them.
inline constexpr std::string_view kManagedParametersParameters =
    "@procedure_name nvarchar(128), @group_number int = 1, @procedure_schema nvarchar(128) = NULL, "
    "@parameter_name nvarchar(128) = NULL";
inline constexpr std::string_view kManagedParameters = R"(
SELECT p.PROCEDURE_CATALOG, p.PROCEDURE_SCHEMA, p.PROCEDURE_NAME, p.PARAMETER_NAME,
       ORDINAL_POSITION = CAST(p.ORDINAL_POSITION AS smallint),
       PARAMETER_TYPE = CAST(p.PARAMETER_TYPE AS smallint), PARAMETER_HASDEFAULT = CAST(0 AS tinyint), PARAMETER_DEFAULT = CAST(NULL AS nvarchar(255)),
       IS_NULLABLE = CAST(1 AS bit),
       MANAGED_DATA_TYPE = CAST(CASE p.DATA_TYPE
           WHEN 'bigint' THEN 0 WHEN 'binary' THEN 1 WHEN 'bit' THEN 2 WHEN 'char' THEN 3 WHEN 'datetime' THEN 4
           WHEN 'decimal' THEN 5 WHEN 'numeric' THEN 5 WHEN 'float' THEN 6 WHEN 'image' THEN 7 WHEN 'int' THEN 8
           WHEN 'money' THEN 9 WHEN 'nchar' THEN 10 WHEN 'ntext' THEN 11 WHEN 'nvarchar' THEN 12 WHEN 'real' THEN 13
           WHEN 'uniqueidentifier' THEN 14 WHEN 'smalldatetime' THEN 15 WHEN 'smallint' THEN 16
           WHEN 'smallmoney' THEN 17 WHEN 'text' THEN 18 WHEN 'timestamp' THEN 19 WHEN 'tinyint' THEN 20 WHEN 'varbinary' THEN 21
           WHEN 'varchar' THEN 22 WHEN 'date' THEN 31 WHEN 'time' THEN 32 ELSE 33 END AS smallint),
       p.CHARACTER_MAXIMUM_LENGTH, NUMERIC_PRECISION = CAST(p.NUMERIC_PRECISION AS smallint),
       NUMERIC_SCALE = CAST(p.NUMERIC_SCALE AS smallint),
       TYPE_CATALOG_NAME = CAST(NULL AS nvarchar(128)), TYPE_SCHEMA_NAME = CAST(NULL AS nvarchar(128)),
       TYPE_NAME = CAST(p.DATA_TYPE AS nvarchar(128)), XML_CATALOGNAME = CAST(NULL AS nvarchar(128)),
       XML_SCHEMANAME = CAST(NULL AS nvarchar(128)), XML_SCHEMACOLLECTIONNAME = CAST(NULL AS nvarchar(128)),
       SS_DATETIME_PRECISION = p.DATETIME_PRECISION
FROM (SELECT PROCEDURE_CATALOG = CAST(DB_NAME() AS nvarchar(128)),
             PROCEDURE_SCHEMA = CAST(SCHEMA_NAME(o.schema_id) AS nvarchar(128)),
             PROCEDURE_NAME = CAST(o.name AS nvarchar(128)), PARAMETER_NAME = CAST('@RETURN_VALUE' AS nvarchar(128)),
             ORDINAL_POSITION = CAST(0 AS smallint), PARAMETER_TYPE = CAST(4 AS smallint),
             DATA_TYPE = CAST('int' AS nvarchar(128)), CHARACTER_MAXIMUM_LENGTH = CAST(NULL AS int),
             NUMERIC_PRECISION = CAST(10 AS smallint), NUMERIC_SCALE = CAST(0 AS smallint),
             DATETIME_PRECISION = CAST(NULL AS smallint)
      FROM sys.procedures o
      WHERE o.name = @procedure_name
      UNION ALL
      SELECT SPECIFIC_CATALOG, SPECIFIC_SCHEMA, SPECIFIC_NAME, PARAMETER_NAME, ORDINAL_POSITION,
             CASE PARAMETER_MODE WHEN 'IN' THEN 1 ELSE 2 END, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, NUMERIC_PRECISION,
             NUMERIC_SCALE, DATETIME_PRECISION
      FROM INFORMATION_SCHEMA.PARAMETERS
      WHERE SPECIFIC_NAME = @procedure_name) AS p
WHERE (@parameter_name IS NULL OR p.PARAMETER_NAME = @parameter_name)
  AND (@procedure_schema IS NULL OR p.PROCEDURE_SCHEMA = @procedure_schema)
ORDER BY p.ORDINAL_POSITION)";

inline constexpr std::string_view kManagedColumnsParameters =
    "@Catalog nvarchar(128) = NULL, @Owner nvarchar(128) = NULL, @Table nvarchar(128) = NULL, "
    "@Column nvarchar(128) = NULL, @SchemaType int = 0";
inline constexpr std::string_view kManagedColumns = R"(
SELECT TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, COLUMN_NAME, ORDINAL_POSITION, COLUMN_DEFAULT, IS_NULLABLE, DATA_TYPE,
       CHARACTER_MAXIMUM_LENGTH, CHARACTER_OCTET_LENGTH, NUMERIC_PRECISION, NUMERIC_PRECISION_RADIX, NUMERIC_SCALE,
       DATETIME_PRECISION, CHARACTER_SET_CATALOG, CHARACTER_SET_SCHEMA, CHARACTER_SET_NAME, COLLATION_CATALOG,
       IS_FILESTREAM = CAST(0 AS bit), IS_SPARSE = CAST(0 AS bit), IS_COLUMN_SET = CAST(0 AS bit)
FROM INFORMATION_SCHEMA.COLUMNS
WHERE (@Owner IS NULL OR TABLE_SCHEMA = @Owner) AND (@Table IS NULL OR TABLE_NAME = @Table)
  AND (@Column IS NULL OR COLUMN_NAME = @Column) AND @SchemaType IN (0, 1)
ORDER BY TABLE_SCHEMA, TABLE_NAME, ORDINAL_POSITION)";

inline constexpr std::string_view kManagedIndexesParameters =
    "@Catalog nvarchar(128) = NULL, @Owner nvarchar(128) = NULL, @Table nvarchar(128) = NULL, "
    "@Name nvarchar(128) = NULL";
inline constexpr std::string_view kManagedIndexes = R"(
SELECT constraint_catalog = DB_NAME(), constraint_schema = SCHEMA_NAME(o.schema_id), constraint_name = x.name,
       table_catalog = DB_NAME(), table_schema = SCHEMA_NAME(o.schema_id), table_name = o.name, index_name = x.name, type_desc = x.type_desc
FROM sys.indexes x
INNER JOIN sys.tables o ON o.object_id = x.object_id
WHERE x.index_id > 0 AND (@Table IS NULL OR o.name = @Table) AND (@Name IS NULL OR x.name = @Name)
  AND (@Owner IS NULL OR SCHEMA_NAME(o.schema_id) = @Owner)
ORDER BY o.name, x.name)";

inline constexpr std::string_view kManagedIndexColumnsParameters =
    "@Catalog nvarchar(128) = NULL, @Owner nvarchar(128) = NULL, @Table nvarchar(128) = NULL, "
    "@Name nvarchar(128) = NULL, @Column nvarchar(128) = NULL";
inline constexpr std::string_view kManagedIndexColumns = R"(
SELECT constraint_catalog = DB_NAME(), constraint_schema = SCHEMA_NAME(o.schema_id), constraint_name = x.name,
       table_catalog = DB_NAME(), table_schema = SCHEMA_NAME(o.schema_id), table_name = o.name, column_name = c.name,
       ordinal_position = CAST(k.key_ordinal AS int), KeyType = c.system_type_id, index_name = x.name
FROM sys.indexes x
INNER JOIN sys.tables o ON o.object_id = x.object_id
INNER JOIN sys.index_columns k ON k.object_id = x.object_id AND k.index_id = x.index_id AND k.key_ordinal > 0
INNER JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id
WHERE (@Table IS NULL OR o.name = @Table) AND (@Name IS NULL OR x.name = @Name) AND (@Column IS NULL OR c.name = @Column)
  AND (@Owner IS NULL OR SCHEMA_NAME(o.schema_id) = @Owner)
ORDER BY o.name, x.name, k.key_ordinal)";

}  // namespace sandbox::texts
