#include "tests/support/ForkedProcess.h"

#include <cstdio>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void answer(int output, const std::function<std::string()>& body)
{
    int status = 1;
    try {
        const std::string text = body();
        if (::write(output, text.data(), text.size()) == static_cast<ssize_t>(text.size()))
            status = 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
    }
    ::_exit(status);
}

} // namespace

std::string inForkedProcess(const std::function<std::string()>& body)
{
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0)
        answer(ends[1], body);
    ::close(ends[1]);

    std::string text;
    char buffer[4096];
    for (ssize_t count; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    ::close(ends[0]);
    int status = 0;
    if (::waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("the process failed with status " + std::to_string(status));
    return text;
}
