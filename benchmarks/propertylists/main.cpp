// Reading binary property lists beside libplist, in turns, each in a fresh process and with the freeing of what it
// made; and what reading the saved inputs of the fuzzers takes, for each kilobyte begun.

#include "benchmarks/propertylists/CountedMemory.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"
#include "tests/fuzz/replay/SavedInputs.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>
#include <malloc.h>
#include <plist/plist.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using platform::Array;
using platform::Data;
using platform::Dictionary;

namespace {

constexpr int count = 100'000;
constexpr int rounds = 15;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "bench_propertylists: %s\n", what);
    std::exit(1);
}

// Of the processor, so that what else the machine does says little.
double millisecondsOf(const std::function<void()>& function)
{
    const auto now = [] {
        timespec time = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    const double start = now();
    function();
    return now() - start;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

// A program reads a list into the heap that it has; what one reader leaves there, holes and pages, must not be the
// other's gain or loss.
double inProcessOfItsOwn(const std::function<double()>& measure)
{
    ::malloc_trim(0);
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0)
        fail("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        const double result = measure();
        ::_exit(::write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    ::close(ends[1]);
    double result = 0;
    const bool isRead = ::read(ends[0], &result, sizeof result) == sizeof result;
    ::close(ends[0]);
    if (child < 0 || ::waitpid(child, nullptr, 0) != child || !isRead)
        fail("a measurement ended early");
    return result;
}

Data dictionaries()
{
    Array entries;
    for (int i = 0; i < count; ++i)
        entries.emplace_back(Dictionary{{"Weekday", i % 7 + 1}, {"Hour", i % 24}, {"Minute", i % 60}});
    return platform::binaryPropertyList(std::move(entries)).value();
}

Data dates()
{
    Array entries;
    for (int i = 0; i < count; ++i)
        entries.emplace_back(platform::Date{i * 61.5});
    return platform::binaryPropertyList(std::move(entries)).value();
}

void readOurs(const Data& bytes)
{
    const auto value = platform::propertyListWithData(bytes);
    if (!value || value->array()->size() != count)
        fail("a wrong value");
}

void readWithPeer(const Data& bytes)
{
    plist_t tree = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &tree);
    if (!tree || plist_array_get_size(tree) != count)
        fail("a wrong value of libplist's");
    plist_free(tree);
}

void compare(const std::string& subject, const Data& bytes)
{
    std::vector<double> ours;
    std::vector<double> peer;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(inProcessOfItsOwn([&] { return millisecondsOf([&] { readOurs(bytes); }); }));
        peer.push_back(inProcessOfItsOwn([&] { return millisecondsOf([&] { readWithPeer(bytes); }); }));
    }
    std::printf("plist.%s.ours %.2f ms\nplist.%s.libplist %.2f ms\n", subject.c_str(), median(ours), subject.c_str(),
                median(peer));
}

using Read = std::function<void(const std::vector<std::uint8_t>&)>;

// The most of all inputs; the time of one is its shortest.
void measureCorpus(const std::string& name, const Read& read)
{
    double milliseconds = 0;
    double megabytes = 0;
    std::string slowest;
    std::string largest;
    std::size_t inputs = 0;
    forEachSavedInput(
        BREVANE_CORPORA "/" + name, [&](const std::string& input, const std::vector<std::uint8_t>& bytes) {
            const auto kilobytes = static_cast<double>(std::max<std::size_t>((bytes.size() + 1023) / 1024, 1));
            double shortest = std::numeric_limits<double>::max();
            for (int round = 0; round < rounds; ++round)
                shortest = std::min(shortest, millisecondsOf([&] { read(bytes); }));
            CountedMemory::start();
            read(bytes);
            const auto held = static_cast<double>(CountedMemory::stop()) / (1 << 20);
            ++inputs;
            if (shortest / kilobytes > milliseconds)
                slowest = input;
            if (held / kilobytes > megabytes)
                largest = input;
            milliseconds = std::max(milliseconds, shortest / kilobytes);
            megabytes = std::max(megabytes, held / kilobytes);
        });
    std::printf("plist.%s.inputs %zu inputs\n", name.c_str(), inputs);
    std::printf("plist.%s.time %.4f ms/KB %s\n", name.c_str(), milliseconds, slowest.c_str());
    std::printf("plist.%s.memory %.4f MB/KB %s\n", name.c_str(), megabytes, largest.c_str());
}

} // namespace

int main()
{
    compare("dictionaries", dictionaries());
    compare("dates", dates());
    measureCorpus("property-list", [](const auto& bytes) { static_cast<void>(platform::propertyListWithData(bytes)); });
    measureCorpus("old-style", [](const auto& bytes) {
        static_cast<void>(
            platform::propertyListWithOldStyleText({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    });
    measureCorpus("error-archive",
                  [](const auto& bytes) { static_cast<void>(platform::unarchivedError(bytes, true)); });
    return 0;
}
