// SPDX-License-Identifier: Apache-2.0
/* What dhcpcd runs at each event: hands the part of its environment that lumod reads to lumod, as
 * one datagram of "NAME=value" texts, each ended by a NUL, which no value can contain. A shell
 * would cost more than the rest of the exchange. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

extern char** environ;

static int isWanted(const char* variable)
{
    static const char* const wanted[] = {
        "reason=", "interface=", "protocol=", "if_up=", "LUMOD_", "new_", "nd"};
    for (size_t i = 0; i < sizeof wanted / sizeof *wanted; ++i)
        if (strncmp(variable, wanted[i], strlen(wanted[i])) == 0)
            return 1;
    return 0;
}

int main(void)
{
    char text[32768];
    size_t size = 0;
    for (char** variable = environ; *variable; ++variable) {
        const size_t length = strlen(*variable) + 1;
        if (!isWanted(*variable) || length > sizeof text - size)
            continue;
        memcpy(text + size, *variable, length);
        size += length;
    }
    const char* path = getenv("LUMOD_EVENTS");
    struct sockaddr_un to = {.sun_family = AF_UNIX};
    if (!path || strlen(path) >= sizeof to.sun_path)
        return 1;
    strcpy(to.sun_path, path);
    const int sender = socket(AF_UNIX, SOCK_DGRAM, 0);
    const struct timeval limit = {.tv_sec = 2}; /* dhcpcd waits for this program */
    setsockopt(sender, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    return sendto(sender, text, size, 0, (struct sockaddr*)&to, sizeof to) == (ssize_t)size ? 0 : 1;
}
