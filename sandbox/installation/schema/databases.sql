-- The databases of the sample installation. Run against master.
CREATE DATABASE dorvas
GO
CREATE DATABASE nq2
GO
