#include "platform/linux/logtool/Predicate.h"

#include "platform/linux/logtool/PredicateLexer.h"

#include <algorithm>
#include <utility>

namespace logtool {

struct Predicate::Node {
    enum class Kind { Equals, EndsWith, And, Or };
    Kind kind = Kind::Equals;
    Field field = Field::Subsystem;
    std::string text;
    std::unique_ptr<Node> left;
    std::unique_ptr<Node> right;
};

namespace {

using Node = Predicate::Node;
using Parsed = std::expected<std::unique_ptr<Node>, std::string>;

constexpr int greatestDepth = 100; // brackets inside each other
constexpr std::size_t greatestLength = 65536;

class Parser {
public:
    explicit Parser(std::string_view text) : _lexer(text) { }

    Parsed whole()
    {
        if (auto failure = advance(); !failure)
            return std::unexpected(failure.error());
        auto node = chain(Token::Kind::Or);
        if (node && _token.kind != Token::Kind::End)
            return fail("expected '&&', '||' or the end");
        return node;
    }

private:
    std::expected<void, std::string> advance()
    {
        auto token = _lexer.next();
        if (!token)
            return std::unexpected(token.error());
        _token = std::move(*token);
        return {};
    }

    Parsed fail(const std::string& what) const
    {
        return std::unexpected(what + " at column " + std::to_string(_token.column));
    }

    // Comparisons and brackets joined by one operator; those of "||" are chains of "&&".
    Parsed chain(Token::Kind joint)
    {
        auto node = joint == Token::Kind::Or ? chain(Token::Kind::And) : operand();
        while (node && _token.kind == joint) {
            if (auto failure = advance(); !failure)
                return std::unexpected(failure.error());
            auto right = joint == Token::Kind::Or ? chain(Token::Kind::And) : operand();
            if (!right)
                return right;
            auto joined = std::make_unique<Node>();
            joined->kind = joint == Token::Kind::Or ? Node::Kind::Or : Node::Kind::And;
            joined->left = std::move(*node);
            joined->right = std::move(*right);
            node = std::move(joined);
        }
        return node;
    }

    Parsed operand()
    {
        if (_token.kind != Token::Kind::Open)
            return comparison();
        if (++_depth > greatestDepth)
            return fail("too many brackets inside each other");
        if (auto failure = advance(); !failure)
            return std::unexpected(failure.error());
        auto node = chain(Token::Kind::Or);
        --_depth;
        return node ? closing(std::move(*node)) : std::move(node);
    }

    Parsed closing(std::unique_ptr<Node> node)
    {
        if (_token.kind != Token::Kind::Close)
            return fail("expected ')'");
        if (auto failure = advance(); !failure)
            return std::unexpected(failure.error());
        return node;
    }

    Parsed comparison()
    {
        auto node = std::make_unique<Node>();
        const auto name = std::ranges::find(FieldNames, _token.text);
        if (_token.kind != Token::Kind::Word)
            return fail("expected a key or '('");
        if (name == FieldNames.end())
            return fail("there is no key '" + _token.text + "'");
        node->field = static_cast<Field>(name - FieldNames.begin());
        if (auto failure = advance(); !failure)
            return std::unexpected(failure.error());
        const bool endsWith = _token.kind == Token::Kind::Word && _token.text == "endswith";
        if (!endsWith && _token.kind != Token::Kind::Equal)
            return fail("expected '==' or 'endswith'");
        node->kind = endsWith ? Node::Kind::EndsWith : Node::Kind::Equals;
        if (auto failure = advance(); !failure)
            return std::unexpected(failure.error());
        if (_token.kind != Token::Kind::Text)
            return fail("expected a text in quotation marks");
        node->text = std::move(_token.text);
        if (auto failure = advance(); !failure)
            return std::unexpected(failure.error());
        return node;
    }

    PredicateLexer _lexer;
    Token _token;
    int _depth = 0;
};

bool nodeMatches(const Node& node, const LogRecord& record)
{
    switch (node.kind) {
    case Node::Kind::Equals:
        return record[node.field] == node.text;
    case Node::Kind::EndsWith:
        return record[node.field].ends_with(node.text);
    case Node::Kind::And:
        return nodeMatches(*node.left, record) && nodeMatches(*node.right, record);
    case Node::Kind::Or:
        return nodeMatches(*node.left, record) || nodeMatches(*node.right, record);
    }
    return false;
}

std::vector<std::string> nodeSubsystems(const Node& node)
{
    if (node.kind == Node::Kind::Equals && node.field == Field::Subsystem && !node.text.empty())
        return {node.text};
    if (node.kind == Node::Kind::Equals || node.kind == Node::Kind::EndsWith)
        return {};
    auto left = nodeSubsystems(*node.left);
    auto right = nodeSubsystems(*node.right);
    if (node.kind == Node::Kind::And)
        return left.empty() ? right : left;
    if (left.empty() || right.empty())
        return {};
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

} // namespace

std::expected<Predicate, std::string> Predicate::parse(std::string_view text)
{
    if (text.size() > greatestLength)
        return std::unexpected("it is too long");
    auto root = Parser(text).whole();
    if (!root)
        return std::unexpected(root.error());
    return Predicate(std::move(*root));
}

Predicate::Predicate() = default;
Predicate::Predicate(std::unique_ptr<Node> root) : _root(std::move(root)) { }
Predicate::~Predicate() = default;
Predicate::Predicate(Predicate&&) noexcept = default;
Predicate& Predicate::operator=(Predicate&&) noexcept = default;

bool Predicate::matches(const LogRecord& record) const
{
    return !_root || nodeMatches(*_root, record);
}

std::vector<std::string> Predicate::subsystems() const
{
    return _root ? nodeSubsystems(*_root) : std::vector<std::string>();
}

} // namespace logtool
