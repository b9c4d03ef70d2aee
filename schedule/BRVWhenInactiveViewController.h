#pragma once

#include "schedule/BRVViewController.h"

// The editor of the mode that has nothing to edit.
class BRVWhenInactiveViewController : public BRVViewController {
public:
    BRVWhenInactiveViewController();

    platform::Dictionary settings() override;                        // always empty
    void setSettings(const platform::Dictionary* settings) override; // ignored

protected:
    void connectOutlets(const platform::ui::Interface& interface) override;
};
