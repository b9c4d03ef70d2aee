#include "platform/linux/system/conditions/ConditionsBus.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <sys/inotify.h>
#include <utility>

namespace platform {

namespace {

constexpr const char* defaultAddress = "unix:path=/run/dbus/system_bus_socket";

// Ten tries take 50 seconds in all.
constexpr unsigned maximumTries = 10;
constexpr std::chrono::milliseconds firstDelay{50};

std::string busAddress()
{
    const char* variable = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return variable && *variable ? variable : defaultAddress;
}

// The folder of "unix:path=/a/b,..." is "/a". Empty for other addresses.
std::string folderOfSocket(std::string_view address)
{
    constexpr std::string_view start = "unix:path=";
    if (!address.starts_with(start))
        return {};
    const auto path = address.substr(start.size(), address.find_first_of(",;") - start.size());
    return std::string(path.substr(0, path.rfind('/')));
}

// False, and nothing is taken, when it is of another type.
bool readVariant(sd_bus_message* message, const PropertyTarget& target)
{
    int flag = 0;
    const char* text = nullptr;
    if (auto* const boolean = std::get_if<bool*>(&target)) {
        if (sd_bus_message_read(message, "v", "b", &flag) <= 0)
            return false;
        **boolean = flag != 0;
    } else if (auto* const number = std::get_if<std::uint64_t*>(&target)) {
        return sd_bus_message_read(message, "v", "t", *number) > 0;
    } else if (auto* const string = std::get_if<std::string*>(&target)) {
        if (sd_bus_message_read(message, "v", "s", &text) <= 0)
            return false;
        **string = text;
    }
    return true;
}

} // namespace

ConditionsBus::~ConditionsBus() = default;

void ConditionsBus::add(BusService& service)
{
    _services.push_back(&service);
    if (_services.size() == 1) {
        _address = busAddress();
        _tries = 0;
        open();
    } else if (_bus) {
        service.connected();
    }
}

void ConditionsBus::remove(BusService& service)
{
    std::erase(_services, &service);
    if (!_services.empty())
        return;
    _retry.reset();
    _folder.reset();
    _closing.reset();
    _bus.reset();
}

void ConditionsBus::open()
{
    _retry.reset();
    sd_bus* made = nullptr;
    if (sd_bus_new(&made) < 0)
        return;
    BusHandle bus(made);
    if (sd_bus_set_address(made, _address.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 || sd_bus_start(made) < 0
        || sd_bus_attach_event(made, _thread.event(), SD_EVENT_PRIORITY_NORMAL) < 0) {
        awaitBus();
        return;
    }
    _bus = std::move(bus);
    // The connection's own message about its end.
    const auto closed = [](sd_bus_message*, void* context, sd_bus_error*) {
        static_cast<ConditionsBus*>(context)->lose();
        return 0;
    };
    sd_bus_slot* slot = nullptr;
    sd_bus_match_signal(made, &slot, nullptr, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local",
                        "Disconnected", closed, this);
    _closing.reset(slot);
    for (auto* const service : std::vector(_services))
        service->connected();
}

void ConditionsBus::lose()
{
    // Not here: this is called by the connection.
    _retry = _thread.runAfter(std::chrono::milliseconds(0), [this] {
        _closing.reset();
        _bus.reset();
        for (auto* const service : std::vector(_services))
            service->disconnected();
        _tries = 0;
        awaitBus();
    });
}

// A new socket tells of itself. One that stays, and is served again later, is tried for a while.
void ConditionsBus::awaitBus()
{
    const auto folder = folderOfSocket(_address);
    if (!_folder && !folder.empty()) {
        _folder = _thread.watchFile(folder, IN_CREATE | IN_MOVED_TO, [this](const inotify_event&) {
            _tries = 0;
            if (!_bus)
                awaitBus();
        });
    }
    if (_tries < maximumTries)
        _retry = _thread.runAfter(firstDelay * (1U << _tries++), [this] {
            const auto spent = std::move(_retry);
            open();
            if (_bus)
                _folder.reset();
        });
}

BusService::BusService(std::string name, std::vector<std::string> rules, Read read, Signal signal)
    : _name(std::move(name)),
      _rules(std::move(rules)),
      _read(std::move(read)),
      _signal(std::move(signal))
{
}

void BusService::follow()
{
    ConditionsThread::shared().bus().add(*this);
    if (!ConditionsThread::shared().bus().connection())
        startReading();
}

BusService::~BusService()
{
    _matches.clear();
    _call.reset();
    ConditionsThread::shared().bus().remove(*this);
}

void BusService::connected()
{
    auto* const bus = ConditionsThread::shared().bus().connection();
    // A bus that refuses a match leaves it unwatched; without a handler sd-bus would close the connection.
    const auto ignore = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
    const auto match = [&](const std::string& rule) {
        sd_bus_slot* slot = nullptr;
        sd_bus_add_match_async(bus, &slot, rule.c_str(), handleSignal, ignore, this);
        _matches.emplace_back(slot);
    };
    match("type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
          "member='NameOwnerChanged',arg0='"
          + _name + "'");
    for (const auto& rule : _rules)
        match("type='signal',sender='" + _name + "'," + rule);
    startReading();
}

void BusService::disconnected()
{
    _matches.clear();
    _call.reset();
    _isReading = false;
    startReading();
}

int BusService::handleSignal(sd_bus_message* message, void* context, sd_bus_error*)
{
    auto& service = *static_cast<BusService*>(context);
    if (service._signal)
        service._signal(message);
    service.startReading();
    return 0;
}

void BusService::startReading()
{
    if (std::exchange(_isReading, true)) {
        _isOutdated = true;
        return;
    }
    _isOutdated = false;
    _read();
}

void BusService::finishReading()
{
    _isReading = false;
    if (_isOutdated)
        startReading();
}

void BusService::call(const char* path, const char* interface, const char* member,
                      std::initializer_list<const char*> arguments, Answer answer, Activation activation)
{
    auto* const bus = ConditionsThread::shared().bus().connection();
    sd_bus_message* made = nullptr;
    int result = bus ? sd_bus_message_new_method_call(bus, &made, _name.c_str(), path, interface, member) : -ENOTCONN;
    const BusMessage message(made);
    if (result >= 0)
        result = sd_bus_message_set_auto_start(made, activation == Activation::Allowed);
    for (const char* const argument : arguments)
        result = result < 0 ? result : sd_bus_message_append(made, "s", argument);
    const auto answered = [](sd_bus_message* reply, void* context, sd_bus_error*) {
        auto& service = *static_cast<BusService*>(context);
        const BusSlot spent = std::move(service._call); // until the end of this handler
        const auto taken = std::exchange(service._answer, nullptr);
        taken(sd_bus_message_get_error(reply) ? nullptr : reply);
        return 1;
    };
    sd_bus_slot* slot = nullptr;
    if (result >= 0) {
        _answer = answer;
        result = sd_bus_call_async(bus, &slot, made, answered, this, 0);
        _call.reset(slot);
    }
    if (result < 0)
        answer(nullptr);
}

std::string propertiesChanged(const std::string& path)
{
    return "path='" + path + "',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged'";
}

void readProperties(sd_bus_message* answer, std::initializer_list<NamedProperty> properties)
{
    if (!answer || sd_bus_message_enter_container(answer, 'a', "{sv}") < 0)
        return;
    while (sd_bus_message_enter_container(answer, 'e', "sv") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(answer, "s", &name) < 0)
            return;
        const auto found =
            std::ranges::find_if(properties, [&](const auto& each) { return std::string_view(each.name) == name; });
        if ((found == properties.end() || !readVariant(answer, found->target)) && sd_bus_message_skip(answer, "v") < 0)
            return;
        if (sd_bus_message_exit_container(answer) < 0)
            return;
    }
}

} // namespace platform
