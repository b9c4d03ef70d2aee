#pragma once

#include "helper/linux/programs/ProgramCatalog.h"
#include "helper/SettingsValidator.h"

#include <optional>
#include <string>
#include <vector>

namespace helper {

// Whether a choice of a backup program can be taken: {Program, Fields, PreventSleep} with a program of the catalogue
// and every field as its kind wants it. No field can become an option, a command or another file than it names, and
// what a program writes to is the administrator's alone, or a disk to which the program is confined: nobody becomes the
// administrator by a choice.
class ProgramFields {
public:
    // nullopt for a good choice. An empty one chooses none.
    static std::optional<SettingsFault> faultInChoice(const platform::Dictionary& choice,
                                                      const ProgramCatalog& catalog);

    // Of the fields alone, as they have to be again when the program is started.
    static std::optional<SettingsFault> faultInFields(const platform::Dictionary& fields,
                                                      const ProgramDescription& program);

    // The mount points of the disks of users that the fields' destinations are on. A backup there has to be confined to
    // them.
    static std::vector<std::string> disks(const platform::Dictionary& fields, const ProgramDescription& program);

    // Of a good choice that was made without a password: whoever made it could read on a disk of his own what only the
    // administrator may read of this computer's.
    static std::optional<SettingsFault> faultWithoutPassword(const platform::Dictionary& choice,
                                                             const ProgramCatalog& catalog);
};

} // namespace helper
