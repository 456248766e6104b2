-- Schema version 119: the till program charges by the price category of customers and staff. The columns were there.
UPDATE INNSTILLINGER SET IN_DBVERSION = '119'
go
