#pragma once

#include "platform/linux/ui/layout/SimplexTableau.h"
#include "platform/ui/LayoutConstraint.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace platform::ui {

// Finds values for variables under linear constraints. Constraints of priority 1000 hold. The others hold as well as
// those of higher priorities let them: among all solutions that are best for the higher ones, a priority's solution
// makes the weighted sum of its constraints' violations the least. What the constraints leave open is decided, but not
// defined.
class ConstraintSolver {
public:
    using Terms = std::vector<LinearTerm>;

    // Any real number.
    std::size_t addVariable();
    std::size_t variableCount() const { return _occurrences.size(); }

    // The sum of the terms `relation` the constant. Returns the constraint's number, counted from 0. The priority is
    // from 1 to 1000, the weight positive and without meaning for required ones.
    std::size_t addConstraint(Terms terms, LayoutRelation relation, double constant,
                              int priority = LayoutConstraint::Required, double weight = 1);

    // Returns the required constraints that contradict required ones added before them. They were left out.
    std::vector<std::size_t> solve();

    // Of the last `solve`.
    double value(std::size_t variable) const { return _values[variable]; }

private:
    struct Constraint {
        Terms terms;
        LayoutRelation relation;
        double constant;
        int priority;
        double weight;
    };
    // A required constraint, and the variable that it shall express where that is known to be cheap.
    struct Step {
        std::size_t constraint;
        std::optional<std::size_t> subject;
    };
    // A sum over variables that no definition expresses and over the tableau's.
    struct Form {
        double constant = 0;
        Terms variables;
        Terms slacks;
    };
    // The variables in its form are expressed by later definitions or by none.
    struct Definition {
        std::size_t variable;
        Form form;
    };
    // Sums coefficients by variable.
    class Sum {
    public:
        bool add(std::size_t variable, double coefficient); // true when the variable is new in the sum
        double remove(std::size_t variable);
        Terms take();

    private:
        std::vector<double> _coefficients;
        std::vector<bool> _contained;
        std::vector<std::size_t> _variables;
    };

    std::vector<Step> sparseOrder() const;
    std::vector<Step> orderOfAddition() const;
    std::vector<std::size_t> requireAll(const std::vector<Step>& steps);
    bool require(const Step& step);
    bool requireOfSlacks(Form form, bool equality);
    void preferAll();
    void prefer(const Constraint& constraint, std::vector<Deviation>& deviations);
    void evaluate();

    Form reduced(const Constraint& constraint);
    void define(std::size_t variable, Form form);
    std::size_t cheapestSubject(const Terms& variables) const;

    std::vector<Constraint> _constraints;
    std::vector<std::size_t> _occurrences;
    std::vector<double> _values;

    SimplexTableau _tableau;
    std::vector<Definition> _definitions;
    std::vector<std::optional<std::size_t>> _definitionOf;
    Sum _variableSum;
    Sum _slackSum;
};

} // namespace platform::ui
