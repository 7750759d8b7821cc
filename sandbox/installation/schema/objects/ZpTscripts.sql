-- Rows are inserted by position: type, name, auditLevel, creationTime, usage.
-- type: bits 2 permanent and 8 secured (a run needs a user); 100 for a package.
-- auditLevel: runs of a stored procedure are journalled if it is above 0.
CREATE TABLE ZpTscripts (id int IDENTITY(1,1) NOT NULL PRIMARY KEY, type int NOT NULL, name nvarchar(128) NOT NULL,
    auditLevel int NOT NULL, creationTime datetime NOT NULL, usage nvarchar(max) NULL)
GO
