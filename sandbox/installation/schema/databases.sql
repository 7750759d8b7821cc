-- The databases of the sample installation. To be run in master.
CREATE DATABASE dorvas
CREATE DATABASE nq2
GO
