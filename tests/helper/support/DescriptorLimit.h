#pragma once

#include <doctest/doctest.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

// Lets this process open so many files more, and no other, as long as it lasts.
class DescriptorLimit {
public:
    explicit DescriptorLimit(int count)
    {
        REQUIRE(::getrlimit(RLIMIT_NOFILE, &_before) == 0);
        std::vector<int> free;
        while (static_cast<int>(free.size()) <= count)
            free.push_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        for (const int descriptor : free)
            ::close(descriptor);
        auto limit = _before;
        limit.rlim_cur = static_cast<rlim_t>(free.back());
        REQUIRE(::setrlimit(RLIMIT_NOFILE, &limit) == 0);
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &_before); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    rlimit _before{};
};
