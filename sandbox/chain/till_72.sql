-- Schema version 72: files can be told apart, so that the till takes program upgrades from its own database.
ALTER TABLE BINARYOBJECT ADD
  BO_TYPE varchar(20) NULL,
  BO_DATETIME datetime NULL,
  BO_DIRECTION bit NULL,
  BO_STATUS int NULL
UPDATE INNSTILLINGER SET IN_DBVERSION = '72'
go
