// What the settings dialog frmOptions shows and accepts, apart from any window system: which
// controls the chosen model lets the user see and change, the entries of its lists, checks
// of the typed values, and moving values between the reader and the form.
#pragma once

#include "zebreader81/clsZEBReader.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zebreader81::options {

/// The controls of the form that hold a setting or act on the scanner.
enum class Field {
    ReaderType,
    Port,
    BaudRate,
    Parity,
    DataBits,
    StopBits,
    FlowControl,
    TimeOut,
    SleepTime,
    MarkCutOff,
    MarkDiscrimination,
    RecognitionThreshold,
    Duplex,
    Feeder,
    Rejecter,
    Barcode,
    Printer,
    ReaderGrade,
    Windowing,
    Locate,
    Firmware,
};
inline constexpr size_t fieldCount = static_cast<size_t>(Field::Firmware) + 1;

/// How a field is shown: a drop-down list, a text box, a check box or a button.
enum class Kind { List, Edit, Check, Button };
Kind kindOf(Field field);

/// Whether the chosen model lets the user change a control, and whether it is shown.
struct ControlState {
    bool enabled = false;
    bool visible = false;
    bool operator==(const ControlState&) const = default;
};

/// The form's values as its controls hold them: a list holds the text of its value ("9600",
/// "N", "1.5", the model number), a text box what was typed, a check box "True" or "False".
class FormValues {
public:
    const std::string& operator[](Field field) const { return text_[static_cast<size_t>(field)]; }
    std::string& operator[](Field field) { return text_[static_cast<size_t>(field)]; }
    bool checked(Field field) const { return (*this)[field] == "True"; }
    void check(Field field, bool value) { (*this)[field] = value ? "True" : "False"; }
    bool operator==(const FormValues&) const = default;

private:
    std::array<std::string, fieldCount> text_;
};

/// One entry of a list: what it shows and the text of the value it stands for.
struct Choice {
    std::string label;
    std::string value;
    bool operator==(const Choice&) const = default;
};

/// A value the form refuses, with the message that says why.
struct Refusal {
    Field field;
    std::string message;
};

/// The profile of the form's model in the reader's catalogue, or nullptr.
std::shared_ptr<clsZEBReaderProfile> profileOf(const FormValues& values,
                                               const clsZEBReaderProfiles& profiles);

/// A control's state under a profile; without a profile only the model list can be used.
ControlState controlState(const clsZEBReaderProfile* profile, Field field);

/// The entries of a list field. The models are the catalogue's, in its order; a value the
/// reader holds that no entry stands for is added, so the list can still show it.
std::vector<Choice> choices(Field field, const FormValues& values, const clsZEBReaderProfiles& profiles);

/// The reader's settings as the form shows them.
FormValues valuesOf(const clsZEBReader& reader);

/// Chooses another model. Settings that model does not let the user change take its
/// profile's values; the rest, and the port, stay as the user left them.
void changeModel(FormValues& values, const clsZEBReaderProfiles& profiles, zebReaderType type);

/// The first value the form cannot accept, if any: a text box must hold a whole number in
/// its range; the recognition threshold's range is the profile's while the user may change it.
std::optional<Refusal> validate(const FormValues& values, const clsZEBReaderProfiles& profiles);

/// Writes accepted values into the reader, the model first (it re-types the imprinter).
void applyTo(const FormValues& values, clsZEBReader& reader);

/// The model's factory values by the reader's LoadDefaults, run on a scratch reader so the
/// real one is touched only by OK. The port and read-area switch stay.
FormValues withDefaults(const FormValues& values, const clsZEBReaderProfiles& profiles);

/// What a scanner action found: the text to show, and the form's values after it.
struct ActionResult {
    bool succeeded = false;
    std::string message;
    FormValues values;
};

/// Searches the ports for the form's model, the form's port first; a port found becomes
/// the form's port. Values must be valid.
ActionResult locate(const FormValues& values, const clsZEBReaderProfiles& profiles);

/// Asks the form's model on the form's port for its firmware text. Values must be valid.
ActionResult firmware(const FormValues& values, const clsZEBReaderProfiles& profiles);

/// The help file and topic the Help button opens; none while the reader has no help file.
struct HelpTopic {
    std::string file;
    int32_t context = 0;
};
std::optional<HelpTopic> helpTopic(const clsZEBReader& reader);

} // namespace zebreader81::options
