#include "platform/Authorization.h"

#include "platform/linux/system/authorization/AuthorityQuestion.h"
#include "platform/linux/system/authorization/RightsStore.h"
#include "platform/linux/system/bus/SystemBus.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>
#include <vector>

namespace platform {

namespace {

// A unique name of a bus, such as ":1.25".
bool isUniqueName(std::string_view name)
{
    const std::size_t dot = name.find('.');
    const auto isNumber = [](std::string_view text) {
        return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
    };
    return name.starts_with(':') && dot != std::string_view::npos && isNumber(name.substr(1, dot - 1))
        && isNumber(name.substr(dot + 1));
}

std::optional<Authorization::ExternalForm> formOf(std::string_view name)
{
    Authorization::ExternalForm form = {};
    if (!isUniqueName(name) || name.size() > form.size())
        return std::nullopt;
    std::copy(name.begin(), name.end(), form.begin());
    return form;
}

class PolkitAuthorization final : public Authorization {
public:
    // The subject is the peer that a form stands for, or empty for this process.
    explicit PolkitAuthorization(std::string subject) : _subject(std::move(subject)) { }
    ~PolkitAuthorization() override { free(Defaults); }

    Status copyRight(const std::string& name, const std::optional<std::string>& prompt, unsigned flags) override;
    std::expected<ExternalForm, Status> makeExternalForm() override;
    void free(unsigned flags) override;
    Status setRight(const std::string& name, const Dictionary& definition) override;

private:
    Status ask(SystemBus& bus, const std::string& subject, const std::string& right, bool allowsInteraction,
               bool& isSent);
    void revoke(SystemBus& bus) const;

    const std::string _subject;
    std::vector<std::string> _grants;
    bool _isFree = false;
};

// The prompt is the action's own message: only the system's own processes may give the authority another.
Authorization::Status PolkitAuthorization::copyRight(const std::string& name, const std::optional<std::string>&,
                                                     unsigned flags)
{
    if (_isFree)
        return InvalidReference;
    // A connection that died unnoticed shows it when it is used.
    for (int attempt = 0; attempt < 2; ++attempt) {
        const std::shared_ptr<SystemBus> bus = SystemBus::current();
        if (!bus)
            return Internal;
        bool isSent = false;
        const std::string& subject = _subject.empty() ? bus->uniqueName() : _subject;
        const Status status = ask(*bus, subject, name, (flags & InteractionAllowed) != 0, isSent);
        if (isSent)
            return status;
    }
    return Internal;
}

Authorization::Status PolkitAuthorization::ask(SystemBus& bus, const std::string& subject, const std::string& right,
                                               bool allowsInteraction, bool& isSent)
{
    Status status = Internal;
    const auto compose = [&](sd_bus* on, sd_bus_message** made) {
        return AuthorityQuestion::compose(on, made, subject, right, allowsInteraction);
    };
    const auto complete = [&](const SystemBus::Answer& answer) -> SystemBus::Task {
        const auto verdict = AuthorityQuestion::read(answer.reply, answer.error, allowsInteraction);
        status = verdict.status;
        if (!verdict.grant.empty())
            _grants.push_back(verdict.grant);
        return nullptr;
    };
    const auto call =
        bus.beginCall(this, compose, complete, allowsInteraction ? SystemBus::NoLimit : AuthorityQuestion::SilentLimit);
    isSent = call != nullptr;
    if (call)
        bus.wait(*call);
    return status;
}

std::expected<Authorization::ExternalForm, Authorization::Status> PolkitAuthorization::makeExternalForm()
{
    if (_isFree)
        return std::unexpected(InvalidReference);
    const std::shared_ptr<SystemBus> bus = _subject.empty() ? SystemBus::current() : nullptr;
    const std::optional<ExternalForm> form = formOf(bus ? bus->uniqueName() : _subject);
    if (!form)
        return std::unexpected(ExternalizeNotAllowed);
    return *form;
}

void PolkitAuthorization::free(unsigned flags)
{
    if (std::exchange(_isFree, true) || (flags & DestroyRights) == 0)
        return;
    if (const std::shared_ptr<SystemBus> bus = SystemBus::current()) {
        revoke(*bus);
        // The authority may refuse to forget. A new connection is a new holder.
        if (_subject.empty())
            bus->retire();
    }
}

void PolkitAuthorization::revoke(SystemBus& bus) const
{
    for (const std::string& grant : _grants) {
        const auto compose = [&](sd_bus* on, sd_bus_message** made) {
            const int result =
                sd_bus_message_new_method_call(on, made, AuthorityQuestion::Name, AuthorityQuestion::Path,
                                               AuthorityQuestion::Interface, "RevokeTemporaryAuthorizationById");
            return result < 0 ? result : sd_bus_message_append(*made, "s", grant.c_str());
        };
        const auto ignore = [](const SystemBus::Answer&) -> SystemBus::Task { return nullptr; };
        if (const auto call = bus.beginCall(this, compose, ignore, AuthorityQuestion::SilentLimit))
            bus.wait(*call);
    }
}

Authorization::Status PolkitAuthorization::setRight(const std::string& name, const Dictionary& definition)
{
    return RightsStore::shared().setDefinition(name, definition) ? Success : Denied;
}

} // namespace

std::expected<std::unique_ptr<Authorization>, Authorization::Status> Authorization::create()
{
    return std::make_unique<PolkitAuthorization>(std::string());
}

std::expected<std::unique_ptr<Authorization>, Authorization::Status>
Authorization::createFromExternalForm(const ExternalForm& form, std::string_view sender)
{
    // The bytes are worth something only to the connection that they name.
    if (formOf(sender) != form)
        return std::unexpected(InternalizeNotAllowed);
    return std::make_unique<PolkitAuthorization>(std::string(sender));
}

std::expected<Dictionary, Authorization::Status> Authorization::right(const std::string& name)
{
    std::optional<Dictionary> definition = RightsStore::shared().definition(name);
    if (!definition)
        return std::unexpected(Denied);
    return std::move(*definition);
}

} // namespace platform
