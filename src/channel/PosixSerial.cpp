// POSIX termios backend of the serial control.
#include "channel/SerialBackend.h"

#include "engine/basError.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace zebreader81 {

namespace {

speed_t standardSpeed(int32_t baud)
{
    switch (baud) {
    case 110: return B110;
    case 300: return B300;
    case 600: return B600;
    case 1200: return B1200;
    case 2400: return B2400;
    case 4800: return B4800;
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    case 230400: return B230400;
    case 460800: return B460800;
    case 921600: return B921600;
    default: return 0;
    }
}

class PosixSerial final : public SerialBackend {
public:
    explicit PosixSerial(int fd) : fd_(fd) {}
    ~PosixSerial() override
    {
        flock(fd_, LOCK_UN);
        close(fd_);
    }

    void apply(const LineSettings& s, int handshaking) override
    {
        termios tio{};
        if (tcgetattr(fd_, &tio) != 0)
            err::raise(err::CommStateNotSet);
        cfmakeraw(&tio);
        tio.c_cflag |= CLOCAL | CREAD;
        tio.c_cflag &= ~(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS | CMSPAR);
        switch (s.dataBits) {
        case 5: tio.c_cflag |= CS5; break;
        case 6: tio.c_cflag |= CS6; break;
        case 7: tio.c_cflag |= CS7; break;
        case 8: tio.c_cflag |= CS8; break;
        default: err::raise(err::CommStateNotSet);
        }
        switch (s.parity) {
        case 'E': tio.c_cflag |= PARENB; break;
        case 'O': tio.c_cflag |= PARENB | PARODD; break;
        case 'M': tio.c_cflag |= PARENB | PARODD | CMSPAR; break;
        case 'S': tio.c_cflag |= PARENB | CMSPAR; break;
        default: break;
        }
        if (s.stopBits > 1.0f)
            tio.c_cflag |= CSTOPB; // 1.5 stop bits: termios sets 1.5 for 5 data bits with CSTOPB
        tio.c_iflag &= ~(IXON | IXOFF | IXANY);
        if (handshaking == 1 || handshaking == 3)
            tio.c_iflag |= IXON | IXOFF;
        if (handshaking == 2 || handshaking == 3)
            tio.c_cflag |= CRTSCTS;
        tio.c_cc[VMIN] = 0;
        tio.c_cc[VTIME] = 0;
        const speed_t speed = standardSpeed(s.baud);
        if (speed == 0)
            err::raise(err::CommStateNotSet);
        cfsetispeed(&tio, speed);
        cfsetospeed(&tio, speed);
        if (tcsetattr(fd_, TCSANOW, &tio) != 0)
            err::raise(err::CommStateNotSet);
    }

    std::size_t readAvailable(std::string& into) override
    {
        std::size_t total = 0;
        char chunk[4096];
        for (;;) {
            const ssize_t n = read(fd_, chunk, sizeof chunk);
            if (n > 0) {
                into.append(chunk, static_cast<std::size_t>(n));
                total += static_cast<std::size_t>(n);
                if (static_cast<std::size_t>(n) < sizeof chunk)
                    return total;
                continue;
            }
            if (n == 0 || errno == EAGAIN || errno == EWOULDBLOCK)
                return total;
            if (errno == EINTR)
                continue;
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

    void write(std::string_view bytes) override
    {
        while (!bytes.empty()) {
            const ssize_t n = ::write(fd_, bytes.data(), bytes.size());
            if (n > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(n));
                continue;
            }
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                pollfd pfd{fd_, POLLOUT, 0};
                if (poll(&pfd, 1, 5000) <= 0 || (pfd.revents & (POLLHUP | POLLERR)))
                    err::raise(err::PortIo);
                continue;
            }
            err::raise(err::PortIo);
        }
    }

    void waitReadable(std::chrono::milliseconds timeout, int wakeFd) override
    {
        pollfd pfds[2] = {{fd_, POLLIN, 0}, {wakeFd, POLLIN, 0}};
        const int ms = timeout.count() < 0 ? -1 : static_cast<int>(std::min<int64_t>(timeout.count(), 1 << 30));
        int rc;
        do {
            rc = poll(pfds, wakeFd >= 0 ? 2 : 1, ms);
        } while (rc < 0 && errno == EINTR);
        if (rc > 0 && (pfds[0].revents & (POLLHUP | POLLERR | POLLNVAL)) && !(pfds[0].revents & POLLIN))
            err::raise(err::PortIo);
    }

private:
    int fd_;
};

} // namespace

std::unique_ptr<SerialBackend> openPosixSerial(const std::string& path, const LineSettings& settings,
                                               int handshaking)
{
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        if (errno == EBUSY)
            err::raise(err::PortAlreadyOpen);
        err::raise(err::InvalidPortNumber);
    }
    if (!isatty(fd)) {
        close(fd);
        err::raise(err::InvalidPortNumber);
    }
    // TIOCEXCL does not stop root, so the advisory lock is what keeps a second reader out.
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        close(fd);
        err::raise(err::PortAlreadyOpen);
    }
    ioctl(fd, TIOCEXCL);
    auto port = std::make_unique<PosixSerial>(fd);
    port->apply(settings, handshaking);
    return port;
}

std::string resolvePortPath(int port)
{
    if (const char* env = std::getenv(("ZEBREADER_COM" + std::to_string(port)).c_str()); env && *env)
        return env;
    return "/dev/ttyS" + std::to_string(port - 1);
}

} // namespace zebreader81
