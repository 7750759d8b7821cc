-- The databases of the sample installation. To be run in master.
CREATE DATABASE dorvas
GO
CREATE DATABASE nq2
GO
