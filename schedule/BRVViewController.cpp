#include "schedule/BRVViewController.h"

BRVViewController::BRVViewController(std::string name, std::string interfaceName)
    : _name(std::move(name)),
      _interfaceName(std::move(interfaceName))
{
}

void BRVViewController::setSettings(const platform::Dictionary* settings)
{
    _settings = settings ? std::optional(*settings) : std::nullopt;
    if (isViewLoaded())
        updateView();
}

const std::shared_ptr<platform::ui::View>& BRVViewController::view()
{
    if (!_view) {
        _interface = platform::ui::Interface::load(_interfaceName);
        connectOutlets(*_interface);
        _view = _interface->view();
        awakeFromNib();
    }
    return _view;
}
