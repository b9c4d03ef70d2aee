#include "backupprogram/PopUpTitles.h"

void showTitles(platform::ui::PopUpButton& popUp, const std::vector<std::string>& titles, int selected)
{
    while (popUp.numberOfItems() > static_cast<int>(titles.size()))
        popUp.removeItemAtIndex(popUp.numberOfItems() - 1);
    for (int index = 0; index < static_cast<int>(titles.size()); ++index) {
        const auto& title = titles[static_cast<std::size_t>(index)];
        if (index == popUp.numberOfItems())
            popUp.addItem(title, nullptr);
        else if (popUp.itemTitleAtIndex(index) != title)
            popUp.setItemTitleAtIndex(index, title);
    }
    popUp.selectItemAtIndex(selected);
}
