#pragma once

#include "platform/PropertyList.h"

#include <string>
#include <vector>

// What the scheduler helper of the Linux edition replies to message 7: the installation's programs, of which these are
// installed, and this choice.
platform::Dictionary offerOfPrograms(const std::vector<std::string>& installed,
                                     const platform::Dictionary& choice = {});

// The same with a program that has no settings of its own yet.
platform::Dictionary offerWithoutSettings(const std::string& installed, const std::string& missing);
