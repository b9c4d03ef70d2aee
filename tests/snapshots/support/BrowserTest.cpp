#include "tests/snapshots/support/BrowserTest.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "tests/platform/ui/User.h"

#include <algorithm>
#include <QApplication>
#include <stdexcept>

using namespace platform::ui;

namespace {

QWidget& widgetNamed(const char* identifier)
{
    for (auto* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() != QStringLiteral("localSnapshotsWindow") || !window->isVisible())
            continue;
        if (auto* const widget = window->findChild<QWidget*>(QString::fromLatin1(identifier)))
            return *widget;
    }
    throw std::logic_error(std::string("Not on the screen: ") + identifier);
}

} // namespace

template <class T>
T& BrowserTest::control(const char* identifier) const
{
    return dynamic_cast<T&>(*viewForWidget(&widgetNamed(identifier)));
}

template TableView& BrowserTest::control<TableView>(const char*) const;
template PopUpButton& BrowserTest::control<PopUpButton>(const char*) const;
template Button& BrowserTest::control<Button>(const char*) const;
template TextField& BrowserTest::control<TextField>(const char*) const;

void BrowserTest::open()
{
    controller->showWindow();
    user::runEvents();
}

std::vector<std::string> BrowserTest::volumes() const
{
    const auto& popUp = control<PopUpButton>("disksPopUp");
    std::vector<std::string> titles;
    for (int i = 0; i < popUp.numberOfItems(); ++i)
        titles.push_back(popUp.itemTitleAtIndex(i));
    return titles;
}

std::string BrowserTest::selectedVolume() const
{
    const auto& popUp = control<PopUpButton>("disksPopUp");
    return popUp.itemTitleAtIndex(popUp.indexOfSelectedItem());
}

void BrowserTest::choose(int index)
{
    user::choose(control<PopUpButton>("disksPopUp"), index);
    user::runEvents();
}

std::vector<BrowserTest::Row> BrowserTest::rows() const
{
    const auto& model = *dynamic_cast<DataTable&>(widgetNamed("snapshotsTable")).model();
    std::vector<Row> rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        Row& texts = rows.emplace_back();
        for (int column = 0; column < model.columnCount(); ++column)
            texts.push_back(model.index(row, column).data().toString().toStdString());
    }
    return rows;
}

std::vector<std::string> BrowserTest::names() const
{
    std::vector<std::string> names;
    for (const auto& row : rows())
        names.push_back(row.at(1));
    return names;
}

bool BrowserTest::showsRefusal() const
{
    const bool explains = widgetNamed("fullDiskAccessTextField").isVisible();
    if (explains != widgetNamed("fullDiskAccessButton").isVisible())
        throw std::logic_error("The explanation and its button do not go together");
    return explains;
}

std::string BrowserTest::placeholder() const
{
    return dynamic_cast<DataTable&>(widgetNamed("snapshotsTable")).placeholderText().toStdString();
}

scripted::snapshots::Snapshots snapshotsNamed(const std::vector<std::string>& names)
{
    std::vector<RecordBuilder> records;
    std::int64_t time = 1'795'244'595;
    for (const auto& name : names) {
        const auto identifier = 256 + records.size();
        records.push_back({.name = name, .objectIdentifier = identifier, .creationTime = time});
        time += 60;
    }
    return {.answers = {answerOf(records)}, .sizes = {}, .refusal = 0};
}
