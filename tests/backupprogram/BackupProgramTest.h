#pragma once

#include "backupprogram/BRVBackupProgramController.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/OfferedPrograms.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

// The window beside a scheduler helper that replies this to message 7.
class BackupProgramTest {
public:
    explicit BackupProgramTest(platform::Dictionary reply) : scheduler((setUp({}), ScheduleSettings()))
    {
        scheduler.setBackupProgram(std::move(reply));
    }
    ~BackupProgramTest()
    {
        controller.reset();
        settle();
    }
    BackupProgramTest(const BackupProgramTest&) = delete;
    BackupProgramTest& operator=(const BackupProgramTest&) = delete;

    void show()
    {
        controller->showWindow();
        settle();
    }
    void click(const char* control)
    {
        user.click(control);
        settle();
    }
    // A reply comes with an event, and what it changes is laid out with the next one.
    static void settle();
    // By its title.
    void select(const std::string& program);
    void type(const char* field, const std::string& text)
    {
        user.replaceText(field, text);
        settle();
    }
    // In the file dialog that is open.
    static void answerPanel(const std::string& path);
    static void cancelPanel();

    const std::vector<platform::Dictionary>& sent() const { return scheduler.payloads(12); }

    PlayedScheduler scheduler;
    WindowUser user{"backupProgramWindow"};
    std::shared_ptr<BRVBackupProgramController> controller = BRVBackupProgramController::create();
};

platform::Dictionary borgChoice(const platform::Array& folders, const std::string& repository);
