#include "tests/platform/ScriptedAuthorization.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

namespace scripted::authorization {

namespace {

using platform::Authorization;

struct Script {
    std::mutex mutex;
    std::map<std::string, std::vector<Status>> copyResults;
    std::map<std::string, std::vector<Status>> setResults;
    Status createResult = Authorization::Success;
    Status readFormResult = Authorization::Success;
    Status makeFormResult = Authorization::Success;
    Authorization::ExternalForm form = externalFormForSender(":1.42");
    std::map<std::string, platform::Dictionary> definitions;
    std::vector<Call> calls;
    std::size_t made = 0;

    void clear()
    {
        Script fresh;
        copyResults.swap(fresh.copyResults);
        setResults.swap(fresh.setResults);
        createResult = readFormResult = makeFormResult = Authorization::Success;
        form = fresh.form;
        definitions.swap(fresh.definitions);
        calls.clear();
        made = 0;
    }
};

// Never destroyed: the shared manager may hold an authorization to the end.
Script& script()
{
    static Script* const shared = new Script;
    return *shared;
}

Status take(std::map<std::string, std::vector<Status>>& results, const std::string& name)
{
    const auto found = results.find(name);
    if (found == results.end() || found->second.empty())
        return Authorization::Success;
    const auto result = found->second.front();
    if (found->second.size() > 1)
        found->second.erase(found->second.begin());
    return result;
}

class PlayedAuthorization final : public Authorization {
public:
    explicit PlayedAuthorization(std::size_t number) : _number(number) { }
    ~PlayedAuthorization() override
    {
        if (!_freed)
            free(Defaults);
    }

    Status copyRight(const std::string& name, const std::optional<std::string>& prompt, unsigned flags) override
    {
        const std::lock_guard lock(script().mutex);
        script().calls.push_back({Operation::CopyRight, _number, name, prompt, flags, {}, {}});
        return _freed ? InvalidReference : take(script().copyResults, name);
    }

    std::expected<ExternalForm, Status> makeExternalForm() override
    {
        const std::lock_guard lock(script().mutex);
        script().calls.push_back({Operation::MakeExternalForm, _number, {}, {}, 0, {}, {}});
        if (const auto result = _freed ? InvalidReference : script().makeFormResult)
            return std::unexpected(result);
        return script().form;
    }

    void free(unsigned flags) override
    {
        const std::lock_guard lock(script().mutex);
        script().calls.push_back({Operation::Free, _number, {}, {}, flags, {}, {}});
        _freed = true;
    }

    Status setRight(const std::string& name, const platform::Dictionary& definition) override
    {
        const std::lock_guard lock(script().mutex);
        script().calls.push_back({Operation::SetRight, _number, name, {}, 0, {}, definition});
        const auto result = _freed ? InvalidReference : take(script().setResults, name);
        if (result == Success)
            script().definitions[name] = definition;
        return result;
    }

private:
    std::size_t _number;
    bool _freed = false;
};

std::expected<std::unique_ptr<Authorization>, Status> make(Call call, Status result)
{
    if (result == Authorization::Success)
        call.authorization = ++script().made;
    const auto number = call.authorization;
    script().calls.push_back(std::move(call));
    if (result != Authorization::Success)
        return std::unexpected(result);
    return std::make_unique<PlayedAuthorization>(number);
}

} // namespace

std::ostream& operator<<(std::ostream& out, Operation operation)
{
    static constexpr const char* names[] = {
        "create", "create from external form", "copy right", "make external form", "free", "set right"};
    return out << names[static_cast<int>(operation)];
}

void reset()
{
    const std::lock_guard lock(script().mutex);
    script().clear();
}

void answerCopyRight(const std::string& name, std::vector<Status> results)
{
    const std::lock_guard lock(script().mutex);
    script().copyResults[name] = std::move(results);
}

void answerSetRight(const std::string& name, std::vector<Status> results)
{
    const std::lock_guard lock(script().mutex);
    script().setResults[name] = std::move(results);
}

void answerCreate(Status result)
{
    const std::lock_guard lock(script().mutex);
    script().createResult = result;
}

void answerCreateFromExternalForm(Status result)
{
    const std::lock_guard lock(script().mutex);
    script().readFormResult = result;
}

void answerMakeExternalForm(Status result)
{
    const std::lock_guard lock(script().mutex);
    script().makeFormResult = result;
}

void setExternalForm(const Authorization::ExternalForm& form)
{
    const std::lock_guard lock(script().mutex);
    script().form = form;
}

Authorization::ExternalForm externalFormForSender(std::string_view sender)
{
    Authorization::ExternalForm form{};
    std::copy_n(sender.begin(), std::min(sender.size(), form.size()), form.begin());
    return form;
}

void setDefinition(const std::string& name, platform::Dictionary definition)
{
    const std::lock_guard lock(script().mutex);
    script().definitions[name] = std::move(definition);
}

std::vector<Call> calls()
{
    const std::lock_guard lock(script().mutex);
    return script().calls;
}

std::vector<Call> calls(Operation operation)
{
    auto all = calls();
    std::erase_if(all, [&](const Call& call) { return call.operation != operation; });
    return all;
}

} // namespace scripted::authorization

namespace platform {

using namespace scripted::authorization;

std::expected<std::unique_ptr<Authorization>, Authorization::Status> Authorization::create()
{
    const std::lock_guard lock(script().mutex);
    return make({Operation::Create, 0, {}, {}, 0, {}, {}}, script().createResult);
}

std::expected<std::unique_ptr<Authorization>, Authorization::Status>
Authorization::createFromExternalForm(const ExternalForm& form, std::string_view sender)
{
    const std::lock_guard lock(script().mutex);
    auto result = script().readFormResult;
    if (result == Success && !sender.empty() && form != externalFormForSender(sender))
        result = InternalizeNotAllowed;
    return make({Operation::CreateFromExternalForm, 0, std::string(sender), {}, 0, form, {}}, result);
}

std::expected<Dictionary, Authorization::Status> Authorization::right(const std::string& name)
{
    const std::lock_guard lock(script().mutex);
    const auto found = script().definitions.find(name);
    if (found == script().definitions.end())
        return std::unexpected(Denied);
    return found->second;
}

} // namespace platform
