-- Schema version 194: the till program tells which lines were sold off the display. The column was there.
UPDATE INNSTILLINGER SET IN_DBVERSION = '194'
go
