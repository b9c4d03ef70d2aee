#include "schedule/BRVWhenInactiveViewController.h"

#include "protocol/ScheduleSettings.h"

BRVWhenInactiveViewController::BRVWhenInactiveViewController()
    : BRVViewController(BackupsModeWhenInactive, "BRVWhenInactiveViewController")
{
}

platform::Dictionary BRVWhenInactiveViewController::settings()
{
    return {};
}

void BRVWhenInactiveViewController::setSettings(const platform::Dictionary*) { }

void BRVWhenInactiveViewController::connectOutlets(const platform::ui::Interface&) { }
