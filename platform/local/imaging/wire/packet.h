// Packets with at most one descriptor, over a SOCK_SEQPACKET socket. Shared by both processes.
#pragma once

#include "platform/local/system/unique_fd.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include <sys/socket.h>

namespace local::imaging {

inline constexpr int kWorkerSocket = 3; // the worker's descriptor of it

// Sends the bytes with the descriptor `file` (-1: with none). False when the other end is gone.
[[nodiscard]] inline bool sendPacket(int socket, const void* bytes, std::size_t size, int file) {
    iovec part{const_cast<void*>(bytes), size};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (file >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(header), &file, sizeof file);
    }
    ssize_t sent = -1;
    do
        sent = sendmsg(socket, &message, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(size);
}

// Waits for a packet and answers its size: 0 when the other end is gone, -1 on an error or when
// it is longer than `capacity` or brings more than one descriptor. The kernel drops what does not
// fit the control buffer, so no descriptor stays behind.
[[nodiscard]] inline ssize_t receivePacket(int socket, void* bytes, std::size_t capacity,
                                           UniqueFd& file) {
    iovec part{bytes, capacity};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    ssize_t size = -1;
    do
        size = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    while (size < 0 && errno == EINTR);
    if (size < 0)
        return -1;
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header; header = CMSG_NXTHDR(&message, header))
        if (header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
            // CMSG_SPACE rounds up, so two descriptors can fit where one was meant.
            const std::size_t count =
                std::min<std::size_t>((header->cmsg_len - CMSG_LEN(0)) / sizeof(int), 2);
            int received[2] = {-1, -1};
            std::memcpy(received, CMSG_DATA(header), count * sizeof(int));
            file.reset(received[0]);
            const UniqueFd surplus(received[1]);
            if (surplus)
                size = -1;
        }
    return message.msg_flags & (MSG_TRUNC | MSG_CTRUNC) ? -1 : size;
}

} // namespace local::imaging
