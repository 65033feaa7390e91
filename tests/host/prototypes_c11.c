/* The exports as hosts have been built with them: every one is declared here once more, and a header that says anything else of a width, of
 * the order of the arguments or of a calling convention does not compile beside it. What stands here is never changed, only added to. */
#include "tolvenar/tolvenar.h"

/* The memory pool. */
uint32_t TOLVENAR_CALL MEMORYALLOC(int32_t);
uint32_t TOLVENAR_CALL MEMORYREALLOC(uint32_t, int32_t);
int32_t TOLVENAR_CALL MEMORYFREE(uint32_t*);
int32_t TOLVENAR_CALL MEMORYREMOVE(uint32_t*);
int32_t TOLVENAR_CALL MEMORYISHANDLE(uint32_t);
void TOLVENAR_CALL MEMORYFREEALL(void);
uint32_t TOLVENAR_CALL MEMORYHANDLES(uint32_t*, uint32_t);
uint32_t TOLVENAR_CALL MEMORYSIZE(uint32_t);
uint32_t TOLVENAR_CALL MEMORYALLOCSIZE(uint32_t);
int32_t TOLVENAR_CALL MEMORYSET(uint32_t*, int32_t);
int32_t TOLVENAR_CALL MEMORYSET1(uint32_t*, int32_t, uint8_t);
uint32_t TOLVENAR_CALL MEMORYGET(uint32_t*, int32_t, int32_t);

/* Workbook files. */
int16_t TOLVENAR_CALL XLOpenFile(const char*, uint32_t*, uint32_t*);
int16_t TOLVENAR_CALL XLLocateSheets(uint32_t, uint32_t*, uint32_t);
uint32_t TOLVENAR_CALL XLFreeHandle(uint32_t*);
int16_t TOLVENAR_CALL XLSaveFile(const char*, uint32_t*, uint32_t*, uint32_t*);
int16_t TOLVENAR_CALL DebugSaveFile(const char*, int32_t);
int16_t TOLVENAR_CALL XLRefreshHandles(uint32_t*, uint32_t, uint32_t*);
int16_t TOLVENAR_CALL XLDeleteDBCells(uint32_t, uint32_t);

/* Sheet catalogue and cell data. */
int16_t TOLVENAR_CALL XLGetList(uint32_t, int32_t, int32_t*, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**,
                                SAFEARRAY**);
int16_t TOLVENAR_CALL XLGetNumSheets(uint32_t);
uint16_t TOLVENAR_CALL XLGetNumVers(uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLVersInt(int16_t);
int16_t TOLVENAR_CALL XLGetNameSheet(uint32_t, uint32_t, int16_t, BSTR*);
uint32_t TOLVENAR_CALL XLGetSheetParam(uint32_t, uint32_t, int16_t, uint32_t, uint32_t, uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLSheetsNameNum(uint32_t, uint32_t, uint32_t);
uint16_t TOLVENAR_CALL XLNumStrBucket(uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLNumStrExt(uint32_t, uint32_t);
void TOLVENAR_CDECL XLEXTLabel(uint32_t, int32_t*, int16_t*, int32_t, SAFEARRAY**, int32_t);
int16_t TOLVENAR_CALL XLGetSheetSize(uint32_t, uint32_t, int16_t, uint16_t*, uint16_t*, uint16_t*, uint16_t*);
int16_t TOLVENAR_CALL XLGetVariantData(SAFEARRAY**, uint32_t, uint32_t, int16_t);
int16_t TOLVENAR_CDECL XLSGetVariantData(uint32_t, SAFEARRAY**);
int16_t TOLVENAR_CALL XLGetCellData(SAFEARRAY**, uint32_t, uint32_t, int16_t);

/* Charts. */
int32_t TOLVENAR_CALL XLGetNumCharts(uint32_t, uint32_t, int16_t);
int16_t TOLVENAR_CALL XLGetGraphData(SAFEARRAY**, uint32_t, uint32_t, int16_t, int16_t);
int16_t TOLVENAR_CALL XLGetSetData(uint32_t, uint32_t, int16_t, int16_t, SAFEARRAY**, SAFEARRAY**,
                                   SAFEARRAY**, SAFEARRAY**, SAFEARRAY**, int16_t, int16_t);
int16_t TOLVENAR_CALL XLGetTitleData(uint32_t, uint32_t, int16_t, int16_t, BSTR*, BSTR*, BSTR*, uint16_t*,
                                     uint16_t*, uint32_t*);
int16_t TOLVENAR_CALL XLGetChartData(SAFEARRAY**, uint32_t, uint32_t, int16_t, int16_t);

/* Cells, rows and columns. */
int16_t TOLVENAR_CALL XLChangeCellValue(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t, int16_t,
                                        const VARIANT*);
int16_t TOLVENAR_CALL XLChangeCellXF(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t, int16_t, uint16_t);
uint32_t TOLVENAR_CALL ChangeFormat(uint32_t, uint32_t, int16_t, const int16_t*, int32_t);
int16_t TOLVENAR_CALL XLAddRow(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLAddCol(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLInsertRow(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLInsertCol(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLDeleteRow(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLDeleteCol(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLChangeRowHeight(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t, uint16_t);
int16_t TOLVENAR_CALL XLChangeColWidth(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t, uint16_t);
int16_t TOLVENAR_CALL XLGetRowHeight(SAFEARRAY**, uint32_t, uint32_t, int16_t);
int16_t TOLVENAR_CALL XLGetColWidth(SAFEARRAY**, uint32_t, uint32_t, int16_t);
double TOLVENAR_CALL XLGetMagnification(uint32_t, uint32_t, int16_t);

/* New workbooks and sheets. */
int16_t TOLVENAR_CALL XLCreateEmptyBook(uint32_t*, uint32_t*, int32_t);
int16_t TOLVENAR_CALL XLEmptyBookLocateSheets(uint32_t, uint32_t*, int32_t);
int16_t TOLVENAR_CALL XLAppendSheet(uint32_t*, uint32_t*, const char*, int16_t, int16_t);
int16_t TOLVENAR_CALL XLAppendFullSheet(uint32_t*, uint32_t*, const char*, int16_t, int16_t,
                                        const char* const*);
int16_t TOLVENAR_CALL XLAppendVariantSheet(uint32_t*, uint32_t*, const char*, int16_t, int16_t,
                                           const VARIANT* const*, const uint16_t*);
int16_t TOLVENAR_CALL XLAppendVariantSheetVB(uint32_t*, uint32_t*, const char*, int16_t, int16_t, SAFEARRAY**,
                                             SAFEARRAY**);
int16_t TOLVENAR_CALL CreateVariantSheet(uint32_t*, uint32_t*, int16_t, int16_t, const VARIANT* const*,
                                         const uint16_t*);
int16_t TOLVENAR_CALL AppendVariantSheet1(uint32_t*, uint32_t*, const char*);
int16_t TOLVENAR_CALL CreateVariantSheet1(uint32_t*, uint32_t*, uint32_t*);
int16_t TOLVENAR_CALL CreateVariantSheet1A(uint32_t*, uint32_t*, int32_t, int32_t, uint32_t*);
int16_t TOLVENAR_CALL CreateVariantSheet2(uint32_t*, uint32_t*, uint32_t*, int16_t, int16_t, const VARIANT*,
                                          const uint16_t*);
int16_t TOLVENAR_CALL CreateVariantSheet2A(uint32_t*, uint32_t*, uint32_t*, uint16_t, uint16_t, uint16_t,
                                           uint16_t, const VARIANT*, const uint16_t*);
int16_t TOLVENAR_CALL CreateVariantSheet3(uint32_t*, uint32_t*, uint32_t*);
int16_t TOLVENAR_CALL AppendVariantSheet2(uint32_t*, uint32_t*, int16_t);
int16_t TOLVENAR_CALL AddZemblerRecord(uint32_t*, uint32_t*);

/* Styles. */
uint16_t TOLVENAR_CALL XLGetNumFormatItems(uint32_t, uint32_t, int16_t);
int16_t TOLVENAR_CALL XLGetFormatData(SAFEARRAY**, uint32_t, uint32_t, int16_t);
int16_t TOLVENAR_CALL XLGetColorData(SAFEARRAY**, uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLGetStandardPalette(SAFEARRAY**);
int16_t TOLVENAR_CALL XLFontSize(uint32_t);
int16_t TOLVENAR_CALL XLFontColor(uint32_t);
int16_t TOLVENAR_CALL XLFontBoldness(uint32_t);
int16_t TOLVENAR_CALL XLFontItalic(uint32_t);
int16_t TOLVENAR_CALL XLFontStrikeOut(uint32_t);
int16_t TOLVENAR_CALL XLFontUnderline(uint32_t);
int16_t TOLVENAR_CALL XLXFFont(uint32_t);
int16_t TOLVENAR_CALL XLXFFormat(uint32_t);
int16_t TOLVENAR_CALL XLXFLocked(uint32_t);
int16_t TOLVENAR_CALL XLXFHidden(uint32_t);
int16_t TOLVENAR_CALL XLXFHAlignment(uint32_t);
int16_t TOLVENAR_CALL XLXFVAlignment(uint32_t);
int16_t TOLVENAR_CALL XLXFRotation(uint32_t);
int16_t TOLVENAR_CALL XLXFBorderStyle(uint32_t, uint16_t*, uint16_t*, uint16_t*, uint16_t*, uint16_t*);
int16_t TOLVENAR_CALL XLXFColors(uint32_t, uint16_t*, uint16_t*, uint16_t*, uint16_t*, uint16_t*, uint16_t*);
int16_t TOLVENAR_CALL XLFontName(uint32_t, BSTR*);
int16_t TOLVENAR_CALL XLFormatString(uint32_t, BSTR*);
int16_t TOLVENAR_CALL XLGetFont(uint32_t*, uint32_t, uint32_t*, const char*, int16_t, uint16_t, uint16_t,
                                uint16_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLGetFormat(uint32_t*, uint32_t, uint32_t*, const char*);
int16_t TOLVENAR_CALL XLGetXFInd(uint32_t*, uint32_t, uint32_t*, uint16_t, uint16_t, uint16_t, uint16_t,
                                 int16_t, int16_t, int16_t, uint16_t);
int16_t TOLVENAR_CALL XLGetXFIndFull(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t, uint16_t, uint16_t,
                                     int16_t, int16_t, int16_t, int16_t, int16_t, int16_t, int16_t, int16_t,
                                     int16_t, int16_t, int16_t, int16_t, int16_t, int16_t);

/* References. */
int32_t TOLVENAR_CALL XLCreateReference(const char*);
int16_t TOLVENAR_CALL XLDeleteReference(const char*, uint32_t);
int16_t TOLVENAR_CALL XLReadReference(const char*, uint32_t*, uint32_t*, int32_t);
int16_t TOLVENAR_CALL XLSaveReference(const char*, uint32_t*, uint32_t*, int32_t);
int16_t TOLVENAR_CALL XLRefreshReference(uint32_t*, uint32_t*);
int16_t TOLVENAR_CALL XLInsertReference(uint32_t*, uint32_t, uint32_t*, uint32_t);
int16_t TOLVENAR_CALL XLUnbindReference(uint32_t, uint32_t);
int32_t TOLVENAR_CALL XLGetReference(const char*);
int16_t TOLVENAR_CALL XLDestroyFString(uint32_t*);

/* Slots and sets of graphs. */
int16_t TOLVENAR_CALL XLRSaveText(uint32_t*, uint32_t*, uint16_t, const char*, uint16_t);
int16_t TOLVENAR_CALL XLRGetText(uint32_t, uint16_t, BSTR*, uint16_t);
int16_t TOLVENAR_CALL XLRSaveDouble(uint32_t*, uint32_t*, uint16_t, uint32_t, uint32_t, int16_t);
int16_t TOLVENAR_CALL XLRGetDouble(uint32_t, uint16_t, void*, uint16_t);
int16_t TOLVENAR_CALL XLRSaveFont(uint32_t*, uint32_t*, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
                                  uint16_t);
int16_t TOLVENAR_CALL XLRGetFont(uint32_t, uint16_t, uint16_t*, uint16_t*, uint16_t*, uint16_t*, uint16_t);
int16_t TOLVENAR_CALL XLRSaveProperties(uint32_t*, uint32_t*, SAFEARRAY**, uint16_t);
int16_t TOLVENAR_CALL XLRGetProperties(uint32_t, SAFEARRAY**, uint16_t);
int16_t TOLVENAR_CALL XLRSaveSelVis(uint32_t*, uint32_t*, SAFEARRAY**, uint16_t, int16_t, int16_t);
int16_t TOLVENAR_CALL XLRGetSelVis(uint32_t, SAFEARRAY**, uint16_t, int16_t, uint16_t);
int16_t TOLVENAR_CALL XLRDeleteProperty(uint32_t, uint16_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRSaveSetText(uint32_t*, uint32_t*, uint16_t, uint16_t, const char*, uint16_t);
int16_t TOLVENAR_CALL XLRGetSetText(uint32_t, uint16_t, uint16_t, BSTR*, uint16_t);
int16_t TOLVENAR_CALL XLRSaveSetInt(uint32_t*, uint32_t*, uint16_t, int16_t, int16_t, int16_t, SAFEARRAY**,
                                    int16_t);
int16_t TOLVENAR_CALL XLRGetSetInt(uint32_t, uint16_t, int16_t, SAFEARRAY**, uint16_t);
int16_t TOLVENAR_CALL XLRSaveSetLong(uint32_t*, uint32_t*, uint16_t, int16_t, int16_t, int16_t, SAFEARRAY**,
                                     int16_t);
int16_t TOLVENAR_CALL XLRGetSetLong(uint32_t, uint16_t, int16_t, SAFEARRAY**, uint16_t);
int16_t TOLVENAR_CALL XLRSaveTextRef(uint32_t*, uint32_t*, uint16_t, int16_t, int16_t, int16_t, SAFEARRAY**,
                                     SAFEARRAY**, int16_t);
int16_t TOLVENAR_CALL XLRGetTextRef(uint32_t, uint16_t, int16_t, SAFEARRAY**, SAFEARRAY**, uint16_t);

/* Tables, graphs and chart edits. */
int16_t TOLVENAR_CALL XLRCreateTable(uint32_t*, uint32_t*, uint16_t, uint16_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRDeleteTable(uint32_t, uint16_t);
int16_t TOLVENAR_CALL XLRFillTable(uint32_t*, uint32_t*, SAFEARRAY**, uint16_t);
int16_t TOLVENAR_CALL XLRTextToTable(uint32_t*, uint32_t*, int16_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                     const char*);
int16_t TOLVENAR_CALL XLRValueToTable(uint32_t*, uint32_t*, int16_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                      uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLRGetRefTable(uint32_t, uint16_t, SAFEARRAY**);
int16_t TOLVENAR_CALL XLRGetTableText(uint32_t, uint16_t, BSTR*, uint32_t, uint32_t, uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLRGetTableValue(uint32_t, uint16_t, void*, uint32_t, uint32_t, uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLRGetNumItems(uint32_t, int16_t);
int16_t TOLVENAR_CALL XLRGetIndices(uint32_t, SAFEARRAY**, SAFEARRAY**, uint32_t, uint32_t);
int16_t TOLVENAR_CALL XLRCreateGraph(uint32_t*, uint32_t*, uint16_t);
int16_t TOLVENAR_CALL XLRCreateChartEdit(uint32_t*, uint32_t*, uint8_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRUpdateGraph(uint32_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRUpdateChartEdit(uint32_t, uint16_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRDeleteGraph(uint32_t, uint16_t);
int16_t TOLVENAR_CALL XLRDeleteChartEdit(uint32_t, uint16_t, uint32_t);
int16_t TOLVENAR_CALL XLRTableByGraph(uint32_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRGraphByChartEdit(uint32_t, uint16_t, uint16_t);
int16_t TOLVENAR_CALL XLRUpdateGraphTable(uint32_t*, uint32_t*, uint16_t, uint16_t, uint16_t);
