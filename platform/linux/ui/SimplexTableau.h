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
    // Makes the weighted sum of the variables as small as it can be, and keeps it so.
    void minimise(const std::vector<LinearTerm>& costs);

private:
    enum class State : unsigned char { Free, Basic, Gone };

    void maximise(std::size_t objective, bool upToZero);
    const LinearTerm* entering(const LinearExpression& objective, bool careful) const;
    std::size_t leaving(std::size_t column, std::size_t objective, double limit);
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
    std::vector<LinearTerm> _merged;
};

} // namespace platform::ui
