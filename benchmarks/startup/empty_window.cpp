#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(480, 320);
    window.show();
    return QApplication::exec();
}
