#pragma once

#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <string>
#include <sys/stat.h>

// A program in the place of one of the system's. It tells its arguments in the file "calls". For each first argument it
// runs the shell's lines in the file ARGUMENT.sh, prints the file ARGUMENT and, as errors, ARGUMENT.errors, and ends
// with the status in ARGUMENT.status, whichever of them are there.
class StandInProgram {
public:
    explicit StandInProgram(const std::string& name) : _name(name)
    {
        const auto made = folder.write(name, R"script(#!/bin/sh
cd "${0%/*}"
echo "$@" >>calls
[ ! -e "./$1.sh" ] || . "./$1.sh"
[ ! -e "./$1" ] || cat "./$1"
[ ! -e "./$1.errors" ] || cat "./$1.errors" >&2
[ ! -e "./$1.status" ] || exit "$(cat "./$1.status")"
)script");
        ::chmod(made.c_str(), 0755);
    }

    std::string path() const { return folder.file(_name); }

    void say(const std::string& argument, const std::string& output) const
    {
        // In one step, since the program may just be reading.
        const auto made = folder.write(argument + ".new", output);
        ::rename(made.c_str(), folder.file(argument).c_str());
    }
    void complain(const std::string& argument, const std::string& errors, int status) const
    {
        folder.write(argument + ".errors", errors);
        folder.write(argument + ".status", std::to_string(status) + "\n");
    }
    void act(const std::string& argument, const std::string& lines) const
    {
        folder.write(argument + ".sh", lines + "\n");
    }

    std::string calls() const { return contentOfFile(folder.file("calls")); }

    TemporaryDirectory folder;

private:
    std::string _name;
};
