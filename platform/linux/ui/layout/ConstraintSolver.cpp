#include "platform/linux/ui/layout/ConstraintSolver.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <queue>
#include <utility>

namespace platform::ui {

namespace {

// A variable whose coefficient is smaller than this share of the largest is a poor one to divide by.
constexpr double SmallestShare = 0.01;

void scale(std::vector<LinearTerm>& terms, double factor)
{
    for (LinearTerm& term : terms)
        term.coefficient *= factor;
}

} // namespace

bool ConstraintSolver::Sum::add(std::size_t variable, double coefficient)
{
    if (variable >= _coefficients.size()) {
        _coefficients.resize(variable + 1);
        _contained.resize(variable + 1);
    }
    _coefficients[variable] += coefficient;
    if (_contained[variable])
        return false;
    _contained[variable] = true;
    _variables.push_back(variable);
    return true;
}

double ConstraintSolver::Sum::remove(std::size_t variable)
{
    return std::exchange(_coefficients[variable], 0);
}

ConstraintSolver::Terms ConstraintSolver::Sum::take()
{
    std::ranges::sort(_variables);
    Terms terms;
    terms.reserve(_variables.size());
    for (std::size_t variable : _variables) {
        const double coefficient = remove(variable);
        _contained[variable] = false;
        if (std::abs(coefficient) > SimplexTableau::Negligible)
            terms.push_back({variable, coefficient});
    }
    _variables.clear();
    return terms;
}

std::size_t ConstraintSolver::addVariable()
{
    _occurrences.push_back(0);
    return _occurrences.size() - 1;
}

std::size_t ConstraintSolver::addConstraint(Terms terms, LayoutRelation relation, double constant, int priority,
                                            double weight)
{
    for (const LinearTerm& term : terms)
        _variableSum.add(term.variable, term.coefficient);
    terms = _variableSum.take();
    for (const LinearTerm& term : terms)
        ++_occurrences[term.variable];
    _constraints.push_back({std::move(terms), relation, constant, priority, weight});
    return _constraints.size() - 1;
}

std::vector<std::size_t> ConstraintSolver::solve()
{
    std::vector<std::size_t> refused = requireAll(sparseOrder());
    // Which one of several contradicting constraints is left out depends on the order.
    if (!refused.empty())
        refused = requireAll(orderOfAddition());
    preferAll();
    evaluate();
    return refused;
}

// First the equalities with a variable that no other remaining equality holds: that variable's definition then never
// needs another one's, so that long chains stay sums of two terms. Then the other equalities, then the inequalities.
std::vector<ConstraintSolver::Step> ConstraintSolver::sparseOrder() const
{
    std::vector<std::vector<std::size_t>> equalitiesOf(variableCount());
    for (std::size_t i = 0; i < _constraints.size(); ++i)
        if (_constraints[i].priority == LayoutConstraint::Required && _constraints[i].relation == LayoutRelation::Equal)
            for (const LinearTerm& term : _constraints[i].terms)
                equalitiesOf[term.variable].push_back(i);
    std::vector<std::size_t> remaining(variableCount());
    std::vector<std::size_t> single;
    for (std::size_t variable = 0; variable < variableCount(); ++variable) {
        remaining[variable] = equalitiesOf[variable].size();
        if (remaining[variable] == 1)
            single.push_back(variable);
    }

    std::vector<Step> steps;
    std::vector<bool> taken(_constraints.size());
    while (!single.empty()) {
        const std::size_t subject = single.back();
        single.pop_back();
        const auto equality = std::ranges::find_if(equalitiesOf[subject], [&](std::size_t i) { return !taken[i]; });
        if (equality == equalitiesOf[subject].end())
            continue;
        taken[*equality] = true;
        steps.push_back({*equality, subject});
        for (const LinearTerm& term : _constraints[*equality].terms)
            if (--remaining[term.variable] == 1)
                single.push_back(term.variable);
    }
    std::vector<Step> others = orderOfAddition();
    std::erase_if(others, [&](const Step& step) { return taken[step.constraint]; });
    std::ranges::stable_partition(
        others, [&](const Step& step) { return _constraints[step.constraint].relation == LayoutRelation::Equal; });
    steps.insert(steps.end(), others.begin(), others.end());
    return steps;
}

std::vector<ConstraintSolver::Step> ConstraintSolver::orderOfAddition() const
{
    std::vector<Step> steps;
    for (std::size_t i = 0; i < _constraints.size(); ++i)
        if (_constraints[i].priority == LayoutConstraint::Required)
            steps.push_back({i, std::nullopt});
    return steps;
}

std::vector<std::size_t> ConstraintSolver::requireAll(const std::vector<Step>& steps)
{
    _tableau = {};
    _definitions.clear();
    _definitionOf.assign(variableCount(), std::nullopt);
    std::vector<std::size_t> refused;
    for (const Step& step : steps)
        if (!require(step))
            refused.push_back(step.constraint);
    return refused;
}

bool ConstraintSolver::require(const Step& step)
{
    const Constraint& constraint = _constraints[step.constraint];
    const bool equality = constraint.relation == LayoutRelation::Equal;
    Form form = reduced(constraint);
    if (form.variables.empty())
        return requireOfSlacks(std::move(form), equality);
    if (!equality)
        form.slacks.push_back({_tableau.addVariable(), -1});
    const std::size_t subject = step.subject ? *step.subject : cheapestSubject(form.variables);
    define(subject, std::move(form));
    return true;
}

bool ConstraintSolver::requireOfSlacks(Form form, bool equality)
{
    if (equality && form.constant > 0) {
        form.constant = -form.constant;
        scale(form.slacks, -1);
    }
    if (form.slacks.empty())
        return form.constant >= -SimplexTableau::Tolerance;
    const std::size_t slack = _tableau.addVariable();
    _tableau.define(slack, {form.constant, std::move(form.slacks)});
    if (!_tableau.raise(slack))
        return false;
    if (equality)
        _tableau.fix(slack);
    return true;
}

void ConstraintSolver::preferAll()
{
    std::vector<std::size_t> order(_constraints.size());
    std::iota(order.begin(), order.end(), 0);
    const auto priority = [&](std::size_t i) { return _constraints[i].priority; };
    std::erase_if(order, [&](std::size_t i) { return priority(i) == LayoutConstraint::Required; });
    std::ranges::stable_sort(order, std::greater(), priority);
    for (auto first = order.begin(); first != order.end();) {
        const auto last =
            std::find_if(first, order.end(), [&](std::size_t i) { return priority(i) != priority(*first); });
        std::vector<Deviation> deviations;
        std::for_each(first, last, [&](std::size_t i) { prefer(_constraints[i], deviations); });
        _tableau.minimise(deviations);
        first = last;
    }
}

void ConstraintSolver::prefer(const Constraint& constraint, std::vector<Deviation>& deviations)
{
    Form form = reduced(constraint);
    if (form.variables.empty() && form.slacks.empty())
        return;
    const std::size_t above = _tableau.addVariable();
    const std::size_t below = _tableau.addVariable();
    const double costAbove = constraint.relation == LayoutRelation::Equal ? constraint.weight : 0;
    deviations.push_back({above, below, costAbove, constraint.weight});
    if (!form.variables.empty()) {
        form.slacks.push_back({above, -1});
        form.slacks.push_back({below, 1});
        const std::size_t subject = cheapestSubject(form.variables);
        define(subject, std::move(form));
    } else if (form.constant >= 0) {
        form.slacks.push_back({below, 1});
        _tableau.define(above, {form.constant, std::move(form.slacks)});
    } else {
        scale(form.slacks, -1);
        form.slacks.push_back({above, 1});
        _tableau.define(below, {-form.constant, std::move(form.slacks)});
    }
}

void ConstraintSolver::evaluate()
{
    _values.assign(variableCount(), 0);
    for (auto definition = _definitions.rbegin(); definition != _definitions.rend(); ++definition) {
        double value = definition->form.constant;
        for (const LinearTerm& term : definition->form.variables)
            value += term.coefficient * _values[term.variable];
        for (const LinearTerm& term : definition->form.slacks)
            value += term.coefficient * _tableau.value(term.variable);
        _values[definition->variable] = value;
    }
}

// The constraint as a form that is to be at least zero, or zero.
ConstraintSolver::Form ConstraintSolver::reduced(const Constraint& constraint)
{
    const double sign = constraint.relation == LayoutRelation::LessThanOrEqual ? -1 : 1;
    Form form{-sign * constraint.constant, {}, {}};
    std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> pending;
    const auto addVariable = [&](std::size_t variable, double coefficient) {
        if (_variableSum.add(variable, coefficient) && _definitionOf[variable])
            pending.push(*_definitionOf[variable]);
    };
    for (const LinearTerm& term : constraint.terms)
        addVariable(term.variable, sign * term.coefficient);
    // In the order of the definitions, each is met only after all that lead to it.
    for (; !pending.empty(); pending.pop()) {
        const Definition& definition = _definitions[pending.top()];
        const double factor = _variableSum.remove(definition.variable);
        form.constant += factor * definition.form.constant;
        for (const LinearTerm& term : definition.form.variables)
            addVariable(term.variable, factor * term.coefficient);
        for (const LinearTerm& term : definition.form.slacks)
            form.constant += _tableau.expand(term.variable, factor * term.coefficient,
                                             [&](std::size_t slack, double share) { _slackSum.add(slack, share); });
    }
    form.variables = _variableSum.take();
    form.slacks = _slackSum.take();
    if (std::abs(form.constant) < SimplexTableau::Negligible)
        form.constant = 0;
    return form;
}

// From the form being zero.
void ConstraintSolver::define(std::size_t variable, Form form)
{
    const auto own = std::ranges::find(form.variables, variable, &LinearTerm::variable);
    const double factor = -1 / own->coefficient;
    form.variables.erase(own);
    form.constant *= factor;
    scale(form.variables, factor);
    scale(form.slacks, factor);
    _definitionOf[variable] = _definitions.size();
    _definitions.push_back({variable, std::move(form)});
}

// The one that the fewest constraints hold, since each of them will have to be put in the other's terms.
std::size_t ConstraintSolver::cheapestSubject(const Terms& variables) const
{
    double largest = 0;
    for (const LinearTerm& term : variables)
        largest = std::max(largest, std::abs(term.coefficient));
    const LinearTerm* best = nullptr;
    for (const LinearTerm& term : variables)
        if (std::abs(term.coefficient) >= SmallestShare * largest
            && (!best || _occurrences[term.variable] <= _occurrences[best->variable]))
            best = &term;
    return best->variable;
}

} // namespace platform::ui
