// SPDX-License-Identifier: Apache-2.0
// Loaded into lumod, has each of the kernel's lists read as if it had changed meanwhile.
#define _GNU_SOURCE
#include <errno.h>
#include <linux/netlink.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

static int isLumod;

__attribute__((constructor)) static void begin(void)
{
    isLumod = strcmp(program_invocation_short_name, "lumod") == 0;
    if (isLumod)
        unsetenv("LD_PRELOAD"); // its engines read as ever
}

ssize_t recvmsg(int fd, struct msghdr* message, int flags)
{
    const ssize_t size = syscall(SYS_recvmsg, fd, message, flags);
    const struct sockaddr_nl* from = message->msg_name;
    if (!isLumod || size <= 0 || !from || from->nl_family != AF_NETLINK)
        return size;
    char* const begin = message->msg_iov->iov_base;
    const size_t room = message->msg_iov->iov_len;
    const size_t end = (size_t)size < room ? (size_t)size : room;
    for (size_t at = 0; at + NLMSG_HDRLEN <= end;) {
        struct nlmsghdr* head = (struct nlmsghdr*)(begin + at);
        if (head->nlmsg_flags & NLM_F_MULTI)
            head->nlmsg_flags |= NLM_F_DUMP_INTR;
        at += NLMSG_ALIGN(head->nlmsg_len);
    }
    return size;
}
