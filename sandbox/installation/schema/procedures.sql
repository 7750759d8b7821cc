-- Stored-procedure tscripts of the management database and their rows in the catalogue.

-- Plain: numbers of recent events.
CREATE PROCEDURE tsEventSummary @days int = 30, @zone varchar(16) = 'all' AS
SET NOCOUNT ON
PRINT 'Events of the last ' + CONVERT(varchar(10), @days) + ' day(s), zone ' + @zone
SELECT n.name AS node, COUNT(*) AS events, SUM(CASE WHEN e.severity = 3 THEN 1 ELSE 0 END) AS errors
FROM EventLog e JOIN DataNode n ON n.id = e.nodeId
WHERE e.happened >= DATEADD(day, -@days, GETDATE()) AND (@zone = 'all' OR n.zone = @zone)
GROUP BY n.name
ORDER BY n.name
GO

-- Plain and not journalled: list of the nodes.
CREATE PROCEDURE tsListNodes AS
SET NOCOUNT ON
SELECT id, name, zone, enabled FROM DataNode ORDER BY id
GO

-- Secured: #tempTSUser has the caller's user number.
CREATE PROCEDURE tsSwitchNode @node nvarchar(64), @enabled bit AS
SET NOCOUNT ON
DECLARE @user int
SELECT @user = userId FROM #tempTSUser
UPDATE DataNode SET enabled = @enabled WHERE name = @node
IF @@ROWCOUNT = 0
BEGIN
    RAISERROR('There is no node %s.', 16, 1, @node)
    RETURN 1
END
INSERT AuditTrail (userId, action, detail)
VALUES (@user, CASE WHEN @enabled = 1 THEN 'node.enable' ELSE 'node.disable' END, @node)
GO

INSERT ZpTscripts VALUES (2, 'tsEventSummary', 1, dbo.GetDateTime(1704067200),
    'EXEC tsEventSummary [@days = 30] [, @zone = ''all'']
Counts events and errors of each node. Changes nothing.')
INSERT ZpTscripts VALUES (2, 'tsListNodes', 0, dbo.GetDateTime(1704067200), 'EXEC tsListNodes
Lists the nodes. Changes nothing.')
INSERT ZpTscripts VALUES (10, 'tsSwitchNode', 2, dbo.GetDateTime(1704067200), 'EXEC tsSwitchNode @node, @enabled
Takes a node in or out of service. Secured: runs for a known user only.')
GO
