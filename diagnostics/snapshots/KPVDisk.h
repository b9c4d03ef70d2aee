#pragma once

#include "platform/ui/Image.h"

#include <memory>
#include <mutex>
#include <string>

// A volume in the browser's pop-up. Its properties can be read and set on any thread.
class KPVDisk {
public:
    KPVDisk(std::string url, std::string name, std::shared_ptr<platform::ui::Image> icon)
        : _URL(std::move(url)),
          _name(std::move(name)),
          _icon(std::move(icon))
    {
    }

    std::string URL() const { return value(_URL); } // the path of the mount point
    void setURL(std::string url) { setValue(_URL, std::move(url)); }
    std::string name() const { return value(_name); }
    void setName(std::string name) { setValue(_name, std::move(name)); }
    std::shared_ptr<platform::ui::Image> icon() const { return value(_icon); }
    void setIcon(std::shared_ptr<platform::ui::Image> icon) { setValue(_icon, std::move(icon)); }

private:
    template <class T>
    T value(const T& property) const
    {
        const std::lock_guard lock(_lock);
        return property;
    }
    template <class T>
    void setValue(T& property, T value)
    {
        const std::lock_guard lock(_lock);
        property.swap(value);
    }

    mutable std::mutex _lock;
    std::string _URL;
    std::string _name;
    std::shared_ptr<platform::ui::Image> _icon;
};
