#pragma once

// The baseline of the polling benchmarks: status answers per second through plain blocking
// sockets, one connection per request, the answer complete at its closing tag.

#include <QElapsedTimer>
#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace torv::bench {

inline double plainRate(quint16 port, int answers) {
    static const char request[] = "POST /GetRTStatus\r\nContent-Length: 4\r\n\r\nID=4\r\n";
    static const char tag[] = "</GetRTStatus";
    const std::size_t tagLength = std::strlen(tag);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);

    std::string received;
    char buffer[16384];
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < answers; ++i) {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (fd < 0) throw std::runtime_error("socket");
        const int one = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("connect");
        if (::send(fd, request, sizeof request - 1, 0) != static_cast<ssize_t>(sizeof request - 1))
            throw std::runtime_error("send");
        received.clear();
        for (;;) {
            const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
            if (n <= 0) throw std::runtime_error("answer ended without its closing tag");
            const std::size_t from =
                received.size() >= tagLength ? received.size() - tagLength + 1 : 0;
            received.append(buffer, static_cast<std::size_t>(n));
            if (received.find(tag, from) != std::string::npos) break;
        }
        ::close(fd);
    }
    return answers / (static_cast<double>(clock.nsecsElapsed()) / 1e9);
}

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

} // namespace torv::bench
