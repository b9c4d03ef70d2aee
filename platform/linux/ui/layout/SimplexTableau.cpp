#include "platform/linux/ui/layout/SimplexTableau.h"

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

void SimplexTableau::minimise(const std::vector<Deviation>& deviations)
{
    const std::size_t objective = addObjective(deviations);
    _deviationOf.assign(_states.size(), nullptr);
    for (const Deviation& deviation : deviations)
        _deviationOf[deviation.above] = _deviationOf[deviation.below] = &deviation;
    maximise(objective, false);
    _deviationOf.clear();
    const LinearExpression optimum = std::move(_rows[objective]);
    dropRow(objective);
    for (const LinearTerm& term : optimum.terms)
        if (term.coefficient < -Negligible)
            fix(term.variable);
}

// A row for what the deviations cost, negated.
std::size_t SimplexTableau::addObjective(const std::vector<Deviation>& deviations)
{
    const std::size_t objective = addVariable();
    _states[objective] = State::Basic;
    const auto add = [&](std::size_t variable, double cost) {
        if (cost == 0)
            return;
        if (_states[variable] == State::Free)
            addMultiple(objective, {0, {{variable, 1}}}, -cost);
        else
            addMultiple(objective, _rows[variable], -cost);
    };
    for (const Deviation& deviation : deviations) {
        add(deviation.above, deviation.costAbove);
        add(deviation.below, deviation.costBelow);
    }
    return objective;
}

void SimplexTableau::maximise(std::size_t objective, bool upToZero)
{
    int stepsWithoutGain = 0;
    while (_states[objective] == State::Basic) {
        const double before = _rows[objective].constant;
        const bool careful = stepsWithoutGain > PatientSteps;
        const LinearTerm* steepest = entering(_rows[objective], careful);
        if (!steepest || (upToZero && before >= 0))
            return;
        const LinearTerm column = *steepest;
        const double most = upToZero ? -before / column.coefficient : std::numeric_limits<double>::infinity();
        std::vector<Limit> rows = limits(column.variable, objective);
        std::size_t row = upToZero || careful ? nearestLimit(rows, most) : turnDeviations(std::move(rows), column);
        if (row == None && !upToZero)
            return;
        pivot(column.variable, row == None ? objective : row);
        stepsWithoutGain = _rows[objective].constant > before + Negligible ? 0 : stepsWithoutGain + 1;
    }
}

// The steepest column, or, when careful, the first one, which rules out cycles together with the choice of the nearest.
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

std::vector<SimplexTableau::Limit> SimplexTableau::limits(std::size_t column, std::size_t objective)
{
    compactColumn(column);
    std::vector<Limit> found;
    for (std::size_t row : _columns[column]) {
        const double slope = _rows[row].coefficient(column);
        if (row != objective && slope < -Negligible)
            found.push_back({std::max(_rows[row].constant, 0.0) / -slope, row});
    }
    return found;
}

// None when the column's variable may grow up to `most`.
std::size_t SimplexTableau::nearestLimit(const std::vector<Limit>& limits, double most) const
{
    std::size_t nearest = None;
    for (const Limit& limit : limits) {
        if (limit.room < most) {
            most = limit.room;
            nearest = limit.row;
        }
    }
    return nearest;
}

// A deviation need not stop at zero: it can turn into its opposite, as long as the objective still gains from going on.
// A variable that many rows hold so passes all their zeros at once. Returns the row at which it does stop.
std::size_t SimplexTableau::turnDeviations(std::vector<Limit> limits, const LinearTerm& column)
{
    std::ranges::sort(limits, [](const Limit& left, const Limit& right) {
        return left.room != right.room ? left.room < right.room : left.row < right.row;
    });
    double gain = column.coefficient;
    for (const Limit& limit : limits) {
        const Deviation* deviation = limit.row < _deviationOf.size() ? _deviationOf[limit.row] : nullptr;
        if (!deviation)
            return limit.row;
        const std::size_t opposite = limit.row == deviation->above ? deviation->below : deviation->above;
        gain += (deviation->costAbove + deviation->costBelow) * _rows[limit.row].coefficient(column.variable);
        if (_states[opposite] != State::Free || gain < Negligible)
            return limit.row;
        pivot(opposite, limit.row);
    }
    return None;
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
