#include "tests/pictures/Photographer.h"
#include "tests/pictures/States.h"
#include "tests/platform/ui/User.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <QApplication>
#include <QPalette>

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

namespace {

constexpr const char* usage =
    "usage: brevane_pictures [--dark] [--prefix PREFIX] FOLDER [STATE...]\n"
    "The language is the environment's; QT_SCALE_FACTOR=2 makes pictures of twice the size.\n";

struct Order {
    bool dark = false;
    QString prefix;
    QString folder;
    QStringList states; // none: all
};

std::optional<Order> orderFrom(QStringList arguments)
{
    Order order;
    while (!arguments.isEmpty()) {
        const auto argument = arguments.takeFirst();
        if (argument == QStringLiteral("--dark"))
            order.dark = true;
        else if (argument == QStringLiteral("--prefix") && !arguments.isEmpty())
            order.prefix = arguments.takeFirst();
        else if (order.folder.isEmpty())
            order.folder = argument;
        else
            order.states += argument;
    }
    return order.folder.isEmpty() ? std::nullopt : std::optional(order);
}

QPalette darkPalette()
{
    QPalette dark(QColor(53, 53, 53));
    dark.setColor(QPalette::Base, QColor(25, 25, 25));
    dark.setColor(QPalette::Highlight, QColor(61, 126, 217));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    return dark;
}

bool isWanted(const Order& order, const State& state)
{
    return order.states.isEmpty() || order.states.contains(QString::fromStdString(state.name));
}

// False when a state has no picture.
bool photograph(const Order& order)
{
    Photographer photographer(QDir(order.folder), order.prefix);
    for (const State& state : states()) {
        if (!isWanted(order, state))
            continue;
        const int before = photographer.saved();
        photographer.setName(state.name);
        state.show(photographer);
        user::runEvents();
        if (photographer.saved() == before) {
            std::fprintf(stderr, "There is no picture of %s\n", state.name.c_str());
            return false;
        }
    }
    return !photographer.failed();
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // The played scheduler helper checks what it is sent.
    doctest::Context context;
    context.setAsDefaultForAssertsOutOfTestCases();
    const user::Session session(argc, argv);
    const auto order = orderFrom(QApplication::arguments().mid(1));
    if (!order) {
        std::fputs(usage, stderr);
        return 2;
    }
    if (!QDir(order->folder).mkpath(QStringLiteral(".")))
        return 1;
    if (order->dark)
        QApplication::setPalette(darkPalette());
    try {
        return photograph(*order) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "brevane_pictures: %s\n", failure.what());
        return 1;
    }
}
