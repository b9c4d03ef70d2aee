#pragma once

#include <cstddef>
#include <vector>

namespace platform::ui {

struct LinearTerm {
    std::size_t variable = 0;
    double coefficient = 0;
};

// constant + the sum of the terms, which stand in the order of their variables, each at most once, none with zero.
struct LinearExpression {
    double constant = 0;
    std::vector<LinearTerm> terms;

    double coefficient(std::size_t variable) const; // 0 for a variable that is not in it
    void erase(std::size_t variable);
};

// A sum's distance from what it should be: two variables, how far it lies above and below, and what a unit of each
// costs.
struct Deviation {
    std::size_t above = 0;
    std::size_t below = 0;
    double costAbove = 0;
    double costBelow = 0;
};

// Variables that are never negative, some of them (the basic ones) expressed by the others, which are zero. Every basic
// variable's constant is its value.
class SimplexTableau {
public:
    // What counts as a contradiction rather than as rounding.
    static constexpr double Tolerance = 1e-6;
    // Below it a coefficient, a value or a gain is what rounding left.
    static constexpr double Negligible = 1e-10;

    // A new variable, zero.
    std::size_t addVariable();
    double value(std::size_t variable) const { return _rows[variable].constant; }

    // Calls `add` with each variable that is not basic and its share in factor times the variable, and returns the
    // constant's share.
    template <class Add>
    double expand(std::size_t variable, double factor, Add add) const
    {
        if (_states[variable] == State::Free)
            add(variable, factor);
        else
            for (const LinearTerm& term : _rows[variable].terms)
                add(term.variable, term.coefficient * factor);
        return _rows[variable].constant * factor;
    }

    // Makes a new variable basic. A negative constant is to be mended by `raise` before anything else.
    void define(std::size_t variable, LinearExpression expression);
    // Changes the others until the basic variable is no longer negative. False, and its row is gone, if nothing can.
    bool raise(std::size_t variable);
    // Keeps a variable that is zero at zero.
    void fix(std::size_t variable);
    // Makes the costs of the deviations as small as they can be, and keeps them so.
    void minimise(const std::vector<Deviation>& deviations);

private:
    enum class State : unsigned char { Free, Basic, Gone };

    // A row in which growing the column's variable stops at `room`, where the row's variable reaches zero.
    struct Limit {
        double room;
        std::size_t row;
    };

    std::size_t addObjective(const std::vector<Deviation>& deviations);
    void maximise(std::size_t objective, bool upToZero);
    const LinearTerm* entering(const LinearExpression& objective, bool careful) const;
    std::vector<Limit> limits(std::size_t column, std::size_t objective);
    std::size_t nearestLimit(const std::vector<Limit>& limits, double most) const;
    std::size_t turnDeviations(std::vector<Limit> limits, const LinearTerm& column);
    void pivot(std::size_t column, std::size_t row);
    void addMultiple(std::size_t row, const LinearExpression& source, double factor);
    void addFew(std::size_t row, const std::vector<LinearTerm>& source, double factor);
    void merge(std::size_t row, const std::vector<LinearTerm>& source, double factor);
    void compactColumn(std::size_t column);
    void dropRow(std::size_t row);

    std::vector<State> _states;
    std::vector<LinearExpression> _rows;
    // The rows that may hold a variable; entries can be stale or twice until `compactColumn`.
    std::vector<std::vector<std::size_t>> _columns;
    // While deviations are minimised: which of them a variable is part of.
    std::vector<const Deviation*> _deviationOf;
    std::vector<LinearTerm> _merged;
};

} // namespace platform::ui
