#pragma once

#include <optional>
#include <sys/types.h>

/// A socket that listens, as the kernel's table of TCP sockets shows it.
struct listeningSocket {
    uid_t owner = 0;
    unsigned long inode = 0;
};

/// Who listens on a port (IPv4), without connecting to it.
std::optional<listeningSocket> findListener(int port);

/// The process that holds this socket, as far as this user may look into processes; 0 for none.
pid_t processOf(const listeningSocket &socket);
