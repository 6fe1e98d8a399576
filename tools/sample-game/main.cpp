#include "Handover.h"
#include "MoorWindow.h"
#include "Stay.h"

#include <QApplication>

#include <cstdlib>
#include <memory>

namespace {

constexpr int CannotDoThat = 64;

bool hasDisplay()
{
#ifdef Q_OS_MACOS
    return true;
#else
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
#endif
}

bool play(const Stay::Wishes &wishes, const Handover &handover, bool withWindow)
{
    Stay stay(wishes);
    if (!stay.begin())
        return false;
    std::unique_ptr<MoorWindow> window;
    if (withWindow) {
        window = std::make_unique<MoorWindow>(handover.value("VARNO_GAMESERVER"),
                                              handover.value("VARNO_PLAYCOOKIE"));
        window->show();
    }
    return QCoreApplication::exec() == 0;
}

} // namespace

int main(int argc, char **argv)
{
    // The report comes first: a display that cannot be reached ends the process in QApplication.
    const Handover handover = Handover::read(argv[0]);
    handover.print();
    const QString reportPath = qEnvironmentVariable("QUELLMOOR_SAMPLE_REPORT");
    const std::optional<Stay::Wishes> wishes = Stay::Wishes::read();
    if ((!reportPath.isEmpty() && !handover.report(reportPath)) || !wishes)
        return CannotDoThat;

    const bool withWindow = hasDisplay();
    const std::unique_ptr<QCoreApplication> application =
        withWindow ? std::make_unique<QApplication>(argc, argv)
                   : std::make_unique<QCoreApplication>(argc, argv);
    if (!play(*wishes, handover, withWindow))
        return CannotDoThat;
    return Stay::end(*wishes);
}
