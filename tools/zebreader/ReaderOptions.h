// The reader's settings as command-line flags: shared by `scan` and `settings save`.
#pragma once

#include "zebreader81/clsZEBReader.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace zebreader::cli {

struct ReaderOptions {
    std::string model;    // empty: the model of the loaded settings, else 2
    std::string settings; // sub-key to load from; empty: LoadDefaults(model)
    std::string root = "hkcu";
    std::optional<int> port;
    std::string device;

    std::optional<int> baud, dataBits, flow, timeout, sleep, cutoff, discrimination, threshold;
    std::optional<std::string> parity;
    std::optional<float> stopBits;
    std::optional<bool> duplex, feeder, rejecter;
    bool duplexForm = false, barcode = false, grade = false, windowing = false;
    std::optional<std::string> mode;
    std::string side1, side2;
    std::vector<std::string> windows;

    /// Adds the flags to a subcommand.
    void addTo(CLI::App& command, bool withSettingsKey);
    /// LoadSettings or LoadDefaults, then every flag given; --device is mapped to the
    /// reader's port. A form size saved with the settings is used unless --side1/--side2 say
    /// otherwise. Returns False when loading failed (already reported); throws UsageError on
    /// bad values and on a settings sub-key that holds nothing.
    bool apply(zebreader81::clsZEBReader& reader) const;
    /// The form size given on the command line as the values the tool saves beside the
    /// reader's settings ("FormSide1" = "53:40"...).
    std::vector<std::pair<std::string, std::string>> formValues() const;
};

} // namespace zebreader::cli
