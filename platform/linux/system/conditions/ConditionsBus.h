#pragma once

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/conditions/ConditionsThread.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

namespace platform {

class BusService;

// The conditions' own connection to the system bus. It is open while a service is followed; when the bus goes it is
// opened again, at once or as soon as the bus is there. The conditions' thread only.
class ConditionsBus {
public:
    explicit ConditionsBus(ConditionsThread& thread) : _thread(thread) { }
    ~ConditionsBus();
    ConditionsBus(const ConditionsBus&) = delete;
    ConditionsBus& operator=(const ConditionsBus&) = delete;

    void add(BusService& service);
    void remove(BusService& service);

    sd_bus* connection() const { return _bus.get(); } // null while there is none

private:
    void open();
    void lose();
    void awaitBus();

    ConditionsThread& _thread;
    BusHandle _bus;
    BusSlot _closing;
    std::string _address;
    std::vector<BusService*> _services;
    EventSource _retry;
    EventSource _folder; // of the bus's socket, while there is no bus
    unsigned _tries = 0;
};

// A service of the system bus whose state is read whenever it comes, tells of a change, or goes. The conditions' thread
// only.
class BusService {
public:
    // Reads the state: it has to end in finishReading(), maybe after calls. There may be no service.
    using Read = std::function<void()>;
    using Signal = std::function<void(sd_bus_message*)>;
    using Answer = std::function<void(sd_bus_message*)>; // null: there is none

    // `rules` are match rules but for the sender; any signal that they match makes for a new reading.
    BusService(std::string name, std::vector<std::string> rules, Read read, Signal signal = nullptr);
    ~BusService();
    // Reads for the first time, and from then on.
    void follow();
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    // Again, when one is under way.
    void startReading();
    void finishReading();

    enum class Activation { Never, Allowed };
    // One of a reading's calls: without arguments, or with strings.
    void call(const char* path, const char* interface, const char* member, std::initializer_list<const char*> arguments,
              Answer answer, Activation activation = Activation::Never);

    void connected(); // called by the connection
    void disconnected();

private:
    static int handleSignal(sd_bus_message* message, void* context, sd_bus_error*);

    const std::string _name;
    const std::vector<std::string> _rules;
    const Read _read;
    const Signal _signal;
    std::vector<BusSlot> _matches;
    BusSlot _call;
    Answer _answer;
    bool _isReading = false;
    bool _isOutdated = false;
};

// The match rule of an object's changes of properties.
std::string propertiesChanged(const std::string& path);

// Takes the named properties from an answer of GetAll; others are passed over, and those that are not there, or of
// another type, are left as they are.
using PropertyTarget = std::variant<bool*, std::uint64_t*, std::string*>;
struct NamedProperty {
    const char* name;
    PropertyTarget target;
};
void readProperties(sd_bus_message* answer, std::initializer_list<NamedProperty> properties);

} // namespace platform
