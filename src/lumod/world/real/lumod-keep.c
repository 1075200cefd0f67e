/* Runs a program and never lets it outlive whoever asked: lumod-keep PID PROGRAM ARGUMENT...
 *
 * The kernel's own signal at the death of a parent is lost when a program changes its user, as
 * dhcpcd and dnsmasq do. This one keeps its user, has that signal, and passes it on. PID is the
 * parent's. What the program leaves running when it ends is killed; its exit status is handed on.
 */
#define _GNU_SOURCE
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

enum { PATIENCE = 3 /* seconds from the request to end to the end by force */ };

static const int watched[] = {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD};

static sigset_t watchedSet(void)
{
    sigset_t set;
    sigemptyset(&set);
    for (size_t i = 0; i < sizeof watched / sizeof *watched; ++i)
        sigaddset(&set, watched[i]);
    return set;
}

/* Collects who has ended; 1 once `child` has, with its status. */
static int collect(pid_t child, int* status)
{
    int found = 0;
    int ended = 0;
    for (pid_t pid; (pid = waitpid(-1, &ended, WNOHANG)) > 0;) {
        if (pid == child) {
            *status = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
            found = 1;
        }
    }
    return found;
}

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
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != atoi(argv[1]))
        return 0; /* it has died before it could be watched */
    const pid_t child = fork();
    if (child == 0) {
        sigprocmask(SIG_UNBLOCK, &set, NULL);
        execvp(argv[2], argv + 2);
        perror(argv[2]);
        _exit(127);
    }
    int status = 1;
    while (child > 0 && !collect(child, &status)) {
        const int caught = sigwaitinfo(&set, NULL);
        if (caught == SIGCHLD || caught < 0)
            continue;
        kill(child, caught == SIGALRM ? SIGKILL : SIGTERM);
        alarm(PATIENCE);
    }
    do
        killChildren(); /* whatever the program has started is our child once the program is gone */
    while (waitpid(-1, NULL, 0) > 0);
    return status;
}
