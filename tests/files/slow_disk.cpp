// A disk that takes its time: every write and sync waits a few milliseconds
// before it happens, so that a kill lands in the middle of writing a file
// far more often than on a real disk. Loaded with LD_PRELOAD;
// QUORVEL_SLOW_DISK_US sets the wait.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void Wait()
{
    const char *text = std::getenv("QUORVEL_SLOW_DISK_US");
    ::usleep(text ? useconds_t(std::atoi(text)) : 2000);
}

template<typename Function>
Function Real(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" ssize_t write(int fd, const void *buffer, size_t count)
{
    static const auto real = Real<ssize_t (*)(int, const void *, size_t)>("write");
    Wait();
    return real(fd, buffer, count);
}

extern "C" int fsync(int fd)
{
    static const auto real = Real<int (*)(int)>("fsync");
    Wait();
    return real(fd);
}
