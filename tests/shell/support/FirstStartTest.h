#pragma once

#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/OfferedPrograms.h"

#include <memory>
#include <string>

// The application as it is launched beside a scheduler helper that nothing was ever set up at and that offers these
// programs. The user's home is /home/anna.
class FirstStartTest {
public:
    explicit FirstStartTest(platform::Dictionary offer, const Machine& machine = {});
    ~FirstStartTest();
    FirstStartTest(const FirstStartTest&) = delete;
    FirstStartTest& operator=(const FirstStartTest&) = delete;

    // Once before anything else.
    void launch();
    // Ends the application and starts it again; the helper and the user's defaults stay.
    void launchAgain();
    // A reply comes with an event, and what it changes is laid out with the next one.
    static void settle();
    void click(const char* control);
    void type(const char* field, const std::string& text);
    void choose(const char* popUp, int index);

    PlayedScheduler scheduler;
    WindowUser page{"firstStartWindow"};
    MainWindowUser main;
    std::shared_ptr<BREditorController> controller;
};

// What a helper says that nothing was ever set up at.
platform::Dictionary freshOffer(platform::Dictionary offer);
