// The bodies of the catalogue procedures: T-SQL over the catalogue views, columns as SQL Server documents them.
#pragma once

#include <string_view>

namespace sandbox::texts {

inline constexpr std::string_view kWhoParameters = "@loginame nvarchar(128) = NULL";
inline constexpr std::string_view kWho = R"(
SELECT spid, ecid = CAST(0 AS smallint), status, loginame, hostname, blk = CAST(blocked AS char(5)),
       dbname = DB_NAME(dbid), cmd, request_id = 0
FROM master.dbo.sysprocesses
WHERE @loginame IS NULL OR loginame = @loginame
ORDER BY spid)";

inline constexpr std::string_view kDatabases = R"(
SELECT DATABASE_NAME = name, DATABASE_SIZE = CAST(NULL AS int), REMARKS = CAST(NULL AS varchar(254))
FROM master.sys.databases
ORDER BY name)";

inline constexpr std::string_view kTablesParameters =
    "@table_name nvarchar(384) = NULL, @table_owner nvarchar(384) = NULL, @table_qualifier nvarchar(128) = NULL, "
    "@table_type varchar(100) = NULL, @fUsePattern bit = 1";
// Empty names with one "%" among them ask what there is: which databases, which owners, which kinds of tables.
inline constexpr std::string_view kTables = R"(
IF @table_qualifier = '%' AND @table_owner = '' AND @table_name = ''
    SELECT TABLE_QUALIFIER = CAST(name AS nvarchar(128)), TABLE_OWNER = CAST(NULL AS nvarchar(128)),
           TABLE_NAME = CAST(NULL AS nvarchar(128)), TABLE_TYPE = CAST(NULL AS varchar(32)),
           REMARKS = CAST(NULL AS varchar(254))
    FROM master.sys.databases
    ORDER BY 1
ELSE IF @table_qualifier = '' AND @table_owner = '%' AND @table_name = ''
    SELECT TABLE_QUALIFIER = CAST(NULL AS nvarchar(128)), TABLE_OWNER = CAST(name AS nvarchar(128)),
           TABLE_NAME = CAST(NULL AS nvarchar(128)), TABLE_TYPE = CAST(NULL AS varchar(32)),
           REMARKS = CAST(NULL AS varchar(254))
    FROM sys.schemas
    ORDER BY 2
ELSE IF @table_type = '%' AND @table_qualifier = '' AND @table_owner = '' AND @table_name = ''
    SELECT TABLE_QUALIFIER = CAST(NULL AS nvarchar(128)), TABLE_OWNER = CAST(NULL AS nvarchar(128)),
           TABLE_NAME = CAST(NULL AS nvarchar(128)), TABLE_TYPE = CAST(t.name AS varchar(32)),
           REMARKS = CAST(NULL AS varchar(254))
    FROM (VALUES ('SYSTEM TABLE'), ('TABLE'), ('VIEW')) AS t (name)
    ORDER BY 4
ELSE
SELECT TABLE_QUALIFIER = CAST(TABLE_CATALOG AS nvarchar(128)), TABLE_OWNER = CAST(TABLE_SCHEMA AS nvarchar(128)),
       TABLE_NAME = CAST(TABLE_NAME AS nvarchar(128)),
       TABLE_TYPE = CAST(CASE TABLE_TYPE WHEN 'VIEW' THEN 'VIEW' ELSE 'TABLE' END AS varchar(32)),
       REMARKS = CAST(NULL AS varchar(254))
FROM INFORMATION_SCHEMA.TABLES
WHERE (@table_name IS NULL OR TABLE_NAME LIKE @table_name)
  AND (@table_owner IS NULL OR TABLE_SCHEMA LIKE @table_owner)
  AND (@table_type IS NULL
       OR CHARINDEX('''' + CASE TABLE_TYPE WHEN 'VIEW' THEN 'VIEW' ELSE 'TABLE' END + '''', @table_type) > 0)
ORDER BY 4, 1, 2, 3)";

// The ODBC type of a column, the names that its sizes go by, and the kind of number it is.
inline constexpr std::string_view kColumnsParameters =
    "@table_name nvarchar(384), @table_owner nvarchar(384) = NULL, @table_qualifier nvarchar(128) = NULL, "
    "@column_name nvarchar(384) = NULL, @NameScope int = 0, @ODBCVer int = 2, @fUsePattern bit = 1";
inline constexpr std::string_view kColumns = R"(
SELECT TABLE_QUALIFIER = CAST(TABLE_CATALOG AS nvarchar(128)), TABLE_OWNER = CAST(TABLE_SCHEMA AS nvarchar(128)),
       TABLE_NAME = CAST(TABLE_NAME AS nvarchar(128)), COLUMN_NAME = CAST(COLUMN_NAME AS nvarchar(128)),
       DATA_TYPE = CAST(CASE DATA_TYPE
           WHEN 'bit' THEN -7 WHEN 'tinyint' THEN -6 WHEN 'smallint' THEN 5 WHEN 'int' THEN 4 WHEN 'bigint' THEN -5
           WHEN 'smallmoney' THEN 3 WHEN 'money' THEN 3 WHEN 'decimal' THEN 3 WHEN 'numeric' THEN 2
           WHEN 'real' THEN 7 WHEN 'float' THEN 6 WHEN 'char' THEN 1 WHEN 'varchar' THEN 12 WHEN 'text' THEN -1
           WHEN 'nchar' THEN -8 WHEN 'nvarchar' THEN -9 WHEN 'ntext' THEN -10 WHEN 'binary' THEN -2
           WHEN 'timestamp' THEN -2
           WHEN 'varbinary' THEN -3 WHEN 'image' THEN -4 WHEN 'uniqueidentifier' THEN -11
           WHEN 'date' THEN CASE @ODBCVer WHEN 3 THEN 91 ELSE 9 END WHEN 'time' THEN -154
           ELSE CASE @ODBCVer WHEN 3 THEN 93 ELSE 11 END END AS smallint),
       TYPE_NAME = CAST(DATA_TYPE AS nvarchar(128)),
       [PRECISION] = CAST(CASE
           WHEN CHARACTER_MAXIMUM_LENGTH = -1 THEN 0
           WHEN CHARACTER_MAXIMUM_LENGTH IS NOT NULL THEN CHARACTER_MAXIMUM_LENGTH
           WHEN DATA_TYPE = 'bit' THEN 1 WHEN DATA_TYPE = 'float' THEN 15 WHEN DATA_TYPE = 'real' THEN 7
           WHEN DATA_TYPE = 'datetime' THEN 23 WHEN DATA_TYPE = 'smalldatetime' THEN 16
           WHEN DATA_TYPE = 'date' THEN 10 WHEN DATA_TYPE = 'datetime2' THEN 27 WHEN DATA_TYPE = 'time' THEN 16
           WHEN DATA_TYPE = 'uniqueidentifier' THEN 36 WHEN DATA_TYPE = 'timestamp' THEN 8
           ELSE NUMERIC_PRECISION END AS int),
       LENGTH = CAST(CASE
           WHEN CHARACTER_OCTET_LENGTH = -1 THEN 0
           WHEN CHARACTER_OCTET_LENGTH IS NOT NULL THEN CHARACTER_OCTET_LENGTH
           WHEN DATA_TYPE IN ('bit', 'tinyint') THEN 1 WHEN DATA_TYPE = 'smallint' THEN 2
           WHEN DATA_TYPE IN ('int', 'real') THEN 4 WHEN DATA_TYPE IN ('bigint', 'float', 'timestamp') THEN 8
           WHEN DATA_TYPE = 'money' THEN 21 WHEN DATA_TYPE = 'smallmoney' THEN 12
           WHEN DATA_TYPE IN ('datetime', 'smalldatetime', 'datetime2', 'uniqueidentifier') THEN 16
           WHEN DATA_TYPE = 'date' THEN 6 WHEN DATA_TYPE = 'time' THEN 12
           ELSE NUMERIC_PRECISION + 2 END AS int),
       SCALE = CAST(CASE WHEN DATA_TYPE IN ('datetime') THEN 3 WHEN DATA_TYPE = 'smalldatetime' THEN 0
                         WHEN DATA_TYPE IN ('float', 'real') THEN NULL
                         WHEN DATA_TYPE IN ('datetime2', 'time') THEN DATETIME_PRECISION
                         ELSE NUMERIC_SCALE END AS smallint),
       RADIX = CAST(CASE WHEN NUMERIC_PRECISION IS NULL THEN NULL ELSE 10 END AS smallint),
       NULLABLE = CAST(CASE IS_NULLABLE WHEN 'YES' THEN 1 ELSE 0 END AS smallint),
       REMARKS = CAST(NULL AS varchar(254)), COLUMN_DEF = CAST(COLUMN_DEFAULT AS nvarchar(4000)),
       SQL_DATA_TYPE = CAST(CASE
           WHEN DATA_TYPE IN ('datetime', 'smalldatetime', 'date', 'datetime2') THEN 9
           WHEN DATA_TYPE = 'time' THEN -154 WHEN DATA_TYPE = 'bit' THEN -7 WHEN DATA_TYPE = 'tinyint' THEN -6
           WHEN DATA_TYPE = 'smallint' THEN 5 WHEN DATA_TYPE = 'int' THEN 4 WHEN DATA_TYPE = 'bigint' THEN -5
           WHEN DATA_TYPE IN ('smallmoney', 'money', 'decimal') THEN 3 WHEN DATA_TYPE = 'numeric' THEN 2
           WHEN DATA_TYPE = 'real' THEN 7 WHEN DATA_TYPE = 'float' THEN 6 WHEN DATA_TYPE = 'char' THEN 1
           WHEN DATA_TYPE = 'varchar' THEN 12 WHEN DATA_TYPE = 'text' THEN -1 WHEN DATA_TYPE = 'nchar' THEN -8
           WHEN DATA_TYPE = 'nvarchar' THEN -9 WHEN DATA_TYPE = 'ntext' THEN -10 WHEN DATA_TYPE IN ('binary', 'timestamp') THEN -2
           WHEN DATA_TYPE = 'varbinary' THEN -3 WHEN DATA_TYPE = 'image' THEN -4 ELSE -11 END AS smallint),
       SQL_DATETIME_SUB = CAST(CASE WHEN DATA_TYPE IN ('datetime', 'smalldatetime', 'datetime2') THEN 3
                                    WHEN DATA_TYPE = 'date' THEN 1 ELSE NULL END AS smallint),
       CHAR_OCTET_LENGTH = CAST(CHARACTER_OCTET_LENGTH AS int), ORDINAL_POSITION = CAST(ORDINAL_POSITION AS int),
       IS_NULLABLE = CAST(IS_NULLABLE AS varchar(254)), SS_DATA_TYPE = CAST(0 AS tinyint)
FROM INFORMATION_SCHEMA.COLUMNS
WHERE TABLE_NAME LIKE @table_name
  AND (@table_owner IS NULL OR TABLE_SCHEMA LIKE @table_owner)
  AND (@column_name IS NULL OR COLUMN_NAME LIKE @column_name)
ORDER BY TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, ORDINAL_POSITION)";

inline constexpr std::string_view kKeysParameters =
    "@table_name nvarchar(128), @table_owner nvarchar(128) = NULL, @table_qualifier nvarchar(128) = NULL";
inline constexpr std::string_view kKeys = R"(
SELECT TABLE_QUALIFIER = CAST(c.TABLE_CATALOG AS nvarchar(128)), TABLE_OWNER = CAST(c.TABLE_SCHEMA AS nvarchar(128)),
       TABLE_NAME = CAST(c.TABLE_NAME AS nvarchar(128)), COLUMN_NAME = CAST(k.COLUMN_NAME AS nvarchar(128)),
       KEY_SEQ = CAST(k.ORDINAL_POSITION AS smallint), PK_NAME = CAST(c.CONSTRAINT_NAME AS nvarchar(128))
FROM INFORMATION_SCHEMA.TABLE_CONSTRAINTS c
INNER JOIN INFORMATION_SCHEMA.KEY_COLUMN_USAGE k
        ON k.CONSTRAINT_NAME = c.CONSTRAINT_NAME AND k.TABLE_NAME = c.TABLE_NAME AND k.TABLE_SCHEMA = c.TABLE_SCHEMA
WHERE c.CONSTRAINT_TYPE = 'PRIMARY KEY' AND c.TABLE_NAME = @table_name
  AND (@table_owner IS NULL OR c.TABLE_SCHEMA = @table_owner)
ORDER BY 1, 2, 3, 5)";

inline constexpr std::string_view kTypesParameters = "@data_type int = 0, @ODBCVer int = 2";
inline constexpr std::string_view kTypes = R"(
SELECT TYPE_NAME = CAST(t.name AS nvarchar(128)), DATA_TYPE = CAST(t.odbc AS smallint), [PRECISION] = t.size,
       LITERAL_PREFIX = CAST(t.prefix AS varchar(32)), LITERAL_SUFFIX = CAST(t.suffix AS varchar(32)),
       CREATE_PARAMS = CAST(t.parameters AS varchar(32)), NULLABLE = CAST(CASE t.name WHEN 'timestamp' THEN 0 ELSE 1 END AS smallint),
       CASE_SENSITIVE = CAST(0 AS smallint), SEARCHABLE = CAST(t.searchable AS smallint),
       UNSIGNED_ATTRIBUTE = CAST(t.isUnsigned AS smallint), MONEY = CAST(t.isMoney AS smallint),
       AUTO_INCREMENT = CAST(CASE WHEN t.isUnsigned IS NULL THEN NULL ELSE 0 END AS smallint),
       LOCAL_TYPE_NAME = CAST(t.name AS nvarchar(128)), MINIMUM_SCALE = CAST(t.low AS smallint),
       MAXIMUM_SCALE = CAST(t.high AS smallint),
       SQL_DATA_TYPE = CAST(CASE WHEN t.odbc IN (9, 10, 11, 91, 92, 93) THEN 9 ELSE t.odbc END AS smallint),
       SQL_DATETIME_SUB = CAST(CASE WHEN t.odbc IN (11, 93) THEN 3 WHEN t.odbc IN (9, 91) THEN 1 ELSE NULL END AS smallint),
       NUM_PREC_RADIX = CAST(CASE WHEN t.isUnsigned IS NULL THEN NULL ELSE 10 END AS int),
       INTERVAL_PRECISION = CAST(NULL AS smallint), USERTYPE = CAST(0 AS smallint)
FROM (VALUES
    ('bit', -7, 1, NULL, NULL, NULL, 2, NULL, 0, 0, 0),
    ('tinyint', -6, 3, NULL, NULL, NULL, 2, 1, 0, 0, 0),
    ('smallint', 5, 5, NULL, NULL, NULL, 2, 0, 0, 0, 0),
    ('int', 4, 10, NULL, NULL, NULL, 2, 0, 0, 0, 0),
    ('bigint', -5, 19, NULL, NULL, NULL, 2, 0, 0, 0, 0),
    ('smallmoney', 3, 10, '$', NULL, NULL, 2, 0, 1, 4, 4),
    ('money', 3, 19, '$', NULL, NULL, 2, 0, 1, 4, 4),
    ('decimal', 3, 38, NULL, NULL, 'precision,scale', 2, 0, 0, 0, 38),
    ('numeric', 2, 38, NULL, NULL, 'precision,scale', 2, 0, 0, 0, 38),
    ('real', 7, 7, NULL, NULL, NULL, 2, 0, 0, NULL, NULL),
    ('float', 6, 15, NULL, NULL, NULL, 2, 0, 0, NULL, NULL),
    ('char', 1, 8000, '''', '''', 'length', 3, NULL, 0, NULL, NULL),
    ('varchar', 12, 8000, '''', '''', 'max length', 3, NULL, 0, NULL, NULL),
    ('text', -1, 2147483647, '''', '''', NULL, 1, NULL, 0, NULL, NULL),
    ('nchar', -8, 4000, 'N''', '''', 'length', 3, NULL, 0, NULL, NULL),
    ('nvarchar', -9, 4000, 'N''', '''', 'max length', 3, NULL, 0, NULL, NULL),
    ('ntext', -10, 1073741823, 'N''', '''', NULL, 1, NULL, 0, NULL, NULL),
    ('binary', -2, 8000, '0x', NULL, 'length', 2, NULL, 0, NULL, NULL),
    ('timestamp', -2, 8, '0x', NULL, NULL, 2, NULL, 0, NULL, NULL),
    ('varbinary', -3, 8000, '0x', NULL, 'max length', 2, NULL, 0, NULL, NULL),
    ('image', -4, 2147483647, '0x', NULL, NULL, 0, NULL, 0, NULL, NULL),
    ('uniqueidentifier', -11, 36, '''', '''', NULL, 2, NULL, 0, NULL, NULL),
    ('date', CASE @ODBCVer WHEN 3 THEN 91 ELSE 9 END, 10, '''', '''', NULL, 3, NULL, 0, NULL, NULL),
    ('time', -154, 16, '''', '''', 'scale', 3, NULL, 0, 0, 7),
    ('smalldatetime', CASE @ODBCVer WHEN 3 THEN 93 ELSE 11 END, 16, '''', '''', NULL, 3, NULL, 0, 0, 0),
    ('datetime', CASE @ODBCVer WHEN 3 THEN 93 ELSE 11 END, 23, '''', '''', NULL, 3, NULL, 0, 3, 3),
    ('datetime2', CASE @ODBCVer WHEN 3 THEN 93 ELSE 11 END, 27, '''', '''', 'scale', 3, NULL, 0, 0, 7)
) AS t (name, odbc, size, prefix, suffix, parameters, searchable, isUnsigned, isMoney, low, high)
WHERE @data_type = 0 OR t.odbc = @data_type
ORDER BY 2, 1)";

}  // namespace sandbox::texts
