// Measures a program's start-up as the desktop sees it: from the exec to the
// moment the X server maps its window of the given title, then its resident
// memory once it has settled. Usage: launch_timer RUNS TITLE PROGRAM [ARGS...]
// Prints one line per run: milliseconds and resident kilobytes.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

long ResidentKiB(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0)
            return std::strtol(line.c_str() + 6, nullptr, 10);
    return -1;
}

bool HasTitle(Display *display, Window window, const char *title)
{
    char *name = nullptr;
    if (!XFetchName(display, window, &name) || !name)
        return false;
    const bool same = std::strcmp(name, title) == 0;
    XFree(name);
    return same;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: launch_timer RUNS TITLE PROGRAM [ARGS...]\n");
        return 2;
    }
    const int runs = std::atoi(argv[1]);
    const char *title = argv[2];
    Display *display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "launch_timer: no X display\n");
        return 1;
    }
    XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
    for (int run = 0; run < runs; ++run) {
        XSync(display, True);
        const auto start = std::chrono::steady_clock::now();
        const pid_t pid = fork();
        if (pid == 0) {
            execv(argv[3], argv + 3);
            _exit(127);
        }
        double shownMs = -1;
        while (shownMs < 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == MapNotify && HasTitle(display, event.xmap.window, title))
                shownMs = std::chrono::duration<double, std::milli>(
                    std::chrono::steady_clock::now() - start)
                              .count();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        std::printf("%.2f %ld\n", shownMs, ResidentKiB(pid));
        std::fflush(stdout);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    XCloseDisplay(display);
    return 0;
}
