#include "platform/JSONRecords.h"

#include "platform/linux/system/formats/JSONArrayScanner.h"
#include "platform/linux/system/formats/JSONRecordParser.h"
#include "platform/Localization.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr std::int64_t propertyListReadCorrupt = 3840;
constexpr std::size_t mostWaitingParts = 16;

Error corruptJSONError(std::string_view detail)
{
    const auto sentence = localizedString("The data is not valid JSON.") + " (" + std::string(detail) + ")";
    return {CocoaErrorDomain, propertyListReadCorrupt, {{LocalizedDescriptionKey, sentence}}, nullptr};
}

const char* reasonFor(const JSONArrayScanner& scanner)
{
    using State = JSONArrayScanner::State;
    switch (scanner.state()) {
    case State::NotAnArray:
        return "It is not an array.";
    case State::UnknownCharacter:
        return "It has a character that JSON does not know.";
    case State::NestedTooDeeply:
        return "It is nested too deeply.";
    case State::CharactersFollow:
        return "Characters follow the array.";
    case State::Open:
    case State::Complete:
        break;
    }
    return scanner.isBlank() ? "It is empty." : "It ends early.";
}

// Reads the parts of an array one after another: each is made an array of its own.
class PartReader {
public:
    PartReader(std::span<const std::string_view> keys, JSONRecords::Visitor visit)
        : _keys(keys.begin(), keys.end()),
          _visit(std::move(visit))
    {
    }

    // Without the comma or bracket at its end. Nothing is read after damage.
    void read(std::string part, bool isLast)
    {
        if (!_failure.empty())
            return;
        const bool isFirst = std::exchange(_isFirst, false);
        if (!isFirst)
            part.front() = '['; // its comma
        if (!isLast)
            part += ']';
        const auto size = part.size();
        part.append(JSONRecordParser::Padding, ' ');
        const auto count = _parser.parse(std::string_view(part).substr(0, size), _keys, _visit);
        if (!count)
            _failure = _parser.failure();
        else if (*count == 0 && !(isFirst && isLast))
            _failure = localizedString("An element is missing.");
    }

    // Empty when all was right.
    const std::string& failure() const { return _failure; }

private:
    std::vector<std::string_view> _keys;
    JSONRecords::Visitor _visit;
    JSONRecordParser _parser;
    bool _isFirst = true;
    std::string _failure;
};

// Has another thread read the parts. One that adds faster than they are read waits, so that memory stays bounded.
class PartQueue {
public:
    explicit PartQueue(PartReader& reader) : _thread([this, &reader] { run(reader); }) { }
    ~PartQueue()
    {
        {
            const std::lock_guard lock(_mutex);
            _ended = true;
        }
        _changed.notify_all();
        _thread.join();
    }
    PartQueue(const PartQueue&) = delete;
    PartQueue& operator=(const PartQueue&) = delete;

    void add(std::string part)
    {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return _parts.size() < mostWaitingParts; });
        _parts.push_back(std::move(part));
        _changed.notify_all();
    }

private:
    void run(PartReader& reader)
    {
        std::unique_lock lock(_mutex);
        for (;;) {
            _changed.wait(lock, [this] { return _ended || !_parts.empty(); });
            if (_parts.empty())
                return;
            auto part = std::move(_parts.front());
            _parts.pop_front();
            _changed.notify_all();
            lock.unlock();
            reader.read(std::move(part), false);
            lock.lock();
        }
    }

    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<std::string> _parts;
    bool _ended = false;
    std::thread _thread;
};

} // namespace

struct JSONRecords::Native {
    PartReader reader;
    std::optional<PartQueue> queue; // once there is a whole part
    JSONArrayScanner scanner;
    std::string part; // the one that arrives
    bool hasRoom = true;
};

JSONRecords::JSONRecords(std::span<const std::string_view> keys, Visitor visit)
    : _native(new Native{.reader = {keys, std::move(visit)}, .queue = {}, .scanner = {}, .part = {}})
{
}

JSONRecords::~JSONRecords() = default;

void JSONRecords::append(std::string_view piece)
{
    auto& [reader, queue, scanner, part, hasRoom] = *_native;
    if (!hasRoom || scanner.isBroken())
        return;
    try {
        part.append(piece);
        while (const auto cut = scanner.nextCut(part)) {
            std::string next;
            next.reserve(2 * JSONArrayScanner::PartLength);
            next.append(part, *cut);
            part.resize(*cut);
            if (!queue)
                queue.emplace(reader);
            queue->add(std::exchange(part, std::move(next)));
        }
    } catch (const std::bad_alloc&) {
        hasRoom = false;
    }
    if (!hasRoom || scanner.isBroken())
        std::exchange(part, {});
}

bool JSONRecords::isEmpty() const
{
    return _native->scanner.isBlank();
}

Result<void> JSONRecords::finish()
{
    auto& [reader, queue, scanner, part, hasRoom] = *_native;
    queue.reset(); // which reads what waits there
    if (!hasRoom)
        return std::unexpected(corruptJSONError(localizedString("There is not enough memory for it.")));
    if (scanner.state() != JSONArrayScanner::State::Complete)
        return std::unexpected(corruptJSONError(localizedString(reasonFor(scanner))));
    reader.read(std::move(part), true);
    if (!reader.failure().empty())
        return std::unexpected(corruptJSONError(reader.failure()));
    return {};
}

} // namespace platform
