#include "channel/PosixLine.h"

#include "core/basError.h"

#include <asm/termbits.h>
#include <cmath>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace zebreader81::posix {

namespace {

// The standard rates keep their own codes so that drivers without arbitrary-rate support
// still take them.
tcflag_t standardCode(int32_t baud)
{
    switch (baud) {
    case 110: return B110;
    case 134: return B134;
    case 150: return B150;
    case 200: return B200;
    case 300: return B300;
    case 600: return B600;
    case 1200: return B1200;
    case 1800: return B1800;
    case 2400: return B2400;
    case 4800: return B4800;
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    case 230400: return B230400;
    case 460800: return B460800;
    case 500000: return B500000;
    case 576000: return B576000;
    case 921600: return B921600;
    case 1000000: return B1000000;
    default: return 0;
    }
}

tcflag_t sizeFlag(int dataBits)
{
    switch (dataBits) {
    case 5: return CS5;
    case 6: return CS6;
    case 7: return CS7;
    case 8: return CS8;
    default: err::raise(err::CommStateNotSet); // no terminal carries 4 data bits
    }
}

tcflag_t stopFlag(const LineSettings& s)
{
    // A UART gives 1.5 stop bits only as "two" with 5 data bits, and never two with 5; anything
    // else would be a different frame than the one asked for.
    if (s.stopBits == 1.0f)
        return 0;
    if (s.stopBits == 1.5f && s.dataBits == 5)
        return CSTOPB;
    if (s.stopBits == 2.0f && s.dataBits != 5)
        return CSTOPB;
    err::raise(err::CommStateNotSet);
}

tcflag_t parityFlags(char parity)
{
    switch (parity) {
    case 'N': return 0;
    case 'E': return PARENB;
    case 'O': return PARENB | PARODD;
    case 'M': return PARENB | PARODD | CMSPAR;
    case 'S': return PARENB | CMSPAR;
    default: err::raise(err::CommStateNotSet);
    }
}

// Pseudo-terminals carry bytes, not frames: the kernel always reports them as 8 data bits
// without parity, so only the rate and the stop bits can be checked there.
bool isPseudoTerminal(int fd)
{
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISCHR(st.st_mode))
        return false;
    const unsigned m = major(st.st_rdev);
    return m >= 136 && m <= 143;
}

bool rateClose(speed_t got, int32_t wanted)
{
    return std::fabs(static_cast<double>(got) - wanted) <= 0.03 * wanted;
}

} // namespace

void applyLine(int fd, const LineSettings& s, int handshaking)
{
    termios2 previous{};
    if (ioctl(fd, TCGETS2, &previous) != 0)
        err::raise(err::CommStateNotSet);
    if (s.baud <= 0)
        err::raise(err::CommStateNotSet);

    constexpr tcflag_t frameMask = CSIZE | PARENB | PARODD | CMSPAR | CSTOPB;
    const tcflag_t frame = sizeFlag(s.dataBits) | parityFlags(s.parity) | stopFlag(s);

    termios2 t = previous;
    t.c_iflag &= ~static_cast<tcflag_t>(IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON |
                                        IXOFF | IXANY | INPCK);
    t.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    t.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
    t.c_cflag &= ~static_cast<tcflag_t>(frameMask | CRTSCTS | CBAUD | (CBAUD << IBSHIFT));
    t.c_cflag |= CLOCAL | CREAD | frame;
    if (handshaking == 1 || handshaking == 3)
        t.c_iflag |= IXON | IXOFF;
    if (handshaking == 2 || handshaking == 3)
        t.c_cflag |= CRTSCTS;
    // O_NONBLOCK makes an empty read fail with EAGAIN, so a read of 0 means the line hung up.
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 0;
    if (const tcflag_t code = standardCode(s.baud)) {
        t.c_cflag |= code;
    } else {
        t.c_cflag |= BOTHER;
    }
    t.c_ispeed = t.c_ospeed = static_cast<speed_t>(s.baud);

    if (ioctl(fd, TCSETS2, &t) != 0)
        err::raise(err::CommStateNotSet);

    termios2 got{};
    bool accepted = ioctl(fd, TCGETS2, &got) == 0 && rateClose(got.c_ospeed, s.baud);
    if (accepted) {
        const tcflag_t checked = isPseudoTerminal(fd) ? static_cast<tcflag_t>(CSTOPB | CMSPAR) : frameMask;
        accepted =
            (got.c_cflag & checked) == (frame & checked) && (got.c_cflag & CRTSCTS) == (t.c_cflag & CRTSCTS);
    }
    if (!accepted) {
        ioctl(fd, TCSETS2, &previous);
        err::raise(err::CommStateNotSet);
    }
}

} // namespace zebreader81::posix
