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

// Rows, columns and marked cells of a side array; null for an array never dimensioned.
function shape(side) {
    try {
        var v = new VBArray(side), cells = v.toArray(), marked = 0;
        for (var i = 0; i < cells.length; i++)
            if (cells[i] > 0)
                marked++;
        return {rows: v.ubound(1), cols: v.ubound(2), marked: marked};
    } catch (e) {
        return null;
    }
}
function covers(s, rows, cols, marks) {
    return s != null && s.rows >= rows && s.cols >= cols && s.marked > marks;
}

var events = {
    reader: r,
    starts: 0,
    sheets: 0,
    ends: 0,
    side1: [],
    side2: [],
    barcodes: "",
    BeforeSheet: function (bInitializePrinter) { this.starts++; },
    ReadSheet: function (iSide1Array, iSide2Array, sBarcodeArray, bReject) {
        this.sheets++;
        this.side1.push(shape(iSide1Array));
        this.side2.push(shape(iSide2Array));
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
    // The form of the simulator's sample sheets: 12-column cards for the narrow scanners,
    // 40-column sheets, the second one duplex, for the others. ScanMark sizes its arrays by the
    // form, the others by their page: the arrays hold at least the form.
    var cards = model == 23 || model == 24 || model == 37;
    var rows1 = cards ? 37 : 53, cols1 = cards ? 12 : 40;
    // JScript makes no SAFEARRAY of its own; a dictionary's Items is one.
    var form = function (count) {
        var d = new ActiveXObject("Scripting.Dictionary");
        d.Add(0, 0);
        d.Add(1, count);
        return d.Items();
    };
    r.Side1Rows = form(rows1);
    r.Side1Cols = form(cols1);
    if (!cards) {
        r.Side2Rows = form(20);
        r.Side2Cols = form(40);
    }
    r.Duplex = !cards;
    r.DuplexForm = !cards;
    r.Barcode = true;
    // A pseudo-terminal carries eight bits without parity and has no handshake lines.
    r.DataBits = 8;
    r.Parity = "N";
    r.FlowControl = 0;
    r.Port = port;
    r.TimeOut = 2;
    r.SleepTime = 1;
    r.Feeder = true;
    r.CancelScan = false;
    events.starts = 0;
    check(r.ReadBatch(false, -1), "ReadBatch against the simulator");
    check(events.starts == 2 && events.sheets == 2 && events.ends == 2,
          "the returned cancel stops the batch after two sheets");
    for (var i = 0; i < events.side1.length; i++)
        check(covers(events.side1[i], rows1, cols1, 50), "side 1 of sheet " + (i + 1) + " holds the form and its marks");
    var side2 = events.side2[1];
    check(cards ? side2 === null : covers(side2, 20, 40, 19) && side2.marked == 20,
          "side 2 of the second sheet");
    // Only OpScan passes the sheets' barcodes on; the others leave one empty element.
    check(events.barcodes == (model == 2 ? "0012345;0012346;" : ";;"), "the sheets' barcodes (" + events.barcodes + ")");
    check(covers(shape(sink.VariantArray(r.Side1Array)), rows1, cols1, 50), "Side1Array holds the last sheet");
    check(r.CancelScan, "CancelScan stays set after the batch");
    check(host.reports == 1, "no error reported during the batch (" + host.location + ")");
}

sink.Disconnect();
check(!r.SetError(null), "SetError(null)");
WScript.Echo(passed + " passed, " + failed + " failed");
