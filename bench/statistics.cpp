// Matching, saving and loading with 1024 records of 4094 snapshots, each beside the plain work on the same
// bytes that it is measured against.

#include "stats/statistics.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace
{

const std::string identifier = "bench-" + std::to_string(getpid());
constexpr std::size_t snapshotBytes = runTable::maxRecords * wire::mostSnapshots * sizeof(int);

std::vector<int> randomCourse(std::mt19937 &random)
{
    std::vector<int> course;
    int elapsed = 0;
    for (std::size_t i = 0; i < wire::mostSnapshots; ++i) {
        elapsed += static_cast<int>(random() % 3);
        course.push_back(elapsed * snapshotScale + static_cast<int>(random() % 1000));
    }
    return course;
}

void fillTable()
{
    std::mt19937 random(1024);
    std::vector<runRecord> records;
    for (int record = 0; record < static_cast<int>(runTable::maxRecords); ++record)
        records.push_back({{1, 3600 + record, 1, randomCourse(random), 0}, {}});
    statistics.table().assign(std::move(records));
}

void fillPool(int count)
{
    statistics.startRun();
    for (int second = 0; second < count; ++second) {
        statistics.setElapsed(second);
        statistics.addSnapshot(second);
    }
}

/// The statistics file with the full table, made once and removed at the end.
class savedTable
{
public:
    savedTable()
    {
        statistics.load(identifier.c_str());
        fillTable();
        statistics.saveFinally(identifier.c_str());
    }
    ~savedTable() { unlink(path()); }

    static const char *path() { return statistics.file().path().c_str(); }

    std::string content() const
    {
        std::string text;
        const int file = open(savedTable::path(), O_RDONLY);
        char block[1 << 16];
        for (ssize_t count; (count = read(file, block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(count));
        close(file);
        return text;
    }
};

savedTable &table()
{
    static savedTable saved;
    return saved;
}

void reportBytes(benchmark::State &state, std::size_t bytes)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

void sumOfTable(benchmark::State &state)
{
    table();
    for ([[maybe_unused]] auto _ : state) {
        std::int64_t sum = 0;
        for (const runRecord &record : statistics.table().records())
            sum = std::accumulate(record.snapshots.begin(), record.snapshots.end(), sum);
        benchmark::DoNotOptimize(sum);
    }
    reportBytes(state, snapshotBytes);
}
BENCHMARK(sumOfTable)->Unit(benchmark::kMillisecond);

void match(benchmark::State &state)
{
    table();
    for ([[maybe_unused]] auto _ : state) {
        fillPool(wire::mostSnapshots);
        benchmark::DoNotOptimize(findNearest(statistics.table(), statistics.run()));
    }
    reportBytes(state, snapshotBytes);
}
BENCHMARK(match)->Unit(benchmark::kMillisecond);

/// A tick with as many new snapshots as the argument says, late in a long run.
void tick(benchmark::State &state)
{
    table();
    const int added = static_cast<int>(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        const auto count = static_cast<int>(statistics.run().snapshots().size());
        if (count + added > static_cast<int>(wire::mostSnapshots) || count < 2000) {
            state.PauseTiming();
            fillPool(2000);
            findNearest(statistics.table(), statistics.run());
            state.ResumeTiming();
        }
        for (int i = 0; i < added; ++i)
            statistics.addSnapshot(i);
        benchmark::DoNotOptimize(findNearest(statistics.table(), statistics.run()));
    }
}
BENCHMARK(tick)->Arg(0)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMicrosecond);

/// A tick of the adaptive estimate in the middle of a run, with 64 records and a run of as many rises as the
/// argument says.
void adaptiveTick(benchmark::State &state)
{
    const int count = static_cast<int>(state.range(0));
    std::vector<int> rises;
    for (int i = 0; i < count; ++i)
        rises.push_back(i * snapshotScale + (i * 7 + 7) % snapshotScale);
    std::vector<runRecord> records;
    for (int record = 0; record < 64; ++record)
        records.push_back({{1, count + record, 1, rises, 1000 + record}, {}});
    statistics.table().assign(std::move(records));
    statistics.m_estimateMode = estimateMode::adaptive;
    statistics.setAmount(900);
    statistics.startRun();
    for (int i = 0; i < count * 9 / 10; ++i) {
        statistics.setElapsed(i);
        statistics.addSnapshot(i * 7 + 7);
    }
    statistics.setElapsed(count);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(statistics.advance(50, 0));
    statistics.m_estimateMode = estimateMode::exact;
    statistics.endRun(0);
}

void writeBytes(benchmark::State &state)
{
    const std::string content = table().content();
    const std::string path = std::string(savedTable::path()) + ".plain";
    for ([[maybe_unused]] auto _ : state) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
            state.SkipWithError("short write");
        fdatasync(file);
        close(file);
    }
    unlink(path.c_str());
    reportBytes(state, content.size());
}
BENCHMARK(writeBytes)->UseRealTime()->Unit(benchmark::kMillisecond);

void save(benchmark::State &state)
{
    const std::string content = table().content();
    for ([[maybe_unused]] auto _ : state)
        statistics.saveFinally(identifier.c_str());
    reportBytes(state, content.size());
}
BENCHMARK(save)->UseRealTime()->Unit(benchmark::kMillisecond);

void readAndParse(benchmark::State &state)
{
    const std::size_t size = table().content().size();
    for ([[maybe_unused]] auto _ : state) {
        std::string content(size, '\0');
        const int file = open(savedTable::path(), O_RDONLY);
        if (read(file, content.data(), size) != static_cast<ssize_t>(size))
            state.SkipWithError("short read");
        close(file);
        std::int64_t sum = 0;
        const char *const end = content.data() + size;
        for (const char *text = content.data(); text < end;) {
            int number = 0;
            const auto result = std::from_chars(text, end, number);
            text = result.ptr + 1;
            sum += number;
        }
        benchmark::DoNotOptimize(sum);
    }
    reportBytes(state, size);
}
BENCHMARK(readAndParse)->UseRealTime()->Unit(benchmark::kMillisecond);

void load(benchmark::State &state)
{
    const std::string content = table().content();
    for ([[maybe_unused]] auto _ : state)
        statistics.load(identifier.c_str());
    if (statistics.table().records().size() != runTable::maxRecords)
        state.SkipWithError("records are missing");
    reportBytes(state, content.size());
}
BENCHMARK(load)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Heap in use by the full table, against the bytes of its snapshots.
void memory(benchmark::State &state)
{
    table();
    for ([[maybe_unused]] auto _ : state) {
        const std::size_t full = mallinfo2().uordblks;
        statistics.table().assign({});
        const std::size_t used = full - mallinfo2().uordblks;
        state.counters["heap/snapshots"] = static_cast<double>(used) / static_cast<double>(snapshotBytes);
        statistics.load(identifier.c_str());
    }
}
BENCHMARK(memory)->Iterations(1);
BENCHMARK(adaptiveTick)->Arg(100)->Arg(wire::mostSnapshots)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
