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

std::vector<uint8_t> bytesOf(std::string_view s) { return {s.begin(), s.end()}; }

const char* const editorExport =
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
    "\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Site]\n"
    "\"Wide\"=\"\xC3\xA9t\xC3\xA9\"\n"
    "\n";

TEST_F(RegFile, EditorExportIsImportedAndReadBack)
{
    const std::string path = (dir / "site.reg").string();
    writeFile(path, editorBytes(editorExport));
    ASSERT_TRUE(registry::importRegFile(path));

    const std::string key = "Software\\Site\\Scanner";
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Folder"), Value::text("C:\\Scans\\\"new\""));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, ""), Value::text("default"));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Path"), Value::text("%SystemRoot%", registry::REG_EXPAND_SZ));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Lines"),
              (Value{registry::REG_MULTI_SZ, bytesOf({"a\0b\0\0", 5})}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Blob"), (Value{registry::REG_BINARY, {1, 2, 0xff}}));
    EXPECT_EQ(valueOf(Root::CurrentUser, key, "Nothing"), (Value{registry::REG_NONE, {}}));
    EXPECT_EQ(valueOf(Root::LocalMachine, "software\\site", "Wide"), Value::text("\xC3\xA9t\xC3\xA9"));

    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(zebReaderRegistryKeyCurrentUser, key));
    EXPECT_EQ(r.ReaderType(), zebReaderTypeNCSOpScan2);
    EXPECT_EQ(r.Parity(), "O");
    EXPECT_EQ(r.TimeOut(), 10);
}

TEST_F(RegFile, ExportIsTheEditorsFormatAndImportsBackUnchanged)
{
    const std::string key = "Software\\Site";
    std::unique_ptr<registry::SettingsKey> k;
    ASSERT_EQ(registry::settingsStore().create(Root::CurrentUser, key + "\\Sub", k), registry::Status::Ok);
    const std::vector<std::pair<std::string, Value>> values = {
        {"Quoted", Value::text("say \"hi\" to C:\\")},
        {"Two lines", Value::text("one\r\ntwo")},
        {"", Value::text("default")},
        {"Count", Value::dword(0xdeadbeef)},
        {"Expand", Value::text("%TEMP%\\x", registry::REG_EXPAND_SZ)},
        {"Multi", Value{registry::REG_MULTI_SZ, bytesOf({"x\0yz\0\0", 6})}},
        {"Long", Value{registry::REG_BINARY, std::vector<uint8_t>(100, 0xab)}},
        {"Q", Value{registry::REG_QWORD, {1, 2, 3, 4, 5, 6, 7, 8}}},
    };
    for (const auto& [name, v] : values)
        ASSERT_EQ(k->set(name, v), registry::Status::Ok);
    ASSERT_TRUE(registry::SaveValue(zebReaderRegistryKeyCurrentUser, "Software\\Other", "Outside", "1"));

    const std::string path = (dir / "export.reg").string();
    ASSERT_TRUE(registry::exportRegFile(path, Root::CurrentUser, "software\\site"));
    const std::string bytes = readFile(path);
    ASSERT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    const std::string text =
        registry::utf16leToUtf8(reinterpret_cast<const uint8_t*>(bytes.data()) + 2, bytes.size() - 2);
    EXPECT_EQ(
        text.rfind("Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\Site]\r\n\r\n"
                   "[HKEY_CURRENT_USER\\Software\\Site\\Sub]\r\n",
                   0),
        0u);
    EXPECT_NE(text.find("\"Quoted\"=\"say \\\"hi\\\" to C:\\\\\"\r\n"), std::string::npos);
    EXPECT_NE(text.find("\"Count\"=dword:deadbeef\r\n"), std::string::npos);
    EXPECT_EQ(text.find("Outside"), std::string::npos);
    for (size_t start = 0, end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        EXPECT_LT(end - start, 80u) << "lines are wrapped as the editor wraps them";

    std::filesystem::remove(fileOf(Root::CurrentUser));
    ASSERT_TRUE(registry::importRegFile(path));
    for (const auto& [name, v] : values)
        EXPECT_EQ(valueOf(Root::CurrentUser, key + "\\Sub", name), v) << name;
}

TEST_F(RegFile, ImportDeletesKeysAndValuesAsTheEditorDoes)
{
    ASSERT_TRUE(registry::SaveValue(zebReaderRegistryKeyCurrentUser, "Software\\A", "Keep", "1"));
    ASSERT_TRUE(registry::SaveValue(zebReaderRegistryKeyCurrentUser, "Software\\A", "Drop", "1"));
    ASSERT_TRUE(registry::SaveValue(zebReaderRegistryKeyCurrentUser, "Software\\B\\C", "X", "1"));
    const std::string path = (dir / "delete.reg").string();
    writeFile(path, "Windows Registry Editor Version 5.00\n\n"
                    "[HKEY_CURRENT_USER\\Software\\A]\n\"drop\"=-\n\n"
                    "[-HKEY_CURRENT_USER\\Software\\B]\n");
    ASSERT_TRUE(registry::importRegFile(path));
    EXPECT_EQ(registry::LoadValue(zebReaderRegistryKeyCurrentUser, "Software\\A", "Keep", "gone"), "1");
    EXPECT_EQ(registry::LoadValue(zebReaderRegistryKeyCurrentUser, "Software\\A", "Drop", "gone"), "gone");
    EXPECT_EQ(registry::LoadValue(zebReaderRegistryKeyCurrentUser, "Software\\B\\C", "X", "gone"), "gone");
}

TEST_F(RegFile, MalformedFilesAreRejectedWithTheirLine)
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
}

TEST_F(RegFile, BadImportIsReportedAndChangesNothing)
{
    ASSERT_TRUE(registry::SaveValue(zebReaderRegistryKeyCurrentUser, "Software\\A", "V", "old"));
    const std::string before = readFile(fileOf(Root::CurrentUser));
    const std::string path = (dir / "bad.reg").string();
    writeFile(path, "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\Software\\A]\n\"V\"=\"new\"\n"
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

TEST_F(RegFile, OldFormatTextsAreSingleByte)
{
    registry::RegDocument doc;
    ASSERT_FALSE(
        registry::parseRegFile("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\A]\r\n\"E\"=hex(2):61,62,00\r\n", doc));
    ASSERT_EQ(doc.sections.size(), 1u);
    EXPECT_EQ(doc.sections[0].entries.at(0).value, Value::text("ab", registry::REG_EXPAND_SZ));
}

} // namespace
} // namespace zebreader81::test
