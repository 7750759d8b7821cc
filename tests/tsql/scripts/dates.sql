-- texts that are read, and those that are not
SELECT CAST('2026-11-21T13:05:07Z' AS datetime) a, CAST('20261121 13:05' AS datetime) b, CAST('11/21/2026 1:05PM' AS datetime) c, CAST('Nov 21, 2026' AS datetime) d, CAST('21-Nov-2026' AS datetime) e, CAST('2026 November 21' AS datetime) f, CAST('Nov 2026' AS datetime) g, CAST('2026' AS datetime) h, CAST('1:05:07:123PM' AS datetime) i, CAST('' AS datetime) j
SELECT CAST('491121' AS date) a, CAST('501121' AS date) b, CAST('11/21/49' AS date) c, CAST('11/21/50' AS date) d, CAST('12 am' AS time(0)) e, CAST('12 pm' AS time(0)) f, CAST('13:05 2026-11-21' AS smalldatetime) g
SELECT TRY_CAST('2026 11 21' AS date) a, TRY_CAST('2026-02-29' AS date) b, TRY_CAST('2024-02-29' AS date) c, TRY_CAST('1900-02-29' AS date) d, TRY_CAST('0001-01-01' AS date) e, TRY_CAST('0000-01-01' AS date) f, TRY_CAST('9999-12-31 23:59:59.9999999' AS datetime2) g, TRY_CAST('24:00' AS time) h, TRY_CAST('10:00:00.1234' AS datetime) i, TRY_CAST('13:00 am' AS time) j, TRY_CAST('0:30 pm' AS time) k
SELECT CONVERT(date, '21/11/2026', 103) a, CONVERT(date, '21.11.26', 4) b, CONVERT(date, '2026.11.21', 102) c, CONVERT(date, '26/11/21', 11) d, CONVERT(date, '21 Nov 2026', 106) e, CONVERT(date, '20261121', 112) f, CONVERT(datetime, '2026-11-21T13:05:07.123', 126) g, CONVERT(datetime, '21 Nov 2026 13:05:07:123', 113) h
--> a datetime? | b datetime? | c datetime? | d datetime? | e datetime? | f datetime? | g datetime? | h datetime? | i datetime? | j datetime?
--> 2026-11-21 13:05:07.000 | 2026-11-21 13:05:00.000 | 2026-11-21 13:05:00.000 | 2026-11-21 00:00:00.000 | 2026-11-21 00:00:00.000 | 2026-11-21 00:00:00.000 | 2026-11-01 00:00:00.000 | 2026-01-01 00:00:00.000 | 1900-01-01 13:05:07.123 | 1900-01-01 00:00:00.000 (1 rows)
--> a date? | b date? | c date? | d date? | e time(0)? | f time(0)? | g smalldatetime?
--> 2049-11-21 | 1950-11-21 | 2049-11-21 | 1950-11-21 | 00:00:00 | 12:00:00 | 2026-11-21 13:05:00 (1 rows)
--> a date? | b date? | c date? | d date? | e date? | f date? | g datetime2(7)? | h time(7)? | i datetime? | j time(7)? | k time(7)?
--> NULL | NULL | 2024-02-29 | NULL | 0001-01-01 | NULL | 9999-12-31 23:59:59.9999999 | NULL | NULL | NULL | NULL (1 rows)
--> a date? | b date? | c date? | d date? | e date? | f date? | g datetime? | h datetime?
--> 2026-11-21 | 2026-11-21 | 2026-11-21 | 2026-11-21 | 2026-11-21 | 2026-11-21 | 2026-11-21 13:05:07.123 | 2026-11-21 13:05:07.123 (1 rows)
SELECT CAST('2026-02-29' AS datetime)
--> Msg 242, Level 16, State 3, Line 1: The conversion of a varchar data type to a datetime data type resulted in an out-of-range value.
SELECT CAST('21/11/2026' AS smalldatetime)
--> Msg 242, Level 16, State 3, Line 1: The conversion of a varchar data type to a smalldatetime data type resulted in an out-of-range value.
SELECT CAST('2026-02-29' AS datetime2)
--> Msg 241, Level 16, State 1, Line 1: Conversion failed when converting date and/or time from character string.
SELECT CAST('2026 11 21' AS datetime)
--> Msg 241, Level 16, State 1, Line 1: Conversion failed when converting date and/or time from character string.
SELECT CAST('tomorrow' AS smalldatetime)
--> Msg 295, Level 16, State 3, Line 1: Conversion failed when converting character string to smalldatetime data type.
SELECT CAST('1752-12-31' AS datetime)
--> Msg 242, Level 16, State 3, Line 1: The conversion of a varchar data type to a datetime data type resulted in an out-of-range value.
SELECT CAST(CAST('1752-12-31' AS date) AS datetime)
--> Msg 242, Level 16, State 3, Line 1: The conversion of a date data type to a datetime data type resulted in an out-of-range value.
SELECT CAST('2079-06-07' AS smalldatetime)
--> Msg 242, Level 16, State 3, Line 1: The conversion of a varchar data type to a smalldatetime data type resulted in an out-of-range value.
SELECT CAST('2026-11-21 10:00:00.1234567' AS datetime)
--> Msg 241, Level 16, State 1, Line 1: Conversion failed when converting date and/or time from character string.
SELECT CAST('10:00 11:00' AS datetime)
--> Msg 241, Level 16, State 1, Line 1: Conversion failed when converting date and/or time from character string.
SELECT CAST('1.2.3.4.5:6' AS date)
--> Msg 241, Level 16, State 1, Line 1: Conversion failed when converting date and/or time from character string.
-- rounding: datetime to .000, .003, .007, smalldatetime to minutes, the others at their scale
SELECT CAST('2026-01-01 00:00:00.001' AS datetime) a, CAST('2026-01-01 00:00:00.002' AS datetime) b, CAST('2026-01-01 00:00:00.005' AS datetime) c, CAST('2026-01-01 00:00:00.008' AS datetime) d, CAST('2026-01-01 00:00:00.009' AS datetime) e, CAST('2026-12-31 23:59:59.999' AS datetime) f
SELECT CAST('2026-12-31 23:59:29.998' AS smalldatetime) a, CAST('2026-12-31 23:59:29.999' AS smalldatetime) b, CAST('2026-12-31 23:59:59.96' AS datetime2(1)) c, CAST('23:59:59.5' AS time(0)) d, CAST(CAST('2026-11-21 12:00' AS datetime) AS float) e, CAST(0.5 AS datetime) f, CAST(-1 AS datetime) g
SELECT ISDATE('') a, ISDATE('10:00') b, ISDATE('1752-12-31') c, ISDATE('2026-11-21 10:00:00.1234567') d, ISDATE(20261121) e, ISDATE(NULL) f, ISDATE('9999-12-31') g
--> a datetime? | b datetime? | c datetime? | d datetime? | e datetime? | f datetime?
--> 2026-01-01 00:00:00.000 | 2026-01-01 00:00:00.003 | 2026-01-01 00:00:00.007 | 2026-01-01 00:00:00.007 | 2026-01-01 00:00:00.010 | 2027-01-01 00:00:00.000 (1 rows)
--> a smalldatetime? | b smalldatetime? | c datetime2(1)? | d time(0)? | e float? | f datetime? | g datetime?
--> 2026-12-31 23:59:00 | 2027-01-01 00:00:00 | 2027-01-01 00:00:00.0 | 00:00:00 | 46345.5 | 1900-01-01 12:00:00.000 | 1899-12-31 00:00:00.000 (1 rows)
--> a int? | b int? | c int? | d int? | e int? | f int? | g int?
--> 0 | 1 | 0 | 0 | 1 | 0 | 1 (1 rows)
SELECT DATEADD(month, 1, CAST('2026-01-31' AS date)) a, DATEADD(month, -1, CAST('2024-03-31' AS date)) b, DATEADD(year, 1, CAST('2024-02-29' AS date)) c, DATEADD(quarter, 1, CAST('2026-11-30' AS date)) d, DATEADD(week, -1, CAST('2026-01-01' AS date)) e, DATEADD(weekday, 2, CAST('2026-01-01' AS date)) f, DATEADD(day, 1.9, CAST('2026-01-01' AS date)) g, DATEADD(hour, 2, CAST('23:00' AS time(0))) h, DATEADD(hour, -2147483648, CAST('10:00' AS time(0))) hh, DATEADD(day, NULL, GETDATE()) i
SELECT DATEADD(ms, 1, CAST('2026-01-01' AS datetime)) a, DATEADD(ms, 2, CAST('2026-01-01' AS datetime)) b, DATEADD(second, 29, CAST('2026-01-01' AS smalldatetime)) c, DATEADD(second, 30, CAST('2026-01-01' AS smalldatetime)) d, DATEADD(ns, 49, CAST('2007-01-01' AS datetime2)) e, DATEADD(ns, 50, CAST('2007-01-01' AS datetime2)) f, DATEADD(mcs, -1, CAST('2007-01-01' AS datetime2)) g, DATEADD(month, 0, '2026-01-01') h
--> a date? | b date? | c date? | d date? | e date? | f date? | g date? | h time(0)? | hh time(0)? | i datetime?
--> 2026-02-28 | 2024-02-29 | 2025-02-28 | 2027-02-28 | 2025-12-25 | 2026-01-03 | 2026-01-02 | 01:00:00 | 02:00:00 | NULL (1 rows)
--> a datetime? | b datetime? | c smalldatetime? | d smalldatetime? | e datetime2(7)? | f datetime2(7)? | g datetime2(7)? | h datetime?
--> 2026-01-01 00:00:00.000 | 2026-01-01 00:00:00.003 | 2026-01-01 00:00:00 | 2026-01-01 00:01:00 | 2007-01-01 00:00:00.0000000 | 2007-01-01 00:00:00.0000001 | 2006-12-31 23:59:59.9999990 | 2026-01-01 00:00:00.000 (1 rows)
SELECT DATEADD(day, 1, CAST('9999-12-31' AS date))
--> Msg 517, Level 16, State 1, Line 1: Adding a value to a 'date' column caused an overflow.
SELECT DATEADD(year, -300, CAST('2026-01-01' AS datetime))
--> Msg 517, Level 16, State 1, Line 1: Adding a value to a 'datetime' column caused an overflow.
SELECT DATEADD(month, 2147483647, CAST('2026-01-01' AS datetime2))
--> Msg 517, Level 16, State 1, Line 1: Adding a value to a 'datetime2' column caused an overflow.
SELECT DATEADD(hour, 1, CAST('2026-01-01' AS date))
--> Msg 9810, Level 16, State 1, Line 1: The datepart hour is not supported by date function dateadd for data type date.
SELECT DATEADD(microsecond, 1, CAST('2026-01-01' AS datetime))
--> Msg 9810, Level 16, State 1, Line 1: The datepart microsecond is not supported by date function dateadd for data type datetime.
SELECT DATEPART(year, CAST('10:00' AS time))
--> Msg 9810, Level 16, State 1, Line 1: The datepart year is not supported by date function datepart for data type time.
SELECT MONTH(CAST('10:00' AS time))
--> Msg 9810, Level 16, State 1, Line 1: The datepart month is not supported by date function month for data type time.
SELECT DATEADD(iso_week, 1, '2026-01-01')
--> Msg 9806, Level 16, State 11, Line 1: The datepart iso_week is not supported by date function dateadd.
SELECT DATEPART(fortnight, '2026-01-01')
--> Msg 155, Level 15, State 1, Line 1: 'fortnight' is not a recognized datepart option.
-- boundaries crossed; weeks begin on Sunday whatever DATEFIRST says
SELECT DATEDIFF(year, '2026-12-31 23:59:59', '2027-01-01') a, DATEDIFF(month, '2026-01-31', '2026-02-01') b, DATEDIFF(week, '2026-11-21', '2026-11-22') c, DATEDIFF(week, '2026-11-22', '2026-11-28') d, DATEDIFF(day, '2027-01-01', '2026-12-31 23:59:59.9999999') e, DATEDIFF(hour, '10:59:59', '11:00') f, DATEDIFF(quarter, '2026-03-31', '2026-04-01') g, DATEDIFF(day, '0001-01-01', '9999-12-31') h, DATEDIFF(ms, '2026-01-01', '2026-01-01 00:00:00.0019') i, DATEDIFF_BIG(ns, '2026-01-01', '2026-01-02') j, DATEDIFF(day, NULL, '2026-01-01') k
SELECT DATEPART(week, '2026-01-01') a, DATEPART(week, '2026-01-04') b, DATEPART(iso_week, '2026-12-31') c, DATEPART(iso_week, '2027-01-03') d, DATEPART(iso_week, '2027-01-04') e, DATEPART(iso_week, '2024-12-30') f, DATEPART(weekday, '2026-11-22') g, DATEPART(dayofyear, '2024-12-31') h, DATEPART(quarter, '2026-09-30') i, DATEPART(ns, '10:00:00.1234567') j, DATEPART(mcs, '10:00:00.1234567') k, DATENAME(weekday, '2026-11-21') l, DATENAME(month, '2026-11-21') m, DATENAME(year, '0001-01-01') n
SELECT EOMONTH('2024-02-10') a, EOMONTH('2026-01-31', 1) b, EOMONTH('2026-03-15', -1) c, EOMONTH('9999-12-01') d, EOMONTH(NULL) e, DATEFROMPARTS(2024, 2, 29) f, DATEFROMPARTS(NULL, 1, 1) g, DATETIMEFROMPARTS(2026, 12, 31, 23, 59, 59, 999) h, YEAR(0) i, MONTH('9999-12-31') j, DAY('0001-01-01') k
--> a int? | b int? | c int? | d int? | e int? | f int? | g int? | h int? | i int? | j bigint? | k int?
--> 1 | 1 | 1 | 0 | -1 | 1 | 1 | 3652058 | 1 | 86400000000000 | NULL (1 rows)
--> a int? | b int? | c int? | d int? | e int? | f int? | g int? | h int? | i int? | j int? | k int? | l nvarchar(30)? | m nvarchar(30)? | n nvarchar(30)?
--> 1 | 2 | 53 | 53 | 1 | 1 | 1 | 366 | 3 | 123456700 | 123456 | Saturday | November | 1 (1 rows)
--> a date? | b date? | c date? | d date? | e date? | f date? | g date? | h datetime? | i int? | j int? | k int?
--> 2024-02-29 | 2026-02-28 | 2026-02-28 | 9999-12-31 | NULL | 2024-02-29 | NULL | 2027-01-01 00:00:00.000 | 1900 | 12 | 1 (1 rows)
SELECT EOMONTH('9999-12-31', 1)
--> Msg 517, Level 16, State 1, Line 1: Adding a value to a 'date' column caused an overflow.
SELECT DATEFROMPARTS(2026, 2, 29)
--> Msg 289, Level 16, State 1, Line 1: Cannot construct data type date, some of the arguments have values which are not valid.
SELECT DATETIMEFROMPARTS(1752, 1, 1, 0, 0, 0, 0)
--> Msg 289, Level 16, State 1, Line 1: Cannot construct data type datetime, some of the arguments have values which are not valid.
SELECT DATEDIFF(second, '1900-01-01', '2026-01-01')
--> Msg 535, Level 16, State 0, Line 1: The datediff function resulted in an overflow. The number of dateparts separating two date/time instances is too large. Try to use datediff with a less precise datepart.
DECLARE @at datetime = '2026-01-02 00:05:07.120', @noon datetime = '2026-11-21 12:30:00', @fine datetime2 = '2026-01-02 03:04:05.1234567'
SELECT CONVERT(varchar(30), @at, 0) a, CONVERT(varchar(30), @at, 1) b, CONVERT(varchar(30), @at, 2) c, CONVERT(varchar(30), @at, 3) d, CONVERT(varchar(30), @at, 4) e, CONVERT(varchar(30), @at, 5) f, CONVERT(varchar(30), @at, 6) g, CONVERT(varchar(30), @at, 7) h, CONVERT(varchar(30), @at, 8) i, CONVERT(varchar(30), @at, 9) j, CONVERT(varchar(30), @at, 10) k, CONVERT(varchar(30), @at, 11) l, CONVERT(varchar(30), @at, 12) m, CONVERT(varchar(30), @at, 13) n, CONVERT(varchar(30), @at, 14) o
SELECT CONVERT(varchar(30), @at, 20) a, CONVERT(varchar(30), @at, 21) b, CONVERT(varchar(30), @at, 22) c, CONVERT(varchar(30), @at, 23) d, CONVERT(varchar(30), @at, 24) e, CONVERT(varchar(30), @at, 25) f, CONVERT(varchar(30), @noon) g, CONVERT(varchar(30), @noon, 126) h, CONVERT(varchar(30), @at, 126) i, CONVERT(varchar(30), @noon, 109) j
SELECT CONVERT(varchar(30), @at, 100) a, CONVERT(varchar(30), @at, 101) b, CONVERT(varchar(30), @at, 102) c, CONVERT(varchar(30), @at, 104) d, CONVERT(varchar(30), @at, 105) e, CONVERT(varchar(30), @at, 106) f, CONVERT(varchar(30), @at, 107) g, CONVERT(varchar(30), @at, 110) h, CONVERT(varchar(30), @at, 111) i, CONVERT(varchar(30), @at, 113) j, CONVERT(varchar(30), @at, 114) k
SELECT CONVERT(varchar(30), @fine) a, CONVERT(varchar(30), @fine, 126) b, CONVERT(varchar(30), CAST(@fine AS date), 103) d, CONVERT(varchar(30), CAST(@fine AS time(3)), 108) e, CONVERT(varchar(30), CAST(@fine AS smalldatetime), 120) f, CONVERT(varchar(7), @at, 120) g
SELECT CONVERT(varchar(30), @at, 99)
--> a varchar(30)? | b varchar(30)? | c varchar(30)? | d varchar(30)? | e varchar(30)? | f varchar(30)? | g varchar(30)? | h varchar(30)? | i varchar(30)? | j varchar(30)? | k varchar(30)? | l varchar(30)? | m varchar(30)? | n varchar(30)? | o varchar(30)?
--> Jan  2 2026 12:05AM | 01/02/26 | 26.01.02 | 02/01/26 | 02.01.26 | 02-01-26 | 02 Jan 26 | Jan 02, 26 | 00:05:07 | Jan  2 2026 12:05:07:120AM | 01-02-26 | 26/01/02 | 260102 | 02 Jan 2026 00:05:07:120 | 00:05:07:120 (1 rows)
--> a varchar(30)? | b varchar(30)? | c varchar(30)? | d varchar(30)? | e varchar(30)? | f varchar(30)? | g varchar(30)? | h varchar(30)? | i varchar(30)? | j varchar(30)?
--> 2026-01-02 00:05:07 | 2026-01-02 00:05:07.120 | 01/02/26 12:05:07 AM | 2026-01-02 | 00:05:07 | 2026-01-02 00:05:07.120 | Nov 21 2026 12:30PM | 2026-11-21T12:30:00 | 2026-01-02T00:05:07.120 | Nov 21 2026 12:30:00:000PM (1 rows)
--> a varchar(30)? | b varchar(30)? | c varchar(30)? | d varchar(30)? | e varchar(30)? | f varchar(30)? | g varchar(30)? | h varchar(30)? | i varchar(30)? | j varchar(30)? | k varchar(30)?
--> Jan  2 2026 12:05AM | 01/02/2026 | 2026.01.02 | 02.01.2026 | 02-01-2026 | 02 Jan 2026 | Jan 02, 2026 | 01-02-2026 | 2026/01/02 | 02 Jan 2026 00:05:07:120 | 00:05:07:120 (1 rows)
--> a varchar(30)? | b varchar(30)? | d varchar(30)? | e varchar(30)? | f varchar(30)? | g varchar(7)?
--> 2026-01-02 03:04:05.1234567 | 2026-01-02T03:04:05.1234567 | 02/01/2026 | 03:04:05 | 2026-01-02 03:04:00 | 2026-01 (1 rows)
--> Msg 281, Level 16, State 1, Line 6: 99 is not a valid style number when converting from datetime to a character string.
SELECT CONVERT(varchar(30), GETDATE(), 130)
--> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the Hijri calendar (styles 130 and 131).
SELECT CONVERT(varchar(30), CAST('2026-11-21' AS date), 108)
--> Msg 9809, Level 16, State 1, Line 1: The style 108 is not supported for conversions from date to varchar.
-- a point before the fraction, but in a classic date
SELECT CONVERT(varchar(40), CAST('2024-02-29 13:05:07.25' AS datetime2(2)), 109), CONVERT(varchar(40), CAST('13:05:07.25' AS time(3)), 114), CONVERT(varchar(40), CAST('2024-02-29 13:05:07.25' AS datetime), 113)
--> - varchar(40)? | - varchar(40)? | - varchar(40)?
--> Feb 29 2024  1:05:07.25PM | 13:05:07.250 | 29 Feb 2024 13:05:07:250 (1 rows)
