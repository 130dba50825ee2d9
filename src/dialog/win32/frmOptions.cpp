#include "dialog/win32/frmOptions.h"

#include "core/basError.h"
#include "dialog/OptionsForm.h"
#include "dialog/win32/frmOptionsIds.h"
#include "zebreader81/OptionsDialog.h"

#include <windows.h>

#include <array>
#include <cctype>
#include <exception>
#include <string>
#include <vector>

namespace zebreader81 {

namespace {

using options::Field;
using options::FormValues;
using options::Kind;

constexpr const char* caption = "Scanner Settings";

int controlId(Field field) { return IDC_cboReaderType + static_cast<int>(field); }
int labelId(Field field) { return IDC_lblReaderType + static_cast<int>(field); }
bool hasLabel(Field field)
{
    return options::kindOf(field) == Kind::List || options::kindOf(field) == Kind::Edit;
}

static_assert(IDC_txtRecognitionThreshold ==
              IDC_cboReaderType + static_cast<int>(Field::RecognitionThreshold));
static_assert(IDC_cmdFirmware == IDC_cboReaderType + static_cast<int>(Field::Firmware));
static_assert(IDC_lblRecognitionThreshold ==
              IDC_lblReaderType + static_cast<int>(Field::RecognitionThreshold));

// A frame is hidden when every field in it is.
struct Frame {
    int id;
    Field first;
    Field last;
};
constexpr Frame frames[] = {{IDC_fraLine, Field::BaudRate, Field::FlowControl},
                            {IDC_fraReading, Field::TimeOut, Field::RecognitionThreshold},
                            {IDC_fraOptions, Field::Duplex, Field::Windowing}};

HMODULE thisModule()
{
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&thisModule), &module);
    return module;
}

bool endsWith(std::string text, const std::string& end)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Compiled help through the viewer's own library, loaded once and kept while help may be open.
bool openCompiledHelp(HWND owner, const options::HelpTopic& topic)
{
    using HtmlHelpFunction = HWND(WINAPI*)(HWND, LPCSTR, UINT, DWORD_PTR);
    constexpr UINT helpContext = 0x000F;
    static const HMODULE viewer = LoadLibraryA("hhctrl.ocx");
    if (!viewer)
        return false;
    const auto htmlHelp =
        reinterpret_cast<HtmlHelpFunction>(reinterpret_cast<void (*)()>(GetProcAddress(viewer, "HtmlHelpA")));
    return htmlHelp &&
           htmlHelp(owner, topic.file.c_str(), helpContext, static_cast<DWORD_PTR>(topic.context));
}

class frmOptions {
public:
    explicit frmOptions(clsZEBReader& reader)
        : reader_(reader), profiles_(*reader.Profiles()), values_(options::valuesOf(reader))
    {
    }

    // True when the user accepted and the values are in the reader.
    bool show(HWND owner)
    {
        const INT_PTR result = DialogBoxParamA(thisModule(), MAKEINTRESOURCEA(IDD_frmOptions), owner,
                                               procedure, reinterpret_cast<LPARAM>(this));
        if (failure_)
            std::rethrow_exception(failure_);
        if (result == -1)
            throw RuntimeError(err::InvalidProcedureCall,
                               "The settings dialog could not be opened (Windows error " +
                                   std::to_string(GetLastError()) + ").");
        return result == IDOK;
    }

private:
    // Nothing may be thrown through the window system: a failure closes the dialog and is
    // thrown again by show.
    static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrA(window, DWLP_USER, lParam);
            reinterpret_cast<frmOptions*>(lParam)->window_ = window;
        }
        auto* form = reinterpret_cast<frmOptions*>(GetWindowLongPtrA(window, DWLP_USER));
        if (!form)
            return FALSE;
        try {
            return form->handle(message, wParam);
        } catch (...) {
            form->failure_ = std::current_exception();
            EndDialog(window, IDABORT);
            return TRUE;
        }
    }

    INT_PTR handle(UINT message, WPARAM wParam)
    {
        switch (message) {
        case WM_INITDIALOG:
            showValues();
            showControls();
            return TRUE;
        case WM_COMMAND: return command(LOWORD(wParam), HIWORD(wParam));
        case WM_HELP: help(); return TRUE;
        default: return FALSE;
        }
    }

    INT_PTR command(int id, int code)
    {
        switch (id) {
        case IDOK: accept(); return TRUE;
        case IDCANCEL: EndDialog(window_, IDCANCEL); return TRUE;
        case IDHELP: help(); return TRUE;
        case IDC_cmdDefaults: defaults(); return TRUE;
        case IDC_cmdLocate: act(options::locate); return TRUE;
        case IDC_cmdFirmware: act(options::firmware); return TRUE;
        case IDC_cboReaderType:
            if (code != CBN_SELCHANGE)
                return FALSE;
            changeModel();
            return TRUE;
        default: return FALSE;
        }
    }

    HWND item(int id) const { return GetDlgItem(window_, id); }

    void showValues()
    {
        for (size_t i = 0; i < options::fieldCount; ++i) {
            const auto field = static_cast<Field>(i);
            const HWND control = item(controlId(field));
            switch (options::kindOf(field)) {
            case Kind::List: {
                lists_[i] = options::choices(field, values_, profiles_);
                SendMessageA(control, CB_RESETCONTENT, 0, 0);
                LRESULT selected = CB_ERR;
                for (const auto& choice : lists_[i]) {
                    const LRESULT at = SendMessageA(control, CB_ADDSTRING, 0,
                                                    reinterpret_cast<LPARAM>(choice.label.c_str()));
                    if (choice.value == values_[field])
                        selected = at;
                }
                SendMessageA(control, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
                break;
            }
            case Kind::Edit: SetWindowTextA(control, values_[field].c_str()); break;
            case Kind::Check:
                CheckDlgButton(window_, controlId(field),
                               values_.checked(field) ? BST_CHECKED : BST_UNCHECKED);
                break;
            case Kind::Button: break;
            }
        }
    }

    void showControls()
    {
        const auto profile = options::profileOf(values_, profiles_);
        std::array<options::ControlState, options::fieldCount> states{};
        for (size_t i = 0; i < options::fieldCount; ++i) {
            const auto field = static_cast<Field>(i);
            states[i] = options::controlState(profile.get(), field);
            for (int id : {controlId(field), hasLabel(field) ? labelId(field) : 0}) {
                if (!id)
                    continue;
                EnableWindow(item(id), states[i].enabled);
                ShowWindow(item(id), states[i].visible ? SW_SHOW : SW_HIDE);
            }
        }
        for (const Frame& frame : frames) {
            bool anyShown = false;
            for (auto i = static_cast<size_t>(frame.first); i <= static_cast<size_t>(frame.last); ++i)
                anyShown = anyShown || states[i].visible;
            ShowWindow(item(frame.id), anyShown ? SW_SHOW : SW_HIDE);
        }
        std::string range;
        if (profile && states[static_cast<size_t>(Field::RecognitionThreshold)].enabled)
            range = "(" + std::to_string(profile->RecognitionThresholdMinimum()) + "-" +
                    std::to_string(profile->RecognitionThresholdMaximum()) + ")";
        SetWindowTextA(item(IDC_lblThresholdRange), range.c_str());
        EnableWindow(item(IDC_cmdDefaults), profile != nullptr);
        EnableWindow(item(IDHELP), options::helpTopic(reader_).has_value());
    }

    // The controls into values_.
    void gather()
    {
        for (size_t i = 0; i < options::fieldCount; ++i) {
            const auto field = static_cast<Field>(i);
            const HWND control = item(controlId(field));
            switch (options::kindOf(field)) {
            case Kind::List: {
                const LRESULT selected = SendMessageA(control, CB_GETCURSEL, 0, 0);
                if (selected >= 0 && static_cast<size_t>(selected) < lists_[i].size())
                    values_[field] = lists_[i][static_cast<size_t>(selected)].value;
                break;
            }
            case Kind::Edit: {
                std::string text(static_cast<size_t>(GetWindowTextLengthA(control)) + 1, '\0');
                text.resize(
                    static_cast<size_t>(GetWindowTextA(control, text.data(), static_cast<int>(text.size()))));
                values_[field] = text;
                break;
            }
            case Kind::Check:
                values_.check(field, IsDlgButtonChecked(window_, controlId(field)) == BST_CHECKED);
                break;
            case Kind::Button: break;
            }
        }
    }

    bool refused()
    {
        const auto refusal = options::validate(values_, profiles_);
        if (!refusal)
            return false;
        MessageBoxA(window_, refusal->message.c_str(), caption, MB_OK | MB_ICONEXCLAMATION);
        SendMessageA(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(controlId(refusal->field))), TRUE);
        return true;
    }

    void accept()
    {
        gather();
        if (refused())
            return;
        options::applyTo(values_, reader_);
        EndDialog(window_, IDOK);
    }

    void changeModel()
    {
        gather();
        options::changeModel(values_, profiles_,
                             static_cast<zebReaderType>(std::atoi(values_[Field::ReaderType].c_str())));
        showValues();
        showControls();
    }

    void defaults()
    {
        gather();
        values_ = options::withDefaults(values_, profiles_);
        showValues();
        showControls();
    }

    // Locate or Firmware: talks to the scanner with the form's values, then says what it found.
    void act(options::ActionResult (*action)(const FormValues&, const clsZEBReaderProfiles&))
    {
        gather();
        if (refused())
            return;
        const HCURSOR previous = SetCursor(LoadCursor(nullptr, IDC_WAIT));
        const auto result = action(values_, profiles_);
        SetCursor(previous);
        values_ = result.values;
        showValues();
        MessageBoxA(window_, result.message.c_str(), caption,
                    MB_OK | (result.succeeded ? MB_ICONINFORMATION : MB_ICONEXCLAMATION));
    }

    void help()
    {
        const auto topic = options::helpTopic(reader_);
        if (!topic)
            return;
        const bool opened = endsWith(topic->file, ".chm")
                                ? openCompiledHelp(window_, *topic)
                                : WinHelpA(window_, topic->file.c_str(), HELP_CONTEXT,
                                           static_cast<ULONG_PTR>(topic->context));
        if (!opened)
            MessageBoxA(window_, ("The help file " + topic->file + " could not be opened.").c_str(), caption,
                        MB_OK | MB_ICONEXCLAMATION);
    }

    clsZEBReader& reader_;
    clsZEBReaderProfiles& profiles_;
    FormValues values_;
    std::array<std::vector<options::Choice>, options::fieldCount> lists_;
    HWND window_ = nullptr;
    std::exception_ptr failure_;
};

} // namespace

void InstallOptionsDialog()
{
    SetOptionsDialogHook([](clsZEBReader& reader, void* fParent) {
        return frmOptions(reader).show(static_cast<HWND>(fParent));
    });
}

} // namespace zebreader81
