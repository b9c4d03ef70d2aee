#pragma once

#include "helper/macos/timemachine/TimeMachineTool.h"
#include "tests/helper-macos/StandInProgram.h"

// In the place of Time Machine's tool: no backup runs at first.
class StandInTool : public StandInProgram {
public:
    StandInTool() : StandInProgram("tmutil") { say("status", idle); }

    helper::TimeMachineTool tool() const { return helper::TimeMachineTool(path()); }

    void sayPhase(const std::string& phase, bool isStopping = false) const
    {
        say("status",
            "Backup session status:\n{\n    BackupPhase = " + phase
                + ";\n    ClientID = \"com.apple.backupd\";\n    Running = 1;\n    Stopping = "
                + (isStopping ? "1" : "0") + ";\n}\n");
    }

    static constexpr const char* idle = "Backup session status:\n{\n    ClientID = \"com.apple.backupd\";\n    Percent "
                                        "= \"-1\";\n    Running = 0;\n}\n";
};
