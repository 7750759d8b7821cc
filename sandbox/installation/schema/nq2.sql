-- Web-service database: its identity and its request queue.

CREATE TABLE NQSetting (SettingName varchar(64) NOT NULL PRIMARY KEY, SettingValue varchar(256) NOT NULL)
CREATE TABLE NQRequest (id int IDENTITY(1,1) NOT NULL PRIMARY KEY, queued datetime NOT NULL DEFAULT GETDATE(),
    state varchar(16) NOT NULL)
GO

INSERT NQSetting VALUES ('NQ2_DATABASE_ID', '6f9619ff-8b86-d011-b42d-00c04fc964ff'), ('MAX_REQUESTS', '64')
INSERT NQRequest (state) VALUES ('done'), ('done'), ('waiting')
GO
