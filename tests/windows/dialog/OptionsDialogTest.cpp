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

// What a step sees: the dialog, and the message box over it when one is up.
struct Screen {
    HWND dialog = nullptr;
    HWND box = nullptr;
};
Screen look();

// Runs each step once its window is up: a step that wants a message box waits for one. When
// the steps run out or one never finds its window, the dialog is cancelled so the test ends.
struct Step {
    bool wantsBox;
    std::function<void(const Screen&)> act;
};
std::vector<Step> steps;
size_t next = 0;
int waited = 0;
bool busy = false; // a step's messages may run the timer again

void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD)
{
    const Screen screen = busy ? Screen{} : look();
    if (!screen.dialog)
        return;
    busy = true;
    if (next < steps.size() && steps[next].wantsBox == (screen.box != nullptr)) {
        waited = 0;
        steps[next++].act(screen);
    } else if (++waited == 500) {
        ADD_FAILURE() << "step " << next << " never found its window";
        if (screen.box)
            PostMessageA(screen.box, WM_COMMAND, IDOK, 0);
        PostMessageA(screen.dialog, WM_COMMAND, IDCANCEL, 0);
        next = steps.size();
    }
    busy = false;
}

struct Driver {
    explicit Driver(std::vector<Step> script) : timer(SetTimer(nullptr, 0, 10, tick))
    {
        steps = std::move(script);
        next = 0;
        waited = 0;
    }
    ~Driver() { KillTimer(nullptr, timer); }
    bool finished() const { return next == steps.size(); }
    UINT_PTR timer;
};

// The settings dialog (the window with the model list), and a message box it owns.
BOOL CALLBACK findWindows(HWND window, LPARAM into)
{
    auto& screen = *reinterpret_cast<Screen*>(into);
    if (!IsWindowVisible(window))
        return TRUE;
    if (GetDlgItem(window, IDC_cboReaderType))
        screen.dialog = window;
    else if (GetWindow(window, GW_OWNER))
        screen.box = window;
    return TRUE;
}

Screen look()
{
    Screen screen;
    EnumThreadWindows(GetCurrentThreadId(), findWindows, reinterpret_cast<LPARAM>(&screen));
    if (screen.box && GetWindow(screen.box, GW_OWNER) != screen.dialog)
        screen.box = nullptr;
    return screen;
}

HWND control(HWND dialog, int id) { return GetDlgItem(dialog, id); }
bool shown(HWND dialog, int id) { return IsWindowVisible(control(dialog, id)) != FALSE; }
bool enabled(HWND dialog, int id) { return IsWindowEnabled(control(dialog, id)) != FALSE; }

std::string textOf(HWND window)
{
    char text[512] = {};
    GetWindowTextA(window, text, sizeof text);
    return text;
}

// The text of a message box: its static text control.
std::string boxText(HWND box) { return textOf(GetDlgItem(box, 0xFFFF)); }

// Picks an entry of a list as the user does: the selection, then the notification.
void choose(HWND dialog, int id, const std::string& label)
{
    const HWND list = control(dialog, id);
    const LRESULT at = SendMessageA(list, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                    reinterpret_cast<LPARAM>(label.c_str()));
    ASSERT_NE(at, CB_ERR) << label;
    SendMessageA(list, CB_SETCURSEL, static_cast<WPARAM>(at), 0);
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
}

std::string chosen(HWND dialog, int id)
{
    const HWND list = control(dialog, id);
    const LRESULT at = SendMessageA(list, CB_GETCURSEL, 0, 0);
    char text[128] = {};
    SendMessageA(list, CB_GETLBTEXT, static_cast<WPARAM>(at), reinterpret_cast<LPARAM>(text));
    return text;
}

void type(HWND dialog, int id, const char* text) { SetWindowTextA(control(dialog, id), text); }
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
    ~OptionsDialog() override { SetOptionsDialogHook(nullptr); }

    std::string reported() const
    {
        std::string all;
        for (const auto& r : errors.host->reports)
            all += r.description + "\n";
        return all;
    }
};

TEST_F(OptionsDialog, ModelChangeShowsWhatTheNewModelOffersDefaultsLoadItAndCancelKeepsTheReader)
{
    const auto before = options::valuesOf(reader);
    const HWND owner = CreateWindowExA(0, "STATIC", "host", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr,
                                       nullptr, nullptr, nullptr);
    Driver driver({
        {false,
         [&](const Screen& s) {
             EXPECT_EQ(GetWindow(s.dialog, GW_OWNER), owner);
             EXPECT_EQ(chosen(s.dialog, IDC_cboReaderType), "Scantron OpScan 2");
             EXPECT_EQ(SendMessageA(control(s.dialog, IDC_cboReaderType), CB_GETCOUNT, 0, 0), 42);
             EXPECT_EQ(chosen(s.dialog, IDC_cboBaudRate), "38400");
             EXPECT_FALSE(shown(s.dialog, IDC_chkWindowing));
             EXPECT_TRUE(shown(s.dialog, IDC_chkRejecter) && !enabled(s.dialog, IDC_chkRejecter));
             EXPECT_EQ(textOf(control(s.dialog, IDC_lblThresholdRange)), "(0-15)");
             EXPECT_FALSE(enabled(s.dialog, IDHELP)) << "no help file";

             choose(s.dialog, IDC_cboReaderType, "Scantron EZData");
             EXPECT_FALSE(shown(s.dialog, IDC_cboBaudRate));
             EXPECT_FALSE(shown(s.dialog, IDC_fraLine)) << "nothing left in the frame";
             EXPECT_TRUE(shown(s.dialog, IDC_cmdLocate) && shown(s.dialog, IDC_cmdFirmware));
             EXPECT_TRUE(enabled(s.dialog, IDC_txtRecognitionThreshold));
             EXPECT_EQ(textOf(control(s.dialog, IDC_lblThresholdRange)), "(0-9)");

             choose(s.dialog, IDC_cboReaderType, "Scantron Scanmark 4000");
             EXPECT_TRUE(shown(s.dialog, IDC_cboBaudRate) && enabled(s.dialog, IDC_cboBaudRate));
             EXPECT_TRUE(shown(s.dialog, IDC_chkWindowing) && enabled(s.dialog, IDC_chkWindowing));
             EXPECT_FALSE(shown(s.dialog, IDC_cmdLocate));
             type(s.dialog, IDC_txtTimeOut, "99");
             press(s.dialog, IDC_cmdDefaults);
         }},
        {false,
         [](const Screen& s) {
             EXPECT_EQ(textOf(control(s.dialog, IDC_txtTimeOut)), "10")
                 << "the Scanmark 4000's factory value";
             EXPECT_EQ(chosen(s.dialog, IDC_cboBaudRate), "19200");
             press(s.dialog, IDCANCEL);
         }},
    });
    EXPECT_FALSE(reader.ShowOptions(owner)) << reported();
    EXPECT_TRUE(driver.finished());
    EXPECT_EQ(options::valuesOf(reader), before);
    EXPECT_TRUE(errors.host->reports.empty()) << reported();
    DestroyWindow(owner);
}

TEST_F(OptionsDialog, AnOutOfRangeThresholdIsRefusedAndOkWritesTheReader)
{
    Driver driver({
        {false,
         [](const Screen& s) {
             type(s.dialog, IDC_txtRecognitionThreshold, "16");
             choose(s.dialog, IDC_cboPort, "COM3");
             press(s.dialog, IDOK);
         }},
        {true,
         [](const Screen& s) {
             EXPECT_EQ(boxText(s.box), "The recognition threshold of the Scantron OpScan 2 must be a whole "
                                       "number from 0 to 15.");
             press(s.box, IDOK);
         }},
        {false,
         [](const Screen& s) {
             EXPECT_EQ(GetFocus(), control(s.dialog, IDC_txtRecognitionThreshold));
             type(s.dialog, IDC_txtRecognitionThreshold, "9");
             CheckDlgButton(s.dialog, IDC_chkDuplex, BST_CHECKED);
             press(s.dialog, IDOK);
         }},
    });
    EXPECT_TRUE(reader.ShowOptions()) << reported();
    EXPECT_TRUE(driver.finished());
    EXPECT_EQ(reader.RecognitionThreshold(), 9);
    EXPECT_EQ(reader.Port(), 3);
    EXPECT_TRUE(reader.Duplex());
    EXPECT_EQ(reader.BaudRate(), zebReaderBaudRate38400);
}

} // namespace
} // namespace zebreader81::test
