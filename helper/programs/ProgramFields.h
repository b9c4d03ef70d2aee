#pragma once

#include "helper/programs/ProgramCatalog.h"
#include "helper/SettingsValidator.h"

#include <optional>

namespace helper {

// Whether a choice of a backup program can be taken: {Program, Fields, PreventSleep} with a program of the catalogue
// and every field as its kind wants it. No field can become an option, a command or another file than it names, and
// what a program writes to is the administrator's alone: nobody becomes the administrator by a choice.
class ProgramFields {
public:
    // Nothing for a good choice. An empty one chooses none.
    static std::optional<SettingsFault> faultInChoice(const platform::Dictionary& choice,
                                                      const ProgramCatalog& catalog);

    // Of the fields alone, as they have to be again when the program is started.
    static std::optional<SettingsFault> faultInFields(const platform::Dictionary& fields,
                                                      const ProgramDescription& program);
};

} // namespace helper
