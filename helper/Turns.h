#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace helper {

// Requests that wait, a line for each user, so that what one sends delays that one alone: of each line one request is
// at work at a time, and the lines advance side by side. What waits is bounded, in each line and in all of them
// together, where the longest line gives way.
//
// Used on one thread, except for the end of a turn.
class Turns : public std::enable_shared_from_this<Turns> {
public:
    static constexpr std::size_t maximumLineSize = std::size_t(8) << 20; // bytes
    static constexpr std::size_t maximumSize = std::size_t(24) << 20;
    static constexpr std::size_t requestOverhead = 2048; // counted for each request beside its own bytes

    // The turn ends when every copy is gone; any thread.
    using Turn = std::shared_ptr<void>;
    struct Entry {
        std::string sender;
        std::size_t size = 0;
        std::function<void(Turn)> start;
        std::function<void()> refuse; // there is no room
    };
    // Runs a task on the thread of this object.
    using Post = std::function<void(std::function<void()>)>;

    static std::shared_ptr<Turns> create(Post post);

    // Whether the line would take an entry of this size.
    bool hasRoom(const std::string& line, std::size_t size) const;
    // A line that is not open only waits. Starts the entry before the return when it is its turn.
    void add(const std::string& line, Entry entry, bool isOpen);
    // Whoever stands in a line that was not open goes to the end of another one.
    void move(const std::string& from, const std::string& to);
    // Drops what a sender has waiting, without a word.
    void drop(const std::string& sender);
    void dropAll();

    std::size_t size() const { return _size; }

private:
    struct Line {
        std::deque<Entry> entries;
        std::size_t size = 0;
        bool isOpen = false;
        bool isBusy = false;
    };

    explicit Turns(Post post) : _post(std::move(post)) { }
    void append(Line& line, Entry entry);
    void shorten();
    void advance(const std::string& name);
    void end(const std::string& name);

    const Post _post;
    std::map<std::string, Line> _lines;
    std::size_t _size = 0;
};

} // namespace helper
