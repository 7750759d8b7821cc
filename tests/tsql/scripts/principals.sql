CREATE DATABASE club -->
USE club --> USE club --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'club'.
CREATE LOGIN app WITH PASSWORD = N'secret', CHECK_POLICY = OFF, DEFAULT_DATABASE = [club] -->
CREATE LOGIN App WITH PASSWORD = 'x' --> Msg 15025, Level 16, State 1, Line 1: The server principal 'App' already exists.
CREATE LOGIN other WITH PASSWORD = 'x', SID = 0x01 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CREATE LOGIN WITH SID.
SELECT name, type, type_desc, is_disabled, default_database_name FROM sys.server_principals WHERE principal_id > 3 OR name = SUSER_NAME() --> name nvarchar(128)? | type char(1)? | type_desc nvarchar(60)? | is_disabled bit? | default_database_name nvarchar(128)? = sa | S | SQL_LOGIN | 0 | NULL; app | S | SQL_LOGIN | 0 | club (2 rows)
CREATE USER app WITH DEFAULT_SCHEMA = sales -->
CREATE USER second FROM LOGIN app --> Msg 15063, Level 16, State 1, Line 1: The login already has an account under a different user name.
CREATE USER guide WITHOUT LOGIN -->
CREATE USER missing --> Msg 15007, Level 16, State 1, Line 1: 'missing' is not a valid login or you do not have permission.
CREATE ROLE readers AUTHORIZATION guide -->
CREATE ROLE writers AUTHORIZATION nobody --> Msg 15151, Level 16, State 1, Line 1: Cannot find the user 'nobody', because it does not exist or you do not have permission.
CREATE SCHEMA sales AUTHORIZATION app -->
ALTER ROLE readers ADD MEMBER app
ALTER ROLE db_datareader ADD MEMBER readers
ALTER ROLE db_owner ADD MEMBER guide
ALTER ROLE readers ADD MEMBER app -->
ALTER ROLE readers ADD MEMBER nobody --> Msg 15151, Level 16, State 1, Line 1: Cannot add the principal 'nobody', because it does not exist or you do not have permission.
ALTER ROLE nothing ADD MEMBER app --> Msg 15151, Level 16, State 1, Line 1: Cannot alter the role 'nothing', because it does not exist or you do not have permission.
ALTER ROLE readers ADD MEMBER dbo --> Msg 15405, Level 16, State 1, Line 1: Cannot use the special principal 'dbo'.
ALTER ROLE readers ADD MEMBER readers --> Msg 15413, Level 16, State 1, Line 1: Cannot make a role a member of itself.
ALTER ROLE readers WITH NAME = r2 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER ROLE WITH NAME.
SELECT r.name AS role, m.name AS member, o.name AS owner FROM sys.database_role_members x JOIN sys.database_principals r ON r.principal_id = x.role_principal_id JOIN sys.database_principals m ON m.principal_id = x.member_principal_id LEFT JOIN sys.database_principals o ON o.principal_id = r.owning_principal_id ORDER BY 1, 2
SELECT p.name, p.type, p.type_desc, p.default_schema_name, l.name AS login, p.is_fixed_role FROM sys.database_principals p LEFT JOIN sys.server_principals l ON l.sid = p.sid WHERE p.principal_id IN (1, 16384) OR p.principal_id BETWEEN 5 AND 16383 ORDER BY p.principal_id
SELECT s.name, p.name, i.SCHEMA_OWNER FROM sys.schemas s JOIN sys.database_principals p ON p.principal_id = s.principal_id JOIN INFORMATION_SCHEMA.SCHEMATA i ON i.SCHEMA_NAME = s.name WHERE s.schema_id > 3 ORDER BY s.schema_id
--> role nvarchar(128)? | member nvarchar(128)? | owner nvarchar(128)? = db_datareader | readers | NULL; db_owner | guide | NULL; readers | app | guide (3 rows)
--> name nvarchar(128)? | type char(1)? | type_desc nvarchar(60)? | default_schema_name nvarchar(128)? | login nvarchar(128)? | is_fixed_role bit? --> dbo | S | SQL_USER | NULL | sa | 0
--> app | S | SQL_USER | sales | app | 0 --> guide | S | SQL_USER | dbo | NULL | 0 --> readers | R | DATABASE_ROLE | NULL | NULL | 0 --> db_owner | R | DATABASE_ROLE | NULL | NULL | 1 (5 rows)
--> name nvarchar(128)? | name nvarchar(128)? | SCHEMA_OWNER nvarchar(128)? = sys | sys | sys; sales | app | app (2 rows)
EXEC sp_droprolemember 'readers', 'app' EXEC sp_addrolemember @membername = 'app', @rolename = [db_owner]
DECLARE @r int EXEC @r = sp_addrolemember 'readers] --', 'app' EXEC sp_droprolemember 'db_owner', N'app' EXEC sp_addrolemember readers, app
SELECT @r AS r, COUNT(*) AS n FROM sys.database_role_members --> Msg 15151, Level 16, State 1, Line 1: Cannot alter the role 'readers] --', because it does not exist or you do not have permission. --> r int? = 1 | n int? = 3 (1 rows)
DROP ROLE readers --> Msg 15144, Level 16, State 1, Line 1: The role has members. It must be empty before it can be dropped.
DROP USER dbo --> Msg 15150, Level 16, State 1, Line 1: Cannot drop the user 'dbo'.
DROP USER app --> Msg 15138, Level 16, State 1, Line 1: The database principal owns a schema in the database, and cannot be dropped.
DROP USER guide --> Msg 15138, Level 16, State 1, Line 1: The database principal owns a database role in the database, and cannot be dropped.
DROP SCHEMA sales
DROP USER app -->
ALTER ROLE db_datareader DROP MEMBER readers
DROP ROLE readers
DROP USER IF EXISTS app
DROP USER guide
SELECT COUNT(*) AS n FROM sys.database_role_members
SELECT name FROM sys.database_principals WHERE principal_id BETWEEN 5 AND 16383 --> n int? = 0 (1 rows) --> name nvarchar(128)? (0 rows)
CREATE PROCEDURE fill AS CREATE USER late WITHOUT LOGIN CREATE USER late WITHOUT LOGIN -->
EXEC fill --> Msg 15023, Level 16, State 1, Line 1, Procedure fill: User, group, or role 'late' already exists in the current database.
BEGIN TRANSACTION CREATE ROLE gone ROLLBACK
DROP ROLE gone --> Msg 15151, Level 16, State 1, Line 2: Cannot drop the role 'gone', because it does not exist or you do not have permission.
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
DROP LOGIN app
DROP LOGIN app --> Msg 15151, Level 16, State 1, Line 2: Cannot drop the login 'app', because it does not exist or you do not have permission.
SELECT * FROM tsqlbox_principals --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'tsqlbox_principals'.
ALTER USER late WITH NAME = early --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER USER.
EXEC sys.sp_drop_principal 'user', 'dbo', NULL --> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure 'sys.sp_drop_principal'.
