#include "platform/ui/PopUpButton.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/ImageNative.h"
#include "platform/linux/ui/windows/WrapControls.h"
#include "platform/ui/Selection.h"

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
    void append(QComboBox& box, std::size_t index) const;

    PopUpButton::Items items;
    std::vector<std::shared_ptr<Image>> images; // of the first items; null for none
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
    for (std::size_t i = 0; i < items->size(); ++i)
        append(*box, i);
    box->setCurrentIndex(selected);
    follow(*box);
    return box;
}

void PopUpButtonNative::append(QComboBox& box, std::size_t index) const
{
    const std::string& title = (*items)[index];
    const auto* const image = index < images.size() ? images[index].get() : nullptr;
    if (image)
        box.setIconSize(image->native().size);
    if (title.empty())
        box.insertSeparator(box.count());
    else
        box.addItem(image ? image->native().icon : QIcon(), qtString(title));
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

void PopUpButton::addItem(const std::string& title, const std::shared_ptr<Image>& image)
{
    auto& native = popUpNative(*this);
    auto titles = *native.items;
    titles.push_back(title);
    native.items = std::make_shared<const std::vector<std::string>>(std::move(titles));
    native.images.resize(native.items->size());
    native.images.back() = image;
    if (native.items->size() == 1)
        native.selected = 0;
    if (auto* const box = native.box())
        native.append(*box, native.items->size() - 1);
}

void PopUpButton::removeItemAtIndex(int index)
{
    auto& native = popUpNative(*this);
    if (!native.hasItem(index))
        return;
    auto titles = *native.items;
    titles.erase(titles.begin() + index);
    native.items = std::make_shared<const std::vector<std::string>>(std::move(titles));
    if (index < static_cast<int>(native.images.size()))
        native.images.erase(native.images.begin() + index);
    native.selected = selectionAfterRemoval(native.selected, index, static_cast<int>(native.items->size()));
    if (auto* const box = native.box()) {
        box->removeItem(index);
        box->setCurrentIndex(native.selected);
    }
}

} // namespace platform::ui
