#include "platform/linux/ui/layout/ConstraintSolver.h"

#include <chrono>
#include <doctest/doctest.h>
#include <iostream>
#include <vector>

using doctest::Approx;
using platform::ui::ConstraintSolver;
using platform::ui::LayoutRelation;

namespace {

constexpr auto Least = LayoutRelation::GreaterThanOrEqual;
constexpr auto Most = LayoutRelation::LessThanOrEqual;
constexpr auto Equal = LayoutRelation::Equal;

} // namespace

TEST_CASE("required equalities determine their variables")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable(), y = solver.addVariable();
    solver.addConstraint({{x, 1}, {y, 1}}, Equal, 10);
    solver.addConstraint({{x, 1}, {y, -1}}, Equal, 4);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(7));
    CHECK(solver.value(y) == Approx(3));
}

TEST_CASE("a variable may be negative")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable();
    solver.addConstraint({{x, 2}}, Most, -8);
    solver.addConstraint({{x, 1}}, Equal, 100, 10);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(-4));
}

TEST_CASE("a higher priority beats any number of lower ones")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable();
    solver.addConstraint({{x, 1}}, Equal, 1, 501);
    for (int i = 0; i < 2000; ++i)
        solver.addConstraint({{x, 1}}, Equal, 1000, 500, 1000);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(1));
}

TEST_CASE("within a priority the greater weight wins")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable();
    solver.addConstraint({{x, 1}}, Equal, 1, 500, 2);
    solver.addConstraint({{x, 1}}, Equal, 5, 500, 3);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(5));
}

TEST_CASE("a violated preference is violated as little as possible")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable();
    solver.addConstraint({{x, 1}}, Least, 50, 300);
    solver.addConstraint({{x, 1}}, Most, 20);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(20));
}

TEST_CASE("of contradicting required constraints the last is named and the rest is solved")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable(), y = solver.addVariable();
    solver.addConstraint({{x, 1}}, Equal, 10);
    solver.addConstraint({{y, 1}, {x, -1}}, Equal, 5);
    const auto wrong = solver.addConstraint({{y, 1}}, Most, 12);
    solver.addConstraint({{y, 1}}, Least, 15);
    CHECK(solver.solve() == std::vector<std::size_t>{wrong});
    CHECK(solver.value(x) == Approx(10));
    CHECK(solver.value(y) == Approx(15));
}

TEST_CASE("a constraint of constants holds or is refused")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable();
    solver.addConstraint({{x, 1}, {x, -1}}, Least, -1);
    const auto wrong = solver.addConstraint({}, Equal, 3);
    CHECK(solver.solve() == std::vector<std::size_t>{wrong});
}

TEST_CASE("repeated equalities are no contradiction")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable(), y = solver.addVariable();
    for (int i = 0; i < 3; ++i)
        solver.addConstraint({{x, 1}, {y, -1}}, Equal, 0.1);
    solver.addConstraint({{y, 3}, {x, -3}}, Equal, -0.3);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) - solver.value(y) == Approx(0.1));
}

TEST_CASE("many constraints that meet in one point do not make it cycle")
{
    ConstraintSolver solver;
    std::vector<std::size_t> x;
    for (int i = 0; i < 30; ++i)
        x.push_back(solver.addVariable());
    for (auto a : x)
        for (auto b : x)
            solver.addConstraint({{a, 1}, {b, -1}}, Least, 0);
    for (auto a : x) {
        solver.addConstraint({{a, 1}}, Least, 0);
        solver.addConstraint({{a, 1}}, Most, 7, 400);
        solver.addConstraint({{a, 1}}, Least, 9, 300);
    }
    CHECK(solver.solve().empty());
    for (auto a : x)
        CHECK(solver.value(a) == Approx(7));
}

TEST_CASE("solving again after more constraints takes them all")
{
    ConstraintSolver solver;
    const auto x = solver.addVariable();
    solver.addConstraint({{x, 1}}, Equal, 3, 20);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(3));
    solver.addConstraint({{x, 1}}, Least, 4);
    CHECK(solver.solve().empty());
    CHECK(solver.value(x) == Approx(4));
}

TEST_CASE("a column of 500 rows that has to stretch")
{
    ConstraintSolver solver;
    const auto height = solver.addVariable();
    std::vector<std::size_t> tops, heights;
    constexpr std::size_t rows = 500;
    for (std::size_t i = 0; i < rows; ++i) {
        tops.push_back(solver.addVariable());
        heights.push_back(solver.addVariable());
    }
    solver.addConstraint({{height, 1}}, Equal, 28.0 * rows + 92);
    solver.addConstraint({{tops[0], 1}}, Equal, 0);
    for (std::size_t i = 0; i < rows; ++i) {
        if (i + 1 < rows)
            solver.addConstraint({{tops[i + 1], 1}, {tops[i], -1}, {heights[i], -1}}, Equal, 8);
        solver.addConstraint({{heights[i], 1}}, Least, 10, 999);
        solver.addConstraint({{heights[i], 1}}, Least, 20, 750);
        solver.addConstraint({{heights[i], 1}}, Most, 20, 250);
    }
    solver.addConstraint({{height, 1}, {tops.back(), -1}, {heights.back(), -1}}, Equal, 0);
    const auto start = std::chrono::steady_clock::now();
    CHECK(solver.solve().empty());
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::cout << "solved in " << time.count() << " ms\n";
    double sum = 0;
    for (auto row : heights) {
        CHECK(solver.value(row) >= 20 - 1e-6);
        sum += solver.value(row);
    }
    CHECK(sum == Approx(20.0 * rows + 100));
}
