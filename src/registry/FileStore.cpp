#include "registry/FileStore.h"

#include "core/basError.h"

#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace zebreader81::registry {

namespace {

constexpr const char* location = "ZEBReader81 - basRegistry.ReadRootFile";
constexpr int32_t invalidFileFormat = 321;

std::string envText(const char* name)
{
    const char* v = std::getenv(name);
    return v ? std::string(v) : std::string();
}

std::string homeDirectory()
{
    std::string home = envText("HOME");
    if (home.empty())
        if (const passwd* pw = getpwuid(getuid()); pw && pw->pw_dir)
            home = pw->pw_dir;
    return home;
}

Status fromErrno(int e)
{
    switch (e) {
    case ENOENT: return Status::NotFound;
    case EACCES:
    case EPERM:
    case EROFS: return Status::AccessDenied;
    default: return Status::IoError;
    }
}

/// A file descriptor, closed once.
class Fd {
public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    ~Fd()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    int release() { return std::exchange(fd_, -1); }

private:
    int fd_;
};

// Identity of a file's contents as far as reporting goes: a rewrite makes a new one.
using FileIdentity = std::tuple<std::string, dev_t, ino_t, off_t, long, long>;

thread_local int reportScopes = 0;
thread_local std::set<FileIdentity> reportedInScope;

void reportBadFile(const std::string& path, const struct stat& st, const RegParseError& error)
{
    if (reportScopes > 0) {
        const FileIdentity id{path, st.st_dev, st.st_ino, st.st_size, st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
        if (!reportedInScope.insert(id).second)
            return;
    }
    basError::ReportError(0, invalidFileFormat, basError::KindRuntime,
                          "Invalid file format: " + path + ", line " + std::to_string(error.line) + ": " +
                              error.message,
                          location);
}

Status readWhole(const std::string& path, std::string& bytes, struct stat& st)
{
    Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd)
        return fromErrno(errno);
    if (fstat(fd.get(), &st) != 0)
        return Status::IoError;
    bytes.clear();
    char buf[65536];
    while (true) {
        const ssize_t n = ::read(fd.get(), buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return Status::IoError;
        if (n == 0)
            return Status::Ok;
        bytes.append(buf, static_cast<size_t>(n));
    }
}

/// The keys of a root from its file; a missing file is an empty root.
Status loadRoot(Root root, Hive& hive, mode_t* mode = nullptr)
{
    const std::string path = storeFile(root);
    std::string bytes;
    struct stat st {};
    const Status s = readWhole(path, bytes, st);
    if (s == Status::NotFound)
        return Status::Ok;
    if (s != Status::Ok)
        return s;
    if (mode)
        *mode = st.st_mode & 07777;
    RegDocument doc;
    auto error = parseRegFile(bytes, doc);
    if (!error)
        error = hive.apply(doc, root);
    if (error) {
        reportBadFile(path, st, *error);
        return Status::BadFile;
    }
    return Status::Ok;
}

bool makeDirectories(const std::string& dir, mode_t mode)
{
    for (size_t pos = 1; pos <= dir.size(); ++pos) {
        if (pos != dir.size() && dir[pos] != '/')
            continue;
        const std::string part = dir.substr(0, pos);
        if (::mkdir(part.c_str(), mode) != 0 && errno != EEXIST)
            return false;
    }
    struct stat st {};
    if (::stat(dir.c_str(), &st) != 0)
        return false;
    if (!S_ISDIR(st.st_mode)) {
        errno = ENOTDIR;
        return false;
    }
    return true;
}

bool writeAll(int fd, const std::string& bytes)
{
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

/// Replaces `path` by `bytes` in one rename; the temporary file goes when anything fails.
Status replaceFile(const std::string& path, const std::string& bytes, mode_t mode)
{
    std::string temp = path + ".XXXXXX";
    Fd fd(::mkstemp(temp.data()));
    if (!fd)
        return fromErrno(errno);
    struct Unlink {
        const std::string* path;
        ~Unlink()
        {
            if (path)
                ::unlink(path->c_str());
        }
    } cleanup{&temp};
    if (::fchmod(fd.get(), mode) != 0 || !writeAll(fd.get(), bytes) || ::fsync(fd.get()) != 0)
        return fromErrno(errno);
    if (::close(fd.release()) != 0)
        return Status::IoError;
    if (::rename(temp.c_str(), path.c_str()) != 0)
        return fromErrno(errno);
    cleanup.path = nullptr;
    return Status::Ok;
}

/// Removes temporary files that a writer killed before its rename left behind; only called
/// under the writers' lock, when no live writer can have one.
void removeStaleTemporaries(const std::string& dir, const std::string& fileName)
{
    DIR* d = ::opendir(dir.c_str());
    if (!d)
        return;
    const std::string prefix = fileName + ".";
    while (const dirent* e = ::readdir(d)) {
        const std::string_view name(e->d_name);
        if (name.size() == prefix.size() + 6 && name.starts_with(prefix))
            ::unlinkat(::dirfd(d), e->d_name, 0);
    }
    ::closedir(d);
}

/// Whether this process may write the files of a folder, as the registry checks KEY_WRITE
/// when a key is opened, even for a write that would change nothing.
bool writable(const std::string& dir) { return ::faccessat(AT_FDCWD, dir.c_str(), W_OK, AT_EACCESS) == 0; }

/// The writers' lock of a root: held from construction to destruction.
class RootLock {
public:
    explicit RootLock(const std::string& path)
    {
        fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd_ < 0) // a lock file of another user still locks when opened for reading
            fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0) {
            error_ = errno;
            return;
        }
        while (::flock(fd_, LOCK_EX) != 0) {
            if (errno != EINTR) {
                error_ = errno;
                ::close(fd_);
                fd_ = -1;
                return;
            }
        }
    }
    ~RootLock()
    {
        if (fd_ >= 0) {
            ::flock(fd_, LOCK_UN);
            ::close(fd_);
        }
    }
    RootLock(const RootLock&) = delete;
    RootLock& operator=(const RootLock&) = delete;
    bool held() const { return fd_ >= 0; }
    int error() const { return error_; }

private:
    int fd_ = -1;
    int error_ = 0;
};

class FileKey : public SettingsKey {
public:
    FileKey(FileStore& store, Root root, std::string path, Access access, Hive::Key snapshot)
        : store_(store), root_(root), path_(std::move(path)), access_(access), snapshot_(std::move(snapshot))
    {
    }

    Status query(std::string_view name, Value& out) override
    {
        const Value* v = snapshot_.find(name);
        if (!v)
            return Status::NotFound;
        out = *v;
        return Status::Ok;
    }

    Status set(std::string_view name, const Value& value) override
    {
        if (access_ != Access::Write)
            return Status::AccessDenied;
        Hive::Key updated;
        const Status s = store_.update(root_, [&](Hive& hive) {
            // A key deleted by another process since it was opened is made again.
            Hive::Key& key = hive.create(path_);
            const bool changed = key.set(name, value);
            updated = key;
            return changed;
        });
        if (s == Status::Ok)
            snapshot_ = std::move(updated);
        return s;
    }

    Status remove(std::string_view name) override
    {
        if (access_ != Access::Write)
            return Status::AccessDenied;
        bool found = false;
        Hive::Key updated;
        const Status s = store_.update(root_, [&](Hive& hive) {
            Hive::Key* key = hive.find(path_);
            found = key && key->erase(name);
            if (key)
                updated = *key;
            return found;
        });
        if (s != Status::Ok)
            return s;
        snapshot_ = std::move(updated);
        return found ? Status::Ok : Status::NotFound;
    }

private:
    FileStore& store_;
    Root root_;
    std::string path_;
    Access access_;
    Hive::Key snapshot_;
};

} // namespace

std::string storeDirectory(Root root)
{
    if (const std::string dir = envText("ZEBREADER_REGISTRY"); !dir.empty())
        return dir;
    if (root == Root::CurrentUser) {
        std::string base = envText("XDG_CONFIG_HOME");
        if (base.empty() || base[0] != '/')
            base = homeDirectory() + "/.config";
        return base + "/zebreader81";
    }
    return "/etc/zebreader81";
}

std::string storeFile(Root root) { return storeDirectory(root) + "/" + std::string(rootName(root)) + ".reg"; }

Status FileStore::open(Root root, std::string_view subKey, Access access, std::unique_ptr<SettingsKey>& key)
{
    Hive hive;
    if (const Status s = loadRoot(root, hive); s != Status::Ok)
        return s;
    const Hive::Key* found = hive.find(subKey);
    if (!found)
        return Status::NotFound;
    if (access == Access::Write && !writable(storeDirectory(root)))
        return Status::AccessDenied;
    key = std::make_unique<FileKey>(*this, root, found->path, access, *found);
    return Status::Ok;
}

Status FileStore::create(Root root, std::string_view subKey, std::unique_ptr<SettingsKey>& key)
{
    // An existing key is opened without taking the writers' lock.
    if (const Status s = open(root, subKey, Access::Write, key); s != Status::NotFound)
        return s;
    Hive::Key snapshot;
    const Status s = update(root, [&](Hive& hive) {
        bool created = false;
        snapshot = hive.create(subKey, &created);
        return created;
    });
    if (s != Status::Ok)
        return s;
    key = std::make_unique<FileKey>(*this, root, snapshot.path, Access::Write, snapshot);
    return Status::Ok;
}

Status FileStore::read(Root root, Hive& out)
{
    Hive hive;
    const Status s = loadRoot(root, hive);
    if (s == Status::Ok)
        out = std::move(hive);
    return s;
}

Status FileStore::update(Root root, const std::function<bool(Hive&)>& change)
{
    const std::string dir = storeDirectory(root);
    const mode_t dirMode = root == Root::CurrentUser ? 0700 : 0755;
    if (!makeDirectories(dir, dirMode))
        return errno == ENOTDIR ? Status::IoError : fromErrno(errno);
    if (!writable(dir))
        return Status::AccessDenied;
    const std::string path = storeFile(root);
    RootLock lock(dir + "/." + std::string(rootName(root)) + ".reg.lock");
    if (!lock.held())
        return fromErrno(lock.error());
    removeStaleTemporaries(dir, std::string(rootName(root)) + ".reg");
    Hive hive;
    mode_t mode = root == Root::CurrentUser ? 0600 : 0644;
    if (const Status s = loadRoot(root, hive, &mode); s != Status::Ok)
        return s;
    if (!change(hive))
        return Status::Ok;
    return replaceFile(path, formatRegFile(hive.toDocument(root), RegEncoding::Utf8), mode);
}

SettingsStore& settingsStore()
{
    static FileStore store;
    return store;
}

BadFileReportScope::BadFileReportScope() { ++reportScopes; }

BadFileReportScope::~BadFileReportScope()
{
    if (--reportScopes == 0)
        reportedInScope.clear();
}

} // namespace zebreader81::registry
