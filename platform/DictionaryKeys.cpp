#include "platform/DictionaryKeys.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <unordered_map>
#include <utility>

namespace platform {

namespace {

// Up to here, comparing a few short keys is faster than hashing one.
constexpr std::size_t largestUnindexedSize = 32;

struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
};

} // namespace

struct DictionaryKeys::Shared {
    explicit Shared(std::vector<std::string> texts) : keys(std::move(texts)) { reindex(); }

    void reindex()
    {
        index.clear();
        if (keys.size() <= largestUnindexedSize)
            return;
        index.reserve(keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i)
            index.emplace(keys[i], i);
    }

    std::vector<std::string> keys;
    std::unordered_map<std::string, std::size_t, Hash, std::equal_to<>> index; // empty up to the largest size without
    std::atomic<std::size_t> holders = 1;
};

DictionaryKeys::DictionaryKeys(std::vector<std::string> keys)
    : _shared(keys.empty() ? nullptr : new Shared(std::move(keys)))
{
}

DictionaryKeys::DictionaryKeys(const DictionaryKeys& other) : _shared(other._shared)
{
    if (_shared)
        _shared->holders.fetch_add(1, std::memory_order_relaxed);
}

DictionaryKeys::DictionaryKeys(DictionaryKeys&& other) noexcept : _shared(std::exchange(other._shared, nullptr)) { }

DictionaryKeys& DictionaryKeys::operator=(DictionaryKeys other) noexcept
{
    std::swap(_shared, other._shared);
    return *this;
}

DictionaryKeys::~DictionaryKeys()
{
    if (_shared && _shared->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete _shared;
}

std::size_t DictionaryKeys::size() const
{
    return _shared ? _shared->keys.size() : 0;
}

const std::string& DictionaryKeys::operator[](std::size_t place) const
{
    return _shared->keys[place];
}

std::size_t DictionaryKeys::find(std::string_view key) const
{
    if (!_shared)
        return 0;
    if (!_shared->index.empty()) {
        const auto found = _shared->index.find(key);
        return found == _shared->index.end() ? size() : found->second;
    }
    return static_cast<std::size_t>(std::ranges::find(_shared->keys, key) - _shared->keys.begin());
}

DictionaryKeys::Shared& DictionaryKeys::own()
{
    if (!_shared)
        _shared = new Shared({});
    else if (_shared->holders.load(std::memory_order_acquire) > 1)
        *this = DictionaryKeys(_shared->keys);
    return *_shared;
}

void DictionaryKeys::append(std::string_view key)
{
    Shared& shared = own();
    shared.keys.emplace_back(key);
    if (shared.index.empty())
        shared.reindex();
    else
        shared.index.emplace(key, shared.keys.size() - 1);
}

void DictionaryKeys::remove(std::size_t place)
{
    Shared& shared = own();
    shared.keys.erase(shared.keys.begin() + static_cast<std::ptrdiff_t>(place));
    shared.reindex();
}

} // namespace platform
