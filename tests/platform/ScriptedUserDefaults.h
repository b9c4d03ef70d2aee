#pragma once

#include "platform/UserDefaults.h"

// The application's user defaults. One thread at a time.
namespace scripted::defaults {

void reset(); // none, and they can be written
// From now on nothing can be written or removed.
void setReadOnly(bool readOnly);

platform::Dictionary all();
// How often the whole domain was removed since reset().
int removals();

} // namespace scripted::defaults
