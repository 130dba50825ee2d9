// zebreader: reads sheets, shows models and profiles, and keeps settings, from a terminal.
#include "CommandLine.h"

#include <iostream>

int main(int argc, char** argv)
{
    using namespace zebreader::cli;
    CLI::App app{"zebreader: read optical mark sheets with ZEBReader81"};
    app.require_subcommand(1);
    app.set_version_flag("--version", "zebreader " ZEBREADER_VERSION);
    app.set_help_all_flag("--help-all", "Help for every command");
    int status = ExitOk;
    for (Registration add :
         {addScanCommand, addModelsCommands, addDeviceCommands, addSettingsCommand, addPortsCommand})
        add(app, status);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int code = app.exit(e);
        return code == 0 ? ExitOk : ExitUsage;
    } catch (const UsageError& e) {
        std::cerr << "zebreader: " << e.what() << "\n";
        return ExitUsage;
    } catch (const std::exception& e) {
        std::cerr << "zebreader: " << e.what() << "\n";
        return ExitFailed;
    }
    return status;
}
