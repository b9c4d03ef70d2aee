#include "platform/linux/system/authorization/AuthorityQuestion.h"

#include <cstring>
#include <optional>

namespace platform::AuthorityQuestion {

namespace {

constexpr const char* Errors = "org.freedesktop.PolicyKit1.Error.";

struct Answer {
    bool isAuthorized = false;
    bool isChallenge = false;
    bool isDismissed = false;
    std::string grant;
};

std::optional<Answer> readAnswer(sd_bus_message* reply)
{
    int isAuthorized = 0;
    int isChallenge = 0;
    if (sd_bus_message_has_signature(reply, "(bba{ss})") <= 0
        || sd_bus_message_enter_container(reply, SD_BUS_TYPE_STRUCT, "bba{ss}") < 0
        || sd_bus_message_read(reply, "bb", &isAuthorized, &isChallenge) < 0
        || sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{ss}") < 0)
        return std::nullopt;
    Answer answer = {isAuthorized != 0, isChallenge != 0, false, {}};
    const char* key = nullptr;
    const char* value = nullptr;
    int result = 0;
    while ((result = sd_bus_message_read(reply, "{ss}", &key, &value)) > 0) {
        if (std::strcmp(key, "polkit.dismissed") == 0)
            answer.isDismissed = *value != '\0';
        else if (std::strcmp(key, "polkit.temporary_authorization_id") == 0)
            answer.grant = value;
    }
    return result < 0 ? std::nullopt : std::optional(answer);
}

Authorization::Status statusOf(const Answer& answer, bool allowsInteraction)
{
    if (answer.isAuthorized)
        return Authorization::Success;
    if (answer.isDismissed)
        return Authorization::Canceled;
    return answer.isChallenge && !allowsInteraction ? Authorization::InteractionNotAllowed : Authorization::Denied;
}

// An error of the authority's own, such as an action that it does not know, is an answer. Any other error is none.
Authorization::Status statusOf(const char* error)
{
    const bool isAnswer = std::strncmp(error, Errors, std::strlen(Errors)) == 0;
    return isAnswer ? Authorization::Denied : Authorization::Internal;
}

} // namespace

int compose(sd_bus* bus, sd_bus_message** message, const std::string& subject, const std::string& right,
            bool allowsInteraction)
{
    const int result = sd_bus_message_new_method_call(bus, message, Name, Path, Interface, "CheckAuthorization");
    return result < 0 ? result
                      : sd_bus_message_append(*message, "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s",
                                              subject.c_str(), right.c_str(), 0, allowsInteraction ? 1U : 0U, "");
}

Verdict read(sd_bus_message* reply, const char* error, bool allowsInteraction)
{
    if (!reply)
        return {statusOf(error), {}};
    const auto answer = readAnswer(reply);
    return answer ? Verdict{statusOf(*answer, allowsInteraction), answer->grant} : Verdict{};
}

} // namespace platform::AuthorityQuestion
