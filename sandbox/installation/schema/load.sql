-- Makes the databases of the sample installation. Start sqlcmd in this folder: sqlcmd -b -i load.sql
:r databases.sql
USE dorvas
GO
:r catalogue.sql
:r dorvas.sql
:r procedures.sql
USE nq2
GO
:r catalogue.sql
:r nq2.sql
