#pragma once

#include "platform/Authorization.h"
#include "platform/Error.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Obtains rights in the application and checks them in the scheduler helper. An instance is used from one thread at a
// time; the static operations from any.
class ZRKAuthorizationManager {
public:
    using Rights = std::vector<std::string>;

    static ZRKAuthorizationManager& sharedManager();

    ZRKAuthorizationManager();
    ~ZRKAuthorizationManager();

    bool allowsUserInteraction() const;
    void setAllowsUserInteraction(bool allows);

    // Holds at least one of the rights afterwards, or says why not. May show the system's dialog and block.
    platform::Result<void> authorizeRights(const Rights& rights);
    // The 32 bytes that stand for such an authorization.
    platform::Result<platform::Data> authorizationExternalDataWithRights(const Rights& rights);
    // Destroys the rights held; the next request is authorized anew.
    void invalidate();

    using Definitions = std::vector<std::pair<std::string, platform::Dictionary>>;
    static platform::Result<void> setAuthorizationRights(const Definitions& definitions);

    // Whether the authorization that the first 32 bytes stand for holds one of the rights now. `sender` is the peer as
    // the transport names it, see platform::Authorization.
    static platform::Result<void> validateAuthorizationExternalData(std::span<const std::uint8_t> bytes,
                                                                    const Rights& rights, std::string_view sender = {});

    // The same without waiting: each right is asked for by `ask`, which may answer later and keeps the answer's thread.
    // The error is not logged.
    using Answer = std::function<void(platform::Authorization::Status)>;
    using Question = std::function<void(const std::string& right, Answer answer)>;
    static void validateAuthorizationExternalData(std::span<const std::uint8_t> bytes, const Rights& rights,
                                                  std::string_view sender, Question ask,
                                                  std::function<void(platform::Result<void>)> completion);

private:
    void _freeAuthRef(unsigned flags);

    std::unique_ptr<platform::Authorization> _authRef;
    std::optional<Rights> _lastAuthorizedRights;
    bool _allowsUserInteraction = true;
};
