// The least that a program with a window of Qt Widgets can do.
#include <QApplication>
#include <QWidget>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(960, 640);
    window.show();
    return QApplication::exec();
}
