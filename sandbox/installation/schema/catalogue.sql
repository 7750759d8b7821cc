-- Objects of every database of the suite: its version, the catalogue of tscripts and the journal of their runs.
SET NOCOUNT ON
GO

CREATE TABLE ZPDBVersions (
    id int IDENTITY(1,1) NOT NULL PRIMARY KEY,
    component varchar(64) NOT NULL,
    version varchar(32) NOT NULL,
    installedAt datetime NOT NULL DEFAULT GETDATE()
)
GO

-- Rows are inserted by position: type, name, auditLevel, creationTime, usage.
-- type: bits 2 permanent and 8 secured (a run needs a user); 100 for a package.
-- auditLevel: runs of a stored procedure are journalled if it is above 0.
CREATE TABLE ZpTscripts (
    id int IDENTITY(1,1) NOT NULL PRIMARY KEY,
    type int NOT NULL,
    name nvarchar(128) NOT NULL,
    auditLevel int NOT NULL,
    creationTime datetime NOT NULL,
    usage nvarchar(max) NULL
)
GO

-- status: 0 running, 1 succeeded, 2 failed.
CREATE TABLE ZpTscriptExec (
    id int IDENTITY(1,1) NOT NULL PRIMARY KEY,
    tsId int NOT NULL,
    type int NOT NULL,
    name nvarchar(128) NOT NULL,
    timeStart datetime NOT NULL,
    timeEnd datetime NOT NULL,
    status int NOT NULL,
    inputParams nvarchar(max) NULL,
    userId int NOT NULL DEFAULT 0
)
GO

-- Seconds since 1970 (UTC) as a datetime. In two steps, since DATEADD takes a 32-bit number.
CREATE FUNCTION dbo.GetDateTime (@seconds bigint) RETURNS datetime
AS
BEGIN
    RETURN DATEADD(second, @seconds % 86400, DATEADD(day, @seconds / 86400, '19700101'))
END
GO

-- The parameters of a stored procedure.
CREATE PROCEDURE VT_GetSpParams @name varchar(128)
AS
BEGIN
    SET NOCOUNT ON
    SELECT PARAMETER_NAME AS name, DATA_TYPE AS type, CHARACTER_MAXIMUM_LENGTH AS length
    FROM INFORMATION_SCHEMA.PARAMETERS
    WHERE SPECIFIC_NAME = @name
    ORDER BY ORDINAL_POSITION
END
GO

INSERT ZPDBVersions (component, version) VALUES ('Base', '8.0.0')
GO
