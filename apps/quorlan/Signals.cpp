#include "Signals.h"

#include <csignal>
#include <cstdlib>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <sys/prctl.h>
#endif

namespace QuorlanProgram {

#if defined(_WIN32)

void PrepareSignals() {}
int ForkEndedOnInterrupt() { return -1; }
int WaitForChild(int) { return -1; }
RemovedOnInterrupt::RemovedOnInterrupt(std::string const&) {}
RemovedOnInterrupt::~RemovedOnInterrupt() = default;

#else

namespace {

constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP};

// What a signal handler may look at: plain memory, and a flag that says whether it is whole.
constexpr std::size_t kMaxPath = 4096;
char removedPath[kMaxPath];
volatile std::sig_atomic_t hasRemovedPath = 0;
volatile std::sig_atomic_t isQuiet = 0;
volatile std::sig_atomic_t endedChild = 0;

extern "C" void EndByInterrupt(int signal) {
    if (endedChild > 0 && kill(endedChild, signal) == 0) waitpid(endedChild, nullptr, 0);
    if (hasRemovedPath != 0) unlink(removedPath);
    constexpr char kLine[] = "quorlan: interrupted\n";
    if (isQuiet == 0 && write(STDERR_FILENO, kLine, sizeof(kLine) - 1) < 0) isQuiet = 1;  // no more can be done
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

}  // namespace

void PrepareSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (int const signal : kInterrupts) {
        if (std::signal(signal, &EndByInterrupt) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

int ForkEndedOnInterrupt() {
    // No interrupt comes before the handler of either process knows what it has to do.
    sigset_t interrupts, before;
    sigemptyset(&interrupts);
    for (int const signal : kInterrupts) sigaddset(&interrupts, signal);
    sigprocmask(SIG_BLOCK, &interrupts, &before);
    auto const parent = getpid();
    auto const child = fork();
    if (child == 0) {
        isQuiet = 1;
#if defined(__linux__)
        prctl(PR_SET_PDEATHSIG, SIGTERM);              // where no handler can tell: the parent was killed
#endif
        if (getppid() != parent) _exit(EXIT_FAILURE);  // before the line above took effect
    }
    if (child > 0) endedChild = child;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return child;
}

int WaitForChild(int child) {
    int status = 0;
    auto const ended = waitpid(child, &status, 0);
    endedChild = 0;
    return ended == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

RemovedOnInterrupt::RemovedOnInterrupt(std::string const& path) {
    if (path.size() >= kMaxPath) return;
    path.copy(removedPath, path.size());
    removedPath[path.size()] = '\0';
    hasRemovedPath = 1;
}

RemovedOnInterrupt::~RemovedOnInterrupt() { hasRemovedPath = 0; }

#endif

}  // namespace QuorlanProgram
