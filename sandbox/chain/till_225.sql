-- Schema version 225: an item tells its product, colour and size.
ALTER TABLE VARE ADD
  VA_P_NAVN varchar(100) NULL,
  VA_FARGENAVN varchar(50) NULL,
  VA_STORRELSENAVN varchar(50) NULL
UPDATE INNSTILLINGER SET IN_DBVERSION = '225'
go
