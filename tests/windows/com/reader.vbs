' The COM face from VBScript under cscript, what this host adds to the C++ client: a script
' object as the error host, by-reference arguments written back, Variant arrays, events through
' ZEBReader81.EventSink and, when a simulator is mapped (ZEBREADER_TEST_PORT and
' ZEBREADER_TEST_MODEL), a whole batch. The last line is the tally the test checks.
Option Explicit
Dim passed, failed, rows1, cols1, r, sink, host, h, n, s, a, fits, port, model, cards
passed = 0 : failed = 0

Sub Check(ok, what)
    If ok Then passed = passed + 1 Else failed = failed + 1 : WScript.Echo "FAILED: " & what
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

' A handler's error ends the handler silently: what it saw is kept for the checks.
Class Handlers
    Public Reader
    Public Starts
    Public Sheets
    Public Ends
    Public Side1
    Public Barcodes
    Public Sub BeforeSheet(bInitializePrinter)
        Starts = Starts + 1
    End Sub
    Public Sub ReadSheet(iSide1Array, iSide2Array, sBarcodeArray, bReject)
        Dim item
        Sheets = Sheets + 1
        Side1 = Side1 & Cells(iSide1Array) & " "
        For Each item In sBarcodeArray
            Barcodes = Barcodes & item & ";"
        Next
        If Sheets = 1 Then Reader.RejectPage : bReject = True
    End Sub
    ' What a handler returns goes to the event's last argument, as hosts that cannot assign one do.
    Public Function AfterSheet(bCancelScan)
        Ends = Ends + 1
        AfterSheet = (Ends = 2)
    End Function
End Class

' The marked cells of a side array that holds at least the form, -1 for a smaller one.
Function Cells(side)
    Dim cell
    Cells = -1
    If UBound(side, 1) < rows1 Or UBound(side, 2) < cols1 Then Exit Function
    Cells = 0
    For Each cell In side
        If cell > 0 Then Cells = Cells + 1
    Next
End Function

Function EnvNumber(name)
    name = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%" & name & "%")
    If IsNumeric(name) Then EnvNumber = CInt(name) Else EnvNumber = 0
End Function

Set r = CreateObject("ZEBReader81.clsZEBReader")
Set sink = CreateObject("ZEBReader81.EventSink")
port = EnvNumber("ZEBREADER_TEST_PORT")
model = EnvNumber("ZEBREADER_TEST_MODEL")
' The form of the simulator's sample sheets: 12-column cards for the narrow scanners, 40-column
' sheets, the second one duplex, for the others. ScanMark sizes its arrays by the form, the
' others by their page: the arrays hold at least the form.
cards = (model = 23 Or model = 24 Or model = 37)
If cards Then rows1 = 37 : cols1 = 12 Else rows1 = 53 : cols1 = 40

Set host = New ErrorHost
host.Reports = 0
Check r.SetError(host), "SetError"
Check Not r.LoadDefaults(99), "LoadDefaults of a type without profile fails"
Check host.Reports = 1 And Left(host.Location, 25) = "clsZEBReader.LoadDefaults", "the report reaches the host"

Set h = New Handlers
Set h.Reader = r
sink.Connect r, h
r.CancelScan = True
Check Not r.ReadPage() And h.Starts = 1 And h.Sheets = 0, "BeforeSheet only while cancelled"

' An assigned Variant array comes back as Integer; the helper indexes it.
r.Side1Rows = Array(0, rows1)
r.Side1Cols = Array(0, cols1)
a = sink.VariantArray(r.Side1Rows)
Check UBound(a) = 1 And a(1) = rows1, "Side1Rows round trip"

If port > 0 And model > 0 Then
    h.Starts = 0 : h.Sheets = 0 : h.Ends = 0 : host.Reports = 0
    Check r.LoadDefaults(model), "LoadDefaults of the simulated model"
    If Not cards Then r.Side2Rows = Array(0, 20) : r.Side2Cols = Array(0, 40)
    r.Duplex = Not cards : r.DuplexForm = Not cards : r.Barcode = True
    ' A pseudo-terminal carries eight bits without parity and has no handshake lines.
    r.DataBits = 8 : r.Parity = "N" : r.FlowControl = 0
    r.Port = port : r.TimeOut = 2 : r.SleepTime = 1 : r.Feeder = True : r.CancelScan = False
    n = 0
    Check r.ReadBatch(False, -1, n), "ReadBatch against the simulator"
    Check n = 2 And h.Starts = 2 And h.Sheets = 2 And h.Ends = 2, "AfterSheet's returned cancel stops the batch after two sheets"
    fits = Split(Trim(h.Side1), " ")
    Check UBound(fits) = 1 And fits(0) > 50 And fits(1) > 50, "side 1 holds the form and its marks (" & h.Side1 & ")"
    ' Only OpScan passes the sheets' barcodes on; the others leave one empty element.
    If model = 2 Then s = "0012345;0012346;" Else s = ";;"
    Check h.Barcodes = s, "the sheets' barcodes (" & h.Barcodes & ")"
    Check Cells(sink.VariantArray(r.Side1Array)) > 50, "Side1Array holds the last sheet"
    Check host.Reports = 0, "no error reported during the batch (last: " & host.Location & ")"
End If

sink.Disconnect
Check r.SetError(Nothing) = False, "SetError(Nothing)"
WScript.Echo passed & " passed, " & failed & " failed"
