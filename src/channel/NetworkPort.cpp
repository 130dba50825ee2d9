#include "channel/NetworkPort.h"

#include "channel/NetBackends.h"
#include "channel/TcpLink.h"
#include "core/basError.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace zebreader81 {

namespace {

constexpr std::string_view rawScheme = "socket://";
constexpr std::string_view rfc2217Scheme = "rfc2217://";

bool startsWithNoCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) ==
                      std::tolower(static_cast<unsigned char>(b));
           });
}

} // namespace

bool isNetworkPort(std::string_view path)
{
    return startsWithNoCase(path, rawScheme) || startsWithNoCase(path, rfc2217Scheme);
}

std::optional<PortUrl> parsePortUrl(std::string_view path)
{
    PortUrl url;
    if (startsWithNoCase(path, rawScheme)) {
        path.remove_prefix(rawScheme.size());
    } else if (startsWithNoCase(path, rfc2217Scheme)) {
        url.kind = PortUrl::Kind::Rfc2217;
        path.remove_prefix(rfc2217Scheme.size());
    } else {
        return std::nullopt;
    }
    std::string_view host;
    if (path.starts_with('[')) {
        const auto close = path.find(']');
        if (close == std::string_view::npos)
            return std::nullopt;
        host = path.substr(1, close - 1);
        path.remove_prefix(close + 1);
        if (!path.starts_with(':'))
            return std::nullopt;
    } else {
        const auto colon = path.rfind(':');
        if (colon == std::string_view::npos)
            return std::nullopt;
        host = path.substr(0, colon);
        path.remove_prefix(colon);
        if (host.find_first_of(":/[]") != std::string_view::npos)
            return std::nullopt;
    }
    path.remove_prefix(1);
    if (host.empty() || host.find_first_of(" \t/") != std::string_view::npos || path.empty() ||
        path.size() > 5 ||
        !std::all_of(path.begin(), path.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    unsigned port = 0;
    std::from_chars(path.data(), path.data() + path.size(), port);
    if (port < 1 || port > 65535)
        return std::nullopt;
    url.host = std::string(host);
    url.port = static_cast<uint16_t>(port);
    return url;
}

std::unique_ptr<SerialBackend> openNetworkSerial(const std::string& url, const LineSettings& settings,
                                                 int handshaking)
{
    const auto parsed = parsePortUrl(url);
    if (!parsed)
        net::raise(err::InvalidPortNumber, url, "not of the form socket://HOST:PORT or rfc2217://HOST:PORT");
    if (parsed->kind == PortUrl::Kind::Raw)
        return net::openTcpSerial(*parsed, url);
    return net::openRfc2217Serial(*parsed, url, settings, handshaking);
}

} // namespace zebreader81
