/* Tolvenar: the exports, and the manual of them.
 *
 * Tolvenar reads, edits, creates and writes Excel workbooks in the BIFF format (BIFF5/7: stream "Book"; BIFF8: stream "Workbook").
 * A workbook in memory is the byte image of its stream; the caller holds all of its state: the buffer, its size, the SheetTable.
 *
 * Conventions
 *  (1) A handle is the 32-bit address of a pool block, on every platform; 0 is none. To look into a block, widen it:
 *      (uint8_t *)(uintptr_t)handle. At most nine blocks are live in the process.
 *  (2) A function that takes a handle by reference may change it: a buffer that grows can move, and one that can't grow is
 *      released and its variable zeroed. Positions in a buffer are byte offsets and stay good.
 *  (3) Sheets, rows and columns are 1-based int16_t. XF indices, record offsets and what records hold are 0-based.
 *  (4) Text comes in as 8-bit zero-terminated text and leaves as a BSTR, one byte a character. A BSTR handed out is the caller's,
 *      to be released with SysFreeString. Paths are 8-bit; off Windows they reach the system byte for byte.
 *  (5) Results are small codes, 0 for success, listed per function in the order of the checks. Nothing is logged or thrown.
 *  (6) Strings, arrays and VARIANTs are ordinary pointers. An element that an array refuses is passed over in silence.
 *  (7) To be called from one thread at a time. An edit is not rolled back: the result says how far it got.
 *  (8) A stream is trusted for what it means, never for where it points: whatever a workbook holds, no call reads or writes
 *      outside the buffer's block, and every call ends.
 *
 * The life of a workbook: XLOpenFile; XLLocateSheets; queries and edits; XLSaveFile, which releases the SheetTable, so that
 * XLLocateSheets is called again if the work goes on; at the end XLFreeHandle on the table and the buffer.
 *
 * Compiles as C11 and as C++17.
 */
#ifndef TOLVENAR_TOLVENAR_H
#define TOLVENAR_TOLVENAR_H

#include <stdint.h>

#include "tolvenar/automation.h"

/* The version that a host is compiled against. Everything else that states a version reads it here. The major number is also that of
 * the shared library's name: it changes when a host has to be compiled anew. */
#define TOLVENAR_VERSION_MAJOR 1
#define TOLVENAR_VERSION_MINOR 0
#define TOLVENAR_VERSION_PATCH 0

#if defined(_WIN32)
#define TOLVENAR_CALL  __stdcall
#define TOLVENAR_CDECL __cdecl
#ifndef TOLVENAR_API
#define TOLVENAR_API
#endif
#else
#define TOLVENAR_CALL
#define TOLVENAR_CDECL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The memory pool -------------------------------------------------------------------------------------------------------
 *
 * Nine slots of fixed capacity: 256, 512, 1024, 33000, 100000, 1000000, 1500000, 105000000 and 105000000 bytes. A request takes
 * a whole slot, the first free one that is large enough. Only MEMORYALLOC sets the pool up; to all others an unset pool is one
 * without live blocks. */

/* Takes a block of `size` bytes, zeroed. Result: its handle, to be released with MEMORYFREE; 0 when no free slot is large enough.
 * A size of 0 takes a slot too. */
TOLVENAR_API uint32_t TOLVENAR_CALL MEMORYALLOC(int32_t size);

/* Resizes a block, in place or by a move to a larger slot; bytes added are not zeroed. Result: the handle, which may have
 * changed; 0 when it is no live block or no larger slot is free: the block is then untouched and still live. */
TOLVENAR_API uint32_t TOLVENAR_CALL MEMORYREALLOC(uint32_t handle, int32_t newSize);

/* Releases a block and zeroes the variable. Result: 1; 0 when the variable is 0 or names no live block, and nothing changes. */
TOLVENAR_API int32_t TOLVENAR_CALL MEMORYFREE(uint32_t* handle);

/* As MEMORYFREE; the slot also forgets the size that it was used with. Result: 1 or 0. */
TOLVENAR_API int32_t TOLVENAR_CALL MEMORYREMOVE(uint32_t* handle);

/* Result: the slot number, 1 to 9, of a live block; 0 for any other value. */
TOLVENAR_API int32_t TOLVENAR_CALL MEMORYISHANDLE(uint32_t handle);

/* Gives all memory back to the system; every handle is dead after it. Result: none. */
TOLVENAR_API void TOLVENAR_CALL MEMORYFREEALL(void);

/* Stores the sum of the requested sizes of the live blocks in *bytesInUse. `ignored` is not used. Result: the number of live
 * blocks. */
TOLVENAR_API uint32_t TOLVENAR_CALL MEMORYHANDLES(uint32_t* bytesInUse, uint32_t ignored);

/* Result: the requested size of a live block; 0 for any other value. */
TOLVENAR_API uint32_t TOLVENAR_CALL MEMORYSIZE(uint32_t handle);

/* Result: the capacity of a live block's slot; 0 for any other value. */
TOLVENAR_API uint32_t TOLVENAR_CALL MEMORYALLOCSIZE(uint32_t handle);

/* Fills the block's first `count` bytes with 0, 1, ... 254, 0, 1, ... What would lie behind the slot is not written.
 * Result: count; 0 when it is below 1 or the variable names no live block. */
TOLVENAR_API int32_t TOLVENAR_CALL MEMORYSET(uint32_t* handle, int32_t count);

/* Fills the block's first `count` bytes with `value`. Result: as MEMORYSET. */
TOLVENAR_API int32_t TOLVENAR_CALL MEMORYSET1(uint32_t* handle, int32_t count, uint8_t value);

/* Result: the byte at `index` of the block when index is below `size`, else 0. What lies outside the slot reads as 0. */
TOLVENAR_API uint32_t TOLVENAR_CALL MEMORYGET(uint32_t* handle, int32_t size, int32_t index);

/* ---- Workbook files ----------------------------------------------------------------------- */

/* Opens the workbook at `path` and reads it into a new buffer; the file is closed again before the call
 * returns. Also sets the BIFF generation that the library works with from now on.
 *   path    the workbook; it must be readable and writable and not open elsewhere
 *   buffer  out: the buffer, the caller's to release with XLFreeHandle
 *   size    out: its size in bytes
 * Result: 0 opened; 5 no pool block of that size (buffer 0, size set); 6 the stream can't be read (buffer 0);
 * 101 the file can't be opened: missing, in use, read-only or no compound file; 102 it holds no workbook
 * stream; 103 the stream is empty or too large; 104 closing the stream failed, 105 closing the file failed
 * (both leave the buffer live and the caller's, without the BUFEND at its end); 2 the buffer could not be cut
 * to its size (released, though the variable still names it: forget it). */
TOLVENAR_API int16_t TOLVENAR_CALL XLOpenFile(const char* path, uint32_t* buffer, uint32_t* size);

/* Makes the SheetTable of a buffer: a pool block of int32_t entries: the count of sheets, 0, the offset of
 * each sheet's BOF, the offset of the EOF that closes the last sheet.
 *   table   out: the table, the caller's to release with XLFreeHandle; 0 on failure
 * Result: 0 made; 1 the buffer is no live pool block; 9 the stream has no EOF; 11 no pool block for the table;
 * 12 the last sheet isn't closed. With 9, 11 and 12 the buffer has been released, though the caller's variable
 * still names it: forget it. */
TOLVENAR_API int16_t TOLVENAR_CALL XLLocateSheets(uint32_t buffer, uint32_t* table, uint32_t size);

/* Releases a buffer or a table and zeroes the variable.
 * Result: 1; 0 when the variable is 0 or names no live block. */
TOLVENAR_API uint32_t TOLVENAR_CALL XLFreeHandle(uint32_t* handle);

/* Saves the workbook: folds all patches away into a new buffer and writes it to `path`, as the only stream of
 * a new file or in the place of the workbook stream of an existing one, whose other streams stay. Off Windows
 * the old file or the new one stands on the disk, never a part of it.
 *   buffer, size  in: the workbook; out: the compact buffer and its size, the old block is released
 *   table         in: its SheetTable; out: 0, released
 * Result: 0 saved.
 * Buffer, size and table have not changed: 2 no buffer; 3 no table; 4 no pool block for the copy.
 * The buffer and the size have not changed, but the table's contents are spoilt, locate anew: 12 the last
 * sheet isn't closed; 6 the copy can't be cut to its size.
 * The buffer is compact, but lacks its BUFEND, and the table is still the caller's and fits: 101 the existing
 * file can't be opened; 102 it has no workbook stream of this generation; 111 the new file can't be created.
 * The buffer is compact without BUFEND, and the table is released: 103 the stream can't be created; 104
 * closing the stream failed; 105 closing the file failed, so that nothing is saved.
 * The block and the table are released, though the buffer variable still names the block, forget it: 6 the
 * stream can't be written (the disk is full, say). The table variable tells one 6 from the other: it is 0. */
TOLVENAR_API int16_t TOLVENAR_CALL XLSaveFile(const char* path, uint32_t* buffer, uint32_t* table,
                                              uint32_t* size);

/* Writes the numbers 1 to `count` as int32_t into a stream "Workbook" of a new or existing compound file,
 * through the same calls as a save.
 * Result: 0 written; 102 the file can't be opened or created, or has no such stream; 103 the stream can't be
 * created; 6 a short or failed write, no memory, or a negative count; 104 closing the stream failed; 105
 * closing the file failed. */
TOLVENAR_API int16_t TOLVENAR_CALL DebugSaveFile(const char* path, int32_t count);

/* Folds the patches away in memory, as a save does, and brings the BOUNDSHEET records and the table up to
 * date.
 *   buffer, size  in: the workbook; out: the compact buffer and its size, the old block is released
 *   table         its SheetTable, whose entries are renewed
 * Result: 0 done; 2 no buffer; 3 no table; 4 no pool block for the copy; 12 the last sheet isn't closed; 6 the
 * cut failed. On any failure the buffer is unchanged; at 12 and 6 the table's entries no longer fit it. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRefreshHandles(uint32_t* buffer, uint32_t table, uint32_t* size);

/* Turns every INDEX and DBCELL record into free room: the row offsets in them go stale when records move. Result: 0 done; 1 the
 * buffer is 0. */
TOLVENAR_API int16_t TOLVENAR_CALL XLDeleteDBCells(uint32_t buffer, uint32_t size);

/* ---- Sheet catalogue ---------------------------------------------------------------------- */

/* Lists every record of the walk, the patch records included, into four one-dimensional arrays from index 1
 * on. A null array, and an element that an array refuses, is passed over.
 *   size     the buffer's size in bytes
 *   count    out: the number of records
 *   offsets  32-bit offsets of the records
 *   types    16-bit codes: the low byte of the type, plus 256 if its high byte is exactly 0x10
 *   images   the records' bytes, header included, as a BSTR of that many bytes, for an array of VT_BSTR (off
 *            Windows also VT_VARIANT); empty where the size does not fit 16 signed bits
 *   lengths  16-bit sizes of the records, header included
 * Result: 0 done, also for a size of 1 or less, with count 0; 1 null buffer or no live block, count
 * untouched; 10 no pool block for an image: the arrays and the count stand as far as they were filled. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetList(uint32_t buffer, int32_t size, int32_t* count,
                                             SAFEARRAY** offsets, SAFEARRAY** types, SAFEARRAY** images,
                                             SAFEARRAY** lengths);

/* Result: the number of sheets, by the low 16 bits of the table's first entry; 0 for a null table. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetNumSheets(uint32_t table);

/* Sets the library's BIFF generation to what the workbook's globals say, 5 or 6. Result: the generation,
 * which a null table leaves as it was. */
TOLVENAR_API uint16_t TOLVENAR_CALL XLGetNumVers(uint32_t buffer, uint32_t table);

/* Result: `version`, unchanged. */
TOLVENAR_API int16_t TOLVENAR_CALL XLVersInt(int16_t version);

/* Gives a sheet's name. The BSTR has as many 16-bit units as the name has bytes: the name's bytes stand
 * packed in its first half and zeros in the second. Names are read by the BIFF8 layout in both generations,
 * and BIFF5 names come out shifted, on purpose.
 *   sheet  1-based; 1 or less is the first
 *   name   out: the name, the caller's to release
 * Result: the length of the name in bytes; 0 also on every failure: null table (name untouched), no pool
 * block (name untouched), no BOUNDSHEET (empty name). */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetNameSheet(uint32_t buffer, uint32_t table, int16_t sheet, BSTR* name);

/* Looks a sheet's entry up and hands nothing back; the four last arguments are neither read nor written.
 * Result: not 0; 0 for a null table or when no pool block can be had. */
TOLVENAR_API uint32_t TOLVENAR_CALL XLGetSheetParam(uint32_t buffer, uint32_t table, int16_t sheet,
                                                    uint32_t unused1, uint32_t unused2, uint32_t unused3,
                                                    uint32_t unused4);

/* Copies every sheet's name into a pool block of its own, which stays live after the call: release them with
 * MEMORYFREEALL at the latest. `unused` is not read. Result: 3 for a null buffer, else 0. */
TOLVENAR_API int16_t TOLVENAR_CALL XLSheetsNameNum(uint32_t buffer, uint32_t table, uint32_t unused);

/* Result: the first 16 bits of the payload of the last globals record, which in BIFF8 is the number of shared
 * strings per bucket; 0 for a null table. */
TOLVENAR_API uint16_t TOLVENAR_CALL XLNumStrBucket(uint32_t buffer, uint32_t table);

/* Result: the low 16 bits of the offset of the shared string table; 0 for a null table. Without such a table
 * it means nothing. */
TOLVENAR_API int16_t TOLVENAR_CALL XLNumStrExt(uint32_t buffer, uint32_t table);

/* Reads one shared string and puts it, as a BSTR, into a two-dimensional array at the row and column of a
 * LABELSST record. A string is read as 8-bit, wide or rich as the string before it is flagged, and string 0
 * as 8-bit, on purpose. On Windows the caller removes the arguments (cdecl).
 *   index         the string's number; below 1 is string 0
 *   bucket        from XLNumStrBucket; not used, and may be 0
 *   sstOffset     from XLNumStrExt
 *   cells         the array
 *   recordOffset  the LABELSST record
 * Result: none. */
TOLVENAR_API void TOLVENAR_CDECL XLEXTLabel(uint32_t buffer, int32_t* index, int16_t* bucket,
                                            int32_t sstOffset, SAFEARRAY** cells, int32_t recordOffset);

/* ---- Cell data ---------------------------------------------------------------------- */

/* Gives a worksheet's used range, 1-based and inclusive, by its DIMENSIONS record; without one the outputs
 * stay untouched. Result: 0 a worksheet; 1 null table; 2 no such sheet; 3 null buffer; 5 globals, 6 Visual
 * Basic module, 7 macro sheet, 8 workspace, 9 chart: outputs untouched. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetSheetSize(uint32_t buffer, uint32_t table, int16_t sheet,
                                                  uint16_t* firstRow, uint16_t* lastRow, uint16_t* firstCol,
                                                  uint16_t* lastCol);

/* Puts the values of a worksheet's cells into a two-dimensional array, first index the row, second the
 * column, both 1-based. Cells without a record, and elements that the array refuses, stay as they were.
 * Numbers, RKs, labels and shared strings are put as a BSTR (numbers with six decimals), error and boolean
 * cells, formulas and rich strings as a VARIANT; off Windows an array of VT_VARIANT or of VT_BSTR takes them
 * both, but for the double of a formula, which only VT_VARIANT takes. A text that finds no pool block, and a
 * formula with an empty result, leave their element as it was. A sheet without DIMENSIONS fits every array.
 * Result: 0 done; 1 null table or no sheets; 3 no such sheet, null buffer, or no worksheet; 4 the array has
 * not two dimensions; 5 it does not cover the used range; 2 the table's count is negative; 7, 8 are reserved.
 * On any failure nothing has been put. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetVariantData(SAFEARRAY** cells, uint32_t buffer, uint32_t table,
                                                    int16_t sheet);

/* Takes access to the array's data and gives it back. `unused` is not read. On Windows the caller removes the
 * arguments (cdecl). Result: 0. */
TOLVENAR_API int16_t TOLVENAR_CDECL XLSGetVariantData(uint32_t unused, SAFEARRAY** cells);

/* Puts the XF indices of a worksheet's cells into a two-dimensional array of 16-bit integers (or wider), as
 * XLGetVariantData puts the values. Cells that hold a shared string are left out, on purpose.
 * Result: as XLGetVariantData. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetCellData(SAFEARRAY** cells, uint32_t buffer, uint32_t table,
                                                 int16_t sheet);

/* ---- Charts --------------------------------------------------------------------------------
 *
 * A chart is asked for by its sheet and its number in it, both 1-based. Charts are only read. XLGetChartData comes first: its
 * properties 1 and 2 are how many items and series the arrays of the others have to hold. An array of another shape or type than is asked
 * for takes nothing, where no result says otherwise.
 *
 * A cell of the workbook comes as one 32-bit number, 0 for none: less 1, its bytes from the lowest on are the sheet (low byte of its
 * number), the row (low byte, then the upper 6 bits) and the column, all as the formula of the series holds them: 0-based, and always
 * taken for BIFF5's layout.
 *
 * Result of the four readers of a chart, in the order of the checks: 1 null table or no sheets; 2 sheet above a negative count and below
 * 1; 3 XLGetNumCharts gives a negative number; 4, 5 see XLGetSetData; 6, 7, 8 can't happen; 9 there is no such chart, or its substream is
 * not closed in front of the sheet's end; 10 no pool block (asked for in front of 9 by XLGetGraphData and XLGetChartData); 100 an END
 * came with nothing open: what was read in front of it is given, and one pool block of 120 bytes stays live, which only MEMORYFREEALL
 * gives back; 0 done.
 *
 * A search for a chart ends 4 bytes later, on purpose, in a sheet whose number equals the number of its charts. A worksheet's charts
 * are found either way, since other records stand behind them. That of a chart sheet, which counts as one, is found where the sheet is
 * the first of several, or the last of several; elsewhere the result is 9. */

/* Result: the number of charts of a sheet, 1 for every chart sheet, in the low 16 bits (signed; the rest repeats the sign). Below 0:
 * -1 null table; -2 no such sheet; -3 null buffer; -4 globals; -5 Visual Basic module; -6 macro sheet; -7 workspace. */
TOLVENAR_API int32_t TOLVENAR_CALL XLGetNumCharts(uint32_t buffer, uint32_t table, int16_t sheet);

/* Puts the cells that the series' values come from into a two-dimensional array of 32-bit integers: first index the series, second
 * the item, both from 1. Areas come cell by cell, columns fastest. Elements that no cell belongs to stay as they were.
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetGraphData(SAFEARRAY** cells, uint32_t buffer, uint32_t table,
                                                  int16_t sheet, int16_t chart);

/* Puts what is told of series i into element i of arrays of one dimension, from exactly 1 to exactly seriesCount. What is not told
 * stays as it was.
 *   names       BSTR: the name, one byte a character; in BIFF8 a byte of flags comes first and the last character is missing, on purpose
 *   references  32-bit integers: the cell of the name, where there is no name as text
 *   spare       anything, from 1 to spareCount: only its shape is looked at
 *   groups      32-bit integers: set them to 0 first. The kind of the series' chart group: 0 area, bar, pie or surface; 1 line, scatter or
 *               radar; 0xFFFF a group of no kind
 *   colours     32-bit integers: the colour, red in the low byte, then green, blue
 * Result: as above, with 4 an array has not one dimension, 5 it has other bounds (names, references, groups, colours, spare, in this
 * order). A name that finds no pool block leaves all of its series but what came before it as it was. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetSetData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                                                SAFEARRAY** names, SAFEARRAY** references, SAFEARRAY** spare,
                                                SAFEARRAY** groups, SAFEARRAY** colours, int16_t seriesCount,
                                                int16_t spareCount);

/* Gives the titles of a chart, their fonts (indices of FONT records) and their colour, that of the text that stands last. What the chart
 * does not have stays as it was; a text that *title, *axisOne or *axisTwo held before is not released. Texts are as the names of
 * XLGetSetData, and the caller's. Result: as above, without 10 and 100. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetTitleData(uint32_t buffer, uint32_t table, int16_t sheet,
                                                  int16_t chart, BSTR* title, BSTR* axisOne, BSTR* axisTwo,
                                                  uint16_t* titleFont, uint16_t* axisFont, uint32_t* colour);

/* Puts the properties of a chart into an array of 32-bit integers, one dimension, from 1 to 21 at least. None is cleared, and some are
 * read and changed: set all to 0 first, or a second call on the same array can move 4 and 9 further.
 *    1 the largest number of categories of a series (of cells in its values); 2 number of series; 3 1: round (pie, radar)
 *    4 raised by 2: pie, and surface or scatter with their flag; 5 family: 0, 1 radar, 2 pie, 3 three-dimensional
 *    6 1: stacked; 7 2: stacked; 8 background colour; 9 code of the labels; 10 bars: 4 lying, 1 standing
 *   11 left column, 12 top row, 21 id of the chart's object in the sheet, each plus 1; 13 width, 14 height, 20 to a point
 *   15 font of the chart's texts, 16 of the legend's, 17 of all else; 18 1: the legend's place is 2; 19 1: legend; 20 1: lines
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetChartData(SAFEARRAY** properties, uint32_t buffer, uint32_t table,
                                                  int16_t sheet, int16_t chart);

/* ---- Cell editing ---------------------------------------------------------------------------------------------------------- */

/* Gives one cell a new value. The cell must lie in the sheet's used range and in a row that has a ROW record.
 * It keeps its XF; a new one gets XF 15.
 *   buffer, size  the workbook; both may change
 *   value         VT_EMPTY makes a blank (in a run of blanks it takes the whole run out, on purpose); VT_I2,
 *                 VT_I4, VT_R4, VT_R8 and VT_DATE (whole days) make a number; VT_CY a number of the same 8
 *                 bytes; VT_BSTR, also VT_BYREF, a text of each unit's low byte; any other type removes the
 *                 cell; null counts as VT_NULL
 * Result: 0 done; 1 no such cell can exist, or no such sheet, table or buffer; 2 VT_NULL; 3 null buffer; 4 a
 * MULRK, 5 a MULBLANK could not be split; 6 the blank, 8 the integer or date, 10 the float, 12 the text (also
 * a null string or one of more than 32755 units), 13 the double or currency could not be written. From 4 on
 * the old cell is gone; where the buffer could not grow it is released and its variable is 0, and up to three
 * scratch blocks stay live in the pool. */
TOLVENAR_API int16_t TOLVENAR_CALL XLChangeCellValue(uint32_t* buffer, uint32_t table, uint32_t* size,
                                                     int16_t sheet, int16_t row, int16_t column,
                                                     const VARIANT* value);

/* Gives one cell a new XF index; an absent cell becomes a blank. In a run of cells the first cell takes the
 * new XF along, on purpose.
 * Result: 0 done; 1 no such cell can exist, or no such sheet, table or buffer; 3 null buffer; 4, 5 the cell
 * of a MULRK, MULBLANK could not be stamped; 6 the blank could not be written. */
TOLVENAR_API int16_t TOLVENAR_CALL XLChangeCellXF(uint32_t* buffer, uint32_t table, uint32_t* size,
                                                  int16_t sheet, int16_t row, int16_t column, uint16_t xf);

/* Gives every cell record of a sheet the XF index that `matrix` holds for it, at row x stride + column
 * (0-based); a negative entry leaves the cell as it is. Of a run only the first cell is stamped. The matrix
 * must cover every cell of the sheet.
 * Result: 1 done; 0 null table or buffer, or no such sheet. */
TOLVENAR_API uint32_t TOLVENAR_CALL ChangeFormat(uint32_t buffer, uint32_t table, int16_t sheet,
                                                 const int16_t* matrix, int32_t stride);

/* ---- Rows and columns ------------------------------------------------------------------------------------
 *
 * Six operations on the structure of one worksheet. All take
 *   buffer, size  the workbook; both may change
 *   table         its SheetTable, which stays good
 *   sheet         1-based
 *   row, column   1-based
 * and give the results
 *   0 done; 1 null table or no sheets; 2 reserved; 3 no such sheet, null buffer, or no worksheet (XLAddRow,
 *   XLInsertRow: also no pool block for the new row); 4 the position is refused; 7 reserved; 8 null `size`;
 *   9 XLAddRow: the first or last used row has no ROW record to copy; 10 XLAddRow, XLInsertRow: the new row
 *   could not be written, and where the buffer could not grow it is released and its variable is 0; 11
 *   reserved.
 * With 1 to 8 nothing has changed, but for the 3 of XLInsertRow and XLAddRow that tells of the pool. Nothing is
 * rolled back. XLInsertCol and XLDeleteCol give 0 also when the pool has no room for the pieces of a run: its
 * cells can be gone then, and a buffer that could not grow is released and its variable is 0. Cells, ROW records
 * and the formulas of the sheet itself follow; column widths, merged cells, names, cells of the shared string
 * table (LABELSST) and formulas on other sheets do not. INDEX and DBCELL go stale: XLDeleteDBCells removes them.
 * Formulas are read by BIFF5's layout in both generations, on purpose: in a BIFF8 workbook references come
 * out wrong, though no record but the formula's own is touched. In either, a relative reference comes out
 * absolute: its flags, bits 15 and 14 of the row word, go to bits 7 and 6, on purpose; absolute references
 * in a BIFF5 workbook follow as one would want.
 *
 *   uint32_t book = 0, size = 0, table = 0;
 *   if (XLOpenFile("report.xls", &book, &size) == 0 && XLLocateSheets(book, &table, size) == 0)
 *     XLInsertRow(&book, table, &size, 1, 5);      (opens row 5 of the first sheet)
 */

/* Widens the used range up to `row`, which lies outside it (inside: 4): rows beyond the last one get copies of
 * the last ROW record; with `row` before the first one, all rows from it to the last but one get copies of the
 * first ROW record, also those that have one, on purpose. No cell moves. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLAddRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                            int16_t row);

/* Widens the used range up to `column`, which lies outside it (inside: 4), in every row. `size` is not used.
 * Works on the BIFF8 fields of the sheet's dimensions in both generations, on purpose. Result: 0 to 4 as
 * above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLAddCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                            int16_t column);

/* Opens an empty row at `row`, with the height and format of the row that moves down (none when that one has no
 * ROW record). Any position passes unless the used range is inverted. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLInsertRow(uint32_t* buffer, uint32_t table, uint32_t* size,
                                               int16_t sheet, int16_t row);

/* Opens an empty column at `column`. A run of cells across it is split; the record that directly follows a
 * split run stays as it is, on purpose. Any position passes unless the used range is inverted. Result: 0 to 8
 * as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLInsertCol(uint32_t* buffer, uint32_t table, uint32_t* size,
                                               int16_t sheet, int16_t column);

/* Takes row `row` away with its cells. The used range keeps its last row unless `row` lies beyond it, on
 * purpose. A reference to the row, and one to the row behind it, becomes a reference error. `size` is not used.
 * Any position passes unless the used range is inverted. Result: 0 to 4 as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLDeleteRow(uint32_t* buffer, uint32_t table, uint32_t* size,
                                               int16_t sheet, int16_t row);

/* Takes column `column` away with its cells; a run of cells that begins in it keeps them all, moved left by one,
 * on purpose. The position check compares with the rows of the used range. Result: 0 to 8 as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLDeleteCol(uint32_t* buffer, uint32_t table, uint32_t* size,
                                               int16_t sheet, int16_t column);

/* ---- New workbooks and sheets --------------------------------------------------------------
 *
 * A new workbook is made in memory, gets its sheets, and is saved:
 *
 *   XLCreateEmptyBook(&buffer, &size, 8);
 *   XLAppendVariantSheet(&buffer, &size, "Sales", columns, rows, cells, xf);
 *   XLLocateSheets(buffer, &table, size);
 *   XLSaveFile("report.xls", &buffer, &table, &size);
 *
 * Sheets can be added to any workbook, also one that was opened and edited. Adding one makes every SheetTable
 * of before stale.
 *
 * Cells. A VARIANT becomes a number (VT_I2, VT_I4, VT_R4, VT_R8; VT_DATE without its time of day; VT_CY as
 * the double of the same 8 bytes), a text (VT_BSTR, also VT_BYREF: the low byte of each unit) or a blank
 * (VT_EMPTY, and any other type). Numbers have single precision: about seven digits. Each column has one XF
 * index, 0-based, for all its cells; a null array of XFs is XF 0.
 *
 * Result of the appends: the number of the new sheet, from 1 on; or
 *   -2  an append failed: the pool has no larger block. The new buffer is released and *buffer is 0
 *   -4  no buffer, or no pool block for the new one: nothing has changed
 *   -5  the sheet's body could not be built: the pool has no larger block, or a cell is VT_NULL
 *   -7  the stream could not be laid out anew, -8 its sheets could not be located. Either code also where the
 *       buffer has patches that can't be folded away first: nothing has changed then; otherwise, at -8 the
 *       workbook is released and *buffer is 0
 * After -5 and -2 the old buffer is still live, and after -5 *buffer names the new one where it was before it
 * grew: a caller that wants the old one back, or its slot, keeps a copy of the handle. Nothing is rolled
 * back: the old buffer's sheets are deselected. */

/* Makes a workbook of globals alone, without a sheet, and sets the BIFF generation that the library works
 * with from now on.
 *   buffer    out: the buffer, the caller's to release with XLFreeHandle; it has no BUFEND
 *   size      out: its size: 1168 bytes, in BIFF8 1382
 *   selector  8: BIFF8; any other value: BIFF5
 * Result: 0 made; -1 no pool block: nothing has changed; -2 an append failed. */
TOLVENAR_API int16_t TOLVENAR_CALL XLCreateEmptyBook(uint32_t* buffer, uint32_t* size, int32_t selector);

/* Makes the SheetTable of a new workbook: as XLLocateSheets, but without sheets its last entry is the offset
 * behind the globals.
 *   table  out: the table, the caller's to release with XLFreeHandle; 0 on failure
 * Result: 0 made; 1 null buffer; 9 the stream has no EOF; 11 no pool block for the table; 12 the last sheet
 * isn't closed. With 9, 11 and 12 the buffer has been released: forget it. */
TOLVENAR_API int16_t TOLVENAR_CALL XLEmptyBookLocateSheets(uint32_t buffer, uint32_t* table, int32_t size);

/* Adds an empty worksheet.
 *   name  8-bit; null or empty makes it "Sheet" and its number
 *   cols, rows  its used range, which is stated one larger in each direction; a ROW for each row
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLAppendSheet(uint32_t* buffer, uint32_t* size, const char* name,
                                                 int16_t cols, int16_t rows);

/* Adds a worksheet of text cells.
 *   texts  rows x cols 8-bit texts, row by row. Of each, twice its length is copied into its record, so it
 *          must have that many readable bytes; what stands behind its zero is stored and never shown
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLAppendFullSheet(uint32_t* buffer, uint32_t* size, const char* name,
                                                     int16_t cols, int16_t rows, const char* const* texts);

/* Adds a worksheet of values.
 *   cells  addresses of rows x cols VARIANTs, row by row
 *   xf     the XF of each column
 * Result: as above; a VT_NULL gives -5. */
TOLVENAR_API int16_t TOLVENAR_CALL XLAppendVariantSheet(uint32_t* buffer, uint32_t* size, const char* name,
                                                        int16_t cols, int16_t rows,
                                                        const VARIANT* const* cells, const uint16_t* xf);

/* The same from arrays; it takes two more pool blocks, of 4 and 16 bytes a cell.
 *   cells  an array of VT_VARIANT with one index, 0 to rows x cols - 1, row by row
 *   xf     an array of 16-bit integers, one for each column
 * Texts that the array gives are copied, and the copies are not released.
 * Result: as above; -5 also when the two blocks can't be had, and nothing has changed. */
TOLVENAR_API int16_t TOLVENAR_CALL XLAppendVariantSheetVB(uint32_t* buffer, uint32_t* size, const char* name,
                                                          int16_t cols, int16_t rows, SAFEARRAY** cells,
                                                          SAFEARRAY** xf);

/* Appends the records of a worksheet of values behind the end of a buffer that AppendVariantSheet1 made; the
 * arguments are those of XLAppendVariantSheet.
 * Result: 0 done, *size is behind the sheet; 2 a cell is VT_NULL; -2 an append failed. After 2 and -2
 * *buffer and *size are as they were, though the block may have moved or be released. */
TOLVENAR_API int16_t TOLVENAR_CALL CreateVariantSheet(uint32_t* buffer, uint32_t* size, int16_t cols,
                                                      int16_t rows, const VARIANT* const* cells,
                                                      const uint16_t* xf);

/* A sheet in stages, for tables that come slice by slice or are too large to be held at once:
 *
 *   sheet = AppendVariantSheet1(&buffer, &size, "Sales");                    enters it into the workbook
 *   CreateVariantSheet1A(&buffer, &size, columns, rows, &position);           its head, range and rows
 *   CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 5, 100, cells, xf); 5 columns, rows 0 to 99
 *   CreateVariantSheet2A(&buffer, &size, &position, 0, 100, 5, 100, ...);     and so on
 *   CreateVariantSheet3(&buffer, &size, &position);                           its tail
 *   AppendVariantSheet2(&buffer, &size, sheet);                               a workbook again
 *
 * or, with all cells at once, CreateVariantSheet1 and CreateVariantSheet2 in the place of the two A calls.
 * The order is not checked. Between the calls `position` is the end of the stream and `size` means nothing.
 * A call that gives -2 has released the workbook: *buffer is 0.
 *
 * Result of AppendVariantSheet1: the sheet's number; -2 no buffer, no pool block, or patches that can't be
 * folded away: the workbook is as it was, but *size may have changed. */
TOLVENAR_API int16_t TOLVENAR_CALL AppendVariantSheet1(uint32_t* buffer, uint32_t* size, const char* name);

/* Opens the sheet. Result: 0; -2. */
TOLVENAR_API int16_t TOLVENAR_CALL CreateVariantSheet1(uint32_t* buffer, uint32_t* size, uint32_t* position);

/* Opens the sheet and states its range: `cols` and `rows`, at most 65534 each, stated one larger; a ROW for
 * each row, at least one. Result: 0; -2. */
TOLVENAR_API int16_t TOLVENAR_CALL CreateVariantSheet1A(uint32_t* buffer, uint32_t* size, int32_t cols,
                                                        int32_t rows, uint32_t* position);

/* States the range and writes all cells: `cells` holds rows x cols VARIANTs, row by row, and a VT_NULL is a
 * blank. Result: 0; -2. */
TOLVENAR_API int16_t TOLVENAR_CALL CreateVariantSheet2(uint32_t* buffer, uint32_t* size, uint32_t* position,
                                                       int16_t cols, int16_t rows, const VARIANT* cells,
                                                       const uint16_t* xf);

/* Writes a slice: `cells` holds its rows x cols VARIANTs, row by row, `xf` its columns' XFs; the first cell
 * goes to row firstRow, column firstCol, 0-based. Result: 0; -2. */
TOLVENAR_API int16_t TOLVENAR_CALL CreateVariantSheet2A(uint32_t* buffer, uint32_t* size, uint32_t* position,
                                                        uint16_t firstCol, uint16_t firstRow, uint16_t cols,
                                                        uint16_t rows, const VARIANT* cells,
                                                        const uint16_t* xf);

/* Closes the sheet; *size is true again. Result: 0; -2. */
TOLVENAR_API int16_t TOLVENAR_CALL CreateVariantSheet3(uint32_t* buffer, uint32_t* size, uint32_t* position);

/* Finishes the workbook. Result: `sheet`, unchanged; -2, -8: released, *buffer is 0; -7 no pool block for the
 * new layout. */
TOLVENAR_API int16_t TOLVENAR_CALL AppendVariantSheet2(uint32_t* buffer, uint32_t* size, int16_t sheet);

/* Writes a BUFEND behind the end of a buffer. Result: 0, *size is behind it; -2: the buffer is released,
 * *buffer is 0 and *size 0xFFFFFFFF. */
TOLVENAR_API int16_t TOLVENAR_CALL AddZemblerRecord(uint32_t* buffer, uint32_t* size);

/* ---- Styles --------------------------------------------------------------------------------
 *
 * The style tables of a workbook, by kind: 0 XF, 1 FONT, 2 FORMAT, 3 colours of the palette. Of the fonts, number 4 does not
 * exist: the fifth FONT record is font 5, and a list of fonts has an element 4 that is never filled. A list of formats ends with
 * the built-in ones, 17 in BIFF5 and 36 in BIFF8. */

/* Counts the items of a kind. Result: the count, what does not exist and what is built in included; 0 for a null table, a null
 * buffer or an unknown kind. */
TOLVENAR_API uint16_t TOLVENAR_CALL XLGetNumFormatItems(uint32_t buffer, uint32_t table, int16_t kind);

/* Makes an item block of each XF, FONT or FORMAT: u16 length, then the record's payload, which the functions below read.
 *   items  an array of 32-bit integers from 0 to the count - 1, for the handles; release each with MEMORYFREE
 * The pool's nine blocks are the limit. The format index of an XF becomes the format's place in the list of formats, from 1 on, or
 * 0; texts of FORMAT records are softened for display ("?" to "0", "*" and "_" to blanks). With kind 3 no item is made: see
 * XLGetColorData.
 * Result: 1 no items; 21 no pool block for the list of formats; 4 not one dimension; 5 the array does not reach from 0 to
 * count - 1; 6, 11 can't happen; 8 no pool block for an item, 10 none for a built-in format (what was put stands, and
 * its blocks are live); 0 done. After 4, 5 and 8 of XFs a block of the pool stays taken. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetFormatData(SAFEARRAY** items, uint32_t buffer, uint32_t table,
                                                   int16_t kind);

/* Puts the colours of the workbook's palette into an array of 32-bit integers from 0 to the count - 1: red in the low byte, then
 * green, then blue. Records count by the low byte of their type, so that the STYLEEXT (0x0892) of newer BIFF8 workbooks counts as a
 * palette, on purpose: a count above 56 (XLGetNumFormatItems, kind 3) tells that there are no colours to be had.
 * Result: 1 no palette; 4 not one dimension; 5 the array does not fit; 6, 11 can't happen; 0 done. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetColorData(SAFEARRAY** colours, uint32_t buffer, uint32_t table);

/* Puts the 56 standard colours into an array of 32-bit integers from 0 to 55. Result: 4 not one dimension; 5 the array does not
 * reach from 0 to 55; 0 done. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetStandardPalette(SAFEARRAY** colours);

/* ---- Row heights, column widths, zoom ------------------------------------------------------
 *
 * Result of the readers of heights and widths: 1 null table or no sheets; 2 sheet above a negative count and below 1; 3 no such
 * sheet, null buffer, or no worksheet; 4 not one dimension; 5 the array, of 16-bit integers, does not reach from exactly 1 to
 * exactly the last row or column of the used range (any end passes where a sheet tells no range); 6, 7 can't happen; 0 done. */

/* Puts the height of every row, in twips; a ROW record's plus 1, on purpose. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetRowHeight(SAFEARRAY** heights, uint32_t buffer, uint32_t table,
                                                  int16_t sheet);

/* Puts the width of every column, 120 units a character. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetColWidth(SAFEARRAY** widths, uint32_t buffer, uint32_t table,
                                                 int16_t sheet);

/* Result: the zoom of a worksheet or chart sheet as a ratio, 1.0 when none is stated; -1.0 null table; -2.0 no such sheet; -3.0
 * null buffer; -5.0 globals; -6.0 Visual Basic module; -7.0 macro sheet; -8.0 workspace. */
TOLVENAR_API double TOLVENAR_CALL XLGetMagnification(uint32_t buffer, uint32_t table, int16_t sheet);

/* ---- Fields of an item block ---------------------------------------------------------------
 *
 * Each function reads a field of a block that XLGetFormatData made, a FONT (XLFont...), an XF (XLXF...) or a FORMAT. -1 is the result
 * for a null block, and nothing is written then. Which kind of item the block holds is not checked. */

/* Result: the height of the font in twips; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontSize(uint32_t block);

/* Result: the font's colour as a palette number, from 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontColor(uint32_t block);

/* Result: the font's weight, 400 for normal, 700 for bold; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontBoldness(uint32_t block);

/* Result: 1 when italic, else 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontItalic(uint32_t block);

/* Result: 1 when struck out, else 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontStrikeOut(uint32_t block);

/* Result: the font's kind of underline; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontUnderline(uint32_t block);

/* Result: the XF's font index; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFFont(uint32_t block);

/* Result: the place of the XF's format in the list of formats, from 1 on, or 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFFormat(uint32_t block);

/* Result: 1 when locked, else 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFLocked(uint32_t block);

/* Result: 1 when the formula is hidden, else 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFHidden(uint32_t block);

/* Result: the horizontal alignment, 0 to 7; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFHAlignment(uint32_t block);

/* Result: the vertical alignment, 0 to 3; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFVAlignment(uint32_t block);

/* Result: the rotation, 0 to 3; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFRotation(uint32_t block);

/* Gives the fill pattern and the styles of the borders. *top has 7 bits: the left style and the low bit of the right one stand above its
 * own three, on purpose. Result: 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFBorderStyle(uint32_t block, uint16_t* fill, uint16_t* top,
                                                   uint16_t* bottom, uint16_t* left, uint16_t* right);

/* Gives the colours as palette numbers, in 16 bits; one that is not set is 0xFFF8. The one colour of a plain cell comes in
 * *colour2, with 0 in *colour1. Result: 0; -1. */
TOLVENAR_API int16_t TOLVENAR_CALL XLXFColors(uint32_t block, uint16_t* colour1, uint16_t* colour2,
                                              uint16_t* top, uint16_t* bottom, uint16_t* left,
                                              uint16_t* right);

/* Gives the name of a font; *name is the caller's. Result: 0; -1; -4 no pool block. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFontName(uint32_t block, BSTR* name);

/* Gives the text of a number format; *text is the caller's. In BIFF8 two bytes in front of the text are passed over, which the
 * built-in formats don't have: they lose two characters, on purpose. Result: 0; -1; -4 no pool block. */
TOLVENAR_API int16_t TOLVENAR_CALL XLFormatString(uint32_t block, BSTR* text);

/* ---- Finding or adding a font, a number format, an XF --------------------------------------
 *
 * Each function gives the index of an item with the given attributes, as records name it, and adds one when the workbook has none. The
 * SheetTable stays good. All records are compared and made by BIFF5's layout, in BIFF8 too.
 *
 * A new item goes behind the last of its kind, in front of the record that follows there. Where that is the EOF of the globals, as in a
 * workbook that has none of the kind, the first sheet's BOF moves with it, and its entry in the SheetTable with both.
 *
 * Result: the index; or
 *    -1  null text; XLGetFormat: also a null table or buffer
 *    -6  null table, -11 null buffer (or null size)
 *    -3  no pool block for the record (XLGetXFIndFull: -12); XLGetFormat: -21 none for its list
 *    -4  the record could not be patched in: its block stays taken; a buffer that could not grow is released and *buffer is 0. A name
 *        or text of more than 32,000 characters makes a record that is too long, and the buffer stays as it was */

/* Fonts.
 *   name       8-bit, zero-terminated
 *   colour     palette number, from 0
 *   height     in twips
 *   italic, strikeout  0 or 1; any other value always adds a font that has it
 * While there are fewer than four fonts the index of one that is added is 1 too high, on purpose: asking again gives the right one.
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetFont(uint32_t* buffer, uint32_t table, uint32_t* size,
                                             const char* name, int16_t colour, uint16_t height,
                                             uint16_t boldness, uint16_t italic, uint16_t underline,
                                             uint16_t strikeout);

/* Number formats, by their 8-bit text. New ones are numbered from 254 down. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetFormat(uint32_t* buffer, uint32_t table, uint32_t* size,
                                               const char* text);

/* XFs by some of their fields.
 *   locked, hidden  0 or 1; any other value always adds an XF that has it
 *   horizontal, vertical, rotation  4 bits each of the alignment word, from the lowest on, in this order: not the bit fields that
 *              XLXFVAlignment and XLXFRotation read
 *   colours    the record's colour word
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetXFInd(uint32_t* buffer, uint32_t table, uint32_t* size, uint16_t font,
                                              uint16_t format, uint16_t locked, uint16_t hidden,
                                              int16_t horizontal, int16_t vertical, int16_t rotation,
                                              uint16_t colours);

/* XFs by all of their fields; colours are palette numbers, from 0. `locked` and `hidden` play no part in the search, which finds only
 * locked XFs that are not hidden; in BIFF8 it finds none that a file had. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLGetXFIndFull(
    uint32_t* buffer, uint32_t table, uint32_t* size, int16_t font, int16_t format, uint16_t locked,
    uint16_t hidden, int16_t horizontal, int16_t vertical, int16_t rotation, int16_t background,
    int16_t fillPattern, int16_t patternColour, int16_t bottomStyle, int16_t bottomColour, int16_t topStyle,
    int16_t topColour, int16_t leftStyle, int16_t leftColour, int16_t rightStyle, int16_t rightColour);

/* ---- Changing row heights and column widths ------------------------------------------------
 *
 * Result of both: 0 done; 1 null table or no sheets; 2 sheet above a negative count and below 1; 3 no such sheet, null buffer, or no
 * worksheet; 4 the position lies inside an inverted range of rows (of columns too, on purpose); 7, 8 can't happen. */

/* Sets the height of a row, in twips, in its ROW record; a row without one keeps its height. `size` is not used. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLChangeRowHeight(uint32_t* buffer, uint32_t table, uint32_t* size,
                                                     int16_t sheet, int16_t row, uint16_t height);

/* Sets the width of a column, in 1/256 of a character, in the COLINFO of exactly this column.
 * Result: as above; -20 there is no such COLINFO: on purpose none is made, and a small block of the pool stays taken; -22 there is
 * neither a COLINFO nor a used range; -4 can't happen. */
TOLVENAR_API int16_t TOLVENAR_CALL XLChangeColWidth(uint32_t* buffer, uint32_t table, uint32_t* size,
                                                    int16_t sheet, int16_t column, uint16_t width);
/* ---- References ------------------------------------------------------------------------------------------------------------
 *
 * A ReferenceFile is a compound file of report bindings: a stream "Contents" with the ids, and a stream per reference. It is
 * opened, exclusively, and closed within each call. A ReferenceBuffer is a reference in memory; it is released with MEMORYFREE or
 * XLFreeHandle. A file that doesn't exist is refused: a first one is made by the program tolvenar-newref. */

/* Enters a new, empty reference. Result: its id, above 0, the lowest that is free; or, with the file as it was:
 *   -1   no file name                        -3   the file can't be opened
 *   -11  no "Contents"                       -12  it is empty
 *   -13  no pool block for it                -15  it can't be read whole
 *   -16  no pool block for the ids; the image of "Contents" stays allocated
 *   -18  no pool block for the new image; the list of ids stays allocated
 *   -20  "Contents" can't be made anew       -21  it can't be written
 *   -22  no pool block for the stream name   -24  the new stream can't be made, as when one of that name was left behind;
 *                                                 the id is then in "Contents" all the same
 *   -25, -8, -26  its first, a middle, its last record can't be written
 *   -27  closing the file failed
 * (-4, -5, -6, -9 and -10 tell of a file made anew, which this call doesn't do for a file that is missing.) */
TOLVENAR_API int32_t TOLVENAR_CALL XLCreateReference(const char* path);

/* Removes reference `id` and its stream. Whether the id is listed is not looked at: when it isn't, the last listed id falls out.
 * Result: 0; or, with the file as it was, -3, -11, -12, -13, -15, -16, -18, -20, -21, -22, -24, -27 as above. -24: there is no
 * such stream. At -22 and -24 the new image of "Contents" stays allocated. */
TOLVENAR_API int16_t TOLVENAR_CALL XLDeleteReference(const char* path, uint32_t id);

/* Reads reference `id`: *buffer is the caller's, *size counts its BUFEND. Result: 0; 101 the file can't be opened; 102 there is
 * no such stream, and a block of 8 bytes stays allocated; 103 it is empty; 5 no pool block for it; 6 it can't be read whole; -10
 * no pool block for the stream name: *buffer is 0. 104, 105 closing the stream, the file failed: *buffer lacks its BUFEND. */
TOLVENAR_API int16_t TOLVENAR_CALL XLReadReference(const char* path, uint32_t* buffer, uint32_t* size,
                                                   int32_t id);

/* Compacts the buffer, so that offsets in it are stale, and stores it as reference `id`; "Contents" is not looked at.
 * Result: 0; 2 no buffer; 4 no pool block for the copy, 6 it can't be cut: the old buffer stays. With the compact buffer, which
 * lacks its BUFEND, and the file as it was: -22 no pool block for the stream name; 101 the file can't be opened, 103 the stream
 * can't be made, and a block of 8 bytes stays allocated; 104, 105 closing the stream, the file failed. 6 is also a failed write:
 * the buffer is freed and *buffer is 0. */
TOLVENAR_API int16_t TOLVENAR_CALL XLSaveReference(const char* path, uint32_t* buffer, uint32_t* size,
                                                   int32_t id);

/* Compacts the buffer. Offsets in it are stale then. Result: 0; 2 no buffer; 4 no pool block for the copy, 6 it can't be cut: the
 * old buffer stays. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRefreshReference(uint32_t* buffer, uint32_t* size);

/* Stamps a workbook with the id of a reference, in a hidden FORMAT record; a stamp that is there gets other digits. Where the
 * stamp displaces the first sheet's BOF, as in a workbook without FORMAT records, its entry in the SheetTable changes.
 * Result: 0; 4 no pool block or a failed patch, the blocks of 8 and 36 bytes then held stay allocated; 6 no table; 7 no buffer; 200
 * the buffer is gone. */
TOLVENAR_API int16_t TOLVENAR_CALL XLInsertReference(uint32_t* buffer, uint32_t table, uint32_t* size,
                                                     uint32_t id);

/* Removes the stamp. Result: 0; 6 no table; 7 no buffer; -1 no stamp. */
TOLVENAR_API int16_t TOLVENAR_CALL XLUnbindReference(uint32_t buffer, uint32_t table);

/* Reads the stamp of a workbook file, of the generation of the workbook opened last. Result: the id; 0 without a stamp; -2 the
 * file can't be opened; -3 the stream can't, also before any workbook has been opened; -4 it is empty; -5 no pool block for it;
 * -7 it can't be read whole; with its image still allocated: -8, -9 closing the stream, the file failed, -10 no pool block for
 * the digits. */
TOLVENAR_API int32_t TOLVENAR_CALL XLGetReference(const char* path);

/* Releases a pool block and zeroes the variable. Result: 0, also when there was no live block; -1 for a null reference. */
TOLVENAR_API int16_t TOLVENAR_CALL XLDestroyFString(uint32_t* handle);

/* ---- Slots of graphs -------------------------------------------------------------------------------------------------------
 *
 * A graph of a reference keeps numbered values, and gives them back as they were: texts 1 to 7, doubles 1 to 3, fonts 1 to 5, 128
 * properties, flag vectors by set number. What a slot means is the host's affair. A saver replaces what the slot has; a number
 * that is no slot adds a record that nothing reads. A getter of an empty slot, or of none, leaves what it is to fill as it was.
 *
 * Results of the savers: 0; -1 no buffer; -997 no such graph; -2 the graph's head was not met; -3 the array is not of one
 * dimension, -4 its bounds differ; -8 no pool block for the copy of the array; -4 no pool block for the record, or a text too
 * long for one (32761 bytes, in a set 32759); -5, -6 no room for the change: *buffer is released and 0.
 * Results of the getters: -3 and -4 of the array first; then -1, -997, -2; else 0. */

/* Stores a text; null is an empty one. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveText(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                               const char* text, uint16_t slot);

/* Gives the text as a new BSTR; what *text held is not released. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetText(uint32_t buffer, uint16_t graph, BSTR* text, uint16_t slot);

/* Stores 8 bytes, the low half first: a double, as a rule. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveDouble(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                                 uint32_t low, uint32_t high, int16_t slot);

/* Gives the 8 bytes at `value`. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetDouble(uint32_t buffer, uint16_t graph, void* value, uint16_t slot);

/* Stores four values of a font, whatever they are. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveFont(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                               uint16_t first, uint16_t second, uint16_t third,
                                               uint16_t fourth, uint16_t slot);

/* Gives the four values. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetFont(uint32_t buffer, uint16_t graph, uint16_t* first,
                                              uint16_t* second, uint16_t* third, uint16_t* fourth,
                                              uint16_t slot);

/* Stores the 128 elements, 32 bits each, of an array of 1 to 128. Until the next XLRefreshReference, a reference in which a record
 * was replaced by a longer one may take one of its own jumps for the properties, on purpose: compact it first.
 * Result: as above; the graph is looked for before the array is tested. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveProperties(uint32_t* buffer, uint32_t* size, SAFEARRAY** values,
                                                     uint16_t graph);

/* Gives the properties to an array of 1 to 128. Result: as above; see XLRSaveProperties for edited references. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetProperties(uint32_t buffer, SAFEARRAY** values, uint16_t graph);

/* Stores n flags from an array of 1 to n, 16 bits each, of which any but 0 is a set flag. `set` is above 0; with any other nothing
 * happens behind the checks. Result: as above; the graph is looked for before the array is tested. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveSelVis(uint32_t* buffer, uint32_t* size, SAFEARRAY** values,
                                                 uint16_t graph, int16_t n, int16_t set);

/* Gives n flags, 0 or 1, to an array of 1 to n. With a larger n than was saved, bits of what lies behind follow.
 * Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetSelVis(uint32_t buffer, SAFEARRAY** values, uint16_t graph,
                                                int16_t n, uint16_t set);

/* Deletes an item: 1, 2, 17, 18, 19 the fonts; 4, 8, 10 the doubles; 5, 6, 7, 20 to 23 the texts; 24 the properties; and of sets
 * the single item with that index: 3, 9 ints, 15, 16 longs, 11 to 14 texts. 0 deletes all of these. Flags, links to tables, text
 * references and runs stay. For 0 and 24, edited references are to be compacted first, as for XLRSaveProperties.
 * Result: 0, also for an item that isn't there; -1 no buffer; -997 no such graph; -2 the graph's head was not met. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRDeleteProperty(uint32_t buffer, uint16_t graph, uint16_t item,
                                                     uint16_t index);

/* ---- Sets of graphs --------------------------------------------------------------------------------------------------------
 *
 * Sparse lists with items from 1 to a maximum that the host states, and keeps near what it uses: texts (sets 1 to 4), ints of 16
 * and longs of 32 bits (sets 1 and 2), and text references, pairs of position values (sets 1 to 4), which stand in the place of the
 * text of the same set and index.
 *
 * A save of items first to last, from an array with these bounds, merges them with the stored ones that touch the range, and stored
 * runs keep their values: to overwrite, save the same range with the set number negated, which only takes out (whole runs, also
 * beyond the range), and then save. A single that is stored right behind `last` takes the place of item `last`, at the cost of
 * the lowest item; a save from which nothing is left that way stores nothing and gives 0.
 *
 * Results of these saves: 0; -10 first, -11 last not from 1 to max; -12 first above last; -13 no such set; -3 an array is not of
 * one dimension, -4 its bounds differ; -14 no pool block for a working store; -16 no buffer; -997 no such graph; -2 the graph's head
 * was not met, and the working stores stay allocated; -4 no pool block for a record; -5 no room for the change: *buffer is released
 * and 0. With the reference as it was also: -5 more than 16379 ints or 8189 longs in a row.
 * A getter takes arrays of 1 to n, and leaves elements without an item as they were. Its results: -3, -4, -1 no buffer, -997, -2;
 * else 0. */

/* Stores the text of an item; null is an empty one. Result: as of XLRSaveText. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveSetText(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                                  uint16_t index, const char* text, uint16_t set);

/* Gives the text of an item as a new BSTR; what *text held is not released. Result: as of XLRGetText. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetSetText(uint32_t buffer, uint16_t graph, uint16_t index, BSTR* text,
                                                 uint16_t set);

/* Stores ints. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveSetInt(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                                 int16_t first, int16_t last, int16_t max, SAFEARRAY** values,
                                                 int16_t set);

/* Gives the ints of a set. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetSetInt(uint32_t buffer, uint16_t graph, int16_t n,
                                                SAFEARRAY** values, uint16_t set);

/* Stores longs. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveSetLong(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                                  int16_t first, int16_t last, int16_t max,
                                                  SAFEARRAY** values, int16_t set);

/* Gives the longs of a set that are stored singly. Runs of longs don't come back, on purpose, and a run of ints of the same number
 * is read as if its items were longs. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetSetLong(uint32_t buffer, uint16_t graph, int16_t n,
                                                 SAFEARRAY** values, uint16_t set);

/* Stores text references, and takes out the texts in their place: `firsts` has the first values, `seconds` the second ones, 0 for
 * none. Each record that is written but the last leaves a block of the pool taken, on purpose: store long sets in pieces of a few
 * items; some ten items end in -4, with the first records written. Only MEMORYFREEALL gets the blocks back.
 * Result: as above; at -14 for the second working store the first stays allocated. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRSaveTextRef(uint32_t* buffer, uint32_t* size, uint16_t graph,
                                                  int16_t first, int16_t last, int16_t max,
                                                  SAFEARRAY** firsts, SAFEARRAY** seconds, int16_t set);

/* Gives the first and second values of a set's text references. Result: as above. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetTextRef(uint32_t buffer, uint16_t graph, int16_t n,
                                                 SAFEARRAY** firsts, SAFEARRAY** seconds, uint16_t set);

/* ---- What a reference holds: tables, graphs, chart edits --------------------------------------------------------------------
 *
 * Ids count from 1, those of tables and of graphs apart, and the lowest free one is given; above 32767 an id that is a result
 * reads as a negative number. A call by value of the buffer changes it in place at most; a call by reference patches it, and
 * it can move. Codes that all share:
 *   -1    no buffer (or a null variable)
 *   -2    the object's head was not met where the directory says; the makers: no pool block
 *   -997  no such object in the directory, or no valid directory
 * The makers, at the codes below, may have entered the object already; nothing is taken back:
 *   -4    a patch failed: the buffer has been freed and *buffer is 0
 *   -998  the new mark in front of the directory was not met again
 *   -999  no valid directory */

/* Makes a table of four dimensions; their sizes, 16 bits and signed, are not looked at. Result: its id; -1, -2, -4, -998, -999. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRCreateTable(uint32_t* buffer, uint32_t* size, uint16_t d1, uint16_t d2,
                                                  uint16_t d3, uint16_t d4);

/* Deletes a table with all that it holds. Graphs keep its id. Result: 0; -1, -2, -997. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRDeleteTable(uint32_t buffer, uint16_t tableId);

/* Stores the position values of a table's cells. `values` has 4 dimensions, dimension k from 1 to Dk, and elements of 32 bits; an
 * element of 0 is not stored. Steps of 1, 0x100 and 0x1000000 along the dimensions make it compact; of more than 255 cells along
 * a step of 1 or 0x1000000 some are lost. A second call adds to the first.
 * Result: 0; -1, -2, -997; -3, -4 the array's dimensions, its bounds; -8 no pool block for a copy, of 4 bytes a cell; -10 no pool
 * block for a box, or a failed patch: some values may be stored. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRFillTable(uint32_t* buffer, uint32_t* size, SAFEARRAY** values,
                                                uint16_t tableId);

/* Stores the text of a cell; null is an empty one.
 *   tableId    a negative one deletes the text of the cell in table -tableId; a cell without text gets it all the same
 *   c1 to c4   the cell, from 1; the low 16 bits count, signed. Only the upper end is tested
 * Result: 0; -1, -2, -997; -100 a coordinate above its dimension; -4 no pool block, or a text of more than 32757 bytes; -6, -5
 * a failed patch, in place of the old text, at the table's end. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRTextToTable(uint32_t* buffer, uint32_t* size, int16_t tableId,
                                                  uint32_t c1, uint32_t c2, uint32_t c3, uint32_t c4,
                                                  const char* text);

/* The same for the value of a cell: the two halves of 8 bytes that the library doesn't look into, such as a double.
 * Result: as XLRTextToTable. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRValueToTable(uint32_t* buffer, uint32_t* size, int16_t tableId,
                                                   uint32_t c1, uint32_t c2, uint32_t c3, uint32_t c4,
                                                   uint32_t low, uint32_t high);

/* Puts the stored position values into an array of the shape that XLRFillTable takes; elements without one keep what they hold.
 * A value that was stored alone, outside a compact box, lands one place lower in each dimension, on purpose; with a coordinate
 * of 1 it is lost. Result: 0; -1, -2, -997; -3, -4 the array's dimensions, its bounds. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetRefTable(uint32_t buffer, uint16_t tableId, SAFEARRAY** values);

/* Gives the text of a cell; *text is the caller's. Result: 0; -1, -2, -997; -100 a coordinate above its dimension; -200 no text. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetTableText(uint32_t buffer, uint16_t tableId, BSTR* text, uint32_t c1,
                                                   uint32_t c2, uint32_t c3, uint32_t c4);

/* Gives the value of a cell, 8 bytes. Result: as XLRGetTableText. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetTableValue(uint32_t buffer, uint16_t tableId, void* value,
                                                    uint32_t c1, uint32_t c2, uint32_t c3, uint32_t c4);

/* Counts the objects of a kind: 1 tables, 2 graphs, 3 chart edits (those with a number above 128 left out). Result: the count;
 * -1 no buffer, or no valid directory. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetNumItems(uint32_t buffer, int16_t kind);

/* Fills two arrays, 1 to `count`, with an element for each object of a kind. The elements are not the objects' numbers and ids:
 * all of the first array are the bytes from offset 5 of the buffer, as many as an element has, all of the second the 16 bits at
 * its offset 6, on purpose. Result: 0; -1 no buffer; -3, -4 the dimensions, the bounds of the first array, then of the second;
 * -1 no valid directory. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGetIndices(uint32_t buffer, SAFEARRAY** first, SAFEARRAY** second,
                                                 uint32_t count, uint32_t kind);

/* Makes a graph with its main table, which need not exist. Result: its id; -1, -2, -4, -998, -999. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRCreateGraph(uint32_t* buffer, uint32_t* size, uint16_t tableId);

/* Makes a chart edit, a link from edit `number`, from 1, and an id of the caller's to a graph. Result: 0; -1, -2, -4, -998, -999. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRCreateChartEdit(uint32_t* buffer, uint32_t* size, uint8_t number,
                                                      uint16_t id, uint16_t graphId);

/* Gives a graph another main table. Result: 0; -1, -997; -5 its head was not met. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRUpdateGraph(uint32_t buffer, uint16_t graphId, uint16_t tableId);

/* The three calls on chart edits find the entry of edit `number`, and from there on the first edit of the NEXT number, on purpose;
 * a compaction leaves the entries pointing to where the edits were. */

/* Binds that edit, of the same id, to another graph. Result: 0; -1, -997; -5 there is none. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRUpdateChartEdit(uint32_t buffer, uint16_t number, uint16_t id,
                                                      uint16_t graphId);

/* Deletes a graph with all that it holds. Its tables stay. Result: 0; -1, -2, -997. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRDeleteGraph(uint32_t buffer, uint16_t graphId);

/* Removes the entry of edit `number`, and deletes that next edit, whatever its id. Result: 0; -1, -997; -2 there is none, but the
 * entry is gone: so for the last edit. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRDeleteChartEdit(uint32_t buffer, uint16_t number, uint32_t id);

/* The table that a graph is bound to by a link, the main one for link 0. A link that the graph doesn't have is answered by the next
 * graph that has one of that number, on purpose. Result: the table's id; 0 no such link; -1, -2, -997. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRTableByGraph(uint32_t buffer, uint16_t graphId, uint16_t link);

/* The 16 bits between the id and the graph of that edit, of the same id: the id's high byte and, above it, the graph's low byte, on
 * purpose. Result: these; -1, -997; -2 there is none. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRGraphByChartEdit(uint32_t buffer, uint16_t number, uint16_t id);

/* Binds a graph to a further table by a numbered link (1 to 255); a table of 0 removes the link. Result: 0; -1, -2, -997; -4 no
 * pool block; -5 a failed patch. */
TOLVENAR_API int16_t TOLVENAR_CALL XLRUpdateGraphTable(uint32_t* buffer, uint32_t* size, uint16_t graphId,
                                                       uint16_t tableId, uint16_t link);

#ifdef __cplusplus
}
#endif

#endif /* TOLVENAR_TOLVENAR_H */
