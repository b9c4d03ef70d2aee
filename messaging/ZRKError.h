#pragma once

#include "diagnostics/log/ZRKLog.h"
#include "platform/Error.h"

#include <cstdint>
#include <string>

// The errors that this system makes: how they are created, described and rated.
class ZRKError {
public:
    // Makes an error and logs its description once, at its level. `underlying` may be null.
    static platform::Error errorWithDomain(std::string domain, std::int64_t code, platform::Dictionary userInfo = {},
                                           std::shared_ptr<const platform::Error> underlying = nullptr);
    static platform::Error errorWithDomain(std::string domain, std::int64_t code, platform::Dictionary userInfo,
                                           platform::Error underlying);

    // Logs an error's description, at its level.
    static void log(const platform::Error& error);

    // The descriptions of the whole chain, outermost first, joined by single spaces, in the user's language.
    static std::string localizedDescriptionForError(const platform::Error& error);

    // By the outermost error alone.
    static LogLevel logLevelForError(const platform::Error& error);

private:
    static std::string _localizedDescriptionForError(const platform::Error& error);
};

// True when any error of the chain is the user's dismissal of the authentication dialog; callers then stay silent.
bool userCanceledAuthentication(const platform::Error& error);
