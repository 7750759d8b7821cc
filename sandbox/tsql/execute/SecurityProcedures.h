// Schemas, and users, roles, logins and permissions, which are recorded without effect, in T-SQL.
#pragma once

#include "execute/CatalogueProcedures.h"

namespace tsql {

inline constexpr SystemProcedure kSecurityProcedures[] = {
    {"sp_create_schema", "@kind sysname, @name sysname, @authorization sysname",
     R"(DECLARE @owner int = (SELECT principal_id FROM sys.database_principals WHERE name = ISNULL(@authorization, 'dbo'))
IF @owner IS NULL RAISERROR(15151, -1, -1, 'find', 'user', @authorization)
IF SCHEMA_ID(@name) > 0 RAISERROR(2714, -1, 6, @name)
INSERT tsqlbox_objects VALUES (NULL, @name, 'SCHEMA', 0, CAST(@owner AS varchar(9)), '', CONVERT(varchar(23),
GETDATE(), 121), ''))"},
    {"sp_drop_schema", "@kind sysname, @name sysname, @if sysname",
     R"(DECLARE @id int = SCHEMA_ID(@name), @object sysname
IF @id IS NULL AND @if IS NULL RAISERROR(15151, -1, -1, 'drop', @kind, @name)
IF @id < 5 RAISERROR(15150, -1, -1, 'drop', @kind, @name)
SELECT TOP (1) @object = name FROM (SELECT name, object_id, schema_id FROM sys.objects WHERE parent_object_id = 0 UNION
ALL SELECT name, user_type_id - 256, schema_id FROM sys.types) o WHERE schema_id = @id ORDER BY object_id
IF @object > '' RAISERROR(3729, -1, -1, 'drop schema', @name, @object)
DELETE tsqlbox_objects WHERE id = @id - 4)"},
    // @name: of a trigger; empty: all. @verb: ALTER for ALTER TABLE, which changes no triggers of views.
    {"sp_switch_trigger", "@state varchar(8), @schema sysname, @table sysname, @name sysname, @verb sysname",
     R"(DECLARE @full nvarchar(257) = CONCAT(@schema + IIF(@schema > '', '.', ''), @table), @id int
SELECT @id = object_id FROM sys.objects WHERE name = @table AND schema_id = SCHEMA_ID(IIF(@schema > '', @schema, 'dbo')) AND
(type = 'U' OR type = 'V' AND @verb = '')
IF @id IS NULL AND @verb > '' RAISERROR(4902, -1, -1, @full)
IF @id IS NULL RAISERROR(1088, -1, 12, @full)
IF @verb > '' AND @name > '' AND @name NOT IN (SELECT name FROM sys.triggers WHERE parent_id = @id)
RAISERROR(4920, -1, 0, @name, @full)
IF @name > '' AND @name NOT IN (SELECT name FROM sys.triggers WHERE parent_id = @id) RAISERROR(1088, -1, 12, @name)
UPDATE tsqlbox_objects SET stored = @state WHERE id IN (SELECT object_id FROM sys.triggers WHERE parent_id = @id AND (name =
@name OR @name = '')))"},
    {"sp_create_principal",
     R"(@kind sysname, @name sysname, @for sysname, @from sysname, @without sysname, @authorization sysname, @default_schema
sysname, @default_database sysname)",
     R"(DECLARE @isLogin bit = IIF(@kind = 'login', 1, 0), @exists int = IIF(@kind = 'login', 15025, 15023), @sid
varbinary(85), @owner int
IF @kind = 'user' AND @without IS NULL SET @for = COALESCE(@for, @from, @name)
SELECT @sid = sid FROM sys.server_principals WHERE name = @for
SELECT @owner = id FROM tsqlbox_principals WHERE login = 0 AND name = ISNULL(@authorization, 'dbo')
IF EXISTS (SELECT 1 FROM tsqlbox_principals WHERE login = @isLogin AND name = @name) RAISERROR(@exists, -1, -1, @name)
IF @for > '' AND @sid IS NULL RAISERROR(15007, -1, -1, @for)
IF EXISTS (SELECT 1 FROM tsqlbox_principals WHERE login = 0 AND sid = @sid) RAISERROR(15063, -1, -1)
IF @owner IS NULL RAISERROR(15151, -1, -1, 'find', 'user', @authorization)
INSERT tsqlbox_principals SELECT MAX(id) + 1, @isLogin, @name, IIF(@kind = 'role', 'R', IIF(@from = 'WINDOWS', 'U', 'S')),
ISNULL(@sid, HASHBYTES('MD5', CAST(NEWID() AS varchar(36)))), COALESCE(@default_schema, @default_database, CASE @kind
WHEN 'user' THEN 'dbo' WHEN 'login' THEN 'master' END), IIF(@kind = 'role', @owner, NULL), GETDATE() FROM
tsqlbox_principals WHERE id < 16384)"},
    {"sp_alter_principal", "@kind sysname, @name sysname, @add sysname, @drop sysname",
     R"(DECLARE @verb varchar(4) = IIF(@add IS NULL, 'drop', 'add'), @role int, @member int
IF @add IS NULL SET @add = @drop
SELECT @role = principal_id FROM sys.database_principals WHERE name = @name AND type = 'R'
SELECT @member = principal_id FROM sys.database_principals WHERE name = @add
IF @role IS NULL RAISERROR(15151, -1, -1, 'alter', 'role', @name)
IF @member IS NULL RAISERROR(15151, -1, -1, @verb, 'principal', @add)
IF @member = 1 RAISERROR(15405, -1, -1, @add)
IF @member = @role RAISERROR(15413, -1, -1)
DELETE tsqlbox_members WHERE role = @role AND member = @member
IF @verb = 'add' INSERT tsqlbox_members VALUES (@role, @member))"},
    {"sp_drop_principal", "@kind sysname, @name sysname, @if sysname",
     R"(DECLARE @isLogin bit = IIF(@kind = 'login', 1, 0), @id int
SELECT @id = id FROM tsqlbox_principals WHERE login = @isLogin AND name = @name AND IIF(type = 'R', 'role', @kind) = @kind
IF @id IS NULL AND @if IS NULL RAISERROR(15151, -1, -1, 'drop', @kind, @name)
IF @id < 5 OR @id > 16383 RAISERROR(15150, -1, -1, 'drop', @kind, @name)
IF @id IN (SELECT role FROM tsqlbox_members) RAISERROR(15144, -1, -1)
IF @id IN (SELECT principal_id FROM sys.schemas) RAISERROR(15138, -1, -1, 'schema')
IF @id IN (SELECT owner FROM tsqlbox_principals) RAISERROR(15138, -1, -1, 'database role')
DELETE tsqlbox_members WHERE member = @id
DELETE tsqlbox_permissions WHERE @isLogin = 0 AND grantee = @id
DELETE tsqlbox_principals WHERE id = @id)"},
    // types: those of the objects that have the permission, * for all; empty: only the database has it.
    {"sp_grant_permission",
     R"(@state char(1), @permission sysname, @class sysname, @schema sysname, @name sysname, @grantee sysname, @cascade
sysname)",
     R"(DECLARE @code char(4), @types varchar(20), @number int = 0, @id int, @type char(2), @to int, @word sysname = LOWER(@class)
SELECT @code = code, @types = types FROM (VALUES ('SELECT', 'SL', 'U V IF TF'), ('INSERT', 'IN', 'U V IF'),
('UPDATE', 'UP', 'U V IF SO'), ('DELETE', 'DL', 'U V IF'), ('REFERENCES', 'RF', 'U V IF TF FN SO'),
('EXECUTE', 'EX', 'P FN'), ('ALTER', 'AL', '*'), ('CONTROL', 'CL', '*'), ('TAKE OWNERSHIP', 'TO', '*'),
('VIEW DEFINITION', 'VW', '*'), ('CONNECT', 'CO', ''), ('VIEW DATABASE STATE', 'VWDS', ''),
('CREATE TABLE', 'CRTB', ''), ('CREATE VIEW', 'CRVW', ''), ('CREATE PROCEDURE', 'CRPR', ''),
('CREATE FUNCTION', 'CRFN', ''), ('CREATE SCHEMA', 'CRSM', '')) p (name, code, types) WHERE name = @permission
IF @class = 'DATABASE' AND ISNULL(@name, DB_NAME()) = DB_NAME() SET @id = 0
SELECT @number = 1, @id = object_id, @type = type FROM sys.objects WHERE @class = 'OBJECT' AND name = @name AND schema_id =
SCHEMA_ID(ISNULL(@schema, 'dbo')) AND parent_object_id = 0
SELECT @number = 3, @id = schema_id - 4 FROM sys.schemas WHERE @class = 'SCHEMA' AND name = @name AND @schema IS NULL
SELECT @to = principal_id FROM sys.database_principals WHERE name = @grantee
IF @class NOT IN ('OBJECT', 'SCHEMA', 'DATABASE') RAISERROR('tsqlbox does not support permissions on %s.', 16, 1, @class)
IF @code IS NULL RAISERROR('tsqlbox does not support the permission %s.', 16, 1, @permission)
IF @id IS NULL RAISERROR(15151, -1, -1, 'find', @word, @name)
IF @types = '' AND @number > 0 OR @types <> '*' AND CHARINDEX(RTRIM(@type), @types) = 0 RAISERROR(4606, -1, -1, @permission)
IF @to IS NULL RAISERROR(15151, -1, -1, 'find', 'user', @grantee)
IF @to IN (1, 3, 4) RAISERROR(4624, -1, -1)
IF @to > 16383 RAISERROR(4617, -1, -1)
IF @state IN ('D', 'R') AND @cascade IS NULL AND EXISTS (SELECT 1 FROM tsqlbox_permissions WHERE class = @number AND major =
@id AND grantee = @to AND name = @permission AND state = 'W') RAISERROR(4611, -1, -1)
DELETE tsqlbox_permissions WHERE class = @number AND major = @id AND grantee = @to AND name = @permission
IF @state <> 'R' INSERT tsqlbox_permissions VALUES (@number, @id, @to, @code, @permission, @state))"},
};

}  // namespace tsql
