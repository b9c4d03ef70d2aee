#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>
#include <QApplication>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setStyle("fusion");
    return doctest::Context(argc, argv).run();
}
