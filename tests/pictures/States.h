#pragma once

#include <string>
#include <vector>

class Photographer;

// One state of the application, brought about by what a person does or meets.
struct State {
    std::string name;
    void (*show)(Photographer& photographer);
};

const std::vector<State>& states();
