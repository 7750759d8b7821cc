// Extended properties, in T-SQL.
#pragma once

#include "execute/CatalogueProcedures.h"

namespace tsql {

inline constexpr std::string_view kGivenProperty =
    R"(@name sysname, @value nvarchar(max) = NULL, @level0type varchar(128) = NULL, @level0name sysname = NULL, @level1type
varchar(128) = NULL, @level1name sysname = NULL, @level2type varchar(128) = NULL, @level2name sysname = NULL)";

// @levels: which of the arguments are given.
inline constexpr std::string_view kChangeProperty = R"(SET NOCOUNT ON
DECLARE @levels char(6) = CONCAT(IIF(@level0type > '', 1, 0), IIF(@level0name > '', 1, 0), IIF(@level1type > '', 1, 0),
IIF(@level1name > '', 1, 0), IIF(@level2type > '', 1, 0), IIF(@level2name > '', 1, 0)), @class int, @major int, @minor int =
0, @old sysname, @on nvarchar(400) = CONCAT_WS('.', @level0name, @level1name, @level2name)
IF @on = '' SET @on = 'object specified'
IF @name IS NULL OR @levels NOT IN ('000000', '110000', '111100', '111111')
BEGIN RAISERROR(15600, -1, -1, @procedure) RETURN 1 END
IF @level0type <> 'SCHEMA' OR @level1type NOT IN ('TABLE', 'VIEW', 'PROCEDURE', 'FUNCTION') OR @level2type <> 'COLUMN'
BEGIN RAISERROR('tsqlbox does not support properties of %s %s %s.', 16, 1, @level0type, @level1type, @level2type) RETURN 1 END
IF DATALENGTH(@value) > 7500 BEGIN RAISERROR(15097, -1, -1) RETURN 1 END
IF @levels = '000000' SELECT @class = 0, @major = 0
IF @levels = '110000' SELECT @class = 3, @major = schema_id - 4 FROM sys.schemas WHERE name = @level0name
IF @levels LIKE '1111%' SELECT @class = 1, @major = object_id FROM sys.objects WHERE name = @level1name AND schema_id =
SCHEMA_ID(@level0name) AND @level1type = CASE WHEN type = 'U' THEN 'TABLE' WHEN type = 'V' THEN 'VIEW' WHEN type = 'P'
THEN 'PROCEDURE' WHEN type IN ('FN', 'IF', 'TF') THEN 'FUNCTION' END
IF @level2name > '' SET @minor = (SELECT column_id FROM sys.columns WHERE object_id = @major AND name = @level2name)
IF @class + @minor IS NULL BEGIN RAISERROR(15135, -1, -1, @on) RETURN 1 END
SELECT @old = name FROM tsqlbox_properties WHERE class = @class AND major = @major AND minor = @minor AND name = @name
IF @old > '' AND @procedure = 'sp_addextendedproperty' BEGIN RAISERROR(15233, -1, -1, @name, @on) RETURN 1 END
IF @old IS NULL AND @procedure <> 'sp_addextendedproperty' BEGIN RAISERROR(15217, -1, -1, @name, @on) RETURN 1 END
DELETE tsqlbox_properties WHERE class = @class AND major = @major AND minor = @minor AND name = @name
IF @procedure <> 'sp_dropextendedproperty'
INSERT tsqlbox_properties VALUES (@class, @major, @minor, ISNULL(@old, @name), @value))";

inline constexpr SystemProcedure kPropertyProcedures[] = {
    {"sp_addextendedproperty", kGivenProperty, kChangeProperty},
    {"sp_updateextendedproperty", kGivenProperty, kChangeProperty},
    {"sp_dropextendedproperty",
     R"(@name sysname, @level0type varchar(128) = NULL, @level0name sysname = NULL, @level1type varchar(128) = NULL, @level1name
sysname = NULL, @level2type varchar(128) = NULL, @level2name sysname = NULL, @value nvarchar(max) = NULL)",
     kChangeProperty},
};

}  // namespace tsql
