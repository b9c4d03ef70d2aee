#pragma once

#include <cstdlib>
#include <optional>
#include <string>

// Sets or, without a value, removes a variable of the environment while it lives.
class EnvironmentVariable {
public:
    explicit EnvironmentVariable(const char* name, const std::optional<std::string>& value = std::nullopt) : _name(name)
    {
        if (const char* earlier = std::getenv(name))
            _earlier = earlier;
        put(value);
    }
    ~EnvironmentVariable() { put(_earlier); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    void put(const std::optional<std::string>& value) const
    {
        value ? ::setenv(_name, value->c_str(), 1) : ::unsetenv(_name);
    }

private:
    const char* _name;
    std::optional<std::string> _earlier;
};
