#include "platform/linux/ui/SimplexTableau.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace platform::ui {

namespace {

// So many steps without a gain make cycling worth guarding against.
constexpr int PatientSteps = 16;
// So many terms are put into a long row one by one rather than by copying the row.
constexpr std::size_t FewTerms = 8;

constexpr std::size_t None = std::numeric_limits<std::size_t>::max();

auto find(std::vector<LinearTerm>& terms, std::size_t variable)
{
    return std::ranges::lower_bound(terms, variable, {}, &LinearTerm::variable);
}

} // namespace

double LinearExpression::coefficient(std::size_t variable) const
{
    auto found = std::ranges::lower_bound(terms, variable, {}, &LinearTerm::variable);
    return found != terms.end() && found->variable == variable ? found->coefficient : 0;
}

void LinearExpression::erase(std::size_t variable)
{
    auto found = find(terms, variable);
    if (found != terms.end() && found->variable == variable)
        terms.erase(found);
}

std::size_t SimplexTableau::addVariable()
{
    _states.push_back(State::Free);
    _rows.emplace_back();
    _columns.emplace_back();
    return _states.size() - 1;
}

void SimplexTableau::define(std::size_t variable, LinearExpression expression)
{
    for (const LinearTerm& term : expression.terms)
        _columns[term.variable].push_back(variable);
    _rows[variable] = std::move(expression);
    _states[variable] = State::Basic;
}

bool SimplexTableau::raise(std::size_t variable)
{
    maximise(variable, true);
    if (_states[variable] == State::Free || _rows[variable].constant >= -Tolerance) {
        _rows[variable].constant = std::max(_rows[variable].constant, 0.0);
        return true;
    }
    dropRow(variable);
    return false;
}

void SimplexTableau::fix(std::size_t variable)
{
    const std::vector<LinearTerm>& terms = _rows[variable].terms;
    if (!terms.empty()) {
        const auto size = [](const LinearTerm& term) { return std::abs(term.coefficient); };
        pivot(std::ranges::max_element(terms, {}, size)->variable, variable);
    }
    for (std::size_t row : _columns[variable])
        _rows[row].erase(variable);
    _columns[variable].clear();
    dropRow(variable);
}

void SimplexTableau::minimise(const std::vector<LinearTerm>& costs)
{
    const std::size_t objective = addVariable();
    _states[objective] = State::Basic;
    for (const LinearTerm& cost : costs) {
        if (_states[cost.variable] == State::Free)
            addMultiple(objective, {0, {{cost.variable, 1}}}, -cost.coefficient);
        else
            addMultiple(objective, _rows[cost.variable], -cost.coefficient);
    }
    maximise(objective, false);
    const LinearExpression optimum = std::move(_rows[objective]);
    dropRow(objective);
    for (const LinearTerm& term : optimum.terms)
        if (term.coefficient < -Negligible)
            fix(term.variable);
}

void SimplexTableau::maximise(std::size_t objective, bool upToZero)
{
    int stepsWithoutGain = 0;
    while (_states[objective] == State::Basic) {
        const LinearExpression& row = _rows[objective];
        const double before = row.constant;
        if (upToZero && before >= 0)
            return;
        const LinearTerm* column = entering(row, stepsWithoutGain > PatientSteps);
        if (!column)
            return;
        const double limit = upToZero ? -before / column->coefficient : std::numeric_limits<double>::infinity();
        const std::size_t blocking = leaving(column->variable, objective, limit);
        if (blocking == None && !upToZero)
            return;
        pivot(column->variable, blocking == None ? objective : blocking);
        stepsWithoutGain = _rows[objective].constant > before + Negligible ? 0 : stepsWithoutGain + 1;
    }
}

// The steepest column, or, when careful, the first one, which rules out cycles together with the choice in `leaving`.
const LinearTerm* SimplexTableau::entering(const LinearExpression& objective, bool careful) const
{
    const LinearTerm* best = nullptr;
    for (const LinearTerm& term : objective.terms) {
        if (term.coefficient > Negligible && (!best || term.coefficient > best->coefficient))
            best = &term;
        if (best && careful)
            break;
    }
    return best;
}

// The row whose variable is the first to reach zero when the column's grows; None when it may grow up to the limit.
std::size_t SimplexTableau::leaving(std::size_t column, std::size_t objective, double limit)
{
    compactColumn(column);
    std::size_t first = None;
    double least = limit;
    for (std::size_t row : _columns[column]) {
        const double slope = _rows[row].coefficient(column);
        if (row == objective || slope > -Negligible)
            continue;
        const double room = std::max(_rows[row].constant, 0.0) / -slope;
        if (room < least) {
            least = room;
            first = row;
        }
    }
    return first;
}

void SimplexTableau::pivot(std::size_t column, std::size_t row)
{
    LinearExpression solved = std::exchange(_rows[row], {});
    const double divisor = -solved.coefficient(column);
    solved.erase(column);
    solved.constant /= divisor;
    for (LinearTerm& term : solved.terms)
        term.coefficient /= divisor;
    solved.terms.insert(find(solved.terms, row), {row, -1 / divisor});
    _states[row] = State::Free;

    compactColumn(column);
    for (std::size_t other : std::exchange(_columns[column], {})) {
        const double factor = _rows[other].coefficient(column);
        _rows[other].erase(column);
        addMultiple(other, solved, factor);
    }
    define(column, std::move(solved));
}

void SimplexTableau::addMultiple(std::size_t row, const LinearExpression& source, double factor)
{
    LinearExpression& target = _rows[row];
    target.constant += factor * source.constant;
    if (std::abs(target.constant) < Negligible)
        target.constant = 0;
    if (source.terms.size() <= FewTerms)
        addFew(row, source.terms, factor);
    else
        merge(row, source.terms, factor);
}

void SimplexTableau::addFew(std::size_t row, const std::vector<LinearTerm>& source, double factor)
{
    std::vector<LinearTerm>& target = _rows[row].terms;
    for (const LinearTerm& term : source) {
        auto own = find(target, term.variable);
        if (own == target.end() || own->variable != term.variable) {
            own = target.insert(own, {term.variable, 0});
            _columns[term.variable].push_back(row);
        }
        own->coefficient += factor * term.coefficient;
        if (std::abs(own->coefficient) <= Negligible)
            target.erase(own);
    }
}

void SimplexTableau::merge(std::size_t row, const std::vector<LinearTerm>& source, double factor)
{
    std::vector<LinearTerm>& target = _rows[row].terms;
    _merged.clear();
    auto own = target.begin();
    for (const LinearTerm& term : source) {
        while (own != target.end() && own->variable < term.variable)
            _merged.push_back(*own++);
        double coefficient = factor * term.coefficient;
        if (own != target.end() && own->variable == term.variable)
            coefficient += own++->coefficient;
        else
            _columns[term.variable].push_back(row);
        if (std::abs(coefficient) > Negligible)
            _merged.push_back({term.variable, coefficient});
    }
    _merged.insert(_merged.end(), own, target.end());
    target.swap(_merged);
}

// In ascending order, so that the first of equal rows is the one with the lowest variable.
void SimplexTableau::compactColumn(std::size_t column)
{
    std::vector<std::size_t>& rows = _columns[column];
    std::erase_if(rows, [&](std::size_t row) { return _rows[row].coefficient(column) == 0; });
    std::ranges::sort(rows);
    const auto repeated = std::ranges::unique(rows);
    rows.erase(repeated.begin(), repeated.end());
}

void SimplexTableau::dropRow(std::size_t row)
{
    _rows[row] = {};
    _states[row] = State::Gone;
}

} // namespace platform::ui
