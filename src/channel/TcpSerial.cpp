// Raw TCP backend: a network serial server that passes the bytes as they are and keeps its
// own line settings.
#include "channel/NetBackends.h"
#include "channel/TcpLink.h"

namespace zebreader81::net {

namespace {

class TcpSerial final : public SerialBackend {
public:
    TcpSerial(const PortUrl& address, const std::string& url) : link_(address, url) {}

    // The server's line is set up on the server; the Settings text was checked already.
    void apply(const LineSettings&, int) override {}

    std::size_t readAvailable(std::string& into) override { return link_.readAvailable(into); }
    std::size_t pendingCount() override { return link_.pendingCount(); }
    void write(std::string_view bytes, std::size_t& written) override { link_.write(bytes, written); }
    bool waitReadable(std::chrono::milliseconds timeout, WakeSignal& wake) override
    {
        return link_.wait(timeout, static_cast<int>(wake.nativeHandle()));
    }

private:
    TcpLink link_;
};

} // namespace

std::unique_ptr<SerialBackend> openTcpSerial(const PortUrl& address, const std::string& url)
{
    return std::make_unique<TcpSerial>(address, url);
}

} // namespace zebreader81::net
