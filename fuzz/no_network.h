#pragma once

// For targets that run real servers and clients on loopback: name look-ups never leave the
// process (only numeric addresses resolve) and connections go to loopback only, whatever
// address the input names. The definitions take the place of the C library's for the whole
// program; include this header in one source only.

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

extern "C" int getaddrinfo(const char* node, const char* service, const struct addrinfo* hints,
                           struct addrinfo** res) {
    using Real = int (*)(const char*, const char*, const struct addrinfo*, struct addrinfo**);
    static const Real real = reinterpret_cast<Real>(dlsym(RTLD_NEXT, "getaddrinfo"));
    struct addrinfo numeric {};
    if (hints) numeric = *hints;
    numeric.ai_flags |= AI_NUMERICHOST;
    return real(node, service, &numeric, res);
}

extern "C" int connect(int fd, const struct sockaddr* address, socklen_t length) {
    using Real = int (*)(int, const struct sockaddr*, socklen_t);
    static const Real real = reinterpret_cast<Real>(dlsym(RTLD_NEXT, "connect"));
    bool loopback = false;
    if (address && address->sa_family == AF_INET && length >= sizeof(sockaddr_in)) {
        const auto* in = reinterpret_cast<const sockaddr_in*>(address);
        loopback = (ntohl(in->sin_addr.s_addr) >> 24) == 127;
    } else if (address && address->sa_family == AF_INET6 && length >= sizeof(sockaddr_in6)) {
        const auto* in6 = reinterpret_cast<const sockaddr_in6*>(address);
        loopback = IN6_IS_ADDR_LOOPBACK(&in6->sin6_addr);
    } else if (address && address->sa_family == AF_UNIX) {
        loopback = true;
    }
    if (!loopback) {
        errno = ENETUNREACH;
        return -1;
    }
    return real(fd, address, length);
}
