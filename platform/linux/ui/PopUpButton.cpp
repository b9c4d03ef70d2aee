#include "platform/ui/PopUpButton.h"

#include "platform/linux/ui/ControlNative.h"
#include "platform/linux/ui/WrapControls.h"

#include <QComboBox>

namespace platform::ui {

namespace {

// What the button shows, whether it has a widget at the moment or not.
struct PopUpButtonNative : ControlNative {
    explicit PopUpButtonNative(QWidget* theWidget);
    explicit PopUpButtonNative(PopUpButton::Items theItems) : ControlNative(nullptr), items(std::move(theItems)) { }

    QWidget* newWidget() override;
    QComboBox* box() const { return as<QComboBox>(); }
    bool hasItem(int index) const { return index >= 0 && index < static_cast<int>(items->size()); }
    void follow(QComboBox& box);

    PopUpButton::Items items;
    int selected = 0;
};

PopUpButtonNative::PopUpButtonNative(QWidget* theWidget) : ControlNative(theWidget)
{
    auto& box = *this->box();
    std::vector<std::string> titles;
    for (int i = 0; i < box.count(); ++i)
        titles.push_back(box.itemText(i).toStdString());
    items = std::make_shared<const std::vector<std::string>>(std::move(titles));
    selected = box.currentIndex();
    setAccessibleName(box, box.accessibleName());
    follow(box);
}

QWidget* PopUpButtonNative::newWidget()
{
    auto* const box = new QComboBox;
    for (const std::string& title : *items) {
        if (title.empty())
            box->insertSeparator(box->count());
        else
            box->addItem(qtString(title));
    }
    box->setCurrentIndex(selected);
    follow(*box);
    return box;
}

void PopUpButtonNative::follow(QComboBox& box)
{
    QObject::connect(&box, &QComboBox::currentIndexChanged, receiver(), [this](int index) { selected = index; });
    QObject::connect(&box, &QComboBox::activated, receiver(), [this] { sendAction(); });
}

PopUpButtonNative& popUpNative(const View& view)
{
    return static_cast<PopUpButtonNative&>(view.native());
}

} // namespace

std::shared_ptr<PopUpButton> PopUpButton::create(Items items)
{
    return std::make_shared<PopUpButton>(std::make_unique<PopUpButtonNative>(std::move(items)));
}

std::shared_ptr<PopUpButton> wrapPopUpButton(QComboBox& box)
{
    return wrapWidget<PopUpButton, PopUpButtonNative>(&box);
}

PopUpButton::PopUpButton(std::unique_ptr<Native> native) : Control(std::move(native)) { }

int PopUpButton::numberOfItems() const
{
    return static_cast<int>(popUpNative(*this).items->size());
}

int PopUpButton::indexOfSelectedItem() const
{
    return popUpNative(*this).selected;
}

void PopUpButton::selectItemAtIndex(int index)
{
    auto& native = popUpNative(*this);
    native.selected = native.hasItem(index) ? index : -1;
    if (auto* const box = native.box())
        box->setCurrentIndex(native.selected);
}

std::string PopUpButton::itemTitleAtIndex(int index) const
{
    const auto& native = popUpNative(*this);
    return native.hasItem(index) ? (*native.items)[static_cast<std::size_t>(index)] : std::string();
}

void PopUpButton::setItemTitleAtIndex(int index, const std::string& title)
{
    auto& native = popUpNative(*this);
    if (!native.hasItem(index))
        return;
    auto titles = *native.items;
    titles[static_cast<std::size_t>(index)] = title;
    native.items = std::make_shared<const std::vector<std::string>>(std::move(titles));
    if (auto* const box = native.box())
        box->setItemText(index, qtString(title));
}

} // namespace platform::ui
