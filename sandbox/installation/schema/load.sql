-- Creates the databases of the sample installation. To be run in this directory: sqlcmd -b -i load.sql
SET NOCOUNT ON
CREATE DATABASE dorvas
CREATE DATABASE nq2
GO
USE dorvas
GO
:r catalogue.sql
:r dorvas.sql
:r procedures.sql
USE nq2
GO
:r catalogue.sql
:r nq2.sql
