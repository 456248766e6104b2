#!/usr/bin/env python3
"""Prints a .xls file as xlrd reads it: a line a sheet, and a line a cell with its place, kind and value.

Kinds: text, bold (a text in bold), number, date, bool. --counts prints the sheets alone, with their rows and columns.
"""
import sys

import xlrd

book = xlrd.open_workbook(sys.argv[-1], formatting_info=True)
for sheet in book.sheets():
    print(f"{sheet.name}: {sheet.nrows} x {sheet.ncols}")
    if "--counts" in sys.argv:
        continue
    for row in range(sheet.nrows):
        for column in range(sheet.ncols):
            cell = sheet.cell(row, column)
            if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                continue
            value = cell.value
            if cell.ctype == xlrd.XL_CELL_TEXT:
                font = book.font_list[book.xf_list[cell.xf_index].font_index]
                kind = "bold" if font.bold else "text"
                value = value.replace("\\", "\\\\").replace("\n", "\\n").replace("\r", "\\r")
            elif cell.ctype == xlrd.XL_CELL_DATE:
                kind = "date"
                value = xlrd.xldate_as_datetime(value, book.datemode).isoformat(sep=" ", timespec="milliseconds")
            elif cell.ctype == xlrd.XL_CELL_BOOLEAN:
                kind = "bool"
            else:
                kind, value = "number", repr(value)
            print(f"{row},{column} {kind} {value}")
