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

std::string failureText(const std::string& right, Status status)
{
    return right + " (" + std::to_string(status) + ")";
}

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
    Authorization::ExternalForm form;
    if (bytes.size() < form.size())
        return std::unexpected(statusError(ZRKAuthorizationErrorCreateFromExternalForm, Authorization::InvalidPointer));
    std::copy_n(bytes.begin(), form.size(), form.begin());
    const auto authorization = Authorization::createFromExternalForm(form, sender);
    if (!authorization)
        return std::unexpected(statusError(ZRKAuthorizationErrorCreateFromExternalForm, authorization.error()));

    Rights failures;
    for (const auto& right : rights) {
        const auto status = (*authorization)->copyRight(right, std::nullopt, Authorization::Defaults);
        if (status == Authorization::Success) {
            (*authorization)->free(Authorization::Defaults);
            return {};
        }
        failures.push_back(failureText(right, status));
    }
    (*authorization)->free(Authorization::Defaults);
    return std::unexpected(rightsError(ZRKAuthorizationErrorValidateRights, failures));
}
