#pragma once

#include <string>
#include <vector>

class Onlooker;

// One state of the application, brought about by what a person does or meets.
struct State {
    std::string name;
    void (*show)(Onlooker& onlooker);
};

const std::vector<State>& states();
