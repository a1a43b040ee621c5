// Preloaded into the daemon: counts the toolkit's objects that exist and keeps the number in the file that
// OBJECT_COUNT_FILE names, a 64-bit integer.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

// The toolkit's hooks for debuggers, from a header that it does not install: an array that says in entry 1
// how many entries there are, and calls what stands in these two.
extern std::uintptr_t qtHookData[];
constexpr int lastHook = 1;
constexpr int objectAdded = 3;
constexpr int objectRemoved = 4;

namespace
{

std::atomic<std::int64_t> *count;

void added(void *)
{
    ++*count;
}

void removed(void *)
{
    --*count;
}

__attribute__((constructor)) void install()
{
    const char *path = std::getenv("OBJECT_COUNT_FILE");
    // Programs that the daemon starts are not counted.
    unsetenv("LD_PRELOAD");
    if (!path || qtHookData[lastHook] <= objectRemoved)
        return;
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ftruncate(file, sizeof *count) != 0)
        return;
    void *shared = mmap(nullptr, sizeof *count, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (shared == MAP_FAILED)
        return;
    count = static_cast<std::atomic<std::int64_t> *>(shared);
    qtHookData[objectAdded] = reinterpret_cast<std::uintptr_t>(added);
    qtHookData[objectRemoved] = reinterpret_cast<std::uintptr_t>(removed);
}

} // namespace
