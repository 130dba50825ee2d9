#include "channel/TcpLink.h"

#include "core/basError.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zebreader81::net {

namespace {

using namespace std::chrono;
using Clock = steady_clock;

// Longest a connection attempt may take over all the host's addresses.
constexpr milliseconds connectLimit{5000};
// Longest a write may wait for the server to take more bytes.
constexpr milliseconds writeStall{5000};
// Longest a close waits for the server to end its side, so what was written is not cut off.
constexpr milliseconds closeDrain{1000};
// A server box that vanishes without a word (power cut, cable) shows within about 20 s
// even while a reader waits for a hand-fed sheet.
constexpr int keepIdleSeconds = 10, keepIntervalSeconds = 3, keepProbes = 3;

int pollMs(milliseconds timeout)
{
    return timeout.count() < 0 ? -1 : static_cast<int>(std::min<int64_t>(timeout.count(), 1 << 30));
}

int pollRetrying(pollfd* fds, nfds_t count, milliseconds timeout)
{
    const auto until = Clock::now() + timeout;
    for (;;) {
        const int rc = poll(fds, count, pollMs(timeout));
        if (rc >= 0 || errno != EINTR)
            return rc;
        if (timeout.count() >= 0)
            timeout = std::max(milliseconds(0), ceil<milliseconds>(until - Clock::now()));
    }
}

std::string osReason(int error) { return std::strerror(error); }

void setOption(int fd, int level, int name, int value)
{
    [[maybe_unused]] int rc = setsockopt(fd, level, name, &value, sizeof value);
}

// One attempt on one address; the socket, or -1 with `error` set.
int connectTo(const addrinfo& ai, Clock::time_point until, int& error)
{
    const int fd = socket(ai.ai_family, ai.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, ai.ai_protocol);
    if (fd < 0) {
        error = errno;
        return -1;
    }
    if (connect(fd, ai.ai_addr, ai.ai_addrlen) != 0) {
        if (errno != EINPROGRESS) {
            error = errno;
            close(fd);
            return -1;
        }
        pollfd pfd{fd, POLLOUT, 0};
        const int rc =
            pollRetrying(&pfd, 1, std::max(milliseconds(0), ceil<milliseconds>(until - Clock::now())));
        socklen_t len = sizeof error;
        if (rc == 0)
            error = ETIMEDOUT;
        else if (rc < 0)
            error = errno;
        else if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &len) != 0)
            error = errno;
        if (rc <= 0 || error != 0) {
            close(fd);
            return -1;
        }
    }
    // Commands are a few bytes each and every one is waited on.
    setOption(fd, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(fd, IPPROTO_TCP, TCP_KEEPIDLE, keepIdleSeconds);
    setOption(fd, IPPROTO_TCP, TCP_KEEPINTVL, keepIntervalSeconds);
    setOption(fd, IPPROTO_TCP, TCP_KEEPCNT, keepProbes);
    return fd;
}

} // namespace

void raise(int32_t number, const std::string& url, const std::string& reason)
{
    throw RuntimeError(number, err::description(number) + " (" + url + ": " + reason + ")");
}

TcpLink::TcpLink(const PortUrl& address, std::string url) : url_(std::move(url))
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int rc = getaddrinfo(address.host.c_str(), std::to_string(address.port).c_str(), &hints, &found);
    if (rc != 0)
        fail(err::InvalidPortNumber, rc == EAI_SYSTEM ? osReason(errno) : gai_strerror(rc));
    const auto until = Clock::now() + connectLimit;
    int error = EHOSTUNREACH;
    for (const addrinfo* ai = found; ai && fd_ < 0; ai = ai->ai_next)
        fd_ = connectTo(*ai, until, error);
    freeaddrinfo(found);
    if (fd_ < 0)
        fail(err::InvalidPortNumber, osReason(error));
}

TcpLink::~TcpLink()
{
    // Closing with unread input would reset the connection and could cut off what we wrote
    // last, so end our side and read until the server ends its own.
    if (shutdown(fd_, SHUT_WR) == 0) {
        const auto until = Clock::now() + closeDrain;
        char sink[4096];
        for (;;) {
            pollfd pfd{fd_, POLLIN, 0};
            const auto left = ceil<milliseconds>(until - Clock::now());
            if (left.count() <= 0 || pollRetrying(&pfd, 1, left) <= 0)
                break;
            const ssize_t n = recv(fd_, sink, sizeof sink, 0);
            if (n <= 0 && !(n < 0 && (errno == EINTR || errno == EAGAIN)))
                break;
        }
    }
    close(fd_);
}

std::size_t TcpLink::readAvailable(std::string& into)
{
    if (closedAfterData_)
        fail(err::PortIo, "the server closed the connection");
    std::size_t total = 0;
    char chunk[4096];
    for (;;) {
        const ssize_t n = recv(fd_, chunk, sizeof chunk, 0);
        if (n > 0) {
            into.append(chunk, static_cast<std::size_t>(n));
            total += static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return total;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            fail(err::PortIo, osReason(errno));
        // The bytes before the close still count; the close is reported on the next read.
        if (total > 0) {
            closedAfterData_ = true;
            return total;
        }
        fail(err::PortIo, "the server closed the connection");
    }
}

std::size_t TcpLink::pendingCount()
{
    int n = 0;
    if (ioctl(fd_, FIONREAD, &n) != 0)
        fail(err::PortIo, osReason(errno));
    return n > 0 ? static_cast<std::size_t>(n) : 0;
}

void TcpLink::write(std::string_view bytes, std::size_t& written)
{
    written = 0;
    while (written < bytes.size()) {
        const ssize_t n = send(fd_, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
        if (n > 0) {
            written += static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd pfd{fd_, POLLOUT, 0};
            const int rc = pollRetrying(&pfd, 1, writeStall);
            if (rc == 0)
                fail(err::PortIo,
                     "the server took no data for " + std::to_string(writeStall.count() / 1000) + " s");
            if (rc < 0)
                fail(err::PortIo, osReason(errno));
            continue;
        }
        fail(err::PortIo, osReason(n < 0 ? errno : EPIPE));
    }
}

bool TcpLink::wait(std::chrono::milliseconds timeout, int wakeFd)
{
    pollfd pfds[2] = {{fd_, POLLIN, 0}, {wakeFd, POLLIN, 0}};
    if (pollRetrying(pfds, wakeFd >= 0 ? 2 : 1, timeout) < 0)
        fail(err::PortIo, osReason(errno));
    // A close or a failure also ends the wait: the next read reports it.
    return pfds[0].revents != 0;
}

} // namespace zebreader81::net
