-- Schema version 192: how the parts of an item are printed; items that are deleted stay, marked.
ALTER TABLE DELVARE ADD DV_UTSKRIFTSREGEL int NULL
ALTER TABLE VARE ADD VA_SLETTET bit NULL
UPDATE INNSTILLINGER SET IN_DBVERSION = '192'
go
