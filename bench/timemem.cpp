// Runs a program once and reports what it took: the wall time and the peak
// resident memory of the process (from wait4's resource usage), where a
// fresh machine has no /usr/bin/time. The program's standard output is
// discarded; its errors pass through.
//   timemem PROGRAM [ARG...]    prints  seconds=0.1712 peak_kb=79968
// Ends with the program's own status, 127 when it could not be started,
// 128 + the signal that ended it.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: timemem PROGRAM [ARG...]\n");
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child < 0) {
        std::perror("timemem: fork");
        return 127;
    }
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) dup2(null, STDOUT_FILENO);
        execvp(argv[1], argv + 1);
        std::fprintf(stderr, "timemem: cannot run %s: %s\n", argv[1], std::strerror(errno));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) < 0) {
        if (errno == EINTR) continue;
        std::perror("timemem: wait4");
        return 127;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("seconds=%.4f peak_kb=%ld\n", took.count(), usage.ru_maxrss);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return WEXITSTATUS(status);
}
