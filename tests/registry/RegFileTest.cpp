// The export format: files written by the registry editor, import and export through the store.
#include "registry/RegFile.h"
#include "StoreFixture.h"
#include "registry/RegFormat.h"
#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"
#include "registry/TextCodec.h"
#include "support/TestHost.h"

namespace zebreader81::test {
namespace {

using registry::Root;
using registry::Value;
using RegFile = StoreFixture;

// As the editor saves a file: UTF-16LE with its mark and CRLF line ends.
std::string editorBytes(const std::string& lfText)
{
    std::string crlf;
    for (char c : lfText) {
        if (c == '\n')
            crlf += '\r';
        crlf += c;
    }
    const auto wide = registry::utf8ToUtf16le(crlf);
    return "\xFF\xFE" + std::string(wide.begin(), wide.end());
}

Value valueOf(Root root, const std::string& key, const std::string& name)
{
    std::unique_ptr<registry::SettingsKey> k;
    Value v{0xFFFF, {}};
    if (registry::settingsStore().open(root, key, registry::Access::Read, k) == registry::Status::Ok)
        k->query(name, v);
    return v;
}

// What the editor exports of HKEY_CURRENT_USER\Software\Site: every kind of value.
const std::string siteExport =
    "Windows Registry Editor Version 5.00\n"
    "\n"
    "[HKEY_CURRENT_USER\\Software\\Site]\n"
    "\n"
    "[HKEY_CURRENT_USER\\Software\\Site\\Scanner]\n"
    "\"ScannerType\"=\"2\"\n"
    "\"ScannerParity\"=\"O\"\n"
    "\"TimeOut\"=dword:0000000a\n"
    "\"Folder\"=\"C:\\\\Scans\\\\\\\"new\\\"\"\n"
    "@=\"default\"\n"
    "\"Path\"=hex(2):25,00,53,00,79,00,73,00,74,00,65,00,6d,00,52,00,6f,00,6f,00,74,\\\n"
    "  00,25,00,00,00\n"
    "\"Lines\"=hex(7):61,00,00,00,62,00,00,00,00,00\n"
    "\"Blob\"=hex:01,02,ff\n"
    "\"Nothing\"=hex(0):\n"
    "\"Two lines\"=hex(1):6f,00,6e,00,65,00,0d,00,0a,00,74,00,77,00,6f,00,00,00\n"
    "\"Count\"=dword:deadbeef\n"
    "\"Long\"=hex:ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\n"
    "  ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\n"
    "  ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\n"
    "  ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,ab,\\\n"
    "  ab,ab,ab\n"
    "\"Q\"=hex(b):01,02,03,04,05,06,07,08\n"
    "\"Quoted\"=\"say \\\"hi\\\" to C:\\\\\"\n"
    "\n";

TEST_F(RegFile, EditorExportIsImportedAndExportedBackByteForByte)
{
    const std::string path = (dir / "site.reg").string();
    writeFile(path, editorBytes(siteExport +
                                "[HKEY_CURRENT_USER\\Software\\Other]\n\"Outside\"=\"1\"\n\n"
                                "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Site]\n\"Wide\"=\"\xC3\xA9t\xC3\xA9\"\n"));
    ASSERT_TRUE(registry::importRegFile(path));

    const std::string key = "Software\\Site\\Scanner";
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Folder"), Value::text("C:\\Scans\\\"new\""));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, ""), Value::text("default"));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Path"), Value::text("%SystemRoot%", registry::REG_EXPAND_SZ));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Lines"), (Value{registry::REG_MULTI_SZ, {'a', 0, 'b', 0, 0}}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Blob"), (Value{registry::REG_BINARY, {1, 2, 0xff}}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Nothing"), (Value{registry::REG_NONE, {}}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Two lines"), Value::text("one\r\ntwo"));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Count"), Value::dword(0xdeadbeef));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Long"),
              (Value{registry::REG_BINARY, std::vector<uint8_t>(100, 0xab)}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Q"), (Value{registry::REG_QWORD, {1, 2, 3, 4, 5, 6, 7, 8}}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Quoted"), Value::text("say \"hi\" to C:\\"));
    EXPECT_EQ(valueOf(Root::LocalMachine, "software\\site", "Wide"), Value::text("\xC3\xA9t\xC3\xA9"));
    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(zebReaderRegistryKeyCurrentUser, key));
    EXPECT_EQ(r.ReaderType(), zebReaderTypeNCSOpScan2);
    EXPECT_EQ(r.Parity(), "O");
    EXPECT_EQ(r.TimeOut(), 10);

    const std::string exported = (dir / "export.reg").string();
    ASSERT_TRUE(registry::exportRegFile(exported, Root::CurrentUser, "software\\site"));
    EXPECT_EQ(readFile(exported), editorBytes(siteExport));
}

TEST_F(RegFile, ImportDeletesAsTheEditorDoesAndABadImportChangesNothing)
{
    constexpr auto HKCU = zebReaderRegistryKeyCurrentUser;
    ASSERT_TRUE(registry::SaveValue(HKCU, "Software\\A", "Keep", "1"));
    ASSERT_TRUE(registry::SaveValue(HKCU, "Software\\A", "Drop", "1"));
    ASSERT_TRUE(registry::SaveValue(HKCU, "Software\\B\\C", "X", "1"));
    const std::string path = (dir / "import.reg").string();
    writeFile(path, "Windows Registry Editor Version 5.00\n\n"
                    "[HKEY_CURRENT_USER\\Software\\A]\n\"drop\"=-\n\n"
                    "[-HKEY_CURRENT_USER\\Software\\B]\n");
    ASSERT_TRUE(registry::importRegFile(path));
    EXPECT_EQ(registry::LoadValue(HKCU, "Software\\A", "Keep", "gone"), "1");
    EXPECT_EQ(registry::LoadValue(HKCU, "Software\\A", "Drop", "gone"), "gone");
    EXPECT_EQ(registry::LoadValue(HKCU, "Software\\B\\C", "X", "gone"), "gone");

    const std::string before = readFile(fileOf(Root::CurrentUser));
    writeFile(path,
              "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\Software\\A]\n\"Keep\"=\"new\"\n"
              "[HKEY_NOWHERE\\X]\n");
    HostScope scope;
    EXPECT_FALSE(registry::importRegFile(path));
    EXPECT_FALSE(registry::importRegFile((dir / "missing.reg").string()));
    ASSERT_EQ(scope.host->reports.size(), 2u);
    EXPECT_EQ(scope.host->reports[0].number, 321);
    EXPECT_EQ(scope.host->reports[0].location, "basRegistry.ImportRegFile");
    EXPECT_EQ(scope.host->reports[1].number, 53);
    EXPECT_EQ(readFile(fileOf(Root::CurrentUser)), before);
}

TEST_F(RegFile, MalformedFilesAreRejectedWithTheirLineAndOldFormatTextsAreSingleByte)
{
    const std::pair<const char*, int> bad[] = {
        {"REGEDIT5\n[HKEY_CURRENT_USER\\A]\n", 1},
        {"Windows Registry Editor Version 5.00\n\"A\"=\"1\"\n", 2},
        {"Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A]\n\"A\"=dword:123456789\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A]\n\"A\"=\"open\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A]\n\"A\"=hex:1,zz\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A\n", 2},
        {"Windows Registry Editor Version 5.00\n\n\nA=1\n", 4},
    };
    for (const auto& [text, line] : bad) {
        registry::RegDocument doc;
        const auto error = registry::parseRegFile(text, doc);
        ASSERT_TRUE(error.has_value()) << text;
        EXPECT_EQ(error->line, line) << text;
    }
    registry::RegDocument doc;
    ASSERT_FALSE(
        registry::parseRegFile("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\A]\r\n\"E\"=hex(2):61,62,00\r\n", doc));
    ASSERT_EQ(doc.sections.size(), 1u);
    EXPECT_EQ(doc.sections[0].entries.at(0).value, Value::text("ab", registry::REG_EXPAND_SZ));
}

} // namespace
} // namespace zebreader81::test
