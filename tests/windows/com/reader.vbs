' The COM face from VBScript under cscript: every class late-bound, the error host, events
' through ZEBReader81.EventSink and, when a simulator is mapped (ZEBREADER_TEST_PORT and
' ZEBREADER_TEST_MODEL), a whole batch. The last line is the tally the test checks.
Option Explicit
Dim passed, failed
passed = 0
failed = 0

Sub Check(ok, what)
    If ok Then
        passed = passed + 1
    Else
        failed = failed + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

' Wine's VBScript takes one declaration per Public line.
Class ErrorHost
    Public Silent
    Public Reports
    Public Location
    Public Function RaiseError(number, kind, description, where, title, t1, t2, t3, constant, t4, t5, t6, flag)
        Reports = Reports + 1
        Location = where & ": " & description
        RaiseError = 0
    End Function
End Class

Class Handlers
    Public Reader
    Public Sink
    Public Starts
    Public Sheets
    Public Ends
    Public Shapes
    Public Rejects
    Public Barcodes
    Public CancelAt
    Public Sub BeforeSheet(bInitializePrinter)
        Starts = Starts + 1
    End Sub
    Public Sub ReadSheet(iSide1Array, iSide2Array, sBarcodeArray, bReject)
        Sheets = Sheets + 1
        Shapes = Shapes & Shape(iSide1Array) & "/" & Shape(iSide2Array) & " "
        Barcodes = Barcodes & Joined(sBarcodeArray) & ";"
        If Sheets = 1 Then
            Reader.RejectPage
            bReject = True
            Rejects = Rejects + 1
        End If
    End Sub
    Public Sub AfterSheet(bCancelScan)
        Ends = Ends + 1
        If Ends = CancelAt Then bCancelScan = True
    End Sub
End Class

' "rows x columns : marked cells" of a side array, "-" for none (an array never dimensioned).
Function Shape(side)
    Dim row, col, marked, probe
    Shape = "-"
    On Error Resume Next
    probe = UBound(side, 2)
    If Err.Number <> 0 Then Exit Function
    On Error GoTo 0
    marked = 0
    For row = LBound(side, 1) To UBound(side, 1)
        For col = LBound(side, 2) To UBound(side, 2)
            If side(row, col) > 0 Then marked = marked + 1
        Next
    Next
    Shape = UBound(side, 1) & "x" & UBound(side, 2) & ":" & marked
End Function

' The elements with commas between: Wine's VBScript has no Join, and a handler's error ends
' the handler silently.
Function Joined(items)
    Dim item
    For Each item In items
        If Not IsEmpty(Joined) Then Joined = Joined & ","
        Joined = Joined & item
    Next
End Function

' The marked cells a shape counts.
Function Marked(text)
    Marked = CInt(Mid(text, InStr(text, ":") + 1))
End Function

' Whether a shape has at least the rows and columns given and more marked cells than given.
Function Covers(text, rows, cols, marks)
    Dim size
    Covers = False
    If text = "-" Then Exit Function
    size = Split(Left(text, InStr(text, ":") - 1), "x")
    Covers = CInt(size(0)) >= rows And CInt(size(1)) >= cols And Marked(text) > marks
End Function

Function EnvNumber(name)
    Dim text
    text = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%" & name & "%")
    If IsNumeric(text) Then EnvNumber = CInt(text) Else EnvNumber = 0
End Function

Dim r, sink, host, w, b, n, s, a, h
Set r = CreateObject("ZEBReader81.clsZEBReader")
Set sink = CreateObject("ZEBReader81.EventSink")

' Properties, enumerations and the profile catalogue.
r.ReaderType = 2
Check r.ReaderName = "Scantron OpScan 2", "ReaderName of type 2"
Check r.Profiles.Count = 42, "a new catalogue holds 42 profiles"
Check r.Profiles("37").ReaderName = "Chatsworth Data ACP-100", "profile by key"
Check r.Profiles(1).ReaderType = 0, "profile by position"
Check Not r.Profiles.Exists("99"), "no profile 99"
Check r.Profiles.Item("99") Is Nothing, "Item of an unknown key is Nothing"
On Error Resume Next
r.Profiles.Remove "99"
Check Err.Number = 5 And Err.Source = "ZEBReader81", "Remove of an unknown key raises error 5"
Err.Clear
On Error GoTo 0
Check r.LoadDefaults(24), "LoadDefaults(24)"
Check r.BaudRate = 9600 And r.Parity = "N" And r.MarkCutOff = 250, "defaults of the PDI profile"

' Collections and the imprinter.
Set w = CreateObject("ZEBReader81.clsZEBReaderWindow")
w.StartRow = 3
r.Windows.Add w
Set w = CreateObject("ZEBReader81.clsZEBReaderWindow")
w.StartRow = 1
r.Windows.Add w, 1
Check r.Windows.Count = 2 And r.Windows(1).StartRow = 1 And r.Windows(2).StartRow = 3, "Windows.Add before"
Check r.Windows.Item(5) Is Nothing, "Windows.Item beyond Count is Nothing"
Set b = CreateObject("ZEBReader81.clsZEBReaderBarcode")
b.Length = 7
r.Barcodes.Add b, "id"
Check r.Barcodes("id").Length = 7 And r.Barcodes.Exists("id") And r.Barcodes.Count = 1, "Barcodes by key"
r.ReaderType = 1
r.Printer.Enabled = True
Check Not r.Printer.Enabled, "an Apperson imprinter stays disabled"
r.ReaderType = 2
Check r.Printer.BufferCount = 1, "OpScan 2 prints one line"

' Arrays: an assigned Variant array comes back as Integer; the helper indexes it.
r.Side1Rows = Array(0, 5, 9)
a = sink.VariantArray(r.Side1Rows)
Check UBound(a) = 2 And a(1) = 5 And a(2) = 9, "Side1Rows round trip"

' The error host, by-reference arguments, events without a device.
Set host = New ErrorHost
host.Reports = 0
Check r.SetError(host), "SetError"
Check Not r.LoadDefaults(99), "LoadDefaults of a type without profile fails"
Check host.Reports = 1 And Left(host.Location, 25) = "clsZEBReader.LoadDefaults", "the report reaches the host"
r.ReaderType = 2
s = "unchanged"
Check Not r.Firmware(s) And s = "unchanged" And host.Reports = 1, "Firmware of an OpScan leaves its argument"

Set h = New Handlers
Set h.Reader = r
h.Starts = 0
h.Sheets = 0
h.Ends = 0
h.CancelAt = 2
h.Shapes = ""
sink.Connect r, h
r.CancelScan = True
Check Not r.ReadPage(), "ReadPage with CancelScan set"
Check h.Starts = 1 And h.Sheets = 0, "BeforeSheet only"
n = 7
' No such port in the prefix (COM1 may be a real line that holds the batch for its time-out).
r.Port = 99
r.CancelScan = True
r.ReadBatch False, 0, n
Check n = 7, "no sheet counted when the batch reads nothing"

Dim port, model
port = EnvNumber("ZEBREADER_TEST_PORT")
model = EnvNumber("ZEBREADER_TEST_MODEL")
If port > 0 And model > 0 Then
    ' A fresh reader: the form geometry and read areas above would shape the form.
    sink.Disconnect
    Set r = CreateObject("ZEBReader81.clsZEBReader")
    Set h.Reader = r
    h.Starts = 0
    h.Sheets = 0
    h.Ends = 0
    h.Barcodes = ""
    h.Rejects = 0
    sink.Connect r, h
    host.Reports = 0
    r.SetError host
    Check r.LoadDefaults(model), "LoadDefaults of the simulated model"
    ' The form of the simulator's sample sheets: 12-column cards for the narrow scanners,
    ' 40-column sheets, the second one duplex, for the others. ScanMark sizes its arrays by the
    ' form, the others by their page: the arrays hold at least the form.
    Dim cards, rows1, cols1, shapes, sides
    cards = (model = 23 Or model = 24 Or model = 37)
    If cards Then rows1 = 37 Else rows1 = 53
    If cards Then cols1 = 12 Else cols1 = 40
    r.Side1Rows = Array(0, rows1)
    r.Side1Cols = Array(0, cols1)
    If Not cards Then
        r.Side2Rows = Array(0, 20)
        r.Side2Cols = Array(0, 40)
    End If
    r.Duplex = Not cards
    r.DuplexForm = Not cards
    r.Barcode = True
    ' A pseudo-terminal carries eight bits without parity and has no handshake lines.
    r.DataBits = 8
    r.Parity = "N"
    r.FlowControl = 0
    r.Port = port
    r.TimeOut = 2
    r.SleepTime = 1
    r.Feeder = True
    r.CancelScan = False
    n = 0
    Check r.ReadBatch(False, -1, n), "ReadBatch against the simulator"
    Check n = 2 And h.Starts = 2 And h.Sheets = 2 And h.Ends = 2, "AfterSheet's cancel stops the batch after two sheets"
    Check h.Rejects = 1, "ReadSheet ran to its end and rejected the first sheet"
    ' Wine's VBScript cannot index a call's result: every Split goes to a variable first.
    shapes = Split(Trim(h.Shapes), " ")
    Check UBound(shapes) = 1, "two sheets' arrays (" & h.Shapes & ")"
    If UBound(shapes) = 1 Then
        For Each s In shapes
            sides = Split(s, "/")
            Check Covers(sides(0), rows1, cols1, 50), "side 1 holds the form and its marks (" & s & ")"
        Next
        If cards Then
            Check sides(1) = "-", "no side 2 on a card (" & shapes(1) & ")"
        Else
            Check Covers(sides(1), 20, 40, 19) And Marked(sides(1)) = 20, "side 2 of the duplex sheet (" & shapes(1) & ")"
        End If
    End If
    ' Only OpScan passes the sheets' barcodes on; the others leave one empty element.
    If model = 2 Then s = "0012345;0012346;" Else s = ";;"
    Check h.Barcodes = s, "the sheets' barcodes (" & h.Barcodes & ")"
    Check Covers(Shape(sink.VariantArray(r.Side1Array)), rows1, cols1, 50), "Side1Array holds the last sheet"
    Check r.CancelScan, "CancelScan stays set after the batch"
    Check host.Reports = 0, "no error reported during the batch (last: " & host.Location & ")"
End If

sink.Disconnect
Check r.SetError(Nothing) = False, "SetError(Nothing)"
WScript.Echo passed & " passed, " & failed & " failed"
