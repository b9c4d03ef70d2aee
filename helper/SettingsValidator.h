#pragma once

#include "platform/Error.h"
#include "protocol/ErrorCodes.h"

#include <optional>
#include <string>

namespace helper {

// What is wrong with a record: the code is a missing value, a wrong type or an unknown key.
struct SettingsFault {
    BRVErrorCode code;
    std::string key;       // without the keys around it; shortened in the error
    std::string expected;  // the type, or the type and range; only for a wrong type
    std::string path = {}; // of the file system, where that is at fault

    bool operator==(const SettingsFault&) const = default;
    platform::Error error() const; // not logged
};

// Whether a schedule settings record can be enforced. Booleans are numbers of value 0 or 1; integers are whole numbers
// in the range of their key.
class SettingsValidator {
public:
    // A record that is sent must be understood whole. One on disk may come from a later version of this program.
    enum class UnknownKeys { Refused, Ignored };

    // nullopt for a good record. Missing values are looked for last, so one that is reported is all that is wrong.
    static std::optional<SettingsFault> faultInSettings(const platform::Dictionary& settings,
                                                        UnknownKeys unknown = UnknownKeys::Refused);

    // The same for the record {"Enabled": boolean}.
    static std::optional<SettingsFault> faultInAutoUpdates(const platform::Dictionary& record,
                                                           UnknownKeys unknown = UnknownKeys::Refused);

    // The same for the record {"Allow": boolean}.
    static std::optional<SettingsFault> faultInAllowWithoutPassword(const platform::Dictionary& record);
};

} // namespace helper
