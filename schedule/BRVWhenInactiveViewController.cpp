#include "schedule/BRVWhenInactiveViewController.h"

#include "schedule/ScheduleSettings.h"

BRVWhenInactiveViewController::BRVWhenInactiveViewController()
    : BRVViewController(backupsModeForIndex(OperationModeWhenInactive), "BRVWhenInactiveViewController")
{
}

platform::Dictionary BRVWhenInactiveViewController::settings() const
{
    return {};
}

void BRVWhenInactiveViewController::setSettings(const platform::Dictionary*) { }

void BRVWhenInactiveViewController::connectOutlets(const platform::ui::Interface&) { }
