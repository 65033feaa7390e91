Attribute VB_Name = "Tolvenar"
' The exports of tolvenar.dll for Visual Basic 6 and 32-bit VBA. Made from the public header, which is also the manual of them:
' scripts/generate-declares writes this file.
'
' What is unsigned in the header is a signed Integer or Long of the same bits here. Handles are Longs. An array is passed whole, as
' cells(); of a plain array of numbers or addresses (VarPtr, StrPtr) the first element is passed. A String that an export fills
' takes one byte of the workbook's text as one character of the code page. A text that may be absent is vbNullString.
Option Explicit

' ---- The memory pool ----

Public Declare Function MEMORYALLOC Lib "tolvenar.dll" (ByVal size As Long) As Long
Public Declare Function MEMORYREALLOC Lib "tolvenar.dll" (ByVal handle As Long, ByVal newSize As Long) As Long
Public Declare Function MEMORYFREE Lib "tolvenar.dll" (ByRef handle As Long) As Long
Public Declare Function MEMORYREMOVE Lib "tolvenar.dll" (ByRef handle As Long) As Long
Public Declare Function MEMORYISHANDLE Lib "tolvenar.dll" (ByVal handle As Long) As Long
Public Declare Sub MEMORYFREEALL Lib "tolvenar.dll" ()
Public Declare Function MEMORYHANDLES Lib "tolvenar.dll" (ByRef bytesInUse As Long, ByVal ignored As Long) As Long
Public Declare Function MEMORYSIZE Lib "tolvenar.dll" (ByVal handle As Long) As Long
Public Declare Function MEMORYALLOCSIZE Lib "tolvenar.dll" (ByVal handle As Long) As Long
Public Declare Function MEMORYSET Lib "tolvenar.dll" (ByRef handle As Long, ByVal count As Long) As Long
Public Declare Function MEMORYSET1 Lib "tolvenar.dll" (ByRef handle As Long, ByVal count As Long, _
    ByVal value As Byte) As Long
Public Declare Function MEMORYGET Lib "tolvenar.dll" (ByRef handle As Long, ByVal size As Long, _
    ByVal index As Long) As Long

' ---- Workbook files ----

Public Declare Function XLOpenFile Lib "tolvenar.dll" (ByVal path As String, ByRef buffer As Long, _
    ByRef size As Long) As Integer
Public Declare Function XLLocateSheets Lib "tolvenar.dll" (ByVal buffer As Long, ByRef table As Long, _
    ByVal size As Long) As Integer
Public Declare Function XLFreeHandle Lib "tolvenar.dll" (ByRef handle As Long) As Long
Public Declare Function XLSaveFile Lib "tolvenar.dll" (ByVal path As String, ByRef buffer As Long, _
    ByRef table As Long, ByRef size As Long) As Integer
Public Declare Function DebugSaveFile Lib "tolvenar.dll" (ByVal path As String, ByVal count As Long) As Integer
Public Declare Function XLRefreshHandles Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long) As Integer
Public Declare Function XLDeleteDBCells Lib "tolvenar.dll" (ByVal buffer As Long, ByVal size As Long) As Integer

' ---- Sheet catalogue ----

Public Declare Function XLGetList Lib "tolvenar.dll" (ByVal buffer As Long, ByVal size As Long, ByRef count As Long, _
    ByRef offsets() As Any, ByRef types() As Any, ByRef images() As Any, ByRef lengths() As Any) As Integer
Public Declare Function XLGetNumSheets Lib "tolvenar.dll" (ByVal table As Long) As Integer
Public Declare Function XLGetNumVers Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long) As Integer
Public Declare Function XLVersInt Lib "tolvenar.dll" (ByVal version As Integer) As Integer
Public Declare Function XLGetNameSheet Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer, ByRef nameArg As String) As Integer
Public Declare Function XLGetSheetParam Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer, ByVal unused1 As Long, ByVal unused2 As Long, ByVal unused3 As Long, _
    ByVal unused4 As Long) As Long
Public Declare Function XLSheetsNameNum Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal unused As Long) As Integer
Public Declare Function XLNumStrBucket Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long) As Integer
Public Declare Function XLNumStrExt Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long) As Integer
' Visual Basic can't call this one: it leaves its arguments to the caller (cdecl).
' Public Declare Sub XLEXTLabel Lib "tolvenar.dll" (ByVal buffer As Long, ByRef index As Long, ByRef bucket As Integer, _
'     ByVal sstOffset As Long, ByRef cells() As Any, ByVal recordOffset As Long)

' ---- Cell data ----

Public Declare Function XLGetSheetSize Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer, ByRef firstRow As Integer, ByRef lastRow As Integer, ByRef firstCol As Integer, _
    ByRef lastCol As Integer) As Integer
Public Declare Function XLGetVariantData Lib "tolvenar.dll" (ByRef cells() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal sheet As Integer) As Integer
' Visual Basic can't call this one: it leaves its arguments to the caller (cdecl).
' Public Declare Function XLSGetVariantData Lib "tolvenar.dll" (ByVal unused As Long, ByRef cells() As Any) As Integer
Public Declare Function XLGetCellData Lib "tolvenar.dll" (ByRef cells() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal sheet As Integer) As Integer

' ---- Charts ----

Public Declare Function XLGetNumCharts Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer) As Long
Public Declare Function XLGetGraphData Lib "tolvenar.dll" (ByRef cells() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal sheet As Integer, ByVal chart As Integer) As Integer
Public Declare Function XLGetSetData Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer, ByVal chart As Integer, ByRef names() As Any, ByRef references() As Any, _
    ByRef spare() As Any, ByRef groups() As Any, ByRef colours() As Any, ByVal seriesCount As Integer, _
    ByVal spareCount As Integer) As Integer
Public Declare Function XLGetTitleData Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer, ByVal chart As Integer, ByRef title As String, ByRef axisOne As String, _
    ByRef axisTwo As String, ByRef titleFont As Integer, ByRef axisFont As Integer, ByRef colour As Long) As Integer
Public Declare Function XLGetChartData Lib "tolvenar.dll" (ByRef properties() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal sheet As Integer, ByVal chart As Integer) As Integer

' ---- Cell editing ----

Public Declare Function XLChangeCellValue Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal row As Integer, ByVal column As Integer, _
    ByRef value As Variant) As Integer
Public Declare Function XLChangeCellXF Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal row As Integer, ByVal column As Integer, _
    ByVal xf As Integer) As Integer
Public Declare Function ChangeFormat Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer, ByRef matrix As Integer, ByVal stride As Long) As Long

' ---- Rows and columns ----

Public Declare Function XLAddRow Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, ByRef size As Long, _
    ByVal sheet As Integer, ByVal row As Integer) As Integer
Public Declare Function XLAddCol Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, ByRef size As Long, _
    ByVal sheet As Integer, ByVal column As Integer) As Integer
Public Declare Function XLInsertRow Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal row As Integer) As Integer
Public Declare Function XLInsertCol Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal column As Integer) As Integer
Public Declare Function XLDeleteRow Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal row As Integer) As Integer
Public Declare Function XLDeleteCol Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal column As Integer) As Integer

' ---- New workbooks and sheets ----

Public Declare Function XLCreateEmptyBook Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal selector As Long) As Integer
Public Declare Function XLEmptyBookLocateSheets Lib "tolvenar.dll" (ByVal buffer As Long, ByRef table As Long, _
    ByVal size As Long) As Integer
Public Declare Function XLAppendSheet Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal nameArg As String, ByVal cols As Integer, ByVal rows As Integer) As Integer
Public Declare Function XLAppendFullSheet Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal nameArg As String, ByVal cols As Integer, ByVal rows As Integer, ByRef texts As Long) As Integer
Public Declare Function XLAppendVariantSheet Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal nameArg As String, ByVal cols As Integer, ByVal rows As Integer, ByRef cells As Long, _
    ByRef xf As Integer) As Integer
Public Declare Function XLAppendVariantSheetVB Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal nameArg As String, ByVal cols As Integer, ByVal rows As Integer, ByRef cells() As Any, _
    ByRef xf() As Any) As Integer
Public Declare Function CreateVariantSheet Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal cols As Integer, ByVal rows As Integer, ByRef cells As Long, ByRef xf As Integer) As Integer
Public Declare Function AppendVariantSheet1 Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal nameArg As String) As Integer
Public Declare Function CreateVariantSheet1 Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef position As Long) As Integer
Public Declare Function CreateVariantSheet1A Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal cols As Long, ByVal rows As Long, ByRef position As Long) As Integer
Public Declare Function CreateVariantSheet2 Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef position As Long, ByVal cols As Integer, ByVal rows As Integer, ByRef cells As Variant, _
    ByRef xf As Integer) As Integer
Public Declare Function CreateVariantSheet2A Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef position As Long, ByVal firstCol As Integer, ByVal firstRow As Integer, ByVal cols As Integer, _
    ByVal rows As Integer, ByRef cells As Variant, ByRef xf As Integer) As Integer
Public Declare Function CreateVariantSheet3 Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef position As Long) As Integer
Public Declare Function AppendVariantSheet2 Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal sheet As Integer) As Integer
Public Declare Function AddZemblerRecord Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long) As Integer

' ---- Styles ----

Public Declare Function XLGetNumFormatItems Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal kind As Integer) As Integer
Public Declare Function XLGetFormatData Lib "tolvenar.dll" (ByRef items() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal kind As Integer) As Integer
Public Declare Function XLGetColorData Lib "tolvenar.dll" (ByRef colours() As Any, ByVal buffer As Long, _
    ByVal table As Long) As Integer
Public Declare Function XLGetStandardPalette Lib "tolvenar.dll" (ByRef colours() As Any) As Integer

' ---- Row heights, column widths, zoom ----

Public Declare Function XLGetRowHeight Lib "tolvenar.dll" (ByRef heights() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal sheet As Integer) As Integer
Public Declare Function XLGetColWidth Lib "tolvenar.dll" (ByRef widths() As Any, ByVal buffer As Long, _
    ByVal table As Long, ByVal sheet As Integer) As Integer
Public Declare Function XLGetMagnification Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long, _
    ByVal sheet As Integer) As Double

' ---- Fields of an item block ----

Public Declare Function XLFontSize Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLFontColor Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLFontBoldness Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLFontItalic Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLFontStrikeOut Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLFontUnderline Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFFont Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFFormat Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFLocked Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFHidden Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFHAlignment Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFVAlignment Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFRotation Lib "tolvenar.dll" (ByVal block As Long) As Integer
Public Declare Function XLXFBorderStyle Lib "tolvenar.dll" (ByVal block As Long, ByRef fill As Integer, _
    ByRef top As Integer, ByRef bottom As Integer, ByRef left As Integer, ByRef right As Integer) As Integer
Public Declare Function XLXFColors Lib "tolvenar.dll" (ByVal block As Long, ByRef colour1 As Integer, _
    ByRef colour2 As Integer, ByRef top As Integer, ByRef bottom As Integer, ByRef left As Integer, _
    ByRef right As Integer) As Integer
Public Declare Function XLFontName Lib "tolvenar.dll" (ByVal block As Long, ByRef nameArg As String) As Integer
Public Declare Function XLFormatString Lib "tolvenar.dll" (ByVal block As Long, ByRef textArg As String) As Integer

' ---- Finding or adding a font, a number format, an XF ----

Public Declare Function XLGetFont Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, ByRef size As Long, _
    ByVal nameArg As String, ByVal colour As Integer, ByVal height As Integer, ByVal boldness As Integer, _
    ByVal italic As Integer, ByVal underline As Integer, ByVal strikeout As Integer) As Integer
Public Declare Function XLGetFormat Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal textArg As String) As Integer
Public Declare Function XLGetXFInd Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, ByRef size As Long, _
    ByVal font As Integer, ByVal format As Integer, ByVal locked As Integer, ByVal hidden As Integer, _
    ByVal horizontal As Integer, ByVal vertical As Integer, ByVal rotation As Integer, _
    ByVal colours As Integer) As Integer
Public Declare Function XLGetXFIndFull Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal font As Integer, ByVal format As Integer, ByVal locked As Integer, _
    ByVal hidden As Integer, ByVal horizontal As Integer, ByVal vertical As Integer, ByVal rotation As Integer, _
    ByVal background As Integer, ByVal fillPattern As Integer, ByVal patternColour As Integer, _
    ByVal bottomStyle As Integer, ByVal bottomColour As Integer, ByVal topStyle As Integer, _
    ByVal topColour As Integer, ByVal leftStyle As Integer, ByVal leftColour As Integer, ByVal rightStyle As Integer, _
    ByVal rightColour As Integer) As Integer

' ---- Changing row heights and column widths ----

Public Declare Function XLChangeRowHeight Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal row As Integer, ByVal height As Integer) As Integer
Public Declare Function XLChangeColWidth Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal sheet As Integer, ByVal column As Integer, ByVal widthArg As Integer) As Integer

' ---- References ----

Public Declare Function XLCreateReference Lib "tolvenar.dll" (ByVal path As String) As Long
Public Declare Function XLDeleteReference Lib "tolvenar.dll" (ByVal path As String, ByVal id As Long) As Integer
Public Declare Function XLReadReference Lib "tolvenar.dll" (ByVal path As String, ByRef buffer As Long, _
    ByRef size As Long, ByVal id As Long) As Integer
Public Declare Function XLSaveReference Lib "tolvenar.dll" (ByVal path As String, ByRef buffer As Long, _
    ByRef size As Long, ByVal id As Long) As Integer
Public Declare Function XLRefreshReference Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long) As Integer
Public Declare Function XLInsertReference Lib "tolvenar.dll" (ByRef buffer As Long, ByVal table As Long, _
    ByRef size As Long, ByVal id As Long) As Integer
Public Declare Function XLUnbindReference Lib "tolvenar.dll" (ByVal buffer As Long, ByVal table As Long) As Integer
Public Declare Function XLGetReference Lib "tolvenar.dll" (ByVal path As String) As Long
Public Declare Function XLDestroyFString Lib "tolvenar.dll" (ByRef handle As Long) As Integer

' ---- Slots of graphs ----

Public Declare Function XLRSaveText Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal textArg As String, ByVal slot As Integer) As Integer
Public Declare Function XLRGetText Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByRef textArg As String, ByVal slot As Integer) As Integer
Public Declare Function XLRSaveDouble Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal low As Long, ByVal high As Long, ByVal slot As Integer) As Integer
Public Declare Function XLRGetDouble Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByRef value As Any, ByVal slot As Integer) As Integer
Public Declare Function XLRSaveFont Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal first As Integer, ByVal second As Integer, ByVal third As Integer, _
    ByVal fourth As Integer, ByVal slot As Integer) As Integer
Public Declare Function XLRGetFont Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByRef first As Integer, ByRef second As Integer, ByRef third As Integer, ByRef fourth As Integer, _
    ByVal slot As Integer) As Integer
Public Declare Function XLRSaveProperties Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef values() As Any, ByVal graph As Integer) As Integer
Public Declare Function XLRGetProperties Lib "tolvenar.dll" (ByVal buffer As Long, ByRef values() As Any, _
    ByVal graph As Integer) As Integer
Public Declare Function XLRSaveSelVis Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef values() As Any, ByVal graph As Integer, ByVal n As Integer, ByVal setArg As Integer) As Integer
Public Declare Function XLRGetSelVis Lib "tolvenar.dll" (ByVal buffer As Long, ByRef values() As Any, _
    ByVal graph As Integer, ByVal n As Integer, ByVal setArg As Integer) As Integer
Public Declare Function XLRDeleteProperty Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByVal item As Integer, ByVal index As Integer) As Integer

' ---- Sets of graphs ----

Public Declare Function XLRSaveSetText Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal index As Integer, ByVal textArg As String, ByVal setArg As Integer) As Integer
Public Declare Function XLRGetSetText Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByVal index As Integer, ByRef textArg As String, ByVal setArg As Integer) As Integer
Public Declare Function XLRSaveSetInt Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal first As Integer, ByVal last As Integer, ByVal max As Integer, _
    ByRef values() As Any, ByVal setArg As Integer) As Integer
Public Declare Function XLRGetSetInt Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByVal n As Integer, ByRef values() As Any, ByVal setArg As Integer) As Integer
Public Declare Function XLRSaveSetLong Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal first As Integer, ByVal last As Integer, ByVal max As Integer, _
    ByRef values() As Any, ByVal setArg As Integer) As Integer
Public Declare Function XLRGetSetLong Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByVal n As Integer, ByRef values() As Any, ByVal setArg As Integer) As Integer
Public Declare Function XLRSaveTextRef Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graph As Integer, ByVal first As Integer, ByVal last As Integer, ByVal max As Integer, _
    ByRef firsts() As Any, ByRef seconds() As Any, ByVal setArg As Integer) As Integer
Public Declare Function XLRGetTextRef Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graph As Integer, _
    ByVal n As Integer, ByRef firsts() As Any, ByRef seconds() As Any, ByVal setArg As Integer) As Integer

' ---- What a reference holds: tables, graphs, chart edits ----

Public Declare Function XLRCreateTable Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal d1 As Integer, ByVal d2 As Integer, ByVal d3 As Integer, ByVal d4 As Integer) As Integer
Public Declare Function XLRDeleteTable Lib "tolvenar.dll" (ByVal buffer As Long, ByVal tableId As Integer) As Integer
Public Declare Function XLRFillTable Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByRef values() As Any, ByVal tableId As Integer) As Integer
Public Declare Function XLRTextToTable Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal tableId As Integer, ByVal c1 As Long, ByVal c2 As Long, ByVal c3 As Long, ByVal c4 As Long, _
    ByVal textArg As String) As Integer
Public Declare Function XLRValueToTable Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal tableId As Integer, ByVal c1 As Long, ByVal c2 As Long, ByVal c3 As Long, ByVal c4 As Long, _
    ByVal low As Long, ByVal high As Long) As Integer
Public Declare Function XLRGetRefTable Lib "tolvenar.dll" (ByVal buffer As Long, ByVal tableId As Integer, _
    ByRef values() As Any) As Integer
Public Declare Function XLRGetTableText Lib "tolvenar.dll" (ByVal buffer As Long, ByVal tableId As Integer, _
    ByRef textArg As String, ByVal c1 As Long, ByVal c2 As Long, ByVal c3 As Long, ByVal c4 As Long) As Integer
Public Declare Function XLRGetTableValue Lib "tolvenar.dll" (ByVal buffer As Long, ByVal tableId As Integer, _
    ByRef value As Any, ByVal c1 As Long, ByVal c2 As Long, ByVal c3 As Long, ByVal c4 As Long) As Integer
Public Declare Function XLRGetNumItems Lib "tolvenar.dll" (ByVal buffer As Long, ByVal kind As Integer) As Integer
Public Declare Function XLRGetIndices Lib "tolvenar.dll" (ByVal buffer As Long, ByRef first() As Any, _
    ByRef second() As Any, ByVal count As Long, ByVal kind As Long) As Integer
Public Declare Function XLRCreateGraph Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal tableId As Integer) As Integer
Public Declare Function XLRCreateChartEdit Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal number As Byte, ByVal id As Integer, ByVal graphId As Integer) As Integer
Public Declare Function XLRUpdateGraph Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graphId As Integer, _
    ByVal tableId As Integer) As Integer
Public Declare Function XLRUpdateChartEdit Lib "tolvenar.dll" (ByVal buffer As Long, ByVal number As Integer, _
    ByVal id As Integer, ByVal graphId As Integer) As Integer
Public Declare Function XLRDeleteGraph Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graphId As Integer) As Integer
Public Declare Function XLRDeleteChartEdit Lib "tolvenar.dll" (ByVal buffer As Long, ByVal number As Integer, _
    ByVal id As Long) As Integer
Public Declare Function XLRTableByGraph Lib "tolvenar.dll" (ByVal buffer As Long, ByVal graphId As Integer, _
    ByVal link As Integer) As Integer
Public Declare Function XLRGraphByChartEdit Lib "tolvenar.dll" (ByVal buffer As Long, ByVal number As Integer, _
    ByVal id As Integer) As Integer
Public Declare Function XLRUpdateGraphTable Lib "tolvenar.dll" (ByRef buffer As Long, ByRef size As Long, _
    ByVal graphId As Integer, ByVal tableId As Integer, ByVal link As Integer) As Integer
