"""Checks solutions of constraint systems, one JSON object a line on standard input, against an independent solver.

For each system: the same required constraints are refused, the others hold, and each priority's weighted sum of
violations is the least that the higher priorities allow.
"""

import json
import os
import sys

import kiwisolver

REQUIRED = 1000
TOLERANCE = 1e-5


def total(terms, values):
    return sum(coefficient * values[variable] for variable, coefficient in terms)


def violation(terms, relation, constant, values):
    difference = total(terms, values) - constant
    if relation == 0:
        return abs(difference)
    return max(0.0, -relation * difference)


def expression(terms, variables):
    return kiwisolver.Expression([variables[variable] * coefficient for variable, coefficient in terms], 0)


def constraint(terms, relation, constant, variables):
    side = expression(terms, variables)
    if relation == 0:
        return side == constant
    return side >= constant if relation > 0 else side <= constant


def solver_of(constraints):
    solver = kiwisolver.Solver()
    for accepted in constraints:
        solver.addConstraint(accepted)
    return solver


def require_all(constraints, variables):
    """A solver of the required constraints that go together, and the numbers of the others."""
    solver = kiwisolver.Solver()
    accepted = []
    refused = []
    for number, (terms, relation, constant, priority, _) in enumerate(constraints):
        if priority != REQUIRED:
            continue
        wanted = constraint(terms, relation, constant, variables)
        try:
            solver.addConstraint(wanted)
            accepted.append(wanted)
        except kiwisolver.UnsatisfiableConstraint:
            refused.append(number)
            # The failed attempt leaves its traces in the solver.
            solver = solver_of(accepted)
    return solver, refused


def least_violations(solver, constraints, variables):
    """Minimises one priority after the other, each under what the ones before it reached."""
    least = {}
    for level in sorted({entry[3] for entry in constraints} - {REQUIRED}, reverse=True):
        terms = []
        for number, (sides, relation, constant, priority, weight) in enumerate(constraints):
            if priority != level:
                continue
            error = kiwisolver.Variable(f"error {number}")
            solver.addConstraint((error >= 0) | "required")
            side = expression(sides, variables) - constant
            if relation <= 0:
                solver.addConstraint((error >= side) | "required")
            if relation >= 0:
                solver.addConstraint((error >= -1 * side) | "required")
            terms.append(error * weight)
        violations = kiwisolver.Expression(terms, 0)
        wish = (violations == 0) | "strong"
        solver.addConstraint(wish)
        solver.updateVariables()
        least[level] = violations.value()
        solver.removeConstraint(wish)
        solver.addConstraint((violations <= least[level] + 1e-7) | "required")
    return least


def check(system):
    constraints = system["constraints"]
    values = system["values"]
    variables = [kiwisolver.Variable(str(number)) for number in range(len(values))]
    solver, refused = require_all(constraints, variables)
    if refused != system["refused"]:
        return f"refused {system['refused']}, the other solver {refused}"
    for number, (terms, relation, constant, priority, _) in enumerate(constraints):
        if priority == REQUIRED and number not in refused and violation(terms, relation, constant, values) > TOLERANCE:
            return f"required constraint {number} does not hold"
    for level, least in least_violations(solver, constraints, variables).items():
        reached = sum(weight * violation(terms, relation, constant, values)
                      for terms, relation, constant, priority, weight in constraints if priority == level)
        if abs(reached - least) > TOLERANCE * (1 + abs(least)):
            return f"priority {level}: violations {reached}, the other solver {least}"
    return None


def checked_in_child(number, line):
    """0 for agreement, 1 for a difference, negative where the other solver ended its process by an internal error."""
    child = os.fork()
    if child == 0:
        problem = check(json.loads(line))
        if problem:
            print(f"system {number}: {problem}\n{line}", flush=True)
        os._exit(1 if problem else 0)
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


def main():
    results = [checked_in_child(number, line) for number, line in enumerate(sys.stdin, 1)]
    differ = sum(result > 0 for result in results)
    failed = sum(result < 0 for result in results)
    print(f"compared {len(results)} systems: {differ} differ, the other solver failed on {failed}")
    return 0 if results and not differ and failed * 100 <= len(results) else 1


if __name__ == "__main__":
    sys.exit(main())
