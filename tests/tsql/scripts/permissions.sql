-- Permissions: recorded, shown by the catalogue, deleted with their objects and principals.
CREATE DATABASE club2 -->
USE club2
CREATE USER app WITHOUT LOGIN CREATE ROLE readers CREATE SEQUENCE s --> USE club2 --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'club2'.
CREATE SCHEMA shop -->
CREATE TABLE t (a int) CREATE TABLE shop.[a'b] (a int) -->
CREATE PROCEDURE p AS RETURN -->
GRANT SELECT, INSERT ON t TO readers, public GRANT EXEC ON OBJECT::dbo.p TO app GRANT UPDATE ON s TO app
DENY CREATE TABLE, VIEW DEFINITION TO readers DENY SELECT ON [dbo].[t] TO readers CASCADE
GRANT CONTROL ON SCHEMA::shop TO readers GRANT ALTER ON SCHEMA::dbo TO readers GRANT UPDATE ON shop.[a'b] TO app
GRANT CONNECT ON DATABASE::club2 TO app REVOKE INSERT ON t FROM public -->
SELECT GRANTEE, TABLE_SCHEMA, TABLE_NAME, PRIVILEGE_TYPE FROM INFORMATION_SCHEMA.TABLE_PRIVILEGES --> GRANTEE nvarchar(128)? | TABLE_SCHEMA nvarchar(128)? | TABLE_NAME nvarchar(128)? | PRIVILEGE_TYPE varchar(10)? = public | dbo | t | SELECT; readers | dbo | t | INSERT; app | shop | a'b | UPDATE (3 rows)
SELECT class_desc, COALESCE(OBJECT_NAME(NULLIF(major_id * (2 - class), 0)), SCHEMA_NAME(major_id)) AS securable, p.name, permission_name, d.type, state_desc FROM sys.database_permissions d JOIN sys.database_principals p ON p.principal_id = d.grantee_principal_id ORDER BY 1, 2, 3, 4
--> class_desc nvarchar(60)? | securable nvarchar(128)? | name nvarchar(128)? | permission_name nvarchar(128)? | type char(4)? | state_desc nvarchar(60)?
--> DATABASE | NULL | app | CONNECT | CO   | GRANT --> DATABASE | NULL | readers | CREATE TABLE | CRTB | DENY --> DATABASE | NULL | readers | VIEW DEFINITION | VW   | DENY
--> OBJECT_OR_COLUMN | a'b | app | UPDATE | UP   | GRANT --> OBJECT_OR_COLUMN | p | app | EXECUTE | EX   | GRANT --> OBJECT_OR_COLUMN | s | app | UPDATE | UP   | GRANT
--> OBJECT_OR_COLUMN | t | public | SELECT | SL   | GRANT --> OBJECT_OR_COLUMN | t | readers | INSERT | IN   | GRANT --> OBJECT_OR_COLUMN | t | readers | SELECT | SL   | DENY
--> SCHEMA | dbo | readers | ALTER | AL   | GRANT --> SCHEMA | shop | readers | CONTROL | CL   | GRANT (11 rows)
GRANT EXECUTE ON nosuch TO app
GRANT SELECT ON SCHEMA::nosuch TO app
GRANT EXECUTE ON t TO app
GRANT CREATE VIEW ON SCHEMA::dbo TO app
GRANT REFERENCES ON t TO app, nobody
GRANT SELECT ON t TO dbo
GRANT SELECT TO db_owner
--> Msg 15151, Level 16, State 1, Line 1: Cannot find the object 'nosuch', because it does not exist or you do not have permission.
--> Msg 15151, Level 16, State 1, Line 2: Cannot find the schema 'nosuch', because it does not exist or you do not have permission.
--> Msg 4606, Level 16, State 1, Line 3: Granted or revoked privilege EXECUTE is not compatible with object.
--> Msg 4606, Level 16, State 1, Line 4: Granted or revoked privilege CREATE VIEW is not compatible with object.
--> Msg 15151, Level 16, State 1, Line 5: Cannot find the user 'nobody', because it does not exist or you do not have permission.
--> Msg 4624, Level 16, State 1, Line 6: Cannot grant, deny, or revoke permissions to sa, dbo, entity owner, information_schema, sys, or yourself.
--> Msg 4617, Level 16, State 1, Line 7: Cannot grant, deny or revoke permissions to or from special roles.
GRANT FLY TO app --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the permission FLY.
GRANT SELECT ON t (a) TO app --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support permissions on columns.
GRANT SELECT ON t TO app WITH GRANT OPTION
SELECT state, state_desc FROM sys.database_permissions WHERE state = 'W'
REVOKE SELECT ON t FROM app
DENY SELECT ON t TO app CASCADE --> state char(1)? = W | state_desc nvarchar(60)? = GRANT_WITH_GRANT_OPTION (1 rows) --> Msg 4611, Level 16, State 1, Line 3: To revoke or deny grantable privileges, specify the CASCADE option.
DENY SELECT ON t TO app WITH GRANT OPTION --> Msg 319, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an xmlnamespaces clause or a change tracking context clause, the previous statement must be terminated with a semicolon.
GRANT SELECT ON master.dbo.t TO app --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support permissions in another database.
GRANT VIEW DEFINITION ON LOGIN::sa TO app --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support permissions on LOGIN.
DECLARE @many varchar(max) = REPLICATE('SELECT, ', 100) + 'SELECT TO ' + REPLICATE('a, ', 100) + 'a' EXEC ('GRANT ' + @many) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support more than 10,000 permissions.
GRANT TO app --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'TO'.
CREATE FUNCTION f() RETURNS int AS BEGIN GRANT SELECT TO app RETURN 1 END --> Msg 443, Level 16, State 14, Line 1, Procedure f: Invalid use of a side-effecting operator 'GRANT' within a function.
DROP TABLE t, shop.[a'b]
DROP SCHEMA shop
DROP USER app
SELECT permission_name, state FROM sys.database_permissions ORDER BY 1 --> permission_name nvarchar(128)? | state char(1)? = ALTER | G; CREATE TABLE | D; VIEW DEFINITION | D (3 rows)
CREATE TABLE moved (a int) GRANT SELECT ON moved TO public EXEC ('CREATE SCHEMA target')
ALTER SCHEMA target TRANSFER moved
SELECT COUNT(*) AS n FROM sys.database_permissions WHERE class = 1 --> n int? = 0 (1 rows)
