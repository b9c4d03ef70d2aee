#include "tests/shell/support/FirstStartTest.h"

#include "protocol/BackupProgram.h"
#include "protocol/ScheduleRanges.h"
#include "tests/platform/ScriptedSystemInformation.h"

#include <utility>

platform::Dictionary freshOffer(platform::Dictionary offer)
{
    offer.set(BackupProgramKey::NeverApplied, true);
    return offer;
}

FirstStartTest::FirstStartTest(platform::Dictionary offer, const Machine& machine)
    : scheduler((setUp(machine), defaultScheduleSettings()))
{
    scripted::system::setHomeDirectory("/home/anna");
    scheduler.setBackupProgram(freshOffer(std::move(offer)));
}

FirstStartTest::~FirstStartTest()
{
    while (user::currentAlert())
        main.dismissAlert();
    controller.reset();
    settle();
}

void FirstStartTest::launch()
{
    controller = BREditorController::create();
    user::launch(controller);
    settle();
}

void FirstStartTest::launchAgain()
{
    controller.reset();
    settle();
    launch();
}

void FirstStartTest::settle()
{
    for (int round = 0; round < 3; ++round)
        user::runEvents();
}

void FirstStartTest::click(const char* control)
{
    page.click(control);
    settle();
}

void FirstStartTest::type(const char* field, const std::string& text)
{
    page.replaceText(field, text);
    settle();
}

void FirstStartTest::choose(const char* popUp, int index)
{
    page.choose(popUp, index);
    settle();
}
