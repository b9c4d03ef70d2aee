#include "messaging/ZRKAuthorizationManager.h"

#include "messaging/ZRKError.h"
#include "platform/Localization.h"
#include "protocol/ErrorCodes.h"

#include <algorithm>

namespace {

using platform::Authorization;
using Status = Authorization::Status;

platform::PropertyList list(const std::vector<std::string>& texts)
{
    return platform::Array(texts.begin(), texts.end());
}

platform::Error statusError(ZRKAuthorizationErrorCode code, Status status)
{
    return ZRKError::errorWithDomain(ZRKAuthorizationErrorDomain, code, {{"status", status}});
}

platform::Error rightsError(ZRKAuthorizationErrorCode code, const std::vector<std::string>& rights)
{
    return ZRKError::errorWithDomain(ZRKAuthorizationErrorDomain, code, {{"rights", list(rights)}});
}

platform::Result<std::unique_ptr<Authorization>> authorizationForBytes(std::span<const std::uint8_t> bytes,
                                                                       std::string_view sender)
{
    auto status = Authorization::InvalidPointer;
    if (Authorization::ExternalForm form; bytes.size() >= form.size()) {
        std::copy_n(bytes.begin(), form.size(), form.begin());
        auto authorization = Authorization::createFromExternalForm(form, sender);
        if (authorization)
            return std::move(*authorization);
        status = authorization.error();
    }
    return std::unexpected(platform::Error{
        ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorCreateFromExternalForm, {{"status", status}}, nullptr});
}

std::string failureText(const std::string& right, Status status)
{
    return right + " (" + std::to_string(status) + ")";
}

// Asks for one right after another, until one is held.
class RightsCheck : public std::enable_shared_from_this<RightsCheck> {
public:
    using Completion = std::function<void(platform::Result<void>)>;

    static void begin(const std::vector<std::string>& rights, ZRKAuthorizationManager::Question ask,
                      Completion completion)
    {
        const auto check = std::make_shared<RightsCheck>();
        check->_rights = rights;
        check->_ask = std::move(ask);
        check->_completion = std::move(completion);
        check->askNext();
    }

private:
    void askNext()
    {
        if (_failures.size() == _rights.size()) {
            _completion(std::unexpected(platform::Error{ZRKAuthorizationErrorDomain,
                                                        ZRKAuthorizationErrorValidateRights,
                                                        {{"rights", list(_failures)}},
                                                        nullptr}));
            return;
        }
        _ask(_rights[_failures.size()], [self = shared_from_this()](Status status) { self->hear(status); });
    }
    void hear(Status status)
    {
        if (status == Authorization::Success) {
            _completion({});
            return;
        }
        _failures.push_back(failureText(_rights[_failures.size()], status));
        askNext();
    }

    std::vector<std::string> _rights;
    std::vector<std::string> _failures; // of the first rights, in order
    ZRKAuthorizationManager::Question _ask;
    Completion _completion;
};

} // namespace

ZRKAuthorizationManager& ZRKAuthorizationManager::sharedManager()
{
    // Never destroyed: another thread may still use it while the process ends.
    static auto& shared = *new ZRKAuthorizationManager;
    return shared;
}

ZRKAuthorizationManager::ZRKAuthorizationManager() = default;
ZRKAuthorizationManager::~ZRKAuthorizationManager() = default;

bool ZRKAuthorizationManager::allowsUserInteraction() const
{
    return _allowsUserInteraction;
}

void ZRKAuthorizationManager::setAllowsUserInteraction(bool allows)
{
    _allowsUserInteraction = allows;
}

void ZRKAuthorizationManager::_freeAuthRef(unsigned flags)
{
    if (_authRef)
        _authRef->free(flags);
    _authRef.reset();
}

platform::Result<void> ZRKAuthorizationManager::authorizeRights(const Rights& rights)
{
    if (rights != _lastAuthorizedRights)
        _freeAuthRef(Authorization::Defaults);
    if (!_authRef) {
        auto created = Authorization::create();
        if (!created)
            return std::unexpected(statusError(ZRKAuthorizationErrorCreate, created.error()));
        _authRef = std::move(*created);
    }

    const auto prompt = platform::localizedString("You must authenticate to change the product settings.");
    const unsigned flags =
        Authorization::ExtendRights | (_allowsUserInteraction ? Authorization::InteractionAllowed : 0u);
    auto failure = ZRKAuthorizationErrorAuthorizeRights;
    for (const auto& right : rights) {
        const auto status = _authRef->copyRight(right, prompt, flags);
        if (status == Authorization::Success) {
            _lastAuthorizedRights = rights;
            return {};
        }
        if (status == Authorization::Canceled) {
            failure = ZRKAuthorizationErrorUserCanceled;
            break;
        }
    }
    _freeAuthRef(Authorization::Defaults);
    return std::unexpected(rightsError(failure, rights));
}

platform::Result<platform::Data> ZRKAuthorizationManager::authorizationExternalDataWithRights(const Rights& rights)
{
    if (auto authorized = authorizeRights(rights); !authorized)
        return std::unexpected(std::move(authorized.error()));
    const auto form = _authRef->makeExternalForm();
    if (!form)
        return std::unexpected(statusError(ZRKAuthorizationErrorMakeExternalForm, form.error()));
    return platform::Data(form->begin(), form->end());
}

void ZRKAuthorizationManager::invalidate()
{
    _freeAuthRef(Authorization::DestroyRights);
}

platform::Result<void> ZRKAuthorizationManager::setAuthorizationRights(const Definitions& definitions)
{
    const auto authorization = Authorization::create();
    if (!authorization) {
        Rights names;
        for (const auto& definition : definitions)
            names.push_back(definition.first);
        return std::unexpected(ZRKError::errorWithDomain(ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorSetRights,
                                                         {{"status", authorization.error()}, {"rights", list(names)}}));
    }
    Rights failures;
    for (const auto& [name, definition] : definitions) {
        if (const auto status = (*authorization)->setRight(name, definition); status != Authorization::Success)
            failures.push_back(failureText(name, status));
    }
    (*authorization)->free(Authorization::Defaults);
    if (!failures.empty())
        return std::unexpected(rightsError(ZRKAuthorizationErrorSetRights, failures));
    return {};
}

platform::Result<void> ZRKAuthorizationManager::validateAuthorizationExternalData(std::span<const std::uint8_t> bytes,
                                                                                  const Rights& rights,
                                                                                  std::string_view sender)
{
    platform::Result<void> result;
    auto authorization = authorizationForBytes(bytes, sender);
    if (!authorization) {
        result = std::unexpected(std::move(authorization.error()));
    } else {
        auto ask = [&](const std::string& right, const Answer& answer) {
            answer((*authorization)->copyRight(right, std::nullopt, Authorization::Defaults));
        };
        RightsCheck::begin(rights, ask, [&](auto checked) { result = std::move(checked); });
        (*authorization)->free(Authorization::Defaults);
    }
    if (!result)
        ZRKError::log(result.error());
    return result;
}

void ZRKAuthorizationManager::validateAuthorizationExternalData(std::span<const std::uint8_t> bytes,
                                                                const Rights& rights, std::string_view sender,
                                                                Question ask,
                                                                std::function<void(platform::Result<void>)> completion)
{
    if (auto authorization = authorizationForBytes(bytes, sender); !authorization)
        completion(std::unexpected(std::move(authorization.error())));
    else
        RightsCheck::begin(rights, std::move(ask), std::move(completion));
}
