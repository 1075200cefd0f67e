// SPDX-License-Identifier: Apache-2.0
/* Runs a program and never lets it outlive whoever asked: lumod-keep PID PROGRAM ARGUMENT...
 *
 * The kernel's own signal at the death of a parent is lost when a program changes its user, as
 * dhcpcd and dnsmasq do. This one keeps its user, has that signal, and passes it on. PID is the
 * parent's. What the program leaves running when it ends is killed; its exit status is handed on. All
 * of them are one process group, of this one's id, by which they are found when this one was killed.
 */
#define _GNU_SOURCE
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

enum {
    TICK = 250,   /* ms between two requests to end: dhcpcd misses one that finds it in a script */
    PATIENCE = 12 /* ticks from the first request to the end by force */
};

static const int watched[] = {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD};

static sigset_t watchedSet(void)
{
    sigset_t set;
    sigemptyset(&set);
    for (size_t i = 0; i < sizeof watched / sizeof *watched; ++i)
        sigaddset(&set, watched[i]);
    return set;
}

static void startTicks(void)
{
    const struct itimerval ticks = {{0, TICK * 1000L}, {0, TICK * 1000L}};
    setitimer(ITIMER_REAL, &ticks, NULL);
}

/* Collects who has ended, `*child` becomes 0 once it has; 0 when nobody is left. */
static int collect(pid_t* child, int* status)
{
    int ended = 0;
    pid_t pid = 0;
    while ((pid = waitpid(-1, &ended, WNOHANG)) > 0) {
        if (pid == *child) {
            *child = 0;
            *status = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
            startTicks();
        }
    }
    return pid == 0;
}

/* Orphans become children: this process is their reaper. */
static void killChildren(void)
{
    char path[64];
    snprintf(path, sizeof path, "/proc/self/task/%d/children", (int)getpid());
    FILE* children = fopen(path, "re");
    int pid = 0;
    while (children && fscanf(children, "%d", &pid) == 1)
        kill(pid, SIGKILL);
    if (children)
        fclose(children);
}

int main(int argc, char** argv)
{
    if (argc < 3) {
        fprintf(stderr, "usage: lumod-keep PID PROGRAM ARGUMENT...\n");
        return 2;
    }
    const sigset_t set = watchedSet();
    sigprocmask(SIG_BLOCK, &set, NULL);
    setpgid(0, 0);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != atoi(argv[1]))
        return 0; /* it has died before it could be watched */
    pid_t child = fork();
    if (child == 0) {
        sigprocmask(SIG_UNBLOCK, &set, NULL);
        execvp(argv[2], argv + 2);
        perror(argv[2]);
        _exit(127);
    }
    int status = 1;
    int ticks = 0;
    while (collect(&child, &status)) {
        const int caught = sigwaitinfo(&set, NULL);
        if (caught == SIGCHLD || caught < 0)
            continue;
        if (caught != SIGALRM)
            startTicks();
        if (caught == SIGALRM && ++ticks >= PATIENCE)
            killChildren();
        else if (child > 0)
            kill(child, SIGTERM);
    }
    return status;
}
