#pragma once

#include "platform/PropertyList.h"
#include "platform/ui/Interface.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

// The editor of one mode: shows the mode's sub-record of the schedule and builds a new one from its controls. Its view
// comes from an interface file of its own and is loaded when it is first asked for. Main thread only.
class BRVViewController {
public:
    virtual ~BRVViewController() = default;
    BRVViewController(const BRVViewController&) = delete;
    BRVViewController& operator=(const BRVViewController&) = delete;

    // The mode's value, which is also the key of its sub-record.
    const std::string& name() const { return _name; }

    // A new sub-record from the controls as they are now, which are loaded for it if they were never shown.
    virtual platform::Dictionary settings() = 0;
    // Keeps a copy of the sub-record (null: absent) and shows it, at once or when the view loads.
    virtual void setSettings(const platform::Dictionary* settings);

    // Runs when the user changed something in the controls.
    void setChangeHandler(std::function<void()> handler) { _changeHandler = std::move(handler); }

    const std::shared_ptr<platform::ui::View>& view();
    bool isViewLoaded() const { return _view != nullptr; }

protected:
    BRVViewController(std::string name, std::string interfaceName);

    // As last given; null when absent.
    const platform::Dictionary* keptSettings() const { return _settings ? &*_settings : nullptr; }

    // The interface has just been loaded: take the outlets, then show what is kept.
    virtual void connectOutlets(const platform::ui::Interface& interface) = 0;
    virtual void awakeFromNib() { }
    // Shows what is kept in the controls, which are loaded.
    virtual void updateView() { }
    void didChange() const
    {
        if (_changeHandler)
            _changeHandler();
    }

private:
    std::string _name;
    std::string _interfaceName;
    std::optional<platform::Dictionary> _settings;
    std::function<void()> _changeHandler;
    std::unique_ptr<platform::ui::Interface> _interface;
    std::shared_ptr<platform::ui::View> _view;
};
