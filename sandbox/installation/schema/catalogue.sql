-- Objects of every database of the suite: its version, the catalogue of tscripts and the journal of their runs.

CREATE TABLE ZPDBVersions (id int IDENTITY(1,1) NOT NULL PRIMARY KEY, component varchar(64) NOT NULL,
    version varchar(32) NOT NULL, installedAt datetime NOT NULL DEFAULT GETDATE())
GO

:r objects/ZpTscripts.sql
:r objects/ZpTscriptExec.sql
:r objects/GetDateTime.sql
:r objects/VT_GetSpParams.sql

INSERT ZPDBVersions (component, version) VALUES ('Base', '8.0.0')
GO
