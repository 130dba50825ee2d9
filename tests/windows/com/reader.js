// The COM face from JScript under cscript, what this host adds to the C++ client. JScript cannot
// assign an argument, so handlers return the value for the event's last by-reference argument;
// arrays arrive as Variant arrays for VBArray. The last line is the tally the test checks.
var passed = 0, failed = 0;
function check(ok, what) {
    ok ? passed++ : (failed++, WScript.Echo("FAILED: " + what));
}
function envNumber(name) {
    return parseInt(new ActiveXObject("WScript.Shell").ExpandEnvironmentStrings("%" + name + "%"), 10) || 0;
}
// The marked cells of a side array of at least rows x cols; -1 for a smaller one or one never
// dimensioned.
function cells(side, rows, cols) {
    try {
        var v = new VBArray(side), all = v.toArray(), marked = 0;
        for (var i = 0; i < all.length; i++)
            marked += all[i] > 0;
        return v.ubound(1) >= rows && v.ubound(2) >= cols ? marked : -1;
    } catch (e) {
        return -1;
    }
}

var r = new ActiveXObject("ZEBReader81.clsZEBReader");
var sink = new ActiveXObject("ZEBReader81.EventSink");
var port = envNumber("ZEBREADER_TEST_PORT"), model = envNumber("ZEBREADER_TEST_MODEL");
// The form of the simulator's sample sheets: 12-column cards for the narrow scanners, 40-column
// sheets, the second one duplex, for the others. ScanMark sizes its arrays by the form, the
// others by their page: the arrays hold at least the form.
var cards = model == 23 || model == 24 || model == 37;
var rows1 = cards ? 37 : 53, cols1 = cards ? 12 : 40;

var raised = 0;
try {
    r.Profiles.Remove("99");
} catch (e) {
    raised = e.number & 0xFFFF;
}
check(raised == 5, "Remove of an unknown key raises error 5");
var host = {
    Silent: false, reports: 0, location: "",
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
    starts: 0, sheets: 0, ends: 0, side1: [], side2: -1, barcodes: "",
    BeforeSheet: function (bInitializePrinter) { this.starts++; },
    ReadSheet: function (iSide1Array, iSide2Array, sBarcodeArray, bReject) {
        this.side1.push(cells(iSide1Array, rows1, cols1));
        this.side2 = cells(iSide2Array, 20, 40);
        this.barcodes += new VBArray(sBarcodeArray).toArray().join(",") + ";";
        if (++this.sheets == 1) {
            r.RejectPage();
            return true;
        }
    },
    AfterSheet: function (bCancelScan) { return ++this.ends == 2; }
};
sink.Connect(r, events);
r.CancelScan = true;
check(!r.ReadPage() && events.starts == 1 && events.sheets == 0, "BeforeSheet only while cancelled");

if (port > 0 && model > 0) {
    check(r.LoadDefaults(model), "LoadDefaults of the simulated model");
    // JScript makes no SAFEARRAY of its own; a dictionary's Items is one.
    var form = function (count) {
        var d = new ActiveXObject("Scripting.Dictionary");
        d.Add(0, 0), d.Add(1, count);
        return d.Items();
    };
    // A pseudo-terminal carries eight bits without parity and has no handshake lines.
    var settings = {Side1Rows: form(rows1), Side1Cols: form(cols1), Duplex: !cards, DuplexForm: !cards, Barcode: true,
                    DataBits: 8, Parity: "N", FlowControl: 0, Port: port, TimeOut: 2, SleepTime: 1, Feeder: true,
                    CancelScan: false};
    if (!cards)
        settings.Side2Rows = form(20), settings.Side2Cols = form(40);
    for (var name in settings)
        r[name] = settings[name];
    events.starts = 0;
    check(r.ReadBatch(false, -1), "ReadBatch against the simulator");
    check(events.starts == 2 && events.sheets == 2 && events.ends == 2,
          "the returned cancel stops the batch after two sheets");
    check(events.side1.length == 2 && events.side1[0] > 50 && events.side1[1] > 50,
          "side 1 holds the form and its marks (" + events.side1 + ")");
    check(events.side2 == (cards ? -1 : 20), "side 2 of the second sheet (" + events.side2 + ")");
    // Only OpScan passes the sheets' barcodes on; the others leave one empty element.
    check(events.barcodes == (model == 2 ? "0012345;0012346;" : ";;"), "the sheets' barcodes (" + events.barcodes + ")");
    check(cells(sink.VariantArray(r.Side1Array), rows1, cols1) > 50, "Side1Array holds the last sheet");
    check(r.CancelScan, "CancelScan stays set after the batch");
    check(host.reports == 1, "no error reported during the batch (" + host.location + ")");
}

sink.Disconnect();
check(!r.SetError(null), "SetError(null)");
WScript.Echo(passed + " passed, " + failed + " failed");
