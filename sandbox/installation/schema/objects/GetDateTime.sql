-- Seconds since 1970 (UTC) as a datetime. In two steps, since DATEADD takes a 32-bit number.
CREATE FUNCTION dbo.GetDateTime (@seconds bigint) RETURNS datetime AS
BEGIN
    RETURN DATEADD(second, @seconds % 86400, DATEADD(day, @seconds / 86400, '19700101'))
END
GO
