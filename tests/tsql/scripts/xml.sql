CREATE TABLE book (id int, title varchar(30), price decimal(6,2), day datetime, ok bit, f float) -->
INSERT book VALUES (1,'A & B <"c">',9.5,'2024-01-02 03:04:05.060',1,1.5),(2,NULL,NULL,'2024-01-02',0,NULL),(3,'',1,NULL,NULL,0) --> (3 changed)
SELECT id, title, price, day, ok, f FROM book ORDER BY id DESC FOR XML RAW --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <row id="3" title="" price="1.00" f="0.000000000000000e+000"/><row id="2" day="2024-01-02T00:00:00" ok="0"/><row id="1" title="A &amp; B &lt;&quot;c&quot;&gt;" price="9.50" day="2024-01-02T03:04:05.060" ok="1" f="1.500000000000000e+000"/> (1 rows)
SELECT id, title FROM book ORDER BY id FOR XML RAW('book'), ROOT('books'), ELEMENTS --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <books><book><id>1</id><title>A &amp; B &lt;"c"&gt;</title></book><book><id>2</id></book><book><id>3</id><title></title></book></books> (1 rows)
SELECT id AS '@id', title, price AS [net price] FROM book ORDER BY id FOR XML PATH('book'), ROOT --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <root><book id="1"><title>A &amp; B &lt;"c"&gt;</title><net_x0020_price>9.50</net_x0020_price></book><book id="2"/><book id="3"><title></title><net_x0020_price>1.00</net_x0020_price></book></root> (1 rows)
SELECT title AS [text()], '|' FROM book ORDER BY id FOR XML PATH --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <row>A &amp; B &lt;"c"&gt;|</row><row>|</row><row>|</row> (1 rows)
SELECT id FROM book WHERE id > 9 FOR XML RAW, ROOT('r') --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? (0 rows)
-- concatenated strings
SELECT STUFF((SELECT ', ' + title FROM book WHERE title <> '' OR id = 3 ORDER BY id FOR XML PATH('')), 1, 2, '') t --> t nvarchar(max)? = A &amp; B &lt;"c"&gt;,  (1 rows)
SELECT STUFF((SELECT ', ' + title FROM book ORDER BY id FOR XML PATH(''), TYPE).value('.', 'nvarchar(max)'), 1, 2, '') t --> t nvarchar(max)? = A & B <"c">,  (1 rows)
SELECT (SELECT title FROM book WHERE id = 1 FOR XML PATH(''), TYPE).value('(.)[1]', 'varchar(5)') t --> t varchar(5)? = A & B (1 rows)
SELECT b.id AS '@id', (SELECT c.id AS '@n' FROM book c WHERE c.id < b.id ORDER BY c.id FOR XML PATH('c'), TYPE) AS [before] FROM book b ORDER BY b.id FOR XML PATH('b') --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <b id="1"/><b id="2"><before><c n="1"/></before></b><b id="3"><before><c n="1"/><c n="2"/></before></b> (1 rows)
DECLARE @x nvarchar(max) = (SELECT CHAR(9) + 'é' + CHAR(13) AS a FOR XML RAW)
PRINT @x --> <row a="&#x09;é&#x0D;"/>
SELECT STRING_AGG(title, '; ') WITHIN GROUP (ORDER BY day DESC, id) FROM book --> - varchar(8000)? = A & B <"c">;  (1 rows)
SELECT STRING_AGG(REPLICATE('x', 3000), '') FROM book --> Msg 9829, Level 16, State 1, Line 1: STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result truncation.
SELECT LEN(STRING_AGG(CAST(REPLICATE('x', 3000) AS varchar(max)), '')) FROM book --> - bigint? = 9000 (1 rows)
SELECT LEN(REPLICATE(CAST('xy' AS varchar(max)), 60000000)) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support REPLICATE beyond 100,000,000 characters.
SELECT ok, STRING_AGG(id, ',') WITHIN GROUP (ORDER BY id DESC) ids FROM book GROUP BY ok ORDER BY ok --> ok bit? | ids nvarchar(4000)? = NULL | 3; 0 | 2; 1 | 1 (3 rows)
SELECT id, 1 FROM book FOR XML RAW --> Msg 6809, Level 16, State 1, Line 1: Unnamed tables cannot be used as XML identifiers as well as unnamed columns cannot be used for attribute names. Name unnamed columns/tables using AS in the SELECT statement.
SELECT id, title AS '@t' FROM book FOR XML PATH --> Msg 6852, Level 16, State 1, Line 1: Attribute-centric column '@t' must not come after a non-attribute-centric sibling in XML hierarchy in FOR XML PATH.
SELECT id AS '@id' FROM book FOR XML PATH('') --> Msg 6864, Level 16, State 1, Line 1: Row tag omission (empty row tag name) cannot be used with attribute-centric FOR XML serialization.
SELECT id AS 'a/b' FROM book FOR XML PATH --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the path 'a/b' in FOR XML PATH.
SELECT id FROM book
FOR XML AUTO --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support FOR XML AUTO and EXPLICIT.
SELECT id FROM book FOR XML RAW, XMLSCHEMA --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the option XMLSCHEMA of FOR XML.
SELECT id FROM book FOR JSON PATH --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support FOR JSON.
SELECT CAST('a' AS varbinary(5)) b FOR XML RAW --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support binary columns in FOR XML.
SELECT (SELECT id FROM book FOR XML PATH('x'), TYPE).value('/x/id', 'int') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the path '/x/id' in .value().
SELECT SUM(id) WITHIN GROUP (ORDER BY id) FROM book --> Msg 10757, Level 15, State 1, Line 1: The function 'SUM' may not have a WITHIN GROUP clause.
DECLARE @x xml = '<a b="1"/>' SELECT @x.value('(/a/@b)[1]', 'int') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support methods of xml.
DECLARE @x xml = '<a/>' SELECT c.value('.', 'int') FROM @x.nodes('/a') t(c) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support methods of xml.
SELECT x.d.exist('/a') FROM (SELECT CAST('<a/>' AS xml) AS d) x --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support methods of xml.
