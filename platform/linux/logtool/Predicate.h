#pragma once

#include "platform/linux/logtool/LogRecord.h"

#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace logtool {

// Which messages are wanted. The grammar, in which "&&" binds closer than "||":
//
//     predicate  = comparison | predicate "&&" predicate | predicate "||" predicate | "(" predicate ")"
//     comparison = key ("==" | "endswith") text
//
// A key is one of FieldNames; a text stands in double or single quotation marks, in which a backslash takes the next
// character as it is. "endswith", "and" and "or" may be written in any case.
class Predicate {
public:
    // The error is a sentence that says what is wrong and where.
    static std::expected<Predicate, std::string> parse(std::string_view text);

    Predicate(); // every message
    ~Predicate();
    Predicate(Predicate&&) noexcept;
    Predicate& operator=(Predicate&&) noexcept;

    bool matches(const LogRecord& record) const;
    // When only messages of certain subsystems can match: those. Empty when any may.
    std::vector<std::string> subsystems() const;

    struct Node;

private:
    explicit Predicate(std::unique_ptr<Node> root);
    std::unique_ptr<Node> _root;
};

} // namespace logtool
