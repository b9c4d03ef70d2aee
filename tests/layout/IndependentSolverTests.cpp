#include "platform/linux/ui/layout/ConstraintSolver.h"

#include <cstdio>
#include <cstdlib>
#include <doctest/doctest.h>
#include <iostream>
#include <random>
#include <string>
#include <vector>

using platform::ui::ConstraintSolver;
using platform::ui::LayoutRelation;
using platform::ui::LinearTerm;

namespace {

// A system as one line of JSON, solved as it is built.
class RandomSystem {
public:
    RandomSystem(unsigned seed, bool layoutLike)
        : _random(seed),
          _layoutLike(layoutLike),
          _variables(2 + pick(layoutLike ? 16 : 7))
    {
        for (unsigned i = 0; i < _variables; ++i)
            _solver.addVariable();
        const unsigned count = 2 + pick(_variables * 4);
        for (unsigned i = 0; i < count; ++i)
            addConstraint();
    }

    std::string solved()
    {
        std::string refused;
        for (std::size_t number : _solver.solve())
            refused += (refused.empty() ? "" : ",") + std::to_string(number);
        std::string values;
        for (unsigned i = 0; i < _variables; ++i)
            values += (i ? "," : "") + number(_solver.value(i));
        return "{\"constraints\":[" + _constraints + "],\"refused\":[" + refused + "],\"values\":[" + values + "]}\n";
    }

private:
    unsigned pick(unsigned below) { return static_cast<unsigned>(_random() % below); }

    static std::string number(double value)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%.17g", value);
        return text;
    }

    // Differences of two variables and bounds of one, as layouts have them, or any sum.
    std::vector<LinearTerm> terms()
    {
        if (_layoutLike && pick(3) == 0)
            return {{pick(_variables), 1}};
        if (_layoutLike)
            return {{pick(_variables), 1}, {pick(_variables), -1}};
        std::vector<LinearTerm> sum;
        for (unsigned i = 0, count = 1 + pick(4); i < count; ++i)
            sum.push_back({pick(_variables), static_cast<double>(pick(9)) / 2 - 2});
        return sum;
    }

    void addConstraint()
    {
        static const int priorities[] = {1000, 1000, 1000, 999, 750, 700, 250, 1};
        const auto relation = static_cast<LayoutRelation>(static_cast<int>(pick(3)) - 1);
        const double constant = _layoutLike ? 4.0 * pick(8) : static_cast<double>(pick(41)) - 20;
        const int priority = priorities[pick(8)];
        const double weight = priority == 1000 ? 1 : 1 + pick(3);
        const std::vector<LinearTerm> sum = terms();
        _solver.addConstraint(sum, relation, constant, priority, weight);
        std::string sides;
        for (const LinearTerm& term : sum)
            sides +=
                (sides.empty() ? "[" : ",[") + std::to_string(term.variable) + "," + number(term.coefficient) + "]";
        _constraints += (_constraints.empty() ? "[[" : ",[[") + sides + "],"
            + std::to_string(static_cast<int>(relation)) + "," + number(constant) + "," + std::to_string(priority) + ","
            + number(weight) + "]";
    }

    std::mt19937 _random;
    bool _layoutLike;
    unsigned _variables;
    ConstraintSolver _solver;
    std::string _constraints;
};

void compare(unsigned systems, unsigned firstSeed, bool layoutLike)
{
    if (std::system("/usr/bin/python3 -c 'import kiwisolver' 2>/dev/null") != 0) {
        std::cout << "SKIPPED: python3-kiwisolver is not installed\n";
        return;
    }
    std::FILE* checker = popen("/usr/bin/python3 " COMPARISON_SCRIPT, "w");
    REQUIRE(checker);
    for (unsigned i = 0; i < systems; ++i)
        std::fputs(RandomSystem(firstSeed + i, layoutLike).solved().c_str(), checker);
    CHECK(pclose(checker) == 0);
}

} // namespace

TEST_CASE("random systems of sums are solved as well as an independent solver does")
{
    compare(4000, 1, false);
}

TEST_CASE("random systems of distances are solved as well as an independent solver does")
{
    compare(4000, 100000, true);
}
