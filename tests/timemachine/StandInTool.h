#pragma once

#include "helper/macos/timemachine/TimeMachineTool.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <string>
#include <sys/stat.h>

// A program in the place of Time Machine's tool. For each of the tool's verbs it prints the file of that name, and ends
// with the status in the file VERB.status, if there is one.
class StandInTool {
public:
    StandInTool()
    {
        const auto path = folder.write("tmutil", R"script(#!/bin/sh
cd "${0%/*}"
echo "$@" >>calls
[ ! -e "$1" ] || cat "$1"
[ ! -e "$1.errors" ] || cat "$1.errors" >&2
[ ! -e "$1.status" ] || exit "$(cat "$1.status")"
)script");
        ::chmod(path.c_str(), 0755);
        say("status", idle);
    }

    std::string path() const { return folder.file("tmutil"); }
    helper::TimeMachineTool tool() const { return helper::TimeMachineTool(path()); }

    void say(const std::string& verb, const std::string& output) const
    {
        // In one step, since the tool may just be reading.
        const auto made = folder.write(verb + ".new", output);
        ::rename(made.c_str(), folder.file(verb).c_str());
    }
    void sayPhase(const std::string& phase, bool isStopping = false) const
    {
        say("status",
            "Backup session status:\n{\n    BackupPhase = " + phase
                + ";\n    ClientID = \"com.apple.backupd\";\n    Running = 1;\n    Stopping = "
                + (isStopping ? "1" : "0") + ";\n}\n");
    }
    void complain(const std::string& verb, const std::string& errors, int status) const
    {
        folder.write(verb + ".errors", errors);
        folder.write(verb + ".status", std::to_string(status) + "\n");
    }

    std::string calls() const { return contentOfFile(folder.file("calls")); }

    static constexpr const char* idle = "Backup session status:\n{\n    ClientID = \"com.apple.backupd\";\n    Percent "
                                        "= \"-1\";\n    Running = 0;\n}\n";

    TemporaryDirectory folder;
};
