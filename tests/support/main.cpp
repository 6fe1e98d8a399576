#include "TestMain.h"

#ifdef QUELLMOOR_TEST_GUI
#include <QApplication>
using Application = QApplication;
#else
#include <QCoreApplication>
using Application = QCoreApplication;
#endif

int main(int argc, char **argv)
{
    TestMain::makePrivateHome();
    const Application application(argc, argv);
    return TestMain::run(argc, argv);
}
