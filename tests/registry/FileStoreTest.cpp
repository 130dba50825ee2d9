// The file backend: where roots live, damaged and unwritable files, and several processes.
#include "registry/FileStore.h"
#include "StoreFixture.h"
#include "registry/PortMap.h"
#include "registry/RegFormat.h"
#include "registry/SettingsValues.h"
#include "support/TestHost.h"

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zebreader81::test {
namespace {

using registry::Root;
using FileStore = StoreFixture;
constexpr auto HKCU = zebReaderRegistryKeyCurrentUser;
constexpr auto HKLM = zebReaderRegistryKeyLocalMachine;

TEST_F(FileStore, PathsFollowTheEnvironment)
{
    const auto keep = [](const char* n) {
        const char* v = std::getenv(n);
        return std::pair{n, v ? std::optional<std::string>(v) : std::nullopt};
    };
    const std::pair<const char*, std::optional<std::string>> kept[] = {keep("HOME"), keep("XDG_CONFIG_HOME")};
    unsetenv("ZEBREADER_REGISTRY"); // the fixture puts it back
    setenv("HOME", "/home/site", 1);
    setenv("XDG_CONFIG_HOME", "/cfg", 1);
    EXPECT_EQ(registry::storeFile(Root::CurrentUser), "/cfg/zebreader81/HKEY_CURRENT_USER.reg");
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(registry::storeDirectory(Root::CurrentUser), "/home/site/.config/zebreader81");
    EXPECT_EQ(registry::storeFile(Root::LocalMachine), "/etc/zebreader81/HKEY_LOCAL_MACHINE.reg");
    EXPECT_EQ(registry::storeDirectory(Root::Users), "/etc/zebreader81");
    for (const auto& [name, value] : kept)
        value ? setenv(name, value->c_str(), 1) : unsetenv(name);
    setenv("ZEBREADER_REGISTRY", "/tmp/one", 1);
    for (Root r : registry::allRoots)
        EXPECT_EQ(registry::storeDirectory(r), "/tmp/one");
}

TEST_F(FileStore, DamagedFileIsReportedOnceAndLeftUntouched)
{
    const std::string path = fileOf(Root::CurrentUser);
    const std::string header = "Windows Registry Editor Version 5.00\n";
    const std::pair<std::string, int> damaged[] = {
        {header + "[HKEY_CURRENT_USER\\Software\\Site]\n\"TimeOut\"=\"3\"\nthis is not a value line\n", 4},
        {header + "[HKEY_LOCAL_MACHINE\\Software\\Site]\n", 2}, // a key of another root
    };
    for (const auto& [bytes, line] : damaged) {
        writeFile(path, bytes);
        HostScope scope;
        clsZEBReader r;
        r.TimeOut(7);
        EXPECT_TRUE(r.LoadSettings(HKCU, "Software\\Site")); // nothing readable: every default
        EXPECT_EQ(r.TimeOut(), 10);
        const Report& rep = scope.host->only();
        EXPECT_EQ(rep.number, 321);
        EXPECT_EQ(rep.location, "basRegistry.ReadRootFile");
        EXPECT_NE(rep.description.find(path + ", line " + std::to_string(line)), std::string::npos)
            << rep.description;

        EXPECT_FALSE(registry::SaveValue(HKCU, "Software\\Site", "TimeOut", "5"));
        EXPECT_TRUE(r.SaveSettings(HKCU, "Software\\Site"));
        EXPECT_EQ(scope.host->reports.size(), 3u); // the lone SaveValue, then SaveSettings once
        EXPECT_EQ(readFile(path), bytes);
        EXPECT_FALSE(storePortPath(1, "/dev/x"));
    }
}

TEST_F(FileStore, TwoProcessesSavingUnderOneKeyLoseNothing)
{
    constexpr int saves = 200;
    const auto name = [](int c, int i) { return "P" + std::to_string(c) + "_" + std::to_string(i); };
    pid_t children[2];
    for (int c = 0; c < 2; ++c)
        if ((children[c] = fork()) == 0) {
            for (int i = 0; i < saves; ++i)
                if (!registry::SaveValue(HKCU, "Software\\Race", name(c, i), std::to_string(i * 7 + c)))
                    _exit(1);
            _exit(0);
        }
    for (pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < saves; ++i)
            ASSERT_EQ(registry::LoadValue(HKCU, "software\\race", name(c, i), "lost"),
                      std::to_string(i * 7 + c));
}

TEST_F(FileStore, ProcessKilledWhileSavingLeavesAWholeFile)
{
    const std::string path = fileOf(Root::CurrentUser);
    const std::string big(20000, 'a');
    ASSERT_TRUE(registry::SaveValue(HKCU, "Software\\Site", "Blob", big));
    for (int round = 0; round < 5; ++round) {
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t pid = fork();
        if (pid == 0) {
            close(ready[0]);
            for (int i = 0;; ++i) {
                registry::SaveValue(HKCU, "Software\\Site", "Blob",
                                    std::string(big.size(), static_cast<char>('a' + i % 26)));
                if (i == 0)
                    (void)!write(ready[1], "x", 1);
            }
        }
        close(ready[1]);
        char x;
        ASSERT_EQ(read(ready[0], &x, 1), 1);
        close(ready[0]);
        usleep(static_cast<useconds_t>(1000 + round * 1700));
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);

        registry::RegDocument doc;
        ASSERT_FALSE(registry::parseRegFile(readFile(path), doc)) << "round " << round;
        ASSERT_FALSE(doc.sections.empty());
        const auto& blob = doc.sections.back().entries.at(0).value.data;
        ASSERT_EQ(blob.size(), big.size());
        EXPECT_EQ(blob, std::vector<uint8_t>(big.size(), blob[0]));
    }
    // The next writer is not held up by the killed one's lock, and clears what it left.
    EXPECT_TRUE(registry::SaveValue(HKCU, "Software\\Site", "After", "1"));
    for (const auto& entry : std::filesystem::directory_iterator(dir))
        EXPECT_FALSE(entry.path().filename().string().starts_with("HKEY_CURRENT_USER.reg.")) << entry.path();
}

TEST_F(FileStore, PortMapPrefersTheUsersEntryOverTheMachinesAndForgets)
{
    EXPECT_FALSE(storedPortPath(3).has_value());
    ASSERT_TRUE(registry::SaveValue(HKLM, "Software\\ZEBReader81\\Ports", "COM3", "/dev/ttyUSB0"));
    EXPECT_EQ(storedPortPath(3), "/dev/ttyUSB0");
    ASSERT_TRUE(storePortPath(3, "/dev/pts/7"));
    EXPECT_EQ(storedPortPath(3), "/dev/pts/7");
    EXPECT_EQ(registry::LoadValue(HKCU, "Software\\ZEBReader81\\Ports", "COM3", ""), "/dev/pts/7");
    EXPECT_FALSE(storedPortPath(4).has_value());
    ASSERT_TRUE(storePortPath(3, ""));
    EXPECT_EQ(storedPortPath(3), "/dev/ttyUSB0");
    EXPECT_TRUE(storePortPath(5, ""));
}

} // namespace
} // namespace zebreader81::test
