#include "States.h"

#include "platform/Alerts.h"
#include "ui/PictureView.h"
#include "ui/TextField.h"

#include <QTest>

namespace {

void openTwoStepSheet(Scene &scene)
{
    scene.fill();
    scene.view->setStatus(QStringLiteral("503: Enter your two-step token."));
    scene.ask(Alerts::tr("Two-step Authentication"),
              QStringLiteral("503: Enter your two-step token."),
              {Alerts::tr("Confirm"), Alerts::tr("Cancel")}, AlertTextField());
}

void openOffer(Scene &scene)
{
    scene.show(0.0, QStringLiteral("Checking for updates..."));
    scene.ask(QStringLiteral("Enable Touch ID"),
              QStringLiteral("Use Touch ID to login to  Quellmoor."),
              {QStringLiteral("Enable"), QStringLiteral("Cancel")});
}

void openReset(Scene &scene)
{
    scene.ask(QStringLiteral("Touch ID Has Been Reset"),
              QStringLiteral("To setup Touch ID again login to your account with the correct "
                             "username and password and select Enable."),
              {QStringLiteral("Close")});
}

void openOutOfDate(Scene &scene)
{
    scene.show(0.0, QStringLiteral("Login"));
    scene.ask(QStringLiteral("Launcher Update Required"),
              QStringLiteral("There is a required update available for the launcher."),
              {QStringLiteral("Update"), QStringLiteral("Exit Launcher")});
}

void openDiagnostics(Scene &scene)
{
    scene.fill();
    scene.ask(QStringLiteral("Diagnostics Copied"),
              QStringLiteral("They are on the clipboard. Paste them into your message to support."),
              {QStringLiteral("Close")});
}

void openLongSheet(Scene &scene)
{
    scene.ask(QStringLiteral("Two-step Authentication"),
              QStringLiteral("503: The stones keep watch. ").repeated(40),
              {QStringLiteral("Confirm"), QStringLiteral("Cancel")}, AlertTextField());
}

void askForFinger(Scene &scene)
{
    scene.fingerprint.show(QStringLiteral("Login to Quellmoor"), [] {});
}

void askForFingerAgain(Scene &scene)
{
    askForFinger(scene);
    scene.fingerprint.retry(QStringLiteral("Put your finger on the middle of the reader."));
}

void writeFromRightToLeft(Scene &scene)
{
    scene.view->accountIDField()->setStringValue(QString::fromUtf8("שליו בן הנחל"));
    scene.view->passwordField()->setStringValue(QStringLiteral("moorland-7"));
    scene.view->setStatus(QString::fromUtf8("504: שם המשתמש או הסיסמה שגויים."));
}

void writeWithoutEnd(Scene &scene)
{
    scene.view->accountIDField()->setStringValue(
        QStringLiteral("the.warden.of.the.seven.standing.stones@quellmoor.example"));
    scene.view->accountIDField()->selectAll();
    scene.view->passwordField()->setStringValue(QString(60, QLatin1Char('x')));
}

std::function<void(Scene &)> tells(const char *status, bool isPlayEnabled = true)
{
    return [=](Scene &scene) {
        scene.fill();
        scene.view->setPlayButtonEnabled(isPlayEnabled);
        scene.view->setStatus(QString::fromUtf8(status));
    };
}

std::function<void(Scene &)> shows(double progress, const char *status)
{
    return [=](Scene &scene) { scene.show(progress, QString::fromUtf8(status)); };
}

std::map<std::string, State> statesOfTheForm()
{
    return {
        {"01-empty-form", {{}, [](Scene &) {}}},
        {"02-filled-form", {{}, [](Scene &scene) { scene.fill(); }}},
        {"03-focus-by-keyboard",
         {{},
          [](Scene &scene) {
              scene.fill();
              scene.view->passwordField()->becomeFirstResponder();
              QTest::keyClick(&scene.window, Qt::Key_Tab);
          }}},
        {"04-contacting", {{}, tells("Contacting account server...", false)}},
        {"05-wrong-password", {{}, tells("504: The user name or the password is wrong.")}},
        {"11-offline", {{false, QStringLiteral("en")}, [](Scene &) {}}},
        {"12-long-message",
         {{},
          tells("5013: The realm rests until Sunday 18:00 because the bridge over the Quell is "
                "being rebuilt stone by stone; tickets, seasons and everything you own stay as "
                "they are, and the ferry runs again from Monday on. Thank you for your "
                "patience!")}},
        {"13-right-to-left", {{}, writeFromRightToLeft}},
        {"19-long-texts", {{}, writeWithoutEnd}},
        {"20-menu", {{}, openMenu}},
        {"21-strip-logo", {{}, [](Scene &scene) { scene.showTouchBar(false); }}},
        {"22-strip-play",
         {{},
          [](Scene &scene) {
              scene.fill();
              scene.showTouchBar(true);
          }}},
        {"23-german", {{true, QStringLiteral("de")}, [](Scene &scene) { scene.fill(); }}},
        {"24-german-menu", {{true, QStringLiteral("de")}, openMenu}},
        {"25-polish-sheet", {{true, QStringLiteral("pl")}, openTwoStepSheet}},
        {"30-controls", {{}, lookAtControls}},
        {"31-strip", {{}, lookAtStrip}},
        {"32-alert",
         {{},
          [](Scene &scene) {
              openTwoStepSheet(scene);
              lookAtAlert(scene);
          }}},
    };
}

std::map<std::string, State> statesOfTheUpdate()
{
    return {
        {"06-two-step", {{}, openTwoStepSheet}},
        {"07-checking", {{}, shows(0.0, "Checking for updates...")}},
        {"08-updating",
         {{},
          shows(0.45, "Updating file 3 of 12...\narchive_a.bin\n"
                      "[4.2/18.0MB @ 1.5MB/s]")}},
        {"09-writing", {{}, shows(0.0, "Writing file 11 of 12\narchive_k.bin")}},
        {"10-launching", {{}, shows(0.0, "Launching the game(qa)...")}},
        {"14-out-of-date", {{}, openOutOfDate}},
        {"15-fingerprint-offer", {{}, openOffer}},
        {"16-fingerprint-question", {{}, askForFinger}},
        {"17-fingerprint-retry", {{}, askForFingerAgain}},
        {"18-fingerprint-reset", {{}, openReset}},
        {"26-diagnostics", {{}, openDiagnostics}},
        {"27-long-sheet", {{}, openLongSheet}},
    };
}

} // namespace

const std::map<std::string, State> &states()
{
    static const std::map<std::string, State> all = [] {
        auto result = statesOfTheForm();
        result.merge(statesOfTheUpdate());
        return result;
    }();
    return all;
}
