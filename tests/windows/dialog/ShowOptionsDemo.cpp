// Opens the settings dialog for one model, as a host would: for looking at it and for the
// pictures in docs/. Usage: show-options [MODEL]
#include "dialog/win32/frmOptions.h"
#include "zebreader81/zebreader81.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    using namespace zebreader81;
    InstallOptionsDialog();
    clsZEBReader reader;
    reader.LoadDefaults(static_cast<zebReaderType>(argc > 1 ? std::atoi(argv[1]) : 2));
    reader.Port(1);
    const bool accepted = reader.ShowOptions();
    std::printf("%s\n", accepted ? "accepted" : "cancelled");
    return 0;
}
