// The bodies of the catalogue procedures about indexes, keys and procedures: T-SQL over the catalogue views and over
// their sisters in system_procedures_texts.h, columns as SQL Server documents them.
#pragma once

#include <string_view>

namespace sandbox::texts {

inline constexpr std::string_view kStatisticsParameters =
    "@table_name nvarchar(128), @table_owner nvarchar(128) = NULL, @table_qualifier nvarchar(128) = NULL, "
    "@index_name nvarchar(128) = '%', @is_unique char(1) = 'N', @accuracy char(1) = 'Q'";
inline constexpr std::string_view kStatistics = R"(
SELECT TABLE_QUALIFIER = CAST(DB_NAME() AS nvarchar(128)),
       TABLE_OWNER = CAST(SCHEMA_NAME(o.schema_id) AS nvarchar(128)),
       TABLE_NAME = CAST(o.name AS nvarchar(128)), NON_UNIQUE = CAST(NULL AS smallint),
       INDEX_QUALIFIER = CAST(NULL AS nvarchar(128)), INDEX_NAME = CAST(NULL AS nvarchar(128)),
       TYPE = CAST(0 AS smallint), SEQ_IN_INDEX = CAST(NULL AS smallint), COLUMN_NAME = CAST(NULL AS nvarchar(128)),
       COLLATION = CAST(NULL AS char(1)), CARDINALITY = CAST(i.rows AS int), PAGES = CAST(i.dpages AS int),
       FILTER_CONDITION = CAST(NULL AS varchar(128))
FROM sys.objects o
INNER JOIN sysindexes i ON i.id = o.object_id AND i.indid IN (0, 1)
WHERE o.type = 'U' AND o.name = @table_name AND (@table_owner IS NULL OR @table_owner = SCHEMA_NAME(o.schema_id))
UNION ALL
SELECT DB_NAME(), SCHEMA_NAME(o.schema_id), o.name, CASE x.is_unique WHEN 1 THEN 0 ELSE 1 END, o.name, x.name,
       CASE x.type WHEN 1 THEN 1 ELSE 3 END, k.key_ordinal, c.name, CASE k.is_descending_key WHEN 1 THEN 'D' ELSE 'A' END,
       NULL, NULL, NULL
FROM sys.objects o
INNER JOIN sys.indexes x ON x.object_id = o.object_id AND x.index_id > 0
INNER JOIN sys.index_columns k ON k.object_id = x.object_id AND k.index_id = x.index_id AND k.key_ordinal > 0
INNER JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id
WHERE o.type = 'U' AND o.name = @table_name AND (@table_owner IS NULL OR @table_owner = SCHEMA_NAME(o.schema_id))
  AND x.name LIKE @index_name AND (@is_unique <> 'Y' OR x.is_unique = 1)
ORDER BY 4, 7, 6, 8)";

inline constexpr std::string_view kSpecialColumnsParameters =
    "@table_name nvarchar(128), @table_owner nvarchar(128) = NULL, @qualifier nvarchar(128) = NULL, "
    "@col_type char(1) = 'R', @scope char(1) = 'T', @nullable char(1) = 'U', @ODBCVer int = 2";
// R: the columns of the primary key, else of the first unique index. V: the column that changes by itself.
inline constexpr std::string_view kSpecialColumns = R"(
SET NOCOUNT ON
DECLARE @columns TABLE (TABLE_QUALIFIER nvarchar(128), TABLE_OWNER nvarchar(128), TABLE_NAME nvarchar(128),
                        COLUMN_NAME nvarchar(128), DATA_TYPE smallint, TYPE_NAME nvarchar(128), [PRECISION] int,
                        LENGTH int, SCALE smallint, RADIX smallint, NULLABLE smallint, REMARKS varchar(254),
                        COLUMN_DEF nvarchar(4000), SQL_DATA_TYPE smallint, SQL_DATETIME_SUB smallint,
                        CHAR_OCTET_LENGTH int, ORDINAL_POSITION int, IS_NULLABLE varchar(254), SS_DATA_TYPE tinyint)
INSERT INTO @columns EXEC sp_columns @table_name, @table_owner, @qualifier, NULL, 0, @ODBCVer
DECLARE @index int, @table int
SELECT @table = OBJECT_ID(ISNULL(QUOTENAME(@table_owner) + '.', '') + QUOTENAME(@table_name))
SELECT @index = (SELECT TOP 1 x.index_id
                 FROM sys.indexes x
                 WHERE x.object_id = @table AND x.is_unique = 1
                 ORDER BY CASE x.is_primary_key WHEN 1 THEN 0 ELSE 1 END, x.index_id)
SET NOCOUNT OFF
SELECT SCOPE = CAST(CASE @col_type WHEN 'V' THEN NULL ELSE CASE @scope WHEN 'C' THEN 0 ELSE 1 END END AS smallint),
       c.COLUMN_NAME, c.DATA_TYPE, c.TYPE_NAME, c.[PRECISION], c.LENGTH, c.SCALE, PSEUDO_COLUMN = CAST(1 AS smallint)
FROM @columns c
INNER JOIN sys.columns s ON s.object_id = @table AND s.name = c.COLUMN_NAME
LEFT JOIN sys.index_columns k ON k.object_id = s.object_id AND k.column_id = s.column_id AND k.index_id = @index
WHERE c.TABLE_OWNER = OBJECT_SCHEMA_NAME(@table) AND c.TABLE_NAME = @table_name
  AND (@col_type = 'R' AND k.key_ordinal > 0 OR @col_type = 'V' AND c.TYPE_NAME = 'timestamp')
  AND (@nullable <> 'O' OR c.NULLABLE = 0)
ORDER BY k.key_ordinal)";

inline constexpr std::string_view kForeignKeysParameters =
    "@pktable_name nvarchar(128) = NULL, @pktable_owner nvarchar(128) = NULL, @pktable_qualifier nvarchar(128) = NULL, "
    "@fktable_name nvarchar(128) = NULL, @fktable_owner nvarchar(128) = NULL, @fktable_qualifier nvarchar(128) = NULL";
inline constexpr std::string_view kForeignKeys = R"(
SELECT PKTABLE_QUALIFIER = CAST(DB_NAME() AS nvarchar(128)),
       PKTABLE_OWNER = CAST(SCHEMA_NAME(p.schema_id) AS nvarchar(128)),
       PKTABLE_NAME = CAST(p.name AS nvarchar(128)), PKCOLUMN_NAME = CAST(pc.name AS nvarchar(128)),
       FKTABLE_QUALIFIER = CAST(DB_NAME() AS nvarchar(128)),
       FKTABLE_OWNER = CAST(SCHEMA_NAME(f.schema_id) AS nvarchar(128)),
       FKTABLE_NAME = CAST(f.name AS nvarchar(128)), FKCOLUMN_NAME = CAST(fc.name AS nvarchar(128)),
       KEY_SEQ = CAST(k.constraint_column_id AS smallint),
       UPDATE_RULE = CAST(CASE r.update_referential_action WHEN 1 THEN 0 WHEN 2 THEN 2 WHEN 3 THEN 4 ELSE 1 END AS smallint),
       DELETE_RULE = CAST(CASE r.delete_referential_action WHEN 1 THEN 0 WHEN 2 THEN 2 WHEN 3 THEN 4 ELSE 1 END AS smallint),
       FK_NAME = CAST(r.name AS nvarchar(128)), PK_NAME = CAST(x.name AS nvarchar(128)),
       DEFERRABILITY = CAST(7 AS smallint)
FROM sys.foreign_keys r
INNER JOIN sys.foreign_key_columns k ON k.constraint_object_id = r.object_id
INNER JOIN sys.objects p ON p.object_id = r.referenced_object_id
INNER JOIN sys.objects f ON f.object_id = r.parent_object_id
INNER JOIN sys.columns pc ON pc.object_id = p.object_id AND pc.column_id = k.referenced_column_id
INNER JOIN sys.columns fc ON fc.object_id = f.object_id AND fc.column_id = k.parent_column_id
LEFT JOIN sys.indexes x ON x.object_id = p.object_id AND x.is_primary_key = 1
WHERE (@pktable_name IS NULL OR p.name = @pktable_name) AND (@fktable_name IS NULL OR f.name = @fktable_name)
  AND (@pktable_owner IS NULL OR SCHEMA_NAME(p.schema_id) = @pktable_owner)
  AND (@fktable_owner IS NULL OR SCHEMA_NAME(f.schema_id) = @fktable_owner)
ORDER BY 5, 6, 7, 12, 9)";

inline constexpr std::string_view kProceduresParameters =
    "@sp_name nvarchar(390) = NULL, @sp_owner nvarchar(384) = NULL, @sp_qualifier nvarchar(128) = NULL, "
    "@fUsePattern bit = 1";
inline constexpr std::string_view kProcedures = R"(
SELECT PROCEDURE_QUALIFIER = CAST(DB_NAME() AS nvarchar(128)),
       PROCEDURE_OWNER = CAST(SCHEMA_NAME(o.schema_id) AS nvarchar(128)),
       PROCEDURE_NAME = CAST(o.name + ';1' AS nvarchar(134)), NUM_INPUT_PARAMS = -1, NUM_OUTPUT_PARAMS = -1,
       NUM_RESULT_SETS = -1, REMARKS = CAST(NULL AS varchar(254)), PROCEDURE_TYPE = CAST(2 AS smallint)
FROM sys.objects o
WHERE o.type = 'P' AND (@sp_name IS NULL OR o.name LIKE @sp_name)
  AND (@sp_owner IS NULL OR SCHEMA_NAME(o.schema_id) LIKE @sp_owner)
ORDER BY 1, 2, 3)";

inline constexpr std::string_view kProcedureColumnsParameters =
    "@procedure_name nvarchar(390) = '%', @procedure_owner nvarchar(384) = NULL, "
    "@procedure_qualifier nvarchar(128) = NULL, @column_name nvarchar(384) = NULL, @ODBCVer int = 2, "
    "@fUsePattern bit = 1";
inline constexpr std::string_view kProcedureColumns = R"(
SET NOCOUNT ON
DECLARE @types TABLE (TYPE_NAME nvarchar(128), DATA_TYPE smallint, [PRECISION] int, LITERAL_PREFIX varchar(32),
                      LITERAL_SUFFIX varchar(32), CREATE_PARAMS varchar(32), NULLABLE smallint,
                      CASE_SENSITIVE smallint, SEARCHABLE smallint, UNSIGNED_ATTRIBUTE smallint, MONEY smallint,
                      AUTO_INCREMENT smallint, LOCAL_TYPE_NAME nvarchar(128), MINIMUM_SCALE smallint,
                      MAXIMUM_SCALE smallint, SQL_DATA_TYPE smallint, SQL_DATETIME_SUB smallint, NUM_PREC_RADIX int,
                      INTERVAL_PRECISION smallint, USERTYPE smallint)
INSERT INTO @types EXEC sp_datatype_info 0, @ODBCVer
DECLARE @parameters TABLE (object_id int, place int, name nvarchar(128), kind smallint, type nvarchar(128), bytes int,
                           digits int, scale int)
INSERT INTO @parameters
SELECT o.object_id, 0, '@RETURN_VALUE', 5, 'int', 4, 10, 0 FROM sys.objects o WHERE o.type = 'P'
INSERT INTO @parameters
SELECT p.object_id, p.parameter_id, p.name, CASE p.is_output WHEN 1 THEN 2 ELSE 1 END, t.name, p.max_length,
       p.[precision], p.scale
FROM sys.parameters p
INNER JOIN sys.types t ON t.user_type_id = p.user_type_id
SET NOCOUNT OFF
SELECT PROCEDURE_QUALIFIER = CAST(DB_NAME() AS nvarchar(128)),
       PROCEDURE_OWNER = CAST(SCHEMA_NAME(o.schema_id) AS nvarchar(128)),
       PROCEDURE_NAME = CAST(o.name + ';1' AS nvarchar(134)), COLUMN_NAME = p.name, COLUMN_TYPE = p.kind, t.DATA_TYPE,
       t.TYPE_NAME,
       [PRECISION] = CAST(CASE WHEN t.CREATE_PARAMS IN ('length', 'max length')
                               THEN CASE WHEN p.bytes = -1 THEN 0 WHEN t.TYPE_NAME LIKE 'n%' THEN p.bytes / 2 ELSE p.bytes END
                               WHEN t.CREATE_PARAMS = 'precision,scale' THEN p.digits
                               ELSE t.[PRECISION] END AS int),
       LENGTH = CAST(CASE WHEN p.bytes = -1 THEN 0 WHEN t.CREATE_PARAMS = 'precision,scale' THEN p.digits + 2
                          WHEN t.TYPE_NAME LIKE '%date%' THEN 16 ELSE p.bytes END AS int),
       SCALE = CAST(CASE WHEN t.MINIMUM_SCALE IS NULL THEN NULL ELSE p.scale END AS smallint),
       RADIX = CAST(t.NUM_PREC_RADIX AS smallint), NULLABLE = CAST(CASE p.kind WHEN 5 THEN 0 ELSE 1 END AS smallint),
       REMARKS = CAST(NULL AS varchar(254)), COLUMN_DEF = CAST(NULL AS nvarchar(4000)), t.SQL_DATA_TYPE,
       t.SQL_DATETIME_SUB,
       CHAR_OCTET_LENGTH = CAST(CASE WHEN t.CREATE_PARAMS IN ('length', 'max length') THEN p.bytes END AS int),
       ORDINAL_POSITION = p.place, IS_NULLABLE = CAST(CASE p.kind WHEN 5 THEN 'NO' ELSE 'YES' END AS varchar(254)),
       SS_DATA_TYPE = CAST(0 AS tinyint)
FROM @parameters p
INNER JOIN sys.objects o ON o.object_id = p.object_id
INNER JOIN @types t ON t.TYPE_NAME = p.type
WHERE o.name LIKE @procedure_name
  AND (@procedure_owner IS NULL OR SCHEMA_NAME(o.schema_id) LIKE @procedure_owner)
  AND (@column_name IS NULL OR p.name LIKE @column_name)
ORDER BY 1, 2, 3, p.place)";

inline constexpr std::string_view kHelpIndexParameters = "@objname nvarchar(776)";

inline constexpr std::string_view kHelpIndex = R"(
SET NOCOUNT ON
DECLARE @keys TABLE (index_id int PRIMARY KEY, keys nvarchar(2078) NOT NULL)
DECLARE @place int, @left int
INSERT @keys SELECT index_id, N'' FROM sys.indexes WHERE object_id = OBJECT_ID(@objname) AND index_id > 0
IF @@ROWCOUNT = 0
    PRINT 'The object ''' + @objname + ''' does not have any indexes, or you do not have permissions.'
SELECT @place = 1, @left = 1
WHILE @left > 0
BEGIN
    UPDATE k
    SET keys = k.keys + CASE @place WHEN 1 THEN N'' ELSE N', ' END + c.name
             + CASE ic.is_descending_key WHEN 1 THEN N'(-)' ELSE N'' END
    FROM @keys AS k
    INNER JOIN sys.index_columns AS ic
        ON ic.object_id = OBJECT_ID(@objname) AND ic.index_id = k.index_id AND ic.key_ordinal = @place
    INNER JOIN sys.columns AS c ON c.object_id = ic.object_id AND c.column_id = ic.column_id
    SELECT @left = @@ROWCOUNT, @place = @place + 1
END
SET NOCOUNT OFF
IF EXISTS (SELECT * FROM @keys)
SELECT index_name = i.name,
       index_description = CAST(CASE i.type WHEN 1 THEN 'clustered' ELSE 'nonclustered' END
           + CASE i.is_unique WHEN 1 THEN ', unique' ELSE '' END
           + CASE i.is_primary_key WHEN 1 THEN ', primary key' ELSE '' END
           + CASE i.is_unique_constraint WHEN 1 THEN ', unique key' ELSE '' END
           + ' located on PRIMARY' AS varchar(210)),
       index_keys = k.keys
FROM sys.indexes AS i
INNER JOIN @keys AS k ON k.index_id = i.index_id
WHERE i.object_id = OBJECT_ID(@objname)
ORDER BY i.name)";

}  // namespace sandbox::texts
