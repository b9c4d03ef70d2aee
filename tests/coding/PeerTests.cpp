// What other programs write and read.

#include "tests/coding/Samples.h"
#include "tests/support/TemporaryDirectory.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <memory>
#if __has_include(<plist/plist.h>)
#include <plist/plist.h>
#endif

using platform::binaryPropertyList;
using platform::Data;
using platform::PropertyList;
using platform::propertyListWithData;

namespace {

constexpr int count = 200; // seeded values, in two formats each

// Makes the values again from their seeds; what it reads back is checked with the value that it made.
constexpr const char* generator = R"(
import datetime, math, plistlib, random, sys

def text(random):
    kind = random.randrange(4)
    signs = ['abcXYZ 0189_&<>"', 'é£ÿ ß', '€Ж中', '😀𝄞\U00010000\U0010FFFF'][kind]
    return ''.join(random.choice(signs) for _ in range(random.choice([0, 1, 3, 14, 15, 16, 40, 300])))

def value(random, depth, inXML):
    kind = random.randrange(8 if depth > 3 else 11)
    if kind == 0: return random.random() < 0.5
    if kind == 1:
        bound = random.choice([2**7, 2**8, 2**15, 2**16, 2**31, 2**32, 2**63])
        return random.randrange(-bound, bound)
    if kind == 2: return random.randrange(2**63, 2**64)
    if kind == 3: return random.choice([0.0, -0.5, 1e300, 5e-324, math.inf, random.gauss(0, 1e6)])
    if kind == 4: return random.randbytes(random.choice([0, 1, 14, 15, 16, 300]))
    if kind == 5:
        moment = datetime.datetime(1601, 1, 1) + datetime.timedelta(seconds=random.randrange(50_000_000_000))
        return moment if inXML else moment.replace(microsecond=random.choice([0, 500000, 250000]))
    if kind == 6 and not inXML: return plistlib.UID(random.choice([0, 255, 256, 65536, largestUID]))
    if kind in (6, 7): return text(random)
    if kind in (8, 9):
        return [value(random, depth + 1, inXML) for _ in range(random.choice([0, 1, 3, 14, 15, 16]))]
    return {text(random): value(random, depth + 1, inXML) for _ in range(random.choice([0, 1, 3, 14, 15, 40]))}

def sample(seed, format):
    inXML = format == 'xml'
    return [seed, value(random.Random(seed), 0, inXML), value(random.Random(-seed - 1), 0, inXML)]

folder, command, count, largestUID = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
for seed in range(count):
    for format in 'binary', 'xml':
        made = sample(seed, format)
        if command == 'write':
            with open(f'{folder}/{seed}.{format}', 'wb') as file:
                plistlib.dump(made, file, fmt=plistlib.FMT_XML if format == 'xml' else plistlib.FMT_BINARY)
        else:
            with open(f'{folder}/{seed}.{format}.back', 'rb') as file:
                back = plistlib.load(file)
            assert back == made, (seed, format)
)";

#if __has_include(<plist/plist.h>)

struct FreePlist {
    void operator()(void* tree) const { plist_free(tree); }
};

// The input as libplist writes it again.
Data writtenByPeer(const Data& bytes)
{
    plist_t tree = nullptr;
    plist_from_memory(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &tree);
    const std::unique_ptr<void, FreePlist> owner(tree);
    REQUIRE(tree);
    char* written = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(tree, &written, &size);
    Data copy(written, written + size);
    std::free(written);
    return copy;
}

#else

Data writtenByPeer(const Data& bytes)
{
    static const bool isTold = [] {
        MESSAGE("SKIPPED: libplist is not installed");
        return true;
    }();
    return isTold ? bytes : Data();
}

#endif

} // namespace

TEST_CASE("hundreds of random values that python3 writes are read, and what is written of them is equal to python3")
{
    if (!hasPython())
        return;
    const TemporaryDirectory folder;
    const std::string base = folder.file("");
    const std::string largestUID = std::to_string(UINT64_MAX);
    python(generator, {base, "write", std::to_string(count), largestUID});
    for (int seed = 0; seed < count; ++seed) {
        for (const char* format : {".binary", ".xml"}) {
            const std::string name = std::to_string(seed) + format;
            CAPTURE(name);
            const auto value = propertyListWithData(contents(folder.file(name)));
            REQUIRE(value);
            const Data back = binaryPropertyList(*value).value();
            folder.write(name + ".back", {reinterpret_cast<const char*>(back.data()), back.size()});
        }
    }
    python(generator, {base, "compare", std::to_string(count), largestUID});
}

TEST_CASE("what libplist reads is read as the same value, in both formats")
{
    if (!hasPython())
        return;
    const TemporaryDirectory folder;
    // It refuses larger UIDs.
    python(generator, {folder.file(""), "write", "100", std::to_string(UINT32_MAX)});
    for (int seed = 0; seed < 100; ++seed) {
        for (const char* format : {".binary", ".xml"}) {
            const std::string name = std::to_string(seed) + format;
            CAPTURE(name);
            const Data bytes = contents(folder.file(name));
            const PropertyList value = propertyListWithData(bytes).value();
            CHECK(propertyListWithData(writtenByPeer(bytes)).value() == value);
            CHECK(propertyListWithData(writtenByPeer(binaryPropertyList(value).value())).value() == value);
        }
    }
}
