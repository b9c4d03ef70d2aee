#pragma once

#include "platform/Error.h"

#include <functional>

// Posted when an installation is asked for, before the user allows it, and when it comes to nothing.
inline constexpr const char* BRVWillInstallUpdate = "BRVWillInstallUpdate";
inline constexpr const char* BRVDidFailToInstallUpdate = "BRVDidFailToInstallUpdate";

// Asks the scheduler helper for a newer version, tells the outcome and has it installed. Main thread only; the alerts
// are modal.
class BRUpdateController {
public:
    using Completion = std::function<void()>;

    BRUpdateController() = delete;

    // Returns at once. The completion runs once, when the check has ended; but never after an installation was asked
    // for and not refused, since the new version then takes over.
    static void checkUpdatesWithCompletionHandler(Completion completion);
    // Offers the version that the helper's reply to message 26 tells of.
    static void displayUpdateAlertWithInfo(const platform::Dictionary& info, const Completion& completion);
    static void updateWithCompletionHandler(Completion completion);
    static void displayUpToDateAlert();
    static void displayFetchInfoAlertWithError(const platform::Error& error);
    static void displayUpdateAlertWithError(const platform::Error& error);
};
