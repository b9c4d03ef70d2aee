#include "platform/linux/system/bus/BusPeers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr const char* Bus = "org.freedesktop.DBus";
constexpr const char* BusPath = "/org/freedesktop/DBus";
// Connections of a user that are asked for a sign of life at a time; the bus lets nobody wait for many answers.
constexpr std::size_t AskedAtOnce = 4;

std::string programOf(std::uint32_t process)
{
    std::array<char, 4096> path = {};
    const std::string link = "/proc/" + std::to_string(process) + "/exe";
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

// An entry of the bus's description of a peer.
int readCredential(sd_bus_message* reply, ServicePeer& peer, bool& hasUser)
{
    const char* key = nullptr;
    const char* contents = nullptr;
    int result = sd_bus_message_read_basic(reply, SD_BUS_TYPE_STRING, &key);
    if (result >= 0)
        result = sd_bus_message_peek_type(reply, nullptr, &contents);
    if (result < 0)
        return result;
    const bool isUser = std::strcmp(key, "UnixUserID") == 0;
    if (std::strcmp(contents, "u") != 0 || (!isUser && std::strcmp(key, "ProcessID") != 0))
        return sd_bus_message_skip(reply, "v");
    hasUser = hasUser || isUser;
    return sd_bus_message_read(reply, "v", "u", isUser ? &peer.user : &peer.process);
}

bool readCredentials(sd_bus_message* reply, ServicePeer& peer)
{
    bool hasUser = false;
    int result = sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{sv}");
    while (result >= 0) {
        result = sd_bus_message_enter_container(reply, SD_BUS_TYPE_DICT_ENTRY, "sv");
        if (result == 0)
            return hasUser;
        if (result > 0)
            result = readCredential(reply, peer, hasUser);
        if (result >= 0)
            result = sd_bus_message_exit_container(reply);
    }
    return false;
}

} // namespace

BusPeers::Load& BusPeers::Load::operator+=(const Load& other)
{
    unread += other.unread;
    unsent += other.unsent;
    asked += other.asked;
    questions += other.questions;
    waiting += other.waiting;
    return *this;
}

BusPeers::Load& BusPeers::Load::operator-=(const Load& other)
{
    unread -= other.unread;
    unsent -= other.unsent;
    asked -= other.asked;
    questions -= other.questions;
    waiting -= other.waiting;
    return *this;
}

BusPeers::BusPeers(sd_bus* bus, Identified identified, Left left, Refuse refuse)
    : _bus(bus),
      _identified(std::move(identified)),
      _left(std::move(left)),
      _refuse(std::move(refuse))
{
}

int BusPeers::watch()
{
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match(_bus, &slot,
                                        "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                                        "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''",
                                        &BusPeers::handleNameLost, this);
    _departures.reset(slot);
    return result;
}

void BusPeers::note(const std::string& name)
{
    const auto [place, isNew] = _peers.try_emplace(name);
    if (!isNew)
        return;
    enter(place->second, std::nullopt);
    _strangers.push_back(name);
    askWhoTheyAre();
}

// A few at a time: whatever is asked is sent before the replies, of which none could be sent while many come and go.
void BusPeers::askWhoTheyAre()
{
    constexpr std::size_t AtOnce = 8;
    while (_askedCount < AtOnce && !_strangers.empty()) {
        const std::string name = std::move(_strangers.front());
        _strangers.pop_front();
        if (!isKnown(name))
            continue;
        Question& question = addQuestion(name);
        sd_bus_slot* slot = nullptr;
        const int result = sd_bus_call_method_async(_bus, &slot, Bus, BusPath, Bus, "GetConnectionCredentials",
                                                    &BusPeers::handleCredentials, &question, "s", name.c_str());
        question.slot.reset(slot);
        if (result < 0)
            _questions.erase(question.place);
        else
            ++_askedCount;
    }
}

BusPeers::Question& BusPeers::addQuestion(const std::string& name)
{
    _questions.push_back({this, name, 0, nullptr, {}});
    _questions.back().place = std::prev(_questions.end());
    return _questions.back();
}

int BusPeers::handleCredentials(sd_bus_message* reply, void* context, sd_bus_error*)
{
    auto& question = *static_cast<Question*>(context);
    BusPeers& self = *question.owner;
    const std::string name = question.name;
    self._questions.erase(question.place);
    --self._askedCount;
    if (!sd_bus_message_get_error(reply))
        self.identify(name, reply);
    self.askWhoTheyAre();
    return 1;
}

void BusPeers::identify(const std::string& name, sd_bus_message* reply)
{
    const auto found = _peers.find(name);
    if (found == _peers.end())
        return; // it has left meanwhile
    State& state = found->second;
    state.peer.name = name;
    if (!readCredentials(reply, state.peer))
        return;
    if (state.peer.process != 0)
        state.peer.program = programOf(state.peer.process);
    leave(state);
    enter(state, state.peer.user);
    askForSigns(state.user);
    if (_identified)
        _identified(state.peer);
    refuseWaiting();
}

void BusPeers::enter(State& state, UserName user)
{
    state.user = user;
    User& entered = _users[user];
    ++entered.peerCount;
    entered.load += state.load;
    _load += state.load;
}

void BusPeers::leave(const State& state)
{
    const auto user = _users.find(state.user);
    _load -= state.load;
    user->second.load -= state.load;
    if (--user->second.peerCount == 0)
        _users.erase(user);
}

void BusPeers::add(State& state, const Load& load)
{
    state.load += load;
    _users.at(state.user).load += load;
    _load += load;
}

void BusPeers::subtract(State& state, const Load& load)
{
    state.load -= load;
    _users.at(state.user).load -= load;
    _load -= load;
}

// Less when others have left much unread, so that all together stay below the total; and little for those that are not
// known, since it counts for their user as well when they are.
bool BusPeers::hasLeftTooMuch(UserName user) const
{
    const std::size_t shared = (TotalSize - std::min(TotalSize, _load.unread)) / 2;
    return _users.at(user).load.unread > std::min(shared, user ? CutOffSize : SignOfLifeSize);
}

BusPeers::UserName BusPeers::userOf(const std::string& name) const
{
    const auto found = _peers.find(name);
    return found == _peers.end() ? std::nullopt : found->second.user;
}

bool BusPeers::isCutOff(const std::string& name) const
{
    const auto found = _peers.find(name);
    return found != _peers.end() && found->second.user && hasLeftTooMuch(found->second.user);
}

bool BusPeers::charge(const std::string& name, std::size_t size)
{
    const auto found = _peers.find(name);
    if (found == _peers.end() || hasLeftTooMuch(found->second.user))
        return false;
    add(found->second, {.unread = size, .unsent = size});
    return true;
}

void BusPeers::sent(const std::string& name, std::size_t size)
{
    const auto found = _peers.find(name);
    if (found == _peers.end())
        return;
    subtract(found->second, {.unsent = size});
    askForSigns(found->second.user);
}

void BusPeers::refuse(const std::string& name, std::uint64_t call)
{
    const auto found = _peers.find(name);
    if (found == _peers.end())
        return;
    State& state = found->second;
    if (state.waiting.size() == MaximumWaiting) {
        state.waiting.erase(state.waiting.begin());
        subtract(state, {.waiting = 1});
    }
    state.waiting.push_back(call);
    add(state, {.waiting = 1});
    refuseWaiting(name, state);
}

// As many as the peer may be sent now.
void BusPeers::refuseWaiting(const std::string& name, State& state)
{
    std::vector<std::uint64_t> calls;
    for (const std::uint64_t call : state.waiting) {
        if (hasLeftTooMuch(state.user)) {
            if (state.refusals + RefusalSize > RefusalsSize)
                break;
            state.refusals += RefusalSize;
        }
        add(state, {.unread = RefusalSize, .unsent = RefusalSize});
        calls.push_back(call);
    }
    state.waiting.erase(state.waiting.begin(), state.waiting.begin() + static_cast<std::ptrdiff_t>(calls.size()));
    subtract(state, {.waiting = calls.size()});
    for (const std::uint64_t call : calls)
        _refuse(name, call);
}

void BusPeers::refuseWaiting()
{
    for (auto entry = _peers.begin(); _load.waiting > 0 && entry != _peers.end(); ++entry)
        refuseWaiting(entry->first, entry->second);
}

// Asks the connections of the user that have the most to read when there is much, and those with calls that wait.
void BusPeers::askForSigns(UserName user)
{
    const auto asked = _users.find(user);
    if (!user || asked == _users.end())
        return;
    const Load& load = asked->second.load;
    const auto sentTo = [](const State& state) { return state.load.unread - state.load.unsent; };
    while (load.questions < AskedAtOnce) {
        const bool isMuch = load.unread - load.unsent - load.asked > SignOfLifeSize || hasLeftTooMuch(user);
        if (!isMuch && load.waiting == 0)
            return;
        std::pair<const std::string, State>* most = nullptr;
        for (auto& entry : _peers) {
            const State& state = entry.second;
            if (state.user == user && !state.question && sentTo(state) > (most ? sentTo(most->second) : 0)
                && (isMuch || !state.waiting.empty()))
                most = &entry;
        }
        if (!most || !askForSign(most->first, most->second))
            return;
    }
}

bool BusPeers::askForSign(const std::string& name, State& state)
{
    Question& question = addQuestion(name);
    question.unread = state.load.unread - state.load.unsent;
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_call(_bus, &made, name.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping");
    const BusMessage message(made);
    sd_bus_slot* slot = nullptr;
    if (result >= 0)
        result = sd_bus_call_async(_bus, &slot, made, &BusPeers::handleSign, &question, UINT64_MAX);
    question.slot.reset(slot);
    if (result < 0) {
        _questions.erase(question.place);
        return false;
    }
    state.question = &question;
    add(state, {.asked = question.unread, .questions = 1});
    return true;
}

void BusPeers::endQuestion(State& state)
{
    subtract(state, {.asked = state.question->unread, .questions = 1});
    _questions.erase(std::exchange(state.question, nullptr)->place);
}

// The peer lives: the question of one that has left has ended.
int BusPeers::handleSign(sd_bus_message* reply, void* context, sd_bus_error*)
{
    const auto& question = *static_cast<Question*>(context);
    BusPeers& self = *question.owner;
    const std::string name = question.name;
    const std::size_t unread = question.unread;
    State& state = self._peers.at(name);
    self.endQuestion(state);
    // A peer that does not know the call has read it all the same; what the bus says for it is no sign.
    const char* sender = sd_bus_message_get_sender(reply);
    if (!sender || name != sender)
        return 1;
    self.subtract(state, {.unread = unread});
    state.refusals = 0;
    self.refuseWaiting();
    self.askForSigns(state.user);
    return 1;
}

int BusPeers::handleNameLost(sd_bus_message* signal, void* context, sd_bus_error*)
{
    const char* name = nullptr;
    if (sd_bus_message_read_basic(signal, SD_BUS_TYPE_STRING, &name) > 0 && name[0] == ':')
        static_cast<BusPeers*>(context)->forget(name);
    return 0;
}

void BusPeers::forget(const std::string& name)
{
    const auto found = _peers.find(name);
    if (found == _peers.end())
        return;
    if (found->second.question)
        endQuestion(found->second);
    leave(found->second);
    _peers.erase(found);
    if (_left)
        _left(name);
    refuseWaiting();
}

} // namespace platform
