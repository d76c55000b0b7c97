// Measures a program's start-up as the desktop sees it: from the exec to the
// moment the X server maps its window of the given title, and to the moment
// the program falls idle (its threads have used no processor time for 50 ms:
// whatever start-up does after showing the window is done), then its resident
// memory once it has settled. Usage: launch_timer RUNS TITLE PROGRAM [ARGS...]
// Prints one line per run: milliseconds to the map, resident kilobytes,
// milliseconds to idle.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
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

// Nanoseconds on the processor, all threads together.
long long ProcessorNs(pid_t pid)
{
    long long total = 0;
    std::error_code error;
    for (const auto &task :
        std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
        std::ifstream stat(task.path() / "schedstat");
        long long ns = 0;
        if (stat >> ns)
            total += ns;
    }
    return total;
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
        using Clock = std::chrono::steady_clock;
        auto lastBusy = Clock::now();
        for (long long used = ProcessorNs(pid), now = used;
             Clock::now() - lastBusy < std::chrono::milliseconds(50);
             std::this_thread::sleep_for(std::chrono::milliseconds(1))) {
            if ((now = ProcessorNs(pid)) != used)
                used = now, lastBusy = Clock::now();
        }
        const double idleMs = std::chrono::duration<double, std::milli>(lastBusy - start).count();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        std::printf("%.2f %ld %.2f\n", shownMs, ResidentKiB(pid), idleMs);
        std::fflush(stdout);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    XCloseDisplay(display);
    return 0;
}
