#pragma once

#include <functional>
#include <string>

// Runs the body in a process of its own, a fork of the test's, and returns the text that it returns. For what must not
// stay in the test's process, such as another user id. The body must not start threads. Throws when the process does
// not end as it should.
std::string inForkedProcess(const std::function<std::string()>& body);
