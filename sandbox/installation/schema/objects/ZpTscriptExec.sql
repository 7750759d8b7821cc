-- status: 0 running, 1 succeeded, 2 failed.
CREATE TABLE ZpTscriptExec (id int IDENTITY(1,1) NOT NULL PRIMARY KEY, tsId int NOT NULL, type int NOT NULL,
    name nvarchar(128) NOT NULL, timeStart datetime NOT NULL, timeEnd datetime NOT NULL, status int NOT NULL,
    inputParams nvarchar(max) NULL, userId int NOT NULL DEFAULT 0)
GO

-- Lists by name, status or start time read a page of rows instead of the table.
CREATE INDEX IX_ZpTscriptExec_name ON ZpTscriptExec (name, id)
CREATE INDEX IX_ZpTscriptExec_status ON ZpTscriptExec (status, id)
CREATE INDEX IX_ZpTscriptExec_timeStart ON ZpTscriptExec (timeStart)
GO
