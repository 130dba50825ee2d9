// POSIX backend of the serial control: an exclusively opened terminal in raw, non-blocking mode.
#include "channel/NetworkPort.h"
#include "channel/PosixLine.h"
#include "channel/SerialBackend.h"

#include "core/basError.h"
#include "registry/PortMap.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace zebreader81 {

namespace {

using namespace std::chrono;

// Longest a write may wait for the line to take more bytes (flow control held off, say).
constexpr milliseconds writeStall{5000};
// Longest a close waits for queued output to leave before discarding it.
constexpr milliseconds closeDrain{2000};

int pollMs(milliseconds timeout)
{
    return timeout.count() < 0 ? -1 : static_cast<int>(std::min<int64_t>(timeout.count(), 1 << 30));
}

// The control's error, with the device and what the OS said about it.
[[noreturn]] void refuse(int32_t number, const std::string& path, const std::string& reason)
{
    throw RuntimeError(number, err::description(number) + ": " + path + ": " + reason);
}

std::string lineText(const LineSettings& s, int handshaking)
{
    std::ostringstream text;
    text << s.baud << ',' << s.parity << ',' << s.dataBits << ',' << s.stopBits << " with handshaking "
         << handshaking;
    return text.str();
}

class PosixSerial final : public SerialBackend {
public:
    PosixSerial(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}
    ~PosixSerial() override
    {
        // Output is dropped only when it would not drain: on a pseudo-terminal an output flush
        // discards what the peer has not read yet.
        tcflush(fd_, drainBriefly() ? TCIFLUSH : TCIOFLUSH);
        // The exclusive flag outlives our descriptor while anyone else holds the terminal.
        ioctl(fd_, TIOCNXCL);
        flock(fd_, LOCK_UN);
        close(fd_);
    }
    PosixSerial(const PosixSerial&) = delete;
    PosixSerial& operator=(const PosixSerial&) = delete;

    void apply(const LineSettings& settings, int handshaking) override
    {
        try {
            posix::applyLine(fd_, settings, handshaking);
        } catch (const RuntimeError& e) {
            refuse(e.number(), path_, "the device does not take " + lineText(settings, handshaking));
        }
    }

    std::size_t readAvailable(std::string& into) override
    {
        std::size_t total = 0;
        char chunk[4096];
        for (;;) {
            const ssize_t n = ::read(fd_, chunk, sizeof chunk);
            if (n > 0) {
                into.append(chunk, static_cast<std::size_t>(n));
                total += static_cast<std::size_t>(n);
                if (static_cast<std::size_t>(n) < sizeof chunk)
                    return total;
                continue;
            }
            if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
                return total;
            if (n < 0 && errno == EINTR)
                continue;
            // End of file on a terminal (VMIN 1, non-blocking) is a hang-up; anything else is EIO & co.
            err::raise(err::PortIo);
        }
    }

    std::size_t pendingCount() override
    {
        int n = 0;
        if (ioctl(fd_, FIONREAD, &n) != 0)
            err::raise(err::PortIo);
        return n > 0 ? static_cast<std::size_t>(n) : 0;
    }

    void write(std::string_view bytes, std::size_t& written) override
    {
        written = 0;
        while (written < bytes.size()) {
            const ssize_t n = ::write(fd_, bytes.data() + written, bytes.size() - written);
            if (n > 0) {
                written += static_cast<std::size_t>(n);
                continue;
            }
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                pollfd pfd{fd_, POLLOUT, 0};
                int rc;
                do {
                    rc = poll(&pfd, 1, pollMs(writeStall));
                } while (rc < 0 && errno == EINTR);
                if (rc <= 0 || (pfd.revents & (POLLHUP | POLLERR | POLLNVAL)))
                    err::raise(err::PortIo);
                continue;
            }
            err::raise(err::PortIo);
        }
    }

    bool waitReadable(milliseconds timeout, WakeSignal& wake) override
    {
        const int wakeFd = static_cast<int>(wake.nativeHandle());
        pollfd pfds[2] = {{fd_, POLLIN, 0}, {wakeFd, POLLIN, 0}};
        int rc;
        do {
            rc = poll(pfds, wakeFd >= 0 ? 2 : 1, pollMs(timeout));
        } while (rc < 0 && errno == EINTR);
        if (rc < 0)
            err::raise(err::PortIo);
        // A hung-up terminal also reports POLLIN, but has nothing left to read.
        if (pfds[0].revents & (POLLHUP | POLLERR | POLLNVAL))
            err::raise(err::PortIo);
        return (pfds[0].revents & POLLIN) != 0;
    }

private:
    // True when the output queue emptied in time.
    bool drainBriefly()
    {
        const auto until = steady_clock::now() + closeDrain;
        int queued = 0;
        while (ioctl(fd_, TIOCOUTQ, &queued) == 0 && queued > 0) {
            if (steady_clock::now() >= until)
                return false;
            std::this_thread::sleep_for(milliseconds(5));
        }
        return true;
    }

    int fd_;
    std::string path_;
};

std::string notATerminal(int fd)
{
    struct stat st {};
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode))
        return "a regular file, not a serial device";
    return "not a serial device";
}

} // namespace

std::unique_ptr<SerialBackend> openSerialDevice(const std::string& path, const LineSettings& settings,
                                                int handshaking)
{
    if (isNetworkPort(path))
        return openNetworkSerial(path, settings, handshaking);
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        const int error = errno;
        refuse(error == EBUSY ? err::PortAlreadyOpen : err::InvalidPortNumber, path, std::strerror(error));
    }
    if (!isatty(fd)) {
        const std::string reason = notATerminal(fd);
        close(fd);
        refuse(err::InvalidPortNumber, path, reason);
    }
    // TIOCEXCL does not stop root, so the advisory lock is what keeps a second reader out.
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        close(fd);
        refuse(err::PortAlreadyOpen, path, "in use by another program");
    }
    if (ioctl(fd, TIOCEXCL) != 0) {
        const int error = errno;
        flock(fd, LOCK_UN);
        close(fd);
        refuse(err::InvalidPortNumber, path, std::strerror(error));
    }
    auto port = std::make_unique<PosixSerial>(fd, path);
    port->apply(settings, handshaking);
    // A freshly opened port holds nothing from before, as a real line that was closed.
    tcflush(fd, TCIFLUSH);
    return port;
}

std::string resolvePortPath(int port)
{
    if (const char* env = std::getenv(("ZEBREADER_COM" + std::to_string(port)).c_str()); env && *env)
        return env;
    if (auto stored = storedPortPath(port); stored && !stored->empty())
        return *stored;
    return "/dev/ttyS" + std::to_string(port - 1);
}

} // namespace zebreader81
