#include "platform/HeadStart.h"

#include <QDBusConnection>
#include <QFontDatabase>
#include <QStringList>

#include <fontconfig/fontconfig.h>

void HeadStart::readFonts() { FcInit(); }

void HeadStart::meetDesktop()
{
    QDBusConnection::sessionBus();
    QFontDatabase::families();
}
