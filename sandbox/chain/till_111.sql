-- Schema version 111: what kind of sale an order line is.
ALTER TABLE ORDRELINJE ADD OL_STATUS tinyint NULL
UPDATE INNSTILLINGER SET IN_DBVERSION = '111'
go
