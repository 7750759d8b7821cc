CREATE TABLE book (id int, title varchar(30), price decimal(6,2), day datetime, ok bit, f float)
INSERT book VALUES (1,'A & B <"c">',9.5,'2024-01-02 03:04:05.060',1,1.5),(2,NULL,NULL,'2024-01-02',0,NULL),(3,'',1,NULL,NULL,0)
GO
SELECT id, title, price, day, ok, f FROM book ORDER BY id DESC FOR XML RAW
SELECT id, title FROM book ORDER BY id FOR XML RAW('book'), ROOT('books'), ELEMENTS
SELECT id AS '@id', title, price AS [net price] FROM book ORDER BY id FOR XML PATH('book'), ROOT
SELECT title AS [text()], '|' FROM book ORDER BY id FOR XML PATH
SELECT id FROM book WHERE id > 9 FOR XML RAW, ROOT('r')
-- texts strung together
SELECT STUFF((SELECT ', ' + title FROM book WHERE title <> '' OR id = 3 ORDER BY id FOR XML PATH('')), 1, 2, '') t
SELECT STUFF((SELECT ', ' + title FROM book ORDER BY id FOR XML PATH(''), TYPE).value('.', 'nvarchar(max)'), 1, 2, '') t
SELECT (SELECT title FROM book WHERE id = 1 FOR XML PATH(''), TYPE).value('(.)[1]', 'varchar(5)') t
SELECT b.id AS '@id', (SELECT c.id AS '@n' FROM book c WHERE c.id < b.id ORDER BY c.id FOR XML PATH('c'), TYPE) AS [before] FROM book b ORDER BY b.id FOR XML PATH('b')
DECLARE @x nvarchar(max) = (SELECT CHAR(9) + 'é' + CHAR(13) AS a FOR XML RAW)
PRINT @x
SELECT STRING_AGG(title, '; ') WITHIN GROUP (ORDER BY day DESC, id) FROM book
SELECT STRING_AGG(REPLICATE('x', 3000), '') FROM book
SELECT LEN(STRING_AGG(CAST(REPLICATE('x', 3000) AS varchar(max)), '')) FROM book
SELECT LEN(REPLICATE(CAST('xy' AS varchar(max)), 60000000))
SELECT ok, STRING_AGG(id, ',') WITHIN GROUP (ORDER BY id DESC) ids FROM book GROUP BY ok ORDER BY ok
GO
SELECT id, 1 FROM book FOR XML RAW
GO
SELECT id, title AS '@t' FROM book FOR XML PATH
GO
SELECT id AS '@id' FROM book FOR XML PATH('')
GO
SELECT id AS 'a/b' FROM book FOR XML PATH
GO
SELECT id FROM book
FOR XML AUTO
GO
SELECT id FROM book FOR XML RAW, XMLSCHEMA
GO
SELECT id FROM book FOR JSON PATH
GO
SELECT CAST('a' AS varbinary(5)) b FOR XML RAW
GO
SELECT (SELECT id FROM book FOR XML PATH('x'), TYPE).value('/x/id', 'int')
GO
SELECT SUM(id) WITHIN GROUP (ORDER BY id) FROM book
GO
