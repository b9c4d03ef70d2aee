#include "platform/Authorization.h"

#include "platform/macos/system/Foundation.h"

#include <algorithm>
#import <Security/Security.h>
#include <utility>

namespace platform {

namespace {

static_assert(Authorization::Canceled == errAuthorizationCanceled);
static_assert(Authorization::Denied == errAuthorizationDenied);
static_assert(Authorization::InteractionNotAllowed == errAuthorizationInteractionNotAllowed);
static_assert(Authorization::InvalidReference == errAuthorizationInvalidRef);
static_assert(unsigned(Authorization::InteractionAllowed) == unsigned(kAuthorizationFlagInteractionAllowed));
static_assert(unsigned(Authorization::ExtendRights) == unsigned(kAuthorizationFlagExtendRights));
static_assert(unsigned(Authorization::DestroyRights) == unsigned(kAuthorizationFlagDestroyRights));
static_assert(sizeof(AuthorizationExternalForm) == sizeof(Authorization::ExternalForm));

class SecurityAuthorization final : public Authorization {
public:
    explicit SecurityAuthorization(AuthorizationRef reference) : _reference(reference) { }
    ~SecurityAuthorization() override { free(Defaults); }

    Status copyRight(const std::string& name, const std::optional<std::string>& prompt, unsigned flags) override
    {
        if (!_reference)
            return InvalidReference;
        AuthorizationItem right{name.c_str(), 0, nullptr, 0};
        const AuthorizationRights rights{1, &right};
        std::string text = prompt.value_or(std::string());
        AuthorizationItem item{kAuthorizationEnvironmentPrompt, text.size(), text.data(), 0};
        const AuthorizationEnvironment environment{1, &item};
        return AuthorizationCopyRights(_reference, &rights, prompt ? &environment : kAuthorizationEmptyEnvironment,
                                       flags, nullptr);
    }

    std::expected<ExternalForm, Status> makeExternalForm() override
    {
        if (!_reference)
            return std::unexpected(InvalidReference);
        AuthorizationExternalForm form;
        if (const Status status = AuthorizationMakeExternalForm(_reference, &form); status != Success)
            return std::unexpected(status);
        ExternalForm bytes;
        std::copy(std::begin(form.bytes), std::end(form.bytes), bytes.begin());
        return bytes;
    }

    void free(unsigned flags) override
    {
        if (const AuthorizationRef reference = std::exchange(_reference, nullptr))
            AuthorizationFree(reference, flags);
    }

    Status setRight(const std::string& name, const Dictionary& definition) override
    {
        if (!_reference)
            return InvalidReference;
        @autoreleasepool {
            NSDictionary* const object = foundation::dictionary(definition);
            if (!object)
                return InvalidPointer;
            return AuthorizationRightSet(_reference, name.c_str(), (__bridge CFDictionaryRef)object, nullptr, nullptr,
                                         nullptr);
        }
    }

private:
    AuthorizationRef _reference;
};

} // namespace

std::expected<std::unique_ptr<Authorization>, Authorization::Status> Authorization::create()
{
    AuthorizationRef reference = nullptr;
    const Status status =
        AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &reference);
    if (status != Success)
        return std::unexpected(status);
    return std::make_unique<SecurityAuthorization>(reference);
}

// The form itself proves its possession, so the sender needs no name.
std::expected<std::unique_ptr<Authorization>, Authorization::Status>
Authorization::createFromExternalForm(const ExternalForm& form, std::string_view)
{
    AuthorizationExternalForm external;
    std::ranges::copy(form, external.bytes);
    AuthorizationRef reference = nullptr;
    if (const Status status = AuthorizationCreateFromExternalForm(&external, &reference); status != Success)
        return std::unexpected(status);
    return std::make_unique<SecurityAuthorization>(reference);
}

std::expected<Dictionary, Authorization::Status> Authorization::right(const std::string& name)
{
    @autoreleasepool {
        CFDictionaryRef definition = nullptr;
        if (const Status status = AuthorizationRightGet(name.c_str(), &definition); status != Success)
            return std::unexpected(status);
        const auto value = foundation::propertyList(CFBridgingRelease(definition));
        if (!value || !value->dictionary())
            return std::unexpected(Internal);
        return *value->dictionary();
    }
}

} // namespace platform
