#include "bench/audience.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace tnv5::bench {

namespace {

int checked(int result, const char* what)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

void writeAll(int descriptor, const std::string& bytes)
{
    checked(static_cast<int>(::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL)), "send");
}

void readExactly(int descriptor, std::size_t size)
{
    std::array<char, 64> bytes{};
    checked(static_cast<int>(::recv(descriptor, bytes.data(), size, MSG_WAITALL)), "recv");
}

} // namespace

void raiseDescriptorLimit()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

std::int64_t nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

TAudience::TAudience(TSpeech speech, int port, int clients) : FSpeech(speech)
{
    FPoll = checked(epoll_create1(EPOLL_CLOEXEC), "epoll");
    FClients.resize(static_cast<std::size_t>(clients));
    for (std::size_t i = 0; i < FClients.size(); ++i) {
        FClients[i].descriptor = connectTo(port);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = i;
        checked(epoll_ctl(FPoll, EPOLL_CTL_ADD, FClients[i].descriptor, &event), "epoll");
    }
}

TAudience::~TAudience()
{
    for (const TClient& client : FClients) {
        ::close(client.descriptor);
    }
    ::close(FPoll);
}

int TAudience::connectTo(int port) const
{
    const int descriptor = checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    checked(::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), "connect");
    if (FSpeech == TSpeech::Mqtt) {
        subscribe(descriptor);
    }
    return descriptor;
}

void TAudience::subscribe(int descriptor) const
{
    using namespace std::string_literals;
    // CONNECT, version 4, clean session, no keep-alive, no name; its answer; SUBSCRIBE "t"; its answer
    writeAll(descriptor, "\x10\x0c\0\x04MQTT\x04\x02\0\0\0\0"s);
    readExactly(descriptor, 4);
    writeAll(descriptor, "\x82\x06\0\x01\0\x01t\0"s);
    readExactly(descriptor, 5);
}

void TAudience::deafen(int clients)
{
    for (int i = 0; i < clients; ++i) {
        epoll_ctl(FPoll, EPOLL_CTL_DEL, FClients[static_cast<std::size_t>(i)].descriptor, nullptr);
    }
}

void TAudience::hear(std::int64_t texts)
{
    std::array<epoll_event, 256> events{};
    while (texts > 0) {
        const int count = epoll_wait(FPoll, events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < count; ++i) {
            texts -= read(FClients[events[static_cast<std::size_t>(i)].data.u64]);
        }
    }
}

std::int64_t TAudience::read(TClient& client)
{
    std::array<char, 65'536> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init): read into at once
    const ssize_t size = ::recv(client.descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size < 0 && errno == EAGAIN) {
        return 0;
    }
    if (size <= 0) {
        throw std::runtime_error("a client that reads was dropped");
    }
    const std::int64_t now = nowNs();
    client.rest.append(bytes.data(), static_cast<std::size_t>(size));
    constexpr std::size_t kSize = sizeof kTextMark - 1 + kTimeDigits;
    std::int64_t found = 0;
    std::size_t at = client.rest.find(kTextMark);
    while (at != std::string::npos && at + kSize <= client.rest.size()) {
        if (OnText) {
            OnText(now - std::atoll(client.rest.substr(at + sizeof kTextMark - 1, kTimeDigits).c_str()));
        }
        ++found;
        at = client.rest.find(kTextMark, at + kSize);
    }
    if (at == std::string::npos) { // the beginning of a mark may have come
        at = client.rest.size() - std::min(client.rest.size(), sizeof kTextMark - 2);
    }
    client.rest.erase(0, at);
    return found;
}

} // namespace tnv5::bench
