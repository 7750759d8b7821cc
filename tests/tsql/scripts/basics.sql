SELECT 1
PRINT 'hello'
DECLARE @i int, @s varchar(20) = 'abc'
SET @i = 3
IF @i > 2 PRINT 'big ' + CONVERT(varchar(10), @i) ELSE PRINT 'small'
CREATE TABLE t (id int IDENTITY(1,1) PRIMARY KEY, name varchar(20) NOT NULL, amount decimal(10,2) NULL DEFAULT 1.5, at datetime NOT NULL DEFAULT GETDATE())
INSERT t (name) VALUES ('one'), ('two')
INSERT INTO t VALUES ('three', 7.25, '20240102 10:11:12')
SELECT @@IDENTITY
SELECT id, name, amount, amount * 2 AS twice FROM t WHERE name = 'ONE  ' OR id > 1 ORDER BY id DESC
--> - int = 1 (1 rows)
--> hello
--> big 3 (2 changed) (1 changed)
--> - decimal(38,0)? = 3 (1 rows)
--> id int* | name varchar(20) | amount decimal(10,2)? | twice decimal(12,2)?
--> 3 | three | 7.25 | 14.50
--> 2 | two | 1.50 | 3.00
--> 1 | one | 1.50 | 3.00 (3 rows)
