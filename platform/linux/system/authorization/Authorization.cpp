#include "platform/Authorization.h"

#include "platform/linux/system/authorization/RightsStore.h"
#include "platform/linux/system/bus/SystemBus.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr const char* AuthorityName = "org.freedesktop.PolicyKit1";
constexpr const char* AuthorityPath = "/org/freedesktop/PolicyKit1/Authority";
constexpr const char* AuthorityInterface = "org.freedesktop.PolicyKit1.Authority";
constexpr const char* AuthorityErrors = "org.freedesktop.PolicyKit1.Error.";

// A question that shows no dialog is answered at once or not at all.
constexpr std::uint64_t SilentLimit = 25'000'000;

// The authority's verdict on one right.
struct Verdict {
    bool isAuthorized = false;
    bool isChallenge = false;
    bool isDismissed = false;
    std::string grant; // the id of the grant that is kept, if any
};

std::optional<Verdict> readVerdict(sd_bus_message* reply)
{
    int isAuthorized = 0;
    int isChallenge = 0;
    if (sd_bus_message_has_signature(reply, "(bba{ss})") <= 0
        || sd_bus_message_enter_container(reply, SD_BUS_TYPE_STRUCT, "bba{ss}") < 0
        || sd_bus_message_read(reply, "bb", &isAuthorized, &isChallenge) < 0
        || sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{ss}") < 0)
        return std::nullopt;
    Verdict verdict = {isAuthorized != 0, isChallenge != 0, false, {}};
    const char* key = nullptr;
    const char* value = nullptr;
    int result = 0;
    while ((result = sd_bus_message_read(reply, "{ss}", &key, &value)) > 0) {
        if (std::strcmp(key, "polkit.dismissed") == 0)
            verdict.isDismissed = *value != '\0';
        else if (std::strcmp(key, "polkit.temporary_authorization_id") == 0)
            verdict.grant = value;
    }
    return result < 0 ? std::nullopt : std::optional(verdict);
}

Authorization::Status statusOf(const Verdict& verdict, bool allowsInteraction)
{
    if (verdict.isAuthorized)
        return Authorization::Success;
    if (verdict.isDismissed)
        return Authorization::Canceled;
    return verdict.isChallenge && !allowsInteraction ? Authorization::InteractionNotAllowed : Authorization::Denied;
}

// An error of the authority's own, such as an action that it does not know, is an answer. Any other error is none.
Authorization::Status statusOf(const char* error)
{
    const bool isAnswer = std::strncmp(error, AuthorityErrors, std::strlen(AuthorityErrors)) == 0;
    return isAnswer ? Authorization::Denied : Authorization::Internal;
}

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
        const int result = sd_bus_message_new_method_call(on, made, AuthorityName, AuthorityPath, AuthorityInterface,
                                                          "CheckAuthorization");
        return result < 0 ? result
                          : sd_bus_message_append(*made, "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s",
                                                  subject.c_str(), right.c_str(), 0, allowsInteraction ? 1U : 0U, "");
    };
    const auto complete = [&](const SystemBus::Answer& answer) -> SystemBus::Task {
        const std::optional<Verdict> verdict = answer.reply ? readVerdict(answer.reply) : std::nullopt;
        if (verdict)
            status = statusOf(*verdict, allowsInteraction);
        else if (!answer.reply)
            status = statusOf(answer.error);
        if (verdict && !verdict->grant.empty())
            _grants.push_back(verdict->grant);
        return nullptr;
    };
    const auto call = bus.beginCall(this, compose, complete, allowsInteraction ? SystemBus::NoLimit : SilentLimit);
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
            const int result = sd_bus_message_new_method_call(on, made, AuthorityName, AuthorityPath,
                                                              AuthorityInterface, "RevokeTemporaryAuthorizationById");
            return result < 0 ? result : sd_bus_message_append(*made, "s", grant.c_str());
        };
        const auto ignore = [](const SystemBus::Answer&) -> SystemBus::Task { return nullptr; };
        if (const auto call = bus.beginCall(this, compose, ignore, SilentLimit))
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
