// The settings dialog under Wine, driven by messages the way a user drives it: ShowOptions
// runs the real modal dialog, and a timer on the same thread acts on it step by step.
#include "dialog/OptionsForm.h"
#include "dialog/win32/frmOptions.h"
#include "dialog/win32/frmOptionsIds.h"
#include "support/TestHost.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace zebreader81::test {
namespace {

// A step acts on the settings dialog, or (wantsBox) on a message box over it, once that is up.
// A timer on the dialog's thread takes the steps; one that never finds its window cancels all.
struct Step {
    bool wantsBox;
    std::function<void(HWND dialog, HWND box)> act;
};
std::vector<Step> steps;
size_t next = 0, waited = 0;

// Sorts the thread's visible windows into the dialog (the one with the model list) and a
// message box it owns. A function, not a lambda: the callback is stdcall on x86.
BOOL CALLBACK sortWindow(HWND window, LPARAM into)
{
    if (IsWindowVisible(window) && (GetDlgItem(window, IDC_cboReaderType) || GetWindow(window, GW_OWNER)))
        reinterpret_cast<HWND*>(into)[GetDlgItem(window, IDC_cboReaderType) ? 0 : 1] = window;
    return TRUE;
}

void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD)
{
    HWND shown[2] = {};
    EnumThreadWindows(GetCurrentThreadId(), sortWindow, reinterpret_cast<LPARAM>(shown));
    const auto [dialog, box] = shown;
    if (!dialog)
        return;
    if (next < steps.size() && steps[next].wantsBox == (box != nullptr)) {
        waited = 0;
        steps[next++].act(dialog, box);
    } else if (++waited == 500) {
        ADD_FAILURE() << "step " << next << " never found its window";
        if (box)
            PostMessageA(box, WM_COMMAND, IDOK, 0);
        PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
        next = steps.size();
    }
}

// Takes the steps on the dialog that show opens; what show returns.
bool drive(std::vector<Step> script, const std::function<bool()>& show)
{
    steps = std::move(script);
    next = waited = 0;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, tick);
    const bool accepted = show();
    KillTimer(nullptr, timer);
    EXPECT_EQ(next, steps.size()) << "steps left";
    return accepted;
}

bool shown(HWND dialog, int id) { return IsWindowVisible(GetDlgItem(dialog, id)) != FALSE; }
bool enabled(HWND dialog, int id) { return IsWindowEnabled(GetDlgItem(dialog, id)) != FALSE; }

// A control's text; a list's chosen entry; a message box's text (its static control).
std::string textOf(HWND window, int id)
{
    char text[512] = {};
    GetDlgItemTextA(window, id, text, sizeof text);
    return text;
}

// Picks an entry of a list as the user does: the selection, then the notification.
void choose(HWND dialog, int id, const std::string& label)
{
    const HWND list = GetDlgItem(dialog, id);
    const LRESULT at = SendMessageA(list, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                    reinterpret_cast<LPARAM>(label.c_str()));
    ASSERT_NE(at, CB_ERR) << label;
    SendMessageA(list, CB_SETCURSEL, static_cast<WPARAM>(at), 0);
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
}

void type(HWND dialog, int id, const char* text) { SetDlgItemTextA(dialog, id, text); }
void press(HWND window, int id) { PostMessageA(window, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0); }

struct OptionsDialog : ::testing::Test {
    HostScope errors;
    clsZEBReader reader;

    OptionsDialog()
    {
        InstallOptionsDialog();
        reader.LoadDefaults(zebReaderTypeNCSOpScan2);
        reader.Port(2);
    }
    ~OptionsDialog() override
    {
        SetOptionsDialogHook(nullptr);
        for (const auto& r : errors.host->reports)
            ADD_FAILURE() << r.description;
    }
};

TEST_F(OptionsDialog, ModelChangeShowsWhatTheNewModelOffersDefaultsLoadItAndCancelKeepsTheReader)
{
    const auto before = options::valuesOf(reader);
    const HWND owner = CreateWindowExA(0, "STATIC", "host", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr,
                                       nullptr, nullptr, nullptr);
    const bool accepted =
        drive({{false,
                [&](HWND d, HWND) {
                    EXPECT_EQ(GetWindow(d, GW_OWNER), owner);
                    EXPECT_EQ(textOf(d, IDC_cboReaderType), "Scantron OpScan 2");
                    EXPECT_EQ(SendMessageA(GetDlgItem(d, IDC_cboReaderType), CB_GETCOUNT, 0, 0), 42);
                    EXPECT_EQ(textOf(d, IDC_cboBaudRate), "38400");
                    EXPECT_TRUE(shown(d, IDC_chkRejecter) && !enabled(d, IDC_chkRejecter));
                    EXPECT_FALSE(enabled(d, IDHELP)) << "no help file";

                    choose(d, IDC_cboReaderType, "Scantron EZData");
                    EXPECT_FALSE(shown(d, IDC_cboBaudRate));
                    EXPECT_FALSE(shown(d, IDC_fraLine)) << "nothing left in the frame";
                    EXPECT_EQ(textOf(d, IDC_lblThresholdRange), "(0-9)");

                    choose(d, IDC_cboReaderType, "Scantron Scanmark 4000");
                    EXPECT_TRUE(shown(d, IDC_cboBaudRate) && enabled(d, IDC_cboBaudRate));
                    type(d, IDC_txtTimeOut, "99");
                    press(d, IDC_cmdDefaults);
                }},
               {false,
                [](HWND d, HWND) {
                    EXPECT_EQ(textOf(d, IDC_txtTimeOut), "10") << "the Scanmark 4000's factory value";
                    EXPECT_EQ(textOf(d, IDC_cboBaudRate), "19200");
                    press(d, IDCANCEL);
                }}},
              [&] { return reader.ShowOptions(owner); });
    EXPECT_FALSE(accepted);
    EXPECT_EQ(options::valuesOf(reader), before);
    DestroyWindow(owner);
}

TEST_F(OptionsDialog, AnOutOfRangeThresholdIsRefusedAndOkWritesTheReader)
{
    const bool accepted =
        drive({{false,
                [](HWND d, HWND) {
                    type(d, IDC_txtRecognitionThreshold, "16");
                    choose(d, IDC_cboPort, "COM3");
                    press(d, IDOK);
                }},
               {true,
                [](HWND, HWND box) {
                    EXPECT_EQ(textOf(box, 0xFFFF),
                              "The recognition threshold of the Scantron OpScan 2 must be a whole "
                              "number from 0 to 15.");
                    press(box, IDOK);
                }},
               {false,
                [](HWND d, HWND) {
                    EXPECT_EQ(GetFocus(), GetDlgItem(d, IDC_txtRecognitionThreshold));
                    type(d, IDC_txtRecognitionThreshold, "9");
                    CheckDlgButton(d, IDC_chkDuplex, BST_CHECKED);
                    press(d, IDOK);
                }}},
              [&] { return reader.ShowOptions(); });
    EXPECT_TRUE(accepted);
    EXPECT_EQ(reader.RecognitionThreshold(), 9);
    EXPECT_EQ(reader.Port(), 3);
    EXPECT_TRUE(reader.Duplex());
    EXPECT_EQ(reader.BaudRate(), zebReaderBaudRate38400);
}

} // namespace
} // namespace zebreader81::test
