// The COM face from JScript under cscript. JScript cannot assign an argument, so handlers
// return the value for the event's last by-reference argument; arrays arrive as Variant
// arrays for VBArray. The last line is the tally the test checks.
var passed = 0, failed = 0;
function check(ok, what) {
    if (ok) {
        passed++;
    } else {
        failed++;
        WScript.Echo("FAILED: " + what);
    }
}
function envNumber(name) {
    var text = new ActiveXObject("WScript.Shell").ExpandEnvironmentStrings("%" + name + "%");
    var n = parseInt(text, 10);
    return isNaN(n) ? 0 : n;
}

var r = new ActiveXObject("ZEBReader81.clsZEBReader");
var sink = new ActiveXObject("ZEBReader81.EventSink");

r.ReaderType = 24;
check(r.ReaderName == "Peripheral Dynamics Inc. VMR138", "ReaderName of type 24");
check(r.Profiles.Count == 42 && r.Profiles.Item("24").MarkCutOff == 250, "profiles");
check(r.Profiles.Item("99") == null, "Item of an unknown key is null");
var raised = 0;
try {
    r.Profiles.Remove("99");
} catch (e) {
    raised = e.number & 0xFFFF;
}
check(raised == 5, "Remove of an unknown key raises error 5");

var host = {
    Silent: false,
    reports: 0,
    location: "",
    RaiseError: function (number, kind, description, where) {
        this.reports++;
        this.location = where;
        return 0;
    }
};
check(r.SetError(host), "SetError with a script object");
check(!r.LoadDefaults(99) && host.reports == 1 && host.location == "clsZEBReader.LoadDefaults",
      "the report reaches the host");

var events = {
    reader: r,
    starts: 0,
    sheets: 0,
    ends: 0,
    rows: 0,
    barcodes: "",
    BeforeSheet: function (bInitializePrinter) { this.starts++; },
    ReadSheet: function (iSide1Array, iSide2Array, sBarcodeArray, bReject) {
        this.sheets++;
        this.rows = new VBArray(iSide1Array).ubound(1);
        this.barcodes += new VBArray(sBarcodeArray).toArray().join(",") + ";";
        if (this.sheets == 1) {
            this.reader.RejectPage();
            return true;
        }
    },
    AfterSheet: function (bCancelScan) {
        this.ends++;
        if (this.ends == 2)
            return true;
    }
};
sink.Connect(r, events);
r.CancelScan = true;
check(!r.ReadPage() && events.starts == 1 && events.sheets == 0, "BeforeSheet only while cancelled");

var port = envNumber("ZEBREADER_TEST_PORT"), model = envNumber("ZEBREADER_TEST_MODEL");
if (port > 0 && model > 0) {
    check(r.LoadDefaults(model), "LoadDefaults of the simulated model");
    // A pseudo-terminal carries eight bits without parity and has no handshake lines.
    r.DataBits = 8;
    r.Parity = "N";
    r.FlowControl = 0;
    r.Port = port;
    r.TimeOut = 2;
    r.SleepTime = 1;
    r.Feeder = true;
    r.CancelScan = false;
    check(r.ReadBatch(false, -1), "ReadBatch against the simulator");
    check(events.sheets == 2 && events.ends == 2, "the returned cancel stops the batch after two sheets");
    check(events.rows > 0, "the side array has rows (" + events.rows + ")");
    check(events.barcodes.indexOf("0012345") >= 0 || !r.Barcode, "the first sheet's barcode");
    check(r.CancelScan, "CancelScan stays set after the batch");
    check(host.reports == 1, "no error reported during the batch (" + host.location + ")");
}

sink.Disconnect();
check(!r.SetError(null), "SetError(null)");
WScript.Echo(passed + " passed, " + failed + " failed");
