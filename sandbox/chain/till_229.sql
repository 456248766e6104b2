-- Schema version 229: the back office's order that a till order was made from.
ALTER TABLE ORDRE ADD OR_TORVIK_OR_ID int NULL
UPDATE INNSTILLINGER SET IN_DBVERSION = '229'
go
