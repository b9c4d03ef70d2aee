#pragma once

#include "platform/Authorization.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// The authorization services as a test plays them.
namespace scripted::authorization {

using Status = platform::Authorization::Status;

enum class Operation { Create, CreateFromExternalForm, CopyRight, MakeExternalForm, Free, SetRight };

std::ostream& operator<<(std::ostream& out, Operation operation);

struct Call {
    Operation operation = Operation::Create;
    std::size_t authorization = 0; // 1 for the first one made, and so on; 0 when none came of the call
    std::string name;              // the right, or the sender of an external form
    std::optional<std::string> prompt;
    unsigned flags = 0;
    platform::Authorization::ExternalForm form{};
    platform::Dictionary definition;
};

void reset();

// The results of the next calls for this right, in order; the last one stays. Success without any.
void answerCopyRight(const std::string& name, std::vector<Status> results);
void answerSetRight(const std::string& name, std::vector<Status> results);

// What making an authorization, reading one from its external form and making that form answer from now on.
void answerCreate(Status result);
void answerCreateFromExternalForm(Status result);
void answerMakeExternalForm(Status result);

// The form that is made from now on. When a form is read for a named sender, it must be that name padded with zeros.
void setExternalForm(const platform::Authorization::ExternalForm& form);
platform::Authorization::ExternalForm externalFormForSender(std::string_view sender);

// A definition in the rights database, as Authorization::right reads it. setRight writes there too.
void setDefinition(const std::string& name, platform::Dictionary definition);

// All calls since reset(), in order. An authorization that is let go without a call of free counts as freed with
// Defaults.
std::vector<Call> calls();
std::vector<Call> calls(Operation operation);

} // namespace scripted::authorization
