-- Schema version 213: an order says itself whether it is a stock count, and carries its bar code.
ALTER TABLE ORDRE ADD OR_VARETELLING bit NULL, OR_EAN13 varchar(13) NULL
UPDATE INNSTILLINGER SET IN_DBVERSION = '213'
go
