// Runs a harness over the files below the folders that it is given, without a fuzzer: seeds and found inputs
// are ordinary test cases.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace
{

/// An input that takes longer hangs the process; the alarm ends it.
constexpr unsigned patienceSeconds = 60;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) __attribute__((weak));
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv)
{
    namespace fs = std::filesystem;
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&argc, &argv);
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        if (!fs::exists(argv[i]))
            continue;
        for (const auto &entry : fs::directory_iterator(argv[i])) {
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            alarm(patienceSeconds);
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string content(std::istreambuf_iterator<char>(file), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(content.data()), content.size());
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
