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
    Public Rows
    Public Barcodes
    Public CancelAt
    Public Sub BeforeSheet(bInitializePrinter)
        Starts = Starts + 1
    End Sub
    Public Sub ReadSheet(iSide1Array, iSide2Array, sBarcodeArray, bReject)
        Sheets = Sheets + 1
        Rows = Rows & UBound(iSide1Array, 1) & "x" & UBound(iSide1Array, 2) & " "
        Barcodes = Barcodes & Join(sBarcodeArray, ",") & ";"
        If Sheets = 1 Then
            Reader.RejectPage
            bReject = True
        End If
    End Sub
    Public Sub AfterSheet(bCancelScan)
        Ends = Ends + 1
        If Ends = CancelAt Then bCancelScan = True
    End Sub
End Class

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
h.Barcodes = ""
sink.Connect r, h
r.CancelScan = True
Check Not r.ReadPage(), "ReadPage with CancelScan set"
Check h.Starts = 1 And h.Sheets = 0, "BeforeSheet only"
n = 7
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
    sink.Connect r, h
    host.Reports = 0
    r.SetError host
    Check r.LoadDefaults(model), "LoadDefaults of the simulated model"
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
    Check n = 2 And h.Sheets = 2 And h.Ends = 2, "AfterSheet's cancel stops the batch after two sheets"
    Check Left(h.Rows, 2) <> "0x", "the side array has rows (" & h.Rows & ")"
    Check InStr(h.Barcodes, "0012345") > 0 Or Not r.Barcode, "the first sheet's barcode"
    Check r.CancelScan, "CancelScan stays set after the batch"
    Check host.Reports = 0, "no error reported during the batch (last: " & host.Location & ")"
End If

sink.Disconnect
Check r.SetError(Nothing) = False, "SetError(Nothing)"
WScript.Echo passed & " passed, " & failed & " failed"
