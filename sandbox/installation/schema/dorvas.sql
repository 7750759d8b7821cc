-- Management database: the identity of the installation and the tables that maintenance scripts use.

CREATE TABLE simAllZephraRel (id int NOT NULL PRIMARY KEY, parentId int NOT NULL, kind varchar(32) NOT NULL)
CREATE TABLE TNet (id int NOT NULL PRIMARY KEY, name varchar(64) NOT NULL)
-- Row 2 is this site. A package can be bound to a site's number (Plexum ID).
CREATE TABLE app_plexum (id int NOT NULL PRIMARY KEY, name varchar(64) NOT NULL, number int NOT NULL)
CREATE TABLE DataNode (id int NOT NULL PRIMARY KEY, name nvarchar(64) NOT NULL, zone varchar(16) NOT NULL,
    enabled bit NOT NULL DEFAULT 1)
-- severity: 1 information, 2 warning, 3 error.
CREATE TABLE EventLog (id int IDENTITY(1,1) NOT NULL PRIMARY KEY, nodeId int NOT NULL, happened datetime NOT NULL,
    severity int NOT NULL, message nvarchar(400) NOT NULL)
CREATE TABLE AuditTrail (id int IDENTITY(1,1) NOT NULL PRIMARY KEY, happened datetime NOT NULL DEFAULT GETDATE(),
    userId int NOT NULL, action varchar(64) NOT NULL, detail nvarchar(400) NULL)
CREATE TABLE AuditPeriod (period char(7) NOT NULL CONSTRAINT PK_AuditPeriod PRIMARY KEY, entries int NOT NULL)
GO

INSERT simAllZephraRel (id, parentId, kind) VALUES (1, 0, 'server'), (2, 1, 'node'), (3, 1, 'node'), (4, 1, 'node')
INSERT TNet (id, name) VALUES (1, 'none')
INSERT app_plexum (id, name, number) VALUES (1, 'vendor', 1), (2, 'sample site', 26)
INSERT DataNode (id, name, zone, enabled)
VALUES (1, N'archive-01', 'north', 1), (2, N'archive-02', 'north', 1), (3, N'Zürich', 'south', 1), (4, N'spare', 'south', 0)

-- 120 events, 12 hours apart and the last one 6 hours ago, so that 60 are older than 30 days: 12 errors,
-- 24 warnings, 84 of information. Nodes 1 to 3 take turns.
;WITH n AS (SELECT 0 AS i UNION ALL SELECT i + 1 FROM n WHERE i < 119)
INSERT EventLog (nodeId, happened, severity, message)
SELECT i % 3 + 1, DATEADD(hour, -12 * i - 6, GETDATE()), severity,
    CHOOSE(severity, 'Volume mounted', 'Volume is 90% full', 'Write to volume failed')
FROM n CROSS APPLY (VALUES (CASE WHEN i % 10 = 0 THEN 3 WHEN i % 4 = 0 THEN 2 ELSE 1 END)) s (severity)
OPTION (MAXRECURSION 119)

INSERT AuditTrail VALUES ('20240115 08:30:00', 1, 'login', NULL), ('20240116 09:00:00', 7, 'node.disable', N'spare'),
    ('20240203 17:45:10', 7, 'node.enable', N'O''Brien asked for it')
INSERT AuditPeriod (period, entries) VALUES ('2024-02', 1)
GO
