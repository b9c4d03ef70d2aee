#include "platform/NotificationCenter.h"

#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <vector>

using platform::NotificationObserver;
using platform::postNotification;

TEST_CASE("a notification reaches every observer of its name, in their order, before the post returns")
{
    std::string heard;
    const NotificationObserver one("A", [&] { heard += "1"; });
    const NotificationObserver two("B", [&] { heard += "2"; });
    const NotificationObserver three("A", [&] { heard += "3"; });
    postNotification("A");
    CHECK(heard == "13");
    postNotification("B");
    postNotification("C");
    CHECK(heard == "132");
}

TEST_CASE("an observer that has ended hears nothing")
{
    int heard = 0;
    {
        const NotificationObserver observer("A", [&] { ++heard; });
    }
    postNotification("A");
    CHECK(heard == 0);
}

TEST_CASE("an observer may end itself and others and make new ones while it hears")
{
    std::string heard;
    std::vector<std::unique_ptr<NotificationObserver>> observers;
    const auto observe = [&](const std::string& word) {
        observers.push_back(std::make_unique<NotificationObserver>("A", [&heard, word] { heard += word; }));
    };
    observers.push_back(std::make_unique<NotificationObserver>("A", [&] {
        heard += "first";
        observers.clear();
        observe(" new");
    }));
    observe(" second");
    postNotification("A");
    CHECK(heard == "first");
    postNotification("A");
    CHECK(heard == "first new");
}

TEST_CASE("a notification may be posted while another one is heard")
{
    std::string heard;
    const NotificationObserver outer("A", [&] {
        heard += "(";
        postNotification("B");
        heard += ")";
    });
    const NotificationObserver inner("B", [&] { heard += "B"; });
    postNotification("A");
    CHECK(heard == "(B)");
}
